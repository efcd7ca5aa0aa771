// How often something happened to a node within a sliding window of time.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <string>
#include <vector>

namespace qx {

class XmlWriter;
namespace pb {
class EventHistogramPBuf;
}

/// Local wall-clock time, in microseconds.
using BPosixTime = boost::posix_time::ptime;

/// A ring of buckets, each of which counts the events of a stretch of time; a subclass says how long it is. Buckets are
/// numbered on from `startTime()`, and bucket number n is at place n modulo the window. They are never moved: those
/// that have passed out of the window are cleared on the way past, by `update`.
///
/// No operation reads the clock but construction, `windowSize(unsigned int)` and `reset`; the caller says what time it
/// is. The clock may go back: what was counted in the buckets of the future stays until they come round. With a time
/// a bucket or more before the start everything counted is dropped (its bucket number wraps round at 32 bits).
///
/// A window of 0 buckets, as a message may bring it, counts nothing and has a rate of 0. Not for use from several
/// threads at once: `rate` and `quality` change it too.
class EventHistogram {
 public:
  /// All buckets zero, starting now.
  explicit EventHistogram(unsigned int windowSize);
  EventHistogram(const EventHistogram&) = default;
  EventHistogram& operator=(const EventHistogram&) = default;
  virtual ~EventHistogram() = default;

  // The order of the virtual operations is part of the interface.

  virtual boost::posix_time::time_duration bucketSize() const = 0;
  /// Number of the bucket that begins or goes on `duration` after the start.
  virtual unsigned int durationToIndex(const boost::posix_time::time_duration& duration) const = 0;
  /// Buckets begun within `duration`: at least 1, at most the window (which may be 0).
  virtual unsigned int wholeBuckets(const boost::posix_time::time_duration& duration) const = 0;

  /// Compare window, buckets and both times.
  bool operator==(const EventHistogram& other) const;

  /// The clock.
  static BPosixTime localtime();

  /// Buckets in the ring.
  unsigned int windowSize() const { return windowSize_; }
  /// Makes the ring this long and starts anew, also if it had that length.
  void windowSize(unsigned int windowSize);
  /// The buckets as they lie in the ring.
  const std::vector<int>& histogram() const { return histogram_; }
  /// When bucket 0 began.
  const BPosixTime& startTime() const { return startTime_; }
  /// When the latest event was added; the start before the first.
  const BPosixTime& lastEvent() const { return lastEvent_; }

  /// Starts anew, with all buckets zero.
  void reset();
  /// The same as of `start`, for events that may have happened before this was made.
  void reset(const BPosixTime& start);
  /// The events in all buckets. (A sum that no int holds, which takes a hostile message, is the nearest int.)
  int totalEvents() const;
  /// Number of the bucket of `time`, not yet taken modulo the window.
  unsigned int index(const BPosixTime& time) const { return durationToIndex(time - startTime_); }
  /// How much time the ring spans.
  boost::posix_time::time_duration totalHistogramTime() const;

  /// Clears the buckets that have passed since the last event, all of them if that is a window ago or more. Moves
  /// neither `lastEvent()` nor `startTime()`.
  void update(const BPosixTime& now);
  /// Counts an event; a bucket that is full stays so. Does not allocate.
  void addEvent(const BPosixTime& now);
  /// Events a bucket, over the buckets begun since the start, at most the window.
  double rate(const BPosixTime& now);
  /// The rate as the nearest whole number, halves away from zero.
  int quality(const BPosixTime& now);

  /// Logs `message` and the whole histogram at debug level.
  void log(const std::string& message, const BPosixTime& currentTime) const;

  /// Without the start time: what the buckets stand for cannot be told from this form.
  void toXml(XmlWriter& writer, const std::string& name) const;
  /// Caller owns the result. Times are cut to seconds, and these to 32 bits; special times come back as dates.
  pb::EventHistogramPBuf* toProtobuf() const;
  /// Takes all fields, those that are absent as zero and the start of 1970. True on failure, of which there is none.
  bool fromProtobuf(const pb::EventHistogramPBuf& message);

 private:
  /// Clears the buckets behind that of the last event, up to bucket number `last`, which is that of `now`.
  void clearPassed(const BPosixTime& now, unsigned int last);

  unsigned int windowSize_;
  /// As long as the window, unless a message said otherwise.
  std::vector<int> histogram_;
  BPosixTime startTime_;
  BPosixTime lastEvent_;
};

}  // namespace qx

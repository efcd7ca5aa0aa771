// Failed messages of the last hours.
#pragma once

#include <string>

#include "vso/node/EventHistogram.h"

namespace qx {

/// One bucket an hour.
class MessageFailHistogram : public EventHistogram {
 public:
  /// Buckets in the usual window.
  static constexpr unsigned int WINDOW_SIZE = 24;
  static const std::string NAME;

  explicit MessageFailHistogram(unsigned int windowSize) : EventHistogram(windowSize) {}

  boost::posix_time::time_duration bucketSize() const override;
  unsigned int durationToIndex(const boost::posix_time::time_duration& duration) const override;
  unsigned int wholeBuckets(const boost::posix_time::time_duration& duration) const override;

  /// Hours begun within a duration, without an upper bound: at least 1, also for a negative or special duration;
  /// infinity counts as the longest duration there is. A rest of less than 0.0002 hours (0.72 seconds) does not begin a
  /// new one.
  static unsigned int wholeHours(const boost::posix_time::time_duration& duration);
};

}  // namespace qx

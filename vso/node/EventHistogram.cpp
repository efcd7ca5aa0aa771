#include "vso/node/EventHistogram.h"

#include <log4cplus/logger.h>
#include <sys/time.h>

#include <algorithm>
#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <cmath>
#include <limits>
#include <memory>

#include "vso/logging/Log.h"
#include "vso/node/wholeNumber.h"
#include "vso/proto/EventHistogramPBuf.pb.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

using boost::posix_time::time_duration;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

}  // namespace

EventHistogram::EventHistogram(unsigned int windowSize)
    : windowSize_(windowSize), histogram_(windowSize), startTime_(localtime()), lastEvent_(startTime_) {}

bool EventHistogram::operator==(const EventHistogram& other) const {
  return windowSize_ == other.windowSize_ && histogram_ == other.histogram_ && startTime_ == other.startTime_ &&
         lastEvent_ == other.lastEvent_;
}

BPosixTime EventHistogram::localtime() {
  timeval now{};
  gettimeofday(&now, nullptr);
  // The zone is asked once a second: it takes most of the time, and a report reads the clock a dozen times.
  thread_local long second = -1;
  thread_local BPosixTime beginning;
  if (now.tv_sec != second) {
    beginning = posixTimeOf(now.tv_sec);
    second = now.tv_sec;
  }
  return beginning + boost::posix_time::microseconds(now.tv_usec);
}

void EventHistogram::windowSize(unsigned int windowSize) {
  histogram_.resize(windowSize);
  windowSize_ = windowSize;
  reset();
}

void EventHistogram::reset() { reset(localtime()); }

void EventHistogram::reset(const BPosixTime& start) {
  std::fill(histogram_.begin(), histogram_.end(), 0);
  startTime_ = start;
  lastEvent_ = start;
}

int EventHistogram::totalEvents() const {
  long long total = 0;
  for (const int count : histogram_) total += count;
  return detail::nearestInt(total);
}

time_duration EventHistogram::totalHistogramTime() const {
  // A window that only a hostile message has spans more than a duration holds.
  constexpr long long LONGEST = std::numeric_limits<long long>::max() / 2;
  const long long buckets = static_cast<int>(windowSize_);
  long long ticks;
  if (__builtin_mul_overflow(static_cast<long long>(bucketSize().ticks()), buckets, &ticks)) {
    ticks = buckets < 0 ? -LONGEST : LONGEST;
  }
  return time_duration(0, 0, 0, std::clamp(ticks, -LONGEST, LONGEST));
}

void EventHistogram::update(const BPosixTime& now) { clearPassed(now, index(now)); }

void EventHistogram::addEvent(const BPosixTime& now) {
  const unsigned int number = index(now);
  clearPassed(now, number);
  if (windowSize_ != 0) {
    const unsigned int bucket = number % windowSize_;
    if (bucket < histogram_.size() && histogram_[bucket] < std::numeric_limits<int>::max()) ++histogram_[bucket];
  }
  lastEvent_ = now;
}

void EventHistogram::clearPassed(const BPosixTime& now, unsigned int last) {
  if (!(now - lastEvent_ < totalHistogramTime())) {
    std::fill(histogram_.begin(), histogram_.end(), 0);
    return;
  }
  const unsigned int first = index(lastEvent_) + 1;
  if (windowSize_ == 0 || first > last) return;
  // A walk of a window or more comes to every place of the ring.
  const unsigned int steps = std::min(last - first, windowSize_ - 1);
  if (steps < histogram_.size()) {
    for (unsigned int i = 0; i <= steps; ++i) {
      const unsigned int bucket = (first + i) % windowSize_;
      if (bucket < histogram_.size()) histogram_[bucket] = 0;
    }
    return;
  }
  // A message made the ring shorter than its window, and the walk would take long to come by the few buckets there are.
  const unsigned long long start = first % windowSize_;
  for (std::size_t bucket = 0; bucket < std::min<std::size_t>(histogram_.size(), windowSize_); ++bucket) {
    if ((bucket + windowSize_ - start) % windowSize_ <= steps) histogram_[bucket] = 0;
  }
}

double EventHistogram::rate(const BPosixTime& now) {
  update(now);
  const auto buckets = static_cast<int>(wholeBuckets(now - startTime_));
  if (buckets == 0) return 0;
  return static_cast<double>(totalEvents()) / static_cast<double>(buckets);
}

int EventHistogram::quality(const BPosixTime& now) {
  return detail::nearestInt(std::round(static_cast<float>(rate(now))));
}

void EventHistogram::log(const std::string& message, const BPosixTime& currentTime) const {
  if (!detail::logs(logger, log4cplus::DEBUG_LOG_LEVEL)) return;
  std::string buckets;
  for (const int count : histogram_) buckets += " " + std::to_string(count);
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
          "EventHistogram::log: " << message << " currentTime: " << currentTime << ", startTime_: " << startTime_
                                  << ", histogram_:" << buckets << ", lastEvent_: " << lastEvent_);
}

void EventHistogram::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("windowSize_", windowSize_);
  {
    const detail::XmlScope buckets(writer, "histogram_");
    writer.writeElement("count", static_cast<unsigned long long>(histogram_.size()));
    writer.writeElement("item_version", 0);
    for (const int count : histogram_) writer.writeElement("item", count);
  }
  posixTimeToXml(lastEvent_, writer, "lastEvent_");
}

pb::EventHistogramPBuf* EventHistogram::toProtobuf() const {
  auto message = std::make_unique<pb::EventHistogramPBuf>();
  message->set_windowsize(windowSize_);
  message->mutable_histogram()->Add(histogram_.begin(), histogram_.end());
  message->set_allocated_starttime(posixTimeToProtobuf(startTime_));
  message->set_allocated_lastevent(posixTimeToProtobuf(lastEvent_));
  return message.release();
}

bool EventHistogram::fromProtobuf(const pb::EventHistogramPBuf& message) {
  windowSize_ = message.windowsize();
  histogram_.assign(message.histogram().begin(), message.histogram().end());
  startTime_ = posixTimeFromProtobuf(message.starttime());
  lastEvent_ = posixTimeFromProtobuf(message.lastevent());
  return false;
}

}  // namespace qx

// Reboots of the last days.
#pragma once

#include <string>

#include "vso/node/EventHistogram.h"

namespace qx {

/// One bucket a day.
class RebootHistogram : public EventHistogram {
 public:
  /// Buckets in the usual window.
  static constexpr unsigned int WINDOW_SIZE = 7;
  static const std::string NAME;

  explicit RebootHistogram(unsigned int windowSize) : EventHistogram(windowSize) {}

  boost::posix_time::time_duration bucketSize() const override;
  unsigned int durationToIndex(const boost::posix_time::time_duration& duration) const override;
  unsigned int wholeBuckets(const boost::posix_time::time_duration& duration) const override;

  /// Days begun within a duration, without an upper bound: at least 1, also for a negative or special duration;
  /// infinity counts as the longest duration there is. A rest of less than a millionth of a day (0.0864 seconds) does
  /// not begin a new one.
  static unsigned int wholeDays(const boost::posix_time::time_duration& duration);
};

}  // namespace qx

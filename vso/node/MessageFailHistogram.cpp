#include "vso/node/MessageFailHistogram.h"

#include <algorithm>

#include "vso/node/bucketsBegun.h"

namespace qx {

namespace {

using boost::posix_time::time_duration;

constexpr detail::BucketWidth HOUR{3600, 0.0002};

}  // namespace

const std::string MessageFailHistogram::NAME = "MessageFailHistogram";

time_duration MessageFailHistogram::bucketSize() const { return HOUR.duration(); }

unsigned int MessageFailHistogram::durationToIndex(const time_duration& duration) const {
  return HOUR.indexOf(duration);
}

unsigned int MessageFailHistogram::wholeBuckets(const time_duration& duration) const {
  return std::min(wholeHours(duration), windowSize());
}

unsigned int MessageFailHistogram::wholeHours(const time_duration& duration) { return HOUR.begunWithin(duration); }

}  // namespace qx

#include "vso/node/RebootHistogram.h"

#include <algorithm>
#include <cmath>

#include "vso/node/bucketsBegun.h"

namespace qx {

namespace {

using boost::posix_time::time_duration;

constexpr detail::BucketWidth DAY{86400, 0.000001};

}  // namespace

const std::string RebootHistogram::NAME = "RebootHistogram";

time_duration RebootHistogram::bucketSize() const { return DAY.duration(); }

unsigned int RebootHistogram::durationToIndex(const time_duration& duration) const { return DAY.indexOf(duration); }

unsigned int RebootHistogram::wholeBuckets(const time_duration& duration) const {
  return std::min(wholeDays(duration), windowSize());
}

unsigned int RebootHistogram::wholeDays(const time_duration& duration) {
  // Time without end begins no new day. (At this size a number of single precision has no fraction anyway.)
  if (duration.is_pos_infinity()) return static_cast<unsigned int>(std::trunc(DAY.widthsOf(duration)));
  return DAY.begunWithin(duration);
}

}  // namespace qx

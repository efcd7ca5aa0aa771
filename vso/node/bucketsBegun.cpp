#include "vso/node/bucketsBegun.h"

#include <cmath>

namespace qx::detail {

namespace {

using boost::posix_time::time_duration;

}  // namespace

float BucketWidth::widthsOf(const time_duration& duration) const {
  const auto ticks = static_cast<long double>(duration.ticks());
  return static_cast<float>(ticks / static_cast<long double>(TICKS_A_SECOND) / static_cast<long double>(seconds));
}

unsigned int BucketWidth::begunWithin(const time_duration& duration) const {
  if (duration.is_not_a_date_time() || duration.is_neg_infinity() || duration <= this->duration()) return 1;
  const float widths = widthsOf(duration);
  const float whole = std::trunc(widths);
  if (widths - whole < tolerance) return static_cast<unsigned int>(whole);
  return static_cast<unsigned int>(std::trunc(widths + 1.0F));
}

}  // namespace qx::detail

// Numbers brought into the range of an int.
#pragma once

#include <limits>

namespace qx::detail {

/// The int nearest to a number; 0 for not-a-number. A fraction is cut off.
template <typename T>
int nearestInt(T number) {
  if (number != number) return 0;
  if (number >= static_cast<T>(std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
  if (number <= static_cast<T>(std::numeric_limits<int>::min())) return std::numeric_limits<int>::min();
  return static_cast<int>(number);
}

}  // namespace qx::detail

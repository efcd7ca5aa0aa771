// One answer of a typed reader as a value to show.
#pragma once

#include <type_traits>
#include <vector>

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/zcl/ZclReading.h"

namespace qx::app {

/// Appends the reading if the frame answered.
template <typename T>
void addReading(std::vector<NamedValue>& readings, const char* name, const ZclReading<T>& reading) {
  using Shown = std::conditional_t<std::is_same_v<T, bool>, bool, unsigned int>;
  if (reading.state == ZclReading<T>::ANSWERED) readings.push_back({name, static_cast<Shown>(reading.value)});
}

}  // namespace qx::app

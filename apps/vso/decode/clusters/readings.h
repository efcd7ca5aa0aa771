// What the typed readers of the cluster classes find in a frame.
#pragma once

#include <vector>

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::app {

// One for each class with typed readers, in the source named after the cluster. Each appends a value for every reader
// that the frame answers.

void addOnOffReadings(const U255Buff<unsigned char>& bytes, std::vector<NamedValue>& readings);
void addLevelControlReadings(const U255Buff<unsigned char>& bytes, std::vector<NamedValue>& readings);

}  // namespace qx::app

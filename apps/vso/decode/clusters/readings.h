// What the typed readers of the cluster classes find in a frame.
#pragma once

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::app {

// One for each class with typed readers, in the source named after the cluster. Each takes a frame that carries a list
// of attributes and adds a value for every reader that it answers, or its table.

void addAnnounceReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);
void addDiagnosticsReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);
void addHaDiagnosticsReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);
void addLevelControlReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);
void addOnOffReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);
void addOtaUpgradeReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);
void addSscpReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded);

}  // namespace qx::app

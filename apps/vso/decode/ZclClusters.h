// The clusters that the program knows by name, and which of them have typed readings.
#pragma once

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::app {

/// Appends what the typed readers of a cluster's class find in a list of attributes.
using AddReadings = void (*)(const U255Buff<unsigned char>& frame, DecodedFrame& decoded);

struct ZclClusterRow {
  unsigned short profile;
  unsigned short cluster;
  const char* name;
  /// Null where the library has no typed readers.
  AddReadings addReadings = nullptr;
};

/// Null for a cluster that is not known.
const ZclClusterRow* findCluster(unsigned short profile, unsigned short cluster);

}  // namespace qx::app

// Frames of the cluster library.
#pragma once

#include "apps/vso/decode/DecodedFrame.h"
#include "apps/vso/decode/ReceivedFrame.h"

namespace qx::app {

/// Fills in header, payload and readings.
///
/// Names, fields and readings of a cluster are its own only in frames without a manufacturer code: behind one, a
/// command or an attribute of the same number is the manufacturer's.
void decodeZcl(const ReceivedFrame& received, DecodedFrame& decoded);

}  // namespace qx::app

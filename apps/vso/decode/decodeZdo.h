// Frames of the device object, which manages the network.
#pragma once

#include "apps/vso/decode/DecodedFrame.h"
#include "apps/vso/decode/ReceivedFrame.h"

namespace qx::app {

/// Fills in header and payload. The cluster is the command.
void decodeZdo(const ReceivedFrame& received, DecodedFrame& decoded);

}  // namespace qx::app

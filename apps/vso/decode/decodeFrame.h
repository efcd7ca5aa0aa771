// The one way from the bytes of a frame to what they say.
#pragma once

#include "apps/vso/decode/DecodedFrame.h"
#include "apps/vso/decode/ReceivedFrame.h"

namespace qx::app {

/// Takes any bytes, also none. Profile 0 is ZDO, all others are ZCL.
DecodedFrame decodeFrame(const ReceivedFrame& received);

}  // namespace qx::app

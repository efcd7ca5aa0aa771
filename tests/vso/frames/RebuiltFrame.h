// A frame, built from what is stated of it.
#pragma once

#include "tests/vso/frames/FramesFile.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

/// Built by the builders of its class where there is one, and by append operations otherwise. Of a frame of which only
/// the header is stated, the header. Throws for a frame of an unknown kind or command.
ZclMessage rebuilt(const RecordedFrame& frame);

}  // namespace qx::test

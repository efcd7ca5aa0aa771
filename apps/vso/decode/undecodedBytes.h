// The rest of a frame that nothing more is known of.
#pragma once

#include <string>

#include "vso/identifiers/FrameReader.h"

namespace qx::app {

/// The bytes from where `in` stands to the end of the frame, two lowercase digits each.
std::string undecodedBytes(FrameReader in);

}  // namespace qx::app

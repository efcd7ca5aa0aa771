// Bytes of a frame as hexadecimal text.
#pragma once

#include <string>

#include "vso/identifiers/FrameReader.h"

namespace qx::app {

/// The next `count` bytes, at most 255, two lowercase digits each.
std::string hexBytes(FrameReader in, unsigned int count);

}  // namespace qx::app

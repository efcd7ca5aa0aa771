// A frame without a class round it: what the benchmarks of frames are held against.
#pragma once

#include "vso/identifiers/storage.h"

namespace qx::bench {

/// The same storage as a frame of the library, cleared in the fastest way known to it: a memset that the compiler
/// expands in place would be slower, and a limit easier to keep.
struct HandFrame {
  HandFrame() noexcept : length(0) { detail::clearBytes(bytes, sizeof bytes); }

  unsigned char bytes[255];
  unsigned int length;
};

}  // namespace qx::bench

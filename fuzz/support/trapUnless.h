// How a fuzz target says that something does not hold.
#pragma once

#include <cstdio>

namespace qx::fuzz {

/// Ends the program with a trap, which libFuzzer takes down with the input that led to it, unless `holds`.
inline void trapUnless(bool holds, const char* claim) {
  if (holds) return;
  static_cast<void>(std::fprintf(stderr, "does not hold: %s\n", claim));
  __builtin_trap();
}

}  // namespace qx::fuzz

// Calls to the kernel.

#pragma once

#include <ctime>

namespace qx {

/// Thin names for the system calls that the library makes.
class KernelX {
 public:
  KernelX() = delete;

  /// Reads the wall clock into `now`: seconds since 1970 and nanoseconds. 0, or -1 with `errno` set.
  static int gettime(timespec& now);
};

}  // namespace qx

// For programs with definitions of their own for functions of the system.
#pragma once

#include <dlfcn.h>

namespace qx::test {

/// The definition of `name` that this program's own one stands before: the C library's, or that of a sanitizer in front
/// of it. `Function` is the type of a function.
template <typename Function>
Function* nextFunction(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace qx::test

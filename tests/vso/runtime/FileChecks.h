// What the tests of files and lines look at alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>

#include "vso/identifiers/U255Buff.h"

namespace qx::test {

/// How many descriptors this process has.
inline std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// What the action throws; a text that says so if it throws nothing.
inline std::string thrownBy(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "(nothing thrown)";
}

inline U255Buff<unsigned char> bufferOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size())};
}

/// The place of a virtual operation in the table of its class, as the common C++ ABI encodes it.
template <typename Operation>
std::uintptr_t slotOf(Operation operation) {
  std::uintptr_t offset = 0;
  static_assert(sizeof operation == 2 * sizeof offset);
  std::memcpy(&offset, &operation, sizeof offset);
  return offset / sizeof(void*);
}

}  // namespace qx::test

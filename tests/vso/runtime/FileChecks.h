// What the tests of files and lines look at alike.
#pragma once

#include <termios.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sstream>
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

/// How many control characters of a line Linux has; the C library's record has room for more, which stay 0.
constexpr std::size_t LINE_CHARACTERS = 19;

/// What a line is set to.
inline std::string textOf(const termios& line) {
  std::ostringstream text;
  text << "input " << line.c_iflag << " output " << line.c_oflag << " control " << line.c_cflag << " local "
       << line.c_lflag << " discipline " << int{line.c_line} << " characters";
  for (const cc_t character : line.c_cc) text << " " << int{character};
  return text.str();
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

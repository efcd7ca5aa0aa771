// Frames to and from bytes, for tests that compare whole frames.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "vso/identifiers/U255Buff.h"
#include "vso/identifiers/hexify.h"

namespace qx::test {

/// A received frame of these bytes.
inline U255Buff<unsigned char> bytes(std::initializer_list<unsigned char> list) {
  return {list.begin(), static_cast<unsigned int>(list.size())};
}

/// A received frame of the bytes that the text gives in hexadecimal digits; blanks are passed over.
inline U255Buff<unsigned char> bytesOf(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (c != ' ') digits += c;
  }
  std::vector<unsigned char> decoded(digits.size() / 2 + 1);
  deHexify(digits, decoded.data(), static_cast<unsigned int>(decoded.size()));
  return {decoded.data(), static_cast<unsigned int>(digits.size() / 2)};
}

/// `length_` bytes of a frame as text, "18 05 01", so that a failing test shows the whole frame.
inline std::string hex(const U255Buff<unsigned char>& frame) {
  std::string text;
  hexify(frame.contents, frame.length_, text, true);
  return text;
}

}  // namespace qx::test

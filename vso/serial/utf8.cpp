#include "vso/serial/utf8.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace qx::detail {

namespace {

constexpr const char* REPLACEMENT = "\xEF\xBF\xBD";

unsigned char byteAt(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

/// Bytes of the valid sequence at the start of `text`; 0 if there is none. (Unicode, table of well-formed UTF-8 byte
/// sequences: shortest forms alone, no surrogates, nothing above U+10FFFF.)
std::size_t sequenceLength(std::string_view text) {
  struct Form {
    unsigned char first, last;              // lead byte
    unsigned char secondFirst, secondLast;  // second byte
    std::size_t length;
  };
  constexpr Form FORMS[] = {
      {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3},
      {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
      {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
  };
  const unsigned char lead = byteAt(text, 0);
  if (lead < 0x80) return 1;
  for (const Form& form : FORMS) {
    if (lead < form.first || lead > form.last) continue;
    if (text.size() < form.length) return 0;
    if (byteAt(text, 1) < form.secondFirst || byteAt(text, 1) > form.secondLast) return 0;
    for (std::size_t i = 2; i < form.length; ++i) {
      if ((byteAt(text, i) & 0xC0) != 0x80) return 0;
    }
    return form.length;
  }
  return 0;
}

}  // namespace

std::string utf8(const std::string& text) {
  const bool isAscii =
      std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (isAscii) return text;
  std::string valid;
  valid.reserve(text.size());
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t length = sequenceLength(rest);
    if (length == 0) {
      valid += REPLACEMENT;
      rest.remove_prefix(1);
    } else {
      valid += rest.substr(0, length);
      rest.remove_prefix(length);
    }
  }
  return valid;
}

}  // namespace qx::detail

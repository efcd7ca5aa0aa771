#include "qxshared/hexStr.h"

#include <algorithm>

namespace qx {

std::string hexStr(unsigned long long value, unsigned int bytes, bool prefix) {
  constexpr unsigned int BYTES_OF_NUMBER = 8;
  std::string text = prefix ? "0x" : "";
  for (unsigned int digit = 2 * std::min(bytes, BYTES_OF_NUMBER); digit-- > 0;) {
    text += "0123456789abcdef"[(value >> (4 * digit)) & 0xF];
  }
  return text;
}

}  // namespace qx

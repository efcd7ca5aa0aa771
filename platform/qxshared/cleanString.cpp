#include "qxshared/cleanString.h"

#include "qxshared/hexStr.h"

namespace qx {

std::string cleanString(const std::string& text) {
  std::string clean;
  clean.reserve(text.size());
  for (const char c : text) {
    if (c == '\r') {
      clean += "\\r";
    } else if (c == '\n') {
      clean += "\\n";
    } else if (c == '\t') {
      clean += "\\t";
    } else if (c >= ' ' && c <= '~') {
      clean += c;
    } else {
      clean += "\\x" + hexStr(static_cast<unsigned char>(c), 1, false);
    }
  }
  return clean;
}

}  // namespace qx

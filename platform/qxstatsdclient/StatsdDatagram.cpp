#include "qxstatsdclient/StatsdDatagram.h"

#include <algorithm>

namespace qx::detail {

namespace {

bool isDigit(char c) { return '0' <= c && c <= '9'; }

/// Takes one digit or more off the front of `text`; false if there is none.
bool takeDigits(std::string_view& text) {
  const auto digits = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
  text.remove_prefix(digits);
  return digits != 0;
}

bool isNegative(std::string_view value) { return !value.empty() && value.front() == '-'; }

bool isDecimal(std::string_view value) {
  if (isNegative(value)) value.remove_prefix(1);
  if (!takeDigits(value)) return false;
  if (value.empty()) return true;
  if (value.front() != '.') return false;
  value.remove_prefix(1);
  return takeDigits(value) && value.empty();
}

char harmless(char c) {
  const auto byte = static_cast<unsigned char>(c);
  const bool isControl = byte < 0x20 || byte == 0x7F;
  return isControl || c == ':' || c == '|' || c == '@' || c == '#' ? '_' : c;
}

}  // namespace

bool StatsdDatagram::add(std::string_view path, std::string_view value) noexcept {
  const std::size_t before = size_;
  bool fits = true;
  if (!isDecimal(value)) {
    fits = addText(path, value);
  } else {
    if (isNegative(value)) fits = addLine(path, "0", 'g');
    fits = fits && addLine(path, value, 'g');
  }
  if (!fits) size_ = before;
  return fits;
}

bool StatsdDatagram::addLine(std::string_view path, std::string_view value, char type) noexcept {
  const std::size_t separator = size_ != 0 ? 1 : 0;
  constexpr std::size_t SIGNS = 3;
  // Each by itself first: their sum might wrap.
  if (path.size() > CAPACITY || value.size() > CAPACITY) return false;
  if (separator + path.size() + value.size() + SIGNS > CAPACITY - size_) return false;
  char* to = bytes_ + size_;
  if (separator != 0) *to++ = '\n';
  to = std::transform(path.begin(), path.end(), to, harmless);
  *to++ = ':';
  to = std::transform(value.begin(), value.end(), to, harmless);
  *to++ = '|';
  *to++ = type;
  size_ = static_cast<std::size_t>(to - bytes_);
  return true;
}

}  // namespace qx::detail

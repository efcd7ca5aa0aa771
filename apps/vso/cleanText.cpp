#include "apps/vso/cleanText.h"

#include <algorithm>
#include <string_view>

#include "qxshared/cleanString.h"

namespace qx::app {

namespace {

/// True for the bytes that go on with a character.
bool isFurther(char byte) { return (byte & 0xC0) == 0x80; }

bool isShown(char32_t character) {
  const auto isIn = [character](char32_t first, char32_t last) { return first <= character && character <= last; };
  const bool isControl = character < 0x20 || isIn(0x7F, 0x9F);
  const bool turns = isIn(0x202A, 0x202E) || isIn(0x2066, 0x2069);
  const bool isForeignToXml = isIn(0xFFFE, 0xFFFF);
  return !isControl && !turns && !isForeignToXml;
}

/// The forms of UTF-8, by the bits that their first byte has in common.
struct Form {
  unsigned char mask;
  unsigned char mark;
  std::size_t length;
  /// What a shorter form does not hold.
  char32_t least;
};
constexpr Form FORMS[] = {{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

/// The length of a character that is shown and that `text`, which is not empty, begins with; 0 if there is none.
std::size_t shownLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  for (const Form& form : FORMS) {
    if ((first & form.mask) != form.mark) continue;
    if (text.size() < form.length) return 0;
    char32_t character = first & static_cast<unsigned char>(~form.mask);
    for (const char byte : text.substr(1, form.length - 1)) {
      if (!isFurther(byte)) return 0;
      character = character << 6 | (static_cast<unsigned char>(byte) & 0x3F);
    }
    constexpr char32_t LAST = 0x10FFFF;
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    const bool isValid = character >= form.least && character <= LAST && !isSurrogate;
    return isValid && isShown(character) ? form.length : 0;
  }
  return 0;
}

}  // namespace

std::string cleanText(const std::string& text) {
  std::string clean;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t shown = shownLength(rest);
    const std::size_t taken = std::max<std::size_t>(shown, 1);
    const std::string piece(rest.substr(0, taken));
    clean += shown != 0 ? piece : cleanString(piece);
    rest.remove_prefix(taken);
  }
  return clean;
}

std::size_t charactersOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !isFurther(c); }));
}

std::string clipped(const std::string& text, std::size_t most) {
  if (charactersOf(text) <= most) return text;
  const std::string_view end = "...";
  std::size_t kept = 0;
  for (std::size_t left = most - end.size();; ++kept) {
    if (isFurther(text[kept])) continue;
    if (left-- == 0) break;
  }
  return text.substr(0, kept) += end;
}

}  // namespace qx::app

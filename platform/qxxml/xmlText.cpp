#include "qxxml/xmlText.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace qx::detail {

namespace {

constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";  // U+FFFD

enum class Byte : unsigned char {
  PLAIN,    // a character that needs no escape
  ESCAPED,  // a character that needs one, at least in some places
  LEAD,     // outside ASCII: the sequence tells
  BAD,      // no XML document has it
};

constexpr std::array<Byte, 256> classify() {
  std::array<Byte, 256> bytes{};
  for (std::size_t code = 0; code < bytes.size(); ++code) {
    bytes[code] = code < 0x20 ? Byte::BAD : code < 0x80 ? Byte::PLAIN : Byte::LEAD;
  }
  bytes['\t'] = bytes['\n'] = bytes['\r'] = Byte::ESCAPED;
  bytes['<'] = bytes['>'] = bytes['&'] = bytes['"'] = Byte::ESCAPED;
  return bytes;
}

constexpr std::array<Byte, 256> BYTES = classify();

Byte classOf(char c) { return BYTES[static_cast<unsigned char>(c)]; }

/// What a text begins with: its length in bytes, and whether a document can carry it.
struct Character {
  std::size_t length;
  bool good;
};

/// What a first byte says of its sequence: the bytes that follow, and the range that the next one must lie in.
struct Sequence {
  std::size_t following;
  unsigned char low;
  unsigned char high;
};

Sequence sequenceOf(unsigned char lead) {
  if (lead < 0xC2 || lead > 0xF4) return {0, 0, 0};
  if (lead < 0xE0) return {1, 0x80, 0xBF};
  if (lead == 0xE0) return {2, 0xA0, 0xBF};  // no overlong form
  if (lead == 0xED) return {2, 0x80, 0x9F};  // no surrogate
  if (lead < 0xF0) return {2, 0x80, 0xBF};
  if (lead == 0xF0) return {3, 0x90, 0xBF};  // no overlong form
  if (lead == 0xF4) return {3, 0x80, 0x8F};  // nothing above U+10FFFF
  return {3, 0x80, 0xBF};
}

/// The character that `text`, which is not empty and begins outside ASCII, begins with.
Character sequenceAt(std::string_view text) {
  Sequence sequence = sequenceOf(static_cast<unsigned char>(text.front()));
  if (sequence.following == 0) return {1, false};
  for (std::size_t i = 1; i <= sequence.following; ++i) {
    const unsigned char byte = i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
    if (byte < sequence.low || byte > sequence.high) return {i, false};
    sequence.low = 0x80;
    sequence.high = 0xBF;
  }
  const std::string_view character = text.substr(0, sequence.following + 1);
  return {character.size(), character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF"};
}

Character characterAt(std::string_view text) {
  const Byte byte = classOf(text.front());
  return byte == Byte::LEAD ? sequenceAt(text) : Character{1, byte != Byte::BAD};
}

bool isNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isNameByte(char c) { return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; }

}  // namespace

bool isXmlText(std::string_view text) noexcept {
  while (!text.empty()) {
    const Character character = characterAt(text);
    if (!character.good) return false;
    text.remove_prefix(character.length);
  }
  return true;
}

bool isPlainXmlText(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), [](char c) { return classOf(c) == Byte::PLAIN; });
}

std::string xmlText(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const Character character = characterAt(text);
    clean += character.good ? text.substr(0, character.length) : REPLACEMENT;
    text.remove_prefix(character.length);
  }
  return clean;
}

bool isXmlName(std::string_view name) noexcept {
  return !name.empty() && isNameStart(name.front()) && std::all_of(name.begin(), name.end(), isNameByte);
}

std::string xmlName(std::string_view name) {
  std::string clean(name);
  std::replace_if(
      clean.begin(), clean.end(), [](char c) { return !isNameByte(c); }, '_');
  if (clean.empty() || !isNameStart(clean.front())) clean.insert(clean.begin(), '_');
  return clean;
}

}  // namespace qx::detail

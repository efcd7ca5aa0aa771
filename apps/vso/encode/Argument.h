// One argument of a command: what it is called, what it may hold, and what stands in for it.
#pragma once

#include <string>

namespace qx::app {

enum class ArgumentKind {
  NUMBER,            ///< In C notation.
  STATUS,            ///< A number of one byte, or the name of a ZclStatus: "not-found".
  ADDRESS,           ///< 16 hexadecimal digits, most significant first.
  TEXT,              ///< Characters as they are.
  OCTETS,            ///< Hexadecimal digits, two a byte.
  NUMBERS,           ///< Numbers with commas between them; none for an empty text.
  ATTRIBUTE_ID,      ///< ID.
  ATTRIBUTE_VALUE,   ///< ID:TYPE:VALUE.
  ATTRIBUTE_ANSWER,  ///< ID:TYPE:VALUE, or ID:STATUS for an attribute that was refused.
  ATTRIBUTE_STATUS,  ///< ID:STATUS.
  SCENE_EXTENSION,   ///< CLUSTER:VALUE.
  FLAG,              ///< Without a value.
};

struct Argument {
  /// Without the dashes.
  const char* name;
  ArgumentKind kind;
  const char* description;
  /// Bounds of a number or of each of a list; of a text or of octets, `most` bounds their count.
  long long least = 0;
  long long most = 0;
  bool isRequired = true;
  /// May be given again, each time with one value.
  bool isRepeated = false;
  /// Stands in for an argument that is not given; null for none.
  const char* fallback = nullptr;

  constexpr Argument optional() const {
    Argument changed = *this;
    changed.isRequired = false;
    return changed;
  }
  constexpr Argument orElse(const char* value) const {
    Argument changed = optional();
    changed.fallback = value;
    return changed;
  }
  constexpr Argument repeated() const {
    Argument changed = *this;
    changed.isRepeated = true;
    return changed;
  }
  constexpr Argument within(long long lowest, long long highest) const {
    Argument changed = *this;
    changed.least = lowest;
    changed.most = highest;
    return changed;
  }

  /// What its value looks like, for help: "0..255", "ID:TYPE:VALUE". Empty for a flag.
  std::string form() const;
};

constexpr Argument u8(const char* name, const char* description) {
  return {name, ArgumentKind::NUMBER, description, 0, 0xFF};
}
constexpr Argument i8(const char* name, const char* description) {
  return {name, ArgumentKind::NUMBER, description, -0x80, 0x7F};
}
constexpr Argument u16(const char* name, const char* description) {
  return {name, ArgumentKind::NUMBER, description, 0, 0xFFFF};
}
constexpr Argument u32(const char* name, const char* description) {
  return {name, ArgumentKind::NUMBER, description, 0, 0xFFFFFFFF};
}
constexpr Argument u16List(const char* name, const char* description) {
  return {name, ArgumentKind::NUMBERS, description, 0, 0xFFFF};
}
constexpr Argument text(const char* name, const char* description, long long longest) {
  return {name, ArgumentKind::TEXT, description, 0, longest};
}
constexpr Argument octets(const char* name, const char* description, long long longest) {
  return {name, ArgumentKind::OCTETS, description, 0, longest};
}
constexpr Argument status(const char* name, const char* description) {
  return {name, ArgumentKind::STATUS, description, 0, 0xFF};
}
constexpr Argument address(const char* name, const char* description) {
  return {name, ArgumentKind::ADDRESS, description};
}
constexpr Argument flag(const char* name, const char* description) {
  return Argument{name, ArgumentKind::FLAG, description}.optional();
}

}  // namespace qx::app

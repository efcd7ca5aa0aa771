// What the payload of a command holds: the fields of a ZCL command behind the header, or of a ZDO command behind the
// sequence number.
#pragma once

#include <array>

namespace qx {

/// Numbers are little-endian.
enum class FieldKind : unsigned char {
  NONE,
  U8,
  U16,
  U32,
  ID16,                ///< As U16: an id, which people read in hexadecimal digits.
  ID32,                ///< As U32: a mask or a version, which people read in hexadecimal digits.
  RATE,                ///< One byte, as the standard has it, or two, as this system sends it.
  ZCL_STATUS,          ///< One byte, a ZclStatus.
  ZDO_STATUS,          ///< One byte, a ZdoStatus.
  ADDRESS,             ///< 8 bytes, a long address with its least significant byte first.
  TEXT,                ///< A length byte and as many characters.
  OCTETS,              ///< As many bytes as the byte in front of them says.
  U8_LIST,             ///< As many numbers as the byte in front of them says.
  ID16_LIST,           ///< As many ids as the byte in front of them says.
  NEIGHBOURS,          ///< As many entries (see ZdoNetworkLqiResponse) as the byte in front of them says.
  ROUTES,              ///< As many entries (see ZdoNetworkRtgResponse) as the byte in front of them says.
  ENERGY_VALUES,       ///< One byte for each of channels 11 to 26 in the mask behind the status.
  SCENE_EXTENSIONS,    ///< Up to the end: cluster id (2), length (1) and as many bytes.
  ATTRIBUTE_IDS,       ///< Up to the end, as each of the following: RecordLayout::ID.
  ATTRIBUTE_VALUES,    ///< RecordLayout::VALUE.
  ATTRIBUTE_ANSWERS,   ///< RecordLayout::STATUS_VALUE.
  ATTRIBUTE_STATUSES,  ///< RecordLayout::STATUS_ID, or a single status byte.
  OPAQUE,              ///< Up to the end, of a structure that is not known here.
};

/// A test of one byte in front of the field in question: `byte & mask` lies within `least` to `most`.
struct FieldCondition {
  unsigned char at;  ///< Offset in the payload.
  unsigned char mask;
  unsigned char least;
  unsigned char most;
};

/// Whether a field has to be there.
enum class FieldPresence : unsigned char {
  ALWAYS,
  IF,              ///< Only if the condition holds.
  MAY_END,         ///< The frame may end in front of it, and then has none of the fields behind it either.
  MAY_END_UNLESS,  ///< The same unless the condition holds.
};

/// One field, or all rows of a list or a table.
struct FieldLayout {
  /// In the library's own terms.
  const char* name = nullptr;
  FieldKind kind = FieldKind::NONE;
  FieldPresence presence = FieldPresence::ALWAYS;
  /// Of the presences that have one.
  FieldCondition condition = {};
  /// What one row of a list or a table is called.
  const char* row = nullptr;
};

/// A command and its fields.
struct CommandLayout {
  /// As people call it: "add group response".
  const char* name;
  /// In the order of the payload; those behind the last are NONE.
  std::array<FieldLayout, 10> fields = {};
};

}  // namespace qx

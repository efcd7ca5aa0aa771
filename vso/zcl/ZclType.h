// The data types of ZCL attributes: how long a value is and how it prints.
#pragma once

#include <array>
#include <cstddef>

namespace qx {

/// Type codes as they stand in front of a value (ZCL standard, data type table). Only the types that the library knows:
/// all others have values of length 0 and do not print.
namespace ZclType {
constexpr unsigned char DATA8 = 0x08;
constexpr unsigned char DATA16 = 0x09;
constexpr unsigned char DATA24 = 0x0A;
constexpr unsigned char DATA32 = 0x0B;
constexpr unsigned char BOOLEAN = 0x10;
constexpr unsigned char BITMAP8 = 0x18;
constexpr unsigned char BITMAP16 = 0x19;
constexpr unsigned char BITMAP24 = 0x1A;
constexpr unsigned char BITMAP32 = 0x1B;
constexpr unsigned char UINT8 = 0x20;
constexpr unsigned char UINT16 = 0x21;
constexpr unsigned char UINT24 = 0x22;
constexpr unsigned char UINT32 = 0x23;
constexpr unsigned char INT8 = 0x28;
constexpr unsigned char INT16 = 0x29;
constexpr unsigned char INT24 = 0x2A;
constexpr unsigned char INT32 = 0x2B;
constexpr unsigned char ENUM8 = 0x30;
constexpr unsigned char ENUM16 = 0x31;
constexpr unsigned char SEMI_FLOAT = 0x38;
constexpr unsigned char SINGLE_FLOAT = 0x39;
constexpr unsigned char DOUBLE_FLOAT = 0x3A;
constexpr unsigned char TEXT = 0x40;  ///< Treated as a character string.
constexpr unsigned char OCTET_STRING = 0x41;
constexpr unsigned char CHARACTER_STRING = 0x42;
constexpr unsigned char TIME_OF_DAY = 0xE0;
constexpr unsigned char DATE = 0xE1;
constexpr unsigned char CLUSTER_ID = 0xE8;
constexpr unsigned char ATTRIBUTE_ID = 0xE9;
constexpr unsigned char BACNET_OID = 0xEA;
constexpr unsigned char IEEE_ADDRESS = 0xF0;
}  // namespace ZclType

namespace detail {

/// What a value is made of and how it is shown.
enum class ZclValueKind : unsigned char {
  UNKNOWN,  ///< Not in the table.
  DECIMAL,  ///< A number, shown in decimal without sign.
  BOOLEAN,  ///< A byte, shown as 1 if it is not zero and as 0 otherwise.
  HEX,      ///< A number, shown as a bit pattern: two hexadecimal digits a byte, highest byte first.
  TEXT,     ///< A length byte and as many characters.
  OCTETS,   ///< A length byte and as many bytes.
};

/// Four bytes wide, so that the walk over a frame finds a row with one scaled load.
struct alignas(4) ZclTypeRow {
  unsigned char code;
  unsigned char size;  ///< Bytes of the value in a frame; for strings, of the length byte alone.
  ZclValueKind kind;

  constexpr bool isString() const { return kind == ZclValueKind::TEXT || kind == ZclValueKind::OCTETS; }
};

/// Signed numbers and floats show their bits, and an IEEE address its digits from the most significant byte on, so all
/// of these are HEX.
inline constexpr ZclTypeRow ZCL_TYPES[] = {
    {ZclType::DATA8, 1, ZclValueKind::DECIMAL},
    {ZclType::DATA16, 2, ZclValueKind::DECIMAL},
    {ZclType::DATA24, 3, ZclValueKind::HEX},
    {ZclType::DATA32, 4, ZclValueKind::DECIMAL},
    {ZclType::BOOLEAN, 1, ZclValueKind::BOOLEAN},
    {ZclType::BITMAP8, 1, ZclValueKind::HEX},
    {ZclType::BITMAP16, 2, ZclValueKind::HEX},
    {ZclType::BITMAP24, 3, ZclValueKind::HEX},
    {ZclType::BITMAP32, 4, ZclValueKind::HEX},
    {ZclType::UINT8, 1, ZclValueKind::DECIMAL},
    {ZclType::UINT16, 2, ZclValueKind::DECIMAL},
    {ZclType::UINT24, 3, ZclValueKind::HEX},
    {ZclType::UINT32, 4, ZclValueKind::DECIMAL},
    {ZclType::INT8, 1, ZclValueKind::HEX},
    {ZclType::INT16, 2, ZclValueKind::HEX},
    {ZclType::INT24, 3, ZclValueKind::HEX},
    {ZclType::INT32, 4, ZclValueKind::HEX},
    {ZclType::ENUM8, 1, ZclValueKind::DECIMAL},
    {ZclType::ENUM16, 2, ZclValueKind::DECIMAL},
    {ZclType::SEMI_FLOAT, 2, ZclValueKind::HEX},
    {ZclType::SINGLE_FLOAT, 4, ZclValueKind::HEX},
    {ZclType::DOUBLE_FLOAT, 8, ZclValueKind::HEX},
    {ZclType::TEXT, 1, ZclValueKind::TEXT},
    {ZclType::OCTET_STRING, 1, ZclValueKind::OCTETS},
    {ZclType::CHARACTER_STRING, 1, ZclValueKind::TEXT},
    {ZclType::TIME_OF_DAY, 4, ZclValueKind::HEX},
    {ZclType::DATE, 4, ZclValueKind::HEX},
    {ZclType::CLUSTER_ID, 2, ZclValueKind::HEX},
    {ZclType::ATTRIBUTE_ID, 2, ZclValueKind::HEX},
    {ZclType::BACNET_OID, 4, ZclValueKind::HEX},
    {ZclType::IEEE_ADDRESS, 8, ZclValueKind::HEX},
};

constexpr bool isSortedByCode() {
  for (std::size_t i = 1; i < std::size(ZCL_TYPES); ++i) {
    if (ZCL_TYPES[i - 1].code >= ZCL_TYPES[i].code) return false;
  }
  return true;
}
static_assert(isSortedByCode(), "the rows stand in the order of their codes, each once");

constexpr std::array<ZclTypeRow, 256> indexByCode() {
  std::array<ZclTypeRow, 256> index{};
  for (const ZclTypeRow& row : ZCL_TYPES) index[row.code] = row;
  return index;
}
inline constexpr std::array<ZclTypeRow, 256> ZCL_TYPE_BY_CODE = indexByCode();

/// The row of a type; one of size 0 and kind UNKNOWN for a code that the table does not have.
constexpr const ZclTypeRow& zclType(unsigned char code) { return ZCL_TYPE_BY_CODE[code]; }

}  // namespace detail

}  // namespace qx

// One attribute of a general command: id, type and value.
#pragma once

#include <boost/array.hpp>
#include <iosfwd>
#include <string>

#include "vso/identifiers/Euid.h"

namespace qx {

/// One attribute with a value of at most 200 bytes. A plain value that needs no allocation.
///
/// `data_` holds the value in one of two forms, and code must know which one it has:
/// - readable form, what the list readers of ZclMessage leave by default: numbers as on the wire (little-endian), a
///   character string as its characters from `data_[0]` on with zeros behind, an octet string as its hexadecimal text;
/// - wire form, what the list builders expect: numbers likewise, strings with their length byte at `data_[0]`.
class AttributeRecordData {
 public:
  static constexpr unsigned int DATA_SIZE = 200;
  using Data = boost::array<unsigned char, DATA_SIZE>;

  /// All zero.
  AttributeRecordData() noexcept;
  AttributeRecordData(unsigned short id, unsigned char type, const Data& data) noexcept;

  /// The first two, four, eight bytes of the value as a little-endian number.
  unsigned short getUInt16() const noexcept;
  unsigned int getUInt32() const noexcept;
  unsigned long long getUInt64() const noexcept;
  /// The first eight bytes, least significant first as on the wire, as an address.
  Euid getEuid() const noexcept;

  /// The first `count` bytes of `data_`, at most 200, as hexadecimal digits.
  std::string getBytesAsHex(unsigned int count) const;
  /// "0x" and four digits.
  std::string hexId() const;
  /// "0x" and two digits.
  std::string hexType() const;

  /// Prints the value into `out` as its type asks for: decimal, bit pattern, text. True on failure: a type that is not
  /// known is logged as an error and leaves `out` alone.
  ///
  /// An octet string is expected in wire form and is appended to what `out` holds; with any other type `out` is
  /// replaced. Text is expected in readable form. Throws std::out_of_range, "array<>: index out of range", if an octet
  /// string in `data_` claims more bytes than `data_` has.
  bool valueToString(std::string& out) const;

  /// Writes "<AttributeRecordData id_: 0x0000, type_: 0x10, data_: 1>" to `out` and returns it. A value that does not
  /// print shows its first four bytes in hexadecimal and " (error)". Throws as `valueToString` does.
  std::ostream& print(std::ostream& out) const;

  unsigned short id_ = 0;
  unsigned char type_ = 0;
  Data data_;
};

/// As `print`.
std::ostream& operator<<(std::ostream& out, const AttributeRecordData& record);

}  // namespace qx

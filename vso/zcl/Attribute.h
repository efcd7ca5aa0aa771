// Attributes as a class reads and writes them: one line of description each, one read, one test, one record.
#pragma once

#include <string>

#include "vso/zcl/AttributeRecordData.h"

namespace qx {

class ZclMessage;

namespace detail {

enum class RecordLayout : int;

/// T is the value in the program, `type` the ZclType under which it goes out. A reader takes any type.
template <typename T>
struct Attribute {
  unsigned short id;
  unsigned char type;
};

/// The value of the first record with the attribute's id in a frame whose records are laid out as `layout` says; 0 or
/// empty if there is none. T is unsigned char or signed char (the first byte of the value in readable form), unsigned
/// short (its first two bytes, little-endian), Euid (its first eight bytes, least significant first) or std::string
/// (the text up to its first zero).
template <typename T>
T readFirst(const ZclMessage& frame, RecordLayout layout, const Attribute<T>& attribute);

/// The characters of `data` from `from` on, up to the first zero or the end.
std::string textOf(const AttributeRecordData::Data& data, unsigned int from = 0);

/// The attribute with a value, in wire form, ready to be added to a frame.
template <typename T>
AttributeRecordData recordOf(const Attribute<T>& attribute, const T& value);

}  // namespace detail

}  // namespace qx

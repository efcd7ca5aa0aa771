// The data types of attributes, with a sample value of each in all its forms.
#pragma once

#include <algorithm>
#include <iterator>
#include <ostream>

namespace qx::test {

struct TypeSample {
  unsigned char code;
  const char* name;
  unsigned int bytes;    ///< Of the sample in a frame.
  const char* wire;      ///< The sample in a frame.
  const char* readable;  ///< The sample as the parsers leave it in a record.
  const char* printed;   ///< The sample as text; that of an octet string from its wire form.
};

inline constexpr TypeSample TYPE_SAMPLES[] = {
    {0x08, "Data8", 1, "fe", "fe", "254"},
    {0x09, "Data16", 2, "02 ff", "02 ff", "65282"},
    {0x0A, "Data24", 3, "03 02 81", "03 02 81", "810203"},
    {0x0B, "Data32", 4, "04 03 02 81", "04 03 02 81", "2164392708"},
    {0x10, "Boolean", 1, "02", "02", "1"},
    {0x18, "Bitmap8", 1, "fa", "fa", "fa"},
    {0x19, "Bitmap16", 2, "fa ce", "fa ce", "cefa"},
    {0x1A, "Bitmap24", 3, "03 02 01", "03 02 01", "010203"},
    {0x1B, "Bitmap32", 4, "04 03 02 01", "04 03 02 01", "01020304"},
    {0x20, "Uint8", 1, "ff", "ff", "255"},
    {0x21, "Uint16", 2, "04 03", "04 03", "772"},
    {0x22, "Uint24", 3, "03 02 81", "03 02 81", "810203"},
    {0x23, "Uint32", 4, "ff ff ff ff", "ff ff ff ff", "4294967295"},
    {0x28, "Int8", 1, "fe", "fe", "fe"},
    {0x29, "Int16", 2, "fe ff", "fe ff", "fffe"},
    {0x2A, "Int24", 3, "fe ff ff", "fe ff ff", "fffffe"},
    {0x2B, "Int32", 4, "fe ff ff ff", "fe ff ff ff", "fffffffe"},
    {0x30, "Enum8", 1, "80", "80", "128"},
    {0x31, "Enum16", 2, "01 80", "01 80", "32769"},
    {0x38, "SemiFloat", 2, "01 3c", "01 3c", "3c01"},
    {0x39, "SingleFloat", 4, "01 00 80 3f", "01 00 80 3f", "3f800001"},
    {0x3A, "DoubleFloat", 8, "08 07 06 05 04 03 02 81", "08 07 06 05 04 03 02 81", "8102030405060708"},
    {0x40, "Text", 4, "03 61 62 63", "61 62 63", "abc"},
    {0x41, "OctetString", 3, "02 ab cd", "61 62 63 64", "abcd"},
    {0x42, "CharacterString", 3, "02 68 69", "68 69", "hi"},
    {0xE0, "TimeOfDay", 4, "0a 1e 2d 63", "0a 1e 2d 63", "632d1e0a"},
    {0xE1, "Date", 4, "7c 02 1d 04", "7c 02 1d 04", "041d027c"},
    {0xE8, "ClusterId", 2, "06 0b", "06 0b", "0b06"},
    {0xE9, "AttributeId", 2, "05 40", "05 40", "4005"},
    {0xEA, "BacnetOid", 4, "04 03 02 81", "04 03 02 81", "81020304"},
    {0xF0, "IeeeAddress", 8, "88 77 66 55 44 33 22 11", "88 77 66 55 44 33 22 11", "1122334455667788"},
};

inline bool isKnownType(unsigned int code) {
  return std::any_of(std::begin(TYPE_SAMPLES), std::end(TYPE_SAMPLES),
                     [code](const TypeSample& sample) { return sample.code == code; });
}

inline bool isString(const TypeSample& sample) { return sample.code >= 0x40 && sample.code <= 0x42; }

inline std::ostream& operator<<(std::ostream& out, const TypeSample& sample) { return out << sample.name; }

}  // namespace qx::test

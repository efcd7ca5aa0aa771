// Bytes and 16-bit numbers to hexadecimal text and back.
#pragma once

#include <string>

namespace qx {

/// Prints `count` elements as lowercase hexadecimal numbers, two digits each for unsigned char and four for unsigned
/// short (high digit first), with one blank between elements if `separators` is set. The text replaces the content of
/// `out`. Returns `data`; if that is null, `out` is left alone.
///
///   hexify(bytes, 2, text, true);   // 0x01, 0xAB: "01 ab"
template <typename T>
const T* hexify(const T* data, unsigned int count, std::string& out, bool separators);

extern template const unsigned char* hexify(const unsigned char*, unsigned int, std::string&, bool);
extern template const unsigned short* hexify(const unsigned short*, unsigned int, std::string&, bool);

/// Reads `text` as elements of two digits (unsigned char) or four (unsigned short), first digit highest, and writes
/// them to `out`. Returns `out`, or null with nothing written if `out` is null, if the length of the text is no
/// multiple of the digits, or if the text is longer than `capacity` elements.
///
/// The test of the capacity looks only at the low 8 (unsigned char) or 16 (unsigned short) bits of the text's length: a
/// text of 258 characters passes for a single byte, and all its 129 bytes are written. A caller that does not know the
/// text tests its length first.
///
/// No character is an error: the codes from '*' to '?' count as their low four bits, letters a to f and A to F as 10
/// to 15, all others as 0.
template <typename T>
T* deHexify(const std::string& text, T* out, unsigned int capacity);

extern template unsigned char* deHexify(const std::string&, unsigned char*, unsigned int);
extern template unsigned short* deHexify(const std::string&, unsigned short*, unsigned int);

namespace detail {

/// Writes `byte` as two lowercase digits at `out` and returns the place behind them.
char* hexDigits(unsigned char byte, char* out) noexcept;

/// The byte that two characters stand for, the first being its high digit, with the values of `deHexify`.
unsigned char byteOfDigits(unsigned char high, unsigned char low) noexcept;

}  // namespace detail

}  // namespace qx

// The 64-bit extended PAN id of a mesh.
#pragma once

#include <iosfwd>
#include <string>
#include <type_traits>

namespace qx {

class XmlReader;
class XmlWriter;
namespace pb {
class PanIdPBuf;
}

/// An extended PAN id. Its 8 bytes are held in the order in which they arrive and compare byte by byte, byte 0 first.
class PanId {
 public:
  /// All 64 bits set.
  static const PanId INVALID;

  /// All zero.
  constexpr PanId() noexcept = default;
  /// Copies 8 bytes; null gives all zero.
  explicit PanId(const unsigned char* bytes) noexcept;
  /// Reads hexadecimal text, first two characters into byte 0. A shorter text fills the leading bytes and leaves the
  /// others zero; an odd length or more than 16 characters leave the id all zero. Any character is taken, see
  /// `deHexify`.
  explicit PanId(const std::string& hex);

  /// As construction from the text.
  PanId& operator=(const std::string& hex);
  /// Sets all 8 bytes to `value`.
  PanId& operator=(unsigned char value) noexcept;

  bool operator==(const PanId& other) const noexcept { return compare(other) == 0; }
  bool operator!=(const PanId& other) const noexcept { return compare(other) != 0; }
  bool operator<(const PanId& other) const noexcept { return compare(other) < 0; }
  bool operator>(const PanId& other) const noexcept { return compare(other) > 0; }
  /// True if each of the 8 bytes equals `value`; a value above 255 equals none.
  bool operator==(unsigned int value) const noexcept;
  bool operator!=(unsigned int value) const noexcept { return !(*this == value); }
  /// Compares with the id that `hex` gives.
  bool operator==(const std::string& hex) const { return *this == PanId(hex); }

  /// Reverses the 8 bytes in place.
  void byteSwap() noexcept;
  /// Takes 8 bytes from the C library's generator, seeded anew from the clock in microseconds. Good enough to tell
  /// meshes apart, no source of secrets; concurrent callers share the generator.
  void randomize();

  /// The 8 bytes in order.
  const unsigned char* cArray() const noexcept { return id_; }
  /// Always 8.
  unsigned int length() const noexcept { return sizeof id_; }
  /// Writes the 8 bytes to `out`.
  void copy(unsigned char* out) const noexcept;
  /// 16 lowercase hexadecimal digits.
  operator std::string() const;

  /// A new message with the 8 bytes. Caller owns the result.
  pb::PanIdPBuf* toProtobuf() const;
  /// Takes the first 8 bytes. True on failure: fewer than 8 were there, and the others keep their value.
  bool fromProtobuf(const pb::PanIdPBuf& message);
  /// Writes an element `name` with the digits in an element "addr".
  void toXml(XmlWriter& writer, const std::string& name) const;
  /// Reads on to the next element "addr" and takes its 16 digits. True on failure: the text is of another length, and
  /// the id unchanged, or the reader is in its error state. A document without an "addr" is a failure too.
  bool fromXml(XmlReader& reader);

 private:
  struct AllOnes {};
  explicit constexpr PanId(AllOnes) noexcept : id_{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF} {}

  int compare(const PanId& other) const noexcept;

  unsigned char id_[8] = {};
};

static_assert(sizeof(PanId) == 8, "a PanId is exactly its 8 bytes");
static_assert(std::is_standard_layout_v<PanId>, "a PanId can be addressed as its bytes");

/// Writes 16 lowercase hexadecimal digits, and leaves the stream in hexadecimal with a fill of '0': numbers printed
/// after a PanId come out in hexadecimal. (Euid puts the stream back.)
std::ostream& operator<<(std::ostream& out, const PanId& panId);

}  // namespace qx

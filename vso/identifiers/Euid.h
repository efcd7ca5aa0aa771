// The 64-bit long address of a node.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <type_traits>

namespace qx {

class XmlWriter;
namespace pb {
class EuidPBuf;
}

/// A long address. Its 8 bytes are held as they are displayed, most significant byte of the address first, which is
/// the reverse of their order on the air: frame code calls `byteSwap` on the way in and out.
///
/// Ordering, and the serial forms, see the same 8 bytes as a little-endian integer: byte 0 weighs least. (PanId, by
/// contrast, orders byte-wise from byte 0 on.)
class Euid {
 public:
  /// All 64 bits set. ALL has the same value: the two compare equal and cannot be told apart.
  static const Euid INVALID;
  static const Euid ALL;

  /// The all-zero address.
  constexpr Euid() noexcept = default;
  /// Copies 8 bytes without change of order; null gives the all-zero address.
  explicit Euid(const unsigned char* bytes) noexcept;

  /// Reads hexadecimal text, first two characters into byte 0. A shorter text fills the leading bytes and leaves the
  /// others zero; an odd length or more than 16 characters leave the address all zero. Any character is taken, see
  /// `deHexify`.
  Euid& operator=(const std::string& hex);
  /// Compares with the address that `hex` gives by assignment.
  bool operator==(const std::string& hex) const;

  bool operator==(const Euid& other) const noexcept { return id_ == other.id_; }
  bool operator!=(const Euid& other) const noexcept { return id_ != other.id_; }
  /// By the integer view.
  bool operator<(const Euid& other) const noexcept;

  /// Reverses the 8 bytes in place.
  void byteSwap() noexcept { id_ = __builtin_bswap64(id_); }
  /// Adds 1 to the address as displayed (byte 7 is the lowest). All ones wrap to zero.
  void operator++(int) noexcept;

  /// A 32-bit hash of all 8 bytes: one mixing step of MurmurHash3 over the two folded halves.
  std::uint32_t hash() const noexcept;

  /// The 8 bytes, in display order.
  const unsigned char* cArray() const noexcept { return reinterpret_cast<const unsigned char*>(&id_); }
  /// Always 8.
  unsigned int length() const noexcept { return sizeof id_; }
  /// Writes the 8 bytes to `out`, in display order.
  void copy(unsigned char* out) const noexcept;
  /// 16 lowercase hexadecimal digits.
  std::string toString() const;

  /// A new message with the integer view. Caller owns the result.
  pb::EuidPBuf* toProtobuf() const;
  /// Takes the integer view. True on failure, of which there is none.
  bool fromProtobuf(const pb::EuidPBuf& message);
  bool fromProtobuf(unsigned long long id);
  /// Writes an element `name` with the integer view in decimal.
  void toXml(XmlWriter& writer, const std::string& name) const;

 private:
  struct AllOnes {};
  explicit constexpr Euid(AllOnes) noexcept : id_(0xFFFFFFFFFFFFFFFF) {}
  unsigned char* bytes() noexcept { return reinterpret_cast<unsigned char*>(&id_); }
  /// The 8 bytes as a little-endian integer, whatever the byte order of the machine.
  std::uint64_t integer() const noexcept;

  std::uint64_t id_ = 0;
};

static_assert(sizeof(Euid) == 8, "an Euid is exactly its 8 bytes");
static_assert(std::is_standard_layout_v<Euid>, "an Euid can be addressed as its bytes");

/// Writes 16 lowercase hexadecimal digits, and leaves the stream in decimal with a fill of blank.
std::ostream& operator<<(std::ostream& out, const Euid& euid);

/// Appends the address to `text` in place and returns `text`.
std::string& operator+(std::string& text, const Euid& euid);

}  // namespace qx

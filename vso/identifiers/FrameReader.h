// Reads numbers and bytes out of a frame, front to back, without ever leaving its storage.
#pragma once

#include <cstring>
#include <string>

#include "vso/identifiers/U255Buff.h"

namespace qx {

/// A cursor over bytes from outside. It has two bounds: the end of what was received says when a walk is over
/// (`more()`), the end of the storage says which bytes exist. Between the two, bytes are read as they stand; behind the
/// storage every byte reads as zero, and the cursor moves on all the same (a frame's walk never brings it near the end
/// of its 32 bits). Nothing throws and nothing allocates, but for the memory
/// of a text.
///
/// The byte order of a number is in the name of its reader, since both orders occur in one frame.
class FrameReader {
 public:
  /// Reads `frame` from offset `at` on. The end is the frame's length, cut to the storage.
  explicit FrameReader(const U255Buff<unsigned char>& frame, unsigned int at = 0) noexcept
      : FrameReader(frame.contents, U255Buff<unsigned char>::CAPACITY, frame.length_, at) {}

  /// Reads `capacity` bytes of storage, `end` of which are in use, from offset `at` on.
  FrameReader(const unsigned char* storage, unsigned int capacity, unsigned int end, unsigned int at = 0) noexcept
      : storage_(storage), capacity_(capacity), end_(end < capacity ? end : capacity), at_(at) {}

  /// True while the cursor stands before the end.
  bool more() const noexcept { return at_ < end_; }
  /// Offset of the cursor from the start of the storage; beyond the end after a read that ran past it.
  unsigned int at() const noexcept { return at_; }
  /// Bytes from the cursor to the end, 0 behind it.
  unsigned int left() const noexcept { return more() ? end_ - at_ : 0; }
  /// Moves on by `count` bytes.
  void skip(unsigned int count) noexcept { at_ += count; }

  unsigned char u8() noexcept {
    unsigned char byte[1];
    bytes(byte);
    return byte[0];
  }
  unsigned short u16le() noexcept {
    unsigned char byte[2];
    bytes(byte);
    return static_cast<unsigned short>(byte[0] | byte[1] << 8);
  }
  unsigned short u16be() noexcept {
    unsigned char byte[2];
    bytes(byte);
    return static_cast<unsigned short>(byte[0] << 8 | byte[1]);
  }
  unsigned int u32le() noexcept {
    unsigned char byte[4];
    bytes(byte);
    return static_cast<unsigned int>(byte[0]) | static_cast<unsigned int>(byte[1]) << 8 |
           static_cast<unsigned int>(byte[2]) << 16 | static_cast<unsigned int>(byte[3]) << 24;
  }
  unsigned int u32be() noexcept {
    unsigned char byte[4];
    bytes(byte);
    return static_cast<unsigned int>(byte[0]) << 24 | static_cast<unsigned int>(byte[1]) << 16 |
           static_cast<unsigned int>(byte[2]) << 8 | static_cast<unsigned int>(byte[3]);
  }
  unsigned long long u64le() noexcept {
    const unsigned long long low = u32le();
    return low | static_cast<unsigned long long>(u32le()) << 32;
  }

  /// Fills `out` with the next COUNT bytes.
  template <unsigned int COUNT>
  void bytes(unsigned char (&out)[COUNT]) noexcept {
    bytes(out, COUNT);
  }

  /// The next `count` bytes as text, the one read that may allocate.
  std::string text(unsigned int count) {
    std::string out(count, '\0');
    bytes(reinterpret_cast<unsigned char*>(out.data()), count);
    return out;
  }

  /// Writes the next `count` bytes to `out`. The only load.
  void bytes(unsigned char* out, unsigned int count) noexcept {
    if (at_ <= capacity_ && count <= capacity_ - at_) {
      if (count != 0) std::memcpy(out, storage_ + at_, count);
    } else {
      const unsigned int stored = at_ < capacity_ ? capacity_ - at_ : 0;
      if (stored != 0) std::memcpy(out, storage_ + at_, stored);
      std::memset(out + stored, 0, count - stored);
    }
    at_ += count;
  }

 private:
  const unsigned char* storage_;
  unsigned int capacity_;
  unsigned int end_;
  unsigned int at_;
};

}  // namespace qx

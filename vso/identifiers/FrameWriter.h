// Writes numbers and bytes into a frame, front to back, without ever leaving its storage.
#pragma once

#include <cstring>

#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/U255Buff.h"

namespace qx {

/// A cursor that writes into the storage of a frame. What does not fit behind the 255th byte is dropped and counted.
/// The frame's `length_` is not touched: whoever owns the frame sets it from `at()`. Nothing throws, nothing allocates.
class FrameWriter {
 public:
  /// Writes into `frame` from offset `at` on.
  FrameWriter(U255Buff<unsigned char>& frame, unsigned int at) noexcept : storage_(frame.contents), at_(at) {}

  /// Offset behind the last byte written. At most 255, unless the writer was made further out.
  unsigned int at() const noexcept { return at_; }
  /// How many bytes did not fit.
  unsigned int dropped() const noexcept { return dropped_; }

  void u8(unsigned char value) noexcept {
    if (at_ < U255Buff<unsigned char>::CAPACITY) {
      storage_[at_++] = value;
    } else {
      ++dropped_;
    }
  }
  void u16le(unsigned short value) noexcept {
    put({static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8)});
  }
  void u16be(unsigned short value) noexcept {
    put({static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)});
  }
  void u32le(unsigned int value) noexcept {
    put({static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
         static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)});
  }
  void bytes(const unsigned char* from, unsigned int count) noexcept {
    const unsigned int fitting = count < room() ? count : room();
    if (fitting != 0) std::memcpy(storage_ + at_, from, fitting);
    at_ += fitting;
    dropped_ += count - fitting;
  }
  /// Copies the next `count` bytes of `from`, which moves on by all of them; where its storage ends, zeros go out.
  void bytes(FrameReader& from, unsigned int count) noexcept {
    const unsigned int fitting = count < room() ? count : room();
    if (fitting != 0) from.bytes(storage_ + at_, fitting);
    from.skip(count - fitting);
    at_ += fitting;
    dropped_ += count - fitting;
  }

 private:
  unsigned int room() const noexcept {
    return at_ < U255Buff<unsigned char>::CAPACITY ? U255Buff<unsigned char>::CAPACITY - at_ : 0;
  }
  /// Bytes of one number: one test for all of them where they fit.
  template <unsigned int COUNT>
  void put(const unsigned char (&number)[COUNT]) noexcept {
    if (at_ <= U255Buff<unsigned char>::CAPACITY - COUNT) {
      std::memcpy(storage_ + at_, number, COUNT);
      at_ += COUNT;
    } else {
      for (const unsigned char byte : number) u8(byte);
    }
  }

  unsigned char* storage_;
  unsigned int at_;
  unsigned int dropped_ = 0;
};

}  // namespace qx

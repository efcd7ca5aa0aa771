// Frames and their storage, and the counter that numbers requests, for tests of ZDO frames.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "vso/identifiers/Euid.h"
#include "vso/zdo/ZdoSeqNumPeddler.h"

namespace qx::test {

/// The address of 16 digits.
inline Euid addressOf(const std::string& digits) {
  Euid euid;
  euid = digits;
  return euid;
}

/// One byte as in a frame's text.
inline std::string hexOf(unsigned char byte) { return hex(bytes({byte})); }

/// The number that the next request of this process gets. Takes one itself.
inline unsigned char nextNumber() { return static_cast<unsigned char>(ZdoSeqNumPeddler::instance().next() + 1); }

/// The 255 bytes of the storage, whatever the length says, and a zero: the ring on which entries of tables lie.
inline std::array<unsigned char, 256> ringOf(const U255Buff<unsigned char>& frame) {
  std::array<unsigned char, 256> ring{};
  for (unsigned int i = 0; i < 255; ++i) ring[i] = frame.contents[i];
  return ring;
}

/// The storage from `length_` on, as text.
inline std::string hexBehind(const U255Buff<unsigned char>& frame) {
  return hex(U255Buff<unsigned char>(frame.contents + frame.storedLength(), 255 - frame.storedLength()));
}

/// `count` zeros as text.
inline std::string zeros(unsigned int count) {
  std::string text;
  for (unsigned int i = 0; i < count; ++i) text += i == 0 ? "00" : " 00";
  return text;
}

/// A frame of 255 bytes, no two neighbours alike, which differs with `salt` in every byte.
inline U255Buff<unsigned char> mixedFrame(unsigned int salt) {
  U255Buff<unsigned char> frame;
  for (unsigned int i = 0; i < 255; ++i) frame.contents[i] = static_cast<unsigned char>(i * 167 + salt * 59 + i / 3);
  frame.length_ = 255;
  return frame;
}

}  // namespace qx::test

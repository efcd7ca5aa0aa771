// Frames of attributes made by chance: whole ones, ones with odd records, cut ones, and any bytes at all.
#pragma once

#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/vso/zcl/TypeTable.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::test {

/// Records of ids 0 to 0x17 behind a header, each with a status in front of its type if `withStatus` is set. What lies
/// behind the length is zero.
inline U255Buff<unsigned char> randomFrame(std::mt19937& random, bool withStatus) {
  const auto below = [&random](unsigned int bound) { return static_cast<unsigned int>(random() % bound); };
  const auto byte = [&below] { return static_cast<unsigned char>(below(256)); };
  std::vector<unsigned char> bytes;
  const unsigned int most = below(4) == 0 ? 255 : 3 + below(100);
  if (below(6) == 0) {
    while (bytes.size() < most) bytes.push_back(byte());
  } else {
    const bool manufacturer = below(5) == 0;
    bytes.push_back(static_cast<unsigned char>((byte() & ~0x04U) | (manufacturer ? 0x04 : 0)));
    while (bytes.size() < (manufacturer ? 5U : 3U)) bytes.push_back(byte());
    while (bytes.size() < most) {
      bytes.push_back(static_cast<unsigned char>(below(0x18)));
      bytes.push_back(below(20) == 0 ? 1 : 0);
      if (withStatus) {
        const bool failed = below(4) == 0;
        bytes.push_back(failed ? 0x86 : 0);
        if (failed) continue;
      }
      if (below(10) == 0) {
        bytes.push_back(byte());
        continue;
      }
      const TypeSample& type = TYPE_SAMPLES[below(std::size(TYPE_SAMPLES))];
      bytes.push_back(type.code);
      unsigned int count = type.bytes;
      if (isString(type)) {
        count = below(10) == 0 ? below(256) : below(20);
        bytes.push_back(static_cast<unsigned char>(count));
      }
      for (unsigned int i = 0; i < count; ++i) bytes.push_back(below(8) == 0 ? 0 : byte());
    }
  }
  std::size_t length = bytes.size();
  if (below(4) == 0) length = below(static_cast<unsigned int>(length) + 1);
  if (length > 255) length = 255;
  return {bytes.data(), static_cast<unsigned int>(length)};
}

/// A text that is short, long, empty or not text at all.
inline std::string randomText(std::mt19937& random) {
  std::string text(random() % 8 == 0 ? random() % 300 : random() % 20, '\0');
  for (char& c : text) c = static_cast<char>(random() % 5 == 0 ? random() : ' ' + random() % 95);
  return text;
}

}  // namespace qx::test

#include "vso/identifiers/Euid.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <ostream>

#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/hexify.h"

namespace qx {

namespace {

std::uint32_t rotateRight(std::uint32_t value, unsigned int bits) { return value >> bits | value << (32 - bits); }

}  // namespace

const Euid Euid::INVALID{AllOnes{}};
const Euid Euid::ALL{AllOnes{}};

Euid::Euid(const unsigned char* bytes) noexcept {
  if (bytes != nullptr) std::memcpy(&id_, bytes, sizeof id_);
}

Euid& Euid::operator=(const std::string& hex) {
  id_ = 0;
  // deHexify's own test of the length is modulo 256.
  if (hex.size() <= 2 * sizeof id_) deHexify(hex, bytes(), sizeof id_);
  return *this;
}

bool Euid::operator==(const std::string& hex) const {
  Euid other;
  other = hex;
  return *this == other;
}

bool Euid::operator<(const Euid& other) const noexcept { return integer() < other.integer(); }

void Euid::operator++(int) noexcept {
  for (unsigned char* byte = bytes() + sizeof id_; byte != bytes();) {
    if (++*--byte != 0) return;
  }
}

std::uint32_t Euid::hash() const noexcept {
  FrameReader in(cArray(), sizeof id_, sizeof id_);
  const std::uint32_t lo = in.u32le();
  const std::uint32_t hi = in.u32le();
  std::uint32_t k = ((hi >> 2) + (hi << 6) + lo) ^ hi;
  k *= 0xCC9E2D51U;
  k = rotateRight(k, 17);
  k *= 0x1B873593U;
  k = rotateRight(k, 19);
  return k * 5 + 0xE6546B64U;
}

void Euid::copy(unsigned char* out) const noexcept { std::memcpy(out, &id_, sizeof id_); }

std::string Euid::toString() const {
  std::string text;
  hexify(cArray(), length(), text, false);
  return text;
}

std::uint64_t Euid::integer() const noexcept { return FrameReader(cArray(), sizeof id_, sizeof id_).u64le(); }

std::ostream& operator<<(std::ostream& out, const Euid& euid) {
  // The digits stand as they are, whatever width the stream was given.
  out.width(0);
  return out << euid.toString() << std::dec << std::setfill(' ');
}

std::string& operator+(std::string& text, const Euid& euid) { return text += euid.toString(); }

}  // namespace qx

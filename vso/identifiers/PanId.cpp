#include "vso/identifiers/PanId.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <ostream>

#include "qxshared/KernelX.h"
#include "vso/identifiers/hexify.h"

namespace qx {

const PanId PanId::INVALID{AllOnes{}};

PanId::PanId(const unsigned char* bytes) noexcept {
  if (bytes != nullptr) std::memcpy(id_, bytes, sizeof id_);
}

PanId::PanId(const std::string& hex) { *this = hex; }

PanId& PanId::operator=(const std::string& hex) {
  *this = static_cast<unsigned char>(0);
  // deHexify's own test of the length is modulo 256.
  if (hex.size() <= 2 * sizeof id_) deHexify(hex, id_, sizeof id_);
  return *this;
}

PanId& PanId::operator=(unsigned char value) noexcept {
  std::fill(std::begin(id_), std::end(id_), value);
  return *this;
}

bool PanId::operator==(unsigned int value) const noexcept {
  return std::all_of(std::begin(id_), std::end(id_), [value](unsigned int byte) { return byte == value; });
}

void PanId::byteSwap() noexcept {
  std::uint64_t swapped;  // whole: bytes written one by one would make the next reader of the id wait
  std::memcpy(&swapped, id_, sizeof swapped);
  swapped = __builtin_bswap64(swapped);
  std::memcpy(id_, &swapped, sizeof id_);
}

void PanId::randomize() {
  timespec now{};
  KernelX::gettime(now);
  std::srand(static_cast<unsigned int>(now.tv_sec * 1000000LL + now.tv_nsec / 1000));
  for (unsigned char& byte : id_) byte = static_cast<unsigned char>(std::rand());
}

void PanId::copy(unsigned char* out) const noexcept { std::memcpy(out, id_, sizeof id_); }

PanId::operator std::string() const {
  std::string text;
  hexify(id_, length(), text, false);
  return text;
}

int PanId::compare(const PanId& other) const noexcept { return std::memcmp(id_, other.id_, sizeof id_); }

std::ostream& operator<<(std::ostream& out, const PanId& panId) {
  // The digits stand as they are, whatever width the stream was given.
  out.width(0);
  return out << static_cast<std::string>(panId) << std::hex << std::setfill('0');
}

}  // namespace qx

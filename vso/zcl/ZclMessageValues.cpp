// Between values and the bytes of an attribute.
#include <algorithm>
#include <cstring>

#include "vso/zcl/ZclMessage.h"

namespace qx {

namespace {

FrameReader readerOf(const ZclMessage::AttributeBytes& data) {
  return {data.data(), static_cast<unsigned int>(data.size()), static_cast<unsigned int>(data.size())};
}

}  // namespace

unsigned short ZclMessage::toUint16(const AttributeBytes& data) noexcept { return readerOf(data).u16le(); }
unsigned int ZclMessage::toUint32(const AttributeBytes& data) noexcept { return readerOf(data).u32le(); }
unsigned long long ZclMessage::toUint64(const AttributeBytes& data) noexcept { return readerOf(data).u64le(); }

Euid ZclMessage::toEuid(const AttributeBytes& data) noexcept {
  Euid euid(data.data());
  euid.byteSwap();
  return euid;
}

void ZclMessage::toData8(AttributeBytes& data, unsigned char value) noexcept { data[0] = value; }

void ZclMessage::toData16(AttributeBytes& data, unsigned short value) noexcept {
  data.fill(0);
  data[0] = static_cast<unsigned char>(value);
  data[1] = static_cast<unsigned char>(value >> 8);
}

void ZclMessage::toData32(AttributeBytes& data, const unsigned int& value) noexcept {
  data.fill(0);
  data[0] = static_cast<unsigned char>(value >> 24);  // big-endian, as ZclTime sends it
  data[1] = static_cast<unsigned char>(value >> 16);
  data[2] = static_cast<unsigned char>(value >> 8);
  data[3] = static_cast<unsigned char>(value);
}

void ZclMessage::toData(AttributeBytes& data, const Euid& euid) noexcept {
  data.fill(0);
  Euid onAir(euid);
  onAir.byteSwap();
  onAir.copy(data.data());
}

void ZclMessage::toData(AttributeBytes& data, const std::string& text) noexcept {
  data.fill(0);
  const std::size_t length = std::min(text.size(), data.size() - 1);
  data[0] = static_cast<unsigned char>(length);
  std::memcpy(data.data() + 1, text.data(), length);
}

void ZclMessage::toPanid(AttributeBytes& data, const PanId& panId) noexcept { panId.copy(data.data()); }

}  // namespace qx

#include "vso/zdo/ZdoNetworkUpdateResponse.h"

namespace qx {

namespace {

constexpr unsigned int SCANNED_CHANNELS_OFFSET = 2;
constexpr unsigned int TRANSMISSIONS_OFFSET = 6;
constexpr unsigned int FAILURES_OFFSET = 8;
constexpr unsigned int ENERGY_COUNT_OFFSET = 10;
constexpr unsigned int ENERGY_VALUES_OFFSET = 11;

constexpr int RSSI_OF_NO_ENERGY = -100;

}  // namespace

unsigned int ZdoNetworkUpdateResponse::scannedChannels() const noexcept {
  return FrameReader(*this, SCANNED_CHANNELS_OFFSET).u32le();
}

unsigned short ZdoNetworkUpdateResponse::transmissions() const noexcept {
  return FrameReader(*this, TRANSMISSIONS_OFFSET).u16le();
}

unsigned short ZdoNetworkUpdateResponse::failures() const noexcept {
  return FrameReader(*this, FAILURES_OFFSET).u16le();
}

unsigned char ZdoNetworkUpdateResponse::energyCount() const noexcept { return byteAt(ENERGY_COUNT_OFFSET); }

signed char ZdoNetworkUpdateResponse::radioConvertEdToRssi(unsigned char ed) const noexcept {
  return static_cast<signed char>((ed >> 2) + RSSI_OF_NO_ENERGY);
}

void ZdoNetworkUpdateResponse::setEnergyLevels(signed char* levels) const noexcept {
  const unsigned int scanned = scannedChannels() >> FIRST_CHANNEL;
  FrameReader in(*this, ENERGY_VALUES_OFFSET);
  for (unsigned int i = 0; i < CHANNEL_COUNT; ++i) {
    if ((scanned >> i & 1) != 0) levels[i] = radioConvertEdToRssi(in.u8());
  }
}

}  // namespace qx

// The mesh parameters as a fixed image of six bytes.
#pragma once

#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/FrameWriter.h"
#include "vso/identifiers/U255Buff.h"

namespace qx {

/// Always six bytes long. Its 16-bit fields have their most significant byte first, unlike the attributes of QxZclSscp
/// that carry the same values.
///
///   offset   size   field
///   0        2      announce window
///   2        2      MTORR period
///   4        1      access point count
///   5        1      options type
class SscpPacket : public U255Buff<unsigned char> {
 public:
  static constexpr unsigned int LENGTH = 6;

  /// Sets the whole storage, the six bytes and those behind them, to `fill`.
  explicit SscpPacket(unsigned char fill) noexcept : U255Buff<unsigned char>(static_cast<int>(fill)) {
    length_ = LENGTH;
  }
  SscpPacket(unsigned short announceWindow, unsigned short mtorrPeriod, unsigned char apCount,
             unsigned char optionsType) noexcept {
    this->announceWindow(announceWindow);
    this->mtorrPeriod(mtorrPeriod);
    this->apCount(apCount);
    this->optionsType(optionsType);
    length_ = LENGTH;
  }

  unsigned short announceWindow() const noexcept { return FrameReader(*this, ANNOUNCE_WINDOW_OFFSET).u16be(); }
  unsigned short mtorrPeriod() const noexcept { return FrameReader(*this, MTORR_PERIOD_OFFSET).u16be(); }
  unsigned char apCount() const noexcept { return FrameReader(*this, AP_COUNT_OFFSET).u8(); }
  unsigned char optionsType() const noexcept { return FrameReader(*this, OPTIONS_TYPE_OFFSET).u8(); }

  void announceWindow(unsigned short value) noexcept { FrameWriter(*this, ANNOUNCE_WINDOW_OFFSET).u16be(value); }
  void mtorrPeriod(unsigned short value) noexcept { FrameWriter(*this, MTORR_PERIOD_OFFSET).u16be(value); }
  void apCount(unsigned char value) noexcept { FrameWriter(*this, AP_COUNT_OFFSET).u8(value); }
  void optionsType(unsigned char value) noexcept { FrameWriter(*this, OPTIONS_TYPE_OFFSET).u8(value); }

 private:
  static constexpr unsigned int ANNOUNCE_WINDOW_OFFSET = 0;
  static constexpr unsigned int MTORR_PERIOD_OFFSET = 2;
  static constexpr unsigned int AP_COUNT_OFFSET = 4;
  static constexpr unsigned int OPTIONS_TYPE_OFFSET = 5;
};

}  // namespace qx

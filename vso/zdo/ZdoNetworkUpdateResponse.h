// The results of an energy scan.
#pragma once

#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx {

///   offset   size   field, numbers little-endian
///   0        1      sequence number
///   1        1      status
///   2        4      mask of the scanned channels, bit n for channel n
///   6        2      transmissions
///   8        2      transmission failures
///   10       1      number of energy values
///   11              one energy value for each scanned channel, from the lowest channel up
///
/// The readers of the fields from the mask on look at no length: what a short frame does not have is read from what the
/// buffer holds, zeros in a frame that came through the constructors.
class ZdoNetworkUpdateResponse : public ZdoResponse {
 public:
  static constexpr unsigned short COMMAND_ID = ZdoCommand::NETWORK_UPDATE | ZdoCommand::RESPONSE;
  static constexpr unsigned int FIRST_CHANNEL = 11;
  static constexpr unsigned int CHANNEL_COUNT = 16;

  ZdoNetworkUpdateResponse() noexcept : ZdoResponse(COMMAND_ID) {}
  explicit ZdoNetworkUpdateResponse(const U255Buff<unsigned char>& frame) noexcept : ZdoResponse(COMMAND_ID, frame) {}
  /// Takes over the command too.
  explicit ZdoNetworkUpdateResponse(const ZdoResponse& response) noexcept : ZdoResponse(response) {}

  unsigned int scannedChannels() const noexcept;
  /// Frames sent by the node, and how many of them failed.
  unsigned short transmissions() const noexcept;
  unsigned short failures() const noexcept;
  unsigned char energyCount() const noexcept;

  /// The strength in dBm that an energy value stands for: a quarter of it, rounded down, minus 100.
  signed char radioConvertEdToRssi(unsigned char ed) const noexcept;

  /// Stores the strength of each scanned channel in dBm in `levels`, which has room for CHANNEL_COUNT values and is
  /// indexed by channel minus FIRST_CHANNEL. Channels that were not scanned keep what the caller put there. The mask
  /// alone says how many values are read, not `energyCount()`.
  void setEnergyLevels(signed char* levels) const noexcept;
};

}  // namespace qx

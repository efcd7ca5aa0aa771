// Asks nodes for an energy scan, or tells them of a new channel or a new network manager.
#pragma once

#include "vso/zdo/ZdoRequest.h"

namespace qx {

/// The management network update request in its three forms, which the duration tells apart:
///
///   offset   size   field                                             present
///   0        1      sequence number                                   always
///   1        4      channel mask, little-endian, bit n for channel n  always
///   5        1      duration                                          always
///   6        1      scan count                                        duration up to 5: an energy scan
///   next     1      network update id                                 duration 0xFE (channel change) and 0xFF
///   next     2      network manager short address, little-endian      duration 0xFF: update of the manager
class ZdoNetworkUpdateRequest : public ZdoRequest {
 public:
  // Durations with a meaning of their own. Up to LAST_SCAN it is the exponent of the time that a scan takes.
  static constexpr unsigned char LAST_SCAN = 0x05;
  static constexpr unsigned char CHANNEL_CHANGE = 0xFE;
  static constexpr unsigned char MANAGER_UPDATE = 0xFF;

  /// All sixteen channels of the 2.4 GHz band, 11 to 26.
  static constexpr unsigned int ALL_CHANNELS = 0x07FFF800;

  /// The network update id that was dealt last in this process: zero at load, 255 is followed by 0. A plain
  /// byte: whoever builds such frames from several threads guards them.
  static unsigned char updateId_;

  /// Fields that the form does not have are not looked at. A channel change and a manager update take the next network
  /// update id, whoever they go to.
  ZdoNetworkUpdateRequest(const Euid& destination, unsigned int channelMask, unsigned char duration,
                          unsigned char scanCount, unsigned short managerAddress);
  /// A frame that is there already, to an all-zero address. Takes neither sequence number nor update id.
  explicit ZdoNetworkUpdateRequest(const U255Buff<unsigned char>& frame) noexcept;

  unsigned char duration() const noexcept;
  /// The channel if the mask names exactly one of 11 to 26, -1 if it is ALL_CHANNELS, 0 for any other.
  int channel() const noexcept;

  /// Adds 1 to `updateId_`, modulo 256, and returns it.
  static unsigned char upId() noexcept { return ++updateId_; }
};

}  // namespace qx

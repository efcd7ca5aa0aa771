// The On/Off cluster: commands to a switched device, and its state.
#pragma once

#include <string>

#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclReading.h"

namespace qx {

/// A frame of the On/Off cluster. The readers answer from a read attributes response or a report, the success readers
/// from a write attributes response; in any other frame, or without the attribute, `state` is 2.
class ZclOnOff : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0006;

  // Commands of the cluster.
  static constexpr unsigned char OFF = 0x00;
  static constexpr unsigned char ON = 0x01;
  static constexpr unsigned char TOGGLE = 0x02;

  // Attributes of the cluster.
  static constexpr unsigned short ON_OFF = 0x0000;

  /// A cluster-specific frame without a command yet (0xFF). Takes a sequence number, as the next constructor does.
  ZclOnOff() : ZclOnOff(0xFF) {}
  explicit ZclOnOff(unsigned char commandId) : ZclMessage(commandId, false, true) {}
  /// Received frames, see ZclMessage.
  explicit ZclOnOff(const std::string& hex) : ZclMessage(hex) {}
  explicit ZclOnOff(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}

  short getProfileId() const override;
  short getClusterId() const override;

  void setOff() { setCommand(OFF); }
  void setOn() { setCommand(ON); }
  void setToggle() { setCommand(TOGGLE); }

  /// True only for the value 1.
  ZclReading<bool> on() const;
  /// The inverse of `on()`, with its `state`: true with 2 if nothing was found.
  ZclReading<bool> off() const;

  /// All three look for success of attribute 0, for which the response of a single status byte counts.
  ZclReading<bool> onSuccess() const;
  ZclReading<bool> offSuccess() const { return onSuccess(); }
  ZclReading<bool> toggleSuccess() const { return onSuccess(); }

 private:
  void setCommand(unsigned char commandId) {
    setFcf(CLUSTER_SPECIFIC);
    setCid(commandId);
  }
};

}  // namespace qx

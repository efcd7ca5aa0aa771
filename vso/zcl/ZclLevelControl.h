// The Level Control cluster: commands to a dimmer, and its state.
#pragma once

#include <string>

#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclReading.h"

namespace qx {

/// A frame of the Level Control cluster. Levels and step sizes are 0 to 255, transition times tenths of a second, modes
/// 0 for up and 1 for down. The readers answer from a read attributes response or a report, the success readers from a
/// write attributes response; in any other frame, or without the attribute, `state` is 2.
class ZclLevelControl : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0008;

  // Commands of the cluster. Each has a twin that also switches the device on and off, WITH_ON_OFF further on.
  static constexpr unsigned char MOVE_TO_LEVEL = 0x00;
  static constexpr unsigned char MOVE = 0x01;
  static constexpr unsigned char STEP = 0x02;
  static constexpr unsigned char STOP = 0x03;
  static constexpr unsigned char WITH_ON_OFF = 0x04;

  // Attributes of the cluster.
  static constexpr unsigned short CURRENT_LEVEL = 0x0000;
  static constexpr unsigned short REMAINING_TIME = 0x0001;
  static constexpr unsigned short TRANSITION_TIME = 0x0010;
  static constexpr unsigned short ON_LEVEL = 0x0011;

  /// A cluster-specific frame without a command yet (0xFF). Takes a sequence number, as the next constructor does.
  ZclLevelControl() : ZclLevelControl(0xFF) {}
  explicit ZclLevelControl(unsigned char commandId) : ZclMessage(commandId, false, true) {}
  /// Received frames, see ZclMessage.
  explicit ZclLevelControl(const std::string& hex) : ZclMessage(hex) {}
  explicit ZclLevelControl(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}

  short getProfileId() const override;
  short getClusterId() const override;

  void moveToLevel(unsigned char level, unsigned short transitionTime) {
    FrameWriter out = newCommand(MOVE_TO_LEVEL);
    out.u8(level);
    out.u16le(transitionTime);
    endCommand(out);
  }
  /// The rate, in units a second, goes out as two bytes, one more than the public cluster has: the devices expect it.
  void move(unsigned char mode, unsigned short rate) {
    FrameWriter out = newCommand(MOVE);
    out.u8(mode);
    out.u16le(rate);
    endCommand(out);
  }
  void step(unsigned char mode, unsigned char size, unsigned short transitionTime) {
    FrameWriter out = newCommand(STEP);
    out.u8(mode);
    out.u8(size);
    out.u16le(transitionTime);
    endCommand(out);
  }
  void stop() { endPayload(newCommand(STOP)); }

  void moveToLevelWOnOff(unsigned char level, unsigned short transitionTime) {
    moveToLevel(level, transitionTime);
    setCid(MOVE_TO_LEVEL + WITH_ON_OFF);
  }
  /// As `move`, the rate in two bytes too.
  void moveWOnOff(unsigned char mode, unsigned char rate) {
    move(mode, rate);
    setCid(MOVE + WITH_ON_OFF);
  }
  void stepWOnOff(unsigned char mode, unsigned char size, unsigned short transitionTime) {
    step(mode, size, transitionTime);
    setCid(STEP + WITH_ON_OFF);
  }
  void stopWOnOff() {
    stop();
    setCid(STOP + WITH_ON_OFF);
  }

  ZclReading<unsigned char> currentLevel() const;
  /// Tenths of a second.
  ZclReading<unsigned short> remainingTime() const;
  /// Tenths of a second.
  ZclReading<unsigned short> transitionTime() const;
  ZclReading<unsigned char> onLevel() const;

  ZclReading<bool> currentLevelSuccess() const;
  ZclReading<bool> remainingTimeSuccess() const;
  ZclReading<bool> transitionTimeSuccess() const;
  ZclReading<bool> onLevelSuccess() const;
};

}  // namespace qx

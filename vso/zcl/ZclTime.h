// The Time cluster, as the server answers it to devices that ask for the time.
#pragma once

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A read attributes response of the Time cluster. Each populate operation replaces the payload, so that one frame
/// answers for one attribute.
class ZclTime : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x000A;

  // Attributes of the cluster.
  static constexpr unsigned short TIME = 0x0000;
  static constexpr unsigned short TIME_STATUS = 0x0001;

  /// A general frame with command 1, read attributes response. The direction bit is not set.
  ZclTime();

  short getProfileId() const override;
  short getClusterId() const override;

  /// Seconds since 1970 that `populateTime` answers with in place of the clock, 0 for the clock.
  int fixedTime() const noexcept { return fixedTime_; }
  void fixedTime(int seconds) noexcept { fixedTime_ = seconds; }

  /// Answers the time, in seconds since the start of 2000 (modulo 2^32), most significant byte first.
  void populateTime();
  /// Answers the time status: always 1, the clock of this side is the master.
  void populateStatus();

 private:
  void answer(unsigned short id, unsigned char type, const AttributeBytes& data);

  int fixedTime_ = 0;
};

}  // namespace qx

// The maker's own diagnostics cluster: counters, uptime and log message of a device.
#pragma once

#include <string>
#include <vector>

#include "vso/zcl/QxdiagnosticsNodeCounters.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {

/// Asks a device for its diagnostics, reads its answer (a read attributes response), and commands it to reset its
/// counters or to show the strength of its signal.
class QxZclDiagnostics : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0002;

  // Commands of the cluster.
  static constexpr unsigned char RESET_COUNTERS = 0x01;
  static constexpr unsigned char DISPLAY_SIGNAL_STRENGTH = 0x02;

  // Attributes of the cluster.
  static constexpr unsigned short LOG_MESSAGE = 0x0000;
  static constexpr unsigned short COUNTERS = 0x0002;
  static constexpr unsigned short UPTIME = 0x0003;

  /// A cluster-specific frame without a command yet (0xFF). Takes a sequence number.
  QxZclDiagnostics() : ZclMessage(0xFF, false, true) {}
  /// Received frames, see ZclMessage.
  explicit QxZclDiagnostics(const std::string& hex) : ZclMessage(hex) {}
  explicit QxZclDiagnostics(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}
  /// A general frame that reads these attributes. Takes a sequence number.
  explicit QxZclDiagnostics(const std::vector<unsigned short>& ids);

  short getProfileId() const override;
  short getClusterId() const override;

  // Each makes a new frame of this one, and takes a sequence number again.
  void resetCounters(bool reset);
  void displaySignalStrength(bool display);

  /// Takes the counters from the first record with their id and type. False, with `counters` unchanged, if there is
  /// none or it does not hold exactly 30 bytes.
  bool parseReadAttributesResponse(QxdiagnosticsNodeCounters& counters) const;
  /// Takes the uptime from the first record with its id and type. False, with `uptime` unchanged, if there is none.
  bool parseReadAttributesResponse(unsigned int& uptime) const;

  bool hasLogMessage() const;
  bool hasCounters() const;
  bool hasUptime() const;
  /// True if a record of a read attributes response has both this id and this type, be it the first with the id or not.
  bool hasAttributeId(unsigned short id, unsigned char type) const;

 protected:
  /// Zero, and left alone: what a frame says goes into the caller's record.
  QxdiagnosticsNodeCounters counters_;

 private:
  void setSwitch(unsigned char commandId, bool on);
};

}  // namespace qx

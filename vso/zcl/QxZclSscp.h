// Mesh parameters that the server hands to devices.
#pragma once

#include <string>

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A frame that either writes the mesh parameters to a device (write attributes no response) or answers a device that
/// asks for them (read attributes response).
///
/// The readers look for their attribute, and give 0 without it, in the layout of a write alone: an answer that was
/// built here does not read back. A writer adds its attribute behind those that are there; one that the frame holds
/// already keeps its value.
class QxZclSscp : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0001;

  /// An empty answer or write. Asks for no default response either way. `general` makes a general frame of it,
  /// otherwise the frame type says cluster specific. Takes a sequence number.
  QxZclSscp(bool isResponse, bool general);
  /// A received frame as hexadecimal text, see ZclMessage.
  explicit QxZclSscp(const std::string& hex) : ZclMessage(hex) {}
  /// A received frame, which becomes a write: whatever it was, its frame control is set to 0x10 (see `setFcf`) and its
  /// command to write attributes no response.
  explicit QxZclSscp(const U255Buff<unsigned char>& frame);

  short getProfileId() const override;
  short getClusterId() const override;

  unsigned short announceWindow() const;
  /// Period of many-to-one route requests.
  unsigned short mtorrPeriod() const;
  /// Number of access points.
  unsigned char apCount() const;
  unsigned char channel() const;

  void announceWindow(unsigned short value);
  void mtorrPeriod(unsigned short value);
  void apCount(unsigned char value);
  void channel(unsigned char value);

 private:
  /// Adds the attribute in the layout of this frame.
  void add(const AttributeRecordData& record);

  bool isResponse_ = false;
};

}  // namespace qx

// The announce cluster: a device tells the server who it is.
#pragma once

#include <list>
#include <string>

#include "vso/zcl/ZclMessage.h"

namespace qx {

class AccessPoint;

/// A report of the maker's announce attributes. The order of the records in the frame is free.
///
/// A reader answers from the first record with its id, whatever its type, and gives 0 or the empty text if there is
/// none; its `has...` is true only if the frame has a record with both the id and the type of the attribute. Ask it
/// first. None of them looks at the command of the frame.
///
/// A writer adds its attribute behind those that are there. The first write wins: an attribute that the frame holds
/// already keeps its value. Adding an attribute writes the ones before it anew from their readable form, in which a
/// string has no length byte: its first character goes out as its length. A string reads back only as long as nothing
/// has been added behind it.
///
/// Periods and windows are in the units of the devices: the numbers are handed on as they are.
class QxZclAnnounce : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0001;

  /// Received frames, see ZclMessage.
  explicit QxZclAnnounce(const std::string& hex) : ZclMessage(hex) {}
  explicit QxZclAnnounce(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}
  /// A report with these attributes, written in this order. So `productString` reads back until something is added, and
  /// the first character of `firmwareVersion` goes out as its length. Takes a sequence number.
  QxZclAnnounce(unsigned short announceWindow, unsigned short bootCount, unsigned char reflashVersion,
                const std::string& firmwareVersion, const std::string& productString);

  short getProfileId() const override;
  short getClusterId() const override;

  unsigned char deviceType() const;
  /// The window within which devices are to announce themselves.
  unsigned short announceWindow() const;
  /// Period of many-to-one route requests.
  unsigned short mtorrPeriod() const;
  /// Number of access points that the device knows.
  unsigned char numZaps() const;
  /// A text that begins with a zero byte, as some devices send it, is read from its second byte on; that is logged.
  std::string firmwareVersion() const;
  unsigned char reflashVersion() const;
  unsigned short bootCount() const;
  std::string productString() const;
  /// How long the device waits between two polls of its access point, and of its parent.
  unsigned short apPollInterval() const;
  unsigned char channel() const;
  unsigned short parentPollInterval() const;
  /// In dBm.
  signed char nodeRssi() const;
  /// Link quality, 0 to 255.
  unsigned char nodeLqi() const;
  signed char batteryLevel() const;
  /// Signal strength as the device shows it, in bars.
  unsigned char nodeRadioBars() const;
  /// Replaces `list` by the entries of all records with the table's id. The index of an entry is its place in its own
  /// record. Of a value that is no octet string, the text that it reads as is taken for hexadecimal digits.
  void apRouteTable(std::list<AccessPoint>& list) const;

  void deviceType(unsigned char value);
  void announceWindow(unsigned short value);
  void mtorrPeriod(unsigned short value);
  void numZaps(unsigned char value);
  void firmwareVersion(const std::string& value);
  void reflashVersion(unsigned char value);
  void bootCount(unsigned short value);
  void productString(const std::string& value);
  void apPollInterval(unsigned short value);
  void channel(unsigned char value);
  void parentPollInterval(unsigned short value);
  void nodeRssi(signed char value);
  void nodeLqi(unsigned char value);
  void batteryLevel(signed char value);
  void nodeRadioBars(unsigned char value);

  bool hasDeviceType() const;
  bool hasAnnounceWindow() const;
  bool hasMtorrPeriod() const;
  bool hasNumZaps() const;
  bool hasFirmwareVersion() const;
  bool hasReflashVersion() const;
  bool hasBootCount() const;
  bool hasProductString() const;
  bool hasApPollInterval() const;
  bool hasChannel() const;
  bool hasParentPollInterval() const;
  bool hasApTable() const;
  bool hasNodeRssi() const;
  bool hasNodeLqi() const;
  bool hasBatteryLevel() const;
  bool hasNodeRadioBars() const;

  /// True if a record has both this id and this type, be it the first with the id or not.
  bool hasAttributeId(unsigned short id, unsigned char type) const;
};

}  // namespace qx

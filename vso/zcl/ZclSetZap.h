// Tells a device about its Zigbee access point.
#pragma once

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A read attributes response of the maker's, from the server, that the writers fill. A writer adds its attribute
/// behind those that are there; one that the frame holds already keeps its value. The readers answer from the first
/// record with their id, whatever its type and status, and give 0 (an all-zero address) if there is none.
class ZclSetZap : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0001;

  /// Takes a sequence number.
  ZclSetZap();

  short getProfileId() const override;
  short getClusterId() const override;

  /// Short id of the access point.
  unsigned short sid() const;
  /// Long id of the access point.
  Euid lid() const;
  unsigned char cost() const;

  void sid(unsigned short value);
  void lid(const Euid& value);
  void cost(unsigned char value);
  /// How long the device is to wait between two polls of its access point, and of its parent, in the unit of the
  /// devices. Announcements report the same ids as `apPollInterval` and `parentPollInterval`.
  void endNodeApPeriod(unsigned short value);
  void endNodeParentPeriod(unsigned short value);

  // True if a record with the id is there, of any type and any status.
  bool hasSid() const;
  bool hasLid() const;
  bool hasCost() const;
};

}  // namespace qx

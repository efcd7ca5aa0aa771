// Asks devices to announce themselves now.
#pragma once

#include <vector>

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A cluster-specific command of the maker's that carries a list of ids and nothing else; what the ids name is settled
/// between the server and the devices.
///
///   offset in payload   size   field
///   0                   1      number of ids, n
///   1                   2n     the ids, little-endian
class QxZclImmediateAnnounce : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0001;
  static constexpr unsigned char IMMEDIATE_ANNOUNCE = 0x00;

  /// Takes a sequence number. Throws std::runtime_error, "Too many ids to fit in packet", for more than 125 ids.
  explicit QxZclImmediateAnnounce(const std::vector<unsigned short>& ids);

  short getProfileId() const override;
  short getClusterId() const override;
};

}  // namespace qx

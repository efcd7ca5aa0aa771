// The On/Off Switch Configuration cluster.
#pragma once

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A frame of the On/Off Switch Configuration cluster: a header under the cluster's ids, and the general commands.
class ZclOnOffSwitch : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0007;

  /// A cluster-specific frame without a command yet (0xFF).
  ZclOnOffSwitch();

  short getProfileId() const override;
  short getClusterId() const override;
};

}  // namespace qx

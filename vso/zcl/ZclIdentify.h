// The Identify cluster.
#pragma once

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A frame of the Identify cluster: a header under the cluster's ids, and the general commands.
class ZclIdentify : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0003;

  /// A general frame with command 1, read attributes response.
  ZclIdentify();

  short getProfileId() const override;
  short getClusterId() const override;
};

}  // namespace qx

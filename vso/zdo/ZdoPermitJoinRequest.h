// Opens or closes a node for devices that want to join.
#pragma once

#include "vso/zdo/ZdoRequest.h"

namespace qx {

///   offset   size   field
///   0        1      sequence number
///   1        1      permit duration
///   2        1      trust centre significance
class ZdoPermitJoinRequest : public ZdoRequest {
 public:
  /// `duration` is in seconds, 0 closes and 255 opens for good. `trustCentreSignificance` is 1 if the trust centre's
  /// own policy changes too.
  ZdoPermitJoinRequest(const Euid& destination, unsigned char duration, unsigned char trustCentreSignificance);
};

}  // namespace qx

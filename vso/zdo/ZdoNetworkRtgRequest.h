// Asks a node for a page of its routing table.
#pragma once

#include "vso/zdo/ZdoRequest.h"

namespace qx {

///   offset   size   field
///   0        1      sequence number
///   1        1      start index
class ZdoNetworkRtgRequest : public ZdoRequest {
 public:
  /// The page begins at entry `startIndex`; the node puts into it as many entries as fit.
  ZdoNetworkRtgRequest(const Euid& destination, unsigned char startIndex);
};

}  // namespace qx

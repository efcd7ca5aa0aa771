// Tells a device to leave the mesh.
#pragma once

#include "vso/zdo/ZdoRequest.h"

namespace qx {

///   offset   size   field
///   0        1      sequence number
///   1        8      long address of the device that is to leave, least significant byte first
///   9        1      options
class ZdoLeaveRequest : public ZdoRequest {
 public:
  /// Asks `destination` to make `device` leave, which is mostly the same node. `options` goes out as it is.
  ZdoLeaveRequest(const Euid& destination, const Euid& device, unsigned char options);
  /// The same request once more, with its sequence number.
  explicit ZdoLeaveRequest(const ZdoRequest& request) noexcept : ZdoRequest(request) {}
};

}  // namespace qx

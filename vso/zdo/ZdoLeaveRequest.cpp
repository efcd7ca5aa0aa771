#include "vso/zdo/ZdoLeaveRequest.h"

#include "vso/zdo/ZdoCommand.h"

namespace qx {

ZdoLeaveRequest::ZdoLeaveRequest(const Euid& destination, const Euid& device, unsigned char options)
    : ZdoRequest(destination, ZdoCommand::LEAVE) {
  Euid onAir(device);
  onAir.byteSwap();
  FrameWriter out = payload();
  out.bytes(onAir.cArray(), onAir.length());
  out.u8(options);
  endPayload(out);
}

}  // namespace qx

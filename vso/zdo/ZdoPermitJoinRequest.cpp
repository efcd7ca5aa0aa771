#include "vso/zdo/ZdoPermitJoinRequest.h"

#include "vso/zdo/ZdoCommand.h"

namespace qx {

ZdoPermitJoinRequest::ZdoPermitJoinRequest(const Euid& destination, unsigned char duration,
                                           unsigned char trustCentreSignificance)
    : ZdoRequest(destination, ZdoCommand::PERMIT_JOIN) {
  FrameWriter out = payload();
  out.u8(duration);
  out.u8(trustCentreSignificance);
  endPayload(out);
}

}  // namespace qx

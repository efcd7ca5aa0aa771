#include "vso/zdo/ZdoRequest.h"

#include "vso/zdo/ZdoSeqNumPeddler.h"

namespace qx {

ZdoRequest::ZdoRequest(const Euid& destination, unsigned short commandId)
    : destination_(destination), commandId_(commandId) {
  FrameWriter out = payload();
  out.u8(ZdoSeqNumPeddler::instance().next());
  endPayload(out);
}

}  // namespace qx

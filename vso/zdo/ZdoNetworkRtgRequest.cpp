#include "vso/zdo/ZdoNetworkRtgRequest.h"

#include "vso/zdo/ZdoCommand.h"

namespace qx {

ZdoNetworkRtgRequest::ZdoNetworkRtgRequest(const Euid& destination, unsigned char startIndex)
    : ZdoRequest(destination, ZdoCommand::NETWORK_RTG) {
  FrameWriter out = payload();
  out.u8(startIndex);
  endPayload(out);
}

}  // namespace qx

#include "vso/zdo/ZdoNetworkLqiRequest.h"

#include "vso/zdo/ZdoCommand.h"

namespace qx {

ZdoNetworkLqiRequest::ZdoNetworkLqiRequest(const Euid& destination, unsigned char startIndex)
    : ZdoRequest(destination, ZdoCommand::NETWORK_LQI) {
  FrameWriter out = payload();
  out.u8(startIndex);
  endPayload(out);
}

}  // namespace qx

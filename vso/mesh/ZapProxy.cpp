#include "vso/mesh/ZapProxy.h"

#include <memory>

#include "vso/proto/ZapProxyPBuf.pb.h"

namespace qx {

bool ZapProxy::operator==(const ZapProxy& other) const {
  return zapEuid == other.zapEuid && zapNodeId == other.zapNodeId && proxyCapable == other.proxyCapable &&
         proxySid == other.proxySid && nodeRefs == other.nodeRefs;
}

pb::ZapProxyPBuf* ZapProxy::toProtobuf() const {
  auto message = std::make_unique<pb::ZapProxyPBuf>();
  message->set_allocated_zapeuid(zapEuid.toProtobuf());
  message->set_zapnodeid(zapNodeId);
  message->set_proxycapable(proxyCapable);
  message->set_proxysid(proxySid);
  message->set_noderefs(nodeRefs);
  return message.release();
}

bool ZapProxy::fromProtobuf(const pb::ZapProxyPBuf& message) {
  const bool failed = zapEuid.fromProtobuf(message.zapeuid());
  zapNodeId = static_cast<unsigned short>(message.zapnodeid());
  proxyCapable = message.proxycapable();
  proxySid = static_cast<unsigned short>(message.proxysid());
  nodeRefs = static_cast<unsigned short>(message.noderefs());
  return failed;
}

}  // namespace qx

// An access point and a proxy for it.
#pragma once

#include "vso/identifiers/Euid.h"

namespace qx {

namespace pb {
class ZapProxyPBuf;
}

/// Names an access point, and a proxy for it by short address. Has no XML form.
class ZapProxy {
 public:
  /// Invalid addresses, nothing else.
  ZapProxy() = default;
  ZapProxy(const ZapProxy&) = default;
  ZapProxy& operator=(const ZapProxy&) = default;
  virtual ~ZapProxy() = default;

  /// Compare all five fields.
  bool operator==(const ZapProxy& other) const;
  bool operator!=(const ZapProxy& other) const { return !(*this == other); }

  /// Caller owns the result.
  pb::ZapProxyPBuf* toProtobuf() const;
  /// Takes all fields, wider ones cut to their low bits. True on failure, of which there is none.
  bool fromProtobuf(const pb::ZapProxyPBuf& message);

  /// Long address of the access point.
  Euid zapEuid = Euid::INVALID;
  /// Short address of the access point.
  unsigned short zapNodeId = 0xFFFF;
  bool proxyCapable = false;
  /// Short address of the proxy.
  unsigned short proxySid = 0xFFFF;
  unsigned short nodeRefs = 0;
};

}  // namespace qx

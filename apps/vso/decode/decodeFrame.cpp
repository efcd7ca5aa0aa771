#include "apps/vso/decode/decodeFrame.h"

#include "apps/vso/decode/decodeZcl.h"
#include "apps/vso/decode/decodeZdo.h"
#include "vso/identifiers/hexify.h"
#include "vso/layout/FrameVerdict.h"

namespace qx::app {

namespace {

constexpr unsigned short ZDO_PROFILE = 0x0000;

}  // namespace

DecodedFrame decodeFrame(const ReceivedFrame& received) {
  DecodedFrame decoded;
  decoded.profile = received.profile;
  decoded.cluster = received.cluster;
  decoded.length = received.bytes.length_;
  hexify(received.bytes.contents, received.bytes.length_, decoded.hex, false);
  if (received.profile == ZDO_PROFILE) {
    decodeZdo(received, decoded);
  } else {
    decodeZcl(received, decoded);
  }
  decoded.verdict = judgeFrame(received.profile, received.cluster, received.bytes);
  return decoded;
}

}  // namespace qx::app

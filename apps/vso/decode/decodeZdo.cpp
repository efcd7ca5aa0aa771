#include "apps/vso/decode/decodeZdo.h"

#include "apps/vso/decode/undecodedBytes.h"
#include "vso/identifiers/FrameReader.h"

namespace qx::app {

void decodeZdo(const ReceivedFrame& received, DecodedFrame& decoded) {
  FrameReader in(received.bytes);
  ZdoHeader header;
  if (in.more()) header.sequence = in.u8();
  decoded.headerLength = 1;
  decoded.header = header;
  decoded.undecoded = undecodedBytes(in);
}

}  // namespace qx::app

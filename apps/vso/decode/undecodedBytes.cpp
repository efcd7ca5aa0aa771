#include "apps/vso/decode/undecodedBytes.h"

#include "vso/identifiers/U255Buff.h"
#include "vso/identifiers/hexify.h"

namespace qx::app {

std::string undecodedBytes(FrameReader in) {
  unsigned char rest[U255Buff<unsigned char>::CAPACITY];
  const unsigned int count = in.left();
  in.bytes(rest, count);
  std::string text;
  hexify(rest, count, text, false);
  return text;
}

}  // namespace qx::app

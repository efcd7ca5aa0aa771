#include "apps/vso/decode/hexBytes.h"

#include <algorithm>

#include "vso/identifiers/U255Buff.h"
#include "vso/identifiers/hexify.h"

namespace qx::app {

std::string hexBytes(FrameReader in, unsigned int count) {
  unsigned char bytes[U255Buff<unsigned char>::CAPACITY];
  count = std::min<unsigned int>(count, sizeof bytes);
  in.bytes(bytes, count);
  std::string text;
  hexify(bytes, count, text, false);
  return text;
}

}  // namespace qx::app

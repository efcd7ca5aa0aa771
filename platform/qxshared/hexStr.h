// A number as hexadecimal text.

#pragma once

#include <string>

namespace qx {

/// The low `bytes` bytes of `value`, most significant first, as two lowercase digits each, with "0x" in front where
/// `prefix` is true. A number has 8 bytes: a larger `bytes` counts as 8; 0 gives no digits.
std::string hexStr(unsigned long long value, unsigned int bytes, bool prefix);

}  // namespace qx

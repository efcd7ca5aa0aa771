// Bytes as base64 text.

#pragma once

#include <string>

namespace qx {

class Base64Encoder {
 public:
  /// `bytes` in the standard alphabet of RFC 4648, padded, without line breaks. Any bytes, any length; none give "".
  std::string Base64Encode(const std::string& bytes) const;
};

}  // namespace qx

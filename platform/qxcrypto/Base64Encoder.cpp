#include "qxcrypto/Base64Encoder.h"

#include <algorithm>
#include <cstddef>

#include <openssl/evp.h>

namespace qx {

namespace {

// EVP_EncodeBlock counts in int. A piece of whole groups of three bytes needs no padding, so the pieces' texts join up.
constexpr std::size_t PIECE = std::size_t{3} << 20;

const unsigned char* unsignedBytes(const char* bytes) { return reinterpret_cast<const unsigned char*>(bytes); }
unsigned char* unsignedBytes(char* bytes) { return reinterpret_cast<unsigned char*>(bytes); }

}  // namespace

std::string Base64Encoder::Base64Encode(const std::string& bytes) const {
  std::string text((bytes.size() / 3 + (bytes.size() % 3 != 0 ? 1 : 0)) * 4, '\0');
  char* out = text.data();
  for (std::size_t at = 0; at < bytes.size(); at += PIECE) {
    const std::size_t length = std::min(PIECE, bytes.size() - at);
    // A zero goes behind each piece: the last one's falls on the text's own.
    out += EVP_EncodeBlock(unsignedBytes(out), unsignedBytes(bytes.data() + at), static_cast<int>(length));
  }
  return text;
}

}  // namespace qx

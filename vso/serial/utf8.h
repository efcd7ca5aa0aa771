// Text made fit for the fields of a message.
#pragma once

#include <string>

namespace qx::detail {

/// `text` with U+FFFD for each byte that is no part of valid UTF-8. A message with any other text would not parse
/// again, and devices send what they like.
std::string utf8(const std::string& text);

}  // namespace qx::detail

// Text made fit for a log line.

#pragma once

#include <string>

namespace qx {

/// `text` with each byte outside printable ASCII (0x20 to 0x7e) shown as `\r`, `\n`, `\t` or `\xNN`, two lowercase
/// hexadecimal digits. A backslash is printable and stays single, so the result is for reading, not for turning back.
std::string cleanString(const std::string& text);

}  // namespace qx

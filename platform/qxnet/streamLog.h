// Log lines of the stream layer.
#pragma once

#include <string>

namespace qx::net::stream::detail {

/// Logs `text` to the root logger at `level`, a number of log4cplus, with the place it stands at.
void log(int level, const std::string& text, const char* file, int line, const char* function);

}  // namespace qx::net::stream::detail

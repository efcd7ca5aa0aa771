// A text as all that a command has to say.
#pragma once

#include <string>

namespace qx::app {

/// Writes the text to standard output, and complains on standard error if that fails. Returns the exit status.
int printText(const std::string& text);

}  // namespace qx::app

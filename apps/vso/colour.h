// Whether output is coloured.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace qx::app {

/// Adds the option --color with its three choices.
void addColourOption(CLI::App& command, std::string& choice);

/// True if standard output is to be coloured: always, never, or by itself on a terminal unless NO_COLOR is set.
bool isColoured(const std::string& choice);

}  // namespace qx::app

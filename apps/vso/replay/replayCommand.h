// The command `vso replay`.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace qx::app {

/// Adds the command to the program's command line. If that names it, `chosen` is set to what carries it out and
/// returns the exit status.
void addReplayCommand(CLI::App& program, std::function<int()>& chosen);

}  // namespace qx::app

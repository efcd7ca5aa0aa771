// The command `vso encode`.
#pragma once

#include <functional>
#include <string>

#include "apps/vso/encode/CommandRow.h"

namespace CLI {
class App;
}

namespace qx::app {

/// Adds the command to the program's command line. If that names it, `chosen` is set to what carries it out and
/// returns the exit status. A frame is built while the command line is read, so that an argument with which none can be
/// built is wrong usage like any other.
void addEncodeCommand(CLI::App& program, std::function<int()>& chosen);

/// The line that `vso decode` reads: "0x0104 0x0008 01000080".
std::string lineOf(const BuiltFrame& frame);

}  // namespace qx::app

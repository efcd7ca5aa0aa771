// The name of the machine.
#pragma once

#include <string>

namespace qx {

/// As the system gives it; empty if it gives none of less than 80 characters.
std::string getHostName();

}  // namespace qx

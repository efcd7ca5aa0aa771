// The name of the machine.
#pragma once

#include <string>

namespace qx {

/// As the system gives it, which cuts it after 79 characters; empty if it gives none.
std::string getHostName();

}  // namespace qx

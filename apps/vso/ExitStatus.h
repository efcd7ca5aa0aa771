// What the program tells its caller at the end.
#pragma once

namespace qx::app::ExitStatus {

constexpr int DONE = 0;
/// Something could not be read, decoded or written. All else is done.
constexpr int TROUBLE = 1;
/// The command line is wrong, and nothing is done.
constexpr int USAGE = 2;

}  // namespace qx::app::ExitStatus

// The log level of the process.
#pragma once

namespace qx {

/// Sets the root logger's level. `level` counts the levels from trace, 0, to fatal, 5; a larger number is a level of
/// log4cplus. One thread at a time.
void zLogLevel(int level);

/// The level that `zLogLevel` set last, as a number of log4cplus. Before any it is 20000, info, whatever the logger was
/// set to by others. For the thread that sets it.
int zGetLogLevel();

}  // namespace qx

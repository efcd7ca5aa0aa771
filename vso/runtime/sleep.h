// Short waits.
#pragma once

namespace qx {

/// Lets the calling thread sleep. The microseconds are counted in 32 bits: 4294968 milliseconds are 704 microseconds.
void msleep(unsigned int milliseconds);

/// Lets other threads run: sleeps for 100 microseconds.
void zyield();

}  // namespace qx

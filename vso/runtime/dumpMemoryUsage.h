// The memory that the process uses.
#pragma once

#include <iosfwd>

namespace qx {

/// Writes one line without an end: "TOTAL PROGRAM SIZE: 2671 RESIDENT SET SIZE: 482 SHARED PAGES: 421 TEXT: 9
/// LIBRARY: 0 DATA: 88", all in pages. Writes nothing if the system does not tell.
void dumpMemoryUsage(std::ostream& out);

}  // namespace qx

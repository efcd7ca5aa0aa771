// Counts the allocations of the program that it is linked into.
#pragma once

namespace qx::test {

/// Calls of operator new so far, of any form and from any thread. The program has its own operator new, on the C
/// library's allocation, which sanitizers go on watching. In a file of its own, so that no compiler sees through it.
unsigned int allocationCount();

}  // namespace qx::test

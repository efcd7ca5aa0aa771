// Counts the calls of the C library's allocation in the program that it is linked into.
#pragma once

namespace qx::test {

/// Calls of malloc, calloc and realloc so far, from any thread and any library.
unsigned int mallocCalls();

}  // namespace qx::test

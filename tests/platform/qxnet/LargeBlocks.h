// Counts the large pieces of memory of the program that LargeBlocks.cpp is linked into.
#pragma once

#include <cstddef>

namespace qx::test {

constexpr std::size_t LARGE_BLOCK = 262'144;

/// How many pieces of LARGE_BLOCK bytes or more that operator new gave are in use. The program has its own operators,
/// on the C library's allocation, which sanitizers go on watching.
int largeBlocks();

}  // namespace qx::test

// Counts the allocations of the program that it is linked into.
#pragma once

namespace qx::test {

/// Calls of operator new so far, of any form and from any thread. The program has its own operator new, on the C
/// library's allocation, which sanitizers go on watching. In a file of its own, so that no compiler sees through it.
unsigned int allocationCount();

/// Refuses the `next`th allocation from now on, once; 0 refuses none.
void refuseAllocation(unsigned int next);

/// How many allocations `work` makes.
template <typename Work>
unsigned int allocationsOf(Work work) {
  const unsigned int before = allocationCount();
  work();
  return allocationCount() - before;
}

}  // namespace qx::test

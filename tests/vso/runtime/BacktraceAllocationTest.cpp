// Linked into a program that counts allocations.
#include <gtest/gtest.h>

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <ostream>
#include <streambuf>

#include "tests/vso/frames/AllocationCount.h"
#include "tests/vso/runtime/MallocCalls.h"
#include "vso/runtime/Backtrace.h"

// The sanitizers' allocators, which have this function, stand in place of the C library's.
extern "C" [[gnu::weak]] std::size_t __sanitizer_get_current_allocated_bytes();

namespace qx {
namespace {

using test::allocationsOf;
using test::mallocCalls;

/// Bytes of the heap in use, however they were allocated.
std::size_t heapInUse() {
  if (__sanitizer_get_current_allocated_bytes != nullptr) return __sanitizer_get_current_allocated_bytes();
  return ::mallinfo2().uordblks;
}

TEST(BacktraceAllocation, IsSeenInTheHeap) {
  // More than the C library would take from what it keeps of freed memory. Static, so that no compiler does without it.
  constexpr std::size_t SIZE = 100'000;
  static void* storage = nullptr;
  const std::size_t before = heapInUse();
  storage = std::malloc(SIZE);
  const std::size_t after = heapInUse();
  std::free(storage);
  EXPECT_GE(after, before + SIZE);
}

TEST(BacktraceAllocation, IsSeenInTheCallsOfMalloc) {
  static void* volatile storage = nullptr;
  const unsigned int before = mallocCalls();
  storage = std::malloc(1);
  const unsigned int after = mallocCalls();
  std::free(storage);
  EXPECT_EQ(after, before + 1);
}

// In the process of its own that ctest gives it, the first grab of the process.
TEST(BacktraceAllocation, IsNeverMadeByAGrab) {
  Backtrace backtrace;
  unsigned int frames = 0;
  const unsigned int before = mallocCalls();
  const unsigned int allocations = allocationsOf([&] { frames = backtrace.grab(); });
  const unsigned int after = mallocCalls();
  EXPECT_EQ(allocations, 0U);
  EXPECT_EQ(after, before);
  EXPECT_GT(frames, 0U);
}

TEST(BacktraceAllocation, IsNeverMadeByASecondGrab) {
  Backtrace backtrace;
  backtrace.grab();
  EXPECT_EQ(allocationsOf([&] { backtrace.grab(); }), 0U);
}

TEST(BacktraceAllocation, IsNeverMadeByASignal) {
  Backtrace backtrace;
  EXPECT_EQ(allocationsOf([&] {
              backtrace.setSig(11);
              backtrace.sigIsFatal();
              backtrace.reset();
            }),
            0U);
}

/// Takes any text and keeps none.
class Nowhere : public std::streambuf {
 protected:
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

TEST(BacktraceAllocation, IsGivenBackByADump) {
  Backtrace backtrace;
  backtrace.grab();
  Nowhere nowhere;
  std::ostream out(&nowhere);
  backtrace.dumptrace(out);  // what the first one loads stays
  const std::size_t before = heapInUse();
  for (int i = 0; i < 10; ++i) backtrace.dumptrace(out);
  EXPECT_EQ(heapInUse(), before);
  EXPECT_TRUE(out.good());
}

}  // namespace
}  // namespace qx

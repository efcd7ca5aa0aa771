// Linked into the program that counts allocations.
#include <gtest/gtest.h>

#include "tests/vso/frames/AllocationCount.h"
#include "vso/node/MessageFailHistogram.h"
#include "vso/node/RebootHistogram.h"

namespace qx::test {
namespace {

template <typename Histogram>
void expectNoAllocation() {
  Histogram histogram(Histogram::WINDOW_SIZE);
  const BPosixTime start = histogram.startTime();
  const boost::posix_time::time_duration width = histogram.bucketSize();
  EXPECT_EQ(allocationsOf([&] {
              for (int i = 0; i < 100; ++i) {
                histogram.addEvent(start + width * i / 2);
                histogram.rate(start + width * i);
              }
            }),
            0U);
}

TEST(EventHistogramAllocation, IsNeverMadeByAnEvent) {
  expectNoAllocation<RebootHistogram>();
  expectNoAllocation<MessageFailHistogram>();
}

}  // namespace
}  // namespace qx::test

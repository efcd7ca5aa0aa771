#include "qxshared/KernelX.h"

#include <gtest/gtest.h>

#include <ctime>

namespace qx {
namespace {

TEST(KernelX, ReadsTheWallClock) {
  const std::time_t before = std::time(nullptr);
  timespec now{};
  ASSERT_EQ(KernelX::gettime(now), 0);
  const std::time_t after = std::time(nullptr);
  // time() reads a coarser clock, which may be a tick behind, and a host may set the clock back meanwhile.
  EXPECT_GE(now.tv_sec, before - 1);
  EXPECT_LE(now.tv_sec, after + 1);
}

TEST(KernelX, GivesNanosecondsWithinASecond) {
  timespec now{-1, -1};
  ASSERT_EQ(KernelX::gettime(now), 0);
  EXPECT_GE(now.tv_nsec, 0);
  EXPECT_LT(now.tv_nsec, 1'000'000'000);
}

}  // namespace
}  // namespace qx

#include "vso/runtime/sleep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <ostream>

#include "tests/vso/runtime/ControlledSystem.h"

namespace qx::test {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

struct Sleep {
  unsigned int milliseconds;
  unsigned int microseconds;
};

std::ostream& operator<<(std::ostream& out, const Sleep& row) {
  return out << row.milliseconds << " ms, " << row.microseconds << " us";
}

class msleepArgument : public testing::TestWithParam<Sleep> {};

TEST_P(msleepArgument, IsCountedInThirtyTwoBitsOfMicroseconds) {
  ControlledSystem system;
  msleep(GetParam().milliseconds);
  EXPECT_THAT(system.sleeps, ElementsAre(GetParam().microseconds));
}

INSTANTIATE_TEST_SUITE_P(Times, msleepArgument,
                         testing::Values(Sleep{0, 0}, Sleep{1, 1000}, Sleep{250, 250000}, Sleep{1000, 1000000},
                                         Sleep{4294967, 4294967000}, Sleep{4294968, 704}, Sleep{4294969, 1704},
                                         Sleep{std::numeric_limits<unsigned int>::max(), 4294966296}));

TEST(zyield, SleepsForAHundredMicroseconds) {
  ControlledSystem system;
  zyield();
  EXPECT_THAT(system.sleeps, ElementsAre(100));
}

template <typename Work>
std::chrono::steady_clock::duration timeOf(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - start;
}

TEST(msleep, LetsTimePass) {
  EXPECT_GE(timeOf([] { msleep(20); }), 20ms);
}

TEST(zyield, LetsTimePass) {
  EXPECT_GE(timeOf([] { zyield(); }), 100us);
}

}  // namespace
}  // namespace qx::test

#include "vso/runtime/sleep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "tests/vso/runtime/ControlledSystem.h"

namespace qx {
namespace {

using test::ControlledSystem;
using testing::ElementsAre;

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

}  // namespace
}  // namespace qx

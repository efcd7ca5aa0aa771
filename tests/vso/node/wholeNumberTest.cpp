#include "vso/node/wholeNumber.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace qx::detail {
namespace {

TEST(NearestInt, IsTheNumberWhereAnIntHoldsIt) {
  EXPECT_EQ(nearestInt(0LL), 0);
  EXPECT_EQ(nearestInt(-7LL), -7);
  EXPECT_EQ(nearestInt(2147483646LL), 2147483646);
  EXPECT_EQ(nearestInt(2147483647LL), INT_MAX);
  EXPECT_EQ(nearestInt(-2147483647LL), -2147483647);
  EXPECT_EQ(nearestInt(-2147483648LL), INT_MIN);
  EXPECT_EQ(nearestInt(2147483646.0), 2147483646);
  EXPECT_EQ(nearestInt(-2147483647.0), -2147483647);
}

TEST(NearestInt, IsTheLastOfTheRangeBeyondIt) {
  EXPECT_EQ(nearestInt(2147483648LL), INT_MAX);
  EXPECT_EQ(nearestInt(-2147483649LL), INT_MIN);
  EXPECT_EQ(nearestInt(LLONG_MAX), INT_MAX);
  EXPECT_EQ(nearestInt(LLONG_MIN), INT_MIN);
  EXPECT_EQ(nearestInt(2147483648.0), INT_MAX);
  EXPECT_EQ(nearestInt(-2147483649.0), INT_MIN);
  EXPECT_EQ(nearestInt(1e300), INT_MAX);
  EXPECT_EQ(nearestInt(-1e300), INT_MIN);
}

// The singles next to the range: 128 apart below 2^31, 256 above.
TEST(NearestInt, TakesSinglesNextToTheRange) {
  EXPECT_EQ(nearestInt(2147483520.0F), 2147483520);
  EXPECT_EQ(nearestInt(2147483648.0F), INT_MAX);
  EXPECT_EQ(nearestInt(-2147483520.0F), -2147483520);
  EXPECT_EQ(nearestInt(-2147483648.0F), INT_MIN);
  EXPECT_EQ(nearestInt(-2147483904.0F), INT_MIN);
}

TEST(NearestInt, CutsAFractionOff) {
  EXPECT_EQ(nearestInt(1.999), 1);
  EXPECT_EQ(nearestInt(-1.999), -1);
  EXPECT_EQ(nearestInt(0.5F), 0);
  EXPECT_EQ(nearestInt(2147483646.5), 2147483646);
  EXPECT_EQ(nearestInt(-2147483647.5), -2147483647);
}

TEST(NearestInt, TakesWhatIsNoNumber) {
  EXPECT_EQ(nearestInt(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(nearestInt(-std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(nearestInt(std::numeric_limits<double>::infinity()), INT_MAX);
  EXPECT_EQ(nearestInt(-std::numeric_limits<double>::infinity()), INT_MIN);
  EXPECT_EQ(nearestInt(std::numeric_limits<float>::infinity()), INT_MAX);
  EXPECT_EQ(nearestInt(-std::numeric_limits<float>::infinity()), INT_MIN);
}

}  // namespace
}  // namespace qx::detail

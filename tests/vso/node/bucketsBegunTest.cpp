#include "vso/node/bucketsBegun.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace qx::detail {
namespace {

using boost::posix_time::microseconds;
using boost::posix_time::milliseconds;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;

// Widths whose arithmetic is easy to follow: all of it is exact for a width of 2^n seconds.
constexpr BucketWidth SIXTEEN{16, 0.25};
constexpr BucketWidth SECOND{1, 0.5};

TEST(BucketWidth, IsADuration) {
  EXPECT_EQ(SIXTEEN.duration(), seconds(16));
  EXPECT_EQ(SECOND.duration().ticks(), 1000000);
}

TEST(BucketWidth, IndexIsCutTowardsZero) {
  EXPECT_EQ(SIXTEEN.indexOf(seconds(0)), 0U);
  EXPECT_EQ(SIXTEEN.indexOf(microseconds(15999999)), 0U);
  EXPECT_EQ(SIXTEEN.indexOf(seconds(16)), 1U);
  EXPECT_EQ(SIXTEEN.indexOf(microseconds(31999999)), 1U);
  EXPECT_EQ(SIXTEEN.indexOf(microseconds(-15999999)), 0U);
}

TEST(BucketWidth, IndexBelowZeroWrapsRound) {
  EXPECT_EQ(SIXTEEN.indexOf(seconds(-16)), 4294967295U);
  EXPECT_EQ(SIXTEEN.indexOf(microseconds(-31999999)), 4294967295U);
  EXPECT_EQ(SIXTEEN.indexOf(seconds(-32)), 4294967294U);
}

// 2^32 buckets of a second.
TEST(BucketWidth, IndexWrapsRoundAt32Bits) {
  EXPECT_EQ(SECOND.indexOf(seconds(4294967295LL)), 4294967295U);
  EXPECT_EQ(SECOND.indexOf(seconds(4294967296LL)), 0U);
  EXPECT_EQ(SECOND.indexOf(seconds(4294967299LL)), 3U);
}

TEST(BucketWidth, WidthsAreAFraction) {
  EXPECT_EQ(SIXTEEN.widthsOf(seconds(0)), 0.0F);
  EXPECT_EQ(SIXTEEN.widthsOf(seconds(20)), 1.25F);
  EXPECT_EQ(SIXTEEN.widthsOf(seconds(-4)), -0.25F);
}

// Singles are 2 apart from 2^24 on.
TEST(BucketWidth, WidthsAreRoundedToSinglePrecision) {
  EXPECT_EQ(SECOND.widthsOf(seconds(16777217)), 16777216.0F);
  EXPECT_EQ(SECOND.widthsOf(seconds(16777217) + microseconds(1)), 16777218.0F);
  EXPECT_EQ(SECOND.widthsOf(seconds(16777219)), 16777220.0F);
}

TEST(BucketWidth, AtLeastOneBucketHasBegun) {
  EXPECT_EQ(SIXTEEN.begunWithin(seconds(0)), 1U);
  EXPECT_EQ(SIXTEEN.begunWithin(microseconds(1)), 1U);
  EXPECT_EQ(SIXTEEN.begunWithin(seconds(16)), 1U);
  EXPECT_EQ(SIXTEEN.begunWithin(seconds(-1000)), 1U);
  EXPECT_EQ(SIXTEEN.begunWithin(time_duration(boost::posix_time::neg_infin)), 1U);
  EXPECT_EQ(SIXTEEN.begunWithin(time_duration(boost::posix_time::not_a_date_time)), 1U);
}

TEST(BucketWidth, ARestFromTheToleranceOnBeginsABucket) {
  EXPECT_EQ(SIXTEEN.begunWithin(milliseconds(19999)), 1U);
  EXPECT_EQ(SIXTEEN.begunWithin(seconds(20)), 2U);
  EXPECT_EQ(SIXTEEN.begunWithin(milliseconds(20001)), 2U);
  EXPECT_EQ(SIXTEEN.begunWithin(seconds(32)), 2U);
  EXPECT_EQ(SIXTEEN.begunWithin(milliseconds(35999)), 2U);
  EXPECT_EQ(SIXTEEN.begunWithin(seconds(36)), 3U);
}

// 9223372036854.775807 seconds; singles are 1 apart from 2^23 on.
TEST(BucketWidth, TimeWithoutEndIsTheLongestDuration) {
  constexpr BucketWidth WIDE{1048576, 0.25};
  EXPECT_EQ(WIDE.begunWithin(time_duration(boost::posix_time::pos_infin)), 8796093U);  // 8796093.0222
}

}  // namespace
}  // namespace qx::detail

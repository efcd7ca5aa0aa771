#include "vso/node/MessageFailHistogram.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "vso/node/Histograms.h"

namespace qx {
namespace {

using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::minutes;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using test::emptyHistogram;
using test::start;

TEST(MessageFailHistogram, HasAnHourInABucketAndUsuallyADayInTheWindow) {
  EXPECT_EQ(MessageFailHistogram::WINDOW_SIZE, 24U);
  EXPECT_EQ(MessageFailHistogram::NAME, "MessageFailHistogram");
  const MessageFailHistogram histogram(MessageFailHistogram::WINDOW_SIZE);
  EXPECT_EQ(histogram.bucketSize().ticks(), 3600000000LL);
  EXPECT_EQ(histogram.totalHistogramTime().ticks(), 86400000000LL);
}

TEST(MessageFailHistogram, IsMadeOnPurposeOnly) {
  EXPECT_TRUE((std::is_base_of_v<EventHistogram, MessageFailHistogram>));
  EXPECT_FALSE((std::is_convertible_v<unsigned int, MessageFailHistogram>));
}

TEST(MessageFailHistogram, DurationToIndexCutsEachDivisionTowardsZero) {
  const MessageFailHistogram histogram(24);
  EXPECT_EQ(histogram.durationToIndex(seconds(0)), 0U);
  EXPECT_EQ(histogram.durationToIndex(hours(1) - microseconds(1)), 0U);
  EXPECT_EQ(histogram.durationToIndex(hours(1)), 1U);
  EXPECT_EQ(histogram.durationToIndex(hours(10) - microseconds(1)), 9U);
  EXPECT_EQ(histogram.durationToIndex(microseconds(1) - hours(1)), 0U);
  EXPECT_EQ(histogram.durationToIndex(-hours(1)), 4294967295U);
  EXPECT_EQ(histogram.durationToIndex(-hours(2) + microseconds(1)), 4294967295U);
  EXPECT_EQ(histogram.durationToIndex(-hours(2)), 4294967294U);
}

// The tick counts of the special durations are the ends of the 64-bit range: 2562047788.02 hours, and 2^32 less that.
TEST(MessageFailHistogram, DurationToIndexTakesSpecialDurationsByTheirTicks) {
  const MessageFailHistogram histogram(24);
  EXPECT_EQ(histogram.durationToIndex(time_duration(boost::posix_time::pos_infin)), 2562047788U);
  EXPECT_EQ(histogram.durationToIndex(time_duration(boost::posix_time::not_a_date_time)), 2562047788U);
  EXPECT_EQ(histogram.durationToIndex(time_duration(boost::posix_time::neg_infin)), 1732919508U);
}

TEST(MessageFailHistogram, AnHourOrLessIsOneHourAndSoIsWhatIsNoTime) {
  for (const time_duration& duration :
       {time_duration(), time_duration(microseconds(1)), hours(1) - microseconds(1), time_duration(hours(1)),
        time_duration(hours(-1)), time_duration(hours(-1000000)), time_duration(boost::posix_time::neg_infin),
        time_duration(boost::posix_time::not_a_date_time)}) {
    EXPECT_EQ(MessageFailHistogram::wholeHours(duration), 1U) << duration;
  }
}

struct Rest {
  long long hours;
  long long microseconds;
  unsigned int wholeHours;
};

// Singles are 2^-23 hours apart from 1 hour on, 2^-22 from 2, 2^-21 from 4, 2^-20 from 8, 2^-19 from 16. A rest counts
// if the single nearest to the duration has a fraction of at least 0.0002, so the border is half way from the last
// single with less to the first with more.
constexpr Rest RESTS[] = {
    {1, 1, 1},        {1, 500000, 1},         {1, 719904, 1},  // 1677.5 * 2^-23 hours are 719904.9 microseconds
    {1, 719905, 2},   {1, 720000, 2},         {1, 1000000, 2},
    {2, 0, 2},        {2, 719690, 2},                          // 838.5 * 2^-22 hours are 719690.3 microseconds
    {2, 719691, 3},   {4, 720000, 4},         {4, 720119, 4},  // 419.5 * 2^-21 hours are 720119.5 microseconds
    {4, 720120, 5},   {8, 719261, 8},                          // 209.5 * 2^-20 hours are 719261.2 microseconds
    {8, 719262, 9},   {16, 717544, 16},                        // 104.5 * 2^-19 hours are 717544.6 microseconds
    {16, 717545, 17}, {2, 1800000000, 3},     {23, 3599000000, 24},
    {8760, 0, 8760},  {8760, 60000000, 8761}, {1000000, 0, 1000000},
};

TEST(MessageFailHistogram, ARestOfTwoTenThousandthsOfAnHourBeginsANewOne) {
  for (const Rest& row : RESTS) {
    EXPECT_EQ(MessageFailHistogram::wholeHours(hours(row.hours) + microseconds(row.microseconds)), row.wholeHours)
        << row.hours << " hours " << row.microseconds;
  }
}

// As 2 - 2^-23 is the last single below 2, and one more is half way between 3 - 2^-22 and 3, which is even. The
// durations that round to it are those from 2 hours - 1.5 * 2^-23 (643.7 microseconds) to 2 hours - 0.5 * 2^-23
// (214.6).
TEST(MessageFailHistogram, TheSumIsRoundedToSinglePrecision) {
  EXPECT_EQ(MessageFailHistogram::wholeHours(hours(2) - microseconds(644)), 2U);
  EXPECT_EQ(MessageFailHistogram::wholeHours(hours(2) - microseconds(643)), 3U);
  EXPECT_EQ(MessageFailHistogram::wholeHours(hours(2) - microseconds(215)), 3U);
  EXPECT_EQ(MessageFailHistogram::wholeHours(hours(2) - microseconds(214)), 2U);
}

// Singles are 8 hours apart from 2^26 hours on: 4 hours are half way, and a double of so many microseconds, 32 apart,
// does not hold the one that is beyond them.
TEST(MessageFailHistogram, TheDivisionIsDoneInExtendedPrecision) {
  EXPECT_EQ(MessageFailHistogram::wholeHours(hours(67108864 + 4)), 67108864U);
  EXPECT_EQ(MessageFailHistogram::wholeHours(hours(67108864 + 4) + microseconds(1)), 67108872U);
}

// 2562047788.02 hours; singles are 256 apart.
TEST(MessageFailHistogram, TimeWithoutEndIsTheLongestDurationInHours) {
  EXPECT_EQ(MessageFailHistogram::wholeHours(time_duration(boost::posix_time::pos_infin)), 2562047744U);
}

TEST(MessageFailHistogram, WholeBucketsAreHoursUpToTheWindow) {
  const MessageFailHistogram histogram(24);
  EXPECT_EQ(histogram.wholeBuckets(hours(-3)), 1U);
  EXPECT_EQ(histogram.wholeBuckets(hours(23)), 23U);
  EXPECT_EQ(histogram.wholeBuckets(hours(23) + minutes(1)), 24U);
  EXPECT_EQ(histogram.wholeBuckets(hours(24) + minutes(1)), 24U);
  EXPECT_EQ(histogram.wholeBuckets(hours(10000)), 24U);
  EXPECT_EQ(histogram.wholeBuckets(time_duration(boost::posix_time::pos_infin)), 24U);
  EXPECT_EQ(histogram.wholeBuckets(time_duration(boost::posix_time::neg_infin)), 1U);
  EXPECT_EQ(histogram.wholeBuckets(time_duration(boost::posix_time::not_a_date_time)), 1U);
  EXPECT_EQ(MessageFailHistogram(1).wholeBuckets(hours(3)), 1U);
  EXPECT_EQ(MessageFailHistogram(0).wholeBuckets(hours(3)), 0U);
}

TEST(MessageFailHistogram, FiveEventsInTwoHoursAndAHalfAreSpreadOverThree) {
  MessageFailHistogram histogram = emptyHistogram<MessageFailHistogram>(24);
  const BPosixTime now = start() + hours(2) + minutes(30);
  for (int i = 0; i < 5; ++i) histogram.addEvent(start() + minutes(30 * (i + 1)));
  EXPECT_EQ(histogram.rate(now), 5.0 / 3);
  EXPECT_EQ(histogram.quality(now), 2);
}

TEST(MessageFailHistogram, OneEventInAFullDayIsATwentyFourth) {
  MessageFailHistogram histogram = emptyHistogram<MessageFailHistogram>(24);
  histogram.addEvent(start() + hours(30));
  EXPECT_EQ(histogram.rate(start() + hours(31)), 1.0 / 24);
  EXPECT_EQ(histogram.quality(start() + hours(31)), 0);
}

}  // namespace
}  // namespace qx

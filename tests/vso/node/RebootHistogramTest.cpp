#include "vso/node/RebootHistogram.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "vso/node/Histograms.h"

namespace qx {
namespace {

using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using test::emptyHistogram;
using test::start;

time_duration days(long long n) { return hours(24 * n); }

TEST(RebootHistogram, HasADayInABucketAndUsuallyAWeekInTheWindow) {
  EXPECT_EQ(RebootHistogram::WINDOW_SIZE, 7U);
  EXPECT_EQ(RebootHistogram::NAME, "RebootHistogram");
  const RebootHistogram histogram(RebootHistogram::WINDOW_SIZE);
  EXPECT_EQ(histogram.bucketSize().ticks(), 86400000000LL);
  EXPECT_EQ(histogram.totalHistogramTime().ticks(), 604800000000LL);
}

TEST(RebootHistogram, IsMadeOnPurposeOnly) {
  EXPECT_TRUE((std::is_base_of_v<EventHistogram, RebootHistogram>));
  EXPECT_FALSE((std::is_convertible_v<unsigned int, RebootHistogram>));
  EXPECT_TRUE(std::is_abstract_v<EventHistogram>);
}

TEST(RebootHistogram, DurationToIndexCutsEachDivisionTowardsZero) {
  const RebootHistogram histogram(7);
  EXPECT_EQ(histogram.durationToIndex(seconds(0)), 0U);
  EXPECT_EQ(histogram.durationToIndex(days(1) - microseconds(1)), 0U);
  EXPECT_EQ(histogram.durationToIndex(days(1)), 1U);
  EXPECT_EQ(histogram.durationToIndex(days(10) - microseconds(1)), 9U);
  EXPECT_EQ(histogram.durationToIndex(microseconds(1) - days(1)), 0U);
  EXPECT_EQ(histogram.durationToIndex(-days(1)), 4294967295U);
  EXPECT_EQ(histogram.durationToIndex(-days(2) + microseconds(1)), 4294967295U);
  EXPECT_EQ(histogram.durationToIndex(-days(2)), 4294967294U);
}

// The tick counts of the special durations are the ends of the 64-bit range: 106751991.17 days.
TEST(RebootHistogram, DurationToIndexTakesSpecialDurationsByTheirTicks) {
  const RebootHistogram histogram(7);
  EXPECT_EQ(histogram.durationToIndex(time_duration(boost::posix_time::pos_infin)), 106751991U);
  EXPECT_EQ(histogram.durationToIndex(time_duration(boost::posix_time::not_a_date_time)), 106751991U);
  EXPECT_EQ(histogram.durationToIndex(time_duration(boost::posix_time::neg_infin)), 4188215305U);
}

TEST(RebootHistogram, ADayOrLessIsOneDayAndSoIsWhatIsNoTime) {
  for (const time_duration& duration :
       {seconds(0) + seconds(0), time_duration(microseconds(1)), days(1) - microseconds(1), days(1), -days(1),
        -days(1000000), time_duration(boost::posix_time::neg_infin),
        time_duration(boost::posix_time::not_a_date_time)}) {
    EXPECT_EQ(RebootHistogram::wholeDays(duration), 1U) << duration;
  }
}

struct Rest {
  long long days;
  long long microseconds;
  unsigned int wholeDays;
};

// Singles are 2^-23 days apart from 1 day on, 2^-22 from 2, 2^-21 from 4, 2^-20 from 8, 2^-19 from 16, 2^-18 from 32.
// A rest counts if the single nearest to the duration has a fraction of at least 0.000001, so the border is half way
// from the last single with less to the first with more.
constexpr Rest RESTS[] = {
    {1, 1, 1},
    {1, 50000, 1},
    {1, 86400, 1},  // 0.000001 days, of which the single has 0.00000095
    {1, 87547, 1},  // 8.5 * 2^-23 days are 87547.3 microseconds
    {1, 87548, 2},
    {1, 100000, 2},
    {2, 0, 2},
    {2, 92697, 2},  // 4.5 * 2^-22 days are 92697.1
                    // microseconds
    {2, 92698, 3},
    {4, 102996, 4},  // 2.5 * 2^-21 days are 102996.8 microseconds
    {4, 102997, 5},
    {6, 102996, 6},
    {6, 102997, 7},
    {8, 123596, 8},  // 1.5 * 2^-20 days are 123596.2
                     // microseconds
    {8, 123597, 9},
    {16, 82397, 16},  // 0.5 * 2^-19 days are 82397.5 microseconds
    {16, 82398, 17},
    {32, 164794, 32},  // 0.5 * 2^-18 days are 164794.9 microseconds
    {32, 164795, 33},
    {1, 43200000000, 2},
    {2, 86399000000, 3},
    {365, 0, 365},
    {365, 3600000000, 366},
    {100000, 0, 100000},
};

TEST(RebootHistogram, ARestOfAMillionthOfADayBeginsANewOne) {
  for (const Rest& row : RESTS) {
    EXPECT_EQ(RebootHistogram::wholeDays(days(row.days) + microseconds(row.microseconds)), row.wholeDays)
        << row.days << " days " << row.microseconds;
  }
}

// 2 - 2^-23 is the last single below 2; one more is half way between 3 - 2^-22 and 3, and so 3. The durations that
// round to it are those from 2 days - 1.5 * 2^-23 (15449.5 microseconds) to 2 days - 0.5 * 2^-23 (5149.8).
TEST(RebootHistogram, TheSumIsRoundedToSinglePrecision) {
  EXPECT_EQ(RebootHistogram::wholeDays(days(2) - microseconds(15450)), 2U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(2) - microseconds(15449)), 3U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(2) - microseconds(5150)), 3U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(2) - microseconds(5149)), 2U);
  // 4194304.75 lies half way between 4194304.5 and 4194305, whose last digit is even.
  EXPECT_EQ(RebootHistogram::wholeDays(days(4194303) + hours(18)), 4194305U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(4194303) + hours(12)), 4194304U);
}

// Singles are 1/8 day apart from 2^20 days on: 1/16 of a day is half way, and a double of so many microseconds, 16
// apart, does not hold the one that is beyond it.
TEST(RebootHistogram, TheDivisionIsDoneInExtendedPrecision) {
  EXPECT_EQ(RebootHistogram::wholeDays(days(1048576) + seconds(5400)), 1048576U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(1048576) + seconds(5400) + microseconds(1)), 1048577U);
}

TEST(RebootHistogram, TheDaysAreRoundedToSinglePrecision) {
  EXPECT_EQ(RebootHistogram::wholeDays(days(16777217)), 16777216U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(16777217) + microseconds(1)), 16777218U);
  EXPECT_EQ(RebootHistogram::wholeDays(days(16777219)), 16777220U);
}

// 106751991.17 days; singles are 8 apart.
TEST(RebootHistogram, TimeWithoutEndIsTheLongestDurationInDays) {
  EXPECT_EQ(RebootHistogram::wholeDays(time_duration(boost::posix_time::pos_infin)), 106751992U);
}

TEST(RebootHistogram, WholeBucketsAreDaysUpToTheWindow) {
  const RebootHistogram histogram(7);
  EXPECT_EQ(histogram.wholeBuckets(-days(3)), 1U);
  EXPECT_EQ(histogram.wholeBuckets(days(6)), 6U);
  EXPECT_EQ(histogram.wholeBuckets(days(6) + hours(1)), 7U);
  EXPECT_EQ(histogram.wholeBuckets(days(7) + hours(1)), 7U);
  EXPECT_EQ(histogram.wholeBuckets(days(1000)), 7U);
  EXPECT_EQ(histogram.wholeBuckets(time_duration(boost::posix_time::pos_infin)), 7U);
  EXPECT_EQ(histogram.wholeBuckets(time_duration(boost::posix_time::neg_infin)), 1U);
  EXPECT_EQ(histogram.wholeBuckets(time_duration(boost::posix_time::not_a_date_time)), 1U);
  EXPECT_EQ(RebootHistogram(1).wholeBuckets(days(3)), 1U);
  EXPECT_EQ(RebootHistogram(0).wholeBuckets(days(3)), 0U);
}

TEST(RebootHistogram, RateOverADayAndARest) {
  RebootHistogram histogram = emptyHistogram<RebootHistogram>(7);
  histogram.addEvent(start() + hours(24));
  EXPECT_EQ(histogram.rate(start() + hours(24) + microseconds(50000)), 1.0);
  EXPECT_EQ(histogram.rate(start() + hours(24) + microseconds(100000)), 0.5);
  EXPECT_EQ(histogram.quality(start() + hours(24) + microseconds(100000)), 1);
}

TEST(RebootHistogram, AWeekOfReboots) {
  RebootHistogram histogram = emptyHistogram<RebootHistogram>(7);
  for (int day = 0; day < 7; ++day) {
    for (int i = 0; i < 3; ++i) histogram.addEvent(start() + days(day) + hours(i));
  }
  EXPECT_EQ(histogram.totalEvents(), 21);
  EXPECT_EQ(histogram.rate(start() + days(6) + hours(3)), 3.0);
  EXPECT_EQ(histogram.rate(start() + days(7)), 18.0 / 7);  // day 0 is out of the window
  EXPECT_EQ(histogram.quality(start() + days(7)), 3);
  EXPECT_EQ(histogram.rate(start() + days(11)), 6.0 / 7);  // days 5 and 6 are left
  EXPECT_EQ(histogram.quality(start() + days(11)), 1);
  EXPECT_EQ(histogram.rate(start() + days(13)), 0.0);
}

}  // namespace
}  // namespace qx

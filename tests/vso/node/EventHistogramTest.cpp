#include "vso/node/EventHistogram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <climits>
#include <ctime>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/LogCapture.h"
#include "vso/node/Histograms.h"
#include "vso/node/MessageFailHistogram.h"
#include "vso/node/RebootHistogram.h"
#include "vso/serial/Forms.h"

namespace qx {
namespace {

using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::minutes;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using test::emptyHistogram;
using test::histogramMessage;
using test::histogramOf;
using test::start;
using test::written;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

const time_duration TICK = microseconds(1);

/// What holds for both widths of a bucket, in which the tests reckon.
template <typename Histogram>
class EventHistogramOf : public testing::Test {
 protected:
  /// `n` buckets.
  static time_duration buckets(int n) { return Histogram(0).bucketSize() * n; }
  static Histogram empty(unsigned int windowSize) { return emptyHistogram<Histogram>(windowSize); }
};

using Histograms = testing::Types<RebootHistogram, MessageFailHistogram>;

/// What the tests of a histogram are named by.
struct HistogramName {
  template <typename Histogram>
  static std::string GetName(int) {
    return std::is_same_v<Histogram, RebootHistogram> ? "Reboots" : "MessageFailures";
  }
};
TYPED_TEST_SUITE(EventHistogramOf, Histograms, HistogramName);

TYPED_TEST(EventHistogramOf, StartsEmptyAtTheMomentOfItsConstruction) {
  const BPosixTime before = EventHistogram::localtime();
  const TypeParam histogram(5);
  const BPosixTime after = EventHistogram::localtime();
  EXPECT_EQ(histogram.windowSize(), 5U);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0, 0, 0));
  EXPECT_GE(histogram.startTime(), before);
  EXPECT_LE(histogram.startTime(), after);
  EXPECT_EQ(histogram.lastEvent(), histogram.startTime());
}

TYPED_TEST(EventHistogramOf, AnEventRightAfterConstructionMakesTheRateOne) {
  TypeParam histogram(7);
  const BPosixTime now = histogram.startTime();
  histogram.addEvent(now);
  EXPECT_EQ(histogram.rate(now), 1.0);
  EXPECT_EQ(histogram.quality(now), 1);
}

TYPED_TEST(EventHistogramOf, CountsAnEventInTheBucketOfItsTime) {
  TypeParam histogram = this->empty(3);
  histogram.addEvent(start());
  histogram.addEvent(start() + this->buckets(1) - TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(2, 0, 0));
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(2, 1, 0));
  histogram.addEvent(start() + this->buckets(2));
  EXPECT_THAT(histogram.histogram(), ElementsAre(2, 1, 1));
  EXPECT_EQ(histogram.lastEvent(), start() + this->buckets(2));
  EXPECT_EQ(histogram.startTime(), start());
  EXPECT_EQ(histogram.totalEvents(), 4);
}

TYPED_TEST(EventHistogramOf, ComesRoundToTheFirstPlaceAfterAWindow) {
  TypeParam histogram = this->empty(3);
  for (int bucket = 0; bucket < 3; ++bucket) {
    for (int i = 0; i <= bucket; ++i) histogram.addEvent(start() + this->buckets(bucket));
  }
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 2, 3));
  histogram.addEvent(start() + this->buckets(3));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 2, 3));
  histogram.addEvent(start() + this->buckets(5));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 0, 1));
}

TYPED_TEST(EventHistogramOf, NumbersBucketsOnFromTheStart) {
  const TypeParam histogram = this->empty(3);
  EXPECT_EQ(histogram.index(start()), 0U);
  EXPECT_EQ(histogram.index(start() + this->buckets(1) - TICK), 0U);
  EXPECT_EQ(histogram.index(start() + this->buckets(1)), 1U);
  EXPECT_EQ(histogram.index(start() + this->buckets(1000) - TICK), 999U);
  EXPECT_EQ(histogram.index(start() + this->buckets(1000)), 1000U);
  EXPECT_EQ(histogram.index(start() - this->buckets(1) + TICK), 0U);
  EXPECT_EQ(histogram.index(start() - this->buckets(1)), 4294967295U);
  EXPECT_EQ(histogram.index(start() - this->buckets(3)), 4294967293U);
}

TYPED_TEST(EventHistogramOf, UpdateClearsTheBucketsPassedAndMovesNoTime) {
  const TypeParam full = histogramOf<TypeParam>(5, {1, 2, 3, 4, 5});
  struct Step {
    int buckets;
    std::vector<int> counts;
  };
  const Step steps[] = {{0, {1, 2, 3, 4, 5}}, {1, {1, 0, 3, 4, 5}}, {2, {1, 0, 0, 4, 5}},
                        {3, {1, 0, 0, 0, 5}}, {4, {1, 0, 0, 0, 0}}, {5, {0, 0, 0, 0, 0}}};
  for (const Step& step : steps) {
    TypeParam histogram = full;
    histogram.update(start() + this->buckets(step.buckets));
    EXPECT_EQ(histogram.histogram(), step.counts) << step.buckets << " buckets";
    EXPECT_EQ(histogram.lastEvent(), start()) << step.buckets << " buckets";
    EXPECT_EQ(histogram.startTime(), start()) << step.buckets << " buckets";
  }
}

TYPED_TEST(EventHistogramOf, UpdateInTheBucketOfTheLastEventChangesNothing) {
  TypeParam histogram = this->empty(4);
  histogram.addEvent(start() + this->buckets(2));
  histogram.addEvent(start() + this->buckets(2) + TICK);
  const TypeParam before = histogram;
  histogram.update(start() + this->buckets(3) - TICK);
  EXPECT_TRUE(histogram == before);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 2, 0));
}

TYPED_TEST(EventHistogramOf, UpdateAWindowLaterEmptiesTheRingAndKeepsTheLastEvent) {
  TypeParam histogram = this->empty(4);
  histogram.addEvent(start() + TICK);
  histogram.addEvent(start() + TICK);
  histogram.update(start() + TICK + this->buckets(4));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0, 0));
  EXPECT_EQ(histogram.lastEvent(), start() + TICK);
  EXPECT_EQ(histogram.startTime(), start());
}

TYPED_TEST(EventHistogramOf, UpdateTwiceIsUpdateOnce) {
  TypeParam histogram = histogramOf<TypeParam>(5, {1, 2, 3, 4, 5});
  histogram.update(start() + this->buckets(2));
  const TypeParam once = histogram;
  histogram.update(start() + this->buckets(2));
  EXPECT_TRUE(histogram == once);
  histogram.update(start() + this->buckets(1));
  EXPECT_TRUE(histogram == once);
  histogram.update(start() + this->buckets(3));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 0, 0, 0, 5));
}

// The last event at the end of its bucket: a microsecond less than the window later the walk has come to every bucket
// but none beyond, and comes to that of the event itself.
TYPED_TEST(EventHistogramOf, TheWindowEndsExactlyAWindowAfterTheLastEvent) {
  TypeParam histogram = histogramOf<TypeParam>(3, {7, 8, 9});
  histogram.update(start() + this->buckets(3) - TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(7, 0, 0));

  histogram = histogramOf<TypeParam>(3, {7, 8, 9});
  histogram.update(start() + this->buckets(3));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));

  histogram = histogramOf<TypeParam>(3, {7, 8, 9});
  histogram.update(start() + this->buckets(3) + TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));

  histogram = this->empty(3);
  histogram.addEvent(start() + TICK);
  histogram.update(start() + this->buckets(3));  // a microsecond less than a window, yet in the event's place again
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
}

TYPED_TEST(EventHistogramOf, ABucketOfOneIsClearedByTheNext) {
  TypeParam histogram = this->empty(1);
  histogram.addEvent(start());
  histogram.addEvent(start() + this->buckets(1) - TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(2));
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1));
  histogram.update(start() + this->buckets(2) - TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(1));
  histogram.update(start() + this->buckets(2));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0));
}

TYPED_TEST(EventHistogramOf, AnEventAfterAYearIsAloneInTheRing) {
  TypeParam histogram = histogramOf<TypeParam>(5, {1, 2, 3, 4, 5});
  const BPosixTime later = start() + this->buckets(100003);
  histogram.addEvent(later);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0, 1, 0));
  EXPECT_EQ(histogram.lastEvent(), later);
}

// Backwards, but not before the start: nothing is cleared, and the last event moves back.
TYPED_TEST(EventHistogramOf, AClockSetBackCountsInTheEarlierBucket) {
  TypeParam histogram = this->empty(4);
  histogram.addEvent(start() + this->buckets(1));
  histogram.addEvent(start() + this->buckets(3));
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 2, 0, 1));
  EXPECT_EQ(histogram.lastEvent(), start() + this->buckets(1));
  // From there the walk goes over what was counted in the future.
  histogram.addEvent(start() + this->buckets(2));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 2, 1, 1));
  histogram.addEvent(start() + this->buckets(3));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 2, 1, 1));
}

TYPED_TEST(EventHistogramOf, UpdateBackwardsChangesNothing) {
  TypeParam histogram = histogramOf<TypeParam>(4, {1, 2, 3, 4});
  histogram.addEvent(start() + this->buckets(3));  // clears 1 to 3, counts in 3
  const TypeParam before = histogram;
  histogram.update(start());
  EXPECT_TRUE(histogram == before);
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 0, 0, 1));
}

// Less than a bucket before the start is bucket 0 still.
TYPED_TEST(EventHistogramOf, LessThanABucketBeforeTheStartIsTheFirstBucket) {
  TypeParam histogram = histogramOf<TypeParam>(4, {1, 2, 3, 4});
  histogram.addEvent(start() - this->buckets(1) + TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(2, 2, 3, 4));
  EXPECT_EQ(histogram.lastEvent(), start() - this->buckets(1) + TICK);
  EXPECT_EQ(histogram.rate(start() - this->buckets(1) + TICK), 11.0);
}

struct BackJump {
  int buckets;
  unsigned int place7;   // (2^32 - buckets) modulo 7, where 2^32 modulo 7 is 4
  unsigned int place24;  // modulo 24, where 2^32 modulo 24 is 16
};

constexpr BackJump BACK_JUMPS[] = {{1, 3, 15}, {2, 2, 14}, {4, 0, 12}, {5, 6, 11}, {365, 3, 11}, {8760, 1, 16}};

TYPED_TEST(EventHistogramOf, ABucketOrMoreBeforeTheStartDropsEverythingCounted) {
  for (const BackJump& jump : BACK_JUMPS) {
    for (const unsigned int window : {7U, 24U}) {
      SCOPED_TRACE(std::to_string(jump.buckets) + " back in " + std::to_string(window));
      TypeParam histogram = histogramOf<TypeParam>(window, std::vector<int>(window, 3));
      histogram.addEvent(start() - this->buckets(jump.buckets));
      std::vector<int> expected(window);
      expected[window == 7 ? jump.place7 : jump.place24] = 1;
      EXPECT_EQ(histogram.histogram(), expected);
      EXPECT_EQ(histogram.lastEvent(), start() - this->buckets(jump.buckets));
      EXPECT_EQ(histogram.startTime(), start());
    }
  }
}

TYPED_TEST(EventHistogramOf, ComesBackFromBeforeTheStart) {
  TypeParam histogram = this->empty(7);
  histogram.addEvent(start() - this->buckets(1));  // number 2^32 - 1, place 3
  histogram.addEvent(start() - this->buckets(1));  // the walk from 0 on to 2^32 - 1 clears it
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0, 1, 0, 0, 0));
  histogram.addEvent(start() + this->buckets(1));  // numbers 0 and 1
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 1, 0, 1, 0, 0, 0));
  histogram.addEvent(start() + this->buckets(3));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 1, 0, 1, 0, 0, 0));
}

TYPED_TEST(EventHistogramOf, TakesTimesFarFromEachOther) {
  const BPosixTime first(boost::gregorian::date(1400, 1, 1));
  const BPosixTime last(boost::gregorian::date(9999, 12, 31), hours(24) - TICK);
  TypeParam histogram = histogramOf<TypeParam>(7, {1, 1, 1, 1, 1, 1, 1});
  histogram.addEvent(last);
  EXPECT_EQ(histogram.totalEvents(), 1);
  histogram.addEvent(first);
  EXPECT_EQ(histogram.totalEvents(), 1);
  histogram.addEvent(start() + hours(24) * 365 * 30);
  EXPECT_EQ(histogram.totalEvents(), 1);
}

TYPED_TEST(EventHistogramOf, ATimeThatIsNoneEmptiesTheRing) {
  for (const auto special : {boost::posix_time::not_a_date_time, boost::posix_time::pos_infin}) {
    TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
    histogram.update(BPosixTime(special));
    EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
    EXPECT_EQ(histogram.lastEvent(), start());
  }
}

// The number of such a bucket is far above that of the last event, so the walk comes to every place.
TYPED_TEST(EventHistogramOf, TheBeginningOfTimeEmptiesTheRing) {
  TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
  histogram.update(BPosixTime(boost::posix_time::neg_infin));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
}

TYPED_TEST(EventHistogramOf, AnEventAtATimeThatIsNoneIsDroppedByTheNext) {
  for (const auto special : {boost::posix_time::not_a_date_time, boost::posix_time::neg_infin}) {
    TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
    histogram.addEvent(BPosixTime(special));
    EXPECT_EQ(histogram.totalEvents(), 1);
    EXPECT_TRUE(histogram.lastEvent().is_special());
    histogram.addEvent(start() + this->buckets(1));
    EXPECT_THAT(histogram.histogram(), ElementsAre(0, 1, 0));
    EXPECT_EQ(histogram.lastEvent(), start() + this->buckets(1));
  }
}

// From the end of time the clock goes back, and what is counted in the future stays.
TYPED_TEST(EventHistogramOf, AnEventAtTheEndOfTimeStays) {
  TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
  histogram.addEvent(BPosixTime(boost::posix_time::pos_infin));
  EXPECT_EQ(histogram.totalEvents(), 1);
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_EQ(histogram.totalEvents(), 2);
  EXPECT_EQ(histogram.lastEvent(), start() + this->buckets(1));
}

TYPED_TEST(EventHistogramOf, RateDividesByTheBucketsBegunSinceTheStart) {
  struct Row {
    time_duration sinceStart;
    double rate;
  };
  const Row rows[] = {{seconds(0), 5.0},
                      {this->buckets(1), 5.0},
                      {this->buckets(1) + minutes(1), 5.0 / 2},
                      {this->buckets(2) + minutes(30), 5.0 / 3},
                      {this->buckets(3), 5.0 / 3},
                      {this->buckets(4), 5.0 / 4},
                      {this->buckets(5), 5.0 / 5},
                      {this->buckets(5) + minutes(30), 5.0 / 5}};
  for (const Row& row : rows) {
    TypeParam histogram = this->empty(5);
    const BPosixTime now = start() + row.sinceStart;
    for (int i = 0; i < 5; ++i) histogram.addEvent(now);
    EXPECT_EQ(histogram.rate(now), row.rate) << row.sinceStart;
  }
}

TYPED_TEST(EventHistogramOf, RateAgesTheRingFirst) {
  TypeParam histogram = this->empty(4);
  for (int i = 0; i < 6; ++i) histogram.addEvent(start());
  EXPECT_EQ(histogram.rate(start() + this->buckets(3)), 2.0);
  EXPECT_EQ(histogram.rate(start() + this->buckets(4)), 0.0);
  EXPECT_THAT(histogram.histogram(), Each(0));
  EXPECT_EQ(histogram.lastEvent(), start());
}

TYPED_TEST(EventHistogramOf, QualityAgesTheRingFirst) {
  TypeParam histogram = this->empty(4);
  for (int i = 0; i < 6; ++i) histogram.addEvent(start());
  EXPECT_EQ(histogram.quality(start() + this->buckets(3)), 2);
  EXPECT_EQ(histogram.quality(start() + this->buckets(4)), 0);
  EXPECT_THAT(histogram.histogram(), Each(0));
}

TYPED_TEST(EventHistogramOf, AFullWindowDividesByTheWindow) {
  TypeParam histogram = this->empty(24);
  const BPosixTime now = start() + this->buckets(100);
  histogram.addEvent(now);
  EXPECT_EQ(histogram.rate(now), 1.0 / 24);
  EXPECT_EQ(histogram.quality(now), 0);
}

struct Rounding {
  int total;
  int buckets;
  int quality;
};

// Sums of hostile messages may be negative. From 2^23 on a single holds no half: 8388608.5 is 8388608 (even) and
// 8388609.5 is 8388610.
constexpr Rounding ROUNDINGS[] = {{0, 1, 0},
                                  {1, 3, 0},
                                  {1, 2, 1},
                                  {2, 3, 1},
                                  {3, 2, 2},
                                  {5, 2, 3},
                                  {7, 5, 1},
                                  {3, 7, 0},
                                  {4, 7, 1},
                                  {-1, 3, 0},
                                  {-1, 2, -1},
                                  {-3, 2, -2},
                                  {-5, 2, -3},
                                  {-2, 3, -1},
                                  {16777215, 2, 8388608},
                                  {16777217, 2, 8388608},
                                  {16777219, 2, 8388610},
                                  {33554433, 1, 33554432},
                                  {INT_MAX, 1, INT_MAX},
                                  {INT_MIN, 1, INT_MIN},
                                  {INT_MAX, 2, 1073741824}};

TYPED_TEST(EventHistogramOf, QualityIsTheRateInSinglePrecisionRoundedHalfAwayFromZero) {
  for (const Rounding& row : ROUNDINGS) {
    std::vector<int> counts(7);
    counts[0] = row.total;
    TypeParam histogram = histogramOf<TypeParam>(7, counts);
    EXPECT_EQ(histogram.quality(start() + this->buckets(row.buckets) - TICK - seconds(1)), row.quality)
        << row.total << " in " << row.buckets;
  }
}

TYPED_TEST(EventHistogramOf, TotalIsTheSumOfAllBuckets) {
  EXPECT_EQ(this->empty(0).totalEvents(), 0);
  EXPECT_EQ(this->empty(7).totalEvents(), 0);
  EXPECT_EQ(histogramOf<TypeParam>(4, {1, 20, 300, 4000}).totalEvents(), 4321);
  EXPECT_EQ(histogramOf<TypeParam>(3, {5, -7, 1}).totalEvents(), -1);
  EXPECT_EQ(histogramOf<TypeParam>(3, {INT_MAX, 1, -1}).totalEvents(), INT_MAX);
}

TYPED_TEST(EventHistogramOf, ATotalThatNoIntHoldsIsTheNearest) {
  EXPECT_EQ(histogramOf<TypeParam>(2, {INT_MAX, 1}).totalEvents(), INT_MAX);
  EXPECT_EQ(histogramOf<TypeParam>(2, {INT_MAX, INT_MAX}).totalEvents(), INT_MAX);
  EXPECT_EQ(histogramOf<TypeParam>(2, {INT_MIN, -1}).totalEvents(), INT_MIN);
  EXPECT_EQ(histogramOf<TypeParam>(3, {INT_MIN, INT_MIN, INT_MIN}).totalEvents(), INT_MIN);
  TypeParam histogram = histogramOf<TypeParam>(2, {INT_MAX, INT_MAX});
  EXPECT_EQ(histogram.rate(start()), 2147483647.0);
  EXPECT_EQ(histogram.quality(start()), INT_MAX);
}

TYPED_TEST(EventHistogramOf, AFullCounterStays) {
  TypeParam histogram = histogramOf<TypeParam>(2, {INT_MAX - 1, 0});
  histogram.addEvent(start());
  EXPECT_THAT(histogram.histogram(), ElementsAre(INT_MAX, 0));
  histogram.addEvent(start() + TICK);
  EXPECT_THAT(histogram.histogram(), ElementsAre(INT_MAX, 0));
  EXPECT_EQ(histogram.lastEvent(), start() + TICK);
}

TYPED_TEST(EventHistogramOf, ANegativeCounterCountsUp) {
  TypeParam histogram = histogramOf<TypeParam>(2, {-1, INT_MIN});
  histogram.addEvent(start());
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, INT_MIN));
}

TYPED_TEST(EventHistogramOf, TheRingSpansItsBuckets) {
  EXPECT_EQ(this->empty(0).totalHistogramTime(), seconds(0));
  EXPECT_EQ(this->empty(1).totalHistogramTime(), this->buckets(1));
  EXPECT_EQ(this->empty(7).totalHistogramTime(), this->buckets(7));
  EXPECT_EQ(this->empty(24).totalHistogramTime(), this->buckets(24));
  EXPECT_EQ(histogramOf<TypeParam>(0xFFFFFFFF, {}).totalHistogramTime(), this->buckets(-1));
  EXPECT_EQ(histogramOf<TypeParam>(0xFFFFFFFE, {}).totalHistogramTime(), this->buckets(-2));
}

TYPED_TEST(EventHistogramOf, AWindowLongerThanTimeSpansMoreThanAnyTwoDates) {
  const time_duration longest =
      BPosixTime(boost::gregorian::date(9999, 12, 31)) - BPosixTime(boost::gregorian::date(1400, 1, 1));
  EXPECT_GT(histogramOf<TypeParam>(0x7FFFFFFF, {}).totalHistogramTime(), longest);
  EXPECT_LT(histogramOf<TypeParam>(0x80000000, {}).totalHistogramTime(), -longest);
}

TYPED_TEST(EventHistogramOf, NoBucketsCountNothing) {
  TypeParam histogram(0);
  histogram.fromProtobuf(histogramMessage(0, {}, start(), start()));
  for (const int buckets : {0, 1, 3, -2, 0}) {
    const BPosixTime now = start() + this->buckets(buckets);
    histogram.addEvent(now);
    histogram.update(now + this->buckets(2));
    EXPECT_THAT(histogram.histogram(), IsEmpty());
    EXPECT_EQ(histogram.lastEvent(), now);
    EXPECT_EQ(histogram.rate(now), 0.0);
    EXPECT_EQ(histogram.quality(now), 0);
    EXPECT_EQ(histogram.wholeBuckets(this->buckets(5)), 0U);
  }
}

// A window of no time is over at once.
TYPED_TEST(EventHistogramOf, NoBucketsAreAllZeroWhateverAMessagePutThere) {
  TypeParam histogram = histogramOf<TypeParam>(0, {5, 6});
  EXPECT_EQ(histogram.totalEvents(), 11);
  EXPECT_EQ(histogram.rate(start()), 0.0);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0));
}

TYPED_TEST(EventHistogramOf, CountsWhatFallsIntoFewerBucketsThanItsWindow) {
  TypeParam histogram = histogramOf<TypeParam>(5, {1, 2, 3});
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 3));
  histogram.addEvent(start() + this->buckets(3));  // the window has that bucket, the ring not
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 0));
  EXPECT_EQ(histogram.lastEvent(), start() + this->buckets(3));
  EXPECT_EQ(histogram.rate(start() + this->buckets(4)), 2.0 / 4);
  histogram.addEvent(start() + this->buckets(5));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 0));
}

TYPED_TEST(EventHistogramOf, SumsMoreBucketsThanItsWindow) {
  TypeParam histogram = histogramOf<TypeParam>(2, {1, 2, 40});
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 40));
  EXPECT_EQ(histogram.rate(start() + this->buckets(1)), 42.0);
  histogram.addEvent(start() + this->buckets(2));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 40));
  histogram.update(start() + this->buckets(4));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
}

// As a signed number such a window is minus one bucket: whatever is not further back is past its end.
TYPED_TEST(EventHistogramOf, AWindowOfAllOnesIsOverAtOnce) {
  TypeParam histogram = histogramOf<TypeParam>(0xFFFFFFFF, {1, 2, 3});
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 1, 0));
  histogram.addEvent(start());
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 0, 0));
  EXPECT_EQ(histogram.rate(start()), 0.0);
}

TYPED_TEST(EventHistogramOf, AWindowOfTheTopBitAloneIsOverAtOnce) {
  TypeParam histogram = histogramOf<TypeParam>(0x80000000, {1, 2, 3});
  histogram.addEvent(start() + this->buckets(2));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 1));
  histogram.addEvent(start() - this->buckets(300));
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
}

TYPED_TEST(EventHistogramOf, AWindowOfAllOnesButTheTopBitIsNeverOver) {
  TypeParam histogram = histogramOf<TypeParam>(0x7FFFFFFF, {1, 2, 3});
  histogram.addEvent(start() + this->buckets(1));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 3));
  histogram.addEvent(start() + this->buckets(10000));
  EXPECT_THAT(histogram.histogram(), ElementsAre(1, 1, 0));
  EXPECT_EQ(histogram.rate(start() + this->buckets(10000)), 2.0 / 10000);
}

// Whatever a message holds and the clock shows, an operation takes no longer than its buckets.
TYPED_TEST(EventHistogramOf, NoWindowAndNoClockMakeAnOperationLong) {
  const BPosixTime times[] = {start() - this->buckets(2), start() - this->buckets(1000),
                              BPosixTime(boost::gregorian::date(1400, 1, 1)), BPosixTime(boost::posix_time::neg_infin)};
  for (const unsigned int window : {7U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    for (const BPosixTime& now : times) {
      TypeParam histogram = histogramOf<TypeParam>(window, {1, 2, 3, 4, 5, 6, 7});
      const std::clock_t begin = std::clock();  // of this process, whatever else the machine does
      histogram.update(now);
      ASSERT_LT(std::clock() - begin, CLOCKS_PER_SEC) << "window " << window << " at " << now;
    }
  }
}

TYPED_TEST(EventHistogramOf, ResetStartsAnewNow) {
  TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
  const BPosixTime before = EventHistogram::localtime();
  histogram.reset();
  const BPosixTime after = EventHistogram::localtime();
  EXPECT_EQ(histogram.windowSize(), 3U);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
  EXPECT_GE(histogram.startTime(), before);
  EXPECT_LE(histogram.startTime(), after);
  EXPECT_EQ(histogram.lastEvent(), histogram.startTime());
}

TYPED_TEST(EventHistogramOf, ResetStartsAnewAtAGivenTime) {
  TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
  const BPosixTime start = EventHistogram::localtime() - boost::posix_time::hours(50);
  histogram.reset(start);
  EXPECT_EQ(histogram.windowSize(), 3U);
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 0, 0));
  EXPECT_EQ(histogram.startTime(), start);
  EXPECT_EQ(histogram.lastEvent(), start);
  histogram.addEvent(start + histogram.bucketSize());
  EXPECT_THAT(histogram.histogram(), ElementsAre(0, 1, 0));
}

TYPED_TEST(EventHistogramOf, AnyChangeOfTheWindowStartsAnewAlsoToTheSameSize) {
  for (const unsigned int size : {0U, 2U, 3U, 5U}) {
    TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
    const BPosixTime before = EventHistogram::localtime();
    histogram.windowSize(size);
    const BPosixTime after = EventHistogram::localtime();
    EXPECT_EQ(histogram.windowSize(), size);
    EXPECT_EQ(histogram.histogram(), std::vector<int>(size));
    EXPECT_GE(histogram.startTime(), before);
    EXPECT_LE(histogram.startTime(), after);
    EXPECT_EQ(histogram.lastEvent(), histogram.startTime());
  }
}

TYPED_TEST(EventHistogramOf, AChangeOfTheWindowMendsARingOfAnotherLength) {
  TypeParam histogram = histogramOf<TypeParam>(7, {1, 2});
  histogram.windowSize(7);
  EXPECT_EQ(histogram.histogram(), std::vector<int>(7));
}

TYPED_TEST(EventHistogramOf, EqualityComparesEveryField) {
  const auto of = [](unsigned int window, const std::vector<int>& counts, const BPosixTime& startTime,
                     const BPosixTime& lastEvent) {
    TypeParam histogram(0);
    histogram.fromProtobuf(histogramMessage(window, counts, startTime, lastEvent));
    return histogram;
  };
  const BPosixTime later = start() + seconds(1);
  const TypeParam histogram = of(3, {1, 2, 3}, start(), later);
  EXPECT_TRUE(histogram == of(3, {1, 2, 3}, start(), later));
  EXPECT_FALSE(histogram == of(4, {1, 2, 3}, start(), later));
  EXPECT_FALSE(histogram == of(3, {1, 2, 4}, start(), later));
  EXPECT_FALSE(histogram == of(3, {1, 2}, start(), later));
  EXPECT_FALSE(histogram == of(3, {1, 2, 3, 0}, start(), later));
  EXPECT_FALSE(histogram == of(3, {3, 2, 1}, start(), later));
  EXPECT_FALSE(histogram == of(3, {1, 2, 3}, later, later));
  EXPECT_FALSE(histogram == of(3, {1, 2, 3}, start(), start()));
}

TYPED_TEST(EventHistogramOf, EqualityTellsMicroseconds) {
  TypeParam one = this->empty(3);
  TypeParam other = this->empty(3);
  one.addEvent(start());
  other.addEvent(start() + TICK);
  EXPECT_FALSE(one == other);
}

TYPED_TEST(EventHistogramOf, IsCopiedWhole) {
  TypeParam histogram = histogramOf<TypeParam>(3, {1, 2, 3});
  histogram.addEvent(start() + TICK);
  const TypeParam copy(histogram);
  EXPECT_TRUE(copy == histogram);
  EXPECT_THAT(copy.histogram(), ElementsAre(2, 2, 3));
  TypeParam assigned(9);
  assigned = histogram;
  EXPECT_TRUE(assigned == histogram);
  const TypeParam& same = assigned;
  assigned = same;
  EXPECT_TRUE(assigned == histogram);
  assigned.addEvent(start() + TICK);
  EXPECT_FALSE(assigned == histogram);
}

TYPED_TEST(EventHistogramOf, LogsAllOfItAtDebugLevel) {
  TypeParam histogram = histogramOf<TypeParam>(4, {1, 0, -3, 400});
  histogram.addEvent(start() + microseconds(120));
  const test::LogCapture capture;
  histogram.log("a message", start() + hours(1));
  ASSERT_THAT(capture.texts(),
              ElementsAre("EventHistogram::log: a message currentTime: 2024-Jan-31 14:05:09, startTime_: "
                          "2024-Jan-31 13:05:09, histogram_: 2 0 -3 400, lastEvent_: 2024-Jan-31 13:05:09.000120"));
  EXPECT_EQ(capture.lines()[0].level, log4cplus::DEBUG_LOG_LEVEL);
}

TYPED_TEST(EventHistogramOf, LogsAnEmptyRingAndSpecialTimes) {
  TypeParam histogram = histogramOf<TypeParam>(0, {});
  const test::LogCapture capture;
  histogram.log("", BPosixTime());
  EXPECT_THAT(capture.texts(),
              ElementsAre("EventHistogram::log:  currentTime: not-a-date-time, startTime_: 2024-Jan-31 13:05:09, "
                          "histogram_:, lastEvent_: 2024-Jan-31 13:05:09"));
}

TYPED_TEST(EventHistogramOf, LogsNothingIfDebugIsNotLetThrough) {
  const test::LogCapture capture(log4cplus::INFO_LOG_LEVEL);
  this->empty(4).log("a message", start());
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TYPED_TEST(EventHistogramOf, LogsNothingElse) {
  const test::LogCapture capture;
  TypeParam histogram = this->empty(4);
  histogram.addEvent(start() - this->buckets(5));
  histogram.quality(start() + this->buckets(9));
  histogram.windowSize(0);
  histogram.addEvent(start());
  EXPECT_THAT(capture.texts(), IsEmpty());
}

const std::string LAST_EVENT =
    "<lastEvent_ class_id=\"0\" tracking_level=\"0\" version=\"182\">"
    "<ptime_date class_id=\"0\" tracking_level=\"0\" version=\"182\"><date>20240131</date></ptime_date>"
    "<ptime_time_duration class_id=\"0\" tracking_level=\"0\" version=\"182\">"
    "<is_special>0</is_special>"
    "<time_duration_hours>13</time_duration_hours>"
    "<time_duration_minutes>5</time_duration_minutes>"
    "<time_duration_seconds>9</time_duration_seconds>"
    "<time_duration_fractional_seconds>123456</time_duration_fractional_seconds>"
    "</ptime_time_duration></lastEvent_>";

TYPED_TEST(EventHistogramOf, WritesAllButTheStartAsXml) {
  TypeParam histogram = histogramOf<TypeParam>(3, {4, -5, INT_MAX});
  histogram.addEvent(start() + microseconds(123456));
  EXPECT_EQ(written([&](XmlWriter& writer) { histogram.toXml(writer, "reboots_"); }),
            "<reboots_ class_id=\"0\" tracking_level=\"0\" version=\"182\">"
            "<windowSize_>3</windowSize_>"
            "<histogram_><count>3</count><item_version>0</item_version>"
            "<item>5</item><item>-5</item><item>2147483647</item></histogram_>" +
                LAST_EVENT + "</reboots_>");
}

TYPED_TEST(EventHistogramOf, WritesTheBucketsThatThereAreAsXml) {
  TypeParam histogram = histogramOf<TypeParam>(0xFFFFFFFF, {});
  histogram.addEvent(start() + microseconds(123456));
  EXPECT_EQ(written([&](XmlWriter& writer) { histogram.toXml(writer, "h"); }),
            "<h class_id=\"0\" tracking_level=\"0\" version=\"182\">"
            "<windowSize_>4294967295</windowSize_>"
            "<histogram_><count>0</count><item_version>0</item_version></histogram_>" +
                LAST_EVENT + "</h>");
}

// 2024-01-31 13:05:09 is 1706706309 seconds after 1970; the last event 3 days, 1 hour and 1 second later.
TYPED_TEST(EventHistogramOf, WritesWholeSecondsToAMessage) {
  TypeParam histogram(0);
  histogram.fromProtobuf(histogramMessage(7, {1, 0, 300, -1, 0, 0, 0}, start(), start() + hours(73) + seconds(1)));
  EXPECT_EQ(test::serialized(histogram.toProtobuf()),
            "08 07"                           // window size 7
            " 12 11"                          // 17 bytes of buckets
            " 01 00 ac 02"                    // 1, 0, 300
            " ff ff ff ff ff ff ff ff ff 01"  // -1
            " 00 00 00"                       //
            " 1a 06 08 85 8b e9 ad 06"        // start: seconds 1706706309
            " 22 06 08 96 90 f9 ad 06");      // last event: seconds 1706969110
}

TYPED_TEST(EventHistogramOf, CutsFractionsOffInAMessage) {
  TypeParam histogram = this->empty(2);
  histogram.addEvent(start() + seconds(1) - TICK);
  const std::unique_ptr<pb::EventHistogramPBuf> message(histogram.toProtobuf());
  EXPECT_EQ(message->lastevent().seconds(), 1706706309);
  EXPECT_EQ(message->lastevent().nanos(), 0);
  EXPECT_EQ(message->starttime().seconds(), 1706706309);
  EXPECT_EQ(message->GetArena(), nullptr);
}

TYPED_TEST(EventHistogramOf, ReadsBackWhatItWrote) {
  TypeParam histogram = histogramOf<TypeParam>(4, {1, -2, INT_MAX, INT_MIN});
  histogram.addEvent(start() + seconds(77));
  const std::unique_ptr<pb::EventHistogramPBuf> message(histogram.toProtobuf());
  TypeParam read(9);
  EXPECT_FALSE(read.fromProtobuf(*message));
  EXPECT_TRUE(read == histogram);
}

TYPED_TEST(EventHistogramOf, TakesAnEmptyMessageAsNothingSince1970) {
  TypeParam histogram = histogramOf<TypeParam>(4, {1, 2, 3, 4});
  EXPECT_FALSE(histogram.fromProtobuf(pb::EventHistogramPBuf()));
  EXPECT_EQ(histogram.windowSize(), 0U);
  EXPECT_THAT(histogram.histogram(), IsEmpty());
  EXPECT_EQ(histogram.startTime(), BPosixTime(boost::gregorian::date(1970, 1, 1)));
  EXPECT_EQ(histogram.lastEvent(), BPosixTime(boost::gregorian::date(1970, 1, 1)));
}

TYPED_TEST(EventHistogramOf, TakesAMessageAsItStands) {
  TypeParam histogram(1);
  pb::EventHistogramPBuf message = histogramMessage(0xFFFFFFFF, {INT_MIN, INT_MAX}, start(), start() - hours(1));
  message.mutable_starttime()->set_nanos(999999999);
  EXPECT_FALSE(histogram.fromProtobuf(message));
  EXPECT_EQ(histogram.windowSize(), 4294967295U);
  EXPECT_THAT(histogram.histogram(), ElementsAre(INT_MIN, INT_MAX));
  EXPECT_EQ(histogram.startTime(), start());
  EXPECT_EQ(histogram.lastEvent(), start() - hours(1));
}

// By the C library, in seconds: the histogram's clock is between two readings of it.
TEST(EventHistogram, ClockIsTheLocalTime) {
  const auto localSeconds = [] {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return boost::posix_time::ptime_from_tm(local);
  };
  const BPosixTime before = localSeconds();
  const BPosixTime read = EventHistogram::localtime();
  const BPosixTime after = localSeconds();
  EXPECT_GE(read, before - seconds(1));  // the two clocks of the C library tick apart
  EXPECT_LT(read, after + seconds(2));
}

TEST(EventHistogram, AnyTwoCompareByTheirFields) {
  const EventHistogram& days = emptyHistogram<RebootHistogram>(3);
  const EventHistogram& moreHours = emptyHistogram<MessageFailHistogram>(4);
  const EventHistogram& sameHours = emptyHistogram<MessageFailHistogram>(3);
  EXPECT_TRUE(days == sameHours);
  EXPECT_FALSE(days == moreHours);
}

}  // namespace
}  // namespace qx

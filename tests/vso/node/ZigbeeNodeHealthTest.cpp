// The health of a node: averages, lights, the radio link, resets and the report.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <climits>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Nodes.h"
#include "support/LogCapture.h"
#include "vso/node/NetworkHealth.h"
#include "vso/node/ZigbeeNode.h"

namespace qx {
namespace {

using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::milliseconds;
using boost::posix_time::minutes;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using test::emptyNode;
using test::euidFrom;
using test::filledMessage;
using test::filledNode;
using test::histogramOf;
using test::LogCapture;
using test::messageOf;
using test::sameMessage;
using test::ServerStart;
using test::timeOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int TRACE = 0;
constexpr int WARN = 30000;

constexpr int RED = 1;
constexpr int YELLOW = 2;
constexpr int GREEN = 3;

const BPosixTime NOWHEN;
const BPosixTime PAST_ALL(boost::date_time::neg_infin);
const BPosixTime BEYOND_ALL(boost::date_time::pos_infin);

const BPosixTime START = timeOf(1700000000);

/// The stories of a node that count by the hour.
struct FailureStory {
  const char* name;
  void (ZigbeeNode::*count)(const unsigned long long&);
  void (ZigbeeNode::*resetTime)(const BPosixTime&);
  void (ZigbeeNode::*histogram)(const MessageFailHistogram&);
  void (ZigbeeNode::*add)(const BPosixTime&);
  double (ZigbeeNode::*average)(const BPosixTime&) const;
  int (ZigbeeNode::*cumulativeQuality)(const BPosixTime&);
  int (ZigbeeNode::*slidingQuality)(const BPosixTime&);
};

const std::vector<FailureStory> FAILURE_STORIES = {
    {"source routes", &ZigbeeNode::sourceRouteFailures, &ZigbeeNode::sourceRouteFailuresResetTime,
     &ZigbeeNode::sourceRouteFailuresHistogram, &ZigbeeNode::addSourceRouteFailure,
     &ZigbeeNode::sourceRouteFailuresCumulativeAverage, &ZigbeeNode::sourceRouteFailuresCumulativeQuality,
     &ZigbeeNode::sourceRouteFailuresSlidingQuality},
    {"many-to-one routes", &ZigbeeNode::manyToOneRouteFailures, &ZigbeeNode::manyToOneRouteFailuresResetTime,
     &ZigbeeNode::manyToOneRouteFailuresHistogram, &ZigbeeNode::addManyToOneRouteFailure,
     &ZigbeeNode::manyToOneRouteFailuresCumulativeAverage, &ZigbeeNode::manyToOneRouteFailuresCumulativeQuality,
     &ZigbeeNode::manyToOneRouteFailuresSlidingQuality},
};

/// A node that started to count everything at a time.
ZigbeeNode countingSince(const BPosixTime& start) {
  ZigbeeNode node;
  node.rebootsResetTime(start);
  node.sourceRouteFailuresResetTime(start);
  node.manyToOneRouteFailuresResetTime(start);
  node.rebootsHistogram(histogramOf<RebootHistogram>(7, {0, 0, 0, 0, 0, 0, 0}, 1700000000, 1700000000));
  const auto day = histogramOf<MessageFailHistogram>(
      24, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 1700000000, 1700000000);
  node.sourceRouteFailuresHistogram(day);
  node.manyToOneRouteFailuresHistogram(day);
  return node;
}

TEST(ZigbeeNodeHealth, HasItsConstants) {
  static_assert(ZigbeeNode::REBOOT_QUALITY_GREEN == 10);
  static_assert(ZigbeeNode::REBOOT_QUALITY_YELLOW == 20);
  static_assert(ZigbeeNode::ROUTE_QUALITY_GREEN == 50);
  static_assert(ZigbeeNode::ROUTE_QUALITY_YELLOW == 300);
  static_assert(ZigbeeNode::REBOOT_WINDOW_SIZE == 7);
  static_assert(sizeof(ZigbeeNode::REBOOT_QUALITY_GREEN) == 4);
  const ZigbeeNode node;
  EXPECT_EQ(node.rebootQualityThresholds(), "10 20");
  EXPECT_EQ(node.routeQualityThresholds(), "50 300");
  EXPECT_EQ(ZigbeeNode::REBOOT_COUNT, "reboot.count");
  EXPECT_EQ(ZigbeeNode::REBOOT_CUMULATIVE_COUNT, "reboot.cumulative_count");
  EXPECT_EQ(ZigbeeNode::REBOOT_CUMULATIVE_AVERAGE, "reboot.cumulative_average");
  EXPECT_EQ(ZigbeeNode::REBOOT_CUMULATIVE_QUALITY, "reboot.cumulative_quality");
  EXPECT_EQ(ZigbeeNode::REBOOT_SLIDING_AVERAGE, "reboot.sliding_average");
  EXPECT_EQ(ZigbeeNode::REBOOT_SLIDING_QUALITY, "reboot.sliding_quality");
  EXPECT_EQ(ZigbeeNode::REBOOT_RESET_TIME, "reboot.reset_time");
  EXPECT_EQ(ZigbeeNode::REBOOT_QUALITY_THRESHOLDS, "reboot.quality_thresholds");
  EXPECT_EQ(ZigbeeNode::FOUR_BAR_SIGNAL_VALUE, "four_bar_signal.value");
  EXPECT_EQ(ZigbeeNode::RX_LQI_VALUE, "rx_lqi.value");
  EXPECT_EQ(ZigbeeNode::TX_LQI_VALUE, "tx_lqi.value");
  EXPECT_EQ(ZigbeeNode::RSSI_VALUE, "rssi.value");
  EXPECT_EQ(ZigbeeNode::IRF_CUMULATIVE_COUNT, "inbound_route_failures.cumulative_count");
  EXPECT_EQ(ZigbeeNode::IRF_CUMULATIVE_AVERAGE, "inbound_route_failures.cumulative_average");
  EXPECT_EQ(ZigbeeNode::IRF_CUMULATIVE_QUALITY, "inbound_route_failures.cumulative_quality");
  EXPECT_EQ(ZigbeeNode::IRF_SLIDING_AVERAGE, "inbound_route_failures.sliding_average");
  EXPECT_EQ(ZigbeeNode::IRF_SLIDING_QUALITY, "inbound_route_failures.sliding_quality");
  EXPECT_EQ(ZigbeeNode::IRF_RESET_TIME, "inbound_route_failures.reset_time");
  EXPECT_EQ(ZigbeeNode::IRF_QUALITY_THRESHOLDS, "inbound_route_failures.quality_thresholds");
  EXPECT_EQ(ZigbeeNode::ORF_CUMULATIVE_COUNT, "outbound_route_failures.cumulative_count");
  EXPECT_EQ(ZigbeeNode::ORF_CUMULATIVE_AVERAGE, "outbound_route_failures.cumulative_average");
  EXPECT_EQ(ZigbeeNode::ORF_CUMULATIVE_QUALITY, "outbound_route_failures.cumulative_quality");
  EXPECT_EQ(ZigbeeNode::ORF_SLIDING_AVERAGE, "outbound_route_failures.sliding_average");
  EXPECT_EQ(ZigbeeNode::ORF_SLIDING_QUALITY, "outbound_route_failures.sliding_quality");
  EXPECT_EQ(ZigbeeNode::ORF_RESET_TIME, "outbound_route_failures.reset_time");
  EXPECT_EQ(ZigbeeNode::ORF_QUALITY_THRESHOLDS, "outbound_route_failures.quality_thresholds");
}

TEST(ZigbeeNodeHealth, LightsARate) {
  const ZigbeeNode node;
  const std::map<int, int> reboots = {{INT_MIN, GREEN}, {-1, GREEN},  {0, GREEN},   {9, GREEN}, {10, GREEN},
                                      {11, YELLOW},     {19, YELLOW}, {20, YELLOW}, {21, RED},  {INT_MAX, RED}};
  for (const auto& [rate, light] : reboots) EXPECT_EQ(node.rebootQualityImpl(rate), light) << rate;
  const std::map<int, int> failures = {{INT_MIN, GREEN}, {-1, GREEN},   {0, GREEN},    {49, GREEN}, {50, GREEN},
                                       {51, YELLOW},     {299, YELLOW}, {300, YELLOW}, {301, RED},  {INT_MAX, RED}};
  for (const auto& [rate, light] : failures) EXPECT_EQ(node.messageFailuresQualityImpl(rate), light) << rate;
}

TEST(ZigbeeNodeHealth, CountsAnEventInCountAndHistogram) {
  ZigbeeNode node = countingSince(START);
  const pb::ZigbeeNodePBuf before = *messageOf(node);

  node.addRebootEvent(START + hours(25));
  pb::ZigbeeNodePBuf expected = before;
  expected.set_reboots(1);
  expected.mutable_rebootshistogram()->set_histogram(1, 1);
  expected.mutable_rebootshistogram()->mutable_lastevent()->set_seconds(1700000000 + 25 * 3600);
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));

  node.addSourceRouteFailure(START + hours(2));
  expected.set_sourceroutefailures(1);
  expected.mutable_sourceroutefailureshistogram()->set_histogram(2, 1);
  expected.mutable_sourceroutefailureshistogram()->mutable_lastevent()->set_seconds(1700000000 + 2 * 3600);
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));

  node.addManyToOneRouteFailure(START + minutes(179));
  node.addManyToOneRouteFailure(START + minutes(180));
  expected.set_manytooneroutefailures(2);
  expected.mutable_manytooneroutefailureshistogram()->set_histogram(2, 1);
  expected.mutable_manytooneroutefailureshistogram()->set_histogram(3, 1);
  expected.mutable_manytooneroutefailureshistogram()->mutable_lastevent()->set_seconds(1700000000 + 3 * 3600);
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));
}

TEST(ZigbeeNodeHealth, WrapsTheRebootCountAt16BitsAndTheOthersAt64) {
  ZigbeeNode node = countingSince(START);
  node.reboots(65535);
  node.sourceRouteFailures(ULLONG_MAX);
  node.manyToOneRouteFailures(0xFFFFFFFF);
  node.addRebootEvent(START);
  node.addSourceRouteFailure(START);
  node.addManyToOneRouteFailure(START);
  EXPECT_EQ(node.reboots(), 0);
  EXPECT_EQ(node.sourceRouteFailures(), 0U);
  EXPECT_EQ(node.manyToOneRouteFailures(), 0x100000000U);
  EXPECT_EQ(node.rebootsHistogram().totalEvents(), 1);
}

TEST(ZigbeeNodeHealth, MakesTheWindowsOfItsHistogramsAnew) {
  ZigbeeNode node = countingSince(START);
  node.addRebootEvent(START);
  node.addSourceRouteFailure(START);
  node.addManyToOneRouteFailure(START);
  const BPosixTime before = ZigbeeNode::localtime();
  node.rebootsHistogramWindow(7);
  EXPECT_EQ(node.rebootsHistogram().histogram(), std::vector<int>(7, 0));
  EXPECT_GE(node.rebootsHistogram().startTime(), before);
  EXPECT_EQ(node.sourceRouteFailuresHistogram().totalEvents(), 1);
  EXPECT_EQ(node.manyToOneRouteFailuresHistogram().totalEvents(), 1);
  node.messageFailHistogramWindow(3);
  EXPECT_EQ(node.sourceRouteFailuresHistogram().histogram(), std::vector<int>(3, 0));
  EXPECT_EQ(node.manyToOneRouteFailuresHistogram().histogram(), std::vector<int>(3, 0));
  EXPECT_EQ(node.sourceRouteFailuresHistogram().windowSize(), 3U);
  EXPECT_GE(node.manyToOneRouteFailuresHistogram().startTime(), node.sourceRouteFailuresHistogram().startTime());
  EXPECT_GE(node.sourceRouteFailuresHistogram().startTime(), before);
  EXPECT_EQ(node.rebootsHistogram().windowSize(), 7U);
  EXPECT_EQ(node.reboots(), 1);
  EXPECT_EQ(node.sourceRouteFailures(), 1U);
  EXPECT_EQ(node.manyToOneRouteFailures(), 1U);
  EXPECT_EQ(node.rebootsResetTime(), START);
}

/// How long after the reset, and how many buckets have begun by then.
struct Begun {
  time_duration elapsed;
  double buckets;
};

TEST(ZigbeeNodeHealth, DividesRebootsByTheDaysBegun) {
  const time_duration day = hours(24);
  const std::vector<Begun> table = {
      {seconds(0), 1},
      {microseconds(1), 1},
      {day - microseconds(1), 1},
      {day, 1},
      {day + milliseconds(50), 1},   // below a millionth of a day
      {day + milliseconds(100), 2},  // above it
      {day + hours(12), 2},
      {day * 2, 2},
      {day * 2 + seconds(1), 3},
      {day * 4 - seconds(1), 4},
      {day * 4 - milliseconds(20), 5},  // the sum of the widths and 1 is 5 in single precision
      {day * 7, 7},
      {day * 7 + minutes(1), 8},
      {day * 30 + hours(12), 31},
      {day * 365, 365},
      {day * 3650 + hours(1), 3651},
      {-microseconds(1), 1},
      {-day * 400, 1},
  };
  for (const BPosixTime& reset : {START, BPosixTime(boost::gregorian::date(2024, 2, 28), hours(23) + minutes(59))}) {
    ZigbeeNode node = countingSince(reset);
    for (const unsigned short count : {0, 1, 5, 240, 65535}) {
      node.reboots(count);
      for (const Begun& row : table)
        EXPECT_EQ(node.rebootCumulativeAverage(reset + row.elapsed), count / row.buckets)
            << count << ' ' << row.elapsed;
    }
  }
}

TEST(ZigbeeNodeHealth, DividesFailuresByTheHoursBegun) {
  const time_duration hour = hours(1);
  const std::vector<Begun> table = {
      {seconds(0), 1},
      {hour - microseconds(1), 1},
      {hour, 1},
      {hour + milliseconds(700), 1},  // below 0.72 seconds
      {hour + milliseconds(740), 2},  // above it
      {hour + minutes(30), 2},
      {hour * 2 + minutes(30), 3},
      {hour * 4 - seconds(1), 4},
      {hour * 4 - milliseconds(1), 5},  // the sum of the widths and 1 is 5 in single precision
      {hour * 24, 24},
      {hour * 25 + minutes(1), 26},
      {hour * 87600, 87600},  // ten years
      {hour * 87600 + minutes(30), 87601},
      {-hour * 400, 1},
  };
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(START);
    for (const unsigned long long count : {0U, 1U, 5U, 240U, 16777216U}) {
      (node.*story.count)(count);
      for (const Begun& row : table) {
        EXPECT_EQ((node.*story.average)(START + row.elapsed), static_cast<double>(count) / row.buckets)
            << story.name << ' ' << count << ' ' << row.elapsed;
      }
    }
  }
}

TEST(ZigbeeNodeHealth, KeepsItsStoriesApart) {
  ZigbeeNode node = countingSince(START);
  node.reboots(1);
  node.sourceRouteFailures(2);
  node.manyToOneRouteFailures(3);
  node.rebootsResetTime(START - hours(24 * 2));
  node.sourceRouteFailuresResetTime(START - hours(4));
  node.manyToOneRouteFailuresResetTime(START - hours(5));
  EXPECT_EQ(node.rebootCumulativeAverage(START), 1.0 / 2);
  EXPECT_EQ(node.sourceRouteFailuresCumulativeAverage(START), 2.0 / 4);
  EXPECT_EQ(node.manyToOneRouteFailuresCumulativeAverage(START), 3.0 / 5);
}

TEST(ZigbeeNodeHealth, TakesCountsInSinglePrecision) {
  const std::map<unsigned long long, double> table = {
      {16777216, 16777216.0},                           // 2^24
      {16777217, 16777216.0},                           // a tie goes to even
      {16777219, 16777220.0},                           //
      {33554435, 33554436.0},                           //
      {9007199254740993, 9007199254740992.0},           // 2^53 + 1
      {9223372036854775807, 9223372036854775808.0},     // 2^63 - 1
      {9223372036854775808U, 9223372036854775808.0},    // 2^63, not negative
      {18446744073709551615U, 18446744073709551616.0},  // 2^64 - 1
      {18446743523953737727U, 18446742974197923840.0},  // just below the tie under it
  };
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(START);
    for (const auto& [count, average] : table) {
      (node.*story.count)(count);
      EXPECT_EQ((node.*story.average)(START), average) << story.name << ' ' << count;
      EXPECT_EQ((node.*story.average)(START + minutes(150)), average / 3) << story.name << ' ' << count;
      EXPECT_EQ((node.*story.cumulativeQuality)(START), RED) << story.name << ' ' << count;
    }
  }
}

TEST(ZigbeeNodeHealth, LightsTheAverageOfTheCountInSinglePrecision) {
  // 30000001 failures in 600000 hours are a little more than 50 an hour, but the count is 30000000 in single precision.
  const BPosixTime reset(boost::gregorian::date(1950, 1, 1));
  const BPosixTime now = reset + hours(600000);
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(reset);
    (node.*story.count)(30000001);
    EXPECT_EQ((node.*story.average)(now), 50.0);
    EXPECT_EQ((node.*story.cumulativeQuality)(now), GREEN);
    (node.*story.count)(30000003);
    EXPECT_EQ((node.*story.average)(now), 30000004.0 / 600000);
    EXPECT_EQ((node.*story.cumulativeQuality)(now), YELLOW);
  }
}

TEST(ZigbeeNodeHealth, CountsHoursInSinglePrecision) {
  const BPosixTime reset(boost::gregorian::date(1500, 1, 1));
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(reset);
    (node.*story.count)(40000000);
    EXPECT_EQ((node.*story.average)(reset + hours(20000001)), 2.0) << story.name;
  }
}

TEST(ZigbeeNodeHealth, TakesTimesOfNoDate) {
  struct Case {
    const char* name;
    BPosixTime reset;
    BPosixTime now;
    double days;
    double hours;
  };
  // The most ticks there are, in days and in hours, each rounded to single precision.
  constexpr double ALL_DAYS = 106751992;
  constexpr double ALL_HOURS = 2562047744;
  for (const Case& row :
       {Case{"no reset time", NOWHEN, START, 1, 1}, Case{"no time", START, NOWHEN, 1, 1},
        Case{"neither", NOWHEN, NOWHEN, 1, 1}, Case{"reset ages ago", PAST_ALL, START, ALL_DAYS, ALL_HOURS},
        Case{"reset to come", BEYOND_ALL, START, 1, 1}, Case{"after all time", START, BEYOND_ALL, ALL_DAYS, ALL_HOURS},
        Case{"before all time", START, PAST_ALL, 1, 1},
        Case{"from end to end", PAST_ALL, BEYOND_ALL, ALL_DAYS, ALL_HOURS},
        Case{"from end to the same end", BEYOND_ALL, BEYOND_ALL, 1, 1},
        Case{"from beginning to the same", PAST_ALL, PAST_ALL, 1, 1}}) {
    ZigbeeNode node = countingSince(row.reset);
    node.reboots(240);
    EXPECT_EQ(node.rebootCumulativeAverage(row.now), 240 / row.days) << row.name;
    EXPECT_EQ(node.rebootCumulativeQuality(row.now), row.days == 1 ? RED : GREEN) << row.name;
    for (const FailureStory& story : FAILURE_STORIES) {
      (node.*story.count)(3000);
      EXPECT_EQ((node.*story.average)(row.now), 3000 / row.hours) << row.name << ' ' << story.name;
      EXPECT_EQ((node.*story.cumulativeQuality)(row.now), row.hours == 1 ? RED : GREEN) << row.name;
    }
  }
}

TEST(ZigbeeNodeHealth, RoundsTheCumulativeAverageUp) {
  struct Case {
    unsigned short count;
    int buckets;
    int reboots;
    int failures;
  };
  for (const Case& row : {
           Case{0, 1, GREEN, GREEN}, Case{10, 1, GREEN, GREEN}, Case{11, 1, YELLOW, GREEN}, Case{20, 2, GREEN, GREEN},
           Case{21, 2, YELLOW, GREEN},       // 10.5
           Case{1000, 100, GREEN, GREEN},    // 10
           Case{1001, 100, YELLOW, GREEN},   // 10.01
           Case{2000, 100, YELLOW, GREEN},   // 20
           Case{2001, 100, RED, GREEN},      // 20.01
           Case{5000, 100, RED, GREEN},      // 50
           Case{5001, 100, RED, YELLOW},     // 50.01
           Case{30000, 100, RED, YELLOW},    // 300
           Case{30001, 100, RED, RED},       // 300.01
           Case{65535, 1, RED, RED},         //
           Case{65535, 30000, GREEN, GREEN}  // 2.2
       }) {
    ZigbeeNode node = countingSince(START);
    node.reboots(row.count);
    node.sourceRouteFailures(row.count);
    node.manyToOneRouteFailures(row.count);
    EXPECT_EQ(node.rebootCumulativeQuality(START + hours(24) * row.buckets), row.reboots) << row.count;
    EXPECT_EQ(node.sourceRouteFailuresCumulativeQuality(START + hours(row.buckets)), row.failures) << row.count;
    EXPECT_EQ(node.manyToOneRouteFailuresCumulativeQuality(START + hours(row.buckets)), row.failures) << row.count;
  }
}

TEST(ZigbeeNodeHealth, RoundsTheSlidingAverageToTheNearest) {
  struct Case {
    int events;
    int buckets;
    int reboots;
    int failures;
  };
  for (const Case& row : {
           Case{0, 1, GREEN, GREEN}, Case{10, 1, GREEN, GREEN}, Case{11, 1, YELLOW, GREEN},
           Case{52, 5, GREEN, GREEN},   // 10.4
           Case{21, 2, YELLOW, GREEN},  // 10.5, away from zero
           Case{41, 4, GREEN, GREEN},   // 10.25
           Case{81, 4, YELLOW, GREEN},  // 20.25
           Case{41, 2, RED, GREEN},     // 20.5
           Case{201, 4, RED, GREEN},    // 50.25
           Case{101, 2, RED, YELLOW},   // 50.5
           Case{1201, 4, RED, YELLOW},  // 300.25
           Case{601, 2, RED, RED},      // 300.5
           Case{240, 1, RED, YELLOW},   //
           Case{301, 1, RED, RED},      //
           Case{73, 7, GREEN, GREEN},   // 10.43
           Case{74, 7, YELLOW, GREEN},  // 10.57
       }) {
    ZigbeeNode node = countingSince(START);
    for (int i = 0; i < row.events; ++i) {
      node.addRebootEvent(START);
      node.addSourceRouteFailure(START);
      node.addManyToOneRouteFailure(START);
    }
    // Just before the last of the buckets ends.
    const time_duration rest = seconds(1);
    EXPECT_EQ(node.rebootSlidingQuality(START + hours(24) * row.buckets - rest), row.reboots) << row.events;
    EXPECT_EQ(node.sourceRouteFailuresSlidingQuality(START + hours(row.buckets) - rest), row.failures) << row.events;
    EXPECT_EQ(node.manyToOneRouteFailuresSlidingQuality(START + hours(row.buckets) - rest), row.failures) << row.events;
  }
}

TEST(ZigbeeNodeHealth, SeesThePastInOneViewAndNotInTheOther) {
  ZigbeeNode node = countingSince(START);
  for (int i = 0; i < 240; ++i) node.addRebootEvent(START + minutes(i));
  EXPECT_EQ(node.rebootCumulativeAverage(START + hours(5)), 240);
  EXPECT_EQ(node.rebootCumulativeQuality(START + hours(5)), RED);
  EXPECT_EQ(node.rebootSlidingQuality(START + hours(5)), RED);
  // 240 / 6 and 240 / 7: red in both.
  EXPECT_EQ(node.rebootCumulativeQuality(START + hours(24 * 6)), RED);
  EXPECT_EQ(node.rebootSlidingQuality(START + hours(24 * 7) - seconds(1)), RED);
  // 240 / 8 = 30, but the window has left them behind.
  EXPECT_EQ(node.rebootCumulativeQuality(START + hours(24 * 8)), RED);
  EXPECT_EQ(node.rebootSlidingQuality(START + hours(24 * 8)), GREEN);
  EXPECT_EQ(node.rebootsHistogram().totalEvents(), 0);
  EXPECT_EQ(node.reboots(), 240);
  EXPECT_EQ(node.rebootCumulativeQuality(START + hours(24 * 12)), YELLOW);
  EXPECT_EQ(node.rebootCumulativeQuality(START + hours(24 * 24)), GREEN);
}

TEST(ZigbeeNodeHealth, DividesByTheWholeWindowOnceItIsFull) {
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(START);
    // A hundred days later, 1212 failures within the hour are 50.5 an hour of the window.
    const BPosixTime now = START + hours(2400);
    for (int i = 0; i < 1212; ++i) (node.*story.add)(now);
    EXPECT_EQ((node.*story.slidingQuality)(now), YELLOW) << story.name;
    EXPECT_EQ((node.*story.cumulativeQuality)(now), GREEN) << story.name;
    EXPECT_EQ((node.*story.average)(now), 1212.0 / 2400) << story.name;
  }
}

TEST(ZigbeeNodeHealth, AgesTheHistogramsByAskingForASlidingLight) {
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(START);
    for (int i = 0; i < 400; ++i) (node.*story.add)(START);
    EXPECT_EQ((node.*story.slidingQuality)(START), RED);
    EXPECT_EQ((node.*story.slidingQuality)(START + hours(24)), GREEN);
    // What was dropped does not come back with the clock.
    EXPECT_EQ((node.*story.slidingQuality)(START), GREEN);
    EXPECT_EQ((node.*story.cumulativeQuality)(START), RED);
  }
}

TEST(ZigbeeNodeHealth, TakesEventsOfAClockThatGoesBack) {
  for (const FailureStory& story : FAILURE_STORIES) {
    ZigbeeNode node = countingSince(START);
    for (int i = 0; i < 100; ++i) (node.*story.add)(START + hours(5));
    for (int i = 0; i < 53; ++i) (node.*story.add)(START + hours(2));
    // 153 failures in the three hours begun are 51; those of the future are there already.
    EXPECT_EQ((node.*story.slidingQuality)(START + hours(3)), YELLOW) << story.name;
    EXPECT_EQ((node.*story.average)(START + hours(3)), 51) << story.name;
    // On its way the clock passes the future's bucket, and clears it.
    EXPECT_EQ((node.*story.slidingQuality)(START + hours(5)), GREEN) << story.name;
    EXPECT_EQ((node.*story.average)(START + hours(5)), 153.0 / 5) << story.name;
  }
}

TEST(ZigbeeNodeHealth, DropsWhatItCountedAtTimesOfNoDate) {
  for (const BPosixTime& now : {NOWHEN, BEYOND_ALL, PAST_ALL}) {
    ZigbeeNode node = countingSince(START);
    for (int i = 0; i < 400; ++i) {
      node.addRebootEvent(START);
      node.addSourceRouteFailure(START);
      node.addManyToOneRouteFailure(START);
    }
    EXPECT_EQ(node.rebootSlidingQuality(now), GREEN) << now;
    EXPECT_EQ(node.sourceRouteFailuresSlidingQuality(now), GREEN) << now;
    EXPECT_EQ(node.manyToOneRouteFailuresSlidingQuality(now), GREEN) << now;
    node.addRebootEvent(now);
    node.addSourceRouteFailure(now);
    node.addManyToOneRouteFailure(now);
    EXPECT_EQ(node.rebootsHistogram().totalEvents(), 1) << now;
    EXPECT_EQ(node.sourceRouteFailuresHistogram().totalEvents(), 1) << now;
    EXPECT_EQ(node.manyToOneRouteFailuresHistogram().totalEvents(), 1) << now;
  }
}

TEST(ZigbeeNodeHealth, HasGreenLightsWithoutAWindow) {
  ZigbeeNode node = emptyNode();
  for (int i = 0; i < 400; ++i) {
    node.addRebootEvent(START);
    node.addSourceRouteFailure(START);
    node.addManyToOneRouteFailure(START);
  }
  EXPECT_EQ(node.rebootSlidingQuality(START), GREEN);
  EXPECT_EQ(node.sourceRouteFailuresSlidingQuality(START), GREEN);
  EXPECT_EQ(node.manyToOneRouteFailuresSlidingQuality(START), GREEN);
  EXPECT_EQ(node.reboots(), 400);
  node.rebootsHistogramWindow(7);
  node.addRebootEvent(node.rebootsHistogram().startTime());
  EXPECT_EQ(node.rebootsHistogram().histogram(), (std::vector<int>{1, 0, 0, 0, 0, 0, 0}));
}

/// The bars of a link quality without a signal strength.
int barsOf(int rxLqi) { return rxLqi >= 235 ? 4 : rxLqi >= 215 ? 3 : rxLqi >= 195 ? 2 : rxLqi >= 175 ? 1 : 0; }

TEST(ZigbeeNodeSignal, HasBarsByItsLinkQuality) {
  const std::map<int, int> bars = {{0, 0},   {174, 0}, {175, 1}, {176, 1}, {194, 1}, {195, 2}, {196, 2}, {214, 2},
                                   {215, 3}, {216, 3}, {234, 3}, {235, 4}, {236, 4}, {254, 4}, {255, 4}};
  for (const auto& [rxLqi, expected] : bars) ASSERT_EQ(barsOf(rxLqi), expected) << rxLqi;
  for (int rxLqi = 0; rxLqi <= 255; ++rxLqi) {
    for (int rssi = -128; rssi <= 127; ++rssi) {
      for (const bool hasRssi : {false, true}) {
        ZigbeeNode node;
        node.hasRxLqi(true);
        node.rxLqi(static_cast<unsigned char>(rxLqi));
        node.hasRssi(hasRssi);
        node.rssi(static_cast<signed char>(rssi));
        node.signalStrength(77);
        node.updateSignalStrength();
        const int weaker = hasRssi && rssi <= -70 && barsOf(rxLqi) > 0 ? 1 : 0;
        ASSERT_EQ(node.signalStrength(), barsOf(rxLqi) - weaker) << rxLqi << ' ' << rssi << ' ' << hasRssi;
      }
    }
  }
}

TEST(ZigbeeNodeSignal, IsAtTheBordersOfItsThresholds) {
  struct Case {
    unsigned char rxLqi;
    signed char rssi;
    int bars;
  };
  for (const Case& row :
       {Case{235, -69, 4}, Case{235, -70, 3}, Case{235, -71, 3}, Case{215, -70, 2}, Case{195, -70, 1},
        Case{175, -69, 1}, Case{175, -70, 0}, Case{174, -69, 0}, Case{174, -70, 0}, Case{0, -128, 0}}) {
    ZigbeeNode node;
    node.hasRxLqi(true);
    node.rxLqi(row.rxLqi);
    node.hasRssi(true);
    node.rssi(row.rssi);
    node.updateSignalStrength();
    EXPECT_EQ(node.signalStrength(), row.bars) << int{row.rxLqi} << ' ' << int{row.rssi};
  }
}

TEST(ZigbeeNodeSignal, IsUnknownWithoutALinkQuality) {
  ZigbeeNode node;
  node.signalStrength(3);
  node.updateSignalStrength();
  EXPECT_EQ(node.signalStrength(), -1);
  node.hasRssi(true);
  node.rssi(-10);
  node.rxLqi(255);
  node.hasTxLqi(true);
  node.txLqi(255);
  node.radioBars(4);
  node.signalStrength(3);
  node.updateSignalStrength();
  EXPECT_EQ(node.signalStrength(), -1);
}

TEST(ZigbeeNodeSignal, IsWhatTheDeviceReportsInBars) {
  for (const int bars : {0, 1, 2, 3, 4, 5, 127}) {
    ZigbeeNode node;
    node.hasRadioBars(true);
    node.radioBars(static_cast<unsigned char>(bars));
    for (const unsigned char rxLqi : {0, 255}) {
      node.hasRxLqi(true);
      node.rxLqi(rxLqi);
      node.hasRssi(true);
      node.rssi(-100);
      node.updateSignalStrength();
      EXPECT_EQ(node.signalStrength(), bars);
    }
  }
}

TEST(ZigbeeNodeSignal, IsForgottenWhole) {
  ZigbeeNode node = filledNode();
  node.invalidateNodeSignalInfo();
  pb::ZigbeeNodePBuf expected = filledMessage();
  expected.clear_rssi();
  expected.clear_hasrssi();
  expected.clear_rxlqi();
  expected.clear_hasrxlqi();
  expected.clear_txlqi();
  expected.clear_hastxlqi();
  expected.clear_radiobars();
  expected.clear_hasradiobars();
  expected.set_signalstrength(-1);
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));
}

/// The message with the histograms and reset times taken from another, which are the clock's after a reset.
void takeSourceRouteClock(pb::ZigbeeNodePBuf& message, const pb::ZigbeeNodePBuf& clock) {
  message.set_sourceroutefailures(0);
  *message.mutable_sourceroutefailureshistogram() = clock.sourceroutefailureshistogram();
  *message.mutable_sourceroutefailuresresettime() = clock.sourceroutefailuresresettime();
}
void takeManyToOneClock(pb::ZigbeeNodePBuf& message, const pb::ZigbeeNodePBuf& clock) {
  message.set_manytooneroutefailures(0);
  *message.mutable_manytooneroutefailureshistogram() = clock.manytooneroutefailureshistogram();
  *message.mutable_manytooneroutefailuresresettime() = clock.manytooneroutefailuresresettime();
}
void takeRebootClock(pb::ZigbeeNodePBuf& message, const pb::ZigbeeNodePBuf& clock) {
  message.set_reboots(0);
  *message.mutable_rebootshistogram() = clock.rebootshistogram();
  *message.mutable_rebootsresettime() = clock.rebootsresettime();
}

/// Whether a histogram has this many zeros, and it and its count began between two times.
void expectFresh(const EventHistogram& histogram, std::size_t buckets, const BPosixTime& resetTime,
                 const BPosixTime& from, const BPosixTime& to) {
  EXPECT_EQ(histogram.histogram(), std::vector<int>(buckets, 0));
  EXPECT_LE(from, resetTime);
  EXPECT_LE(resetTime, histogram.startTime());
  EXPECT_LE(histogram.startTime(), to);
  EXPECT_EQ(histogram.lastEvent(), histogram.startTime());
}

TEST(ZigbeeNodeResets, StartEachStoryAnewAndNothingElse) {
  {
    ZigbeeNode node = filledNode();
    const BPosixTime before = ZigbeeNode::localtime();
    node.resetRebootCounter();
    expectFresh(node.rebootsHistogram(), 3, node.rebootsResetTime(), before, ZigbeeNode::localtime());
    pb::ZigbeeNodePBuf expected = filledMessage();
    takeRebootClock(expected, *messageOf(node));
    EXPECT_TRUE(sameMessage(*messageOf(node), expected));
  }
  {
    ZigbeeNode node = filledNode();
    const BPosixTime before = ZigbeeNode::localtime();
    node.resetSourceRouteFailures();
    expectFresh(node.sourceRouteFailuresHistogram(), 4, node.sourceRouteFailuresResetTime(), before,
                ZigbeeNode::localtime());
    pb::ZigbeeNodePBuf expected = filledMessage();
    takeSourceRouteClock(expected, *messageOf(node));
    EXPECT_TRUE(sameMessage(*messageOf(node), expected));
  }
  {
    ZigbeeNode node = filledNode();
    const BPosixTime before = ZigbeeNode::localtime();
    node.resetManyToOneRouteFailures();
    expectFresh(node.manyToOneRouteFailuresHistogram(), 2, node.manyToOneRouteFailuresResetTime(), before,
                ZigbeeNode::localtime());
    pb::ZigbeeNodePBuf expected = filledMessage();
    takeManyToOneClock(expected, *messageOf(node));
    EXPECT_TRUE(sameMessage(*messageOf(node), expected));
  }
}

TEST(ZigbeeNodeResets, OfCountersSpareTheReboots) {
  ZigbeeNode node = filledNode();
  const BPosixTime before = ZigbeeNode::localtime();
  node.resetCounters();
  const BPosixTime after = ZigbeeNode::localtime();
  expectFresh(node.sourceRouteFailuresHistogram(), 4, node.sourceRouteFailuresResetTime(), before, after);
  expectFresh(node.manyToOneRouteFailuresHistogram(), 2, node.manyToOneRouteFailuresResetTime(), before, after);
  pb::ZigbeeNodePBuf expected = filledMessage();
  takeSourceRouteClock(expected, *messageOf(node));
  takeManyToOneClock(expected, *messageOf(node));
  expected.set_acceptedpacketsuccesses(0);
  expected.set_acceptedpacketfailures(0);
  expected.set_packetdeliverysuccesses(0);
  expected.set_packetdeliveryfailures(0);
  expected.set_inboundunicastcount(0);
  expected.set_inboundmulticastcount(0);
  expected.set_outboundpacketcount(0);
  expected.set_maxhops(0);
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));
  EXPECT_EQ(node.reboots(), 40007);
  EXPECT_EQ(node.rebootsResetTime(), timeOf(1700000008));
  EXPECT_EQ(node.rebootsHistogram().histogram(), (std::vector<int>{10, 11, -12}));
}

TEST(ZigbeeNodeResets, ByNameResetTheCumulativeCounts) {
  using Take = void (*)(pb::ZigbeeNodePBuf&, const pb::ZigbeeNodePBuf&);
  const std::map<std::string, Take> takes = {{"reboot.cumulative_count", takeRebootClock},
                                             {"outbound_route_failures.cumulative_count", takeSourceRouteClock},
                                             {"inbound_route_failures.cumulative_count", takeManyToOneClock}};
  for (const auto& [name, take] : takes) {
    const LogCapture capture;
    ZigbeeNode node = filledNode();
    EXPECT_FALSE(node.resetHealthCounters({name})) << name;
    pb::ZigbeeNodePBuf expected = filledMessage();
    take(expected, *messageOf(node));
    EXPECT_TRUE(sameMessage(*messageOf(node), expected)) << name;
    EXPECT_THAT(capture.texts(), IsEmpty());
  }
  ZigbeeNode node = filledNode();
  EXPECT_FALSE(node.resetHealthCounters({"inbound_route_failures.cumulative_count",
                                         "outbound_route_failures.cumulative_count", "reboot.cumulative_count"}));
  EXPECT_EQ(node.reboots(), 0);
  EXPECT_EQ(node.sourceRouteFailures(), 0U);
  EXPECT_EQ(node.manyToOneRouteFailures(), 0U);
}

TEST(ZigbeeNodeResets, ByNameOfNothingChangeNothing) {
  const LogCapture capture;
  ZigbeeNode node = filledNode();
  EXPECT_FALSE(node.resetHealthCounters({}));
  EXPECT_TRUE(sameMessage(*messageOf(node), filledMessage()));
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeResets, RefuseAllOtherNamesAndGoOn) {
  const LogCapture capture;
  ZigbeeNode node = filledNode();
  EXPECT_TRUE(node.resetHealthCounters({"reboot.cumulative_count", "reboot.count", "", "Reboot.cumulative_count",
                                        "outbound_route_failures.cumulative_count"}));
  EXPECT_EQ(node.reboots(), 0);
  EXPECT_EQ(node.sourceRouteFailures(), 0U);
  EXPECT_EQ(node.manyToOneRouteFailures(), 10000000000000000028U);
  EXPECT_EQ(node.bootCount(), 40009);
  const std::string start = "ZigbeeNode::resetHealthCounters: (0x0011223344556677)(0x1a03): Cannot reset ";
  EXPECT_THAT(capture.texts(), ElementsAre(start + "reboot.count counter", start + " counter",
                                           start + "Reboot.cumulative_count counter"));
  EXPECT_EQ(capture.count(WARN), 3U);
}

TEST(ZigbeeNodeResets, RefuseEveryOtherMetric) {
  ZigbeeNode node;
  node.gatherNetworkHealth();
  unsigned int granted = 0;
  for (const NetworkHealthItem& item : node.networkHealth()->nodeHealth().begin()->second) {
    const LogCapture capture;
    const bool refused = node.resetHealthCounters({item.name()});
    EXPECT_EQ(capture.count(WARN), refused ? 1U : 0U) << item.name();
    if (!refused) ++granted;
  }
  EXPECT_EQ(granted, 3U);
}

/// The items of a node's report as text, "name type min|max value units", one a line. Its one key is the node's.
std::vector<std::string> reported(const ZigbeeNode& node) {
  std::vector<std::string> lines;
  const NetworkHealth::NodeHealth& health = node.networkHealth()->nodeHealth();
  EXPECT_EQ(health.size(), 1U);
  EXPECT_EQ(health.begin()->first, node.lid());
  EXPECT_EQ(node.networkHealth()->version(), 1U);
  for (const NetworkHealthItem& item : health.begin()->second) {
    EXPECT_EQ(item.version(), 1U);
    lines.push_back(item.name() + " " + std::to_string(static_cast<int>(item.type())) + " " + item.min() + "|" +
                    item.max() + " " + item.value() + " " + item.units());
  }
  return lines;
}

/// The value of one item.
std::string reportedValue(const ZigbeeNode& node, const std::string& name) {
  for (const NetworkHealthItem& item : node.networkHealth()->nodeHealth().at(node.lid())) {
    if (item.name() == name) return item.value();
  }
  return "no such item";
}

TEST(ZigbeeNodeReport, OfAFreshNodeHas26Items) {
  const ServerStart start{BPosixTime()};
  ZigbeeNode node;
  EXPECT_EQ(node.networkHealth(), nullptr);
  node.gatherNetworkHealth();
  EXPECT_THAT(reported(node),
              ElementsAre("reboot.count 2 0|65536 0 reboots since manufacture",
                          "reboot.cumulative_count 2 0|65536 0 reboots since reset",
                          "reboot.cumulative_average 2 0|65536 0 reboots/day",
                          "reboot.cumulative_quality 2 0|65536 3 red/yellow/green",
                          "reboot.sliding_average 2 0|65536 0 reboots/day",
                          "reboot.sliding_quality 2 0|65536 3 red/yellow/green",
                          "reboot.reset_time 3 | not-a-date-time time of last reset",
                          "reboot.quality_thresholds 1 | 10 20 red/yellow/green thresholds",
                          "four_bar_signal.value 2 0|4 -1 4 bar signal", "rx_lqi.value 2 0|255 -1 unitless",
                          "tx_lqi.value 2 0|255 -1 unitless", "rssi.value 2 -100|0 -1000 dBm",
                          "inbound_route_failures.cumulative_count 2 0|65536 0 failures since reset",
                          "inbound_route_failures.cumulative_average 2 0|65536 0 failures/hr",
                          "inbound_route_failures.cumulative_quality 2 0|65536 3 red/yellow/green",
                          "inbound_route_failures.sliding_average 2 0|65536 0 failures/hr",
                          "inbound_route_failures.sliding_quality 2 0|65536 3 red/yellow/green",
                          "inbound_route_failures.reset_time 3 | not-a-date-time time of last reset",
                          "inbound_route_failures.quality_thresholds 1 | 50 300 red/yellow/green thresholds",
                          "outbound_route_failures.cumulative_count 2 0|65536 0 failures since reset",
                          "outbound_route_failures.cumulative_average 2 0|65536 0 failures/hr",
                          "outbound_route_failures.cumulative_quality 2 0|65536 3 red/yellow/green",
                          "outbound_route_failures.sliding_average 2 0|65536 0 failures/hr",
                          "outbound_route_failures.sliding_quality 2 0|65536 3 red/yellow/green",
                          "outbound_route_failures.reset_time 3 | not-a-date-time time of last reset",
                          "outbound_route_failures.quality_thresholds 1 | 50 300 red/yellow/green thresholds"));
}

TEST(ZigbeeNodeReport, OfABusyNodeHas26ItemsOfItsOwn) {
  ZigbeeNode node;
  node.lid(euidFrom(test::NODE_LID));
  node.bootCount(65535);
  // Far from the borders of days and hours, whatever time passes meanwhile.
  const BPosixTime now = ZigbeeNode::localtime();
  const BPosixTime yesterday = now - hours(36);
  const BPosixTime earlier = now - minutes(90);
  const BPosixTime aWhileAgo = now - minutes(150);
  node.reboots(25);
  node.rebootsResetTime(yesterday);
  node.manyToOneRouteFailures(4294967296U + 601);
  node.manyToOneRouteFailuresResetTime(earlier);
  node.sourceRouteFailures(2147483648U);
  node.sourceRouteFailuresResetTime(aWhileAgo);
  // The histograms began with the node, so that one bucket has begun.
  for (int i = 0; i < 51; ++i) node.addManyToOneRouteFailure(node.manyToOneRouteFailuresHistogram().startTime());
  for (int i = 0; i < 301; ++i) node.addSourceRouteFailure(node.sourceRouteFailuresHistogram().startTime());
  for (int i = 0; i < 12; ++i) node.addRebootEvent(node.rebootsHistogram().startTime());
  node.hasRxLqi(true);
  node.rxLqi(240);
  node.hasTxLqi(true);
  node.txLqi(255);
  node.hasRssi(true);
  node.rssi(-70);
  const LogCapture capture;
  node.gatherNetworkHealth();
  EXPECT_THAT(capture.texts(), IsEmpty());
  const std::string at = " time of last reset";
  EXPECT_THAT(
      reported(node),
      ElementsAre("reboot.count 2 0|65536 65535 reboots since manufacture",
                  "reboot.cumulative_count 2 0|65536 37 reboots since reset",
                  "reboot.cumulative_average 2 0|65536 18.5 reboots/day",
                  "reboot.cumulative_quality 2 0|65536 2 red/yellow/green",
                  "reboot.sliding_average 2 0|65536 12 reboots/day",
                  "reboot.sliding_quality 2 0|65536 2 red/yellow/green",
                  "reboot.reset_time 3 | " + boost::posix_time::to_simple_string(yesterday) + at,
                  "reboot.quality_thresholds 1 | 10 20 red/yellow/green thresholds",
                  "four_bar_signal.value 2 0|4 3 4 bar signal", "rx_lqi.value 2 0|255 240 unitless",
                  "tx_lqi.value 2 0|255 255 unitless", "rssi.value 2 -100|0 -70 dBm",
                  // 2^32 + 652, of which an int keeps 652, and the average half of 2^32 + 512.
                  "inbound_route_failures.cumulative_count 2 0|65536 652 failures since reset",
                  "inbound_route_failures.cumulative_average 2 0|65536 2.14748e+09 failures/hr",
                  "inbound_route_failures.cumulative_quality 2 0|65536 1 red/yellow/green",
                  "inbound_route_failures.sliding_average 2 0|65536 51 failures/hr",
                  "inbound_route_failures.sliding_quality 2 0|65536 2 red/yellow/green",
                  "inbound_route_failures.reset_time 3 | " + boost::posix_time::to_simple_string(earlier) + at,
                  "inbound_route_failures.quality_thresholds 1 | 50 300 red/yellow/green thresholds",
                  // 2^31 + 301.
                  "outbound_route_failures.cumulative_count 2 0|65536 -2147483347 failures since reset",
                  "outbound_route_failures.cumulative_average 2 0|65536 7.15828e+08 failures/hr",
                  "outbound_route_failures.cumulative_quality 2 0|65536 1 red/yellow/green",
                  "outbound_route_failures.sliding_average 2 0|65536 301 failures/hr",
                  "outbound_route_failures.sliding_quality 2 0|65536 1 red/yellow/green",
                  "outbound_route_failures.reset_time 3 | " + boost::posix_time::to_simple_string(aWhileAgo) + at,
                  "outbound_route_failures.quality_thresholds 1 | 50 300 red/yellow/green thresholds"));
  EXPECT_EQ(node.signalStrength(), 3);
}

TEST(ZigbeeNodeReport, ShowsTheFractionOfAResetTime) {
  ZigbeeNode node;
  node.rebootsResetTime(START + microseconds(7));
  node.sourceRouteFailuresResetTime(BEYOND_ALL);
  node.manyToOneRouteFailuresResetTime(PAST_ALL);
  node.gatherNetworkHealth();
  EXPECT_EQ(reportedValue(node, "reboot.reset_time"), "2023-Nov-14 22:13:20.000007");
  EXPECT_EQ(reportedValue(node, "outbound_route_failures.reset_time"), "+infinity");
  EXPECT_EQ(reportedValue(node, "inbound_route_failures.reset_time"), "-infinity");
}

TEST(ZigbeeNodeReport, CutsItsCountsToAnInt) {
  const std::map<unsigned long long, std::string> table = {
      {2147483647, "2147483647"}, {2147483648U, "-2147483648"},       {4294967295U, "-1"},
      {4294967296U, "0"},         {9223372036854775808U, "0"},        {18446744073709551615U, "-1"},
      {4294967301U, "5"},         {0x1234567880000001, "-2147483647"}};
  ZigbeeNode node;
  for (const auto& [count, text] : table) {
    node.sourceRouteFailures(count);
    node.manyToOneRouteFailures(count);
    node.gatherNetworkHealth();
    EXPECT_EQ(reportedValue(node, "outbound_route_failures.cumulative_count"), text) << count;
    EXPECT_EQ(reportedValue(node, "inbound_route_failures.cumulative_count"), text) << count;
  }
}

TEST(ZigbeeNodeReport, TracesEachLinkValueThatIsMissing) {
  const std::string start = "ZigbeeNode::gatherNetworkHealth: (0x0011223344556677)(0x1a03): ";
  for (int present = 0; present < 8; ++present) {
    ZigbeeNode node = filledNode();
    node.hasRxLqi((present & 1) != 0);
    node.hasTxLqi((present & 2) != 0);
    node.hasRssi((present & 4) != 0);
    std::vector<std::string> texts;
    if (!node.hasRxLqi()) texts.push_back(start + "no rx lqi information available");
    if (!node.hasTxLqi()) texts.push_back(start + "no tx lqi information available");
    if (!node.hasRssi()) texts.push_back(start + "no rssi information available");
    const LogCapture capture;
    node.gatherNetworkHealth();
    EXPECT_EQ(capture.texts(), texts);
    EXPECT_EQ(capture.count(TRACE), texts.size());
    EXPECT_EQ(reportedValue(node, "rx_lqi.value"), node.hasRxLqi() ? "241" : "-1");
    EXPECT_EQ(reportedValue(node, "tx_lqi.value"), node.hasTxLqi() ? "243" : "-1");
    EXPECT_EQ(reportedValue(node, "rssi.value"), node.hasRssi() ? "-70" : "-1000");
  }
}

TEST(ZigbeeNodeReport, OfAForgottenLinkHasNoLinkValues) {
  ZigbeeNode node = filledNode();
  node.invalidateNodeSignalInfo();
  node.gatherNetworkHealth();
  EXPECT_EQ(reportedValue(node, "four_bar_signal.value"), "-1");
  EXPECT_EQ(reportedValue(node, "rx_lqi.value"), "-1");
  EXPECT_EQ(reportedValue(node, "tx_lqi.value"), "-1");
  EXPECT_EQ(reportedValue(node, "rssi.value"), "-1000");
}

TEST(ZigbeeNodeReport, BringsTheSignalStrengthUpToDateUnlessTheDeviceReportsBars) {
  ZigbeeNode node;
  node.hasRxLqi(true);
  node.rxLqi(215);
  node.signalStrength(77);
  node.gatherNetworkHealth();
  EXPECT_EQ(node.signalStrength(), 3);
  EXPECT_EQ(reportedValue(node, "four_bar_signal.value"), "3");
  node.hasRadioBars(true);
  node.radioBars(200);
  node.signalStrength(77);
  node.gatherNetworkHealth();
  EXPECT_EQ(node.signalStrength(), 77);
  EXPECT_EQ(reportedValue(node, "four_bar_signal.value"), "200");
}

TEST(ZigbeeNodeReport, ChangesOnlyWhatItAges) {
  ZigbeeNode node = filledNode();
  node.gatherNetworkHealth();
  pb::ZigbeeNodePBuf expected = filledMessage();
  // Years have gone by since the last events.
  *expected.mutable_rebootshistogram()->mutable_histogram() =
      messageOf(histogramOf<RebootHistogram>(3, {0, 0, 0}, 0, 0))->histogram();
  *expected.mutable_sourceroutefailureshistogram()->mutable_histogram() =
      messageOf(histogramOf<RebootHistogram>(4, {0, 0, 0, 0}, 0, 0))->histogram();
  *expected.mutable_manytooneroutefailureshistogram()->mutable_histogram() =
      messageOf(histogramOf<RebootHistogram>(2, {0, 0}, 0, 0))->histogram();
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));
}

TEST(ZigbeeNodeReport, IsUpdatedWhenSomethingHappened) {
  ZigbeeNode node;
  EXPECT_TRUE(node.updateNetworkHealth());
  // Without a count, no average moves with the clock.
  EXPECT_FALSE(node.updateNetworkHealth());
  node.addRebootEvent(ZigbeeNode::localtime());
  EXPECT_TRUE(node.updateNetworkHealth());
  node.bootCount(1);
  EXPECT_TRUE(node.updateNetworkHealth());
  node.label("shown nowhere");
  node.resetRebootCounter();
  EXPECT_TRUE(node.updateNetworkHealth());
  EXPECT_FALSE(node.updateNetworkHealth());
  node.lid(euidFrom(1));
  EXPECT_TRUE(node.updateNetworkHealth());
}

TEST(ZigbeeNodeReport, IsReplacedAndLivesOnWithWhoeverKeepsIt) {
  ZigbeeNode node;
  node.updateNetworkHealth();
  const boost::shared_ptr<NetworkHealth> old = node.networkHealth();
  EXPECT_EQ(old.use_count(), 2);
  const NetworkHealth then = *old;
  node.bootCount(9);
  node.updateNetworkHealth();
  EXPECT_EQ(old.use_count(), 1);
  EXPECT_NE(node.networkHealth(), old);
  EXPECT_TRUE(*old == then);
  EXPECT_FALSE(*node.networkHealth() == then);
  EXPECT_EQ(node.networkHealth().use_count(), 1);
}

}  // namespace
}  // namespace qx

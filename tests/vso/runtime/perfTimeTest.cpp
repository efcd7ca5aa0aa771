#include "vso/runtime/perfTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/LogCapture.h"
#include "tests/vso/runtime/ControlledSystem.h"
#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

using test::ControlledSystem;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int INFO = 20000;
constexpr int WARN = 30000;

/// Points live as long as the process, so each test has names of its own, also when it is repeated.
std::string newPoint() {
  static int count = 0;
  return "point" + std::to_string(++count);
}

/// A clock that stands still unless it is told, and a log.
class perfTime : public testing::Test {
 protected:
  perfTime() { now(1'700'000'000, 0); }

  void now(time_t seconds, suseconds_t microseconds) { system_.time = timeval{seconds, microseconds}; }

  void pass(std::uint64_t microseconds) {
    constexpr std::uint64_t SECOND = 1'000'000;
    const std::uint64_t later = static_cast<std::uint64_t>(system_.time->tv_usec) + microseconds;
    system_.time->tv_sec += static_cast<time_t>(later / SECOND);
    system_.time->tv_usec = static_cast<suseconds_t>(later % SECOND);
  }

  /// A sample of each of these lengths.
  void sample(unsigned short frequency, std::initializer_list<std::uint64_t> lengths) {
    for (const std::uint64_t length : lengths) {
      startPerfTime(point_, frequency);
      pass(length);
      endPerfTime(point_);
      pass(12345);  // between the samples: counts nowhere
    }
  }

  std::string report(const std::string& figures) const { return "PERF: " + point_ + " " + figures; }

  const std::string point_ = newPoint();
  ControlledSystem system_;
  const LogCapture log_;
};

TEST_F(perfTime, AsksForTheTimeOnceAtEachEnd) {
  startPerfTime(point_, 1);
  EXPECT_EQ(system_.timesAsked, 1U);
  endPerfTime(point_);
  EXPECT_EQ(system_.timesAsked, 2U);
}

TEST_F(perfTime, ReportsEachSampleAtAFrequencyOfZero) {
  sample(0, {100});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 100 MIN: 100 MAX: 100")));
  sample(0, {7});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 100 MIN: 100 MAX: 100"), report("AVG: 7 MIN: 7 MAX: 7")));
}

TEST_F(perfTime, ReportsAtInfoLevel) {
  sample(0, {100});
  EXPECT_EQ(log_.count(INFO), 1U);
}

TEST_F(perfTime, GivesTheSecondSampleHalfTheWeight) {
  sample(1, {100, 200});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 150 MIN: 100 MAX: 200")));
}

TEST_F(perfTime, GivesTheThirdSampleHalfTheWeight) {
  sample(2, {100, 200, 300});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 225 MIN: 100 MAX: 300")));
}

TEST_F(perfTime, RoundsTheAverageDown) {
  sample(1, {101, 102});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 101 MIN: 101 MAX: 102")));
}

TEST_F(perfTime, FindsLongestAndShortestInAnyPlace) {
  sample(4, {300, 500, 100, 400, 200});
  // 300, 400, 250, 325, 262
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 262 MIN: 100 MAX: 500")));
}

TEST_F(perfTime, ReportsAtTheEleventhSampleAtAFrequencyOfTen) {
  sample(10, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_THAT(log_.texts(), IsEmpty());
  sample(10, {11});
  // 1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 10 MIN: 1 MAX: 11")));
}

TEST_F(perfTime, BeginsAnewAfterAReport) {
  sample(1, {100, 900});
  sample(1, {300});
  EXPECT_EQ(log_.texts().size(), 1U);
  sample(1, {500});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 500 MIN: 100 MAX: 900"), report("AVG: 400 MIN: 300 MAX: 500")));
}

TEST_F(perfTime, DoesNothingAtTheEndOfAPointThatWasNeverStarted) {
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(), IsEmpty());
  EXPECT_EQ(system_.timesAsked, 0U);
  sample(2, {100, 200});
  EXPECT_THAT(log_.texts(), IsEmpty());
  sample(2, {300});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 225 MIN: 100 MAX: 300")));
}

TEST_F(perfTime, KeepsTheFirstFrequency) {
  sample(2, {100});
  sample(0, {200});
  EXPECT_THAT(log_.texts(), IsEmpty());
  sample(50, {300});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 225 MIN: 100 MAX: 300")));
  sample(0, {100, 200});
  EXPECT_EQ(log_.texts().size(), 1U);
}

TEST_F(perfTime, MeasuresFromTheLastStart) {
  startPerfTime(point_, 0);
  pass(1000);
  startPerfTime(point_, 0);
  pass(20);
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 20 MIN: 20 MAX: 20")));
}

TEST_F(perfTime, MeasuresTwiceFromOneStart) {
  startPerfTime(point_, 1);
  pass(100);
  endPerfTime(point_);
  pass(100);
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 150 MIN: 100 MAX: 200")));
}

TEST_F(perfTime, CountsOnlySamplesThatEnded) {
  for (int i = 0; i < 5; ++i) startPerfTime(point_, 1);
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(perfTime, TakesAMinimumOfZeroAsNone) {
  sample(1, {0, 500});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 250 MIN: 500 MAX: 500")));
}

TEST_F(perfTime, HasAMinimumOfZeroIfTheLastSampleIsZero) {
  sample(1, {500, 0});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 250 MIN: 0 MAX: 500")));
}

TEST_F(perfTime, MeasuresAcrossTheFullSecond) {
  now(10, 999'900);
  startPerfTime(point_, 0);
  now(11, 100);
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 200 MIN: 200 MAX: 200")));
}

TEST_F(perfTime, MeasuresSeconds) {
  sample(0, {2'147'483'647});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 2147483647 MIN: 2147483647 MAX: 2147483647")));
}

TEST_F(perfTime, WrapsAfterSeventyOneMinutes) {
  sample(0, {4'294'967'296 + 5, 4'295'000'000});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 5 MIN: 5 MAX: 5"), report("AVG: 32704 MIN: 32704 MAX: 32704")));
}

// The figures are written as signed numbers.
TEST_F(perfTime, WritesMoreThanThirtyFiveMinutesAsNegative) {
  sample(0, {3'000'000'000});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: -1294967296 MIN: -1294967296 MAX: -1294967296")));
}

TEST_F(perfTime, ComparesLongSamplesAsUnsigned) {
  sample(1, {100, 3'000'000'000});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 1500000050 MIN: 100 MAX: -1294967296")));
}

TEST_F(perfTime, WrapsWhenTheClockIsSetBack) {
  now(10, 0);
  startPerfTime(point_, 0);
  now(9, 999'999);
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: -1 MIN: -1 MAX: -1")));
}

TEST_F(perfTime, KeepsPointsApart) {
  const std::string other = newPoint();
  startPerfTime(point_, 1);
  pass(10);
  startPerfTime(other, 0);
  pass(10);
  endPerfTime(point_);
  pass(30);
  endPerfTime(other);
  EXPECT_THAT(log_.texts(), ElementsAre("PERF: " + other + " AVG: 40 MIN: 40 MAX: 40"));
  endPerfTime(point_);
  EXPECT_THAT(log_.texts(),
              ElementsAre("PERF: " + other + " AVG: 40 MIN: 40 MAX: 40", report("AVG: 35 MIN: 20 MAX: 50")));
}

TEST_F(perfTime, SamplesPointsOfSeveralThreadsThatWereStartedBefore) {
  constexpr int REPORTS = 50;
  std::array<std::string, test::THREADS> names;
  for (std::string& name : names) {
    name = newPoint();
    startPerfTime(name, 1);
  }
  test::onEachThread([&](int thread) {
    ControlledSystem own;
    own.time = timeval{1'700'000'000, 0};
    const std::string& name = names.at(static_cast<std::size_t>(thread));
    for (int sampled = 0; sampled < 2 * REPORTS; ++sampled) {
      startPerfTime(name, 1);
      own.time->tv_usec += sampled % 2 == 0 ? 10 * thread + 10 : 10 * thread + 14;
      endPerfTime(name);
    }
  });
  const std::vector<std::string> texts = log_.texts();
  EXPECT_THAT(texts, SizeIs(test::THREADS * REPORTS));
  const char* const figures[] = {" AVG: 12 MIN: 10 MAX: 14", " AVG: 22 MIN: 20 MAX: 24", " AVG: 32 MIN: 30 MAX: 34",
                                 " AVG: 42 MIN: 40 MAX: 44"};
  for (std::size_t thread = 0; thread < names.size(); ++thread) {
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "PERF: " + names[thread] + figures[thread]), REPORTS);
  }
}

TEST_F(perfTime, TakesAnyNameAsText) {
  const std::string name = point_ + " %s %d";
  startPerfTime(name, 0);
  pass(1);
  endPerfTime(name);
  EXPECT_THAT(log_.texts(), ElementsAre("PERF: " + name + " AVG: 1 MIN: 1 MAX: 1"));
}

TEST_F(perfTime, BeginsAnewAlsoWhenTheLevelIsOff) {
  {
    const LogCapture quiet(WARN);
    sample(1, {100, 200});
    EXPECT_THAT(quiet.texts(), IsEmpty());
  }
  sample(1, {300});
  EXPECT_THAT(log_.texts(), IsEmpty());
  sample(1, {500});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 400 MIN: 300 MAX: 500")));
}

TEST_F(perfTime, ReportsAtTheLargestCount) {
  for (int i = 0; i < 65534; ++i) sample(65534, {1});
  EXPECT_THAT(log_.texts(), IsEmpty());
  sample(65534, {1});
  EXPECT_THAT(log_.texts(), ElementsAre(report("AVG: 1 MIN: 1 MAX: 1")));
}

// No count of 16 bits exceeds it.
TEST_F(perfTime, NeverReportsAtTheLargestFrequency) {
  for (int i = 0; i < 70000; ++i) sample(65535, {1});
  EXPECT_THAT(log_.texts(), IsEmpty());
}

}  // namespace
}  // namespace qx

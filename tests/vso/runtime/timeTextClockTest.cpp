// The time of day at known moments.
#include <gmock/gmock.h>

#include <ostream>
#include <string>

#include "tests/vso/runtime/FakeClock.h"
#include "vso/runtime/timeText.h"

namespace qx {
namespace {

using test::FakeClock;
using testing::ElementsAre;

constexpr std::int64_t SECOND = FakeClock::SECOND;
constexpr std::int64_t MIDNIGHT = 1'699'920'000 * SECOND;  // 2023-11-14 UTC

constexpr std::int64_t at(int hours, int minutes, int seconds, int microseconds) {
  return MIDNIGHT + (hours * 3600 + minutes * 60 + seconds) * SECOND + microseconds;
}

struct Moment {
  std::int64_t microseconds;
  const char* zone;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const Moment& moment) { return out << moment.text; }

class GetTimeMilliAt : public test::ClockTest, public testing::WithParamInterface<Moment> {};

TEST_P(GetTimeMilliAt, IsLocalWithMicrosecondsUnpadded) {
  zone(GetParam().zone);
  FakeClock::begin(GetParam().microseconds);
  EXPECT_EQ(getTimeMilli(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(All, GetTimeMilliAt,
                         testing::Values(Moment{at(14, 2, 7, 5000), "UTC0", "14:02:07:5000"},
                                         Moment{at(14, 2, 7, 0), "UTC0", "14:02:07:0"},
                                         Moment{at(14, 2, 7, 1), "UTC0", "14:02:07:1"},
                                         Moment{at(14, 2, 7, 999'999), "UTC0", "14:02:07:999999"},
                                         Moment{at(0, 0, 0, 20), "UTC0", "00:00:00:20"},
                                         Moment{at(23, 59, 59, 100'000), "UTC0", "23:59:59:100000"},
                                         Moment{at(14, 2, 7, 5000), "XYZ-3", "17:02:07:5000"},
                                         Moment{at(14, 2, 7, 5000), "XYZ+3:30", "10:32:07:5000"}));

using GetTimeMilliClock = test::ClockTest;

TEST_F(GetTimeMilliClock, ReadsTheClockTwice) {
  FakeClock::begin(at(14, 2, 7, 999'999));
  FakeClock::stepAfterReading(1);
  EXPECT_EQ(getTimeMilli(), "14:02:07:0");
}

TEST_F(GetTimeMilliClock, LeavesTheFormToTheLocale) {
  getTimeMilli();
  EXPECT_THAT(FakeClock::formats(), ElementsAre("%X"));
}

}  // namespace
}  // namespace qx

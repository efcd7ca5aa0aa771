#include "vso/runtime/timeText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

namespace qx {
namespace {

struct Duration {
  long seconds;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const Duration& duration) { return out << duration.seconds; }

class TimeTToStr : public testing::TestWithParam<Duration> {};

TEST_P(TimeTToStr, WritesHoursAllMinutesAndSeconds) { EXPECT_EQ(timeTToStr(GetParam().seconds), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Durations, TimeTToStr,
                         testing::Values(Duration{0, "00:00:00"}, Duration{9, "00:00:09"}, Duration{10, "00:00:10"},
                                         Duration{59, "00:00:59"}, Duration{60, "00:01:00"}, Duration{599, "00:09:59"},
                                         Duration{600, "00:10:00"}, Duration{3599, "00:59:59"},
                                         Duration{3600, "01:60:00"}, Duration{3661, "01:61:01"},
                                         Duration{5999, "01:99:59"}, Duration{6000, "01:100:00"},
                                         Duration{36000, "10:600:00"}, Duration{360000, "100:6000:00"},
                                         Duration{2147483648, "596523:35791394:08"},
                                         Duration{9223372036854775807, "2562047788015215:153722867280912930:07"}));

// Divisions round toward zero, and a sign is a character that needs no "0" before the digit.
INSTANTIATE_TEST_SUITE_P(
    Negative, TimeTToStr,
    testing::Values(Duration{-1, "00:00:-1"}, Duration{-9, "00:00:-9"}, Duration{-10, "00:00:-10"},
                    Duration{-59, "00:00:-59"}, Duration{-60, "00:-1:00"}, Duration{-61, "00:-1:-1"},
                    Duration{-600, "00:-10:00"}, Duration{-3599, "00:-59:-59"}, Duration{-3600, "-1:-60:00"},
                    Duration{-3661, "-1:-61:-1"}, Duration{-360000, "-100:-6000:00"},
                    Duration{std::numeric_limits<long>::min(), "-2562047788015215:-153722867280912930:-8"}));

TEST(GetTimeMilli, GivesATimeOfDayAndMicroseconds) {
  EXPECT_THAT(getTimeMilli(), testing::MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9]:(0|[1-9][0-9]{0,5})"));
}

}  // namespace
}  // namespace qx

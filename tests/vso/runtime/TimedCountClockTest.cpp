// The window of a count to the microsecond.
#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/vso/runtime/FakeClock.h"
#include "vso/runtime/TimedCount.h"

namespace qx {
namespace {

using test::FakeClock;
using testing::ThrowsMessage;

constexpr std::int64_t SECOND = FakeClock::SECOND;
const char* const NOT_CONVERTED = "could not convert calendar time to UTC time";

class TimedCountClock : public test::ClockTest {
 protected:
  TimedCount count_{2, 1000};
};

TEST_F(TimedCountClock, ExceedsInsideTheWindowOnly) {
  ++ ++count_;
  EXPECT_FALSE(count_.exceededThresholds());
  FakeClock::advance(SECOND);
  ++count_;
  EXPECT_TRUE(count_.exceededThresholds());  // the window's last microsecond
  EXPECT_FALSE(count_.timeExpired());
  FakeClock::advance(1);
  EXPECT_FALSE(count_.exceededThresholds());
  EXPECT_FALSE(static_cast<bool>(count_));
  EXPECT_EQ(count_.count(), 3U);
  EXPECT_TRUE(count_.timeExpired());
  EXPECT_TRUE(count_.running());
}

TEST_F(TimedCountClock, FurtherEventsDoNotExtendTheWindow) {
  ++count_;
  FakeClock::advance(SECOND - 1);
  ++count_;
  --count_;
  ++ ++count_;
  EXPECT_TRUE(count_.exceededThresholds());
  FakeClock::advance(2);
  EXPECT_FALSE(count_.exceededThresholds());
}

TEST_F(TimedCountClock, AnEventDownOpensTheWindowToo) {
  --count_;
  FakeClock::advance(SECOND - 1);
  ++ ++ ++count_;
  EXPECT_TRUE(count_.exceededThresholds());
  FakeClock::advance(2);
  EXPECT_FALSE(count_.exceededThresholds());
}

TEST_F(TimedCountClock, DoesNotReopenByItself) {
  ++count_;
  FakeClock::advance(SECOND + 1);
  for (int i = 0; i < 10; ++i) ++count_;
  --count_;
  EXPECT_EQ(count_.count(), 10U);
  EXPECT_FALSE(count_.exceededThresholds());
  count_.count(4'294'967'295);
  EXPECT_FALSE(count_.exceededThresholds());
  EXPECT_TRUE(count_.running());

  count_.reset();
  EXPECT_FALSE(count_.running());
  ++ ++ ++count_;
  EXPECT_TRUE(count_.exceededThresholds());
  FakeClock::advance(SECOND + 1);
  EXPECT_FALSE(count_.exceededThresholds());
}

TEST_F(TimedCountClock, StartOpensANewWindowInEveryState) {
  const auto opens = [&] {
    count_.start();
    EXPECT_EQ(count_.count(), 0U);
    FakeClock::advance(SECOND);
    ++ ++ ++count_;
    EXPECT_TRUE(count_.exceededThresholds());
    FakeClock::advance(1);
    return !count_.exceededThresholds();
  };
  EXPECT_TRUE(opens());
  EXPECT_TRUE(opens());  // expired
  count_.reset();
  ++count_;
  FakeClock::advance(SECOND / 2);
  EXPECT_TRUE(opens());  // in the middle of a window
}

TEST_F(TimedCountClock, SettingTheCountLeavesTheWindowAlone) {
  count_.count(7);
  EXPECT_FALSE(count_.running());
  --count_;
  EXPECT_EQ(count_.count(), 6U);
  FakeClock::advance(SECOND);
  count_.count(9);
  EXPECT_TRUE(count_.exceededThresholds());
  FakeClock::advance(1);
  count_.count(9);
  EXPECT_FALSE(count_.exceededThresholds());
  EXPECT_TRUE(count_.timeExpired());
  EXPECT_TRUE(count_.running());
}

TEST_F(TimedCountClock, CountsNothingWhereTheTimeCannotBeConverted) {
  count_.count(5);
  FakeClock::convertible(false);
  EXPECT_THAT([&] { ++count_; }, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_THAT([&] { --count_; }, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_THAT([&] { count_.exceededThresholds(); }, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_THAT([&] { count_.timeExpired(); }, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_EQ(count_.count(), 5U);
  EXPECT_FALSE(count_.running());
  EXPECT_THAT([&] { count_.start(); }, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_EQ(count_.count(), 0U);
  EXPECT_FALSE(count_.running());
}

TEST_F(TimedCountClock, CountsOnInAnOpenWindowWithoutTheTime) {
  ++count_;
  FakeClock::convertible(false);
  ++ ++count_;
  EXPECT_EQ(count_.count(), 3U);
  FakeClock::convertible(true);
  EXPECT_TRUE(count_.exceededThresholds());
}

}  // namespace
}  // namespace qx

// The timer to the microsecond.
#include <gmock/gmock.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "tests/vso/runtime/FakeClock.h"
#include "tests/vso/runtime/Threads.h"
#include "vso/runtime/ElapsedTimer.h"

namespace qx {
namespace {

using test::Elsewhere;
using test::FakeClock;
using testing::ThrowsMessage;

constexpr std::int64_t MILLISECOND = 1000;
constexpr std::int64_t SECOND = FakeClock::SECOND;
constexpr std::int64_t HOUR = 3600 * SECOND;
const char* const NOT_CONVERTED = "could not convert calendar time to UTC time";

/// True if `timer` elapses with the microsecond after the one that is `microseconds` from now. Moves the clock there.
bool elapsesBehind(const ElapsedTimer& timer, std::int64_t microseconds) {
  FakeClock::advance(microseconds - 1);
  EXPECT_FALSE(timer.elapsed()) << "a microsecond before the deadline";
  FakeClock::advance(1);
  EXPECT_FALSE(timer.elapsed()) << "at the deadline";
  FakeClock::advance(1);
  return timer.elapsed();
}

struct Deadline {
  std::int64_t begin;
  unsigned int milliseconds;
};

std::ostream& operator<<(std::ostream& out, const Deadline& deadline) {
  return out << deadline.milliseconds << " ms from " << deadline.begin;
}

constexpr std::int64_t NOON = 1'700'000'000'123'456;
constexpr std::int64_t BEFORE_A_LEAP_DAY = 1'709'164'799'999'999;  // 2024-02-28 23:59:59.999999
constexpr std::int64_t BEFORE_2038 = 2'147'483'647'999'999;        // the last second of 31 bits

class ElapsedTimerDeadline : public test::ClockTest, public testing::WithParamInterface<Deadline> {};

TEST_P(ElapsedTimerDeadline, HasPassedAMicrosecondLater) {
  FakeClock::begin(GetParam().begin);
  ElapsedTimer timer;
  timer.set(GetParam().milliseconds);
  timer.start();
  EXPECT_FALSE(timer.elapsed());
  EXPECT_TRUE(elapsesBehind(timer, GetParam().milliseconds * MILLISECOND));
  EXPECT_TRUE(timer.running());
}

INSTANTIATE_TEST_SUITE_P(All, ElapsedTimerDeadline,
                         testing::Values(Deadline{NOON, 1}, Deadline{NOON, 1000}, Deadline{NOON, 86'400'000},
                                         Deadline{NOON, 86'400'001}, Deadline{NOON, 2'147'483'648},
                                         Deadline{NOON, 4'294'967'295}, Deadline{BEFORE_A_LEAP_DAY, 1},
                                         Deadline{BEFORE_A_LEAP_DAY, 86'400'000}, Deadline{BEFORE_2038, 1000},
                                         Deadline{0, 1}));

class ElapsedTimerClock : public test::ClockTest {
 protected:
  /// True if no thread is left holding a lock of the timer.
  bool isFree() const {
    const Elsewhere asked([timer = shared_] {
      timer->duration();
      timer->running();
    });
    return asked.ends();
  }

  const std::shared_ptr<ElapsedTimer> shared_ = std::make_shared<ElapsedTimer>(1000);
  ElapsedTimer& timer_ = *shared_;
};

TEST_F(ElapsedTimerClock, RunsFromItsStartNotFromItsMaking) {
  FakeClock::advance(HOUR);
  timer_.start();
  EXPECT_TRUE(elapsesBehind(timer_, SECOND));
}

TEST_F(ElapsedTimerClock, ASecondStartLeavesTheDeadline) {
  timer_.start();
  FakeClock::advance(SECOND / 2);
  timer_.start();
  EXPECT_TRUE(elapsesBehind(timer_, SECOND / 2));
}

TEST_F(ElapsedTimerClock, AnExpiredTimerRunsUntilItIsStopped) {
  timer_.start();
  FakeClock::advance(SECOND + 1);
  EXPECT_TRUE(timer_.elapsed());
  EXPECT_TRUE(timer_.running());
  FakeClock::advance(24 * HOUR);
  EXPECT_TRUE(timer_.elapsed());
  EXPECT_TRUE(timer_.running());

  timer_.start();
  EXPECT_TRUE(timer_.elapsed());
  EXPECT_THAT([&] { timer_.set(0); }, ThrowsMessage<std::runtime_error>("Setting an invalid timer duration"));
  EXPECT_THAT([&] { timer_.set(5); }, ThrowsMessage<std::runtime_error>("Setting a running timer"));
  EXPECT_EQ(timer_.duration(), 1000U);

  timer_.stop();
  EXPECT_FALSE(timer_.running());
  EXPECT_TRUE(timer_.elapsed());
  timer_.set(5);
  timer_.start();
  EXPECT_TRUE(elapsesBehind(timer_, 5 * MILLISECOND));
}

TEST_F(ElapsedTimerClock, ANewStartAfterAStopGivesANewDeadline) {
  timer_.start();
  FakeClock::advance(SECOND / 2);
  timer_.stop();
  EXPECT_TRUE(timer_.elapsed());
  timer_.start();
  EXPECT_TRUE(elapsesBehind(timer_, SECOND));
}

TEST_F(ElapsedTimerClock, AClockSetBackPutsTheDeadlineOff) {
  timer_.start();
  FakeClock::advance(SECOND - 1);
  FakeClock::advance(-HOUR);
  EXPECT_FALSE(timer_.elapsed());
  EXPECT_TRUE(elapsesBehind(timer_, HOUR + 1));

  FakeClock::advance(-2);
  EXPECT_FALSE(timer_.elapsed());
}

TEST_F(ElapsedTimerClock, AClockSetForwardBringsTheDeadlineOn) {
  timer_.start();
  FakeClock::advance(HOUR);
  EXPECT_TRUE(timer_.elapsed());
}

TEST_F(ElapsedTimerClock, GoesByUtcWhereTheLocalTimeIsSetBack) {
  zone("CET-1CEST,M3.5.0,M10.5.0/3");
  FakeClock::begin(1'698'539'400 * SECOND);  // 2023-10-29 00:30:00 UTC, half an hour before the end of summer time
  timer_.set(3'600'000);
  timer_.start();
  EXPECT_TRUE(elapsesBehind(timer_, HOUR));
}

TEST_F(ElapsedTimerClock, StaysIdleWhereTheTimeCannotBeConverted) {
  FakeClock::convertible(false);
  EXPECT_THAT([&] { timer_.start(); }, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_FALSE(timer_.running());
  EXPECT_TRUE(isFree());
  FakeClock::convertible(true);
  timer_.start();
  EXPECT_TRUE(elapsesBehind(timer_, SECOND));
}

TEST_F(ElapsedTimerClock, CannotTellWhetherItElapsedWhereTheTimeCannotBeConverted) {
  const auto elapsed = [&] { timer_.elapsed(); };
  FakeClock::convertible(false);
  EXPECT_THAT(elapsed, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));  // the time is read before the state
  FakeClock::convertible(true);
  timer_.start();
  FakeClock::convertible(false);
  EXPECT_THAT(elapsed, ThrowsMessage<std::runtime_error>(NOT_CONVERTED));
  EXPECT_TRUE(timer_.running());
  timer_.start();  // reads no time: it runs
  EXPECT_TRUE(isFree());
  FakeClock::convertible(true);
  EXPECT_TRUE(elapsesBehind(timer_, SECOND));
}

TEST_F(ElapsedTimerClock, TestsTheDurationBeforeTheTime) {
  ElapsedTimer timer;
  FakeClock::convertible(false);
  EXPECT_THAT([&] { timer.start(); }, ThrowsMessage<std::runtime_error>("Starting a timer with zero duration"));
}

}  // namespace
}  // namespace qx

#include "vso/runtime/ElapsedTimer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

using testing::AnyOf;
using testing::ThrowsMessage;

// A day. All else here is told from it.
static_assert(ElapsedTimer::MAX_DURATION == 86'400'000);

static_assert(!std::is_polymorphic_v<ElapsedTimer>);
static_assert(!std::is_copy_constructible_v<ElapsedTimer>);

TEST(ElapsedTimer, IsIdleWithoutADurationByDefault) {
  ElapsedTimer timer;
  EXPECT_EQ(timer.duration(), 0U);
  EXPECT_FALSE(timer.running());
  EXPECT_TRUE(timer.elapsed());
  EXPECT_THAT([&] { timer.start(); }, ThrowsMessage<std::runtime_error>("Starting a timer with zero duration"));
  EXPECT_FALSE(timer.running());
  EXPECT_TRUE(timer.elapsed());
}

TEST(ElapsedTimer, IsIdleAndElapsedUntilItIsStarted) {
  for (const unsigned int milliseconds : {1U, 2U, 1000U, ElapsedTimer::MAX_DURATION - 1, ElapsedTimer::MAX_DURATION}) {
    const ElapsedTimer timer(milliseconds);
    EXPECT_EQ(timer.duration(), milliseconds);
    EXPECT_FALSE(timer.running());
    EXPECT_TRUE(timer.elapsed());
  }
}

TEST(ElapsedTimer, IsNotMadeOfAnInvalidDuration) {
  for (const unsigned int milliseconds : {0U, ElapsedTimer::MAX_DURATION + 1, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_THAT([=] { ElapsedTimer timer(milliseconds); }, ThrowsMessage<std::runtime_error>("Invalid timer duration"))
        << milliseconds;
  }
}

TEST(ElapsedTimer, SetReplacesTheDurationWithoutAnUpperLimit) {
  ElapsedTimer timer;
  for (const unsigned int milliseconds :
       {5U, 1U, ElapsedTimer::MAX_DURATION, ElapsedTimer::MAX_DURATION + 1, 0xFFFFFFFFU, 7U}) {
    timer.set(milliseconds);
    EXPECT_EQ(timer.duration(), milliseconds);
    EXPECT_FALSE(timer.running());
  }
}

TEST(ElapsedTimer, SetRefusesZeroWhetherItRunsOrNot) {
  ElapsedTimer timer(ElapsedTimer::MAX_DURATION);
  const auto setZero = [&] { timer.set(0); };
  EXPECT_THAT(setZero, ThrowsMessage<std::runtime_error>("Setting an invalid timer duration"));
  timer.start();
  EXPECT_THAT(setZero, ThrowsMessage<std::runtime_error>("Setting an invalid timer duration"));
  EXPECT_EQ(timer.duration(), ElapsedTimer::MAX_DURATION);
  EXPECT_TRUE(timer.running());
}

TEST(ElapsedTimer, SetRefusesARunningTimer) {
  ElapsedTimer timer(ElapsedTimer::MAX_DURATION);
  timer.start();
  for (const unsigned int milliseconds : {1U, ElapsedTimer::MAX_DURATION, 0xFFFFFFFFU}) {
    EXPECT_THAT([&] { timer.set(milliseconds); }, ThrowsMessage<std::runtime_error>("Setting a running timer"));
  }
  EXPECT_EQ(timer.duration(), ElapsedTimer::MAX_DURATION);
  EXPECT_FALSE(timer.elapsed());
  timer.stop();
  timer.set(5);
  EXPECT_EQ(timer.duration(), 5U);
}

TEST(ElapsedTimer, RunsFromStartToStop) {
  ElapsedTimer timer(ElapsedTimer::MAX_DURATION);
  timer.stop();
  EXPECT_FALSE(timer.running());
  for (int round = 0; round < 2; ++round) {
    timer.start();
    timer.start();
    EXPECT_TRUE(timer.running());
    EXPECT_FALSE(timer.elapsed());
    timer.stop();
    timer.stop();
    EXPECT_FALSE(timer.running());
    EXPECT_TRUE(timer.elapsed());
    EXPECT_EQ(timer.duration(), ElapsedTimer::MAX_DURATION);
  }
}

TEST(ElapsedTimer, IsStartedByManyThreadsAtOnce) {
  for (int round = 0; round < 20; ++round) {
    ElapsedTimer timer(ElapsedTimer::MAX_DURATION);
    test::onEachThread([&](int) {
      timer.start();
      EXPECT_TRUE(timer.running());
      EXPECT_FALSE(timer.elapsed());
      EXPECT_EQ(timer.duration(), ElapsedTimer::MAX_DURATION);
    });
    EXPECT_TRUE(timer.running());
  }
}

TEST(ElapsedTimer, IsSetStartedStoppedAndAskedAtOnce) {
  ElapsedTimer timer(ElapsedTimer::MAX_DURATION);
  std::atomic<int> refused{0};
  std::atomic<int> done{0};
  test::onEachThread([&](int thread) {
    const auto mine = ElapsedTimer::MAX_DURATION + static_cast<unsigned int>(thread);
    for (int round = 0; round < 200; ++round) {
      try {
        timer.set(mine);
        ++done;
      } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Setting a running timer");
        ++refused;
      }
      timer.start();
      EXPECT_THAT(timer.duration(), AnyOf(ElapsedTimer::MAX_DURATION, ElapsedTimer::MAX_DURATION + 1,
                                          ElapsedTimer::MAX_DURATION + 2, ElapsedTimer::MAX_DURATION + 3));
      timer.elapsed();
      timer.running();
      timer.stop();
    }
  });
  EXPECT_EQ(done + refused, test::THREADS * 200);
  EXPECT_GT(done, 0);
  EXPECT_FALSE(timer.running());
  EXPECT_TRUE(timer.elapsed());
}

}  // namespace
}  // namespace qx

#include "vso/runtime/ElapsedTimer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "Threads.h"

namespace qx {
namespace {

using testing::AnyOf;
using testing::ThrowsMessage;

constexpr unsigned int A_DAY = 86'400'000;

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
  for (const unsigned int milliseconds : {1U, 2U, 1000U, A_DAY - 1, A_DAY}) {
    const ElapsedTimer timer(milliseconds);
    EXPECT_EQ(timer.duration(), milliseconds);
    EXPECT_FALSE(timer.running());
    EXPECT_TRUE(timer.elapsed());
  }
}

TEST(ElapsedTimer, IsNotMadeOfAnInvalidDuration) {
  for (const unsigned int milliseconds : {0U, A_DAY + 1, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_THAT([=] { ElapsedTimer timer(milliseconds); }, ThrowsMessage<std::runtime_error>("Invalid timer duration"))
        << milliseconds;
  }
}

TEST(ElapsedTimer, SetReplacesTheDurationWithoutAnUpperLimit) {
  ElapsedTimer timer;
  for (const unsigned int milliseconds : {5U, 1U, A_DAY, A_DAY + 1, 0xFFFFFFFFU, 7U}) {
    timer.set(milliseconds);
    EXPECT_EQ(timer.duration(), milliseconds);
    EXPECT_FALSE(timer.running());
  }
}

TEST(ElapsedTimer, SetRefusesZeroWhetherItRunsOrNot) {
  ElapsedTimer timer(A_DAY);
  const auto setZero = [&] { timer.set(0); };
  EXPECT_THAT(setZero, ThrowsMessage<std::runtime_error>("Setting an invalid timer duration"));
  timer.start();
  EXPECT_THAT(setZero, ThrowsMessage<std::runtime_error>("Setting an invalid timer duration"));
  EXPECT_EQ(timer.duration(), A_DAY);
  EXPECT_TRUE(timer.running());
}

TEST(ElapsedTimer, SetRefusesARunningTimer) {
  ElapsedTimer timer(A_DAY);
  timer.start();
  for (const unsigned int milliseconds : {1U, A_DAY, 0xFFFFFFFFU}) {
    EXPECT_THAT([&] { timer.set(milliseconds); }, ThrowsMessage<std::runtime_error>("Setting a running timer"));
  }
  EXPECT_EQ(timer.duration(), A_DAY);
  EXPECT_FALSE(timer.elapsed());
  timer.stop();
  timer.set(5);
  EXPECT_EQ(timer.duration(), 5U);
}

TEST(ElapsedTimer, RunsFromStartToStop) {
  ElapsedTimer timer(A_DAY);
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
    EXPECT_EQ(timer.duration(), A_DAY);
  }
}

TEST(ElapsedTimer, IsStartedByManyThreadsAtOnce) {
  for (int round = 0; round < 20; ++round) {
    ElapsedTimer timer(A_DAY);
    test::onEachThread([&](int) {
      timer.start();
      EXPECT_TRUE(timer.running());
      EXPECT_FALSE(timer.elapsed());
      EXPECT_EQ(timer.duration(), A_DAY);
    });
    EXPECT_TRUE(timer.running());
  }
}

TEST(ElapsedTimer, IsSetStartedStoppedAndAskedAtOnce) {
  ElapsedTimer timer(A_DAY);
  std::atomic<int> refused{0};
  std::atomic<int> done{0};
  test::onEachThread([&](int thread) {
    const auto mine = A_DAY + static_cast<unsigned int>(thread);
    for (int round = 0; round < 200; ++round) {
      try {
        timer.set(mine);
        ++done;
      } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Setting a running timer");
        ++refused;
      }
      timer.start();
      EXPECT_THAT(timer.duration(), AnyOf(A_DAY, A_DAY + 1, A_DAY + 2, A_DAY + 3));
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

#include "vso/runtime/TimedCount.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

using testing::ThrowsMessage;

constexpr unsigned int HIGHEST = 4'294'967'295;

static_assert(!std::is_polymorphic_v<TimedCount>);
static_assert(!std::is_copy_constructible_v<TimedCount>);

/// What both readers of the threshold say.
bool exceeded(const TimedCount& count) {
  EXPECT_EQ(static_cast<bool>(count), count.exceededThresholds());
  return count.exceededThresholds();
}

/// What both readers of the count say.
unsigned int counted(const TimedCount& count) {
  EXPECT_EQ(static_cast<unsigned int>(count), count.count());
  return count.count();
}

struct Arguments {
  unsigned int threshold;
  unsigned int milliseconds;
  const char* error;
};

TEST(TimedCount, IsNotMadeOfInvalidArguments) {
  for (const Arguments& arguments : {Arguments{0, 1000, "Invalid count threshold"},
                                     {HIGHEST, 1000, "Invalid count threshold"},
                                     {0, ElapsedTimer::MAX_DURATION, "Invalid count threshold"},
                                     {1, 0, "Invalid timer duration"},
                                     {1, ElapsedTimer::MAX_DURATION + 1, "Invalid timer duration"},
                                     {1, HIGHEST, "Invalid timer duration"},
                                     {0, 0, "Invalid timer duration"},  // the timer is made first
                                     {HIGHEST, ElapsedTimer::MAX_DURATION + 1, "Invalid timer duration"}}) {
    EXPECT_THAT([&] { TimedCount count(arguments.threshold, arguments.milliseconds); },
                ThrowsMessage<std::runtime_error>(arguments.error))
        << arguments.threshold << ", " << arguments.milliseconds;
  }
}

TEST(TimedCount, BeginsAtZeroWithoutAWindow) {
  for (const unsigned int threshold : {1U, 2U, HIGHEST - 1}) {
    for (const unsigned int milliseconds : {1U, ElapsedTimer::MAX_DURATION}) {
      const TimedCount count(threshold, milliseconds);
      EXPECT_EQ(counted(count), 0U);
      EXPECT_FALSE(count.running());
      EXPECT_TRUE(count.timeExpired());
      EXPECT_FALSE(exceeded(count));
    }
  }
}

TEST(TimedCount, ExceedsItsThresholdNotAtItButAboveIt) {
  TimedCount count(2, ElapsedTimer::MAX_DURATION);
  ++count;
  EXPECT_FALSE(exceeded(count));
  ++count;
  EXPECT_FALSE(exceeded(count));
  ++count;
  EXPECT_TRUE(exceeded(count));
  EXPECT_EQ(counted(count), 3U);
  --count;
  EXPECT_FALSE(exceeded(count));
}

TEST(TimedCount, ExceedsTheHighestThreshold) {
  TimedCount count(HIGHEST - 1, ElapsedTimer::MAX_DURATION);
  count.count(HIGHEST - 2);
  ++count;
  EXPECT_FALSE(exceeded(count));
  ++count;
  EXPECT_TRUE(exceeded(count));
}

TEST(TimedCount, EventsGiveTheCountItself) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  EXPECT_EQ(&++count, &count);
  EXPECT_EQ(&--count, &count);
  ++ ++count;
  EXPECT_EQ(counted(count), 2U);
}

TEST(TimedCount, StopsAtTheHighestCount) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  count.count(HIGHEST - 1);
  ++count;
  EXPECT_EQ(counted(count), HIGHEST);
  ++count;
  EXPECT_EQ(counted(count), HIGHEST);
  EXPECT_TRUE(exceeded(count));
  --count;
  EXPECT_EQ(counted(count), HIGHEST - 1);
}

TEST(TimedCount, StopsAtZeroAndOpensTheWindowEvenSo) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  --count;
  EXPECT_EQ(counted(count), 0U);
  EXPECT_TRUE(count.running());
  EXPECT_FALSE(count.timeExpired());
  ++count;
  EXPECT_EQ(counted(count), 1U);
}

TEST(TimedCount, OpensTheWindowAtTheHighestCountToo) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  count.count(HIGHEST);
  EXPECT_FALSE(count.running());
  ++count;
  EXPECT_TRUE(count.running());
}

TEST(TimedCount, NeedsAnOpenWindowToExceed) {
  TimedCount count(2, ElapsedTimer::MAX_DURATION);
  count.count(10);
  EXPECT_EQ(counted(count), 10U);
  EXPECT_FALSE(count.running());
  EXPECT_FALSE(exceeded(count));
  ++count;
  EXPECT_TRUE(count.running());
  EXPECT_TRUE(exceeded(count));
  count.count(2);
  EXPECT_TRUE(count.running());
  EXPECT_FALSE(exceeded(count));
}

TEST(TimedCount, ResetClosesTheWindow) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  ++ ++count;
  EXPECT_TRUE(exceeded(count));
  count.reset();
  EXPECT_EQ(counted(count), 0U);
  EXPECT_FALSE(exceeded(count));
  EXPECT_FALSE(count.running());
  EXPECT_TRUE(count.timeExpired());
}

TEST(TimedCount, StartOpensAWindowWithNothingInIt) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  count.count(5);
  for (int round = 0; round < 2; ++round) {
    count.start();
    EXPECT_EQ(counted(count), 0U);
    EXPECT_TRUE(count.running());
    EXPECT_FALSE(count.timeExpired());
    EXPECT_FALSE(exceeded(count));
    ++ ++count;
    EXPECT_TRUE(exceeded(count));
  }
}

TEST(TimedCount, LosesNoEventOfAnyThread) {
  constexpr unsigned int EACH = 400;
  TimedCount count(test::THREADS * EACH - 1, ElapsedTimer::MAX_DURATION);
  test::onEachThread([&](int) {
    for (unsigned int i = 0; i < EACH; ++i) ++count;
  });
  EXPECT_EQ(counted(count), test::THREADS * EACH);
  EXPECT_TRUE(exceeded(count));
  test::onEachThread([&](int thread) {
    for (unsigned int i = 0; i < EACH; ++i) thread % 2 == 0 ? ++count : --count;
  });
  EXPECT_EQ(counted(count), test::THREADS * EACH);
  test::onEachThread([&](int) {
    for (unsigned int i = 0; i < EACH / 2; ++i) --count;
  });
  EXPECT_EQ(counted(count), test::THREADS * EACH / 2);
}

TEST(TimedCount, IsCountedResetStartedAndAskedAtOnce) {
  TimedCount count(1, ElapsedTimer::MAX_DURATION);
  test::onEachThread([&](int thread) {
    for (int round = 0; round < 200; ++round) {
      ++count;
      --count;
      count.exceededThresholds();
      count.timeExpired();
      count.running();
      count.count();
      if (thread == 0) count.reset();
      if (thread == 1) count.start();
      if (thread == 2) count.count(3);
    }
  });
  count.start();
  EXPECT_EQ(counted(count), 0U);
  EXPECT_TRUE(count.running());
  ++ ++count;
  EXPECT_TRUE(exceeded(count));
}

}  // namespace
}  // namespace qx

#include "vso/runtime/WaitableBool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>
#include <chrono>
#include <future>
#include <type_traits>
#include <vector>

#include "Threads.h"

namespace qx {
namespace {

static_assert(!std::is_polymorphic_v<WaitableBool>);
static_assert(!std::is_copy_constructible_v<WaitableBool>);

/// What a thread of its own gets.
std::future<bool> getElsewhere(const WaitableBool& flag) {
  std::promise<void> about;
  const std::future<void> begun = about.get_future();
  std::future<bool> got = std::async(std::launch::async, [&flag, &about] {
    about.set_value();
    return flag.get();
  });
  begun.wait();
  return got;
}

bool waits(const std::future<bool>& got) {
  return got.wait_for(std::chrono::milliseconds(20)) == std::future_status::timeout;
}

/// True if another thread can have the flag's lock.
bool isFree(const WaitableBool& flag) {
  std::future<bool> value = std::async(std::launch::async, [&flag] { return flag.value(); });
  return value.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
}

TEST(WaitableBool, IsUnsetAndFalseByDefault) {
  const WaitableBool flag;
  EXPECT_FALSE(flag.isSet());
  EXPECT_FALSE(flag.value());
}

TEST(WaitableBool, IsSetToTheValueItIsMadeOf) {
  for (const bool value : {false, true}) {
    const WaitableBool flag(value);
    EXPECT_TRUE(flag.isSet());
    EXPECT_EQ(flag.value(), value);
    EXPECT_EQ(flag.get(), value);
  }
}

TEST(WaitableBool, GivesWhatIsSet) {
  WaitableBool flag;
  for (const bool value : {true, false, false, true, true}) {
    flag.set(value);
    EXPECT_TRUE(flag.isSet());
    EXPECT_EQ(flag.value(), value);
    EXPECT_EQ(flag.get(), value);
    EXPECT_EQ(flag.get(), value);  // getting takes nothing away
  }
}

TEST(WaitableBool, ResetToAValueHoldsItUnset) {
  for (const bool before : {false, true}) {
    for (const bool value : {false, true}) {
      WaitableBool flag(before);
      flag.reset(value);
      EXPECT_FALSE(flag.isSet());
      EXPECT_EQ(flag.value(), value);
    }
  }
}

TEST(WaitableBool, ResetKeepsTheValueUnset) {
  for (const bool value : {false, true}) {
    WaitableBool flag(value);
    flag.reset();
    EXPECT_FALSE(flag.isSet());
    EXPECT_EQ(flag.value(), value);
    flag.reset();
    EXPECT_FALSE(flag.isSet());
    EXPECT_EQ(flag.value(), value);
  }
}

TEST(WaitableBool, GetWaitsForWhatIsSet) {
  for (const bool value : {false, true}) {
    WaitableBool flag;
    std::future<bool> got = getElsewhere(flag);
    EXPECT_TRUE(waits(got));
    EXPECT_FALSE(flag.value());  // at once: the wait holds no lock
    flag.set(value);
    EXPECT_EQ(got.get(), value);
  }
}

TEST(WaitableBool, GetWaitsAfterEitherReset) {
  WaitableBool flag(true);
  EXPECT_TRUE(flag.get());
  flag.reset();
  std::future<bool> got = getElsewhere(flag);
  EXPECT_TRUE(waits(got));
  EXPECT_TRUE(flag.value());
  flag.set(false);
  EXPECT_FALSE(got.get());

  flag.reset(true);
  got = getElsewhere(flag);
  EXPECT_TRUE(waits(got));
  EXPECT_TRUE(flag.value());
  flag.set(true);
  EXPECT_TRUE(got.get());
}

TEST(WaitableBool, GetWaitsOnThroughEitherReset) {
  WaitableBool flag;
  std::future<bool> got = getElsewhere(flag);
  flag.reset(true);
  EXPECT_TRUE(waits(got));
  EXPECT_TRUE(flag.value());
  flag.reset();
  EXPECT_TRUE(waits(got));
  flag.set(true);
  EXPECT_TRUE(got.get());
}

TEST(WaitableBool, SetReleasesEveryWaiter) {
  WaitableBool flag;
  std::vector<std::future<bool>> got;
  for (int i = 0; i < test::THREADS; ++i) got.push_back(getElsewhere(flag));
  for (const std::future<bool>& one : got) EXPECT_TRUE(waits(one));
  flag.set(true);
  for (std::future<bool>& one : got) EXPECT_TRUE(one.get());
}

TEST(WaitableBool, AnInterruptedGetThrowsAndReleasesTheLock) {
  WaitableBool flag;
  std::atomic<bool> begun{false};
  bool interrupted = false;
  boost::thread waiter([&] {
    begun = true;
    try {
      flag.get();
    } catch (const boost::thread_interrupted&) {
      interrupted = true;
      // The thread that was interrupted still runs here, so it has the lock if it was not released.
      EXPECT_TRUE(isFree(flag));
    }
  });
  while (!begun) boost::this_thread::yield();
  EXPECT_FALSE(waiter.timed_join(boost::posix_time::milliseconds(20)));
  waiter.interrupt();
  waiter.join();
  EXPECT_TRUE(interrupted);
  EXPECT_FALSE(flag.isSet());
  flag.set(true);
  EXPECT_TRUE(flag.get());
}

TEST(WaitableBool, AnInterruptionBeforeTheWaitEndsIt) {
  WaitableBool flag;
  std::promise<void> go;
  bool interrupted = false;
  boost::thread waiter([&] {
    go.get_future().wait();
    try {
      flag.get();
    } catch (const boost::thread_interrupted&) {
      interrupted = true;
    }
  });
  waiter.interrupt();
  go.set_value();
  waiter.join();
  EXPECT_TRUE(interrupted);
  EXPECT_TRUE(isFree(flag));
}

TEST(WaitableBool, AnInterruptionEndsTheWaitOfOneThreadOnly) {
  WaitableBool flag;
  std::future<bool> got = getElsewhere(flag);
  boost::thread other([&] { flag.get(); });
  other.interrupt();
  other.join();
  EXPECT_TRUE(waits(got));
  flag.set(true);
  EXPECT_TRUE(got.get());
}

TEST(WaitableBool, HandsOverBetweenTwoThreads) {
  constexpr int ROUNDS = 1000;
  WaitableBool ping;
  WaitableBool pong;
  int handed = 0;  // no lock of its own: whoever was let on by a flag has it
  std::future<void> other = std::async(std::launch::async, [&] {
    for (int round = 0; round < ROUNDS; ++round) {
      const bool value = ping.get();
      ping.reset();
      EXPECT_EQ(handed, 2 * round + 1);
      ++handed;
      pong.set(!value);
    }
  });
  for (int round = 0; round < ROUNDS; ++round) {
    const bool value = round % 3 == 0;
    EXPECT_EQ(handed, 2 * round);
    ++handed;
    ping.set(value);
    EXPECT_EQ(pong.get(), !value);
    pong.reset();
  }
  other.get();
  EXPECT_EQ(handed, 2 * ROUNDS);
}

TEST(WaitableBool, IsSetResetAndReadAtOnce) {
  WaitableBool flag;
  std::atomic<int> left{test::THREADS - 1};
  std::atomic<int> got{0};
  test::onEachThread([&](int thread) {
    // The last thread publishes until all the others have had enough, so that none waits for ever.
    if (thread == test::THREADS - 1) {
      while (left > 0) {
        flag.reset();
        flag.reset(true);
        flag.set(true);
        boost::this_thread::yield();
      }
      return;
    }
    for (int round = 0; round < 200; ++round) {
      if (flag.get()) ++got;
      flag.isSet();
      flag.value();
    }
    --left;
  });
  EXPECT_EQ(got, (test::THREADS - 1) * 200);
  EXPECT_TRUE(flag.isSet());
}

}  // namespace
}  // namespace qx

// Who is woken when.
#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "support/ThreadCalls.h"
#include "tests/vso/runtime/Threads.h"
#include "vso/runtime/WaitableBool.h"

namespace qx {
namespace {

using test::Elsewhere;
using test::ThreadCalls;

/// A flag with threads that wait for it, and what they got.
class WaitableBoolWaking : public testing::Test {
 protected:
  ~WaitableBoolWaking() override {
    flag_.set(false);
    for (boost::thread& waiter : waiters_) waiter.join();
  }

  /// Lets `count` threads wait.
  void wait(int count) {
    const int before = ThreadCalls::waits;
    for (int i = 0; i < count; ++i) {
      waiters_.emplace_back([this] {
        ThreadCalls::watched = true;
        if (flag_.get()) ++gotTrue_;
        ++released_;
      });
    }
    waitForWaits(before + count);
  }

  static void waitForWaits(int count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (ThreadCalls::waits < count && std::chrono::steady_clock::now() < deadline) boost::this_thread::yield();
    EXPECT_GE(ThreadCalls::waits, count);
  }

  /// How many times `operation` wakes all.
  static int wakes(const std::function<void()>& operation) {
    const int before = ThreadCalls::wakesOfAll;
    operation();
    return ThreadCalls::wakesOfAll - before;
  }

  void joinAll() {
    for (boost::thread& waiter : waiters_) waiter.join();
    waiters_.clear();
  }

  WaitableBool flag_;
  std::vector<boost::thread> waiters_;
  std::atomic<int> gotTrue_{0};
  std::atomic<int> released_{0};
};

TEST_F(WaitableBoolWaking, SetWakesAllAndResetNobody) {
  EXPECT_EQ(wakes([&] { flag_.set(true); }), 1);
  EXPECT_EQ(wakes([&] { flag_.set(true); }), 1);
  EXPECT_EQ(wakes([&] { flag_.reset(true); }), 1);
  EXPECT_EQ(wakes([&] { flag_.reset(false); }), 1);
  EXPECT_EQ(wakes([&] { flag_.reset(); }), 0);
  EXPECT_EQ(wakes([&] { flag_.value(); }), 0);
  EXPECT_EQ(wakes([&] { flag_.isSet(); }), 0);
  EXPECT_EQ(ThreadCalls::wakesOfOne, 0);
}

TEST_F(WaitableBoolWaking, AWaiterThatResetWakesGoesBackToWaiting) {
  constexpr int WAITERS = 3;
  const int before = ThreadCalls::waits;
  wait(WAITERS);
  for (int round = 2; round < 5; ++round) {
    flag_.reset(true);
    waitForWaits(before + round * WAITERS);
    EXPECT_EQ(released_, 0);
    EXPECT_TRUE(flag_.value());
  }
  flag_.set(true);
  joinAll();
  EXPECT_EQ(released_, WAITERS);
  EXPECT_EQ(gotTrue_, WAITERS);
}

TEST_F(WaitableBoolWaking, AWaiterGetsTheValueThatIsThereWhenItRuns) {
  wait(2);
  flag_.reset(true);
  flag_.set(false);
  joinAll();
  EXPECT_EQ(released_, 2);
  EXPECT_EQ(gotTrue_, 0);
}

TEST_F(WaitableBoolWaking, AWaiterThatIsInterruptedLeavesTheOthersWaiting) {
  const int before = ThreadCalls::waits;
  bool interrupted = false;
  boost::thread other([&] {
    ThreadCalls::watched = true;
    try {
      flag_.get();
    } catch (const boost::thread_interrupted&) {
      interrupted = true;
    }
  });
  waitForWaits(before + 1);
  wait(1);
  other.interrupt();
  other.join();
  EXPECT_TRUE(interrupted);
  EXPECT_EQ(released_, 0);
  flag_.set(true);
  joinAll();
  EXPECT_EQ(gotTrue_, 1);
}

TEST_F(WaitableBoolWaking, AGetOfASetFlagDoesNotWaitNorIsItInterrupted) {
  flag_.set(true);
  const int before = ThreadCalls::waits;
  std::atomic<bool> go{false};
  bool got = false;
  boost::thread other([&] {
    ThreadCalls::watched = true;
    while (!go) boost::this_thread::yield();
    got = flag_.get();
  });
  other.interrupt();
  go = true;
  other.join();
  EXPECT_TRUE(got);
  EXPECT_EQ(ThreadCalls::waits, before);
}

/// What two threads ask for while `publish` wakes those that wait.
void expectWakesUnderTheLock(const std::function<void(WaitableBool&)>& publish) {
  const auto flag = std::make_shared<WaitableBool>();
  std::optional<Elsewhere<bool>> value;
  std::optional<Elsewhere<bool>> got;
  ThreadCalls::beforeAWakeOfAll = [&] {
    value.emplace([flag] { return flag->value(); });
    got.emplace([flag] { return flag->get(); });
    EXPECT_TRUE(value->blocks());
    EXPECT_TRUE(got->blocks());
  };
  publish(*flag);
  ThreadCalls::beforeAWakeOfAll = nullptr;
  ASSERT_TRUE(value && got);
  EXPECT_TRUE(value->get());
  flag->set(true);
  EXPECT_TRUE(got->get());
}

TEST(WaitableBoolLock, IsHeldWhileAllAreWoken) {
  expectWakesUnderTheLock([](WaitableBool& flag) { flag.set(true); });
  expectWakesUnderTheLock([](WaitableBool& flag) { flag.reset(true); });
}

TEST(WaitableBoolLock, IsNotForIsSetNorForResetWithoutAValue) {
  const auto flag = std::make_shared<WaitableBool>();
  bool asked = false;
  ThreadCalls::beforeAWakeOfAll = [&] {
    asked = true;
    EXPECT_TRUE(Elsewhere([flag] { return flag->isSet(); }).ends());
    EXPECT_TRUE(flag->isSet());
    EXPECT_TRUE(Elsewhere([flag] { flag->reset(); }).ends());
    EXPECT_FALSE(flag->isSet());
  };
  flag->set(true);
  ThreadCalls::beforeAWakeOfAll = nullptr;
  EXPECT_TRUE(asked);
  EXPECT_FALSE(flag->isSet());
  EXPECT_TRUE(flag->value());
}

TEST(WaitableBoolClock, WaitsByTheMonotonicClock) {
  ThreadCalls::clock = -1;
  const WaitableBool flag;
  EXPECT_EQ(ThreadCalls::clock, CLOCK_MONOTONIC);
}

}  // namespace
}  // namespace qx

#include "vso/runtime/WaitableBool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

using test::Elsewhere;

static_assert(!std::is_polymorphic_v<WaitableBool>);
static_assert(!std::is_copy_constructible_v<WaitableBool>);

/// A flag that lives as long as any thread waits for it.
using SharedFlag = std::shared_ptr<WaitableBool>;

/// What a thread of its own gets.
Elsewhere<bool> getElsewhere(const SharedFlag& flag) {
  return Elsewhere<bool>([flag] { return flag->get(); });
}

/// The value for which no lock is waited for ever.
bool valueOf(const SharedFlag& flag) {
  return Elsewhere([flag] { return flag->value(); }).get();
}

/// True if another thread can have the flag's lock.
bool isFree(const SharedFlag& flag) {
  return Elsewhere([flag] { return flag->value(); }).ends();
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
    const auto flag = std::make_shared<WaitableBool>();
    Elsewhere<bool> got = getElsewhere(flag);
    EXPECT_TRUE(got.blocks());
    EXPECT_FALSE(valueOf(flag));  // at once: the wait holds no lock
    flag->set(value);
    EXPECT_EQ(got.get(), value);
  }
}

TEST(WaitableBool, GetWaitsAfterEitherReset) {
  const auto flag = std::make_shared<WaitableBool>(true);
  EXPECT_TRUE(flag->get());
  flag->reset();
  Elsewhere<bool> got = getElsewhere(flag);
  EXPECT_TRUE(got.blocks());
  EXPECT_TRUE(valueOf(flag));
  flag->set(false);
  EXPECT_FALSE(got.get());

  flag->reset(true);
  got = getElsewhere(flag);
  EXPECT_TRUE(got.blocks());
  EXPECT_TRUE(valueOf(flag));
  flag->set(true);
  EXPECT_TRUE(got.get());
}

TEST(WaitableBool, GetWaitsOnThroughEitherReset) {
  const auto flag = std::make_shared<WaitableBool>();
  Elsewhere<bool> got = getElsewhere(flag);
  EXPECT_TRUE(got.blocks());
  flag->reset(true);
  EXPECT_TRUE(got.blocks());
  EXPECT_TRUE(valueOf(flag));
  flag->reset();
  EXPECT_TRUE(got.blocks());
  flag->set(true);
  EXPECT_TRUE(got.get());
}

TEST(WaitableBool, SetReleasesEveryWaiter) {
  const auto flag = std::make_shared<WaitableBool>();
  std::vector<Elsewhere<bool>> got;
  for (int i = 0; i < test::THREADS; ++i) got.push_back(getElsewhere(flag));
  for (const Elsewhere<bool>& one : got) EXPECT_TRUE(one.blocks());
  flag->set(true);
  for (Elsewhere<bool>& one : got) EXPECT_TRUE(one.get());
}

/// A thread that gets until it is interrupted.
class Interruptible {
 public:
  /// `before` is called on the thread, before it gets.
  explicit Interruptible(
      const SharedFlag& flag, std::function<void()> before = [] {})
      : thread_([flag, before = std::move(before), interrupted = interrupted_] {
          before();
          try {
            flag->get();
          } catch (const boost::thread_interrupted&) {
            // The thread still runs here, so it has the lock if that was not released.
            interrupted->set_value(isFree(flag));
          }
        }) {}

  bool waits() { return !thread_.timed_join(boost::posix_time::milliseconds(20)); }
  void interrupt() { thread_.interrupt(); }

  /// True if the interruption came through, and left the lock to others.
  bool wasInterrupted() {
    std::future<bool> interrupted = interrupted_->get_future();
    return interrupted.wait_for(std::chrono::seconds(60)) == std::future_status::ready && interrupted.get();
  }

 private:
  std::shared_ptr<std::promise<bool>> interrupted_ = std::make_shared<std::promise<bool>>();
  boost::thread thread_;  // is let go with this object
};

TEST(WaitableBool, AnInterruptedGetThrowsAndReleasesTheLock) {
  const auto flag = std::make_shared<WaitableBool>();
  std::promise<void> begun;
  Interruptible waiter(flag, [&] { begun.set_value(); });
  begun.get_future().wait();
  EXPECT_TRUE(waiter.waits());
  waiter.interrupt();
  EXPECT_TRUE(waiter.wasInterrupted());
  EXPECT_FALSE(flag->isSet());
  flag->set(true);
  EXPECT_TRUE(getElsewhere(flag).get());
}

TEST(WaitableBool, AnInterruptionBeforeTheWaitEndsIt) {
  const auto flag = std::make_shared<WaitableBool>();
  std::promise<void> go;
  Interruptible waiter(flag, [gone = go.get_future().share()] { gone.wait(); });
  waiter.interrupt();
  go.set_value();
  EXPECT_TRUE(waiter.wasInterrupted());
  EXPECT_TRUE(isFree(flag));
}

TEST(WaitableBool, AnInterruptionEndsTheWaitOfOneThreadOnly) {
  const auto flag = std::make_shared<WaitableBool>();
  Elsewhere<bool> got = getElsewhere(flag);
  EXPECT_TRUE(got.blocks());
  Interruptible other(flag);
  other.interrupt();
  EXPECT_TRUE(other.wasInterrupted());
  EXPECT_TRUE(got.blocks());
  flag->set(true);
  EXPECT_TRUE(got.get());
}

TEST(WaitableBool, MayBeDestroyedAsSoonAsItIsGot) {
  for (int round = 0; round < 2000; ++round) {
    auto owned = std::make_unique<WaitableBool>();
    WaitableBool* const flag = owned.get();
    Elsewhere<bool> got([own = std::move(owned)]() mutable {
      const bool value = own->get();
      own.reset();
      return value;
    });
    if (round % 2 == 0) boost::this_thread::yield();  // so that more of them wait
    flag->set(true);
    EXPECT_TRUE(got.get());
  }
}

TEST(WaitableBool, HandsOverBetweenTwoThreads) {
  constexpr int ROUNDS = 1000;
  struct Game {
    WaitableBool ping;
    WaitableBool pong;
    int handed = 0;  // no lock of its own: whoever was let on by a flag has it
  };
  const auto game = std::make_shared<Game>();
  Elsewhere<void> other([game] {
    for (int round = 0; round < ROUNDS; ++round) {
      const bool value = game->ping.get();
      game->ping.reset();
      EXPECT_EQ(game->handed, 2 * round + 1);
      ++game->handed;
      game->pong.set(!value);
    }
  });
  Elsewhere<void> one([game] {
    for (int round = 0; round < ROUNDS; ++round) {
      const bool value = round % 3 == 0;
      EXPECT_EQ(game->handed, 2 * round);
      ++game->handed;
      game->ping.set(value);
      EXPECT_EQ(game->pong.get(), !value);
      game->pong.reset();
    }
  });
  one.get();
  other.get();
  EXPECT_EQ(game->handed, 2 * ROUNDS);
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

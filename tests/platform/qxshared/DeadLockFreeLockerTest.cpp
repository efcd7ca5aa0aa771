#include "qxshared/DeadLockFreeLocker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

#include <boost/thread/barrier.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "qxlogger/Logger.h"
#include "qxshared/CThread.h"
#include "support/LogCapture.h"

namespace qx {
namespace {

using boost::chrono::hours;
using boost::chrono::milliseconds;
using boost::chrono::seconds;
using testing::Contains;
using testing::HasSubstr;

constexpr int WARN = 30000;

static_assert(!std::is_copy_constructible_v<DeadLockFreeLocker>);
static_assert(!std::is_copy_assignable_v<DeadLockFreeLocker>);

/// Puts the limit back at the end of a test.
class Limit {
 public:
  explicit Limit(milliseconds limit) { DeadLockFreeLocker::warnAfter(limit); }
  ~Limit() { DeadLockFreeLocker::warnAfter(earlier_); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

 private:
  milliseconds earlier_ = DeadLockFreeLocker::warnAfter();
};

bool freeForOthers(boost::recursive_timed_mutex& mutex) {
  bool free = false;
  std::thread([&] {
    free = mutex.try_lock();
    if (free) mutex.unlock();
  }).join();
  return free;
}

void waitForWarnings(const test::LogCapture& log, std::size_t count) {
  while (log.count(WARN) < count) std::this_thread::yield();
}

TEST(DeadLockFreeLocker, HoldsTheMutexForItsLifetime) {
  boost::recursive_timed_mutex mutex;
  {
    const DeadLockFreeLocker lock(mutex, "mutex", "", 0);
    EXPECT_FALSE(freeForOthers(mutex));
  }
  EXPECT_TRUE(freeForOthers(mutex));
}

TEST(DeadLockFreeLocker, LocksAgainOnTheSameThread) {
  boost::recursive_timed_mutex mutex;
  {
    const DeadLockFreeLocker outer(mutex, "mutex", "", 0);
    {
      const DeadLockFreeLocker inner(mutex, "mutex", "", 0);
      EXPECT_FALSE(freeForOthers(mutex));
    }
    EXPECT_FALSE(freeForOthers(mutex));
  }
  EXPECT_TRUE(freeForOthers(mutex));
}

TEST(DeadLockFreeLocker, ReleasesInAnyOrder) {
  boost::recursive_timed_mutex first;
  boost::recursive_timed_mutex second;
  auto lockOfFirst = std::make_unique<DeadLockFreeLocker>(first, "first", "", 0);
  auto lockOfSecond = std::make_unique<DeadLockFreeLocker>(second, "second", "", 0);
  auto againOfFirst = std::make_unique<DeadLockFreeLocker>(first, "first", "", 0);
  lockOfFirst.reset();
  EXPECT_FALSE(freeForOthers(first));
  EXPECT_FALSE(freeForOthers(second));
  againOfFirst.reset();
  EXPECT_TRUE(freeForOthers(first));
  EXPECT_FALSE(freeForOthers(second));
  lockOfSecond.reset();
  EXPECT_TRUE(freeForOthers(second));
}

TEST(DeadLockFreeLocker, LetsOneThreadInAtATime) {
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 2000;
  const test::LogCapture log;
  boost::recursive_timed_mutex mutex;
  boost::barrier start(THREADS);
  int counter = 0;
  std::vector<std::thread> threads;
  threads.reserve(THREADS);
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&] {
      start.wait();
      for (int round = 0; round < ROUNDS; ++round) {
        CThread::myCThread(0)->sourceLocation(__FILE__, __LINE__);
        const DeadLockFreeLocker outer(mutex, "mutex", "", 0);
        const DeadLockFreeLocker inner(mutex, "mutex", "", 0);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, THREADS * ROUNDS);
  EXPECT_TRUE(log.lines().empty());
}

TEST(DeadLockFreeLocker, WarnsWithBothPlacesAndGetsTheLockInTheEnd) {
  const test::LogCapture log;
  const Limit limit(milliseconds(20));
  boost::recursive_timed_mutex mutex;
  bool obtained = false;
  std::thread waiter;
  {
    CThread::myCThread(0)->sourceLocation("Holder.cpp", 11);
    const DeadLockFreeLocker lock(mutex, "valMutex_", "", 0);
    // What the holder notes later is about another lock.
    CThread::myCThread(0)->sourceLocation("Elsewhere.cpp", 33);
    waiter = std::thread([&] {
      CThread::myCThread(0)->sourceLocation("Waiter.cpp", 22);
      const DeadLockFreeLocker wanted(mutex, "valMutex_", "", 0);
      obtained = true;
    });
    waitForWarnings(log, 1);
    EXPECT_FALSE(obtained);
  }
  waiter.join();
  EXPECT_TRUE(obtained);

  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, WARN);
  EXPECT_EQ(lines[0].text,
            "DeadLockFreeLocker::DeadLockFreeLocker: valMutex_ not free after 20 ms: taken at Holder.cpp:11, wanted at "
            "Waiter.cpp:22, waiting on");
}

TEST(DeadLockFreeLocker, NamesTheFirstPlaceOfAHolderThatLockedTwice) {
  const test::LogCapture log;
  const Limit limit(milliseconds(1));
  boost::recursive_timed_mutex mutex;
  std::thread waiter;
  {
    CThread::myCThread(0)->sourceLocation("Outer.cpp", 1);
    const DeadLockFreeLocker outer(mutex, "mutex", "", 0);
    CThread::myCThread(0)->sourceLocation("Inner.cpp", 2);
    { const DeadLockFreeLocker inner(mutex, "mutex", "", 0); }
    waiter = std::thread([&] { const DeadLockFreeLocker wanted(mutex, "mutex", "", 0); });
    waitForWarnings(log, 1);
  }
  waiter.join();
  EXPECT_THAT(log.texts().front(), HasSubstr("taken at Outer.cpp:1,"));
}

TEST(DeadLockFreeLocker, WarnsOfAHolderThatUsesNoLocker) {
  const test::LogCapture log;
  const Limit limit(milliseconds(1));
  boost::recursive_timed_mutex mutex;
  mutex.lock();
  std::thread waiter([&] {
    CThread::myCThread(0)->sourceLocation("Waiter.cpp", 22);
    const DeadLockFreeLocker wanted(mutex, "mutex", "the description", 0);
  });
  waitForWarnings(log, 1);
  mutex.unlock();
  waiter.join();
  EXPECT_EQ(log.texts().front(),
            "DeadLockFreeLocker::DeadLockFreeLocker: mutex (the description) not free after 1 ms: taken at an unknown "
            "place, wanted at Waiter.cpp:22, waiting on");
}

TEST(DeadLockFreeLocker, SetsTheLoggerUpBeforeTheFirstLine) {
  const test::LogBeforeTheFirstLine before;
  const Limit limit(milliseconds(1));
  boost::recursive_timed_mutex mutex;
  testing::internal::CaptureStderr();
  mutex.lock();
  std::thread waiter([&mutex] { const DeadLockFreeLocker wanted(mutex, "the first mutex", "", 0); });
  while (!Logger::hasBeenInitialized) std::this_thread::yield();
  mutex.unlock();
  waiter.join();
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("the first mutex"));
}

TEST(DeadLockFreeLocker, WarnsOnlyOnceInAWait) {
  const test::LogCapture log;
  const Limit limit(milliseconds(10));
  const std::vector<const char*> names{"first", "second", "third", "fourth"};
  boost::recursive_timed_mutex mutex;
  std::vector<std::thread> waiters;
  waiters.reserve(names.size());
  {
    const DeadLockFreeLocker lock(mutex, "mutex", "", 0);
    // Each waiter comes when the one before has warned, so the first has waited for several limits in the end.
    for (const char* name : names) {
      waiters.emplace_back([&mutex, name] { const DeadLockFreeLocker wanted(mutex, name, "", 0); });
      while (!testing::Value(log.texts(), Contains(HasSubstr(name)))) std::this_thread::yield();
    }
  }
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(log.count(WARN), names.size());
}

TEST(DeadLockFreeLocker, WarnsAfterTenSecondsUnlessSet) {
  EXPECT_EQ(DeadLockFreeLocker::warnAfter(), seconds(10));
  {
    const Limit limit(milliseconds(5));
    EXPECT_EQ(DeadLockFreeLocker::warnAfter(), milliseconds(5));
  }
  EXPECT_EQ(DeadLockFreeLocker::warnAfter(), seconds(10));
}

TEST(DeadLockFreeLocker, KeepsTheLimitWithinADay) {
  const Limit limit(milliseconds(-1));
  EXPECT_EQ(DeadLockFreeLocker::warnAfter(), milliseconds(0));
  DeadLockFreeLocker::warnAfter(milliseconds::max());
  EXPECT_EQ(DeadLockFreeLocker::warnAfter(), hours(24));
}

}  // namespace
}  // namespace qx

#include "vso/connectors/LockingQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "support/Loopback.h"
#include "tests/vso/connectors/WatchedQueue.h"

namespace qx {
namespace {

using test::waitUntil;

template <typename T>
T popped(LockingQueue<T>& queue) {
  T item{};
  queue.pop(item);
  return item;
}

TEST(LockingQueue, FirstInIsFirstOut) {
  LockingQueue<std::string> queue;
  queue.push("one");
  queue.push("two");
  EXPECT_EQ("one", popped(queue));
  queue.push("three");
  EXPECT_EQ("two", popped(queue));
  EXPECT_EQ("three", popped(queue));
}

TEST(LockingQueue, PopReplacesWhatWasThere) {
  LockingQueue<std::vector<int>> queue;
  queue.push({1, 2});
  std::vector<int> out{7, 8, 9};
  queue.pop(out);
  EXPECT_THAT(out, testing::ElementsAre(1, 2));
}

TEST(LockingQueue, PushCopiesAndPopKeepsNothing) {
  LockingQueue<std::shared_ptr<int>> queue;
  const auto item = std::make_shared<int>(5);
  queue.push(item);
  EXPECT_EQ(2, item.use_count());
  EXPECT_EQ(item, popped(queue));
  EXPECT_EQ(1, item.use_count());
}

TEST(LockingQueue, PopBlocksUntilThereIsAnItem) {
  test::WatchedQueue<LockingQueue<int>> queue;
  std::atomic<int> result{0};
  std::thread waiting([&] { result = popped(queue); });
  for (int i = 0; i < 10; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    queue.wakeForNoReason();
  }
  EXPECT_EQ(0, result);
  queue.push(42);
  waiting.join();
  EXPECT_EQ(42, result);
}

TEST(LockingQueue, EachPushWakesOneWhoWaits) {
  constexpr int WAITERS = 5;
  LockingQueue<int> queue;
  std::atomic<int> returned{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < WAITERS; ++i) {
    waiters.emplace_back([&] {
      popped(queue);
      ++returned;
    });
  }
  for (int pushed = 1; pushed <= WAITERS; ++pushed) {
    queue.push(pushed);
    EXPECT_TRUE(waitUntil([&] { return returned == pushed; }));
    EXPECT_EQ(pushed, returned);
  }
  for (std::thread& waiter : waiters) waiter.join();
}

TEST(LockingQueue, ItemsOfOneProducerStayInOrder) {
  constexpr int COUNT = 5000;
  LockingQueue<int> queue;
  std::thread producer([&queue] {
    for (int i = 1; i <= COUNT; ++i) queue.push(i);
  });
  for (int i = 1; i <= COUNT; ++i) ASSERT_EQ(i, popped(queue));
  producer.join();
}

TEST(LockingQueue, ManyThreadsGetEveryItemOnce) {
  constexpr int THREADS = 4;
  constexpr int EACH = 2000;
  LockingQueue<int> queue;
  std::vector<std::atomic<int>> seen(THREADS * EACH);
  std::vector<std::thread> threads;
  for (int t = 0; t < THREADS; ++t) {
    threads.emplace_back([&queue, t] {
      for (int i = 0; i < EACH; ++i) queue.push(t * EACH + i);
    });
    threads.emplace_back([&queue, &seen] {
      for (int i = 0; i < EACH; ++i) ++seen[static_cast<std::size_t>(popped(queue))];
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::atomic<int>& count : seen) ASSERT_EQ(1, count);
}

TEST(LockingQueue, WaitingIsAnInterruptionPoint) {
  LockingQueue<int> queue;
  bool wasInterrupted = false;
  boost::thread thread([&] {
    try {
      popped(queue);
    } catch (const boost::thread_interrupted&) {
      wasInterrupted = true;
    }
  });
  thread.interrupt();
  thread.join();
  EXPECT_TRUE(wasInterrupted);
  queue.push(3);
  EXPECT_EQ(3, popped(queue));
}

TEST(LockingQueue, IsNotCopiedAndHasAVirtualDestructor) {
  EXPECT_TRUE(std::has_virtual_destructor_v<LockingQueue<int>>);
  EXPECT_FALSE(std::is_copy_constructible_v<LockingQueue<int>>);
  EXPECT_FALSE(std::is_copy_assignable_v<LockingQueue<int>>);
}

}  // namespace
}  // namespace qx

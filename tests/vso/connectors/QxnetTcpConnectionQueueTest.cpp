#include "vso/connectors/QxnetTcpConnectionQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/chrono/duration.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/thread/thread.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <set>
#include <thread>
#include <type_traits>
#include <vector>

#include "qxnet/TCPConnection.h"
#include "support/Loopback.h"
#include "tests/vso/connectors/WatchedQueue.h"

namespace qx {
namespace {

using boost::chrono::milliseconds;
using net::stream::TCPConnection;
using test::waitUntil;

class QxnetTcpConnectionQueueTest : public testing::Test {
 protected:
  QxnetTcpConnectionPtr connection() { return boost::make_shared<TCPConnection>(context); }

  /// Whether `pop`, called on an empty queue, still waits after a while, even if it is woken for no reason; and then
  /// gives what is pushed.
  void expectToBlock(const std::function<QxnetTcpConnectionPtr()>& pop) {
    const QxnetTcpConnectionPtr item = connection();
    std::atomic<bool> hasReturned{false};
    QxnetTcpConnectionPtr popped;
    std::thread waiting([&] {
      popped = pop();
      hasReturned = true;
    });
    for (int i = 0; i < 10; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      queue.wakeForNoReason();
    }
    EXPECT_FALSE(hasReturned);
    queue.push(item);
    waiting.join();
    EXPECT_EQ(item, popped);
    EXPECT_EQ(nullptr, queue.front());
  }

  boost::asio::io_context context;
  test::WatchedQueue<QxnetTcpConnectionQueue> queue;
};

TEST_F(QxnetTcpConnectionQueueTest, IsALockingQueueOfConnections) {
  EXPECT_TRUE((std::is_base_of_v<LockingQueue<boost::shared_ptr<TCPConnection>>, QxnetTcpConnectionQueue>));
  EXPECT_TRUE(std::has_virtual_destructor_v<QxnetTcpConnectionQueue>);
}

TEST_F(QxnetTcpConnectionQueueTest, FirstInIsFirstOut) {
  const QxnetTcpConnectionPtr items[] = {connection(), connection(), connection()};
  for (const QxnetTcpConnectionPtr& item : items) queue.push(item);
  EXPECT_EQ(items[0], queue.pop());
  EXPECT_EQ(items[1], queue.pop(milliseconds(1)));
  QxnetTcpConnectionPtr last;
  queue.pop(last);
  EXPECT_EQ(items[2], last);
  EXPECT_EQ(nullptr, queue.front());
}

TEST_F(QxnetTcpConnectionQueueTest, FrontOfAnEmptyOneIsEmptyAtOnce) {
  EXPECT_EQ(nullptr, queue.front());
  EXPECT_EQ(nullptr, queue.front());
}

TEST_F(QxnetTcpConnectionQueueTest, FrontStaysInTheQueue) {
  const QxnetTcpConnectionPtr first = connection();
  queue.push(first);
  queue.push(connection());
  EXPECT_EQ(first, queue.front());
  EXPECT_EQ(first, queue.front());
  EXPECT_EQ(2, first.use_count());  // the test's and the queue's
  EXPECT_EQ(first, queue.pop());
}

TEST_F(QxnetTcpConnectionQueueTest, KeepsNothingOfWhatWasTaken) {
  const QxnetTcpConnectionPtr item = connection();
  const std::function<QxnetTcpConnectionPtr()> pops[] = {
      [this] { return queue.pop(); },
      [this] { return queue.pop(milliseconds(0)); },
      [this] { return queue.pop(milliseconds(1)); },
  };
  for (const auto& pop : pops) {
    queue.push(item);
    EXPECT_EQ(2, item.use_count());
    EXPECT_EQ(item, pop());
    EXPECT_EQ(1, item.use_count());
  }
}

TEST_F(QxnetTcpConnectionQueueTest, EmptyPointerIsAnItem) {
  queue.push({});
  queue.push(connection());
  EXPECT_EQ(nullptr, queue.pop());
  EXPECT_NE(nullptr, queue.front());
}

TEST_F(QxnetTcpConnectionQueueTest, PopBlocks) {
  expectToBlock([this] { return queue.pop(); });
}

TEST_F(QxnetTcpConnectionQueueTest, PopIntoAnArgumentBlocks) {
  expectToBlock([this] {
    QxnetTcpConnectionPtr out;
    queue.pop(out);
    return out;
  });
}

TEST_F(QxnetTcpConnectionQueueTest, PopOfZeroMillisecondsBlocks) {
  expectToBlock([this] { return queue.pop(milliseconds(0)); });
}

TEST_F(QxnetTcpConnectionQueueTest, PopOfANegativeTimeBlocks) {
  expectToBlock([this] { return queue.pop(milliseconds(-1)); });
  expectToBlock([this] { return queue.pop((milliseconds::min)()); });
}

TEST_F(QxnetTcpConnectionQueueTest, PopOfOneMillisecondComesBackEmpty) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(nullptr, queue.pop(milliseconds(1)));
  const auto elapsed = std::chrono::steady_clock::now() - begin;
  EXPECT_LE(std::chrono::milliseconds(1), elapsed);
  EXPECT_GT(test::PATIENCE, elapsed);
}

TEST_F(QxnetTcpConnectionQueueTest, PopWaitsForTheWholeTime) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(nullptr, queue.pop(milliseconds(120)));
  const auto elapsed = std::chrono::steady_clock::now() - begin;
  EXPECT_LE(std::chrono::milliseconds(120), elapsed);
  EXPECT_GT(test::PATIENCE, elapsed);
}

TEST_F(QxnetTcpConnectionQueueTest, PopWithATimeTakesWhatIsThereAtOnce) {
  const QxnetTcpConnectionPtr item = connection();
  queue.push(item);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(item, queue.pop(milliseconds(3600 * 1000)));
  EXPECT_GT(test::PATIENCE, std::chrono::steady_clock::now() - begin);
}

TEST_F(QxnetTcpConnectionQueueTest, PopWithATimeTakesWhatComesMeanwhile) {
  const QxnetTcpConnectionPtr item = connection();
  for (const milliseconds timeout : {milliseconds(3600 * 1000), (milliseconds::max)(),
                                     milliseconds((std::numeric_limits<std::int64_t>::max)() / 1000000),
                                     milliseconds((std::numeric_limits<std::int64_t>::max)() / 1000000 + 1)}) {
    QxnetTcpConnectionPtr popped;
    std::atomic<bool> hasReturned{false};
    std::thread waiting([&] {
      popped = queue.pop(timeout);
      hasReturned = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(hasReturned) << timeout.count();
    queue.push(item);
    waiting.join();
    EXPECT_EQ(item, popped) << timeout.count();
    if (!popped) queue.pop();
  }
}

TEST_F(QxnetTcpConnectionQueueTest, PopWithATimeWaitsOnlyOnce) {
  std::atomic<bool> hasReturned{false};
  QxnetTcpConnectionPtr popped = connection();
  std::thread waiting([&] {
    popped = queue.pop(milliseconds(3600 * 1000));
    hasReturned = true;
  });
  EXPECT_TRUE(waitUntil([&] {
    queue.wakeForNoReason();
    return hasReturned.load();
  }));
  if (!hasReturned) queue.push({});
  waiting.join();
  EXPECT_EQ(nullptr, popped);
}

TEST_F(QxnetTcpConnectionQueueTest, WaitingIsAnInterruptionPoint) {
  const std::function<void()> waits[] = {
      [this] { queue.pop(); },
      [this] { queue.pop(milliseconds(0)); },
      [this] { queue.pop(milliseconds(3600 * 1000)); },
      [this] {
        QxnetTcpConnectionPtr out;
        queue.pop(out);
      },
  };
  for (const auto& wait : waits) {
    bool wasInterrupted = false;
    boost::thread thread([&] {
      try {
        wait();
      } catch (const boost::thread_interrupted&) {
        wasInterrupted = true;
      }
    });
    thread.interrupt();
    thread.join();
    EXPECT_TRUE(wasInterrupted);
    // The mutex is free again.
    const QxnetTcpConnectionPtr item = connection();
    queue.push(item);
    EXPECT_EQ(item, queue.pop());
  }
}

TEST_F(QxnetTcpConnectionQueueTest, GivesEveryItemOnceAmongManyThreads) {
  constexpr std::size_t PRODUCERS = 3;
  constexpr std::size_t CONSUMERS = 4;
  constexpr std::size_t EACH = 400;
  std::vector<std::vector<QxnetTcpConnectionPtr>> pushed(PRODUCERS);
  for (auto& items : pushed) {
    for (std::size_t i = 0; i < EACH; ++i) items.push_back(connection());
  }
  std::atomic<std::size_t> taken{0};
  std::vector<std::vector<QxnetTcpConnectionPtr>> popped(CONSUMERS);
  std::vector<std::thread> threads;
  for (std::size_t c = 0; c < CONSUMERS; ++c) {
    threads.emplace_back([&, c] {
      for (;;) {
        const QxnetTcpConnectionPtr item = c % 2 == 0 ? queue.pop() : queue.pop(milliseconds(1));
        if (!item && c % 2 == 0) return;
        if (item) ++taken;
        if (item) popped[c].push_back(item);
        if (!item && taken == PRODUCERS * EACH) return;
      }
    });
  }
  std::vector<std::thread> producers;
  for (const auto& items : pushed) {
    producers.emplace_back([this, &items] {
      for (const QxnetTcpConnectionPtr& item : items) {
        queue.push(item);
        queue.front();
      }
    });
  }
  for (std::thread& producer : producers) producer.join();
  EXPECT_TRUE(waitUntil([&] { return taken == PRODUCERS * EACH; }));
  for (std::size_t c = 1; c < CONSUMERS; c += 2) threads[c].join();
  for (std::size_t c = 0; c < CONSUMERS; c += 2) queue.push({});  // an end for those that wait without one
  for (std::size_t c = 0; c < CONSUMERS; c += 2) threads[c].join();
  std::set<QxnetTcpConnectionPtr> all;
  for (const auto& items : popped) all.insert(items.begin(), items.end());
  EXPECT_EQ(PRODUCERS * EACH, all.size());
}

}  // namespace
}  // namespace qx

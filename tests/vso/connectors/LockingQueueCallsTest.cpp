// The queues where the system has no mutex left, and where threads are woken and interrupted at once.
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/chrono/duration.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/thread/thread.hpp>
#include <ctime>
#include <functional>
#include <ostream>
#include <utility>

#include "qxnet/TCPConnection.h"
#include "support/Loopback.h"
#include "support/ThreadCalls.h"
#include "support/ThreadResources.h"
#include "tests/vso/connectors/WatchedQueue.h"
#include "tests/vso/runtime/Threads.h"
#include "vso/connectors/LockingQueue.h"
#include "vso/connectors/QxnetTcpConnectionQueue.h"

namespace qx {
namespace {

using boost::chrono::milliseconds;
using test::ThreadCalls;
using test::waitUntil;

// A mutex, and a condition variable, which has another mutex inside.
constexpr int MEMBERS = 3;

TEST(LockingQueue, NeedsItsMutexAndItsConditionVariable) {
  test::expectToNeed(MEMBERS, [] { LockingQueue<int> queue; });
}

TEST(LockingQueue, WaitsByTheMonotonicClock) {
  const LockingQueue<int> queue;
  EXPECT_EQ(CLOCK_MONOTONIC, ThreadCalls::clock);
}

TEST(QxnetTcpConnectionQueue, NeedsItsMutexAndItsConditionVariable) {
  test::expectToNeed(MEMBERS, [] { QxnetTcpConnectionQueue queue; });
}

TEST(QxnetTcpConnectionQueue, WaitsByTheMonotonicClock) {
  const QxnetTcpConnectionQueue queue;
  EXPECT_EQ(CLOCK_MONOTONIC, ThreadCalls::clock);
}

using Queue = test::WatchedQueue<QxnetTcpConnectionQueue>;

struct Pop {
  const char* name;
  std::function<QxnetTcpConnectionPtr(Queue&)> pop;
};

std::ostream& operator<<(std::ostream& out, const Pop& pop) { return out << pop.name; }

/// A thread that takes one item.
struct Taker {
  void begin(Queue& queue, const Pop& pop) {
    thread = boost::thread([this, &queue, &pop] {
      number = ::gettid();
      ThreadCalls::watched = true;
      ThreadCalls::afterAWait = [this] { wasWoken = true; };
      try {
        taken = pop.pop(queue);
      } catch (const boost::thread_interrupted&) {
        wasInterrupted = true;
      }
      hasEnded = true;
    });
  }

  std::atomic<pid_t> number{0};
  std::atomic<bool> wasWoken{false};
  std::atomic<bool> hasEnded{false};
  bool wasInterrupted = false;
  QxnetTcpConnectionPtr taken;
  boost::thread thread;
};

class QueueWithTwoTakers : public testing::TestWithParam<Pop> {};

TEST_P(QueueWithTwoTakers, PassesOnTheWakeUpOfOneThatIsInterrupted) {
  boost::asio::io_context context;
  const auto item = boost::make_shared<net::stream::TCPConnection>(context);
  Queue queue;
  std::array<Taker, 2> takers;
  const int waitsBefore = ThreadCalls::waits;
  for (Taker& taker : takers) taker.begin(queue, GetParam());
  EXPECT_TRUE(waitUntil([&] { return ThreadCalls::waits == waitsBefore + 2; }));
  Taker* interrupted = &takers[0];
  Taker* other = &takers[1];
  {
    const auto lock = queue.lock();
    queue.pushLocked(item);
    EXPECT_TRUE(waitUntil([&] { return takers[0].wasWoken || takers[1].wasWoken; }));
    if (!interrupted->wasWoken) std::swap(interrupted, other);
    // Until it has left the wait and wants the queue's mutex: then an interruption wakes nobody else.
    EXPECT_TRUE(waitUntil([&] { return test::sleeps(interrupted->number); }));
    interrupted->thread.interrupt();
  }
  const bool wasPassedOn = waitUntil([&] { return other->hasEnded.load(); });
  EXPECT_TRUE(wasPassedOn);
  if (!wasPassedOn) other->thread.interrupt();
  for (Taker& taker : takers) taker.thread.join();
  EXPECT_TRUE(interrupted->wasInterrupted);
  EXPECT_EQ(item, other->taken);
  EXPECT_EQ(nullptr, queue.front());
}

INSTANTIATE_TEST_SUITE_P(All, QueueWithTwoTakers,
                         testing::Values(Pop{"IntoAnArgument",
                                             [](Queue& queue) {
                                               QxnetTcpConnectionPtr out;
                                               queue.pop(out);
                                               return out;
                                             }},
                                         Pop{"WithoutALimit", [](Queue& queue) { return queue.pop(); }},
                                         Pop{"OfZero", [](Queue& queue) { return queue.pop(milliseconds(0)); }},
                                         Pop{"WithALimit",
                                             [](Queue& queue) { return queue.pop(milliseconds(3600 * 1000)); }}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace qx

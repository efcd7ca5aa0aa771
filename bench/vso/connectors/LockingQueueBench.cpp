// Items through a queue from one thread to another, beside the same through a bare mutex and condition variable. By the
// clock, since much of it is the waking of a thread.
#include "vso/connectors/LockingQueue.h"

#include <benchmark/benchmark.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace {

using Item = boost::shared_ptr<int>;

class BareQueue {
 public:
  void push(const Item& item) {
    const std::lock_guard<std::mutex> lock(mutex_);
    items_.push_back(item);
    condition_.notify_one();
  }
  void pop(Item& out) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (items_.empty()) condition_.wait(lock);
    out = std::move(items_.front());
    items_.pop_front();
  }

 private:
  std::deque<Item> items_;
  std::mutex mutex_;
  std::condition_variable condition_;
};

/// One item goes over and one comes back.
template <typename Queue>
void passBack(benchmark::State& state) {
  Queue there;
  Queue back;
  const Item item = boost::make_shared<int>(1);
  std::thread other([&] {
    for (Item taken;;) {
      there.pop(taken);
      if (!taken) return;
      back.push(taken);
    }
  });
  Item returned;
  for (auto _ : state) {
    there.push(item);
    back.pop(returned);
  }
  there.push(nullptr);
  other.join();
}

void QueueHandOver_limit(benchmark::State& state) { passBack<BareQueue>(state); }
BENCHMARK(QueueHandOver_limit)->UseRealTime();

void QueueHandOver(benchmark::State& state) { passBack<qx::LockingQueue<Item>>(state); }
BENCHMARK(QueueHandOver)->UseRealTime();

/// Nobody waits: what the queue itself costs.
template <typename Queue>
void pushAndPop(benchmark::State& state) {
  Queue queue;
  const Item item = boost::make_shared<int>(1);
  Item taken;
  for (auto _ : state) {
    queue.push(item);
    queue.pop(taken);
    benchmark::DoNotOptimize(taken);
  }
}

void QueuePushPop_limit(benchmark::State& state) { pushAndPop<BareQueue>(state); }
BENCHMARK(QueuePushPop_limit);

void QueuePushPop(benchmark::State& state) { pushAndPop<qx::LockingQueue<Item>>(state); }
BENCHMARK(QueuePushPop);

}  // namespace

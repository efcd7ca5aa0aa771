// A value handed to another thread and one handed back, beside the same through a bare condition variable. By the
// clock, since most of it is the waking of threads.
#include "vso/runtime/WaitableBool.h"

#include <benchmark/benchmark.h>

#include <boost/thread/condition_variable.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <thread>

namespace {

/// The least that hands a value over.
class BareHandOver {
 public:
  void set(bool value) {
    const boost::lock_guard<boost::mutex> lock(mutex_);
    value_ = value;
    isSet_ = true;
    condition_.notify_all();
  }
  bool take() {
    boost::unique_lock<boost::mutex> lock(mutex_);
    while (!isSet_) condition_.wait(lock);
    isSet_ = false;
    return value_;
  }

 private:
  boost::mutex mutex_;
  boost::condition_variable condition_;
  bool isSet_ = false;
  bool value_ = false;
};

class FlagHandOver {
 public:
  void set(bool value) { flag_.set(value); }
  bool take() {
    const bool value = flag_.get();
    flag_.reset();  // no lock needed: the other side sets again only after it has had an answer
    return value;
  }

 private:
  qx::WaitableBool flag_;
};

template <typename HandOver>
void handOver(benchmark::State& state) {
  HandOver there;
  HandOver back;
  std::thread other([&] {
    while (there.take()) back.set(true);
  });
  for (auto _ : state) {
    there.set(true);
    const bool answer = back.take();
    benchmark::DoNotOptimize(answer);
  }
  there.set(false);
  other.join();
}

void HandOver_limit(benchmark::State& state) { handOver<BareHandOver>(state); }
BENCHMARK(HandOver_limit)->UseRealTime();

void HandOver(benchmark::State& state) { handOver<FlagHandOver>(state); }
BENCHMARK(HandOver)->UseRealTime();

}  // namespace

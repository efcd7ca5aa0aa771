// Reading each flag, beside taking the same uncontended mutexes.
#include <benchmark/benchmark.h>

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/recursive_mutex.hpp>

#include "vso/runtime/DeposableBool.h"
#include "vso/runtime/ReferencedBool.h"
#include "vso/runtime/StringFlag.h"
#include "vso/runtime/WaitableBool.h"

namespace {

using TimedLock = boost::lock_guard<boost::recursive_timed_mutex>;
using Lock = boost::lock_guard<boost::recursive_mutex>;

/// Takes two mutexes as two flags' reads do, and reads a value under them.
void takeTwo(benchmark::State& state) {
  boost::recursive_timed_mutex first;
  boost::recursive_timed_mutex second;
  bool value = true;
  for (auto _ : state) {
    const TimedLock firstLock(first);
    const TimedLock secondLock(second);
    benchmark::DoNotOptimize(value);
  }
}

void takeOne(benchmark::State& state) {
  boost::recursive_mutex mutex;
  bool value = true;
  for (auto _ : state) {
    const Lock lock(mutex);
    benchmark::DoNotOptimize(value);
  }
}

template <typename Flag>
void read(benchmark::State& state, const Flag& flag) {
  for (auto _ : state) {
    const bool value = flag;
    benchmark::DoNotOptimize(value);
  }
}

void DeposableBoolRead_limit(benchmark::State& state) { takeTwo(state); }
BENCHMARK(DeposableBoolRead_limit);

void DeposableBoolRead(benchmark::State& state) {
  qx::DeposableBool flag(true);
  flag.elect("maintenance");
  read(state, flag);
}
BENCHMARK(DeposableBoolRead);

void ReferencedBoolRead_limit(benchmark::State& state) { takeTwo(state); }
BENCHMARK(ReferencedBoolRead_limit);

void ReferencedBoolRead(benchmark::State& state) {
  qx::ReferencedBool flag(true);
  flag++;
  read(state, flag);
}
BENCHMARK(ReferencedBoolRead);

void StringFlagRead_limit(benchmark::State& state) { takeOne(state); }
BENCHMARK(StringFlagRead_limit);

void StringFlagRead(benchmark::State& state) {
  qx::StringFlag flag;
  flag.set("maintenance");
  read(state, flag);
}
BENCHMARK(StringFlagRead);

void WaitableBoolValue_limit(benchmark::State& state) { takeOne(state); }
BENCHMARK(WaitableBoolValue_limit);

void WaitableBoolValue(benchmark::State& state) {
  const qx::WaitableBool flag(true);
  for (auto _ : state) {
    const bool value = flag.value();
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(WaitableBoolValue);

}  // namespace

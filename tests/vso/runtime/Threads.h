// Several threads at the same work.
#pragma once

#include <boost/thread/barrier.hpp>
#include <functional>
#include <thread>
#include <vector>

namespace qx::test {

constexpr int THREADS = 4;

/// Calls `work` with 0 to THREADS - 1, each on a thread of its own, all beginning at once, and waits for them.
inline void onEachThread(const std::function<void(int)>& work) {
  boost::barrier begin(THREADS);
  std::vector<std::thread> threads;
  threads.reserve(THREADS);
  for (int thread = 0; thread < THREADS; ++thread) {
    threads.emplace_back([&begin, &work, thread] {
      begin.wait();
      work(thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace qx::test

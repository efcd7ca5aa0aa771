// Several threads at the same work, and calls on threads that may get stuck.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <boost/thread/barrier.hpp>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
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

/// True if this thread of the process waits for something.
inline bool sleeps(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string stat;
  std::getline(file, stat);
  const std::size_t name = stat.rfind(')');
  return name != std::string::npos && stat.compare(name + 1, 2, " S") == 0;
}

/// A call on a thread of its own. One that never ends fails a test but does not hold it up: nobody joins the thread.
/// What the call uses is to live until it ends, if that can be seen to, or else to be the call's own.
template <typename Result>
class Elsewhere {
 public:
  /// Begins the call; its thread runs by the time that this returns.
  template <typename Work>
  explicit Elsewhere(Work work) {
    std::packaged_task<Result()> call(std::move(work));
    result_ = call.get_future();
    std::promise<pid_t> begun;
    std::future<pid_t> thread = begun.get_future();
    std::thread([call = std::move(call), begun = std::move(begun)]() mutable {
      begun.set_value(::gettid());
      call();
    }).detach();
    thread_ = thread.get();
  }

  bool ends() const { return result_.wait_for(PATIENCE) == std::future_status::ready; }

  /// True if the call has not ended and waits for something. Where its thread has not come as far, that is waited for.
  bool blocks() const {
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (std::chrono::steady_clock::now() < deadline) {
      if (result_.wait_for(std::chrono::milliseconds(20)) == std::future_status::ready) return false;
      if (sleeps(thread_)) return true;
    }
    return false;
  }

  /// What the call gives. Throws what it throws, and std::runtime_error if it does not end.
  Result get() {
    if (!ends()) throw std::runtime_error("A call on another thread is stuck");
    return result_.get();
  }

 private:
  static constexpr std::chrono::seconds PATIENCE{30};

  std::future<Result> result_;
  pid_t thread_ = 0;
};

template <typename Work>
Elsewhere(Work) -> Elsewhere<std::invoke_result_t<Work&>>;

}  // namespace qx::test

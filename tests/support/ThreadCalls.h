// What a program asks of the system's threads.
#pragma once

#include <atomic>
#include <functional>

namespace qx::test {

/// In a program that has ThreadCalls.cpp, mutexes and condition variables are counted as they come and go, and can
/// fail to be made.
struct ThreadCalls {
  /// Mutexes and condition variables that this thread made and did not destroy.
  inline static thread_local int alive = 0;
  /// The waits of all threads that are watched: those for the end of a thread are none of a test's.
  inline static std::atomic<int> waits{0};
  inline static thread_local bool watched = false;
  /// Called whenever this thread has been woken, for whatever reason, before it takes any other lock.
  inline static thread_local std::function<void()> afterAWait;
  /// The calls of this thread that wake others.
  inline static thread_local int wakesOfAll = 0;
  inline static thread_local int wakesOfOne = 0;
  /// Called once, right before this thread wakes all others that wait.
  inline static thread_local std::function<void()> beforeAWakeOfAll;
  /// The clock of the condition variable that this thread made last.
  inline static thread_local int clock = -1;
  /// What this thread may make until it fails; without a limit below 0.
  inline static thread_local int makesLeft = -1;
};

}  // namespace qx::test

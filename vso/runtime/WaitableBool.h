// A value that a thread can wait for.
#pragma once

#include <atomic>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/recursive_mutex.hpp>

namespace qx {

/// A value that is published with `set` and waited for with `get`. It is unset after default construction and after
/// either `reset`; the value itself can be read in both states. May be used from any thread.
class WaitableBool {
 public:
  /// Unset, with the value false. Both constructors throw boost::thread_resource_error if the mutex or the condition
  /// variable cannot be made.
  WaitableBool() = default;
  /// Set to `value`.
  WaitableBool(bool value) : set_(true), value_(value) {}

  WaitableBool(const WaitableBool&) = delete;
  WaitableBool& operator=(const WaitableBool&) = delete;

  /// Waits, without an end, until a value is set, and returns it. An interruption point of boost::thread: an
  /// interrupted wait throws boost::thread_interrupted.
  bool get() const;
  /// The value, at once and whether it is set or not.
  bool value() const;

  /// Publishes `value` and wakes all who wait.
  void set(bool value);
  /// Stores `value` unpublished. Who waits is woken, finds it so, and waits on.
  void reset(bool value);
  /// Withdraws the value, which stays. Takes no lock and wakes nobody: it takes effect with the next `get`, and what
  /// runs beside it may see it or not.
  void reset() { set_.store(false, std::memory_order_relaxed); }
  /// Whether a value is published. Takes no lock: what runs beside it may have changed it by the time it returns.
  bool isSet() const { return set_.load(std::memory_order_relaxed); }

 private:
  void store(bool isSet, bool value);

  mutable boost::recursive_mutex mutex_;
  // Boost makes its condition variables on the monotonic clock.
  mutable boost::condition_variable_any condition_;
  // Written under the mutex but for `reset()`; atomic because of that one.
  std::atomic<bool> set_{false};
  bool value_ = false;
};

}  // namespace qx

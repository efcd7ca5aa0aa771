// A queue between threads.
#pragma once

#include <boost/thread/condition_variable.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <deque>
#include <utility>

namespace qx {

/// First in, first out, without a bound. May be used from any thread; waiting in it is an interruption point of
/// boost::thread.
template <typename T>
class LockingQueue {
 public:
  /// Empty. Throws boost::thread_resource_error if the mutex or the condition variable cannot be made.
  LockingQueue() = default;
  virtual ~LockingQueue() = default;

  LockingQueue(const LockingQueue&) = delete;
  LockingQueue& operator=(const LockingQueue&) = delete;

  /// Appends `item` and wakes one who waits.
  void push(const T& item) {
    const boost::lock_guard<boost::mutex> lock(mutex_);
    items_.push_back(item);
    condition_.notify_one();
  }

  /// Waits, without an end, until there is an item, and moves the first into `out`.
  void pop(T& out) {
    boost::unique_lock<boost::mutex> lock(mutex_);
    passOnIfInterrupted([&] {
      while (items_.empty()) condition_.wait(lock);
    });
    out = takeFirst();
  }

 protected:
  /// Waits, with the mutex held. A thread that is woken for an item and interrupted before it has it wakes another.
  template <typename Wait>
  void passOnIfInterrupted(const Wait& wait) {
    try {
      wait();
    } catch (...) {
      if (!items_.empty()) condition_.notify_one();
      throw;
    }
  }

  /// Removes the first item. The mutex is held, and there is one.
  T takeFirst() {
    T first = std::move(items_.front());
    items_.pop_front();
    return first;
  }

  std::deque<T> items_;
  mutable boost::mutex mutex_;
  // Boost makes its condition variables on the monotonic clock.
  boost::condition_variable condition_;
};

}  // namespace qx

// A LockingQueue, or what is derived of one, whose inside a test can reach.
#pragma once

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>

namespace qx::test {

template <typename Queue>
struct WatchedQueue : Queue {
  void wakeForNoReason() {
    const boost::lock_guard<boost::mutex> lock(this->mutex_);
    this->condition_.notify_all();
  }
  /// Keeps everybody else out.
  boost::unique_lock<boost::mutex> lock() { return boost::unique_lock<boost::mutex>(this->mutex_); }
  /// `push`, for one who keeps everybody else out.
  template <typename T>
  void pushLocked(const T& item) {
    this->items_.push_back(item);
    this->condition_.notify_one();
  }
};

}  // namespace qx::test

#include "vso/runtime/WaitableBool.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/lock_types.hpp>

namespace qx {

bool WaitableBool::get() const {
  boost::unique_lock<boost::recursive_mutex> lock(mutex_);
  while (!isSet()) condition_.wait(lock);
  return value_;
}

bool WaitableBool::value() const {
  const boost::lock_guard<boost::recursive_mutex> lock(mutex_);
  return value_;
}

void WaitableBool::set(bool value) { store(true, value); }

void WaitableBool::reset(bool value) { store(false, value); }

void WaitableBool::store(bool isSet, bool value) {
  const boost::lock_guard<boost::recursive_mutex> lock(mutex_);
  set_.store(isSet, std::memory_order_relaxed);
  value_ = value;
  // Under the lock: as soon as a waiter has its value it may destroy this object.
  condition_.notify_all();
}

}  // namespace qx

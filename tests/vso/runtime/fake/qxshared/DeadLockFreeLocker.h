// Stands in for the locker: locks, and tells a test what it was asked to.
#pragma once

#include <boost/thread/recursive_mutex.hpp>
#include <string>

#include "tests/vso/runtime/LockRecord.h"

namespace qx {

class DeadLockFreeLocker {
 public:
  DeadLockFreeLocker(boost::recursive_timed_mutex& mutex, const char* name, const char* description, int flags)
      : mutex_(mutex), name_(name) {
    mutex_.lock();
    test::LockRecord::mutexes[name_].insert(&mutex_);
    test::LockRecord::add("lock " + name_ + " \"" + description + "\" " + std::to_string(flags));
  }

  ~DeadLockFreeLocker() {
    mutex_.unlock();
    test::LockRecord::add("unlock " + name_);
  }

  DeadLockFreeLocker(const DeadLockFreeLocker&) = delete;
  DeadLockFreeLocker& operator=(const DeadLockFreeLocker&) = delete;

 private:
  boost::recursive_timed_mutex& mutex_;
  const std::string name_;
};

}  // namespace qx

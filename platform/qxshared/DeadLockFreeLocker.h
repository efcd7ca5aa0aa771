// A scoped lock that reports a mutex that does not come free.

#pragma once

#include <boost/chrono/duration.hpp>

#include "qxshared/HeldLocks.h"

namespace boost {
class recursive_timed_mutex;
}

namespace qx {

/// Holds a mutex from construction to destruction, both on the same thread, which may hold it already.
///
/// Where the mutex does not come free within the limit, one warning on the root logger names it, the place in the
/// source where its holder took it and the place where it is wanted; then the waiting goes on, without an end. Places
/// are those that the threads have noted in their CThread records right before they took the mutex. The holder's is
/// known if it holds the mutex through a locker.
class DeadLockFreeLocker {
 public:
  /// Waits for `mutex` and takes it. `name` says which mutex it is, `description` what else is worth saying, or "";
  /// both are used during the call only. `flags` is reserved; callers pass 0.
  DeadLockFreeLocker(boost::recursive_timed_mutex& mutex, const char* name, const char* description, int flags);
  ~DeadLockFreeLocker();

  DeadLockFreeLocker(const DeadLockFreeLocker&) = delete;
  DeadLockFreeLocker& operator=(const DeadLockFreeLocker&) = delete;

  /// How long a locker waits before it warns: 10 seconds unless set, 0 to one day. A change is for the whole process,
  /// and for waits that begin after it.
  static boost::chrono::milliseconds warnAfter() noexcept;
  static void warnAfter(boost::chrono::milliseconds limit) noexcept;

 private:
  boost::recursive_timed_mutex& mutex_;
  detail::HeldLocks::Entry* entry_;
};

}  // namespace qx

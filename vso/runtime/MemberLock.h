// How the primitives take their member mutexes.
#pragma once

#include "qxshared/CThread.h"
#include "qxshared/DeadLockFreeLocker.h"

namespace qx::detail {

/// Holds a member mutex for a scope. Before it takes it, the thread notes in its own record where in the source that
/// is, so that whoever waits too long can be told.
class MemberLock {
 public:
  /// `name` is the member's name. The place is that of the caller.
  MemberLock(boost::recursive_timed_mutex& mutex, const char* name, const char* file = __builtin_FILE(),
             int line = __builtin_LINE())
      : locker_(mutex, noted(name, file, line), "", 0) {}

 private:
  static const char* noted(const char* name, const char* file, int line) {
    CThread::myCThread(0)->sourceLocation(file, line);
    return name;
  }

  DeadLockFreeLocker locker_;
};

}  // namespace qx::detail

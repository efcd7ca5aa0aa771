#include "qxshared/DeadLockFreeLocker.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <ostream>
#include <sstream>

#include <log4cplus/logger.h>
#include <boost/thread/recursive_mutex.hpp>

#include "qxlogger/Logger.h"
#include "qxshared/CThread.h"

namespace qx {

namespace {

using boost::chrono::milliseconds;
using detail::HeldLocks;

std::atomic<milliseconds::rep> limitInMilliseconds{10'000};

std::ostream& operator<<(std::ostream& out, const HeldLocks::Location& location) {
  return out << location.file << ':' << location.line;
}

void warn(const void* mutex, const char* name, const char* description, milliseconds waited,
          const HeldLocks::Location& waiter) noexcept {
  try {
    if (!Logger::hasBeenInitialized) Logger::initialize();
    const log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (!root.isEnabledFor(log4cplus::WARN_LOG_LEVEL)) return;
    std::ostringstream text;
    text << "DeadLockFreeLocker::DeadLockFreeLocker: " << (name != nullptr ? name : "(unnamed)");
    if (description != nullptr && *description != '\0') text << " (" << description << ')';
    text << " not free after " << waited.count() << " ms: taken at ";
    if (const std::optional<HeldLocks::Location> holder = HeldLocks::holderOf(mutex)) {
      text << *holder;
    } else {
      text << "an unknown place";
    }
    text << ", wanted at " << waiter << ", waiting on";
    root.forcedLog(log4cplus::WARN_LOG_LEVEL, text.str(), __FILE__, __LINE__, __PRETTY_FUNCTION__);
  } catch (...) {  // The lock is what the caller is here for, with or without a warning.
  }
}

}  // namespace

DeadLockFreeLocker::DeadLockFreeLocker(boost::recursive_timed_mutex& mutex, const char* name, const char* description,
                                       int /*flags*/)
    : mutex_(mutex) {
  const CThread& thread = *CThread::myCThread(0);
  const HeldLocks::Location place{thread.sourceFile(), thread.sourceLine()};
  // A clock is read only where there is something to wait for.
  if (!mutex_.try_lock()) {
    const milliseconds limit = warnAfter();
    if (!mutex_.try_lock_for(limit)) {
      warn(&mutex_, name, description, limit, place);
      mutex_.lock();
    }
  }
  entry_ = HeldLocks::mine().add(&mutex_, place.file, place.line);
}

DeadLockFreeLocker::~DeadLockFreeLocker() {
  HeldLocks::mine().remove(entry_);
  mutex_.unlock();
}

milliseconds DeadLockFreeLocker::warnAfter() noexcept { return milliseconds(limitInMilliseconds); }

void DeadLockFreeLocker::warnAfter(milliseconds limit) noexcept {
  constexpr milliseconds::rep A_DAY = 86'400'000;
  limitInMilliseconds = std::clamp<milliseconds::rep>(limit.count(), 0, A_DAY);
}

}  // namespace qx

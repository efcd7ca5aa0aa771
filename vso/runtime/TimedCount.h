// Tells when more than so many events fall into a window of time.
#pragma once

#include <boost/thread/recursive_mutex.hpp>
#include <cstdint>

#include "vso/runtime/ElapsedTimer.h"

namespace qx {

/// A counter with a window: the first event opens the window, further ones do not extend it, and when it has passed the
/// threshold no longer counts as exceeded, however high the count, until `reset` or `start`. May be used from any
/// thread.
///
/// Whatever asks the clock (all but the counts, `reset` and `running`) throws std::runtime_error, "could not convert
/// calendar time to UTC time", if the system cannot; `start` leaves the count at 0 and the window unopened then.
class TimedCount {
 public:
  /// `countThreshold` is the count that has to be exceeded, 1 to 4294967294; `milliseconds` the window, 1 to
  /// ElapsedTimer::MAX_DURATION. Throws std::runtime_error, "Invalid timer duration" or else "Invalid count threshold",
  /// and boost::thread_resource_error if a mutex cannot be made.
  TimedCount(unsigned int countThreshold, unsigned int milliseconds);

  TimedCount(const TimedCount&) = delete;
  TimedCount& operator=(const TimedCount&) = delete;

  /// Opens the window unless it was opened, and counts one up, to at most 4294967295. The window opens before the
  /// count is locked.
  TimedCount& operator++();
  /// The same, one down, to at least 0.
  TimedCount& operator--();

  /// True if the count is greater than the threshold while the window has not passed.
  bool exceededThresholds() const;
  operator bool() const { return exceededThresholds(); }

  unsigned int count() const;
  operator unsigned int() const { return count(); }
  /// Replaces the count and leaves the window alone.
  void count(unsigned int value);

  /// Count 0, no window.
  void reset();
  /// Count 0, and a window that opens now.
  void start();

  /// True when the window has passed, and before it is opened.
  bool timeExpired() const { return timer_.elapsed(); }
  /// True from the opening of the window, also when it has passed.
  bool running() const { return timer_.running(); }

 private:
  const std::uint32_t countThreshold_;
  mutable boost::recursive_mutex mutex_;
  std::uint32_t count_ = 0;
  ElapsedTimer timer_;
};

}  // namespace qx

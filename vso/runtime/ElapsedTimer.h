// A deadline that can be asked whether it has passed.
#pragma once

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/thread/recursive_mutex.hpp>
#include <cstdint>

namespace qx {

/// A one-shot deadline: it does not tick and calls nobody. A timer is idle until `start`; then it is running, and stays
/// so when its time has passed, until `stop`.
///
/// It goes by the wall clock in UTC, in microseconds: setting the system's clock moves the deadline. May be used from
/// any thread.
class ElapsedTimer {
 public:
  /// The longest duration that the constructor takes: 24 hours, in milliseconds.
  static constexpr unsigned int MAX_DURATION = 86'400'000;

  /// Idle, without a duration. Throws boost::thread_resource_error if a mutex cannot be made.
  ElapsedTimer() = default;
  /// Idle. Throws likewise, and std::runtime_error, "Invalid timer duration", for 0 and for more than MAX_DURATION.
  explicit ElapsedTimer(unsigned int milliseconds);

  ElapsedTimer(const ElapsedTimer&) = delete;
  ElapsedTimer& operator=(const ElapsedTimer&) = delete;

  /// Replaces the duration, which may be longer here than MAX_DURATION. Throws std::runtime_error, "Setting an invalid
  /// timer duration" for 0, else "Setting a running timer" while the timer runs, its time passed or not.
  void set(unsigned int milliseconds);
  /// Milliseconds; 0 if none was set.
  unsigned int duration() const;

  /// Sets the deadline; a running timer keeps the one it has. Throws std::runtime_error, "Starting a timer with zero
  /// duration", without a duration, and "could not convert calendar time to UTC time" if the system cannot.
  void start();
  /// Makes the timer idle.
  void stop();
  /// True from `start` to `stop`.
  bool running() const;

  /// True when the deadline lies before the present microsecond, and while the timer is idle. Throws
  /// std::runtime_error, "could not convert calendar time to UTC time", if the system cannot.
  bool elapsed() const;

 private:
  // Where both are held, durationMutex_ is taken first.
  mutable boost::recursive_timed_mutex durationMutex_;
  std::uint32_t duration_ = 0;
  mutable boost::recursive_timed_mutex exceedTimeMutex_;
  // Not a date and time while the timer is idle.
  boost::posix_time::ptime exceedTime_;
};

}  // namespace qx

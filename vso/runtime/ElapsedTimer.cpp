#include "vso/runtime/ElapsedTimer.h"

#include <boost/date_time/microsec_time_clock.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <stdexcept>

#include "vso/runtime/MemberLock.h"

namespace qx {

namespace {

using boost::posix_time::ptime;
using detail::MemberLock;

/// Throws std::runtime_error if the system cannot tell the time in UTC.
ptime presentTime() { return boost::posix_time::microsec_clock::universal_time(); }

boost::posix_time::time_duration microseconds(std::uint32_t milliseconds) {
  return boost::posix_time::microseconds(std::int64_t{milliseconds} * 1000);
}

}  // namespace

ElapsedTimer::ElapsedTimer(unsigned int milliseconds) : duration_(milliseconds) {
  if (milliseconds == 0 || milliseconds > MAX_DURATION) throw std::runtime_error("Invalid timer duration");
}

void ElapsedTimer::set(unsigned int milliseconds) {
  if (milliseconds == 0) throw std::runtime_error("Setting an invalid timer duration");
  // Held over the test too, so that no other thread starts the timer between test and change.
  const MemberLock duration(durationMutex_, "durationMutex_");
  if (running()) throw std::runtime_error("Setting a running timer");
  duration_ = milliseconds;
}

unsigned int ElapsedTimer::duration() const {
  const MemberLock duration(durationMutex_, "durationMutex_");
  return duration_;
}

void ElapsedTimer::start() {
  if (running()) return;
  const MemberLock duration(durationMutex_, "durationMutex_");
  if (duration_ == 0) throw std::runtime_error("Starting a timer with zero duration");
  const MemberLock exceedTime(exceedTimeMutex_, "exceedTimeMutex_");
  exceedTime_ = presentTime() + microseconds(duration_);
}

void ElapsedTimer::stop() {
  const MemberLock exceedTime(exceedTimeMutex_, "exceedTimeMutex_");
  exceedTime_ = ptime(boost::posix_time::not_a_date_time);
}

bool ElapsedTimer::running() const {
  const MemberLock exceedTime(exceedTimeMutex_, "exceedTimeMutex_");
  return !exceedTime_.is_not_a_date_time();
}

bool ElapsedTimer::elapsed() const {
  const MemberLock exceedTime(exceedTimeMutex_, "exceedTimeMutex_");
  const ptime now = presentTime();
  return !running() || exceedTime_ < now;
}

}  // namespace qx

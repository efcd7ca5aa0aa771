#include "vso/runtime/TimedCount.h"

#include <boost/thread/lock_guard.hpp>
#include <limits>
#include <stdexcept>

namespace qx {

namespace {

using Lock = boost::lock_guard<boost::recursive_mutex>;

constexpr std::uint32_t HIGHEST_COUNT = std::numeric_limits<std::uint32_t>::max();

}  // namespace

TimedCount::TimedCount(unsigned int countThreshold, unsigned int milliseconds)
    : countThreshold_(countThreshold), timer_(milliseconds) {
  // A count that stops at its highest value never exceeds that.
  if (countThreshold == 0 || countThreshold == HIGHEST_COUNT) throw std::runtime_error("Invalid count threshold");
}

TimedCount& TimedCount::operator++() {
  timer_.start();
  const Lock lock(mutex_);
  if (count_ != HIGHEST_COUNT) ++count_;
  return *this;
}

TimedCount& TimedCount::operator--() {
  timer_.start();
  const Lock lock(mutex_);
  if (count_ != 0) --count_;
  return *this;
}

bool TimedCount::exceededThresholds() const {
  const Lock lock(mutex_);
  return count_ > countThreshold_ && !timer_.elapsed();
}

unsigned int TimedCount::count() const {
  const Lock lock(mutex_);
  return count_;
}

void TimedCount::count(unsigned int value) {
  const Lock lock(mutex_);
  count_ = value;
}

void TimedCount::reset() {
  const Lock lock(mutex_);
  count_ = 0;
  timer_.stop();
}

void TimedCount::start() {
  const Lock lock(mutex_);
  count_ = 0;
  timer_.stop();
  timer_.start();
}

}  // namespace qx

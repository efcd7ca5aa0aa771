#include "vso/runtime/StringFlag.h"

#include <boost/thread/lock_guard.hpp>
#include <ostream>

namespace qx {

namespace {

using Lock = boost::lock_guard<boost::recursive_mutex>;

}  // namespace

void StringFlag::set(const std::string& name) {
  const Lock lock(mutex_);
  flags_.insert(name);
}

void StringFlag::clear(const std::string& name) {
  const Lock lock(mutex_);
  flags_.erase(name);
}

StringFlag::operator bool() const {
  const Lock lock(mutex_);
  return !flags_.empty();
}

std::ostream& operator<<(std::ostream& out, const StringFlag& flag) {
  const Lock lock(flag.mutex_);
  for (const std::string& name : flag.flags_) out << name << ' ';
  return out;
}

}  // namespace qx

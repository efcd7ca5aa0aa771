// A flag that is up while it has a name.
#pragma once

#include <boost/thread/recursive_mutex.hpp>
#include <iosfwd>
#include <set>
#include <string>

namespace qx {

/// A set of names that reads true while it is not empty. May be used from any thread, but for `get`.
class StringFlag {
 public:
  /// Empty. Throws boost::thread_resource_error if the mutex cannot be made.
  StringFlag() = default;

  StringFlag(const StringFlag&) = delete;
  StringFlag& operator=(const StringFlag&) = delete;

  /// Adds `name`, which stays once however often it is set.
  void set(const std::string& name);
  /// Removes `name`. One that is not set is no error.
  void clear(const std::string& name);

  /// True while a name is set.
  operator bool() const;

  /// The names set now. Takes no lock: must not run beside `set` or `clear`.
  std::set<std::string> get() const { return flags_; }

  /// Writes each name, in order and with a blank behind it; nothing if there is none.
  friend std::ostream& operator<<(std::ostream& out, const StringFlag& flag);

 private:
  mutable boost::recursive_mutex mutex_;
  std::set<std::string> flags_;
};

}  // namespace qx

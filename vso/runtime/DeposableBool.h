// A value that turns into its opposite while somebody has voted against it.
#pragma once

#include <boost/thread/recursive_mutex.hpp>
#include <iosfwd>
#include <set>
#include <string>

namespace qx {

/// A fixed value that reads as its opposite for as long as at least one name is elected. May be used from any thread,
/// but for `getElections`.
class DeposableBool {
 public:
  /// Holds false. All constructors throw boost::thread_resource_error if a mutex cannot be made.
  DeposableBool() = default;
  DeposableBool(bool value) : val_(value) {}

  DeposableBool(const DeposableBool&) = delete;
  DeposableBool& operator=(const DeposableBool&) = delete;

  /// The value, or its opposite while a name is elected.
  operator bool() const;

  /// Elects `name`, which stays once however often it is elected.
  void elect(const std::string& name);
  /// Takes `name` back, however often it was elected. A name that is not elected is no error.
  void depose(const std::string& name);

  /// The names elected now. Takes no lock: must not run beside `elect` or `depose`.
  std::set<std::string> getElections() const { return elections_; }

  /// Writes "VAL: true BOOL: false a b ": the value, what it reads as, and each elected name, in order and with a blank
  /// behind it. The names are read under a lock of their own, after the value: they can be newer.
  friend std::ostream& operator<<(std::ostream& out, const DeposableBool& flag);

 private:
  /// What the flag reads as. Both mutexes are held.
  bool reads() const { return elections_.empty() ? val_ : !val_; }

  // Where both are held, electionsMutex_ is taken first.
  mutable boost::recursive_timed_mutex valMutex_;
  bool val_ = false;
  mutable boost::recursive_timed_mutex electionsMutex_;
  std::set<std::string> elections_;
};

}  // namespace qx

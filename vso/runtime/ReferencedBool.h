// A value that holds only while somebody refers to it.
#pragma once

#include <boost/thread/recursive_mutex.hpp>
#include <cstdint>

namespace qx {

/// A value that reads as itself while it has a reference, and as its opposite while it has none: a new
/// `ReferencedBool()` reads true, a new `ReferencedBool(true)` reads false. May be used from any thread.
class ReferencedBool {
 public:
  /// Holds false, with no reference. All constructors throw boost::thread_resource_error if a mutex cannot be made.
  ReferencedBool() = default;
  ReferencedBool(bool value) : val_(value) {}

  ReferencedBool(const ReferencedBool&) = delete;
  ReferencedBool& operator=(const ReferencedBool&) = delete;

  /// The value with a reference, its opposite without.
  operator bool() const;

  /// Adds a reference. The count of 32 bits is not guarded against its end: behind 4294967295 comes 0.
  void operator++(int);
  /// Takes a reference away; without one, does nothing.
  void operator--(int);

  /// Stores another value; the references stay.
  ReferencedBool& operator=(bool value);

 private:
  // Where both are held, referenceCountMutex_ is taken first.
  mutable boost::recursive_timed_mutex valMutex_;
  bool val_ = false;
  mutable boost::recursive_timed_mutex referenceCountMutex_;
  std::uint32_t referenceCount_ = 0;
};

}  // namespace qx

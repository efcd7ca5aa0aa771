// Deals the sequence numbers of ZDO requests.
#pragma once

#include <atomic>
#include <boost/thread/recursive_mutex.hpp>

namespace qx {

namespace detail {

/// Adds 1 to `counter`, modulo 256, and returns it, in three steps that each guard themselves with `mutex` if they get
/// it at once, and go ahead without it otherwise. The steps are not one: of two threads that deal at the same moment
/// both may get the same number. Never waits.
template <typename Mutex>
unsigned char dealSequenceNumber(Mutex& mutex, std::atomic<unsigned char>& counter) {
  const auto guarded = [&mutex](auto step) {
    const bool isLocked = mutex.try_lock();  // Boost tries again if it was interrupted
    const unsigned char value = step();
    if (isLocked) mutex.unlock();
    return value;
  };
  // Steps that go ahead without the mutex meet others: the counter itself must bear that.
  const auto read = [&counter] { return counter.load(std::memory_order_relaxed); };
  const unsigned char last = guarded(read);
  guarded([&counter, last] {
    counter.store(static_cast<unsigned char>(last + 1), std::memory_order_relaxed);
    return last;
  });
  return guarded(read);
}

}  // namespace detail

/// The sequence numbers of all ZDO requests of the process, which are independent of those of ZCL frames. The first
/// number is 1; 255 is followed by 0, which is as good as any other.
///
/// May be called from several threads. A sender is never made to wait, at the price that two of them can get the same
/// number.
class ZdoSeqNumPeddler {
 public:
  /// The one object, made at first use. Throws boost::thread_resource_error if its mutex cannot be made.
  static ZdoSeqNumPeddler& instance();

  ZdoSeqNumPeddler(const ZdoSeqNumPeddler&) = delete;
  ZdoSeqNumPeddler& operator=(const ZdoSeqNumPeddler&) = delete;

  /// The next number.
  unsigned char next();

 private:
  ZdoSeqNumPeddler() = default;

  boost::recursive_mutex mutex_;
  std::atomic<unsigned char> last_{0};
};

}  // namespace qx

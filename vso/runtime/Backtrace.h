// What a crash report holds: the first signal, and a stack trace.
#pragma once

#include <array>
#include <boost/thread/recursive_mutex.hpp>
#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace qx {

/// Keeps the first signal that it is told and the first stack that it is made to grab, until `reset`.
///
/// `grab` may be called from a signal handler: it allocates nothing and takes no lock. The signal's operations take a
/// lock; in a handler they are safe if the interrupted thread is not within one of them. Everything that concerns the
/// trace takes no lock: one thread at a time.
class Backtrace {
 public:
  /// The most frames that are kept.
  static constexpr std::size_t MAX_FRAMES = 60;

  /// Empty. Throws boost::thread_resource_error if the mutex cannot be made.
  Backtrace();

  Backtrace(const Backtrace&) = delete;
  Backtrace& operator=(const Backtrace&) = delete;

  /// Grabs the calling thread's stack, innermost frame first, this function's own included, and returns the number of
  /// frames. If a trace was grabbed before, keeps that and returns 1.
  unsigned int grab();
  bool wasGrabbed() const { return frameCount_ != 0; }
  /// Writes a line for each frame, "Frame 07: ", the symbol and a newline, and flushes; without a trace, "No stack
  /// trace was grabbed" and no newline. (A program's own functions have names if it is linked with -rdynamic.)
  void dumptrace(std::ostream& out) const;

  /// Stores a signal's number, unless one was stored before.
  void setSig(int signal);
  /// The stored signal; 0 if none.
  int signal() const;
  bool sigWasSet() const;
  /// True if a signal is stored that is neither SIGABRT nor SIGTERM.
  bool sigIsFatal() const;
  /// Writes what the stored signal means, "Memory violation" for SIGSEGV, and nothing behind it. Without a signal
  /// writes "No signal was setUnknown signal".
  void dumpSignal(std::ostream& out) const;

  /// Forgets signal and trace.
  void reset();

 private:
  void storeSig(int signal);

  mutable boost::recursive_mutex mutex_;
  std::int32_t signal_ = 0;
  bool sigWasSet_ = false;
  std::array<void*, MAX_FRAMES> frames_{};
  std::uint32_t frameCount_ = 0;
};

}  // namespace qx

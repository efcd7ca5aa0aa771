// Calls of the system that a test answers itself.
#pragma once

#include <sys/time.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace qx::test {

/// The program that this is linked into has its own gettimeofday, usleep, select, getpid, fopen64, pthread_mutex_init,
/// backtrace and backtrace_symbols. While an object lives, they do for its thread what its members say; otherwise, and
/// for what is not set here, they do what the C library does. One object per thread at a time.
class ControlledSystem {
 public:
  ControlledSystem();
  ~ControlledSystem();
  ControlledSystem(const ControlledSystem&) = delete;
  ControlledSystem& operator=(const ControlledSystem&) = delete;

  /// What gettimeofday tells.
  std::optional<timeval> time;
  unsigned int timesAsked = 0;

  /// The arguments of usleep, which returns at once.
  std::vector<unsigned int> sleeps;

  /// A wait for descriptors.
  struct Selection {
    int count;
    std::vector<int> readable;
    std::vector<int> writable;
    std::vector<int> exceptional;
    std::optional<timeval> limit;
  };

  /// The arguments of select.
  std::vector<Selection> selections;
  /// What select tells, at once.
  std::optional<int> selected;

  /// What getpid tells.
  std::optional<pid_t> processId;

  /// Set: streams find no other file than one with this content, under any name.
  std::optional<std::string> content;
  /// Streams find no file at all.
  bool noFile = false;
  /// The names of the files that streams were to open.
  std::vector<std::string> opened;

  /// No mutex can be made.
  bool noMutex = false;

  /// Set: the stack, innermost frame first, each frame by the line that backtrace_symbols gives for it. The texts are
  /// to outlive all traces.
  std::optional<std::vector<const char*>> stack;
  /// backtrace_symbols has no memory.
  bool noSymbols = false;
  /// How many frames backtrace was asked for each time.
  std::vector<int> framesAsked;
};

}  // namespace qx::test

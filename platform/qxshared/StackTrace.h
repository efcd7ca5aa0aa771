// The calls that led to a point of the program.

#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>

namespace qx {

/// The calling thread's stack at the time of construction, innermost call first, without the constructor itself. Only
/// addresses are kept, at most 64, so that taking a trace is cheap; they get their names when the trace is printed.
class StackTrace {
 public:
  StackTrace() noexcept;

  /// Number of frames held.
  std::size_t size() const noexcept { return size_; }

  /// One line a frame, each ended by a newline: number, address, function and offset where the symbol table has them
  /// (a program has its own functions there when it is linked with -rdynamic), and the module with the offset in it, as
  /// addr2line takes it.
  friend std::ostream& operator<<(std::ostream& out, const StackTrace& trace);

 private:
  static constexpr std::size_t MAX_FRAMES = 64;

  std::array<void*, MAX_FRAMES> frames_;
  std::size_t size_ = 0;
};

}  // namespace qx

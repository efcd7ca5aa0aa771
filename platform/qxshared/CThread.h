// A thread's record of itself.

#pragma once

namespace qx {

/// What a thread notes about itself for diagnostics: where in the source it is about to take a lock. Each thread has
/// one record, which only that thread reads and writes. It exists for as long as the thread runs, also while the
/// thread's and, on the main thread, the program's other objects are destroyed.
class CThread {
 public:
  CThread(const CThread&) = delete;
  CThread& operator=(const CThread&) = delete;

  /// The calling thread's record, never null. The argument is reserved; callers pass 0.
  static CThread* myCThread(int reserved) noexcept;

  /// Notes the place of the next lock. `file` is kept as a pointer that other threads may print at any later time: pass
  /// a string literal, such as `__FILE__`. A null pointer counts as "".
  void sourceLocation(const char* file, int line) noexcept {
    file_ = file != nullptr ? file : "";
    line_ = line;
  }

  /// The place last noted; "" and 0 before any.
  const char* sourceFile() const noexcept { return file_; }
  int sourceLine() const noexcept { return line_; }

 private:
  constexpr CThread() noexcept = default;

  const char* file_ = "";
  int line_ = 0;
};

}  // namespace qx

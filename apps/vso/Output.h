// What the program writes to a descriptor, with the errors that a stream would swallow.
#pragma once

#include <string>

namespace qx::app {

class Output {
 public:
  /// Writes to an open descriptor, which stays the caller's.
  explicit Output(int descriptor) : descriptor_(descriptor) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Keeps `text` until enough has come together. Not for threads, as `flush`.
  void write(const std::string& text);
  /// Writes what was kept. Nothing is written after an error.
  void flush();
  /// The errno of the first write that failed, 0 if none did.
  int error() const { return error_; }

 private:
  int descriptor_;
  std::string kept_;
  int error_ = 0;
};

}  // namespace qx::app

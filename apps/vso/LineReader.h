// Reads a file line by line in bounded memory.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>

namespace qx::app {

/// Lines end at a newline, the last one also at the end of the file. All other bytes are taken as they are.
class LineReader {
 public:
  /// Bytes of the longest line that is kept.
  static constexpr std::size_t LONGEST_LINE = 65536;

  /// Reads from an open descriptor, which stays the caller's. `beforeRead` is called before each read, which may block.
  explicit LineReader(int descriptor, std::function<void()> beforeRead = {});

  /// Moves to the next line; false at the end and at an error.
  bool next();

  /// Without its newline. What does not fit is missing.
  const std::string& line() const { return line_; }
  bool isTooLong() const { return isTooLong_; }
  /// Counts from 1.
  unsigned long long number() const { return number_; }
  /// The errno of a read that failed, 0 if none did.
  int error() const { return error_; }

 private:
  bool fill();

  int descriptor_;
  std::function<void()> beforeRead_;
  std::array<char, 65536> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::string line_;
  bool isTooLong_ = false;
  unsigned long long number_ = 0;
  int error_ = 0;
};

}  // namespace qx::app

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

  /// Reads from an open descriptor, which stays the caller's; messages call it `name`. `beforeRead` is called before
  /// each read, which may block.
  LineReader(int descriptor, std::string name, std::function<void()> beforeRead = {});

  /// Moves to the next line; false at the end. Throws FileError if a read fails: half a line in front of that is none.
  bool next();

  /// Without its newline. What does not fit is missing.
  const std::string& line() const { return line_; }
  bool isTooLong() const { return isTooLong_; }
  /// Counts from 1.
  unsigned long long number() const { return number_; }
  /// Bytes up to the end of the line.
  unsigned long long offset() const { return offset_; }
  /// What is said of the line in a message: "frames.txt:7: REASON".
  std::string complaint(const std::string& reason) const;

 private:
  bool fill();

  int descriptor_;
  std::string name_;
  std::function<void()> beforeRead_;
  std::array<char, 65536> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::string line_;
  bool isTooLong_ = false;
  unsigned long long number_ = 0;
  unsigned long long offset_ = 0;
};

}  // namespace qx::app

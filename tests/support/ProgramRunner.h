// Runs the real program as a process of its own.
#pragma once

#include <string>
#include <vector>

namespace qx::test {

struct Outcome {
  /// The exit status, or 128 and the number of the signal that ended the process.
  int status = -1;
  std::string out;
  std::string err;
};

/// How a process is started. NO_COLOR is taken out of the environment of the tests, `environment` is added
/// ("NAME=value").
struct Start {
  std::vector<std::string> arguments;
  std::string input = {};
  std::vector<std::string> environment = {};
};

/// The words as the system's calls take them: pointers into them, and a null.
std::vector<char*> pointers(std::vector<std::string>& words);

/// Standard output is a pipe that is read to its end.
Outcome runProgram(const Start& start);
/// Standard output is a terminal.
Outcome runProgramOnTerminal(const Start& start);
/// Standard output is a file, opened for writing.
Outcome runProgramInto(const std::string& file, const Start& start);
/// Standard output is a pipe that has no reader any more.
Outcome runProgramIntoClosedPipe(const Start& start);
/// Standard input is a pipe: writes `first`, waits for output while the pipe is open, and returns it, empty if none
/// comes.
std::string firstOutputOfProgram(const std::vector<std::string>& arguments, const std::string& first);

/// A file with this content, deleted in the end.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& name() const { return name_; }

 private:
  std::string name_;
};

}  // namespace qx::test

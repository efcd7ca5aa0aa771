#include "support/ProgramRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

namespace qx::test {

namespace {

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

int checked(int result, const char* what) {
  if (result < 0) fail(what);
  return result;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  void close() {
    if (number_ >= 0) ::close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

struct Pipe {
  Pipe() : Pipe(make()) {}

  Descriptor reader;
  Descriptor writer;

 private:
  struct Ends {
    int ends[2];
  };
  explicit Pipe(Ends made) : reader(made.ends[0]), writer(made.ends[1]) {}
  static Ends make() {
    Ends made;
    checked(::pipe2(made.ends, O_CLOEXEC), "pipe2");
    return made;
  }
};

void writeAll(int descriptor, const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
    if (count < 0) fail("write");
    written += static_cast<std::size_t>(count);
  }
}

/// Up to the end, or, for a terminal, until nobody has it open.
std::string readAll(int descriptor) {
  std::string text;
  char buffer[4096];
  ssize_t count;
  while ((count = ::read(descriptor, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<std::size_t>(count));
  if (count < 0 && errno != EIO) fail("read");
  return text;
}

/// A nameless file, for streams that are looked at when the process has ended.
class Scratch {
 public:
  explicit Scratch(const std::string& content = {}) : file_(std::tmpfile(), &std::fclose) {
    if (file_ == nullptr) fail("tmpfile");
    writeAll(descriptor(), content);
    rewind();
  }

  int descriptor() const { return ::fileno(file_.get()); }
  std::string content() const {
    rewind();
    return readAll(descriptor());
  }

 private:
  void rewind() const {
    if (::lseek(descriptor(), 0, SEEK_SET) < 0) fail("lseek");
  }

  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

pid_t spawn(const Start& start, int input, int output, int error) {
  std::vector<std::string> arguments{VSO_PROGRAM};
  arguments.insert(arguments.end(), start.arguments.begin(), start.arguments.end());
  std::vector<std::string> environment = start.environment;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (std::strncmp(*variable, "NO_COLOR=", 9) != 0) environment.emplace_back(*variable);
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
  pid_t process = -1;
  errno =
      ::posix_spawn(&process, VSO_PROGRAM, &actions, nullptr, pointers(arguments).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (errno != 0) fail("posix_spawn");
  return process;
}

int exitStatus(pid_t process) {
  int status = 0;
  checked(::waitpid(process, &status, 0), "waitpid");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// `output` goes nowhere that has to be read for the process to end.
Outcome runInto(int output, const Start& start) {
  const Scratch input(start.input);
  const Scratch error;
  Outcome outcome;
  outcome.status = exitStatus(spawn(start, input.descriptor(), output, error.descriptor()));
  outcome.err = error.content();
  return outcome;
}

/// What is written to `output` comes out of `reader`.
Outcome runAndRead(Descriptor& output, const Descriptor& reader, const Start& start) {
  const Scratch input(start.input);
  const Scratch error;
  const pid_t process = spawn(start, input.descriptor(), output.number(), error.descriptor());
  output.close();
  Outcome outcome;
  outcome.out = readAll(reader.number());
  outcome.status = exitStatus(process);
  outcome.err = error.content();
  return outcome;
}

}  // namespace

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> all;
  all.reserve(words.size() + 1);
  for (std::string& word : words) all.push_back(word.data());
  all.push_back(nullptr);
  return all;
}

Outcome runProgram(const Start& start) {
  Pipe output;
  return runAndRead(output.writer, output.reader, start);
}

Outcome runProgramOnTerminal(const Start& start) {
  const Descriptor master(checked(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt"));
  checked(::grantpt(master.number()), "grantpt");
  checked(::unlockpt(master.number()), "unlockpt");
  char name[128];
  if ((errno = ::ptsname_r(master.number(), name, sizeof name)) != 0) fail("ptsname_r");
  Descriptor terminal(checked(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC), "open"));
  return runAndRead(terminal, master, start);
}

Outcome runProgramInto(const std::string& file, const Start& start) {
  const Descriptor output(checked(::open(file.c_str(), O_WRONLY | O_CLOEXEC), "open"));
  return runInto(output.number(), start);
}

Outcome runProgramIntoClosedPipe(const Start& start) {
  Pipe output;
  output.reader.close();
  return runInto(output.writer.number(), start);
}

std::string firstOutputOfProgram(const std::vector<std::string>& arguments, const std::string& first) {
  Pipe input;
  Pipe output;
  const Scratch error;
  const pid_t process = spawn({arguments}, input.reader.number(), output.writer.number(), error.descriptor());
  input.reader.close();
  output.writer.close();
  writeAll(input.writer.number(), first);
  // A program that keeps its output back would leave us here for ever.
  constexpr int PATIENCE_MS = 60000;
  pollfd ready{output.reader.number(), POLLIN, 0};
  char buffer[4096];
  ssize_t count = 0;
  if (::poll(&ready, 1, PATIENCE_MS) == 1) count = ::read(output.reader.number(), buffer, sizeof buffer);
  input.writer.close();
  readAll(output.reader.number());
  exitStatus(process);
  return {buffer, count > 0 ? static_cast<std::size_t>(count) : 0};
}

TemporaryFile::TemporaryFile(const std::string& content) {
  const char* const folder = std::getenv("TMPDIR");
  name_ = std::string(folder != nullptr ? folder : "/tmp") + "/vso-test-XXXXXX";
  const Descriptor file(checked(::mkstemp(name_.data()), "mkstemp"));
  writeAll(file.number(), content);
}

TemporaryFile::~TemporaryFile() { ::unlink(name_.c_str()); }

}  // namespace qx::test

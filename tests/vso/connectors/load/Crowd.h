// The process `line_crowd`, and what a test of a server under load looks at.
#pragma once

#include <dirent.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace qx::test {

/// A running `line_crowd`, with pipes at its standard input and output.
class Crowd {
 public:
  explicit Crowd(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), LINE_CROWD);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int input[2];
    int output[2];
    if (::pipe(input) != 0 || ::pipe(output) != 0) throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    // What the test holds open is not for the crowd.
    for (int handle = STDERR_FILENO + 1; handle < 1024; ++handle) {
      ::posix_spawn_file_actions_addclose(&actions, handle);
    }
    const int result = ::posix_spawn(&process_, LINE_CROWD, &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    input_ = input[1];
    output_ = output[0];
    if (result != 0) throw std::runtime_error("cannot start line_crowd");
  }
  ~Crowd() { wait(); }

  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  /// Waits until the crowd says that it stands.
  bool stands() const {
    char byte = 0;
    while (::read(output_, &byte, 1) == 1) {
      if (byte == '\n') return true;
    }
    return false;
  }

  /// Ends the crowd's input, waits for its end, and gives its exit status.
  int wait() {
    if (process_ <= 0) return status_;
    ::close(input_);
    int status = 0;
    if (::waitpid(process_, &status, 0) == process_ && WIFEXITED(status)) status_ = WEXITSTATUS(status);
    ::close(output_);
    process_ = -1;
    return status_;
  }

 private:
  pid_t process_ = -1;
  int input_ = -1;
  int output_ = -1;
  int status_ = -1;
};

/// How many descriptors this process has open.
inline std::size_t openDescriptors() {
  std::size_t count = 0;
  DIR* const folder = ::opendir("/proc/self/fd");
  while (::readdir(folder) != nullptr) ++count;
  ::closedir(folder);
  return count;
}

}  // namespace qx::test

#include "serve/ServeProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "support/ProgramRunner.h"

namespace qx::test {

ServeProcess::ServeProcess(const std::vector<std::string>& arguments, const std::vector<int>& ignored) {
  std::vector<std::string> words{VSO_PROGRAM, "serve"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const std::vector<char*> argv = pointers(words);
  const std::string errors = scratch_.file("errors", "");
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("No pipe");
  process_ = ::fork();
  if (process_ == 0) {
    const int file = ::open(errors.c_str(), O_WRONLY | O_APPEND);
    ::dup2(ends[1], STDOUT_FILENO);
    ::dup2(file, STDERR_FILENO);
    // What the tests were started with is not for the server: files that are open, signals that are ignored.
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    for (const int end : {SIGTERM, SIGINT, SIGHUP}) static_cast<void>(::signal(end, SIG_DFL));
    for (const int end : ignored) static_cast<void>(::signal(end, SIG_IGN));
    ::execv(VSO_PROGRAM, argv.data());
    ::_exit(127);
  }
  ::close(ends[1]);
  output_ = ends[0];
  if (process_ < 0) throw std::runtime_error("No process");
}

ServeProcess::~ServeProcess() {
  ::close(output_);
  if (!isRunning()) return;
  signal(SIGKILL);
  status();
}

const std::string& ServeProcess::firstLine() {
  while (said_.find('\n') == std::string::npos) {
    pollfd waiting{output_, POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(std::chrono::milliseconds(PATIENCE).count())) != 1) break;
    char bytes[4096];
    const ssize_t size = ::read(output_, bytes, sizeof bytes);
    if (size <= 0) break;
    said_.append(bytes, static_cast<std::size_t>(size));
  }
  return said_;
}

std::uint16_t ServeProcess::port() {
  // "listening at ADDRESS:PORT ...", and an address may have colons of its own.
  const std::string& line = firstLine();
  const std::size_t place = line.find("listening at ");
  if (place == std::string::npos) return 0;
  const std::size_t end = line.find_first_of(" ,", place + std::string("listening at ").size());
  return static_cast<std::uint16_t>(std::stoul(line.substr(line.rfind(':', end) + 1)));
}

bool ServeProcess::isRunning() {
  if (process_ < 0) return false;
  int status = 0;
  if (::waitpid(process_, &status, WNOHANG) != process_) return true;
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  process_ = -1;
  return false;
}

void ServeProcess::signal(int number) const {
  if (process_ > 0) ::kill(process_, number);
}

int ServeProcess::status() {
  waitUntil([this] { return !isRunning(); });
  return status_;
}

std::size_t LineClient::endOfLine(std::size_t begin) {
  std::size_t end = std::string::npos;
  waitUntil([&] {
    const bool isEnded = peer_.isEnded();
    end = peer_.received().find("\r\n", begin);
    return end != std::string::npos || isEnded;
  });
  return end == std::string::npos ? end : end + 2;
}

std::string LineClient::answer() {
  const std::size_t begin = read_;
  std::size_t end = endOfLine(begin);
  if (end == std::string::npos) return {};
  const std::string first = peer_.received().substr(begin, end - begin);
  if (first.rfind("block ", 0) == 0) {
    for (unsigned long left = std::stoul(first.substr(6)); left > 0; --left) {
      end = endOfLine(end);
      if (end == std::string::npos) return {};
    }
  }
  read_ = end;
  return peer_.received().substr(begin, end - begin);
}

}  // namespace qx::test

// The server as a process of its own, and a client of it.
#pragma once

#include <sys/types.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/Loopback.h"
#include "support/TemporaryDirectory.h"

namespace qx::test {

/// `vso serve` with these arguments, started by somebody who ignores some signals. Ended in the end, if it still runs.
class ServeProcess {
 public:
  explicit ServeProcess(const std::vector<std::string>& arguments, const std::vector<int>& ignored = {});
  ~ServeProcess();
  ServeProcess(const ServeProcess&) = delete;
  ServeProcess& operator=(const ServeProcess&) = delete;

  pid_t id() const { return process_; }
  /// What it says when it listens; waits for that, or for its end.
  const std::string& firstLine();
  /// Where it listens, by its first line; 0 if it does not.
  std::uint16_t port();
  bool isRunning();

  /// Sends a signal.
  void signal(int number) const;
  /// Waits for its end: the exit status, or 128 and the number of the signal that ended it, or -1 if it goes on.
  int status();
  /// Standard error so far.
  std::string errors() const { return contentOf(scratch_.path("errors")); }

 private:
  TemporaryDirectory scratch_;
  pid_t process_ = -1;
  int output_ = -1;
  int status_ = -1;
  std::string said_;
};

/// One connection, on which questions are asked.
class LineClient {
 public:
  explicit LineClient(std::uint16_t port, const std::string& address = "127.0.0.1") : peer_(port, address) {}

  LoopbackPeer& peer() { return peer_; }
  bool send(const std::string& lines) const { return peer_.send(lines); }
  /// The next answer, a block with all its lines; empty if none comes.
  std::string answer();
  std::string ask(const std::string& line) { return send(line + "\r\n") ? answer() : std::string(); }

 private:
  /// Where the line that begins at `begin` ends; waits for it.
  std::size_t endOfLine(std::size_t begin);

  LoopbackPeer peer_;
  std::size_t read_ = 0;
};

}  // namespace qx::test

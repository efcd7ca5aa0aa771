// A serial line without hardware, for tests that open one.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace qx::test {

/// The far end of a line whose near end is a device with a path.
class PseudoTerminal {
 public:
  PseudoTerminal() : far_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    char path[128] = {};
    if (far_ < 0 || ::grantpt(far_) != 0 || ::unlockpt(far_) != 0 || ::ptsname_r(far_, path, sizeof path) != 0) {
      hangUp();
      throw std::runtime_error("No pseudo-terminal to be had");
    }
    path_ = path;
  }
  ~PseudoTerminal() { hangUp(); }

  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// The device of the near end.
  const std::string& path() const { return path_; }

  /// What the near end is set to. Both ends share it.
  termios attributes() const {
    termios attributes{};
    if (::tcgetattr(far_, &attributes) != 0) throw std::runtime_error("No attributes of " + path_);
    return attributes;
  }
  void attributes(const termios& attributes) const {
    if (::tcsetattr(far_, TCSANOW, &attributes) != 0) throw std::runtime_error("Cannot set attributes of " + path_);
  }

  /// True if all of it went off.
  bool send(const std::string& bytes) const {
    return ::write(far_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }

  /// So many of the bytes that the near end writes; waits for them, but not for ever.
  std::string receive(std::size_t count) const {
    constexpr int PATIENCE_MS = 20000;
    std::string bytes;
    char piece[256];
    pollfd waiting{far_, POLLIN, 0};
    while (bytes.size() < count && ::poll(&waiting, 1, PATIENCE_MS) == 1) {
      const ssize_t length = ::read(far_, piece, sizeof piece);
      if (length <= 0) break;
      bytes.append(piece, static_cast<std::size_t>(length));
    }
    return bytes;
  }

  /// Ends the line at this end.
  void hangUp() {
    if (far_ >= 0) ::close(far_);
    far_ = -1;
  }

 private:
  int far_;
  std::string path_;
};

}  // namespace qx::test

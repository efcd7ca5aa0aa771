// A UDP socket on the loopback, for tests that look at datagrams.
#pragma once

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/SocketAddress.h"

namespace qx::test {

class UdpReceiver {
 public:
  static constexpr std::uint16_t ANY_PORT = 0;

  /// `address` is numeric, of either family. `isOpen` tells whether this machine has it and the port was free.
  explicit UdpReceiver(const std::string& address = "127.0.0.1", std::uint16_t port = ANY_PORT) : address_(address) {
    const SocketAddress place(address, port);
    if (!place.isValid()) return;
    socket_ = ::socket(place.family(), SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket_ < 0) return;
    if (::bind(socket_, place.get(), place.size()) != 0) {
      close();
      return;
    }
    sockaddr_storage bound{};
    socklen_t size = sizeof bound;
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&bound), &size);
    // The port stands at the same place in both families' addresses.
    port_ = ntohs(reinterpret_cast<const sockaddr_in*>(&bound)->sin_port);
  }

  UdpReceiver(const UdpReceiver&) = delete;
  UdpReceiver& operator=(const UdpReceiver&) = delete;
  ~UdpReceiver() { close(); }

  void close() {
    if (socket_ >= 0) ::close(socket_);
    socket_ = -1;
  }

  bool isOpen() const { return socket_ >= 0; }
  const std::string& address() const { return address_; }
  std::uint16_t port() const { return port_; }
  int socket() const { return socket_; }

  /// The next datagram; waits for it, but not for ever.
  std::optional<std::string> next() const {
    constexpr int PATIENCE_MS = 20000;
    pollfd waiting{socket_, POLLIN, 0};
    if (::poll(&waiting, 1, PATIENCE_MS) != 1) return std::nullopt;
    std::string datagram(65536, '\0');
    const ssize_t length = ::recv(socket_, datagram.data(), datagram.size(), MSG_DONTWAIT);
    if (length < 0) return std::nullopt;
    datagram.resize(static_cast<std::size_t>(length));
    return datagram;
  }

  /// The datagrams up to the one that is `last`, without that. If it does not come, an entry says so.
  std::vector<std::string> upTo(const std::string& last) const {
    std::vector<std::string> datagrams;
    for (std::optional<std::string> datagram = next(); datagram != last; datagram = next()) {
      if (!datagram) {
        datagrams.push_back("(" + last + " did not come)");
        break;
      }
      datagrams.push_back(*datagram);
    }
    return datagrams;
  }

 private:
  std::string address_;
  int socket_ = -1;
  std::uint16_t port_ = ANY_PORT;
};

/// The lines of a datagram.
inline std::vector<std::string> linesOf(const std::string& datagram) {
  std::vector<std::string> lines;
  std::istringstream in(datagram);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace qx::test

// An address and a port as the system's socket calls take them.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>

namespace qx::test {

class SocketAddress {
 public:
  /// `address` is numeric, of either family. `isValid` tells whether it is.
  SocketAddress(const std::string& address, std::uint16_t port) {
    if (auto* const v4 = reinterpret_cast<sockaddr_in*>(&place_);
        ::inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1) {
      v4->sin_family = AF_INET;
      v4->sin_port = htons(port);
      size_ = sizeof *v4;
    } else if (auto* const v6 = reinterpret_cast<sockaddr_in6*>(&place_);
               ::inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
      v6->sin6_family = AF_INET6;
      v6->sin6_port = htons(port);
      size_ = sizeof *v6;
    }
  }

  bool isValid() const { return size_ != 0; }
  int family() const { return place_.ss_family; }
  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&place_); }
  socklen_t size() const { return size_; }

 private:
  sockaddr_storage place_{};
  socklen_t size_ = 0;
};

}  // namespace qx::test

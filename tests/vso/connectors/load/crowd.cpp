// A crowd of TCP clients on the loopback, as a process of its own.
//
//   line_crowd send PORT CONNECTIONS LINES SEED
//
// Each connection sends so many lines, in fragments, and ends its side.
//
//   line_crowd vanish PORT CONNECTIONS LINES SEED
//
// The same, but each goes away somewhere on the way, in one of three ways.
//
//   line_crowd stand PORT CONNECTIONS
//
// Connects so often at once, and holds on until standard input ends.
//
// Exits with 0 when all is done as said; in `stand` also if some connections are never accepted.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "lines.h"

namespace {

using Random = std::minstd_rand;

sockaddr_in placeOf(const char* port) {
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  place.sin_port = htons(static_cast<std::uint16_t>(std::stoul(port)));
  return place;
}

void require(bool isTrue, const char* what) {
  if (!isTrue) throw std::runtime_error(what);
}

class Client {
 public:
  Client(unsigned int number, unsigned int lines, bool vanishes, const sockaddr_in& place, Random& random)
      : number_(number), lines_(lines), socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    require(::connect(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0, "connect");
    // Each fragment goes out by itself.
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (vanishes) lastFragments_ = 1 + static_cast<int>(random() % (lines * 2));
  }

  int handle() const { return socket_; }
  bool isDone() const { return socket_ < 0; }

  /// Sends one fragment, as far as the socket takes it.
  void go(Random& random) {
    if (waiting_.size() < LONGEST_FRAGMENT && next_ < lines_) waiting_ += qx::test::crowdLine(number_, next_++);
    if (lastFragments_ == 0 || waiting_.empty()) {
      leave(random);
      return;
    }
    if (lastFragments_ > 0) --lastFragments_;
    const std::string_view fragment = std::string_view(waiting_).substr(0, 1 + random() % LONGEST_FRAGMENT);
    const ssize_t sent = ::send(socket_, fragment.data(), fragment.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    require(sent > 0 || errno == EAGAIN, "send");
    if (sent > 0) waiting_.erase(0, static_cast<std::size_t>(sent));
  }

 private:
  static constexpr std::size_t LONGEST_FRAGMENT = 300;

  void leave(Random& random) {
    if (lastFragments_ == 0) {
      const linger atOnce{1, 0};
      switch (random() % 3) {
        case 0:  // a reset, with what has been sent perhaps unread
          ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
          break;
        case 1:
          ::shutdown(socket_, SHUT_RDWR);
          break;
        default:
          break;
      }
    }
    ::close(socket_);
    socket_ = -1;
  }

  unsigned int number_;
  unsigned int lines_;
  int socket_;
  unsigned int next_ = 0;
  std::string waiting_;
  int lastFragments_ = -1;  // so many before the client vanishes; less than 0 if it does not
};

int sendAll(bool vanish, char** arguments) {
  const sockaddr_in place = placeOf(arguments[0]);
  const auto connections = static_cast<unsigned int>(std::stoul(arguments[1]));
  const auto lines = static_cast<unsigned int>(std::stoul(arguments[2]));
  Random random(static_cast<unsigned int>(std::stoul(arguments[3])));
  std::vector<Client> clients;
  for (unsigned int number = 0; number < connections; ++number) {
    clients.emplace_back(number, lines, vanish, place, random);
  }
  for (std::size_t left = clients.size(); left > 0;) {
    std::vector<pollfd> waiting;
    std::vector<Client*> byPlace;
    for (Client& client : clients) {
      if (client.isDone()) continue;
      waiting.push_back({client.handle(), POLLOUT, 0});
      byPlace.push_back(&client);
    }
    constexpr int PATIENCE_MS = 60'000;
    require(::poll(waiting.data(), waiting.size(), PATIENCE_MS) > 0, "poll");
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      if (waiting[i].revents == 0) continue;
      byPlace[i]->go(random);
      if (byPlace[i]->isDone()) --left;
    }
  }
  return 0;
}

int standAround(char** arguments) {
  const sockaddr_in place = placeOf(arguments[0]);
  const auto connections = std::stoul(arguments[1]);
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
  for (unsigned long i = 0; i < connections; ++i) {
    const int handle = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    require(handle >= 0, "socket");
    const int result = ::connect(handle, reinterpret_cast<const sockaddr*>(&place), sizeof place);
    require(result == 0 || errno == EINPROGRESS, "connect");
  }
  std::puts("standing");
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  const std::string_view mode = argc > 1 ? argv[1] : "";
  if (mode == "send" && argc == 6) return sendAll(false, argv + 2);
  if (mode == "vanish" && argc == 6) return sendAll(true, argv + 2);
  if (mode == "stand" && argc == 4) return standAround(argv + 2);
  return 2;
} catch (const std::exception& error) {
  std::fprintf(stderr, "line_crowd: %s: errno %d\n", error.what(), errno);
  return 1;
}

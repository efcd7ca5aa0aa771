// Peers on the loopback, and the running of contexts, for tests of TCP servers.

#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/SocketAddress.h"

namespace qx::test {

/// After so long a test gives a wait up and fails.
constexpr std::chrono::seconds PATIENCE(30);

/// Waits until `isDone`. False if that takes too long.
template <typename Condition>
bool waitUntil(Condition isDone) {
  const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
  while (!isDone()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// Runs `context` on this thread, handler by handler, until `isDone`. False if that takes too long.
template <typename Condition>
bool runUntil(boost::asio::io_context& context, Condition isDone) {
  const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
  while (!isDone()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    context.restart();
    context.run_one_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// Runs `context` on this thread for long enough to see what should not happen, if it did.
inline void runAWhile(boost::asio::io_context& context) {
  context.restart();
  context.poll();  // what is ready, however late it is
  context.restart();
  context.run_for(std::chrono::milliseconds(50));
  context.restart();
  context.poll();
}

/// Threads that run a context, until the end of this object.
class ContextThreads {
 public:
  ContextThreads(boost::asio::io_context& context, int count) : context_(context), work_(context.get_executor()) {
    context.restart();
    for (int i = 0; i < count; ++i) threads_.emplace_back([&context] { context.run(); });
  }
  ~ContextThreads() { join(); }

  ContextThreads(const ContextThreads&) = delete;
  ContextThreads& operator=(const ContextThreads&) = delete;

  void join() {
    context_.stop();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

 private:
  boost::asio::io_context& context_;
  boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work_;
  std::vector<std::thread> threads_;
};

/// The other end of a connection: a socket that nothing but the test reads and writes.
class LoopbackPeer {
 public:
  static constexpr int SYSTEMS_BUFFER = 0;

  /// Connects to `port`. `receiveBuffer` is the size of the socket's, in bytes. `isConnected` tells whether it worked.
  explicit LoopbackPeer(std::uint16_t port, const std::string& address = "127.0.0.1",
                        int receiveBuffer = SYSTEMS_BUFFER) {
    const SocketAddress place(address, port);
    if (!place.isValid()) return;
    socket_ = ::socket(place.family(), SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer != SYSTEMS_BUFFER) {
      ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    if (::connect(socket_, place.get(), place.size()) != 0) close();
  }
  ~LoopbackPeer() { close(); }

  LoopbackPeer(const LoopbackPeer&) = delete;
  LoopbackPeer& operator=(const LoopbackPeer&) = delete;

  bool isConnected() const { return socket_ >= 0; }

  /// Sends all of `text`. False if the connection is broken, or takes no more for too long.
  bool send(std::string_view text) const {
    if (!isConnected()) return false;
    while (!text.empty()) {
      pollfd waiting{socket_, POLLOUT, 0};
      if (::poll(&waiting, 1, static_cast<int>(std::chrono::milliseconds(PATIENCE).count())) != 1) return false;
      const ssize_t sent = ::send(socket_, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      if (sent < 0 && errno != EAGAIN) return false;
      if (sent > 0) text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  /// Everything that has come so far. Does not wait.
  const std::string& received() {
    char bytes[65536];
    while (!isEnded_) {
      const ssize_t size = ::recv(socket_, bytes, sizeof bytes, MSG_DONTWAIT);
      if (size < 0 && errno == EAGAIN) break;
      isReset_ = size < 0;
      isEnded_ = size <= 0;
      if (size > 0) received_.append(bytes, static_cast<std::size_t>(size));
    }
    return received_;
  }
  /// The size of what has come since, of which nothing is kept. Does not wait.
  std::size_t take() {
    const std::size_t size = received().size();
    std::string().swap(received_);  // an assignment would keep the storage
    return size;
  }
  /// True if the other end has closed the connection, in whatever way, and everything before that has been received.
  bool isEnded() {
    received();
    return isEnded_;
  }
  /// True if the end was a reset.
  bool isReset() {
    received();
    return isReset_;
  }

  /// Ends this side; the other may go on.
  void endSending() const { ::shutdown(socket_, SHUT_WR); }
  /// Breaks the connection off.
  void reset() {
    const linger atOnce{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close();
  }
  void close() {
    if (socket_ >= 0) ::close(socket_);
    socket_ = -1;
  }

 private:
  int socket_ = -1;
  std::string received_;
  bool isEnded_ = false;
  bool isReset_ = false;
};

}  // namespace qx::test

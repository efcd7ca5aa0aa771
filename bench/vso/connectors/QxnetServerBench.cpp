// Lines through the server, from 1, 16 and 256 connections, beside three servers by hand that hand each line to the
// same callback: `_asio` is a bare line server on Asio, by async_read_until; `_asioSplit` reads with Asio what comes,
// and finds the lines itself; `_limit` does so in a bare epoll loop. By the clock: a figure is the time from one line
// to the next, its peers included. The counter processor_ns is what the server's thread alone takes for a line.
#include "vso/connectors/QxnetServer.h"

#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "qxlogger/Logger.h"
#include "vso/connectors/QxnetClient.h"

namespace {

using boost::asio::ip::tcp;
using qx::QxnetTcpConnectionPtr;
using qx::net::stream::TCPConnection;

constexpr std::string_view DELIMITER = "\r\n";
constexpr std::size_t LINE_SIZE = 64;
constexpr std::size_t LINES_A_SEND = 256;  // enough that the server, and not its peers, is what is measured
constexpr std::size_t LINES_A_ROUND = 65'536;

/// Counts lines, and says when it has all of a round.
class Counter : public qx::QxnetClient {
 public:
  std::future<void> round(std::size_t lines) {
    missing_ = lines;
    done_ = {};
    return done_.get_future();
  }
  void handleData(QxnetTcpConnectionPtr connection, const std::string& data) override {
    benchmark::DoNotOptimize(connection.get());
    benchmark::DoNotOptimize(data.data());
    if (data.size() != LINE_SIZE) std::abort();
    if (--missing_ == 0) done_.set_value();
  }
  void handleState(QxnetTcpConnectionPtr connection, qx::QxnetConnectionState state,
                   qx::QxnetConnectionState /*previous*/, qx::QxnetConnectionOperation /*operation*/,
                   const qx::BErrorCode& /*error*/) override {
    if (state == qx::net::stream::CONNECTION_OPEN) connection->asyncReadUntil(DELIMITER);
  }

 private:
  std::size_t missing_ = 0;
  std::promise<void> done_;
};

/// The server of the library, on a thread of its own.
class LibraryServer {
 public:
  explicit LibraryServer(Counter& counter)
      : server_(boost::make_shared<qx::QxnetServer>(context_, boost::asio::ip::address_v4::loopback(), 0, counter)) {
    if (server_->start()) std::abort();
    port_ = server_->endpoint().port();
    thread_ = std::thread([this] { context_.run(); });
  }
  ~LibraryServer() {
    server_->stop();
    thread_.join();
  }

  std::uint16_t port() const { return port_; }
  std::thread& thread() { return thread_; }

 private:
  boost::asio::io_context context_{1};
  boost::shared_ptr<qx::QxnetServer> server_;
  std::uint16_t port_ = 0;
  std::thread thread_;
};

/// What the two servers on bare Asio share: they accept, and make a Session of each socket.
template <typename Session>
class AsioServer {
 public:
  explicit AsioServer(Counter& counter)
      : counter_(counter), acceptor_(context_, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)) {
    accept();
    thread_ = std::thread([this] { context_.run(); });
  }
  ~AsioServer() {
    context_.stop();
    thread_.join();
  }

  std::uint16_t port() const { return acceptor_.local_endpoint().port(); }
  std::thread& thread() { return thread_; }

 private:
  void accept() {
    acceptor_.async_accept([this](const boost::system::error_code& error, tcp::socket socket) {
      if (error) return;
      boost::make_shared<Session>(std::move(socket), context_, counter_)->read();
      accept();
    });
  }

  Counter& counter_;
  boost::asio::io_context context_{1};
  tcp::acceptor acceptor_;
  std::thread thread_;
};

/// Reads what comes, and finds the lines in it.
class SplittingSession : public boost::enable_shared_from_this<SplittingSession> {
 public:
  SplittingSession(tcp::socket socket, boost::asio::io_context& context, Counter& counter)
      : socket_(std::move(socket)), counter_(counter), name_(boost::make_shared<TCPConnection>(context)) {}

  void read() {
    socket_.async_read_some(boost::asio::buffer(bytes_.data() + size_, bytes_.size() - size_),
                            [self = shared_from_this()](const boost::system::error_code& error, std::size_t size) {
                              if (!error) self->split(size);
                            });
  }

 private:
  void split(std::size_t received) {
    size_ += received;
    std::string_view unread(bytes_.data(), size_);
    for (std::size_t at; (at = unread.find(DELIMITER)) != std::string_view::npos;) {
      line_ = unread.substr(0, at + DELIMITER.size());
      counter_.handleData(name_, line_);
      unread.remove_prefix(line_.size());
    }
    std::copy(unread.begin(), unread.end(), bytes_.begin());
    size_ = unread.size();
    read();
  }

  tcp::socket socket_;
  Counter& counter_;
  QxnetTcpConnectionPtr name_;  // stands for the connection in the callback
  std::vector<char> bytes_ = std::vector<char>(65'536);
  std::size_t size_ = 0;
  std::string line_;
};

class UntilSession : public boost::enable_shared_from_this<UntilSession> {
 public:
  UntilSession(tcp::socket socket, boost::asio::io_context& context, Counter& counter)
      : socket_(std::move(socket)), counter_(counter), name_(boost::make_shared<TCPConnection>(context)) {}

  void read() {
    boost::asio::async_read_until(
        socket_, boost::asio::dynamic_buffer(bytes_, 65'536), DELIMITER,
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t size) {
          if (error) return;
          self->line_.assign(self->bytes_, 0, size);
          self->bytes_.erase(0, size);
          self->counter_.handleData(self->name_, self->line_);
          self->read();
        });
  }

 private:
  tcp::socket socket_;
  Counter& counter_;
  QxnetTcpConnectionPtr name_;
  std::string bytes_;
  std::string line_;
};

/// The least that serves lines on Linux.
class EpollServer {
 public:
  explicit EpollServer(Counter& counter) : counter_(counter), name_(boost::make_shared<TCPConnection>(context_)) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    if (::bind(listener_, reinterpret_cast<const sockaddr*>(&place), size) != 0 || ::listen(listener_, 128) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&place), &size) != 0) {
      std::abort();
    }
    port_ = ntohs(place.sin_port);
    watch(listener_);
    watch(end_);
    thread_ = std::thread([this] { run(); });
  }
  ~EpollServer() {
    const std::uint64_t one = 1;
    if (::write(end_, &one, sizeof one) != sizeof one) std::abort();
    thread_.join();
    for (const auto& [handle, session] : sessions_) ::close(handle);
    for (const int handle : {end_, listener_, epoll_}) ::close(handle);
  }

  std::uint16_t port() const { return port_; }
  std::thread& thread() { return thread_; }

 private:
  struct Session {
    std::vector<char> bytes = std::vector<char>(65'536);
    std::size_t size = 0;
    std::string line;
  };

  void watch(int handle) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = handle;
    if (::epoll_ctl(epoll_, EPOLL_CTL_ADD, handle, &event) != 0) std::abort();
  }

  void run() {
    epoll_event events[128];
    for (;;) {
      const int count = ::epoll_wait(epoll_, events, 128, -1);
      for (int i = 0; i < count; ++i) {
        const int handle = events[i].data.fd;
        if (handle == end_) return;
        if (handle == listener_) {
          const int accepted = ::accept(listener_, nullptr, nullptr);
          sessions_[accepted];
          watch(accepted);
        } else {
          read(handle, sessions_[handle]);
        }
      }
    }
  }

  void read(int handle, Session& session) {
    const ssize_t received =
        ::recv(handle, session.bytes.data() + session.size, session.bytes.size() - session.size, 0);
    if (received <= 0) {
      ::close(handle);
      sessions_.erase(handle);
      return;
    }
    session.size += static_cast<std::size_t>(received);
    std::string_view unread(session.bytes.data(), session.size);
    for (std::size_t at; (at = unread.find(DELIMITER)) != std::string_view::npos;) {
      session.line = unread.substr(0, at + DELIMITER.size());
      counter_.handleData(name_, session.line);
      unread.remove_prefix(session.line.size());
    }
    std::copy(unread.begin(), unread.end(), session.bytes.begin());
    session.size = unread.size();
  }

  Counter& counter_;
  boost::asio::io_context context_;
  QxnetTcpConnectionPtr name_;
  int epoll_ = ::epoll_create1(0);
  int listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
  int end_ = ::eventfd(0, 0);
  std::uint16_t port_ = 0;
  std::map<int, Session> sessions_;
  std::thread thread_;
};

/// The other end of so many connections.
class Peers {
 public:
  Peers(std::uint16_t port, std::size_t count) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    place.sin_port = htons(port);
    for (std::size_t i = 0; i < count; ++i) {
      handles_.push_back(::socket(AF_INET, SOCK_STREAM, 0));
      if (::connect(handles_.back(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0) std::abort();
    }
    for (std::size_t i = 0; i < LINES_A_SEND; ++i) lines_ += std::string(LINE_SIZE - 2, 'x') + "\r\n";
  }
  Peers(const Peers&) = delete;
  Peers& operator=(const Peers&) = delete;
  ~Peers() {
    for (const int handle : handles_) ::close(handle);
  }

  /// Each connection in turn sends some lines, until all are on their way.
  void send(std::size_t lines) const {
    for (std::size_t i = 0; i < lines / LINES_A_SEND; ++i) {
      std::string_view rest(lines_);
      while (!rest.empty()) {
        const ssize_t sent = ::send(handles_[i % handles_.size()], rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent <= 0) std::abort();
        rest.remove_prefix(static_cast<std::size_t>(sent));
      }
    }
  }

 private:
  std::vector<int> handles_;
  std::string lines_;
};

/// The processor time that a thread has taken, in nanoseconds.
double processorTime(std::thread& thread) {
  clockid_t clock{};
  timespec time{};
  if (::pthread_getcpuclockid(thread.native_handle(), &clock) != 0 || ::clock_gettime(clock, &time) != 0) std::abort();
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

template <typename Server>
void serve(benchmark::State& state) {
  qx::Logger::initialize();
  Counter counter;
  Server server(counter);
  const Peers peers(server.port(), static_cast<std::size_t>(state.range(0)));
  std::size_t lines = 0;
  const auto round = [&] {
    std::future<void> done = counter.round(LINES_A_ROUND);
    peers.send(LINES_A_ROUND);
    done.wait();
  };
  round();  // after which all is accepted, and every buffer has its size
  const double before = processorTime(server.thread());
  while (state.KeepRunningBatch(LINES_A_ROUND)) {
    round();
    lines += LINES_A_ROUND;
  }
  // Of the server alone, which the clock does not tell apart from its peers.
  state.counters["processor_ns"] = (processorTime(server.thread()) - before) / static_cast<double>(lines);
  state.SetItemsProcessed(static_cast<std::int64_t>(lines));
}

void ServeLines_limit(benchmark::State& state) { serve<EpollServer>(state); }
BENCHMARK(ServeLines_limit)->Arg(1)->Arg(16)->Arg(256)->UseRealTime();

void ServeLines_asioSplit(benchmark::State& state) { serve<AsioServer<SplittingSession>>(state); }
BENCHMARK(ServeLines_asioSplit)->Arg(1)->Arg(16)->Arg(256)->UseRealTime();

void ServeLines_asio(benchmark::State& state) { serve<AsioServer<UntilSession>>(state); }
BENCHMARK(ServeLines_asio)->Arg(1)->Arg(16)->Arg(256)->UseRealTime();

void ServeLines(benchmark::State& state) { serve<LibraryServer>(state); }
BENCHMARK(ServeLines)->Arg(1)->Arg(16)->Arg(256)->UseRealTime();

}  // namespace

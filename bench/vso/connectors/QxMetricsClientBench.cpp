// A metric that is dropped, beside one call of a function with the same strings, and a metric that is sent, beside one
// `send` of the same bytes.
#include "vso/connectors/QxMetricsClient.h"

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/asio/io_context.hpp>
#include <boost/make_shared.hpp>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "qxlogger/Logger.h"
#include "qxstatsdclient/StatsdClient.h"

namespace {

// Longer than what a string holds without the heap, as metrics' names are.
const std::string NAME = "vessori2.gateway.node1.0011223344556677.zcl_diag";
const std::string KEY = "reboot.count";
const std::string VALUE = "42";

const std::string DATAGRAM = "vessori2.v2." + NAME + "." + KEY + ":" + VALUE + "|g";

[[gnu::noinline]] void takeStrings(const std::string& name, const std::string& key, const std::string& value) {
  benchmark::DoNotOptimize(&name);
  benchmark::DoNotOptimize(&key);
  benchmark::DoNotOptimize(&value);
}

void DroppedSend_limit(benchmark::State& state) {
  for (auto _ : state) takeStrings(NAME, KEY, VALUE);
}
BENCHMARK(DroppedSend_limit);

void DroppedSend(benchmark::State& state) {
  qx::Logger::initialize();
  qx::QxMetricsClient& client = qx::QxMetricsClient::instance();
  client.stop();
  for (auto _ : state) client.send(NAME, KEY, VALUE);
}
BENCHMARK(DroppedSend);

// The same where the caller has literals, which become strings at each call.

void DroppedLiterals_limit(benchmark::State& state) {
  for (auto _ : state) takeStrings("vessori2.gateway.node1.0011223344556677.zcl_diag", "reboot.count", "42");
}
BENCHMARK(DroppedLiterals_limit);

void DroppedLiterals(benchmark::State& state) {
  qx::Logger::initialize();
  qx::QxMetricsClient& client = qx::QxMetricsClient::instance();
  client.stop();
  for (auto _ : state) client.send("vessori2.gateway.node1.0011223344556677.zcl_diag", "reboot.count", "42");
}
BENCHMARK(DroppedLiterals);

/// A socket on the loopback that nobody reads from: once its buffer is full, each datagram ends there.
class DeafReceiver {
 public:
  DeafReceiver() : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
    place_.sin_family = AF_INET;
    place_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place_;
    const int smallest = 1;
    if (socket_ < 0 || ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &smallest, sizeof smallest) != 0 ||
        ::bind(socket_, reinterpret_cast<const sockaddr*>(&place_), size) != 0 ||
        ::getsockname(socket_, reinterpret_cast<sockaddr*>(&place_), &size) != 0) {
      std::abort();
    }
  }
  DeafReceiver(const DeafReceiver&) = delete;
  DeafReceiver& operator=(const DeafReceiver&) = delete;
  ~DeafReceiver() { ::close(socket_); }

  std::uint16_t port() const { return ntohs(place_.sin_port); }

  /// A socket that sends here.
  int connected() const {
    const int sender = ::socket(AF_INET, SOCK_DGRAM, 0);
    if (sender < 0 || ::connect(sender, reinterpret_cast<const sockaddr*>(&place_), sizeof place_) != 0) std::abort();
    return sender;
  }

 private:
  int socket_;
  sockaddr_in place_{};
};

void SentMetric_limit(benchmark::State& state) {
  const DeafReceiver receiver;
  const int sender = receiver.connected();
  for (auto _ : state) {
    const ssize_t sent = ::send(sender, DATAGRAM.data(), DATAGRAM.size(), 0);
    benchmark::DoNotOptimize(sent);
  }
  ::close(sender);
}
BENCHMARK(SentMetric_limit);

void SentMetric(benchmark::State& state) {
  const DeafReceiver receiver;
  const auto context = boost::make_shared<boost::asio::io_context>();
  qx::QxMetricsClient& client = qx::QxMetricsClient::instance();
  client.initializeDataLakeConnection(context);
  qx::StatsdClient::getInstance()->setServer("127.0.0.1", receiver.port());
  for (auto _ : state) client.send(NAME, KEY, VALUE);
  client.stop();
}
BENCHMARK(SentMetric);

}  // namespace

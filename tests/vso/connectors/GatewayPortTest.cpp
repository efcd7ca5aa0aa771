// Where metrics go when nothing sets another place: the tests have to take the gateway's own port.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/make_shared.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <log4cplus/loglevel.h>

#include "support/LogCapture.h"
#include "support/UdpReceiver.h"
#include "vso/connectors/QxMetricsClient.h"

namespace qx {
namespace {

constexpr int PORT = 8125;

class GatewayPort : public testing::Test {
 protected:
  void SetUp() override {
    const bool hasV6 = test::UdpReceiver("::1").isOpen();
    if (!v4_.isOpen() || (hasV6 && !v6_.isOpen())) GTEST_SKIP() << "another program has port " << PORT;
  }

  void TearDown() override { client_.stop(); }

  /// The next datagram, whichever of the two the gateway's name stands for.
  std::optional<std::string> next() const {
    constexpr int PATIENCE_MS = 20000;
    // A negative socket is passed over.
    pollfd waiting[] = {{v4_.socket(), POLLIN, 0}, {v6_.socket(), POLLIN, 0}};
    if (::poll(waiting, 2, PATIENCE_MS) < 1) return std::nullopt;
    return waiting[0].revents != 0 ? v4_.next() : v6_.next();
  }

  const test::UdpReceiver v4_{"127.0.0.1", PORT};
  const test::UdpReceiver v6_{"::1", PORT};
  const boost::shared_ptr<boost::asio::io_context> context_ = boost::make_shared<boost::asio::io_context>();
  QxMetricsClient& client_ = QxMetricsClient::instance();
};

TEST_F(GatewayPort, GetsWhatIsSent) {
  const test::LogCapture log;
  client_.initializeDataLakeConnection(context_);
  client_.send("name", "reboot.count", 3);
  EXPECT_EQ(next(), "vessori2.v2.name.reboot.count:3|g");
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

TEST_F(GatewayPort, GetsWholeMetricsOfManyThreadsWhileTheClientStopsAndIsSetUp) {
  constexpr int SENDERS = 4;
  constexpr int ROUNDS = 20;
  std::atomic<bool> isOver{false};
  std::atomic<int> started{0};
  std::vector<std::thread> senders;
  // Each dropped metric would say so.
  const test::LogCapture log(log4cplus::WARN_LOG_LEVEL);
  for (int i = 0; i < SENDERS; ++i) {
    senders.emplace_back([&] {
      ++started;
      while (!isOver) QxMetricsClient::instance().send("a", "b", 1);
    });
  }
  while (started < SENDERS) std::this_thread::yield();
  for (int i = 0; i < ROUNDS; ++i) {
    client_.initializeDataLakeConnection(context_);
    client_.stop();
  }
  isOver = true;
  for (std::thread& sender : senders) sender.join();
  EXPECT_THAT(log.texts(), testing::IsEmpty());

  // The receivers' buffers may be full; what is in them is enough.
  char datagram[2048];
  for (const int socket : {v4_.socket(), v6_.socket()}) {
    for (ssize_t length; (length = ::recv(socket, datagram, sizeof datagram, MSG_DONTWAIT)) >= 0;) {
      ASSERT_EQ(std::string(datagram, static_cast<std::size_t>(length)), "vessori2.v2.a.b:1|g");
    }
  }
  client_.initializeDataLakeConnection(context_);
  client_.send("a", "b", 2);
  EXPECT_EQ(next(), "vessori2.v2.a.b:2|g");
}

}  // namespace
}  // namespace qx

// Peers that mean no good, or know no better: the server goes on for the others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>
#include <sys/resource.h>

#include <atomic>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <cstddef>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Crowd.h"
#include "support/LogCapture.h"
#include "support/Loopback.h"
#include "support/sanitized.h"
#include "vso/connectors/QxnetClient.h"
#include "vso/connectors/QxnetServer.h"

namespace {

using qx::net::stream::TCPConnection;
using qx::test::ContextThreads;
using qx::test::Crowd;
using qx::test::IS_SANITIZED;
using qx::test::LogCapture;
using qx::test::LoopbackPeer;
using qx::test::waitUntil;

/// Sends every line back, and counts.
class Echo : public qx::QxnetClient {
 public:
  void handleData(qx::QxnetTcpConnectionPtr connection, const std::string& data) override {
    ++lines;
    if (connection->asyncWrite(data)) ++refused;
  }
  void handleState(qx::QxnetTcpConnectionPtr connection, qx::QxnetConnectionState state,
                   qx::QxnetConnectionState /*previous*/, qx::QxnetConnectionOperation /*operation*/,
                   const qx::BErrorCode& error) override {
    if (state == qx::net::stream::CONNECTION_OPEN) {
      ++opened;
      connection->asyncReadUntil("\r\n");
    } else if (state == qx::net::stream::CONNECTION_CLOSED) {
      const std::lock_guard<std::mutex> lock(mutex_);
      ends_.push_back(error);
    }
  }

  std::vector<qx::BErrorCode> ends() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return ends_;
  }

  std::atomic<std::size_t> lines{0};
  std::atomic<std::size_t> refused{0};
  std::atomic<std::size_t> opened{0};

 private:
  mutable std::mutex mutex_;
  std::vector<qx::BErrorCode> ends_;
};

/// True if the server sends a line back on this connection.
bool isServed(LoopbackPeer& peer) {
  const std::size_t before = peer.received().size();
  constexpr char LINE[] = "still there?\r\n";
  return peer.send(LINE) && waitUntil([&] { return peer.received().size() >= before + sizeof LINE - 1; });
}

/// Pages of memory that the process has in use.
std::size_t residentPages() {
  std::ifstream file("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  file >> size >> resident;
  return resident;
}

constexpr std::size_t PAGES_IN_A_MEBIBYTE = 256;

class Server : public qx::QxnetServer {
 public:
  using QxnetServer::handleAccept;
  using QxnetServer::QxnetServer;
};

class QxnetServerHostile : public testing::Test {
 protected:
  QxnetServerHostile()
      : server_(boost::make_shared<Server>(context_, boost::asio::ip::address_v4::loopback(), 0, echo_)) {
    EXPECT_FALSE(server_->start());
  }
  ~QxnetServerHostile() override { server_->stop(); }

  std::uint16_t port() const { return server_->endpoint().port(); }

  // A million warnings are not what is looked at here.
  LogCapture capture_{log4cplus::ERROR_LOG_LEVEL};
  boost::asio::io_context context_;
  Echo echo_;
  boost::shared_ptr<Server> server_;
};

TEST_F(QxnetServerHostile, ALineWithoutEndEndsItsConnectionAlone) {
  const ContextThreads threads(context_, 2);
  LoopbackPeer other(port());
  ASSERT_TRUE(isServed(other));
  const std::size_t pages = residentPages();
  LoopbackPeer endless(port());
  const std::string piece(100'000, 'x');
  for (int i = 0; i < 1000 && endless.send(piece); ++i) {
  }
  EXPECT_TRUE(waitUntil([&] { return endless.isEnded(); }));
  EXPECT_EQ("", endless.received());
  EXPECT_TRUE(waitUntil([&] { return echo_.ends().size() == 1; }));
  EXPECT_EQ(std::vector<qx::BErrorCode>{boost::asio::error::message_size}, echo_.ends());
  EXPECT_LT(residentPages(), pages + 16 * PAGES_IN_A_MEBIBYTE);
  EXPECT_TRUE(isServed(other));
  EXPECT_EQ(2U, echo_.lines);
}

TEST_F(QxnetServerHostile, AMillionEmptyLinesReachNobody) {
  const ContextThreads threads(context_, 1);
  LoopbackPeer other(port());
  ASSERT_TRUE(isServed(other));
  LoopbackPeer empty(port());
  const std::size_t pages = residentPages();
  constexpr int LINES = IS_SANITIZED ? 100'000 : 1'000'000;
  std::string piece;
  for (int i = 0; i < 1000; ++i) piece += "\r\n";
  for (int i = 0; i < LINES / 1000; ++i) ASSERT_TRUE(empty.send(piece));
  EXPECT_TRUE(isServed(other));
  EXPECT_TRUE(isServed(empty));
  EXPECT_EQ(3U, echo_.lines);
  EXPECT_LT(residentPages(), pages + 16 * PAGES_IN_A_MEBIBYTE);
}

TEST_F(QxnetServerHostile, APeerThatNeverSpeaksAndNeverReadsIsInNobodysWay) {
  const ContextThreads threads(context_, 1);
  constexpr int SMALLEST_BUFFER = 1;
  LoopbackPeer silent(port());
  LoopbackPeer deaf(port(), "127.0.0.1", SMALLEST_BUFFER);
  LoopbackPeer other(port());
  ASSERT_TRUE(isServed(other));
  const std::size_t pages = residentPages();
  // It sends lines and takes no answer, until the server takes none either.
  const std::string line = std::string(60'000, 'x') + "\r\n";
  while (echo_.refused < 10) ASSERT_TRUE(deaf.send(line));
  EXPECT_TRUE(isServed(other));
  // The answers that wait, the system's buffers not counted.
  EXPECT_LT(residentPages(), pages + 24 * PAGES_IN_A_MEBIBYTE);
  EXPECT_EQ(0U, echo_.ends().size());
}

TEST_F(QxnetServerHostile, ALineOfSingleBytesArrivesWhole) {
  const ContextThreads threads(context_, 1);
  LoopbackPeer slow(port());
  const std::string line = std::string(2000, 'x') + "\r\r\n";
  for (const char byte : line) ASSERT_TRUE(slow.send(std::string(1, byte)));
  EXPECT_TRUE(waitUntil([&] { return slow.received().size() >= line.size(); }));
  EXPECT_EQ(line, slow.received());
  EXPECT_EQ(1U, echo_.lines);
}

TEST_F(QxnetServerHostile, ALineAtTheLimitInSingleBytesTakesNoLongerThanItsBytes) {
  const ContextThreads threads(context_, 1);
  LoopbackPeer slow(port());
  constexpr std::size_t SIZE = IS_SANITIZED ? 8192 : TCPConnection::LONGEST_LINE;
  const std::string line = std::string(SIZE - 2, 'x') + "\r\n";
  for (const char byte : line) ASSERT_TRUE(slow.send(std::string(1, byte)));
  EXPECT_TRUE(waitUntil([&] { return slow.received().size() >= line.size(); }));
  EXPECT_EQ(line, slow.received());
}

/// Lowers the number of descriptors that this process may have, for a while.
class FewDescriptors {
 public:
  explicit FewDescriptors(rlim_t count) {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    rlimit few = before_;
    few.rlim_cur = count;
    ::setrlimit(RLIMIT_NOFILE, &few);
  }
  ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;

 private:
  rlimit before_{};
};

TEST_F(QxnetServerHostile, ACrowdBeyondTheDescriptorsEndsTheAcceptingAndNothingElse) {
  constexpr int CROWD = 2000;
  LoopbackPeer other(port());
  const auto stand = [port = std::to_string(port())](int connections) {
    auto crowd = std::make_unique<Crowd>(std::vector<std::string>{"stand", port, std::to_string(connections)});
    EXPECT_TRUE(crowd->stands());
    return crowd;
  };
  {
    // All that happens later happens once before: to look at a type it has not seen, a sanitizer needs two descriptors.
    const LogCapture apart(log4cplus::ERROR_LOG_LEVEL);
    const ContextThreads threads(context_, 2);
    EXPECT_TRUE(isServed(other));
    server_->handleAccept(boost::asio::error::no_memory);
    EXPECT_EQ(1U, apart.texts().size());
  }
  std::unique_ptr<Crowd> crowd = stand(CROWD);
  {
    const FewDescriptors few(200);
    const ContextThreads threads(context_, 2);
    ASSERT_TRUE(waitUntil([&] { return capture_.count(log4cplus::ERROR_LOG_LEVEL) > 0; }));
    EXPECT_TRUE(isServed(other));
    EXPECT_LT(echo_.opened, 200U);
    EXPECT_GT(echo_.opened, 1U);
  }
  EXPECT_THAT(capture_.texts(), testing::ElementsAre("handleAccept(): Error accepting connection for \"127.0.0.1:0\": "
                                                     "Too many open files"));

  // The crowd goes, and there are descriptors again: still nobody is accepted, until the server is started anew.
  const ContextThreads threads(context_, 2);
  crowd.reset();
  EXPECT_TRUE(waitUntil([&] { return echo_.ends().size() == echo_.opened - 1; }));
  EXPECT_TRUE(isServed(other));
  const std::size_t opened = echo_.opened;
  const std::unique_ptr<Crowd> late = stand(1);
  EXPECT_TRUE(isServed(other));
  EXPECT_EQ(opened, echo_.opened);
  server_->stop();
  ASSERT_FALSE(server_->start());
  LoopbackPeer fresh(port());
  EXPECT_TRUE(isServed(fresh));
}

}  // namespace

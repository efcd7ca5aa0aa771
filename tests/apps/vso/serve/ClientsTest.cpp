#include "apps/vso/serve/Clients.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address_v4.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/serve/LineCommands.h"
#include "mesh/announcements.h"
#include "qxnet/TCPConnection.h"
#include "support/Loopback.h"

namespace qx::app {
namespace {

using test::LoopbackPeer;
using test::runUntil;
using testing::EndsWith;

const std::string LAMP = "0011223344556677";
/// A server of a mesh with one lamp, on the test's thread.
class ClientsTest : public testing::Test {
 protected:
  ClientsTest() {
    EXPECT_EQ(commands_.answer("frame " + test::announcementOf(LAMP, 7)), "ok taken\r\n");
    EXPECT_FALSE(server_->start());
  }
  ~ClientsTest() override {
    server_->stop();
    context_.restart();
    context_.run_for(std::chrono::milliseconds(20));
  }

  std::uint16_t port() const { return server_->endpoint().port(); }
  bool receives(LoopbackPeer& peer, const std::string& text) {
    return runUntil(context_, [&] { return peer.received() == text; });
  }

  /// Connects as many as there may be, each of which is served.
  std::vector<std::unique_ptr<LoopbackPeer>> crowd() {
    std::vector<std::unique_ptr<LoopbackPeer>> peers;
    for (std::size_t i = 0; i < clients_.most(); ++i) {
      peers.push_back(std::make_unique<LoopbackPeer>(port()));
      EXPECT_TRUE(isServed(*peers.back())) << i;
    }
    return peers;
  }
  /// False if it is sent away.
  bool isServed(LoopbackPeer& peer) {
    if (!peer.send("save\r\n")) return false;
    EXPECT_TRUE(runUntil(context_, [&] { return peer.received() == "ok\r\n" || peer.isEnded(); }));
    return peer.received() == "ok\r\n";
  }

  boost::asio::io_context context_;
  MeshServer mesh_{std::time(nullptr)};
  int saves_ = 0;
  LineCommands commands_{mesh_, [this] { ++saves_; }};
  Clients clients_{context_, commands_};
  boost::shared_ptr<QxnetServer> server_ = clients_.serverAt(
      {boost::asio::ip::address_v4::loopback(), 0}, [](const BErrorCode& error) { ADD_FAILURE() << error.message(); });
};

TEST_F(ClientsTest, AreAnsweredLineByLine) {
  LoopbackPeer peer(port());
  ASSERT_TRUE(peer.send("save\r\n\r\nsing\r\nsa"));
  EXPECT_TRUE(receives(peer, "ok\r\nerror there is no command \"sing\": say help\r\n"));
  ASSERT_TRUE(peer.send("ve\r\n"));
  EXPECT_TRUE(receives(peer, "ok\r\nerror there is no command \"sing\": say help\r\nok\r\n"));
  EXPECT_EQ(saves_, 2);
}

TEST_F(ClientsTest, AreHeardAgainWhenTheyHaveRead) {
  constexpr int SMALL = 4096;
  LoopbackPeer peer(port(), "127.0.0.1", SMALL);
  const std::string report = commands_.answer("health all xml");
  const std::size_t enough = 8 * net::stream::TCPConnection::WRITE_LIMIT / report.size();
  std::string questions;
  for (std::size_t i = 0; i < enough; ++i) questions += "health all xml\r\n";
  ASSERT_TRUE(peer.send(questions + "save\r\n"));
  test::runAWhile(context_);
  EXPECT_EQ(saves_, 0) << "the last line waits";

  LoopbackPeer other(port());
  ASSERT_TRUE(other.send("label " + LAMP + " lamp\r\n"));
  EXPECT_TRUE(receives(other, "ok\r\n")) << "nobody else does";

  EXPECT_TRUE(runUntil(context_, [&] { return peer.received().size() == enough * report.size() + 4; }));
  EXPECT_EQ(peer.received().substr(0, report.size()), report);
  EXPECT_THAT(peer.received(), EndsWith("</health>\r\nok\r\n"));
  EXPECT_EQ(saves_, 1);
}

TEST_F(ClientsTest, WaitForRoomWithTheirLineAndNotWithItsAnswer) {
  const std::size_t sizeOfOne = commands_.answer("health all xml").size();
  const std::size_t enough = 8 * net::stream::TCPConnection::WRITE_LIMIT / sizeOfOne;
  for (std::size_t i = 0; i < enough; ++i) {
    char euid[17];
    std::snprintf(euid, sizeof euid, "%016zx", 0x10000 + i);
    ASSERT_EQ(commands_.answer("frame " + test::announcementOf(euid, 1)), "ok taken\r\n");
  }
  constexpr int SMALL = 4096;
  LoopbackPeer peer(port(), "127.0.0.1", SMALL);
  ASSERT_TRUE(peer.send("health all xml\r\nsave\r\n"));
  test::runAWhile(context_);
  EXPECT_EQ(saves_, 0);
  EXPECT_TRUE(runUntil(context_, [&] { return testing::Value(peer.received(), EndsWith("</health>\r\nok\r\n")); }));
  EXPECT_EQ(saves_, 1);
}

TEST_F(ClientsTest, MayGoWithAnswersUnderWay) {
  constexpr int SMALL = 4096;
  {
    LoopbackPeer peer(port(), "127.0.0.1", SMALL);
    std::string questions;
    for (int i = 0; i < 2000; ++i) questions += "health all xml\r\n";
    ASSERT_TRUE(peer.send(questions));
    test::runAWhile(context_);
    peer.reset();
  }
  LoopbackPeer other(port());
  ASSERT_TRUE(other.send("save\r\n"));
  EXPECT_TRUE(receives(other, "ok\r\n"));
}

TEST_F(ClientsTest, AreNoMoreThanThereMayBe) {
  std::vector<std::unique_ptr<LoopbackPeer>> peers = crowd();
  LoopbackPeer last(port());
  EXPECT_FALSE(isServed(last));
  EXPECT_EQ(last.received(), "");

  peers.pop_back();
  EXPECT_TRUE(runUntil(context_, [&] {
    LoopbackPeer next(port());
    return isServed(next);
  }));
}

TEST_F(ClientsTest, AreForgottenWithTheirServer) {
  const std::vector<std::unique_ptr<LoopbackPeer>> peers = crowd();
  const auto place = server_->endpoint();
  server_->stop();
  server_ = clients_.serverAt(place, [](const BErrorCode&) {});
  ASSERT_FALSE(server_->start());
  LoopbackPeer next(port());
  EXPECT_TRUE(isServed(next));
}

}  // namespace
}  // namespace qx::app

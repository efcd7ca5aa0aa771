#include "qxnet/TCPServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "platform/qxnet/RecordingServer.h"
#include "support/LogCapture.h"
#include "support/Loopback.h"

namespace qx::net::stream {
namespace {

using boost::asio::ip::make_address;
using test::LoopbackPeer;
using test::OPENED;
using test::RecordingServer;
using test::runUntil;
using testing::ElementsAre;

TEST(TCPServer, IsAStreamServerOfTcpConnections) {
  EXPECT_TRUE((std::is_base_of_v<
               StreamServer<BasicAcceptorPolicy<boost::asio::ip::tcp::acceptor, boost::asio::ip::tcp::endpoint>,
                            TCPConnection>,
               TCPServer>));
  EXPECT_TRUE(std::has_virtual_destructor_v<TCPServer>);
}

TEST(TCPServer, PortsEndAt65535) {
  boost::asio::io_context context;
  const auto address = make_address("127.0.0.1");
  for (const unsigned int port : {65536U, 65537U, 131072U, std::numeric_limits<unsigned int>::max()}) {
    EXPECT_THROW(RecordingServer(context, address, port), std::invalid_argument) << port;
  }
  EXPECT_EQ(65535, RecordingServer(context, address, 65535).endpoint().port());
}

TEST(TCPServer, HasTheEndpointItWasMadeWithUntilItListens) {
  boost::asio::io_context context;
  const RecordingServer server(context, make_address("192.0.2.7"), 8080);
  EXPECT_EQ("192.0.2.7", server.endpoint().address().to_string());
  EXPECT_EQ(8080, server.endpoint().port());
  EXPECT_FALSE(server.acceptor_.is_open());
}

TEST(TCPServer, ListensOnIPv6Too) {
  boost::asio::io_context context;
  const auto server = boost::make_shared<RecordingServer>(context, make_address("::1"), 0);
  const test::LogCapture capture;
  if (const auto error = server->start()) GTEST_SKIP() << "this machine has no IPv6 loopback: " << error.message();
  const LoopbackPeer peer(server->endpoint().port(), "::1");
  ASSERT_TRUE(peer.isConnected());
  ASSERT_TRUE(peer.send("hello\n"));
  EXPECT_TRUE(runUntil(context, [&] { return server->events.count() == 2; }));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "hello\n"));
  server->stop();
}

TEST(TCPServer, PortOfAStoppedOneIsFreeAtOnce) {
  boost::asio::io_context context;
  const auto first = boost::make_shared<RecordingServer>(context);
  ASSERT_FALSE(first->start());
  const unsigned short port = first->endpoint().port();
  const LoopbackPeer peer(port);
  ASSERT_TRUE(runUntil(context, [&] { return first->events.count() == 1; }));
  first->stop();
  const auto second = boost::make_shared<RecordingServer>(context, make_address("127.0.0.1"), port);
  EXPECT_FALSE(second->start());
  EXPECT_EQ(port, second->endpoint().port());
  second->stop();
}

}  // namespace
}  // namespace qx::net::stream

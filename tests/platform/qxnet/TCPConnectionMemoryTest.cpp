// What a connection keeps.
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/socket_base.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <cstddef>
#include <string>

#include "platform/qxnet/LargeBlocks.h"
#include "qxnet/TCPConnection.h"
#include "support/Loopback.h"

namespace qx::net::stream {
namespace {

using boost::asio::ip::tcp;
using test::largeBlocks;
using test::LoopbackPeer;
using test::runAWhile;
using test::runUntil;

/// An open connection to a peer that takes little.
struct MemoryLink {
  MemoryLink() {
    acceptor.accept(connection->socket());
    connection->socket().set_option(boost::asio::socket_base::send_buffer_size(SMALL));
    connection->start();
    runAWhile(context);
  }

  static constexpr int SMALL = 4096;

  boost::asio::io_context context;
  tcp::acceptor acceptor{context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
  LoopbackPeer peer{acceptor.local_endpoint().port(), "127.0.0.1", SMALL};
  TCPConnection::Ptr connection = boost::make_shared<TCPConnection>(context);
};

TEST(TCPConnection, ClosedOneKeepsNothingOfWhatWasToBeSent) {
  MemoryLink link;
  const int before = largeBlocks();
  EXPECT_FALSE(link.connection->asyncWrite(std::string(TCPConnection::WRITE_LIMIT - 1, 'x')));
  EXPECT_FALSE(link.connection->asyncWrite(std::string(8 << 20, 'y')));
  runAWhile(link.context);
  EXPECT_EQ(before + 2, largeBlocks());  // being sent, and waiting
  link.connection->close();
  runAWhile(link.context);
  EXPECT_EQ(before, largeBlocks());
}

TEST(TCPConnection, BrokenOneKeepsNothingOfWhatWasToBeSent) {
  MemoryLink link;
  const int before = largeBlocks();
  EXPECT_FALSE(link.connection->asyncWrite(std::string(TCPConnection::WRITE_LIMIT - 1, 'x')));
  EXPECT_FALSE(link.connection->asyncWrite(std::string(8 << 20, 'y')));
  runAWhile(link.context);
  link.peer.reset();
  EXPECT_TRUE(runUntil(link.context, [&link] { return link.connection->state() == CONNECTION_CLOSED; }));
  runAWhile(link.context);
  EXPECT_EQ(before, largeBlocks());
}

TEST(TCPConnection, LargeMessageIsNotKeptOnceItIsSent) {
  constexpr std::size_t SIZE = 4 << 20;
  MemoryLink link;
  const int before = largeBlocks();
  EXPECT_FALSE(link.connection->asyncWrite(std::string(SIZE, 'x')));
  EXPECT_EQ(before + 1, largeBlocks());
  std::size_t received = 0;
  EXPECT_TRUE(runUntil(link.context, [&] { return (received += link.peer.take()) == SIZE; }));
  runAWhile(link.context);
  EXPECT_EQ(before, largeBlocks());
  EXPECT_EQ(CONNECTION_OPEN, link.connection->state());
}

}  // namespace
}  // namespace qx::net::stream

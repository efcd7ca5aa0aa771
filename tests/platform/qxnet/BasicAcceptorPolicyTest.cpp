#include "qxnet/BasicAcceptorPolicy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>
#include <sys/socket.h>

#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cerrno>
#include <string>

#include "support/LogCapture.h"
#include "support/Loopback.h"

namespace qx::net::stream {
namespace {

using boost::asio::ip::make_address;
using boost::asio::ip::tcp;
using boost::system::error_code;
using test::LogCapture;
using test::LoopbackPeer;
using testing::ElementsAre;
using testing::IsEmpty;

struct Policy : BasicAcceptorPolicy<tcp::acceptor, tcp::endpoint> {
  using Base = BasicAcceptorPolicy<tcp::acceptor, tcp::endpoint>;
  explicit Policy(boost::asio::io_context& context, const std::string& address = "127.0.0.1", unsigned short port = 0)
      : Base(context, tcp::endpoint(make_address(address), port)) {}

  using Base::acceptor_;
  using Base::closeAcceptor;
  using Base::endpoint_;
  using Base::listeningEndpoint;
  using Base::openAcceptor;

  unsigned short port() const { return listeningEndpoint().port(); }
};

std::string textOf(const tcp::endpoint& endpoint) {
  return endpoint.address().to_string() + ':' + std::to_string(endpoint.port());
}

TEST(BasicAcceptorPolicy, OpensNothingAtFirst) {
  boost::asio::io_context context;
  const Policy policy(context, "127.0.0.1", 1234);
  EXPECT_FALSE(policy.acceptor_.is_open());
  EXPECT_EQ("127.0.0.1:1234", textOf(policy.listeningEndpoint()));
}

TEST(BasicAcceptorPolicy, OpenListens) {
  LogCapture capture;
  boost::asio::io_context context;
  Policy policy(context);
  EXPECT_EQ(error_code(), policy.openAcceptor());
  EXPECT_TRUE(policy.acceptor_.is_open());
  EXPECT_NE(0, policy.port());
  EXPECT_EQ(0, policy.endpoint_.port());
  EXPECT_EQ("127.0.0.1", policy.listeningEndpoint().address().to_string());
  EXPECT_TRUE(LoopbackPeer(policy.port()).isConnected());
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(BasicAcceptorPolicy, AddressMayBeUsedAgain) {
  boost::asio::io_context context;
  Policy policy(context);
  ASSERT_FALSE(policy.openAcceptor());
  int value = 0;
  socklen_t size = sizeof value;
  ASSERT_EQ(0, ::getsockopt(policy.acceptor_.native_handle(), SOL_SOCKET, SO_REUSEADDR, &value, &size));
  EXPECT_EQ(1, value);
}

TEST(BasicAcceptorPolicy, AsksToHearOfPeersThatGiveUp) {
  boost::asio::io_context context;
  Policy policy(context);
  ASSERT_FALSE(policy.openAcceptor());
  boost::asio::socket_base::enable_connection_aborted isReported;
  policy.acceptor_.get_option(isReported);
  EXPECT_TRUE(isReported.value());
}

TEST(BasicAcceptorPolicy, OpenOneIsNotOpenedAgain) {
  boost::asio::io_context context;
  Policy policy(context);
  ASSERT_FALSE(policy.openAcceptor());
  const unsigned short port = policy.port();
  LogCapture capture;
  EXPECT_EQ(boost::asio::error::already_open, policy.openAcceptor());
  ASSERT_THAT(capture.texts(), ElementsAre("openAcceptor(): Error opening acceptor [127.0.0.1:0]: Already open"));
  EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, capture.lines().front().level);
  EXPECT_EQ(port, policy.port());
  EXPECT_TRUE(LoopbackPeer(port).isConnected());
}

TEST(BasicAcceptorPolicy, EndpointInUseIsNotBound) {
  boost::asio::io_context context;
  Policy first(context);
  ASSERT_FALSE(first.openAcceptor());
  Policy second(context, "127.0.0.1", first.port());
  LogCapture capture;
  EXPECT_EQ(boost::asio::error::address_in_use, second.openAcceptor());
  ASSERT_THAT(capture.texts(), ElementsAre("openAcceptor(): Error binding to endpoint [127.0.0.1:" +
                                           std::to_string(first.port()) + "]: Address already in use"));
  EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, capture.lines().front().level);
}

TEST(BasicAcceptorPolicy, AddressOfAnotherMachineIsNotBound) {
  boost::asio::io_context context;
  Policy policy(context, "192.0.2.1", 4321);
  LogCapture capture;
  EXPECT_EQ(error_code(EADDRNOTAVAIL, boost::system::system_category()), policy.openAcceptor());
  ASSERT_THAT(
      capture.texts(),
      ElementsAre("openAcceptor(): Error binding to endpoint [192.0.2.1:4321]: Cannot assign requested address"));
  EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, capture.lines().front().level);
}

TEST(BasicAcceptorPolicy, AfterAFailureItIsClosedBeforeTheNextAttempt) {
  boost::asio::io_context context;
  Policy first(context);
  ASSERT_FALSE(first.openAcceptor());
  Policy second(context, "127.0.0.1", first.port());
  LogCapture capture;
  EXPECT_EQ(boost::asio::error::address_in_use, second.openAcceptor());
  EXPECT_EQ(boost::asio::error::already_open, second.openAcceptor());
  first.closeAcceptor(false);
  second.closeAcceptor(false);
  EXPECT_EQ(error_code(), second.openAcceptor());
}

TEST(BasicAcceptorPolicy, FailureIsLoggedWithItsPlace) {
  boost::asio::io_context context;
  Policy policy(context, "192.0.2.1", 4321);
  LogCapture capture;
  EXPECT_TRUE(policy.openAcceptor());
  ASSERT_EQ(1U, capture.lines().size());
  EXPECT_THAT(capture.lines().front().file, testing::EndsWith("qxnet/BasicAcceptorPolicy.h"));
  EXPECT_THAT(capture.lines().front().function, testing::HasSubstr("openAcceptor"));
  EXPECT_EQ("root", capture.lines().front().logger);
}

TEST(BasicAcceptorPolicy, ListensOnBothFamilies) {
  boost::asio::io_context context;
  Policy policy(context, "::1");
  LogCapture capture;
  if (const error_code error = policy.openAcceptor()) {
    GTEST_SKIP() << "this machine has no IPv6 loopback: " << error.message();
  }
  EXPECT_TRUE(policy.listeningEndpoint().address().is_v6());
  EXPECT_TRUE(LoopbackPeer(policy.port(), "::1").isConnected());
  EXPECT_EQ(boost::asio::error::already_open, policy.openAcceptor());
  EXPECT_THAT(capture.texts(), ElementsAre("openAcceptor(): Error opening acceptor [[::1]:0]: Already open"));
}

TEST(BasicAcceptorPolicy, CloseEndsListening) {
  LogCapture capture;
  for (const bool argument : {false, true}) {
    boost::asio::io_context context;
    Policy policy(context);
    ASSERT_FALSE(policy.openAcceptor());
    const unsigned short port = policy.port();
    policy.closeAcceptor(argument);
    EXPECT_FALSE(policy.acceptor_.is_open());
    EXPECT_FALSE(LoopbackPeer(port).isConnected());
    EXPECT_EQ(0, policy.port());
  }
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(BasicAcceptorPolicy, ClosedOneIsNotClosedAgain) {
  LogCapture capture;
  boost::asio::io_context context;
  Policy policy(context);
  policy.closeAcceptor(false);
  ASSERT_FALSE(policy.openAcceptor());
  policy.closeAcceptor(false);
  policy.closeAcceptor(false);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

}  // namespace
}  // namespace qx::net::stream

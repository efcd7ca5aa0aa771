#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cerrno>
#include <string>

#include "platform/qxnet/SocketCalls.h"
#include "qxnet/BasicAcceptorPolicy.h"
#include "support/LogCapture.h"

namespace qx::net::stream {
namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;
using test::Call;
using test::FailingCall;
using test::LogCapture;
using testing::ElementsAre;

struct Policy : BasicAcceptorPolicy<tcp::acceptor, tcp::endpoint> {
  using Base = BasicAcceptorPolicy<tcp::acceptor, tcp::endpoint>;
  explicit Policy(boost::asio::io_context& context)
      : Base(context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)) {}

  using Base::acceptor_;
  using Base::closeAcceptor;
  using Base::openAcceptor;
};

struct FailedStep {
  const char* name;
  Call call;
  int error;
  const char* text;
};

class BasicAcceptorPolicyFailedStep : public testing::TestWithParam<FailedStep> {};

TEST_P(BasicAcceptorPolicyFailedStep, IsLoggedAndReturned) {
  boost::asio::io_context context;
  Policy policy(context);
  LogCapture capture;
  {
    const FailingCall failing(GetParam().call, GetParam().error);
    EXPECT_EQ(error_code(GetParam().error, boost::system::system_category()), policy.openAcceptor());
  }
  ASSERT_THAT(capture.texts(), ElementsAre(GetParam().text));
  EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, capture.lines().front().level);
  policy.closeAcceptor(false);
  EXPECT_FALSE(policy.openAcceptor());
  EXPECT_EQ(1U, capture.lines().size());
}

INSTANTIATE_TEST_SUITE_P(
    Steps, BasicAcceptorPolicyFailedStep,
    testing::Values(FailedStep{"Open", Call::SOCKET, EMFILE,
                               "openAcceptor(): Error opening acceptor [127.0.0.1:0]: Too many open files"},
                    FailedStep{"ReuseAddress", Call::REUSE_ADDRESS, ENOBUFS,
                               "openAcceptor(): Error setting socket option (SO_REUSEADDR) [127.0.0.1:0]: No buffer "
                               "space available"},
                    FailedStep{"Bind", Call::BIND, EACCES,
                               "openAcceptor(): Error binding to endpoint [127.0.0.1:0]: Permission denied"},
                    FailedStep{"Listen", Call::LISTEN, EADDRINUSE,
                               "openAcceptor(): Error listening for incoming connections [127.0.0.1:0]: Address "
                               "already in use"}),
    [](const auto& row) { return row.param.name; });

TEST(BasicAcceptorPolicy, BacklogIs128) {
  boost::asio::io_context context;
  Policy policy(context);
  ASSERT_FALSE(policy.openAcceptor());
  EXPECT_EQ(128, test::lastBacklog());
}

TEST(BasicAcceptorPolicy, FailedCloseIsLogged) {
  boost::asio::io_context context;
  Policy policy(context);
  ASSERT_FALSE(policy.openAcceptor());
  LogCapture capture;
  {
    const FailingCall failing(Call::CLOSE, EIO);
    policy.closeAcceptor(false);
  }
  ASSERT_THAT(capture.texts(),
              ElementsAre("closeAcceptor(): Error closing acceptor [127.0.0.1:0]: Input/output error"));
  EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, capture.lines().front().level);
  EXPECT_FALSE(policy.acceptor_.is_open());
  EXPECT_FALSE(policy.openAcceptor());
}

}  // namespace
}  // namespace qx::net::stream

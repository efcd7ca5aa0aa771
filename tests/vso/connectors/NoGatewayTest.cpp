// The metrics client where the gateway's name does not resolve.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/make_shared.hpp>
#include <string>

#include "qxstatsdclient/StatsdClient.h"
#include "support/LogCapture.h"
#include "support/UdpReceiver.h"
#include "vso/connectors/QxMetricsClient.h"

namespace qx {
namespace {

using boost::asio::io_context;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int DEBUG = 10000;
constexpr int WARN = 30000;

TEST(NoGateway, LogsOneWarningForEachAttempt) {
  const test::LogCapture log;
  for (std::size_t attempts = 1; attempts <= 2; ++attempts) {
    EXPECT_NO_THROW(QxMetricsClient::instance().initializeDataLakeConnection(boost::make_shared<io_context>()));
    ASSERT_THAT(log.lines(), testing::SizeIs(attempts));
    EXPECT_EQ(log.count(WARN), attempts);
    EXPECT_EQ(log.texts().back(),
              "QxMetricsClient::initializeDataLakeConnection: cannot resolve host name gateway.invalid");
  }
}

TEST(NoGateway, LeavesTheClientNotConnected) {
  const auto context = boost::make_shared<io_context>();
  const test::UdpReceiver receiver;
  ASSERT_TRUE(receiver.isOpen());
  StatsdClient& sender = *StatsdClient::getInstance();
  sender.setAsioContext(context.get(), false);
  sender.setServer(receiver.address(), receiver.port());

  QxMetricsClient::instance().initializeDataLakeConnection(context);
  {
    const test::LogCapture log;
    QxMetricsClient::instance().send("a", "b", "c");
    EXPECT_THAT(log.texts(), ElementsAre("QxMetricsClient::sendImpl: StatsdClient connection not initialized"));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  EXPECT_TRUE(sender.string("end", "of", "test"));
  EXPECT_THAT(receiver.upTo("end.of:test|s"), IsEmpty());
}

}  // namespace
}  // namespace qx

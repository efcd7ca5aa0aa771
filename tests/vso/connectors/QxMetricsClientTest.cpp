#include "vso/connectors/QxMetricsClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/make_shared.hpp>
#include <limits>
#include <string>
#include <vector>

#include "qxstatsdclient/StatsdClient.h"
#include "support/LogCapture.h"
#include "support/UdpReceiver.h"

namespace qx {
namespace {

using boost::asio::io_context;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int DEBUG = 10000;

const std::string DROPPED = "QxMetricsClient::sendImpl: StatsdClient connection not initialized";

/// The client over the real client of the server, which sends to a receiver of the test's own.
class QxMetricsClientTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(receiver_.isOpen());
    redirect();
  }

  void TearDown() override { client_.stop(); }

  void redirect() {
    StatsdClient::getInstance()->setAsioContext(context_.get(), false);
    StatsdClient::getInstance()->setServer(receiver_.address(), receiver_.port());
  }

  void connect() {
    const test::LogCapture log;
    client_.initializeDataLakeConnection(context_);
    EXPECT_THAT(log.texts(), IsEmpty());
    redirect();
  }

  /// The datagrams so far.
  std::vector<std::string> sent() {
    EXPECT_TRUE(StatsdClient::getInstance()->string("end", "of", "test"));
    return receiver_.upTo("end.of:test|s");
  }

  test::UdpReceiver receiver_;
  boost::shared_ptr<io_context> context_ = boost::make_shared<io_context>();
  QxMetricsClient& client_ = QxMetricsClient::instance();
};

TEST_F(QxMetricsClientTest, HasThePrefixOfTheSystem) { EXPECT_EQ(QxMetricsClient::PREFIX, "vessori2.v2."); }

TEST_F(QxMetricsClientTest, IsOneObject) { EXPECT_EQ(&QxMetricsClient::instance(), &client_); }

TEST_F(QxMetricsClientTest, DropsEveryKindOfSendBeforeTheSetUpWithOneDebugLineEach) {
  {
    const test::LogCapture log;
    client_.send("a", "b", "c");
    client_.send("a", "b", -1);
    client_.send("a", "b", 1U);
    client_.sendJson("a", "b", R"({"c":1})");
    client_.sendImpl(false, "a", "b", "c");
    client_.sendImpl(true, "a", "b", "c");
    EXPECT_EQ(log.texts(), std::vector<std::string>(6, DROPPED));
    EXPECT_EQ(log.count(DEBUG), 6U);
  }
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(QxMetricsClientTest, SendsTextUnderThePrefixedName) {
  connect();
  client_.send("a", "b", "c");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b:c|s"));
}

TEST_F(QxMetricsClientTest, SendsUnderTheBarePrefixIfTheNameIsEmpty) {
  connect();
  client_.send("", "b", "c");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2..b:c|s"));
}

TEST_F(QxMetricsClientTest, SendsNumbersInDecimal) {
  connect();
  client_.send("a", "b", 0);
  client_.send("a", "b", -1);
  client_.send("a", "b", std::numeric_limits<int>::max());
  client_.send("a", "b", std::numeric_limits<int>::min());
  client_.send("a", "b", 0U);
  client_.send("a", "b", 4294967295U);
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b:0|g", "vessori2.v2.a.b:0|g\nvessori2.v2.a.b:-1|g",
                                  "vessori2.v2.a.b:2147483647|g", "vessori2.v2.a.b:0|g\nvessori2.v2.a.b:-2147483648|g",
                                  "vessori2.v2.a.b:0|g", "vessori2.v2.a.b:4294967295|g"));
}

TEST_F(QxMetricsClientTest, SendsJsonAsItsLeaves) {
  connect();
  client_.sendJson("a", "b", R"({"c":{"d":-5},"e":"x"})");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b.c.d:0|g\nvessori2.v2.a.b.c.d:-5|g\nvessori2.v2.a.b.e:x|s"));
}

TEST_F(QxMetricsClientTest, SendsTextThatLooksLikeJsonAsText) {
  connect();
  client_.send("a", "b", "{}");
  client_.sendJson("a", "b", "no json");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b:{}|s", "vessori2.v2.a.b:no json|s"));
}

TEST_F(QxMetricsClientTest, ForgesNoSecondMetricFromWhatADeviceSays) {
  connect();
  client_.send("a\nx:1|g", "b\nx:1|g", "1|g\nx:1|g");
  client_.sendJson("a", "b", R"({"c|g\nx":"1|g\nx:1|g"})");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a_x_1_g.b_x_1_g:1_g_x_1_g|s", "vessori2.v2.a.b.c_g_x:1_g_x_1_g|s"));
}

TEST_F(QxMetricsClientTest, LogsNothingForWhatIsSent) {
  connect();
  const test::LogCapture log;
  client_.send("a", "b", "c");
  client_.sendJson("a", "b", R"({"c":1})");
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(QxMetricsClientTest, DropsAfterStopAndSendsAgainAfterAnotherSetUp) {
  connect();
  client_.stop();
  {
    const test::LogCapture log;
    client_.send("a", "b", "dropped");
    EXPECT_THAT(log.texts(), ElementsAre(DROPPED));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  EXPECT_THAT(sent(), IsEmpty());
  connect();
  client_.send("a", "b", "sent");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b:sent|s"));
}

TEST_F(QxMetricsClientTest, MayBeStoppedAtAnyTime) {
  client_.stop();
  connect();
  client_.stop();
  client_.stop();
  client_.send("a", "b", "c");
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(QxMetricsClientTest, LogsADebugLineForNoContextAndStaysNotConnected) {
  {
    const test::LogCapture log;
    client_.initializeDataLakeConnection(nullptr);
    EXPECT_THAT(log.texts(), ElementsAre("QxMetricsClient::initializeDataLakeConnection: ioContext is nullptr"));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  client_.send("a", "b", "c");
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(QxMetricsClientTest, StaysConnectedWhenALaterSetUpHasNoContext) {
  connect();
  client_.initializeDataLakeConnection(nullptr);
  client_.send("a", "b", "c");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b:c|s"));
}

TEST_F(QxMetricsClientTest, LosesMetricsAndNothingElseOnceTheContextEnded) {
  connect();
  context_.reset();
  {
    const test::LogCapture log;
    client_.send("a", "b", "c");
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  context_ = boost::make_shared<io_context>();
  connect();
  client_.send("a", "b", "d");
  EXPECT_THAT(sent(), ElementsAre("vessori2.v2.a.b:d|s"));
}

}  // namespace
}  // namespace qx

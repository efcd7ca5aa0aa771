// The metrics client on top of a client of the server that is missing, or fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "qxstatsdclient/StatsdClient.h"
#include "support/LogCapture.h"
#include "vso/connectors/QxMetricsClient.h"

namespace qx {
namespace {

using boost::asio::io_context;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int DEBUG = 10000;
constexpr int WARN = 30000;

const std::string DROPPED = "QxMetricsClient::sendImpl: StatsdClient connection not initialized";

class FailingClient : public testing::Test {
 protected:
  void SetUp() override { StatsdClient::reset(); }

  void TearDown() override {
    client_.stop();
    StatsdClient::reset();
  }

  void connect() {
    client_.initializeDataLakeConnection(context_);
    StatsdClient::calls.clear();
  }

  /// True if a send reaches the client of the server.
  bool isConnected() {
    StatsdClient::reset();
    client_.send("a", "b", "c");
    return !StatsdClient::calls.empty();
  }

  QxMetricsClient& client_ = QxMetricsClient::instance();
  const boost::shared_ptr<io_context> context_ = boost::make_shared<io_context>();
};

/// A line of `log`, level and text.
std::vector<std::string> shown(const test::LogCapture& log) {
  std::vector<std::string> lines;
  for (const test::LogLine& line : log.lines()) lines.push_back(std::to_string(line.level) + " " + line.text);
  return lines;
}

std::string debug(const std::string& text) { return std::to_string(DEBUG) + " " + text; }
std::string warning(const std::string& text) { return std::to_string(WARN) + " " + text; }

TEST_F(FailingClient, IsSetUpInOrderWhenAllGoesWell) {
  const test::LogCapture log;
  client_.initializeDataLakeConnection(context_);
  EXPECT_THAT(StatsdClient::calls, ElementsAre("setAsioContext false", "setServer 127.0.0.1 8125"));
  EXPECT_EQ(StatsdClient::context, context_.get());
  EXPECT_THAT(shown(log), IsEmpty());
  EXPECT_TRUE(isConnected());
}

TEST_F(FailingClient, IsSetUpAgainByEachCall) {
  connect();
  const auto other = boost::make_shared<io_context>();
  client_.initializeDataLakeConnection(other);
  EXPECT_THAT(StatsdClient::calls, ElementsAre("setAsioContext false", "setServer 127.0.0.1 8125"));
  EXPECT_EQ(StatsdClient::context, other.get());
}

TEST_F(FailingClient, GetsEachKindOfMetric) {
  connect();
  client_.send("a", "b", "c");
  client_.send("a", "b", -1);
  client_.send("a", "b", 4294967295U);
  client_.sendJson("a", "b", "{}");
  client_.sendImpl(false, "", "", "");
  client_.sendImpl(true, "", "b", "c");
  EXPECT_THAT(StatsdClient::calls,
              ElementsAre("string 'vessori2.v2.a' 'b' 'c'", "string 'vessori2.v2.a' 'b' '-1'",
                          "string 'vessori2.v2.a' 'b' '4294967295'", "jsonObject 'vessori2.v2.a' 'b' '{}'",
                          "string 'vessori2.v2.' '' ''", "jsonObject 'vessori2.v2.' 'b' 'c'"));
}

TEST_F(FailingClient, IsNotCalledForADroppedMetric) {
  StatsdClient::onGetInstance = []() -> StatsdClient* {
    ADD_FAILURE() << "asked for";
    return nullptr;
  };
  const test::LogCapture log;
  client_.send("a", "b", "c");
  client_.send("a", "b", 1);
  client_.send("a", "b", 1U);
  client_.sendJson("a", "b", "{}");
  EXPECT_THAT(shown(log), ElementsAre(debug(DROPPED), debug(DROPPED), debug(DROPPED), debug(DROPPED)));
  EXPECT_THAT(StatsdClient::calls, IsEmpty());
}

TEST_F(FailingClient, IsLeftAsItIsByStop) {
  connect();
  client_.stop();
  EXPECT_THAT(StatsdClient::calls, IsEmpty());
}

TEST_F(FailingClient, MissingDuringSetUpLogsADebugLine) {
  StatsdClient::onGetInstance = [] { return nullptr; };
  const test::LogCapture log;
  client_.initializeDataLakeConnection(context_);
  // That it is missing comes first.
  client_.initializeDataLakeConnection(nullptr);
  const std::string line = "QxMetricsClient::initializeDataLakeConnection: cannot get a StatsdClient instance";
  EXPECT_THAT(shown(log), ElementsAre(debug(line), debug(line)));
  EXPECT_FALSE(isConnected());
}

TEST_F(FailingClient, MissingDuringALaterSetUpLeavesTheConnection) {
  connect();
  StatsdClient::onGetInstance = [] { return nullptr; };
  client_.initializeDataLakeConnection(context_);
  EXPECT_TRUE(isConnected());
}

TEST_F(FailingClient, MissingDuringASendDropsTheMetricSilently) {
  connect();
  StatsdClient::onGetInstance = [] { return nullptr; };
  const test::LogCapture log;
  client_.send("a", "b", "c");
  client_.send("a", "b", 1);
  client_.sendJson("a", "b", "{}");
  EXPECT_THAT(shown(log), IsEmpty());
  EXPECT_THAT(StatsdClient::calls, IsEmpty());
  EXPECT_TRUE(isConnected());
}

template <typename Exception>
void fail(const Exception& exception, const std::string& step) {
  if (step == "getInstance") {
    StatsdClient::onGetInstance = [exception]() -> StatsdClient* { throw exception; };
  } else if (step == "setAsioContext") {
    StatsdClient::onSetAsioContext = [exception] { throw exception; };
  } else {
    StatsdClient::onSetServer = [exception] { throw exception; };
  }
}

class FailingStep : public FailingClient, public testing::WithParamInterface<std::string> {};

TEST_P(FailingStep, WithAStandardExceptionLogsOneWarning) {
  fail(std::runtime_error("not today"), GetParam());
  const test::LogCapture log;
  EXPECT_NO_THROW(client_.initializeDataLakeConnection(context_));
  EXPECT_THAT(
      shown(log),
      ElementsAre(warning("QxMetricsClient::initializeDataLakeConnection: cannot resolve host name 127.0.0.1")));
  EXPECT_FALSE(isConnected());
}

TEST_P(FailingStep, WithAStandardExceptionLeavesAnEarlierConnection) {
  connect();
  fail(std::logic_error("not today"), GetParam());
  EXPECT_NO_THROW(client_.initializeDataLakeConnection(context_));
  EXPECT_TRUE(isConnected());
}

TEST_P(FailingStep, WithAnotherExceptionPassesItOnWithoutAWord) {
  fail(42, GetParam());
  const test::LogCapture log;
  EXPECT_THROW(client_.initializeDataLakeConnection(context_), int);
  EXPECT_THAT(shown(log), IsEmpty());
  EXPECT_FALSE(isConnected());
}

TEST_P(FailingStep, WithAnotherExceptionLeavesAnEarlierConnection) {
  connect();
  fail(42, GetParam());
  EXPECT_THROW(client_.initializeDataLakeConnection(context_), int);
  EXPECT_TRUE(isConnected());
}

INSTANTIATE_TEST_SUITE_P(Steps, FailingStep, testing::Values("getInstance", "setAsioContext", "setServer"),
                         [](const testing::TestParamInfo<std::string>& instance) { return instance.param; });

TEST_F(FailingClient, HasNoServerSetAfterAContextThatItDidNotTake) {
  StatsdClient::onSetAsioContext = [] { throw std::runtime_error("not today"); };
  client_.initializeDataLakeConnection(context_);
  EXPECT_THAT(StatsdClient::calls, ElementsAre("setAsioContext false"));
}

}  // namespace
}  // namespace qx

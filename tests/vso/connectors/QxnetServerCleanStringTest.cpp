#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <string>
#include <vector>

#include "qxshared/cleanString.h"
#include "support/LogCapture.h"
#include "vso/connectors/QxnetServer.h"
#include "vso/connectors/RecordingClient.h"

namespace qx {

namespace {

std::vector<std::string> cleaned;

}  // namespace

// In front of the library's own.
std::string cleanString(const std::string& text) {
  cleaned.push_back(text);
  return "cleaned";
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct OpenServer : QxnetServer {
  using QxnetServer::handleData;
  using QxnetServer::QxnetServer;
};

TEST(QxnetServer, DataIsCleanedOnlyForATraceLineThatIsWritten) {
  boost::asio::io_context context;
  test::RecordingClient client;
  OpenServer server(context, boost::asio::ip::address_v4::loopback(), 0, client);
  for (const int level : {log4cplus::DEBUG_LOG_LEVEL, log4cplus::WARN_LOG_LEVEL, log4cplus::OFF_LOG_LEVEL}) {
    const test::LogCapture capture(level);
    server.handleData(nullptr, "x\r\n");
    EXPECT_THAT(cleaned, IsEmpty());
  }
  const test::LogCapture capture(log4cplus::TRACE_LOG_LEVEL);
  server.handleData(nullptr, "x\r\n");
  EXPECT_THAT(cleaned, ElementsAre("x\r\n"));
  EXPECT_THAT(capture.texts().front(), testing::EndsWith(" size = 3, data = cleaned"));
}

}  // namespace
}  // namespace qx

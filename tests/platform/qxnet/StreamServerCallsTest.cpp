#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <boost/asio/io_context.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cerrno>
#include <optional>
#include <vector>

#include "platform/qxnet/RecordingServer.h"
#include "platform/qxnet/SocketCalls.h"
#include "qxnet/StreamServer.h"
#include "support/LogCapture.h"
#include "support/Loopback.h"

namespace qx::net::stream {
namespace {

using boost::system::error_code;
using test::Call;
using test::CLOSED_BY_OWNER;
using test::FailingCall;
using test::LogCapture;
using test::LoopbackPeer;
using test::OPENED;
using test::RecordingServer;
using test::runAWhile;
using test::runUntil;
using testing::ElementsAre;
using testing::IsEmpty;

/// Lets the system's accept fail with `error`, and gives what is logged. The server has to accept again when it was
/// stopped and started, and not before.
std::vector<test::LogLine> linesOfAFailedAccept(int error) {
  boost::asio::io_context context;
  const auto server = boost::make_shared<RecordingServer>(context);
  LogCapture capture;
  EXPECT_FALSE(server->start());
  const LoopbackPeer first(server->endpoint().port());
  {
    const FailingCall failing(Call::ACCEPT, error);
    EXPECT_TRUE(runUntil(context, [&server] { return server->accepts.size() == 1; }));
  }
  EXPECT_THAT(server->accepts, ElementsAre(error_code(error, boost::system::system_category())));
  const LoopbackPeer second(server->endpoint().port());
  runAWhile(context);
  EXPECT_EQ(1U, server->accepts.size());
  EXPECT_EQ(1U, server->created.size());
  EXPECT_THAT(server->events.all(), IsEmpty());
  server->stop();
  EXPECT_FALSE(server->start());
  const LoopbackPeer third(server->endpoint().port());
  EXPECT_TRUE(runUntil(context, [&server] { return server->events.count() == 1; }));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED));
  server->stop();
  runAWhile(context);
  return capture.lines();
}

TEST(StreamServer, PeerThatGaveUpBeforeItWasAcceptedEndsAcceptingSilently) {
  EXPECT_THAT(linesOfAFailedAccept(ECONNABORTED), IsEmpty());
}

TEST(StreamServer, AcceptWithoutDescriptorsEndsAcceptingWithALine) {
  const std::vector<test::LogLine> lines = linesOfAFailedAccept(EMFILE);
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ("handleAccept(): Error accepting connection for \"127.0.0.1:0\": Too many open files", lines[0].text);
  EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, lines[0].level);
}

TEST(StreamServer, FailedAcceptOfBeforeARestartIsNobodys) {
  boost::asio::io_context context;
  const auto server = boost::make_shared<RecordingServer>(context);
  const LogCapture capture;
  EXPECT_FALSE(server->start());
  // The accept behind the first peer's fails when it is begun, and waits to be told.
  std::optional<FailingCall> failing;
  server->onCreate = [&failing] { failing.emplace(Call::ACCEPT, EMFILE); };
  const LoopbackPeer first(server->endpoint().port());
  EXPECT_TRUE(runUntil(context, [&server] { return server->created.size() == 2; }));
  server->onCreate = [] {};
  failing.reset();
  server->stop();
  EXPECT_FALSE(server->start());
  EXPECT_TRUE(runUntil(context, [&server] { return server->events.count() == 2; }));
  runAWhile(context);
  EXPECT_THAT(server->accepts, ElementsAre(error_code()));
  EXPECT_THAT(capture.texts(), IsEmpty());
  const LoopbackPeer second(server->endpoint().port());
  EXPECT_TRUE(runUntil(context, [&server] { return server->events.count() == 3; }));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER, OPENED));
  server->stop();
  runAWhile(context);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(StreamServer, InterruptedAcceptIsNoFailure) {
  boost::asio::io_context context;
  const auto server = boost::make_shared<RecordingServer>(context);
  const LogCapture capture;
  EXPECT_FALSE(server->start());
  const LoopbackPeer peer(server->endpoint().port());
  const FailingCall failing(Call::ACCEPT, EINTR);
  EXPECT_TRUE(runUntil(context, [&server] { return server->events.count() == 1; }));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED));
  EXPECT_THAT(capture.texts(), IsEmpty());
  server->stop();
}

}  // namespace
}  // namespace qx::net::stream

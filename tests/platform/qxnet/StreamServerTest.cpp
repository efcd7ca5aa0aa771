#include "qxnet/StreamServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/qxnet/RecordingServer.h"
#include "support/LogCapture.h"
#include "support/Loopback.h"

namespace qx::net::stream {
namespace {

using boost::asio::ip::make_address;
using boost::system::error_code;
using test::CLOSED_BY_OWNER;
using test::CLOSED_BY_PEER;
using test::ConnectionPtr;
using test::ContextThreads;
using test::LogCapture;
using test::LoopbackPeer;
using test::OPENED;
using test::RecordingServer;
using test::runAWhile;
using test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

/// A started server, whose context runs on the test's thread.
class StartedStreamServer : public testing::Test {
 protected:
  StartedStreamServer() { EXPECT_EQ(error_code(), server->start()); }
  ~StartedStreamServer() override {
    if (server) {
      server->onData = [](auto&&...) {};  // what a hook refers to is gone
      server->onState = [](auto&&...) {};
      server->onStarted = [] {};
      server->onCreate = [] {};
      server->stop();
    }
    runAWhile(context);
    EXPECT_THAT(capture.texts(), IsEmpty());
  }

  LoopbackPeer& connect() {
    peers.push_back(std::make_unique<LoopbackPeer>(server->endpoint().port()));
    EXPECT_TRUE(peers.back()->isConnected());
    return *peers.back();
  }
  bool runUntil(std::size_t eventCount) {
    return test::runUntil(context, [this, eventCount] { return server->events.count() >= eventCount; });
  }
  /// Connects a peer and waits until the server has opened the connection.
  LoopbackPeer& connectAndOpen() {
    const std::size_t before = server->opened.size();
    LoopbackPeer& peer = connect();
    EXPECT_TRUE(test::runUntil(context, [&] { return server->opened.size() > before; }));
    return peer;
  }

  LogCapture capture;
  boost::asio::io_context context;
  boost::shared_ptr<RecordingServer> server = boost::make_shared<RecordingServer>(context);
  std::vector<std::unique_ptr<LoopbackPeer>> peers;
};

/// A pointer to a connection at `address`, where none is.
ConnectionPtr connectionAt(std::uintptr_t address) {
  return {boost::shared_ptr<void>(), reinterpret_cast<TCPConnection*>(address)};
}

TEST_F(StartedStreamServer, AcceptsAnyNumberOfConnections) {
  constexpr std::size_t COUNT = 20;
  for (std::size_t i = 0; i < COUNT; ++i) ASSERT_TRUE(connect().send("hello\n"));
  ASSERT_TRUE(runUntil(2 * COUNT));
  const std::vector<std::string> events = server->events.all();
  EXPECT_EQ(COUNT, std::count(events.begin(), events.end(), OPENED));
  EXPECT_EQ(COUNT, std::count(events.begin(), events.end(), "hello\n"));
  for (const ConnectionPtr& connection : server->opened) {
    EXPECT_EQ(connection, server->findConnection(server->connectionHash(connection)));
  }
}

TEST_F(StartedStreamServer, CreatesAConnectionAtStartAndAfterEachAccept) {
  EXPECT_EQ(1U, server->created.size());
  connectAndOpen();
  EXPECT_EQ(2U, server->created.size());
  connectAndOpen();
  EXPECT_EQ(3U, server->created.size());
  EXPECT_THAT(server->opened, ElementsAre(server->created[0], server->created[1]));
}

TEST_F(StartedStreamServer, ReplacesTheCallbacksOfCreateConnection) {
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(connectAndOpen().send("x\n"));
  ASSERT_TRUE(runUntil(4));
  for (const auto& peer : peers) peer->close();
  ASSERT_TRUE(runUntil(6));
  std::vector<std::string> events = server->events.all();
  std::sort(events.begin(), events.end());
  EXPECT_THAT(events, ElementsAre(CLOSED_BY_PEER, CLOSED_BY_PEER, OPENED, OPENED, "x\n", "x\n"));
}

TEST_F(StartedStreamServer, PendingConnectionIsNotInTheTable) {
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(server->created[0])));
}

TEST_F(StartedStreamServer, ConnectionIsInTheTableBeforeItStarts) {
  bool wasFound = false;
  server->onStarted = [&] {
    wasFound = server->findConnection(server->connectionHash(server->created[0])) == server->created[0];
  };
  connectAndOpen();
  EXPECT_TRUE(wasFound);
}

TEST_F(StartedStreamServer, FindsNothingUnderAnotherHash) {
  connectAndOpen();
  const unsigned int hash = server->connectionHash(server->opened[0]);
  EXPECT_EQ(server->opened[0], server->findConnection(hash));
  for (const unsigned int other : {0U, hash + 1, hash - 1, ~hash}) EXPECT_EQ(nullptr, server->findConnection(other));
}

TEST_F(StartedStreamServer, ConnectionLeavesTheTableAfterItsClosedStateWasTold) {
  LoopbackPeer& peer = connectAndOpen();
  const ConnectionPtr connection = server->opened[0];
  ConnectionPtr found;
  server->onState = [&](const ConnectionPtr& closed, ConnectionState state) {
    if (state == CONNECTION_CLOSED) found = server->findConnection(server->connectionHash(closed));
  };
  peer.close();
  ASSERT_TRUE(runUntil(2));
  EXPECT_EQ(connection, found);
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(connection)));
}

TEST_F(StartedStreamServer, ConnectionLeavesTheTableAlsoIfTellingItsClosedStateThrows) {
  LoopbackPeer& peer = connectAndOpen();
  const ConnectionPtr connection = server->opened[0];
  server->onState = [](auto&&...) { throw std::runtime_error("not now"); };
  peer.close();
  EXPECT_THROW(runUntil(3), std::runtime_error);
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(connection)));
}

TEST_F(StartedStreamServer, ConnectionThatIsClosingStaysInTheTable) {
  LoopbackPeer& peer = connectAndOpen();
  EXPECT_FALSE(server->opened[0]->asyncWrite(std::string(32 << 20, 'x')));
  peer.endSending();
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_EQ(CONNECTION_CLOSING, server->opened[0]->state());
  EXPECT_EQ(server->opened[0], server->findConnection(server->connectionHash(server->opened[0])));
}

TEST_F(StartedStreamServer, StopClosesEveryConnection) {
  for (int i = 0; i < 3; ++i) connectAndOpen();
  const unsigned short port = server->endpoint().port();
  server->stop();
  EXPECT_FALSE(LoopbackPeer(port).isConnected());
  for (const auto& peer : peers) EXPECT_TRUE(peer->isEnded());
  for (const ConnectionPtr& connection : server->opened) EXPECT_EQ(CONNECTION_CLOSED, connection->state());
  EXPECT_EQ(3U, server->events.count());  // the rest is told on the context
  ASSERT_TRUE(runUntil(6));
  EXPECT_THAT(server->events.all(),
              ElementsAre(OPENED, OPENED, OPENED, CLOSED_BY_OWNER, CLOSED_BY_OWNER, CLOSED_BY_OWNER));
}

TEST_F(StartedStreamServer, StoppedConnectionHasLeftTheTableWhenItIsTold) {
  connectAndOpen();
  bool wasTold = false;
  ConnectionPtr found = server->opened[0];
  server->onState = [&](const ConnectionPtr& closed, ConnectionState /*state*/) {
    wasTold = true;
    found = server->findConnection(server->connectionHash(closed));
  };
  server->stop();
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(server->opened[0])));
  ASSERT_TRUE(runUntil(2));
  EXPECT_TRUE(wasTold);
  EXPECT_EQ(nullptr, found);
}

TEST_F(StartedStreamServer, StopsWithoutConnections) {
  server->stop();
  EXPECT_FALSE(server->acceptor_.is_open());
  EXPECT_EQ(0, server->endpoint().port());
  server->stop();
  runAWhile(context);
  EXPECT_THAT(server->accepts, ElementsAre(boost::asio::error::operation_aborted));
  EXPECT_THAT(server->events.all(), IsEmpty());
}

TEST_F(StartedStreamServer, StartsAgainAfterStop) {
  connectAndOpen();
  server->stop();
  EXPECT_EQ(error_code(), server->start());
  ASSERT_TRUE(connectAndOpen().send("again\n"));
  ASSERT_TRUE(runUntil(4));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER, OPENED, "again\n"));
}

TEST_F(StartedStreamServer, DoesNotStartTwice) {
  {
    const LogCapture own;
    EXPECT_EQ(boost::asio::error::already_open, server->start());
    EXPECT_THAT(own.texts(), ElementsAre("openAcceptor(): Error opening acceptor [127.0.0.1:0]: Already open"));
  }
  EXPECT_EQ(1U, server->created.size());
  connectAndOpen();
  EXPECT_EQ(2U, server->created.size());
}

TEST_F(StartedStreamServer, FailedStartDoesNothingElse) {
  const auto second =
      boost::make_shared<RecordingServer>(context, make_address("127.0.0.1"), server->endpoint().port());
  {
    const LogCapture own;
    EXPECT_EQ(boost::asio::error::address_in_use, second->start());
    ASSERT_THAT(own.texts(), ElementsAre("openAcceptor(): Error binding to endpoint [127.0.0.1:" +
                                         std::to_string(server->endpoint().port()) + "]: Address already in use"));
    EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, own.lines().front().level);
  }
  EXPECT_THAT(second->created, IsEmpty());
  EXPECT_EQ(1, second.use_count());
  connectAndOpen();
  EXPECT_THAT(second->accepts, IsEmpty());
}

TEST_F(StartedStreamServer, MayBeStoppedInADataCallback) {
  LoopbackPeer& peer = connectAndOpen();
  server->onData = [this](auto&&...) { server->stop(); };
  ASSERT_TRUE(peer.send("one\ntwo\n"));
  ASSERT_TRUE(runUntil(3));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "one\n", CLOSED_BY_OWNER));
  EXPECT_TRUE(peer.isEnded());
}

TEST_F(StartedStreamServer, MayBeStoppedInAStateCallback) {
  server->onState = [this](auto&&...) { server->stop(); };
  LoopbackPeer& peer = connectAndOpen();
  ASSERT_TRUE(runUntil(2));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  EXPECT_TRUE(peer.isEnded());
  EXPECT_FALSE(server->acceptor_.is_open());
}

TEST_F(StartedStreamServer, StoppedWhileItStartsAConnectionItAcceptsNoMore) {
  server->onStarted = [this] { server->stop(); };
  connect();
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  EXPECT_EQ(1U, server->created.size());
  EXPECT_EQ(1U, server->accepts.size());
}

TEST_F(StartedStreamServer, MayBeStoppedAndStartedInCallbacks) {
  const auto again = [this](auto&&...) {
    server->onData = [](auto&&...) {};
    server->onStarted = [] {};
    server->onState = [](auto&&...) {};
    server->stop();
    EXPECT_EQ(error_code(), server->start());
  };
  const auto lineOfANewPeer = [this] {
    ASSERT_TRUE(connectAndOpen().send("hello\n"));
    ASSERT_TRUE(test::runUntil(context, [this] { return server->events.all().back() == "hello\n"; }));
  };
  LoopbackPeer& peer = connectAndOpen();
  server->onData = again;
  ASSERT_TRUE(peer.send("x\n"));
  ASSERT_TRUE(test::runUntil(context, [this] { return server->events.all().back() == CLOSED_BY_OWNER; }));
  lineOfANewPeer();
  server->onState = again;
  connectAndOpen();
  runAWhile(context);
  lineOfANewPeer();
  server->onStarted = again;
  connect();
  runAWhile(context);
  lineOfANewPeer();
}

TEST_F(StartedStreamServer, RestartedWhileItStartsAConnectionItAcceptsOnce) {
  server->onStarted = [this] {
    server->onStarted = [] {};
    server->stop();
    EXPECT_EQ(error_code(), server->start());
  };
  connect();
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_EQ(2U, server->created.size());
  connectAndOpen();
  EXPECT_EQ(3U, server->created.size());
  EXPECT_THAT(server->accepts, ElementsAre(error_code(), error_code()));
}

TEST_F(StartedStreamServer, PeerThatWaitedBeforeARestartIsNobodys) {
  LoopbackPeer& early = connect();
  server->stop();
  EXPECT_EQ(error_code(), server->start());
  ASSERT_TRUE(connectAndOpen().send("late\n"));
  ASSERT_TRUE(runUntil(2));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "late\n"));
  EXPECT_TRUE(test::runUntil(context, [&] { return early.isEnded(); }));
}

TEST_F(StartedStreamServer, ConnectionAcceptedBeforeAStopIsNobodys) {
  connect();
  LoopbackPeer& second = connect();
  // The second accept has succeeded when it is begun, and waits to be told.
  ASSERT_TRUE(test::runUntil(context, [this] { return server->created.size() == 2; }));
  server->stop();
  server->created.clear();
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  EXPECT_THAT(server->created, IsEmpty());
  EXPECT_THAT(server->opened, testing::SizeIs(1));
  EXPECT_TRUE(second.isEnded());
}

TEST_F(StartedStreamServer, ConnectionAcceptedBeforeARestartIsNobodys) {
  connect();
  LoopbackPeer& second = connect();
  ASSERT_TRUE(test::runUntil(context, [this] { return server->created.size() == 2; }));
  server->stop();
  EXPECT_EQ(error_code(), server->start());
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  ASSERT_EQ(3U, server->created.size());
  EXPECT_EQ(CONNECTION_OPENING, server->created[2]->state());
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(server->created[2])));
  server->created.erase(server->created.begin(), server->created.begin() + 2);
  EXPECT_TRUE(test::runUntil(context, [&] { return second.isEnded(); }));
  ASSERT_TRUE(connectAndOpen().send("late\n"));
  ASSERT_TRUE(runUntil(4));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER, OPENED, "late\n"));
}

TEST_F(StartedStreamServer, StoppedWhileItCreatesAConnectionItAcceptsNoMore) {
  server->onCreate = [this] { server->stop(); };
  connect();
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  EXPECT_FALSE(server->acceptor_.is_open());
  EXPECT_EQ(error_code(), server->start());  // stopped again before it accepts
  runAWhile(context);
  EXPECT_FALSE(server->acceptor_.is_open());
  EXPECT_THAT(server->accepts, ElementsAre(error_code()));
  server->onCreate = [] {};
  EXPECT_EQ(error_code(), server->start());
  connectAndOpen();
}

TEST_F(StartedStreamServer, CallbacksMayCallBack) {
  LoopbackPeer& peer = connectAndOpen();
  int calls = 0;
  const auto callBack = [&](auto&&...) {
    ++calls;
    EXPECT_EQ(nullptr, server->findConnection(1));
    EXPECT_LT(0U, server->connectionHash(server->opened[0]));
    EXPECT_NE(0, server->endpoint().port());
  };
  server->onData = callBack;
  server->onState = callBack;
  server->onStarted = callBack;
  ASSERT_TRUE(peer.send("x\n"));
  peer.endSending();
  ASSERT_TRUE(runUntil(3));
  connectAndOpen();
  EXPECT_EQ(4, calls);
}

TEST_F(StartedStreamServer, AcceptUnderWayKeepsTheServer) {
  const boost::weak_ptr<RecordingServer> weak = server;
  LoopbackPeer& peer = connect();
  RecordingServer* const alive = server.get();
  server.reset();
  ASSERT_FALSE(weak.expired());
  EXPECT_TRUE(test::runUntil(context, [alive] { return alive->events.count() == 1; }));
  ASSERT_TRUE(peer.send("hello\n"));
  EXPECT_TRUE(test::runUntil(context, [alive] { return alive->events.count() == 2; }));
  alive->stop();
  alive->created.clear();
  alive->opened.clear();
  EXPECT_TRUE(test::runUntil(context, [&weak] { return weak.expired(); }));
}

TEST_F(StartedStreamServer, ConnectionsDoNotKeepAServerThatWasStoppedAndLetGo) {
  const boost::weak_ptr<RecordingServer> weak = server;
  connectAndOpen();
  const ConnectionPtr kept = server->opened[0];
  server->stop();
  server.reset();
  EXPECT_TRUE(test::runUntil(context, [&weak] { return weak.expired(); }));
  runAWhile(context);
  EXPECT_EQ(CONNECTION_CLOSED, kept->state());
}

TEST_F(StartedStreamServer, ConnectionsThatGoOnDoNotKeepAServerThatWasLetGo) {
  const boost::weak_ptr<RecordingServer> weak = server;
  server->nextAccept = error_code();
  LoopbackPeer& peer = connectAndOpen();
  const ConnectionPtr kept = server->opened[0];
  server->nextAccept = boost::asio::error::connection_aborted;
  connect();
  ASSERT_TRUE(test::runUntil(context, [this] { return server->accepts.size() == 2; }));
  server.reset();  // no accept is under way
  EXPECT_TRUE(weak.expired());
  ASSERT_TRUE(peer.send("nobody hears this\n"));
  peer.endSending();
  runAWhile(context);
  EXPECT_EQ(CONNECTION_OPEN, kept->state());
  kept->asyncReadUntil("\n");
  EXPECT_TRUE(test::runUntil(context, [&kept] { return kept->state() == CONNECTION_CLOSED; }));
}

TEST_F(StartedStreamServer, HashThatIsTakenLeavesTheTableAsItIs) {
  server->fixedHash = 7;
  connectAndOpen();
  LoopbackPeer& second = connectAndOpen();
  EXPECT_EQ(server->opened[0], server->findConnection(7));
  ASSERT_TRUE(second.send("from the second\n"));
  ASSERT_TRUE(runUntil(3));
  EXPECT_EQ("from the second\n", server->events.all().back());
  second.close();
  ASSERT_TRUE(runUntil(4));
  EXPECT_EQ(server->opened[0], server->findConnection(7));
  connectAndOpen();
  server->stop();
  EXPECT_EQ(CONNECTION_CLOSED, server->opened[0]->state());
  EXPECT_EQ(CONNECTION_OPEN, server->opened[2]->state());
  server->opened[2]->close();
}

TEST_F(StartedStreamServer, HashThatIsFreeAgainIsTakenAgain) {
  server->fixedHash = 7;
  connectAndOpen().close();
  ASSERT_TRUE(runUntil(2));
  EXPECT_EQ(nullptr, server->findConnection(7));
  connectAndOpen();
  EXPECT_EQ(server->opened[1], server->findConnection(7));
}

TEST_F(StartedStreamServer, ForkedDoesNothing) {
  server->forked(true);
  server->forked(false);
  ASSERT_TRUE(connectAndOpen().send("x\n"));
  EXPECT_TRUE(runUntil(2));
}

TEST_F(StartedStreamServer, ServesConnectionsOnSeveralThreads) {
  constexpr int PEERS = 8;
  constexpr int LINES = 200;
  {
    const ContextThreads threads(context, 1);  // the recording is not made for more
    for (int i = 0; i < PEERS; ++i) connect();
    for (int line = 0; line < LINES; ++line) {
      for (const auto& peer : peers) EXPECT_TRUE(peer->send("line\n"));
    }
    EXPECT_TRUE(waitUntil([this] { return server->events.count() == PEERS * (LINES + 1); }));
    server->stop();
    EXPECT_TRUE(waitUntil([this] { return server->events.count() == PEERS * (LINES + 2); }));
  }
}

struct FailedAccept {
  const char* name;
  error_code error;
  const char* text;  // of the log line; none if there is none
};

class StreamServerFailedAccept : public StartedStreamServer, public testing::WithParamInterface<FailedAccept> {};

TEST_P(StreamServerFailedAccept, EndsAcceptingUntilStopAndStart) {
  const LoopbackPeer& open = connectAndOpen();
  {
    const LogCapture own;
    server->nextAccept = GetParam().error;
    connect();
    ASSERT_TRUE(test::runUntil(context, [this] { return server->accepts.size() == 2; }));
    connect();
    runAWhile(context);
    if (GetParam().text == nullptr) {
      EXPECT_THAT(own.lines(), IsEmpty());
    } else {
      ASSERT_THAT(own.texts(), ElementsAre(GetParam().text));
      EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, own.lines().front().level);
      EXPECT_THAT(own.lines().front().function, testing::HasSubstr("handleAccept"));
    }
  }
  EXPECT_EQ(2U, server->accepts.size());
  EXPECT_EQ(2U, server->created.size());
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(server->created[1])));
  // Those that are open go on.
  ASSERT_TRUE(open.send("still here\n"));
  ASSERT_TRUE(runUntil(2));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "still here\n"));
  server->stop();
  EXPECT_EQ(error_code(), server->start());
  ASSERT_TRUE(connectAndOpen().send("again\n"));
  ASSERT_TRUE(runUntil(5));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "still here\n", CLOSED_BY_OWNER, OPENED, "again\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Errors, StreamServerFailedAccept,
    testing::Values(FailedAccept{"Aborted", boost::asio::error::operation_aborted, nullptr},
                    FailedAccept{"ConnectionAborted", boost::asio::error::connection_aborted, nullptr},
                    FailedAccept{"EndOfFile", boost::asio::error::eof, nullptr},
                    FailedAccept{"NoDescriptors", boost::asio::error::no_descriptors,
                                 "handleAccept(): Error accepting connection for \"127.0.0.1:0\": Too many open files"},
                    FailedAccept{"NoMemory", boost::asio::error::no_memory,
                                 "handleAccept(): Error accepting connection for \"127.0.0.1:0\": Cannot allocate "
                                 "memory"},
                    FailedAccept{"Reset", boost::asio::error::connection_reset,
                                 "handleAccept(): Error accepting connection for \"127.0.0.1:0\": Connection reset by "
                                 "peer"},
                    // The number of an error that is passed over, in another category.
                    FailedAccept{"NotFound", error_code(2, boost::system::system_category()),
                                 "handleAccept(): Error accepting connection for \"127.0.0.1:0\": No such file or "
                                 "directory"}),
    [](const auto& row) { return row.param.name; });

TEST(StreamServer, NumbersOfTheErrorsThatArePassedOver) {
  EXPECT_EQ(125, error_code(boost::asio::error::operation_aborted).value());
  EXPECT_EQ(103, error_code(boost::asio::error::connection_aborted).value());
}

TEST(StreamServer, NotHeldInASharedPointerItAcceptsNothing) {
  boost::asio::io_context context;
  RecordingServer server(context);
  const LogCapture capture;
  EXPECT_EQ(error_code(), server.start());
  ASSERT_THAT(capture.texts(), ElementsAre("StreamServer::start got bad_weak_ptr exception, did you forget to wrap "
                                           "your server in a boost shared_ptr?"));
  EXPECT_EQ(log4cplus::FATAL_LOG_LEVEL, capture.lines().front().level);
  EXPECT_TRUE(server.acceptor_.is_open());
  LoopbackPeer peer(server.endpoint().port());
  EXPECT_TRUE(peer.isConnected());  // to the system's queue
  runAWhile(context);
  EXPECT_THAT(server.accepts, IsEmpty());
  EXPECT_THAT(server.events.all(), IsEmpty());
  EXPECT_EQ(boost::asio::error::already_open, server.start());
  server.stop();
  EXPECT_FALSE(server.acceptor_.is_open());
}

TEST(StreamServer, ExceptionsOfCallbacksLeaveRun) {
  boost::asio::io_context context;
  const auto server = boost::make_shared<RecordingServer>(context);
  ASSERT_FALSE(server->start());
  const LoopbackPeer peer(server->endpoint().port());
  server->onData = [](auto&&...) { throw std::runtime_error("of the data callback"); };
  ASSERT_TRUE(peer.send("x\ny\n"));
  for (int i = 0; i < 2; ++i) {
    EXPECT_THROW(test::runUntil(context, [] { return false; }), std::runtime_error);
  }
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "x\n", "y\n"));
  server->stop();
}

TEST(StreamServer, HashIsTheAddressAndAnEighthOfItIn32Bits) {
  struct Row {
    std::uintptr_t address;
    unsigned int hash;
  };
  constexpr Row ROWS[] = {
      {0x0, 0x0},
      {0x8, 0x9},
      {0x10, 0x12},
      {0x1000, 0x1200},
      {0x12345678, 0x147AE147},
      {0xFFFFFFF8, 0x1FFFFFF7},
      {0x100000000, 0x20000000},
      {0x7FFF00000000, 0xE0000000},
      {0x55D0C3A1B2F0, 0xDC15E94E},
      {0x7F1234567890, 0x7AE147A2},
  };
  boost::asio::io_context context;
  const RecordingServer server(context);
  for (const Row& row : ROWS) EXPECT_EQ(row.hash, server.connectionHash(connectionAt(row.address))) << row.address;
}

}  // namespace
}  // namespace qx::net::stream

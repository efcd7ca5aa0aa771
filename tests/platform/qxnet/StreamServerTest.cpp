#include "qxnet/StreamServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <atomic>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
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
      server->onStarting = [] {};
      server->onStarted = [] {};
      server->onCreate = [] {};
      server->onAccept = [] {};
      server->onHash = [](auto&&...) {};
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

  /// After createConnection has thrown.
  void expectNoAcceptUntilARestart() {
    const std::size_t accepts = server->accepts.size();
    const std::size_t events = server->events.count();
    server->onCreate = [] {};
    EXPECT_TRUE(server->acceptor_.is_open());
    connect();  // to the system's queue
    runAWhile(context);
    EXPECT_EQ(accepts, server->accepts.size());
    EXPECT_EQ(events, server->events.count());
    {
      const LogCapture own;
      EXPECT_EQ(boost::asio::error::already_open, server->start());
    }
    server->stop();
    EXPECT_EQ(error_code(), server->start());
    EXPECT_TRUE(connectAndOpen().send("again\n"));
    EXPECT_TRUE(test::runUntil(context, [this] { return server->events.all().back() == "again\n"; }));
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
  for (const ConnectionPtr& connection : server->opened) EXPECT_EQ(CONNECTION_CLOSED, connection->state());
  for (const auto& peer : peers) EXPECT_TRUE(waitUntil([&peer] { return peer->isEnded(); }));
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
  EXPECT_TRUE(waitUntil([&peer] { return peer.isEnded(); }));
}

TEST_F(StartedStreamServer, MayBeStoppedInAStateCallback) {
  server->onState = [this](auto&&...) { server->stop(); };
  LoopbackPeer& peer = connectAndOpen();
  ASSERT_TRUE(runUntil(2));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  EXPECT_TRUE(waitUntil([&peer] { return peer.isEnded(); }));
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
  EXPECT_TRUE(waitUntil([&second] { return second.isEnded(); }));
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

TEST_F(StartedStreamServer, RestartedBetweenAnAcceptAndItsHandlingItAcceptsOnce) {
  std::vector<ConnectionPtr> entered;
  server->onHash = [&entered](const ConnectionPtr& connection) { entered.push_back(connection); };
  server->onAccept = [this] {
    server->onAccept = [] {};
    server->stop();
    EXPECT_EQ(error_code(), server->start());
  };
  LoopbackPeer& early = connect();
  ASSERT_TRUE(test::runUntil(context, [this] { return server->created.size() == 2; }));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), IsEmpty());
  EXPECT_THAT(entered, IsEmpty());
  EXPECT_EQ(2U, server->created.size());
  EXPECT_EQ(CONNECTION_OPENING, server->created[1]->state());
  server->created.erase(server->created.begin());  // the server has let go of it
  EXPECT_TRUE(waitUntil([&early] { return early.isEnded(); }));
  ASSERT_TRUE(connectAndOpen().send("late\n"));
  ASSERT_TRUE(runUntil(2));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "late\n"));
  EXPECT_THAT(server->opened, ElementsAre(server->created[0]));
  EXPECT_THAT(entered, ElementsAre(server->created[0]));
  EXPECT_THAT(server->accepts, ElementsAre(error_code(), error_code()));
}

TEST_F(StartedStreamServer, StoppedBetweenAnAcceptAndItsHandlingItTellsNothing) {
  std::vector<ConnectionPtr> entered;
  server->onHash = [&entered](const ConnectionPtr& connection) { entered.push_back(connection); };
  server->onAccept = [this] { server->stop(); };
  connect();
  ASSERT_TRUE(test::runUntil(context, [this] { return server->accepts.size() == 1; }));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), IsEmpty());
  EXPECT_THAT(entered, IsEmpty());
  EXPECT_EQ(1U, server->created.size());
  EXPECT_THAT(server->accepts, ElementsAre(error_code()));
}

TEST_F(StartedStreamServer, RestartedWhileItCreatesAConnectionItAcceptsOnce) {
  const auto restartOnce = [this] {
    server->onCreate = [] {};
    server->stop();
    EXPECT_EQ(error_code(), server->start());
  };
  server->onCreate = restartOnce;  // within an accept
  connect();
  ASSERT_TRUE(runUntil(2));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
  ASSERT_EQ(3U, server->created.size());
  connectAndOpen();
  EXPECT_THAT(server->opened, ElementsAre(server->created[0], server->created[2]));
  EXPECT_EQ(4U, server->created.size());
  EXPECT_THAT(server->accepts, ElementsAre(error_code(), error_code()));

  server->stop();
  server->onCreate = restartOnce;  // within a start
  EXPECT_EQ(error_code(), server->start());
  EXPECT_EQ(6U, server->created.size());
  runAWhile(context);
  for (std::size_t opened = 3; opened < 6; ++opened) {
    connectAndOpen();
    EXPECT_EQ(opened, server->opened.size());
    EXPECT_EQ(opened + 4, server->created.size());
  }
  EXPECT_EQ(server->created[5], server->opened[2]);
}

TEST_F(StartedStreamServer, ConnectionThatIsStoppedBeforeItsStartIsToldAsClosedAlone) {
  server->onStarting = [this] { server->stop(); };
  LoopbackPeer& peer = connect();
  ASSERT_TRUE(runUntil(1));
  runAWhile(context);
  EXPECT_THAT(server->events.all(), ElementsAre("CONNECTION_OPENING -> CONNECTION_CLOSED, OPERATION_CLOSE, Success"));
  EXPECT_TRUE(waitUntil([&peer] { return peer.isEnded(); }));
  EXPECT_EQ(nullptr, server->findConnection(server->connectionHash(server->created[0])));
  EXPECT_EQ(1U, server->created.size());
}

TEST_F(StartedStreamServer, ConnectionThatIsRestartedUponBeforeItsStartIsToldAsClosedAlone) {
  server->onStarting = [this] {
    server->onStarting = [] {};
    server->stop();
    EXPECT_EQ(error_code(), server->start());
  };
  connect();
  ASSERT_TRUE(runUntil(1));
  runAWhile(context);
  EXPECT_EQ(2U, server->created.size());
  connectAndOpen();
  EXPECT_THAT(server->events.all(),
              ElementsAre("CONNECTION_OPENING -> CONNECTION_CLOSED, OPERATION_CLOSE, Success", OPENED));
  EXPECT_THAT(server->accepts, ElementsAre(error_code(), error_code()));
}

TEST_F(StartedStreamServer, ExceptionOfCreateConnectionLeavesStart) {
  server->stop();
  runAWhile(context);
  server->onCreate = [] { throw std::runtime_error("no connection"); };
  EXPECT_THROW(server->start(), std::runtime_error);
  expectNoAcceptUntilARestart();
}

TEST_F(StartedStreamServer, ExceptionOfCreateConnectionLeavesRun) {
  server->onCreate = [] { throw std::runtime_error("no connection"); };
  const LoopbackPeer& first = connect();
  EXPECT_THROW(test::runUntil(context, [] { return false; }), std::runtime_error);
  // The one before is served.
  ASSERT_TRUE(first.send("x\n"));
  ASSERT_TRUE(runUntil(2));
  EXPECT_THAT(server->events.all(), ElementsAre(OPENED, "x\n"));
  EXPECT_EQ(server->created[0], server->findConnection(server->connectionHash(server->created[0])));
  expectNoAcceptUntilARestart();
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
    const ContextThreads threads(context, 3);
    for (int i = 0; i < PEERS; ++i) connect();
    for (int line = 0; line < LINES; ++line) {
      for (const auto& peer : peers) EXPECT_TRUE(peer->send("line\n"));
    }
    EXPECT_TRUE(waitUntil([this] { return server->events.count() == PEERS * (LINES + 1); }));
    server->stop();
    EXPECT_TRUE(waitUntil([this] { return server->events.count() == PEERS * (LINES + 2); }));
  }
  const std::vector<std::string> events = server->events.all();
  EXPECT_EQ(PEERS, std::count(events.begin(), events.end(), OPENED));
  EXPECT_EQ(PEERS * LINES, std::count(events.begin(), events.end(), "line\n"));
  EXPECT_EQ(PEERS, std::count(events.begin(), events.end(), CLOSED_BY_OWNER));
}

TEST_F(StartedStreamServer, MayBeRestartedInAStateCallbackOnSeveralThreads) {
  constexpr int PEERS = 5;
  std::atomic<bool> hasRestarted{false};
  std::atomic<bool> isRestarting{false};
  server->onState = [&](auto&&...) {
    if (isRestarting.exchange(true)) return;
    server->stop();
    EXPECT_EQ(error_code(), server->start());
    hasRestarted = true;
  };
  {
    const ContextThreads threads(context, 3);
    const std::uint16_t port = server->endpoint().port();
    for (int i = 0; i < PEERS; ++i) peers.push_back(std::make_unique<LoopbackPeer>(port));
    EXPECT_TRUE(waitUntil([&] { return hasRestarted.load(); }));
    for (int i = 0; i < PEERS; ++i) EXPECT_TRUE(connect().send("late\n"));
    EXPECT_TRUE(waitUntil([this] {
      const std::vector<std::string> events = server->events.all();
      return std::count(events.begin(), events.end(), "late\n") == PEERS;
    }));
  }
  server->created.clear();  // the server has let go of what was accepted and not handled before
  for (std::size_t i = 0; i < PEERS; ++i) EXPECT_TRUE(waitUntil([&] { return peers[i]->isEnded(); })) << i;
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

/// A server that keeps nothing of its connections, sends their lines back, and counts what it is told.
class EchoingServer : public TCPServer {
 public:
  explicit EchoingServer(boost::asio::io_context& context)
      : TCPServer(context, boost::asio::ip::address_v4::loopback(), 0), context_(context) {}

  unsigned int connectionHash(ConnectionPtr connection) const override {
    if (!connection || !connection->socket().is_open()) ++unacceptedEntries;
    return TCPServer::connectionHash(std::move(connection));
  }

  mutable std::atomic<int> unacceptedEntries{0};
  std::atomic<int> accepts{0};
  std::atomic<int> opened{0};
  std::atomic<int> closed{0};
  std::atomic<int> otherChanges{0};

 protected:
  ConnectionPtr createConnection() override { return boost::make_shared<TCPConnection>(context_); }
  void handleData(ConnectionPtr connection, const std::string& data) override {
    connection->asyncReadUntil("\n");
    connection->asyncWrite(data);
  }
  void handleState(ConnectionPtr connection, ConnectionState state, ConnectionState previous,
                   ConnectionOperation /*operation*/, const error_code& /*error*/) override {
    if (state == CONNECTION_OPEN && previous == CONNECTION_OPENING) {
      ++opened;
      connection->asyncReadUntil("\n");
    } else if (state == CONNECTION_CLOSED && previous != CONNECTION_OPENING) {
      ++closed;
    } else if (state != CONNECTION_CLOSING && state != CONNECTION_CLOSED) {
      ++otherChanges;
    }
  }
  void handleAccept(const error_code& error) override {
    if (!error) ++accepts;
    std::this_thread::yield();  // somebody may stop and start it here
    TCPServer::handleAccept(error);
  }

 private:
  boost::asio::io_context& context_;
};

TEST(StreamServer, MayBeRestartedByAnotherThreadWhilePeersConnect) {
  constexpr std::chrono::milliseconds WHILE(500);
  constexpr std::size_t PEERS = 8;
  constexpr int LATE_PEERS = 20;
  const LogCapture capture;
  boost::asio::io_context context;
  const auto server = boost::make_shared<EchoingServer>(context);
  ASSERT_FALSE(server->start());
  {
    const ContextThreads threads(context, 3);
    std::atomic<bool> isOver{false};
    std::thread restarting([&] {
      const auto begin = std::chrono::steady_clock::now();
      // Until one of them has been early enough, which takes long on a busy machine.
      while (std::chrono::steady_clock::now() - begin < (server->opened == 0 ? test::PATIENCE : WHILE)) {
        server->stop();
        EXPECT_FALSE(server->start());
        std::this_thread::yield();
      }
      isOver = true;
    });
    std::deque<std::unique_ptr<LoopbackPeer>> peers;
    while (!isOver) {
      const std::uint16_t port = server->endpoint().port();
      if (port == 0) continue;
      peers.push_back(std::make_unique<LoopbackPeer>(port));
      if (peers.back()->isConnected()) peers.back()->send("early\n");
      if (peers.size() > PEERS) peers.pop_front();
    }
    restarting.join();
    server->stop();
    EXPECT_FALSE(server->start());
    const int before = server->accepts;
    for (int i = 0; i < LATE_PEERS; ++i) {
      peers.push_back(std::make_unique<LoopbackPeer>(server->endpoint().port()));
      EXPECT_TRUE(peers.back()->send("late\n"));
    }
    for (int i = 0; i < LATE_PEERS; ++i) {
      LoopbackPeer& late = *peers[peers.size() - 1 - static_cast<std::size_t>(i)];
      EXPECT_TRUE(waitUntil([&late] { return late.received() == "late\n"; }));
    }
    EXPECT_LE(LATE_PEERS, server->accepts - before);
    server->stop();
    EXPECT_TRUE(waitUntil([&server] { return server->opened == server->closed; }));
  }
  EXPECT_LT(LATE_PEERS, server->opened);
  EXPECT_EQ(server->opened, server->closed);
  EXPECT_EQ(0, server->otherChanges);
  EXPECT_EQ(0, server->unacceptedEntries);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

/// Ends a context with an accept, a read, a write and changes of state under way, and looks for what is left.
void expectNothingLeftByAContextThatEnds(bool areHeld) {
  constexpr int SMALL = 4096;
  boost::weak_ptr<RecordingServer> weakServer;
  std::vector<boost::weak_ptr<TCPConnection>> weakConnections;
  std::vector<std::unique_ptr<LoopbackPeer>> peers;
  {
    boost::asio::io_context context;
    auto server = boost::make_shared<RecordingServer>(context);
    ASSERT_FALSE(server->start());
    for (std::size_t i = 1; i <= 3; ++i) {
      peers.push_back(std::make_unique<LoopbackPeer>(server->endpoint().port(), "127.0.0.1", SMALL));
      ASSERT_TRUE(test::runUntil(context, [&] { return server->opened.size() == i; }));
    }
    EXPECT_FALSE(server->opened[0]->asyncWrite(std::string(16 << 20, 'x')));
    runAWhile(context);
    server->opened[1]->close();  // which is not told any more
    ASSERT_TRUE(peers[2]->send("nor is this read\n"));
    weakServer = server;
    weakConnections.assign(server->created.begin(), server->created.end());
    ASSERT_EQ(4U, weakConnections.size());
    EXPECT_EQ(3U, server->events.count());
    if (!areHeld) {
      server->created.clear();
      server->opened.clear();
      server.reset();
    }
    EXPECT_FALSE(weakServer.expired());
    for (const auto& connection : weakConnections) EXPECT_FALSE(connection.expired());
  }
  EXPECT_TRUE(weakServer.expired());
  for (const auto& connection : weakConnections) EXPECT_TRUE(connection.expired());
  for (const auto& peer : peers) EXPECT_TRUE(waitUntil([&peer] { return peer->isEnded(); }));
}

TEST(StreamServer, ContextMayEndWithEverythingUnderWay) { expectNothingLeftByAContextThatEnds(true); }

TEST(StreamServer, ContextMayEndWithWhatItAloneHolds) { expectNothingLeftByAContextThatEnds(false); }

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

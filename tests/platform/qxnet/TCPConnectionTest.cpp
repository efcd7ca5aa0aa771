#include "qxnet/TCPConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <chrono>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ConnectionEvents.h"
#include "support/Loopback.h"
#include "support/SocketOption.h"

namespace qx::net::stream {
namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;
using test::changeOf;
using test::CLOSED_BY_OWNER;
using test::CLOSED_BY_PEER;
using test::ContextThreads;
using test::Events;
using test::LoopbackPeer;
using test::OPENED;
using test::optionOf;
using test::runAWhile;
using test::runUntil;
using test::waitUntil;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Ptr = TCPConnection::Ptr;

/// An accepted connection, its peer, and what it tells.
struct Link {
  explicit Link(int peersReceiveBuffer = LoopbackPeer::SYSTEMS_BUFFER) {
    tcp::acceptor acceptor(context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0));
    peer.emplace(acceptor.local_endpoint().port(), "127.0.0.1", peersReceiveBuffer);
    acceptor.accept(connection->socket());
    connection->handleDataFunc([this](const Ptr& /*from*/, const std::string& data) { events.add(data); });
    connection->handleStateFunc(
        [this](const Ptr& /*from*/, ConnectionState state, ConnectionState previous, ConnectionOperation operation,
               const error_code& error) { events.add(changeOf(state, previous, operation, error)); });
  }

  /// Starts the connection and lets it tell.
  void open() {
    connection->start();
    EXPECT_TRUE(runUntil(1));
    EXPECT_THAT(events.all(), ElementsAre(OPENED));
  }
  bool runUntil(std::size_t eventCount) {
    return test::runUntil(context, [this, eventCount] { return events.count() >= eventCount; });
  }
  /// What was told after the opening.
  std::vector<std::string> told() const {
    std::vector<std::string> all = events.all();
    if (!all.empty() && all.front() == OPENED) all.erase(all.begin());
    return all;
  }
  /// Asks for a line at each line, as a server does.
  void readLines(const std::string& delimiter) {
    connection->handleDataFunc([this, delimiter](const Ptr& from, const std::string& data) {
      from->asyncReadUntil(delimiter);
      events.add(data);
    });
    connection->asyncReadUntil(delimiter);
  }

  boost::asio::io_context context;
  Events events;
  Ptr connection = boost::make_shared<TCPConnection>(context);
  std::optional<LoopbackPeer> peer;
};

TEST(TCPConnection, IsOpeningWithoutASocketAtFirst) {
  boost::asio::io_context context;
  const auto connection = boost::make_shared<TCPConnection>(context);
  EXPECT_EQ(CONNECTION_OPENING, connection->state());
  EXPECT_FALSE(connection->socket().is_open());
}

TEST(TCPConnection, StartOpensAndTellsOnTheContext) {
  Link link;
  link.connection->start();
  EXPECT_EQ(CONNECTION_OPEN, link.connection->state());
  EXPECT_THAT(link.events.all(), IsEmpty());
  ASSERT_TRUE(link.runUntil(1));
  EXPECT_THAT(link.events.all(), ElementsAre(OPENED));
}

TEST(TCPConnection, StartsOnlyOnce) {
  Link link;
  link.open();
  link.connection->start();
  runAWhile(link.context);
  EXPECT_THAT(link.told(), IsEmpty());
}

TEST(TCPConnection, ClosedOneDoesNotStart) {
  Link link;
  link.connection->close();
  link.connection->start();
  EXPECT_EQ(CONNECTION_CLOSED, link.connection->state());
  runAWhile(link.context);
  EXPECT_THAT(link.events.all(), ElementsAre("CONNECTION_OPENING -> CONNECTION_CLOSED, OPERATION_CLOSE, Success"));
}

TEST(TCPConnection, CallbacksGetTheConnection) {
  Link link;
  std::vector<TCPConnection*> seen;
  link.connection->handleStateFunc([&seen](const Ptr& from, auto&&...) { seen.push_back(from.get()); });
  link.connection->handleDataFunc([&seen](const Ptr& from, const std::string&) { seen.push_back(from.get()); });
  link.connection->start();
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.peer->send("x\n"));
  EXPECT_TRUE(runUntil(link.context, [&seen] { return seen.size() == 2; }));
  EXPECT_THAT(seen, ElementsAre(link.connection.get(), link.connection.get()));
}

TEST(TCPConnection, OneReadGivesOneLine) {
  Link link;
  link.open();
  ASSERT_TRUE(link.peer->send("one\r\ntwo\r\nthr"));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), IsEmpty());
  link.connection->asyncReadUntil("\r\n");
  ASSERT_TRUE(link.runUntil(2));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\r\n"));
  link.connection->asyncReadUntil("\r\n");
  ASSERT_TRUE(link.runUntil(3));
  link.connection->asyncReadUntil("\r\n");
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\r\n", "two\r\n"));
  ASSERT_TRUE(link.peer->send("ee\r\n"));
  ASSERT_TRUE(link.runUntil(4));
  EXPECT_THAT(link.told(), ElementsAre("one\r\n", "two\r\n", "three\r\n"));
}

TEST(TCPConnection, NoCallbackRunsInsideACall) {
  Link link;
  link.open();
  ASSERT_TRUE(link.peer->send("one\ntwo\nthree\n"));
  std::vector<std::string> order;
  link.connection->handleDataFunc([&order](const Ptr& from, const std::string& data) {
    order.push_back("> " + data);
    if (data != "three\n") from->asyncReadUntil("\n");  // the next line is in the buffer already
    if (data == "three\n") from->close();
    order.push_back("< " + data);
  });
  link.connection->handleStateFunc(
      [&order](const Ptr& /*from*/, ConnectionState state, ConnectionState previous, ConnectionOperation operation,
               const error_code& error) { order.push_back(changeOf(state, previous, operation, error)); });
  link.connection->asyncReadUntil("\n");
  EXPECT_THAT(order, IsEmpty());
  ASSERT_TRUE(runUntil(link.context, [&order] { return order.size() == 7; }));
  EXPECT_THAT(order,
              ElementsAre("> one\n", "< one\n", "> two\n", "< two\n", "> three\n", "< three\n", CLOSED_BY_OWNER));
}

TEST(TCPConnection, CloseTellsNothingInsideTheCall) {
  Link link;
  link.open();
  link.connection->close();
  EXPECT_EQ(CONNECTION_CLOSED, link.connection->state());
  EXPECT_THAT(link.told(), IsEmpty());
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre(CLOSED_BY_OWNER));
  EXPECT_TRUE(waitUntil([&link] { return link.peer->isEnded(); }));
}

TEST(TCPConnection, ClosesOnlyOnce) {
  Link link;
  link.open();
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  link.connection->close();
  link.connection->close();
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre(CLOSED_BY_OWNER));
}

TEST(TCPConnection, NothingHappensToAClosedOne) {
  Link link;
  link.open();
  link.connection->asyncReadUntil("\n");
  EXPECT_FALSE(link.connection->asyncWrite("x"));
  runAWhile(link.context);
  link.connection->close();
  ASSERT_TRUE(link.runUntil(2));
  link.connection->handleStateFunc([&link](auto&&...) { link.events.add("told again"); });
  link.connection->handleDataFunc([&link](auto&&...) { link.events.add("read again"); });
  link.connection->close();
  link.connection->start();
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre(CLOSED_BY_OWNER));
  EXPECT_EQ(CONNECTION_CLOSED, link.connection->state());
}

TEST(TCPConnection, EmptyDelimiterThrows) {
  Link link;
  link.open();
  EXPECT_THROW(link.connection->asyncReadUntil(""), std::invalid_argument);
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.peer->send("x\n"));
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre("x\n"));
}

TEST(TCPConnection, ReadAskedForBeforeStartDoesNothing) {
  Link link;
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  ASSERT_TRUE(link.peer->send("one\ntwo\n"));
  link.open();
  runAWhile(link.context);
  EXPECT_THAT(link.told(), IsEmpty());
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.runUntil(2));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\n"));
}

TEST(TCPConnection, ReadAskedForOnAClosedOneDoesNothing) {
  Link link;
  link.open();
  ASSERT_TRUE(link.peer->send("one\n"));
  link.connection->close();
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre(CLOSED_BY_OWNER));
}

TEST(TCPConnection, ReadAskedForWhileOneIsUnderWayIsThatReadWithItsDelimiter) {
  Link link;
  link.open();
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  for (const char* const delimiter : {"!", "\n", "?"}) link.connection->asyncReadUntil(delimiter);
  runAWhile(link.context);
  ASSERT_TRUE(link.peer->send("one\ntwo!three?four?"));
  ASSERT_TRUE(link.runUntil(2));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\ntwo!three?"));
}

TEST(TCPConnection, ReadsAskedForInADataCallbackComeToOne) {
  Link link;
  link.open();
  link.connection->handleDataFunc([&link](const Ptr& from, const std::string& data) {
    link.events.add(data);
    if (data != "one\n") return;
    from->asyncReadUntil("!");
    from->asyncReadUntil("?");
    from->asyncReadUntil("\n");
  });
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.peer->send("one\ntwo!?\nthree!?\n"));
  ASSERT_TRUE(link.runUntil(3));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\n", "two!?\n"));
}

TEST(TCPConnection, DelimiterMayChangeFromLineToLine) {
  Link link;
  link.open();
  ASSERT_TRUE(link.peer->send("a;b\r\nc;d\r\n"));
  const std::string delimiters[] = {";", "\r\n", "\r\n"};
  for (std::size_t i = 0; i < 3; ++i) {
    link.connection->asyncReadUntil(delimiters[i]);
    ASSERT_TRUE(link.runUntil(i + 2));
  }
  EXPECT_THAT(link.told(), ElementsAre("a;", "b\r\n", "c;d\r\n"));
}

TEST(TCPConnection, DelimiterMayBeATemporary) {
  Link link;
  link.open();
  link.connection->asyncReadUntil(std::string("a delimiter that is too long to be kept in place"));
  ASSERT_TRUE(link.peer->send("x a delimiter that is too long to be kept in place"));
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre("x a delimiter that is too long to be kept in place"));
}

TEST(TCPConnection, LineMayComeByteByByte) {
  Link link;
  link.open();
  link.readLines("\r\n");
  for (const char byte : std::string("ab\r\n\r\nc\rd\ne\r\n")) {
    ASSERT_TRUE(link.peer->send(std::string(1, byte)));
    link.context.restart();
    while (link.context.poll() > 0) continue;
  }
  ASSERT_TRUE(link.runUntil(4));
  EXPECT_THAT(link.told(), ElementsAre("ab\r\n", "\r\n", "c\rd\ne\r\n"));
}

TEST(TCPConnection, LineMayHave65536Bytes) {
  EXPECT_EQ(65536U, TCPConnection::LONGEST_LINE);
  Link link;
  link.open();
  link.readLines("\r\n");
  const std::string line = std::string(65534, 'x') + "\r\n";
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(link.peer->send(line));
  ASSERT_TRUE(link.runUntil(4));
  for (const std::string& told : link.told()) EXPECT_TRUE(line == told);
  EXPECT_EQ(CONNECTION_OPEN, link.connection->state());
}

TEST(TCPConnection, LineOf65537BytesClosesItWithAnError) {
  Link link;
  link.open();
  link.readLines("\r\n");
  ASSERT_TRUE(link.peer->send("first\r\n" + std::string(65535, 'x') + "\r\n"));
  ASSERT_TRUE(link.runUntil(3));
  runAWhile(link.context);
  EXPECT_THAT(link.told(),
              ElementsAre("first\r\n", "CONNECTION_OPEN -> CONNECTION_CLOSED, OPERATION_READ, Message too long"));
  EXPECT_TRUE(runUntil(link.context, [&link] { return link.peer->isEnded(); }));
}

TEST(TCPConnection, MayBeFullOfShorterLines) {
  Link link;
  link.open();
  std::string text;
  for (int i = 0; i < 40000; ++i) text += "line " + std::to_string(i) + "\r\n";
  std::string received;
  link.connection->handleDataFunc([&received](const Ptr& from, const std::string& data) {
    from->asyncReadUntil("\r\n");
    received += data;
  });
  link.connection->asyncReadUntil("\r\n");
  std::thread sender([&link, &text] { EXPECT_TRUE(link.peer->send(text)); });
  EXPECT_TRUE(runUntil(link.context, [&] { return received.size() >= text.size(); }));
  sender.join();
  EXPECT_TRUE(text == received);
}

TEST(TCPConnection, LinesKeepBytesOfEveryValue) {
  std::string line;
  for (int byte = 0; byte < 256; ++byte) line += static_cast<char>(byte);
  line += "\r\n";
  Link link;
  link.open();
  link.connection->asyncReadUntil("\r\n");
  ASSERT_TRUE(link.peer->send(line));
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre(line));
}

TEST(TCPConnection, DataCallbackMayBeReplacedWhileAReadIsUnderWay) {
  Link link;
  link.open();
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  link.connection->handleDataFunc([&link](const Ptr&, const std::string& data) { link.events.add("second " + data); });
  ASSERT_TRUE(link.peer->send("x\n"));
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre("second x\n"));
}

TEST(TCPConnection, DataCallbackMayReplaceItself) {
  Link link;
  link.open();
  const auto owned = boost::make_shared<std::string>("first ");
  link.connection->handleDataFunc([&link, owned](const Ptr& from, const std::string& data) {
    from->asyncReadUntil("\n");
    from->handleDataFunc([&link](const Ptr&, const std::string& later) { link.events.add("second " + later); });
    link.events.add(*owned + data);  // what the running callback holds is still there
  });
  ASSERT_TRUE(link.peer->send("x\ny\n"));
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.runUntil(3));
  EXPECT_THAT(link.told(), ElementsAre("first x\n", "second y\n"));
  EXPECT_EQ(1, owned.use_count());
}

TEST(TCPConnection, StateCallbackMayReplaceItself) {
  Link link;
  const auto owned = boost::make_shared<std::string>("first ");
  link.connection->handleStateFunc([&link, owned](const Ptr& from, ConnectionState state, auto&&...) {
    from->handleStateFunc(
        [&link](const Ptr&, ConnectionState later, auto&&...) { link.events.add("second " + std::to_string(later)); });
    link.events.add(*owned + std::to_string(state));
  });
  link.connection->start();
  link.connection->close();
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.events.all(), ElementsAre("first 2", "second 0"));
}

TEST(TCPConnection, EmptyCallbacksMeanThatNobodyWantsToKnow) {
  Link link;
  link.connection->handleStateFunc({});
  link.connection->handleDataFunc({});
  link.connection->start();
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.peer->send("x\ny\n"));
  runAWhile(link.context);
  link.connection->handleDataFunc([&link](const Ptr&, const std::string& data) { link.events.add(data); });
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.runUntil(1));
  EXPECT_THAT(link.events.all(), ElementsAre("y\n"));
  link.connection->close();
  runAWhile(link.context);
  EXPECT_EQ(1U, link.events.count());
}

TEST(TCPConnection, CallbacksAreForgottenAfterTheClosedState) {
  Link link;
  const auto ofData = boost::make_shared<int>(0);
  const auto ofState = boost::make_shared<int>(0);
  link.connection->handleDataFunc([ofData](auto&&...) { ++*ofData; });
  link.connection->handleStateFunc([ofState, &link](const Ptr&, ConnectionState state, auto&&...) {
    ++*ofState;
    link.events.add(std::to_string(state));
  });
  link.connection->start();
  ASSERT_TRUE(link.runUntil(1));
  EXPECT_EQ(2, ofData.use_count());
  EXPECT_EQ(2, ofState.use_count());
  link.connection->close();
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_EQ(1, ofData.use_count());
  EXPECT_EQ(1, ofState.use_count());
  EXPECT_EQ(2, *ofState);
}

TEST(TCPConnection, CallbacksThatHoldTheConnectionDoNotKeepAClosedOne) {
  Link link;
  const boost::weak_ptr<TCPConnection> weak = link.connection;
  link.connection->handleDataFunc([self = link.connection](auto&&...) { self->asyncReadUntil("\n"); });
  link.connection->handleStateFunc([self = link.connection](auto&&...) { self->asyncReadUntil("\n"); });
  link.connection->start();
  ASSERT_TRUE(link.peer->send("x\n"));
  runAWhile(link.context);
  link.connection->close();
  link.connection.reset();
  EXPECT_TRUE(runUntil(link.context, [&weak] { return weak.expired(); }));
}

TEST(TCPConnection, CallbacksSetAfterTheClosedStateWasToldAreForgotten) {
  Link link;
  link.open();
  link.connection->close();
  ASSERT_TRUE(link.runUntil(2));
  const auto owned = boost::make_shared<int>(0);
  link.connection->handleDataFunc([owned, self = link.connection](auto&&...) { ++*owned; });
  link.connection->handleStateFunc([owned, self = link.connection](auto&&...) { ++*owned; });
  EXPECT_EQ(1, owned.use_count());
  const boost::weak_ptr<TCPConnection> weak = link.connection;
  link.connection.reset();
  EXPECT_TRUE(runUntil(link.context, [&weak] { return weak.expired(); }));
  EXPECT_EQ(0, *owned);
}

TEST(TCPConnection, CallbackSetBeforeTheClosedStateIsToldIsTold) {
  Link link;
  link.open();
  link.connection->close();
  link.connection->handleStateFunc(
      [&link](const Ptr&, ConnectionState state, auto&&...) { link.events.add("late " + std::to_string(state)); });
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre("late 0"));
}

TEST(TCPConnection, CallbacksSetInTheClosedStateAreForgotten) {
  Link link;
  const auto owned = boost::make_shared<int>(0);
  link.connection->handleStateFunc([&link, owned](const Ptr& from, ConnectionState state, auto&&...) {
    link.events.add(std::to_string(state));
    from->handleStateFunc([owned, from](auto&&...) { ++*owned; });  // keeps itself, if it is kept
    from->handleDataFunc([owned, from](auto&&...) { ++*owned; });
  });
  link.connection->close();
  ASSERT_TRUE(link.runUntil(1));
  EXPECT_EQ(1, owned.use_count());
  EXPECT_EQ(0, *owned);
  EXPECT_THAT(link.events.all(), ElementsAre("0"));
}

TEST(TCPConnection, ReadUnderWayKeepsItUntilThePeerEnds) {
  Link link;
  link.open();
  const boost::weak_ptr<TCPConnection> weak = link.connection;
  link.readLines("\n");
  link.connection.reset();
  runAWhile(link.context);
  ASSERT_FALSE(weak.expired());
  ASSERT_TRUE(link.peer->send("x\n"));
  ASSERT_TRUE(link.runUntil(2));
  link.peer->close();
  ASSERT_TRUE(link.runUntil(3));
  EXPECT_THAT(link.told(), ElementsAre("x\n", CLOSED_BY_PEER));
  EXPECT_TRUE(runUntil(link.context, [&weak] { return weak.expired(); }));
}

TEST(TCPConnection, PeerThatClosesEndsIt) {
  Link link;
  link.open();
  link.connection->asyncReadUntil("\n");
  link.peer->close();
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre(CLOSED_BY_PEER));
  EXPECT_EQ(CONNECTION_CLOSED, link.connection->state());
  EXPECT_FALSE(link.connection->socket().is_open());
}

TEST(TCPConnection, LinesBeforeTheEndAreRead) {
  Link link;
  link.open();
  ASSERT_TRUE(link.peer->send("one\ntwo\nno delimiter"));
  link.peer->close();
  link.readLines("\n");
  ASSERT_TRUE(link.runUntil(4));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\n", "two\n", CLOSED_BY_PEER));
}

TEST(TCPConnection, EndIsNotSeenWhileNobodyReads) {
  Link link;
  link.open();
  ASSERT_TRUE(link.peer->send("one\n"));
  link.peer->close();
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.runUntil(2));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\n"));
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.runUntil(3));
  EXPECT_THAT(link.told(), ElementsAre("one\n", CLOSED_BY_PEER));
}

TEST(TCPConnection, PeerThatBreaksOffEndsIt) {
  Link link;
  link.open();
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  link.peer->reset();
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(),
              ElementsAre("CONNECTION_OPEN -> CONNECTION_CLOSED, OPERATION_READ, Connection reset by peer"));
}

TEST(TCPConnection, PeerThatBreaksOffEndsItsWriting) {
  constexpr int SMALL = 4096;
  Link link(SMALL);
  link.open();
  EXPECT_FALSE(link.connection->asyncWrite(std::string(16 << 20, 'x')));
  runAWhile(link.context);
  link.peer->reset();
  ASSERT_TRUE(link.runUntil(2));
  runAWhile(link.context);
  ASSERT_EQ(1U, link.told().size());
  EXPECT_THAT(link.told().front(), testing::StartsWith("CONNECTION_OPEN -> CONNECTION_CLOSED, OPERATION_WRITE, "));
  EXPECT_THAT(link.told().front(), testing::Not(testing::HasSubstr("Success")));
}

TEST(TCPConnection, WritesInOrder) {
  Link link;
  link.open();
  std::string expected;
  for (int i = 0; i < 2000; ++i) {
    const std::string text = "answer " + std::to_string(i) + "\r\n";
    EXPECT_FALSE(link.connection->asyncWrite(text));
    expected += text;
    if (i % 100 == 0) link.context.poll();
  }
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->received().size() >= expected.size(); }));
  EXPECT_TRUE(expected == link.peer->received());
  EXPECT_THAT(link.told(), IsEmpty());
}

TEST(TCPConnection, WritesNothingForNothing) {
  Link link;
  link.open();
  EXPECT_FALSE(link.connection->asyncWrite(""));
  EXPECT_FALSE(link.connection->asyncWrite("x"));
  EXPECT_FALSE(link.connection->asyncWrite(""));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->received() == "x"; }));
  runAWhile(link.context);
  EXPECT_EQ("x", link.peer->received());
  EXPECT_THAT(link.told(), IsEmpty());
}

TEST(TCPConnection, WritesOnlyWhileOpen) {
  Link link;
  EXPECT_EQ(boost::asio::error::not_connected, link.connection->asyncWrite("before"));
  link.open();
  EXPECT_FALSE(link.connection->asyncWrite("during"));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->received().size() >= 6; }));
  link.connection->close();
  EXPECT_EQ(boost::asio::error::not_connected, link.connection->asyncWrite("after"));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->isEnded(); }));
  EXPECT_EQ("during", link.peer->received());
}

TEST(TCPConnection, TakesNoMoreWhileTheLimitWaits) {
  EXPECT_EQ(1048576U, TCPConnection::WRITE_LIMIT);
  Link link;
  link.open();
  // What has gone to the system already counts as waiting until the context has run.
  EXPECT_FALSE(link.connection->asyncWrite(std::string(TCPConnection::WRITE_LIMIT - 1, 'a')));
  EXPECT_FALSE(link.connection->asyncWrite("b"));
  EXPECT_EQ(boost::asio::error::no_buffer_space, link.connection->asyncWrite("c"));
  EXPECT_EQ(boost::asio::error::no_buffer_space, link.connection->asyncWrite(""));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->received().size() >= TCPConnection::WRITE_LIMIT; }));
  runAWhile(link.context);
  EXPECT_FALSE(link.connection->asyncWrite("d"));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->received().size() >= TCPConnection::WRITE_LIMIT + 1; }));
  EXPECT_TRUE(std::string(TCPConnection::WRITE_LIMIT - 1, 'a') + "bd" == link.peer->received());
  EXPECT_EQ(CONNECTION_OPEN, link.connection->state());
}

TEST(TCPConnection, OneWriteMayPassTheLimit) {
  Link link;
  link.open();
  const std::string large(3 * TCPConnection::WRITE_LIMIT + 7, 'x');
  EXPECT_FALSE(link.connection->asyncWrite(large));
  EXPECT_EQ(boost::asio::error::no_buffer_space, link.connection->asyncWrite("y"));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->received().size() >= large.size(); }));
  EXPECT_TRUE(large == link.peer->received());
}

TEST(TCPConnection, PeerThatEndsItsSideStillGetsEverything) {
  constexpr int SMALL = 4096;
  Link link(SMALL);
  link.open();
  const std::string large(16 << 20, 'x');
  EXPECT_FALSE(link.connection->asyncWrite(large));
  runAWhile(link.context);
  link.connection->asyncReadUntil("\n");
  link.peer->endSending();
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_EQ(CONNECTION_CLOSING, link.connection->state());
  EXPECT_EQ(boost::asio::error::not_connected, link.connection->asyncWrite("late"));
  link.connection->asyncReadUntil("\n");
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("CONNECTION_OPEN -> CONNECTION_CLOSING, OPERATION_READ, End of file"));
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->isEnded(); }));
  EXPECT_FALSE(link.peer->isReset());
  EXPECT_TRUE(large == link.peer->received());
  ASSERT_TRUE(link.runUntil(3));
  EXPECT_THAT(link.told(), ElementsAre("CONNECTION_OPEN -> CONNECTION_CLOSING, OPERATION_READ, End of file",
                                       "CONNECTION_CLOSING -> CONNECTION_CLOSED, OPERATION_WRITE, Success"));
}

TEST(TCPConnection, ClosingOneMayBeClosed) {
  constexpr int SMALL = 4096;
  Link link(SMALL);
  link.open();
  EXPECT_FALSE(link.connection->asyncWrite(std::string(16 << 20, 'x')));
  link.connection->asyncReadUntil("\n");
  link.peer->endSending();
  ASSERT_TRUE(link.runUntil(2));
  link.connection->close();
  ASSERT_TRUE(link.runUntil(3));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("CONNECTION_OPEN -> CONNECTION_CLOSING, OPERATION_READ, End of file",
                                       "CONNECTION_CLOSING -> CONNECTION_CLOSED, OPERATION_CLOSE, Success"));
}

TEST(TCPConnection, ClosingOneEndsWhenThePeerBreaksOff) {
  constexpr int SMALL = 4096;
  Link link(SMALL);
  link.open();
  EXPECT_FALSE(link.connection->asyncWrite(std::string(16 << 20, 'x')));
  link.connection->asyncReadUntil("\n");
  link.peer->endSending();
  ASSERT_TRUE(link.runUntil(2));
  link.peer->reset();
  ASSERT_TRUE(link.runUntil(3));
  EXPECT_THAT(link.told().back(), testing::StartsWith("CONNECTION_CLOSING -> CONNECTION_CLOSED, OPERATION_WRITE, "));
  EXPECT_THAT(link.told().back(), testing::Not(testing::HasSubstr("Success")));
}

TEST(TCPConnection, AnswersToTheLastLineOfAPeerThatEndedItsSideArrive) {
  Link link;
  link.open();
  link.connection->handleDataFunc([](const Ptr& from, const std::string& data) {
    from->asyncReadUntil("\n");
    EXPECT_FALSE(from->asyncWrite("echo " + data));
  });
  ASSERT_TRUE(link.peer->send("one\ntwo\n"));
  link.peer->endSending();
  link.connection->asyncReadUntil("\n");
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->isEnded(); }));
  EXPECT_EQ("echo one\necho two\n", link.peer->received());
  EXPECT_FALSE(link.peer->isReset());
}

TEST(TCPConnection, CloseLosesWhatWaits) {
  constexpr int SMALL = 4096;
  Link link(SMALL);
  link.open();
  const std::string large(16 << 20, 'x');
  EXPECT_FALSE(link.connection->asyncWrite(large));
  runAWhile(link.context);
  link.connection->close();
  EXPECT_TRUE(runUntil(link.context, [&] { return link.peer->isEnded(); }));
  EXPECT_GT(large.size(), link.peer->received().size());
  ASSERT_TRUE(link.runUntil(2));
  EXPECT_THAT(link.told(), ElementsAre(CLOSED_BY_OWNER));
}

TEST(TCPConnection, ClosedInItsDataCallbackItReadsNoMore) {
  Link link;
  link.open();
  link.connection->handleDataFunc([&link](const Ptr& from, const std::string& data) {
    from->asyncReadUntil("\n");
    link.events.add(data);
    from->close();
    from->asyncReadUntil("\n");
  });
  ASSERT_TRUE(link.peer->send("one\ntwo\nthree\n"));
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.runUntil(3));
  runAWhile(link.context);
  EXPECT_THAT(link.told(), ElementsAre("one\n", CLOSED_BY_OWNER));
  EXPECT_TRUE(waitUntil([&link] { return link.peer->isEnded(); }));
}

TEST(TCPConnection, MayBeClosedInItsStateCallback) {
  Link link;
  link.connection->handleStateFunc([&link](const Ptr& from, ConnectionState state, ConnectionState previous,
                                           ConnectionOperation operation, const error_code& error) {
    from->close();
    from->close();
    link.events.add(changeOf(state, previous, operation, error));
  });
  link.connection->start();
  ASSERT_TRUE(link.runUntil(2));
  runAWhile(link.context);
  EXPECT_THAT(link.events.all(), ElementsAre(OPENED, CLOSED_BY_OWNER));
}

TEST(TCPConnection, ExceptionOfTheDataCallbackLeavesRunAndItGoesOn) {
  Link link;
  link.open();
  link.connection->handleDataFunc([&link](const Ptr& from, const std::string& data) {
    from->asyncReadUntil("\n");
    link.events.add(data);
    if (data != "three\n") throw std::runtime_error(data);
  });
  ASSERT_TRUE(link.peer->send("one\ntwo\nthree\n"));
  link.connection->asyncReadUntil("\n");
  for (const std::string expected : {"one\n", "two\n"}) {
    try {
      link.runUntil(4);
      FAIL() << "no exception with " << expected;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(expected, error.what());
    }
  }
  ASSERT_TRUE(link.runUntil(4));
  EXPECT_THAT(link.told(), ElementsAre("one\n", "two\n", "three\n"));
  ASSERT_TRUE(link.peer->send("three\n"));
  ASSERT_TRUE(link.runUntil(5));
  EXPECT_EQ(CONNECTION_OPEN, link.connection->state());
}

TEST(TCPConnection, ExceptionBeforeTheNextReadIsAskedForDoesNotBlockLaterReads) {
  Link link;
  link.open();
  link.connection->handleDataFunc([&link](const Ptr&, const std::string& data) {
    link.events.add(data);
    throw std::runtime_error(data);
  });
  ASSERT_TRUE(link.peer->send("one\ntwo\n"));
  for (std::size_t i = 2; i < 4; ++i) {
    link.connection->asyncReadUntil("\n");
    EXPECT_THROW(link.runUntil(i + 10), std::runtime_error);
    runAWhile(link.context);
    EXPECT_EQ(i, link.events.count());
  }
  EXPECT_THAT(link.told(), ElementsAre("one\n", "two\n"));
}

TEST(TCPConnection, ExceptionOfTheStateCallbackLeavesRunAndItGoesOn) {
  Link link;
  link.connection->handleStateFunc([&link](const Ptr&, ConnectionState state, auto&&...) {
    link.events.add(std::to_string(state));
    throw std::runtime_error("state");
  });
  link.connection->start();
  EXPECT_THROW(link.runUntil(10), std::runtime_error);
  link.connection->asyncReadUntil("\n");
  ASSERT_TRUE(link.peer->send("one\n"));
  ASSERT_TRUE(link.runUntil(2));
  link.connection->close();
  EXPECT_THROW(link.runUntil(10), std::runtime_error);
  EXPECT_THAT(link.events.all(), ElementsAre("2", "one\n", "0"));
}

TEST(TCPConnection, AnswersDoNotWaitForMore) {
  Link link;
  link.open();
  EXPECT_EQ(1, optionOf(*link.connection, IPPROTO_TCP, TCP_NODELAY));
}

TEST(TCPConnection, KeepAliveValuesReachTheSocket) {
  Link link;
  link.open();
  EXPECT_EQ(0, optionOf(*link.connection, SOL_SOCKET, SO_KEEPALIVE));
  EXPECT_FALSE(link.connection->setKeepAlive(true));
  EXPECT_FALSE(link.connection->setKeepAliveCount(7));
  EXPECT_FALSE(link.connection->setKeepAliveIdle(41));
  EXPECT_FALSE(link.connection->setKeepAliveInterval(13));
  EXPECT_EQ(1, optionOf(*link.connection, SOL_SOCKET, SO_KEEPALIVE));
  EXPECT_EQ(7, optionOf(*link.connection, IPPROTO_TCP, TCP_KEEPCNT));
  EXPECT_EQ(41, optionOf(*link.connection, IPPROTO_TCP, TCP_KEEPIDLE));
  EXPECT_EQ(13, optionOf(*link.connection, IPPROTO_TCP, TCP_KEEPINTVL));
  EXPECT_FALSE(link.connection->setKeepAlive(false));
  EXPECT_EQ(0, optionOf(*link.connection, SOL_SOCKET, SO_KEEPALIVE));
}

TEST(TCPConnection, KeepAliveGivesTheSystemsError) {
  Link link;
  const error_code invalid = boost::asio::error::invalid_argument;
  EXPECT_EQ(invalid, link.connection->setKeepAliveCount(0));
  EXPECT_EQ(invalid, link.connection->setKeepAliveIdle(-1));
  EXPECT_EQ(invalid, link.connection->setKeepAliveInterval(1 << 20));
  link.connection->close();
  const error_code closed = boost::asio::error::bad_descriptor;
  EXPECT_EQ(closed, link.connection->setKeepAlive(true));
  EXPECT_EQ(closed, link.connection->setKeepAlive(false));
  EXPECT_EQ(closed, link.connection->setKeepAliveCount(1));
  EXPECT_EQ(closed, link.connection->setKeepAliveIdle(1));
  EXPECT_EQ(closed, link.connection->setKeepAliveInterval(1));
}

TEST(TCPConnection, KeepAliveOfANeverOpenedSocketGivesTheSystemsError) {
  boost::asio::io_context context;
  EXPECT_EQ(boost::asio::error::bad_descriptor, boost::make_shared<TCPConnection>(context)->setKeepAlive(true));
}

TEST(TCPConnection, CallbacksOfOneNeverOverlapOnSeveralThreads) {
  constexpr int LINES = 3000;
  Link link;
  std::atomic<int> inside{0};
  std::atomic<bool> hasOverlapped{false};
  std::vector<std::string> order;  // without a lock: one callback at a time
  std::atomic<std::size_t> count{0};
  const auto tell = [&](const std::string& what) {
    if (inside.fetch_add(1) != 0) hasOverlapped = true;
    order.push_back(what);
    std::this_thread::yield();
    inside.fetch_sub(1);
    ++count;
  };
  link.connection->handleStateFunc(
      [&tell](const Ptr& from, ConnectionState state, ConnectionState previous, auto operation, const auto& error) {
        if (state == CONNECTION_OPEN) from->asyncReadUntil("\n");
        tell(changeOf(state, previous, operation, error));
      });
  link.connection->handleDataFunc([&tell](const Ptr& from, const std::string& data) {
    from->asyncReadUntil("\n");
    tell(data);
  });
  std::vector<std::string> expected{OPENED};
  std::string text;
  for (int i = 0; i < LINES; ++i) {
    expected.push_back("line " + std::to_string(i) + "\n");
    text += expected.back();
  }
  expected.emplace_back(CLOSED_BY_PEER);
  ContextThreads threads(link.context, 4);
  link.connection->start();
  EXPECT_TRUE(link.peer->send(text));
  link.peer->endSending();
  EXPECT_TRUE(waitUntil([&] { return count == expected.size(); }));
  threads.join();
  EXPECT_FALSE(hasOverlapped);
  EXPECT_THAT(order, ElementsAreArray(expected));
}

TEST(TCPConnection, DifferentOnesAreServedAtTheSameTime) {
  boost::asio::io_context context;
  tcp::acceptor acceptor(context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0));
  std::atomic<int> waiting{0};
  std::atomic<bool> haveMet{false};
  std::vector<Ptr> connections;
  std::vector<std::unique_ptr<LoopbackPeer>> peers;
  for (int i = 0; i < 2; ++i) {
    peers.push_back(std::make_unique<LoopbackPeer>(acceptor.local_endpoint().port()));
    connections.push_back(boost::make_shared<TCPConnection>(context));
    acceptor.accept(connections.back()->socket());
    connections.back()->handleDataFunc([&](auto&&...) {
      ++waiting;
      if (waitUntil([&] { return waiting == 2; })) haveMet = true;
    });
    connections.back()->start();
    connections.back()->asyncReadUntil("\n");
    ASSERT_TRUE(peers.back()->send("x\n"));
  }
  ContextThreads threads(context, 2);
  EXPECT_TRUE(waitUntil([&] { return haveMet.load(); }));
}

TEST(TCPConnection, OperationsMayComeFromAnyThread) {
  constexpr int ROUNDS = 200;
  static constexpr std::chrono::microseconds PAUSE(100);
  Link link;
  std::atomic<int> lines{0};
  std::atomic<bool> isClosed{false};
  const auto count = [&lines](auto&&...) { ++lines; };
  link.connection->handleStateFunc([&isClosed](const Ptr&, ConnectionState state, auto&&...) {
    if (state == CONNECTION_CLOSED) isClosed = true;
  });
  link.connection->handleDataFunc(count);
  ContextThreads threads(link.context, 3);
  link.connection->start();
  const auto meanwhile = [&isClosed](auto operation) {
    return std::thread([&isClosed, operation] {
      for (; !isClosed; std::this_thread::sleep_for(PAUSE)) operation();
    });
  };
  std::thread asking = meanwhile([&] { link.connection->asyncReadUntil("\n"); });
  std::thread replacing = meanwhile([&] { link.connection->handleDataFunc(count); });
  std::thread setting = meanwhile([&] {
    link.connection->setKeepAlive(true);
    static_cast<void>(link.connection->state());
  });
  std::thread writing([&] {
    for (int i = 0; i < ROUNDS; ++i) EXPECT_FALSE(link.connection->asyncWrite("answer\n"));
  });
  for (int i = 0; i < ROUNDS; ++i) EXPECT_TRUE(link.peer->send("line\n"));
  EXPECT_TRUE(waitUntil([&] { return link.peer->received().size() == ROUNDS * sizeof("answer"); }));
  EXPECT_TRUE(waitUntil([&] { return lines == ROUNDS; }));
  writing.join();
  std::thread closing([&] { link.connection->close(); });
  closing.join();
  EXPECT_TRUE(waitUntil([&] { return isClosed.load(); }));
  for (std::thread* thread : {&asking, &replacing, &setting}) thread->join();
  EXPECT_EQ(ROUNDS, lines);
}

TEST(TCPConnection, StateCallbackMayBeReplacedByAnotherThreadMeanwhile) {
  constexpr int COUNT = 2000;
  boost::asio::io_context context;
  std::atomic<int> told{0};
  const auto count = [&told](auto&&...) { ++told; };
  std::vector<Ptr> connections;
  for (int i = 0; i < COUNT; ++i) {
    connections.push_back(boost::make_shared<TCPConnection>(context));
    connections.back()->handleStateFunc(count);
  }
  std::atomic<bool> isOver{false};
  {
    const ContextThreads threads(context, 2);
    std::thread replacing([&] {
      while (!isOver) {
        for (const Ptr& connection : connections) connection->handleStateFunc(count);
      }
    });
    for (const Ptr& connection : connections) {
      connection->start();
      connection->close();
    }
    EXPECT_TRUE(waitUntil([&told] { return told == 2 * COUNT; }));
    isOver = true;
    replacing.join();
  }
  EXPECT_EQ(2 * COUNT, told);
}

TEST(TCPConnection, WritesOfOneThreadStayInOrderAmongThoseOfOthers) {
  constexpr int WRITERS = 3;
  constexpr int EACH = 1000;
  Link link;
  ContextThreads threads(link.context, 2);
  link.connection->start();
  std::vector<std::thread> writers;
  for (int writer = 0; writer < WRITERS; ++writer) {
    writers.emplace_back([&link, writer] {
      for (int i = 0; i < EACH; ++i) {
        EXPECT_FALSE(link.connection->asyncWrite(std::to_string(writer) + ' ' + std::to_string(i) + '\n'));
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_TRUE(waitUntil([&] {
    const std::string& all = link.peer->received();
    return std::count(all.begin(), all.end(), '\n') == WRITERS * EACH;
  }));
  std::istringstream in(link.peer->received());
  int next[WRITERS] = {};
  int number = 0;
  for (int writer = 0; in >> writer >> number;) ASSERT_EQ(next[writer]++, number) << "writer " << writer;
  for (const int count : next) EXPECT_EQ(EACH, count);
}

TEST(TCPConnection, RandomPiecesComeAsTheirLines) {
  std::mt19937 random(7);
  const auto number = [&random](std::size_t from, std::size_t to) {
    return std::uniform_int_distribution<std::size_t>(from, to)(random);
  };
  std::vector<std::string> lines;
  std::string text;
  for (int i = 0; i < 400; ++i) {
    std::string line;
    const std::size_t size = number(0, 9) == 0 ? number(0, 20000) : number(0, 40);
    while (line.size() < size) line += "ab\r\n"[number(0, 2)];  // no "\n": a bare "\r" is part of the line
    lines.push_back(line + "\r\n");
    text += lines.back();
  }
  Link link;
  link.open();
  link.readLines("\r\n");
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = number(1, number(0, 3) == 0 ? 30000 : 50);
    ASSERT_TRUE(link.peer->send(text.substr(at, size)));
    at += size;
    link.context.restart();
    while (link.context.poll() > 0) continue;
  }
  ASSERT_TRUE(link.runUntil(lines.size() + 1));
  EXPECT_TRUE(lines == link.told());
}

}  // namespace
}  // namespace qx::net::stream

#include "vso/connectors/QxnetServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qxnet/TCPConnection.h"
#include "support/ConnectionEvents.h"
#include "support/LogCapture.h"
#include "support/Loopback.h"
#include "support/SocketOption.h"
#include "vso/connectors/RecordingClient.h"

namespace qx {
namespace {

using net::stream::CONNECTION_CLOSED;
using net::stream::CONNECTION_CLOSING;
using net::stream::CONNECTION_OPEN;
using net::stream::CONNECTION_OPENING;
using net::stream::OPERATION_CLOSE;
using net::stream::OPERATION_READ;
using net::stream::OPERATION_START;
using net::stream::OPERATION_WRITE;
using net::stream::TCPConnection;
using test::CLOSED_BY_OWNER;
using test::CLOSED_BY_PEER;
using test::ContextThreads;
using test::LogCapture;
using test::LogLine;
using test::LoopbackPeer;
using test::OPENED;
using test::optionOf;
using test::RecordingClient;
using test::runAWhile;
using test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr int TRACE = log4cplus::TRACE_LOG_LEVEL;
constexpr int DEBUG = log4cplus::DEBUG_LOG_LEVEL;
constexpr int WARN = log4cplus::WARN_LOG_LEVEL;

using Lines = std::vector<std::pair<int, std::string>>;

/// Level and text of each line.
Lines linesOf(const LogCapture& capture) {
  Lines lines;
  for (const LogLine& line : capture.lines()) lines.emplace_back(line.level, line.text);
  return lines;
}

/// How every line of the calling thread begins.
std::string prefix() { return '(' + std::to_string(::syscall(SYS_gettid)) + ") QxnetServer::"; }

template <typename T>
std::string textOf(const T& pointer) {
  std::ostringstream out;
  out << pointer;
  return out.str();
}

struct OpenServer : QxnetServer {
  using QxnetServer::createConnection;
  using QxnetServer::handleData;
  using QxnetServer::handleState;
  using QxnetServer::QxnetServer;
};

/// A server and its client, whose context runs on the test's thread.
struct Setting {
  boost::asio::io_context context;
  RecordingClient client;
  boost::shared_ptr<OpenServer> server =
      boost::make_shared<OpenServer>(context, boost::asio::ip::address_v4::loopback(), 0U, client);
  std::vector<std::unique_ptr<LoopbackPeer>> peers;

  ~Setting() {
    client.onData = nullptr;  // what a hook refers to is gone
    client.onState = nullptr;
    if (server) server->stop();
    runAWhile(context);
  }

  bool until(std::size_t eventCount) {
    return test::runUntil(context, [&] { return client.events.count() >= eventCount; });
  }
  /// Connects a peer and waits until the client has heard of it.
  LoopbackPeer& connect() {
    if (server->endpoint().port() == 0) {
      EXPECT_EQ(BErrorCode(), server->start());
    }
    const std::size_t before = client.opened().size();
    peers.push_back(std::make_unique<LoopbackPeer>(server->endpoint().port()));
    EXPECT_TRUE(test::runUntil(context, [&] { return client.opened().size() > before; }));
    return *peers.back();
  }
};

TEST(QxnetServer, IsATcpServer) {
  EXPECT_TRUE((std::is_base_of_v<net::stream::TCPServer, QxnetServer>));
  EXPECT_TRUE((std::is_same_v<QxnetTcpConnectionPtr, boost::shared_ptr<TCPConnection>>));
  EXPECT_TRUE((std::is_same_v<BErrorCode, boost::system::error_code>));
  EXPECT_TRUE((std::is_same_v<QxnetConnectionState, net::stream::ConnectionState>));
  EXPECT_TRUE((std::is_same_v<QxnetConnectionOperation, net::stream::ConnectionOperation>));
  EXPECT_TRUE(std::is_abstract_v<QxnetClient>);
  EXPECT_TRUE(std::has_virtual_destructor_v<QxnetClient>);
}

TEST(QxnetServer, OpensAndLogsNothingAtFirst) {
  const LogCapture capture;
  Setting setting;
  EXPECT_EQ(0, setting.server->endpoint().port());
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(QxnetServer, PortsEndAt65535) {
  Setting setting;
  const auto address = boost::asio::ip::address_v4::loopback();
  EXPECT_THROW(QxnetServer(setting.context, address, 65536, setting.client), std::invalid_argument);
  EXPECT_EQ(65535, QxnetServer(setting.context, address, 65535, setting.client).endpoint().port());
}

TEST(QxnetServer, LogsItsEnd) {
  Setting setting;
  LogCapture capture;
  const std::string pointer = textOf(static_cast<QxnetServer*>(setting.server.get()));
  setting.server.reset();
  EXPECT_THAT(linesOf(capture), ElementsAre(Pair(DEBUG, prefix() + "~QxnetServer: destroying " + pointer)));
}

TEST(QxnetServer, LogsEachConnectionItCreates) {
  Setting setting;
  LogCapture capture;
  const QxnetTcpConnectionPtr connection = setting.server->createConnection();
  EXPECT_EQ(CONNECTION_OPENING, connection->state());
  EXPECT_THAT(linesOf(capture), ElementsAre(Pair(DEBUG, prefix() + "createConnection: connection = " +
                                                            textOf(connection) + ", created and set call backs")));
}

TEST(QxnetServer, CreatedConnectionCallsTheServer) {
  Setting setting;
  const QxnetTcpConnectionPtr connection = setting.server->createConnection();
  boost::asio::ip::tcp::acceptor acceptor(setting.context, {boost::asio::ip::address_v4::loopback(), 0});
  const LoopbackPeer peer(acceptor.local_endpoint().port());
  acceptor.accept(connection->socket());
  connection->start();
  ASSERT_TRUE(peer.send("hello\r\n"));
  ASSERT_TRUE(setting.until(2));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, "hello\r\n"));
  connection->close();
}

TEST(QxnetServer, CreatedConnectionDoesNotKeepTheServer) {
  Setting setting;
  const QxnetTcpConnectionPtr connection = setting.server->createConnection();
  const boost::weak_ptr<QxnetServer> weak = setting.server;
  setting.server.reset();
  EXPECT_TRUE(weak.expired());
  connection->start();
  runAWhile(setting.context);
  EXPECT_THAT(setting.client.events.all(), IsEmpty());
}

TEST(QxnetServer, HandsLinesOnWithTheirDelimiter) {
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  std::vector<QxnetTcpConnectionPtr> from;
  setting.client.onData = [&from](const QxnetTcpConnectionPtr& connection, auto&&...) { from.push_back(connection); };
  ASSERT_TRUE(peer.send("first\r\nx\r\nnot\nan\rend\r\n"));
  ASSERT_TRUE(setting.until(4));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, "first\r\n", "x\r\n", "not\nan\rend\r\n"));
  const QxnetTcpConnectionPtr connection = setting.client.opened().front();
  EXPECT_THAT(from, ElementsAre(connection, connection, connection));
}

TEST(QxnetServer, BareDelimiterIsIgnoredAndReadingGoesOn) {
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  LogCapture capture(WARN);
  ASSERT_TRUE(peer.send("\r\n\r\nx\r\n\r\ny\r\n"));
  ASSERT_TRUE(setting.until(3));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, "x\r\n", "y\r\n"));
  const auto isShort = Pair(WARN, prefix() + "handleData: Data is short 2, ignoring data");
  EXPECT_THAT(linesOf(capture), ElementsAre(isShort, isShort, isShort));
}

TEST(QxnetServer, FirstReadIsTheOwners) {
  Setting setting;
  setting.client.asksForLines = false;
  LoopbackPeer& peer = setting.connect();
  ASSERT_TRUE(peer.send("one\r\ntwo\r\nthree\r\n"));
  runAWhile(setting.context);
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED));
  setting.client.opened().front()->asyncReadUntil("\r\n");
  ASSERT_TRUE(setting.until(4));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, "one\r\n", "two\r\n", "three\r\n"));
}

TEST(QxnetServer, LinesKeepBytesOfEveryValue) {
  std::string line;
  for (int byte = 255; byte >= 0; --byte) line += static_cast<char>(byte);  // "\r" does not stand before "\n"
  line += "\r\n";
  Setting setting;
  ASSERT_TRUE(setting.connect().send(line));
  ASSERT_TRUE(setting.until(2));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, line));
}

TEST(QxnetServer, LongestLineHas65536Bytes) {
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  const std::string longest = std::string(65534, 'x') + "\r\n";
  ASSERT_TRUE(peer.send(longest));
  ASSERT_TRUE(setting.until(2));
  EXPECT_TRUE(longest == setting.client.events.all()[1]);
  LogCapture capture(DEBUG);
  ASSERT_TRUE(peer.send('x' + longest));
  ASSERT_TRUE(setting.until(3));
  EXPECT_EQ("CONNECTION_OPEN -> CONNECTION_CLOSED, OPERATION_READ, Message too long", setting.client.events.all()[2]);
  EXPECT_THAT(linesOf(capture),
              ElementsAre(Pair(DEBUG, prefix() + "handleState: " + textOf(setting.client.opened().front()) +
                                          " CONNECTION_CLOSED, OPERATION_READ, Message too long (90)")));
}

TEST(QxnetServer, EndOfAPeerIsTold) {
  Setting setting;
  setting.connect().close();
  ASSERT_TRUE(setting.until(2));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, CLOSED_BY_PEER));
}

TEST(QxnetServer, LogsASession) {
  LogCapture capture;
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  ASSERT_TRUE(peer.send("a\x01\xff\t\\b\r\n\r\n"));
  peer.close();
  ASSERT_TRUE(setting.until(3));
  const std::string own = prefix();
  const std::string pointer = textOf(setting.client.opened().front());
  Lines lines = linesOf(capture);
  ASSERT_EQ(9U, lines.size());
  EXPECT_EQ(own + "createConnection: connection = " + pointer + ", created and set call backs", lines[0].second);
  EXPECT_THAT(lines[1].second, testing::StartsWith(own + "createConnection: connection = 0x"));
  lines.erase(lines.begin() + 1);
  EXPECT_THAT(
      lines,
      ElementsAre(Pair(DEBUG, own + "createConnection: connection = " + pointer + ", created and set call backs"),
                  Pair(DEBUG, own + "handleState: " + pointer + " CONNECTION_OPEN, OPERATION_START, Success (0)"),
                  Pair(TRACE, own + "handleData: IN: " + pointer + R"( size = 8, data = a\x01\xff\t\b\r\n)"),
                  Pair(TRACE, own + "handleData: Enqueue next asyncReadUntil"),
                  Pair(TRACE, own + "handleData: IN: " + pointer + R"( size = 2, data = \r\n)"),
                  Pair(TRACE, own + "handleData: Enqueue next asyncReadUntil"),
                  Pair(WARN, own + "handleData: Data is short 2, ignoring data"),
                  // The number is that of the stream library's end of file.
                  Pair(DEBUG, own + "handleState: " + pointer +
                                  " CONNECTION_CLOSED, OPERATION_READ, No such file or directory (2)")));
}

TEST(QxnetServer, LinesCarryThePlaceTheyStandAt) {
  Setting setting;
  LogCapture capture;
  setting.server->handleData(nullptr, "x\r\n");
  ASSERT_EQ(3U, capture.lines().size());
  for (const LogLine& line : capture.lines()) {
    EXPECT_EQ("vso/connectors/QxnetServer.cpp", line.file);
    EXPECT_THAT(line.function, testing::HasSubstr("QxnetServer::handleData"));
    EXPECT_EQ("root", line.logger);
  }
}

TEST(QxnetServer, DataWithoutAConnectionIsIgnoredBehindTheReading) {
  Setting setting;
  const std::string own = prefix();
  for (const std::string data : {"a line\r\n", "\r\n", ""}) {
    LogCapture capture;
    setting.server->handleData(nullptr, data);
    const Lines lines = linesOf(capture);
    ASSERT_EQ(3U, lines.size());
    EXPECT_EQ(TRACE, lines[0].first);
    EXPECT_THAT(lines[0].second, testing::StartsWith(own + "handleData: IN: " + textOf(QxnetTcpConnectionPtr()) +
                                                     " size = " + std::to_string(data.size()) + ", data = "));
    EXPECT_THAT(lines[1], Pair(TRACE, own + "handleData: Enqueue next asyncReadUntil"));
    EXPECT_THAT(lines[2], Pair(WARN, own + "handleData: Connection pointer is null, ignoring data"));
  }
  EXPECT_THAT(setting.client.events.all(), IsEmpty());
}

TEST(QxnetServer, DataOfTwoBytesOrFewerIsShort) {
  Setting setting;
  const QxnetTcpConnectionPtr connection = setting.server->createConnection();
  for (const std::string data : {"", "x", "xy", "\r\n"}) {
    LogCapture capture(WARN);
    setting.server->handleData(connection, data);
    EXPECT_THAT(linesOf(capture), ElementsAre(Pair(WARN, prefix() + "handleData: Data is short " +
                                                             std::to_string(data.size()) + ", ignoring data")));
  }
  EXPECT_THAT(setting.client.events.all(), IsEmpty());
  LogCapture capture(WARN);
  setting.server->handleData(connection, "xyz");
  EXPECT_THAT(setting.client.events.all(), ElementsAre("xyz"));
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(QxnetServer, NextReadIsAskedForBeforeTheLineIsHandedOn) {
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  setting.client.onData = [](const auto&, const std::string& data) {
    if (data == "one\r\n") throw std::runtime_error("of the client");
  };
  ASSERT_TRUE(peer.send("one\r\ntwo\r\n"));
  EXPECT_THROW(setting.until(3), std::runtime_error);
  ASSERT_TRUE(setting.until(3));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, "one\r\n", "two\r\n"));
}

TEST(QxnetServer, LinesAreLoggedBeforeTheyAreHandedOn) {
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  LogCapture capture;
  std::size_t linesBefore = 0;
  setting.client.onData = [&](auto&&...) { linesBefore = capture.lines().size(); };
  ASSERT_TRUE(peer.send("x\r\n"));
  ASSERT_TRUE(setting.until(2));
  EXPECT_EQ(2U, linesBefore);
  EXPECT_EQ(2U, capture.lines().size());
}

TEST(QxnetServer, StatesAreLoggedAndHandedOnAsTheyAre) {
  struct Row {
    QxnetConnectionState state;
    QxnetConnectionState previous;
    QxnetConnectionOperation operation;
    BErrorCode error;
    const char* logged;
    const char* told;
  };
  const Row rows[] = {
      {CONNECTION_OPEN,
       CONNECTION_OPENING,
       OPERATION_START,
       {},
       "CONNECTION_OPEN, OPERATION_START, Success (0)",
       OPENED},
      {CONNECTION_CLOSING, CONNECTION_OPEN, OPERATION_READ, boost::asio::error::connection_reset,
       "CONNECTION_CLOSING, OPERATION_READ, Connection reset by peer (104)",
       "CONNECTION_OPEN -> CONNECTION_CLOSING, OPERATION_READ, Connection reset by peer"},
      {CONNECTION_CLOSED, CONNECTION_CLOSING, OPERATION_WRITE, boost::asio::error::broken_pipe,
       "CONNECTION_CLOSED, OPERATION_WRITE, Broken pipe (32)",
       "CONNECTION_CLOSING -> CONNECTION_CLOSED, OPERATION_WRITE, Broken pipe"},
      {CONNECTION_CLOSED,
       CONNECTION_OPEN,
       OPERATION_CLOSE,
       {},
       "CONNECTION_CLOSED, OPERATION_CLOSE, Success (0)",
       CLOSED_BY_OWNER},
      // Of another category: the system's text of the number is logged.
      {CONNECTION_CLOSED, CONNECTION_OPEN, OPERATION_READ, boost::asio::error::eof,
       "CONNECTION_CLOSED, OPERATION_READ, No such file or directory (2)", CLOSED_BY_PEER},
  };
  Setting setting;
  const QxnetTcpConnectionPtr connection = setting.server->createConnection();
  for (const Row& row : rows) {
    const std::size_t before = setting.client.events.count();
    LogCapture capture;
    std::size_t linesBefore = 0;
    QxnetTcpConnectionPtr told;
    setting.client.onState = [&](const QxnetTcpConnectionPtr& about, auto&&...) {
      linesBefore = capture.lines().size();
      told = about;
    };
    setting.server->handleState(connection, row.state, row.previous, row.operation, row.error);
    EXPECT_THAT(linesOf(capture),
                ElementsAre(Pair(DEBUG, prefix() + "handleState: " + textOf(connection) + ' ' + row.logged)));
    EXPECT_EQ(1U, linesBefore);
    EXPECT_EQ(connection, told);
    ASSERT_EQ(before + 1, setting.client.events.count());
    EXPECT_EQ(row.told, setting.client.events.all().back());
  }
}

TEST(QxnetServer, LinesCarryTheNumberOfTheThreadThatLogs) {
  Setting setting;
  LogCapture capture;
  long number = 0;
  setting.client.onState = [&number](auto&&...) { number = ::syscall(SYS_gettid); };
  ASSERT_FALSE(setting.server->start());
  const LoopbackPeer peer(setting.server->endpoint().port());
  {
    const ContextThreads threads(setting.context, 1);
    EXPECT_TRUE(waitUntil([&] { return setting.client.events.count() == 1; }));
  }
  ASSERT_NE(::syscall(SYS_gettid), number);
  const std::vector<std::string> texts = capture.texts();
  ASSERT_EQ(3U, texts.size());
  EXPECT_THAT(texts[0], testing::StartsWith(prefix() + "createConnection"));
  EXPECT_THAT(texts[1], testing::StartsWith('(' + std::to_string(number) + ") QxnetServer::createConnection"));
  EXPECT_THAT(texts[2], testing::StartsWith('(' + std::to_string(number) + ") QxnetServer::handleState"));
}

TEST(QxnetServer, CommonSocketOptionsProbeASilentPeer) {
  Setting setting;
  setting.connect();
  TCPConnection& connection = *setting.client.opened().front();
  EXPECT_EQ(0, optionOf(connection, SOL_SOCKET, SO_KEEPALIVE));  // the server does not set them itself
  LogCapture capture;
  QxnetServer::commonSocketOptions(setting.client.opened().front());
  EXPECT_EQ(1, optionOf(connection, SOL_SOCKET, SO_KEEPALIVE));
  EXPECT_EQ(10, optionOf(connection, IPPROTO_TCP, TCP_KEEPCNT));
  EXPECT_EQ(30, optionOf(connection, IPPROTO_TCP, TCP_KEEPIDLE));
  EXPECT_EQ(5, optionOf(connection, IPPROTO_TCP, TCP_KEEPINTVL));
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(QxnetServer, EachSocketOptionThatFailsIsAWarning) {
  Setting setting;
  const QxnetTcpConnectionPtr connection = setting.server->createConnection();
  connection->close();
  LogCapture capture;
  QxnetServer::commonSocketOptions(connection);
  const std::string own = prefix() + "commonSocketOptions: failed to set keep alive";
  EXPECT_THAT(linesOf(capture), ElementsAre(Pair(WARN, own + " option, Bad file descriptor"),
                                            Pair(WARN, own + " count option, Bad file descriptor"),
                                            Pair(WARN, own + " idle option, Bad file descriptor"),
                                            Pair(WARN, own + " interval option, Bad file descriptor")));
}

TEST(QxnetServer, CommonSocketOptionsOfNoConnectionDoNothing) {
  LogCapture capture;
  QxnetServer::commonSocketOptions(nullptr);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(QxnetServer, FindsItsConnections) {
  Setting setting;
  setting.connect();
  setting.connect();
  const std::vector<QxnetTcpConnectionPtr> opened = setting.client.opened();
  for (const QxnetTcpConnectionPtr& connection : opened) {
    const unsigned int hash = setting.server->connectionHash(connection);
    EXPECT_EQ(connection, setting.server->findConnection(hash));
    EXPECT_EQ(nullptr, setting.server->findConnection(~hash));
  }
}

TEST(QxnetServer, AddressInUseIsLoggedAndReturned) {
  Setting first;
  ASSERT_FALSE(first.server->start());
  const unsigned short port = first.server->endpoint().port();
  RecordingClient client;
  const auto second =
      boost::make_shared<QxnetServer>(first.context, boost::asio::ip::address_v4::loopback(), port, client);
  LogCapture capture;
  EXPECT_EQ(boost::asio::error::address_in_use, second->start());
  EXPECT_THAT(linesOf(capture),
              ElementsAre(Pair(log4cplus::ERROR_LOG_LEVEL, "openAcceptor(): Error binding to endpoint [127.0.0.1:" +
                                                               std::to_string(port) + "]: Address already in use")));
}

TEST(QxnetServer, NotHeldInASharedPointerItSaysSo) {
  boost::asio::io_context context;
  RecordingClient client;
  QxnetServer server(context, boost::asio::ip::address_v4::loopback(), 0, client);
  LogCapture capture(log4cplus::ERROR_LOG_LEVEL);
  EXPECT_EQ(BErrorCode(), server.start());
  EXPECT_THAT(linesOf(capture), ElementsAre(Pair(log4cplus::FATAL_LOG_LEVEL,
                                                 "StreamServer::start got bad_weak_ptr exception, did you "
                                                 "forget to wrap your server in a boost shared_ptr?")));
  EXPECT_NE(0, server.endpoint().port());
}

TEST(QxnetServer, ClientMayStopAndStartItInACall) {
  Setting setting;
  LoopbackPeer& peer = setting.connect();
  setting.client.onData = [&setting](auto&&...) {
    setting.server->stop();
    EXPECT_EQ(BErrorCode(), setting.server->start());
  };
  ASSERT_TRUE(peer.send("restart\r\nlost\r\n"));
  ASSERT_TRUE(setting.until(3));
  EXPECT_THAT(setting.client.events.all(), ElementsAre(OPENED, "restart\r\n", CLOSED_BY_OWNER));
  setting.client.onData = nullptr;
  ASSERT_TRUE(setting.connect().send("again\r\n"));
  ASSERT_TRUE(setting.until(5));
  EXPECT_EQ("again\r\n", setting.client.events.all().back());
}

TEST(QxnetServer, EndsWhenItIsStoppedAndLetGo) {
  Setting setting;
  setting.connect();
  const boost::weak_ptr<QxnetServer> weak = setting.server;
  setting.server->stop();
  setting.server.reset();
  EXPECT_TRUE(test::runUntil(setting.context, [&weak] { return weak.expired(); }));
  EXPECT_EQ(CONNECTION_CLOSED, setting.client.opened().front()->state());
}

TEST(QxnetServer, LinesOfEachConnectionStayInOrderOnSeveralThreads) {
  constexpr int PEERS = 6;
  constexpr int LINES = 300;
  Setting setting;
  std::mutex mutex;
  std::map<TCPConnection*, std::vector<std::string>> lines;
  std::map<TCPConnection*, std::atomic<int>> inside;
  std::atomic<int> count{0};
  std::atomic<bool> hasOverlapped{false};
  setting.client.onData = [&](const QxnetTcpConnectionPtr& from, const std::string& data) {
    std::atomic<int>* own = nullptr;
    {
      const std::lock_guard<std::mutex> lock(mutex);
      own = &inside[from.get()];
    }
    if (own->fetch_add(1) != 0) hasOverlapped = true;
    {
      const std::lock_guard<std::mutex> lock(mutex);
      lines[from.get()].push_back(data);
    }
    own->fetch_sub(1);
    ++count;
  };
  ASSERT_FALSE(setting.server->start());
  {
    const ContextThreads threads(setting.context, 4);
    for (int i = 0; i < PEERS; ++i) {
      setting.peers.push_back(std::make_unique<LoopbackPeer>(setting.server->endpoint().port()));
    }
    for (int line = 0; line < LINES; ++line) {
      for (const auto& peer : setting.peers) ASSERT_TRUE(peer->send("line " + std::to_string(line) + "\r\n"));
    }
    EXPECT_TRUE(waitUntil([&] { return count == PEERS * LINES; }));
    setting.server->stop();
    EXPECT_TRUE(waitUntil([&] { return setting.client.events.count() == PEERS * (LINES + 2); }));
  }
  EXPECT_FALSE(hasOverlapped);
  ASSERT_EQ(static_cast<std::size_t>(PEERS), lines.size());
  for (const auto& [connection, received] : lines) {
    ASSERT_EQ(static_cast<std::size_t>(LINES), received.size());
    for (int line = 0; line < LINES; ++line) {
      EXPECT_EQ("line " + std::to_string(line) + "\r\n", received[static_cast<std::size_t>(line)]);
    }
  }
}

}  // namespace
}  // namespace qx

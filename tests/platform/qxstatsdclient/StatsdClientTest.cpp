#include "qxstatsdclient/StatsdClient.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/system/system_error.hpp>
#include <cstdio>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/LogCapture.h"
#include "support/UdpReceiver.h"

namespace qx {
namespace {

using boost::asio::io_context;
using test::linesOf;
using test::UdpReceiver;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int DEBUG = 10000;
constexpr std::size_t LONGEST_DATAGRAM = 1432;

/// A client that sends to a receiver of the test's own. Its context is never run.
class StatsdClientTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(receiver_.isOpen());
    ASSERT_TRUE(client_.setAsioContext(context_.get(), false));
    ASSERT_TRUE(client_.setServer(receiver_.address(), receiver_.port()));
  }

  /// The datagrams so far.
  std::vector<std::string> sent() {
    EXPECT_TRUE(client_.string("end", "of", "test"));
    return receiver_.upTo("end.of:test|s");
  }

  /// Their lines.
  std::vector<std::string> sentLines() {
    std::vector<std::string> lines;
    for (const std::string& datagram : sent()) {
      EXPECT_LE(datagram.size(), LONGEST_DATAGRAM);
      for (const std::string& line : linesOf(datagram)) lines.push_back(line);
    }
    return lines;
  }

  UdpReceiver receiver_;
  std::unique_ptr<io_context> context_ = std::make_unique<io_context>();
  StatsdClient& client_ = *StatsdClient::getInstance();
};

TEST_F(StatsdClientTest, IsOneObject) { EXPECT_EQ(StatsdClient::getInstance(), &client_); }

TEST_F(StatsdClientTest, SendsADecimalNumberAsAGauge) {
  EXPECT_TRUE(client_.string("name", "some.key", "42"));
  EXPECT_THAT(sent(), ElementsAre("name.some.key:42|g"));
}

TEST_F(StatsdClientTest, SendsANegativeNumberBehindAZeroInOneDatagram) {
  EXPECT_TRUE(client_.string("name", "key", "-42.5"));
  EXPECT_THAT(sent(), ElementsAre("name.key:0|g\nname.key:-42.5|g"));
}

TEST_F(StatsdClientTest, SendsOtherTextAsASet) {
  for (const char* const text : {"text", "+5", "1e3", "5.", ".5", "-", "0x10"}) {
    EXPECT_TRUE(client_.string("name", "key", text));
  }
  EXPECT_THAT(sent(), ElementsAre("name.key:text|s", "name.key:+5|s", "name.key:1e3|s", "name.key:5.|s",
                                  "name.key:.5|s", "name.key:-|s", "name.key:0x10|s"));
}

TEST_F(StatsdClientTest, DropsAnEmptyValueWithOneDebugLine) {
  const test::LogCapture log;
  EXPECT_FALSE(client_.string("name", "key", ""));
  EXPECT_FALSE(client_.jsonObject("name", "key", ""));
  EXPECT_THAT(log.lines(), SizeIs(2));
  EXPECT_EQ(log.count(DEBUG), 2U);
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(StatsdClientTest, SendsEmptyNamesAsTheyAre) {
  EXPECT_TRUE(client_.string("", "key", "1"));
  EXPECT_TRUE(client_.string("name", "", "1"));
  EXPECT_THAT(sent(), ElementsAre(".key:1|g", "name.:1|g"));
}

/// What is sent in place of a byte of a name or a value.
std::string shown(int code) {
  const char byte = static_cast<char>(code);
  const bool breaksLines = code <= 0x1F || code == 0x7F || byte == ':' || byte == '|' || byte == '@' || byte == '#';
  return {breaksLines ? '_' : byte};
}

// Read one by one: the receiver's buffer does not hold them all.

TEST_F(StatsdClientTest, SendsOneLineWhateverByteStandsInNameKeyAndValue) {
  for (int code = 0; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    EXPECT_TRUE(client_.string("n" + byte + "n", "k" + byte + "k", "v" + byte + "v"));
    EXPECT_EQ(receiver_.next(), "n" + shown(code) + "n.k" + shown(code) + "k:v" + shown(code) + "v|s");
  }
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(StatsdClientTest, SendsOneLineWhateverByteStandsInAJsonText) {
  for (int code = 0; code < 0x80; ++code) {
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(code));
    EXPECT_TRUE(client_.jsonObject("n", "k", std::string("{\"a") + escape + "\":\"v" + escape + "\"}"));
    EXPECT_EQ(receiver_.next(), "n.k.a" + shown(code) + ":v" + shown(code) + "|s");
  }
  EXPECT_THAT(sent(), IsEmpty());
}

struct JsonCase {
  std::string name;
  std::string json;
  std::vector<std::string> lines;
};

std::ostream& operator<<(std::ostream& out, const JsonCase& c) { return out << c.name; }

class StatsdClientJson : public StatsdClientTest, public testing::WithParamInterface<JsonCase> {};

TEST_P(StatsdClientJson, IsSentAsItsLeaves) {
  client_.jsonObject("n", "k", GetParam().json);
  EXPECT_EQ(sentLines(), GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(
    Values, StatsdClientJson,
    testing::Values(
        JsonCase{"Number", R"({"a":1})", {"n.k.a:1|g"}}, JsonCase{"Zero", R"({"a":0})", {"n.k.a:0|g"}},
        JsonCase{"Negative", R"({"a":-7})", {"n.k.a:0|g", "n.k.a:-7|g"}},
        JsonCase{"Fraction", R"({"a":1.5})", {"n.k.a:1.5|g"}},
        JsonCase{"NegativeFraction", R"({"a":-0.25})", {"n.k.a:0|g", "n.k.a:-0.25|g"}},
        JsonCase{"SmallExponent", R"({"a":1e-7})", {"n.k.a:0.0000001|g"}},
        JsonCase{"Exponent", R"({"a":1e3})", {"n.k.a:1000|g"}},
        JsonCase{"ExponentBeyondNumbers", R"({"a":1e400})", {"n.k:{\"a\"_1e400}|s"}},
        JsonCase{"LargestInteger", R"({"a":18446744073709551615})", {"n.k.a:18446744073709551615|g"}},
        JsonCase{"SmallestInteger", R"({"a":-9223372036854775808})", {"n.k.a:0|g", "n.k.a:-9223372036854775808|g"}},
        JsonCase{"Booleans", R"({"a":true,"b":false})", {"n.k.a:1|g", "n.k.b:0|g"}},
        JsonCase{"Null", R"({"a":null,"b":1})", {"n.k.b:1|g"}}, JsonCase{"Text", R"({"a":"text"})", {"n.k.a:text|s"}},
        JsonCase{"EmptyText", R"({"a":"","b":1})", {"n.k.b:1|g"}},
        JsonCase{"Nested", R"({"a":{"b":{"c":1,"d":2}},"e":3})", {"n.k.a.b.c:1|g", "n.k.a.b.d:2|g", "n.k.e:3|g"}},
        JsonCase{"Array",
                 R"({"a":[1,[2,"x"],{"b":true}]})",
                 {"n.k.a.0:1|g", "n.k.a.1.0:2|g", "n.k.a.1.1:x|s", "n.k.a.2.b:1|g"}},
        JsonCase{"EmptyContainers", R"({"a":{},"b":[]})", {}}, JsonCase{"EmptyObject", "{}", {}},
        JsonCase{"DotsInKeys", R"({"a.b":{"c.d":1}})", {"n.k.a.b.c.d:1|g"}},
        JsonCase{"EmptyKey", R"({"":1})", {"n.k.:1|g"}},
        JsonCase{"ControlsInKeys", R"({"a\n\u0000\u007F|b:1|g":1})", {"n.k.a____b_1_g:1|g"}},
        JsonCase{"ControlsInText", R"({"a":"1|g\nforged:1"})", {"n.k.a:1_g_forged_1|s"}},
        JsonCase{"LettersBeyondAscii", R"({"\u00e9":"\u00e9"})", {"n.k.\xC3\xA9:\xC3\xA9|s"}},
        JsonCase{"NumberAlone", "12", {"n.k:12|g"}}, JsonCase{"TextAlone", R"("x")", {"n.k:\"x\"|s"}},
        JsonCase{"ArrayAlone", "[1]", {"n.k:[1]|s"}}, JsonCase{"NullAlone", "null", {"n.k:null|s"}},
        JsonCase{"Unfinished", R"({"a")", {"n.k:{\"a\"|s"}}, JsonCase{"NoJson", "{a:1}", {"n.k:{a_1}|s"}},
        JsonCase{"TextBehind", R"({"a":1} x)", {"n.k:{\"a\"_1} x|s"}},
        JsonCase{"NoUtf8", "{\"a\":\"\xFF\"}", {"n.k:{\"a\"_\"\xFF\"}|s"}},
        JsonCase{"NoUtf8InAKey", "{\"\xC3\":1}", {"n.k:{\"\xC3\"_1}|s"}}),
    [](const testing::TestParamInfo<JsonCase>& instance) { return instance.param.name; });

TEST_F(StatsdClientTest, SendsTheLargestJsonNumbersAsDigits) {
  EXPECT_TRUE(client_.jsonObject("n", "k", R"({"a":1e300})"));
  const std::vector<std::string> datagrams = sent();
  ASSERT_THAT(datagrams, ElementsAre(testing::MatchesRegex("n\\.k\\.a:[0-9]+.g")));
  EXPECT_EQ(std::stod(datagrams[0].substr(6)), 1e300);
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

constexpr int DEEP = 100000;

struct DeepCase {
  std::string name;
  std::string opening;
  std::string closing;
};

std::ostream& operator<<(std::ostream& out, const DeepCase& c) { return out << c.name; }

class StatsdClientDeepJson : public StatsdClientTest, public testing::WithParamInterface<DeepCase> {};

TEST_P(StatsdClientDeepJson, IsDroppedWithOneDebugLineAndNothingBesideIt) {
  const std::string nest = repeated(GetParam().opening, DEEP) + "1" + repeated(GetParam().closing, DEEP);
  {
    const test::LogCapture log;
    EXPECT_FALSE(client_.jsonObject("n", "k", R"({"a":1,"b":)" + nest + R"(,"c":2})"));
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  EXPECT_THAT(sentLines(), ElementsAre("n.k.a:1|g", "n.k.c:2|g"));
}

TEST_P(StatsdClientDeepJson, WithoutItsEndIsDroppedWithOneDebugLine) {
  const test::LogCapture log;
  EXPECT_FALSE(client_.jsonObject("n", "k", R"({"b":)" + repeated(GetParam().opening, DEEP)));
  EXPECT_THAT(log.lines(), SizeIs(1));
  EXPECT_EQ(log.count(DEBUG), 1U);
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_P(StatsdClientDeepJson, IsSentWhileItsPathFits) {
  constexpr int DEPTH = 300;
  const std::string nest = repeated(GetParam().opening, DEPTH) + "1" + repeated(GetParam().closing, DEPTH);
  EXPECT_TRUE(client_.jsonObject("n", "k", R"({"b":)" + nest + "}"));
  const std::vector<std::string> lines = sentLines();
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], testing::StartsWith("n.k.b."));
  EXPECT_THAT(lines[0], testing::EndsWith(":1|g"));
  EXPECT_EQ(std::count(lines[0].begin(), lines[0].end(), '.'), 2 + DEPTH);
}

INSTANTIATE_TEST_SUITE_P(Nests, StatsdClientDeepJson,
                         testing::Values(DeepCase{"Arrays", "[", "]"}, DeepCase{"Objects", R"({"a":)", "}"},
                                         DeepCase{"ObjectsOfTheEmptyKey", R"({"":)", "}"}),
                         [](const testing::TestParamInfo<DeepCase>& instance) { return instance.param.name; });

TEST_F(StatsdClientTest, PacksTheLeavesIntoFullDatagrams) {
  constexpr int LEAVES = 500;
  std::vector<std::string> expected;
  std::string json;
  for (int i = 0; i < LEAVES; ++i) {
    const std::string number = std::to_string(1000 + i);
    json += (i == 0 ? "{\"a" : ",\"a") + number + "\":" + number;
    expected.push_back("n.k.a" + number + ":" + number + "|g");
  }
  EXPECT_TRUE(client_.jsonObject("n", "k", json + "}"));
  const std::vector<std::string> datagrams = sent();
  std::vector<std::string> lines;
  std::size_t previous = LONGEST_DATAGRAM;
  for (const std::string& datagram : datagrams) {
    const std::vector<std::string> its = linesOf(datagram);
    EXPECT_LE(datagram.size(), LONGEST_DATAGRAM);
    // Another line would not have gone into the one before.
    ASSERT_THAT(its, testing::Not(IsEmpty()));
    EXPECT_GT(previous + 1 + its.front().size(), LONGEST_DATAGRAM);
    previous = datagram.size();
    lines.insert(lines.end(), its.begin(), its.end());
  }
  EXPECT_EQ(lines, expected);
}

TEST_F(StatsdClientTest, SendsALineOfExactlyOneDatagram) {
  const std::string value(LONGEST_DATAGRAM - 6, 'v');
  EXPECT_TRUE(client_.string("n", "k", value));
  EXPECT_THAT(sent(), ElementsAre("n.k:" + value + "|s"));
}

TEST_F(StatsdClientTest, DropsALineThatDoesNotFitWithOneDebugLine) {
  {
    const test::LogCapture log;
    EXPECT_FALSE(client_.string("n", "k", std::string(LONGEST_DATAGRAM - 5, 'v')));
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(StatsdClientTest, DropsOfAJsonObjectOnlyTheLeafThatDoesNotFit) {
  {
    const test::LogCapture log;
    EXPECT_FALSE(client_.jsonObject("n", "k", R"({"a":1,"b":")" + std::string(2000, 'v') + R"(","c":2})"));
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  EXPECT_THAT(sentLines(), ElementsAre("n.k.a:1|g", "n.k.c:2|g"));
}

TEST_F(StatsdClientTest, SendsToAnIpv6Server) {
  const UdpReceiver receiver("::1");
  if (!receiver.isOpen()) GTEST_SKIP() << "this machine has no ::1";
  ASSERT_TRUE(client_.setServer("::1", receiver.port()));
  EXPECT_TRUE(client_.string("n", "k", "-1"));
  EXPECT_TRUE(client_.jsonObject("n", "k", R"({"a":"x"})"));
  EXPECT_TRUE(client_.string("end", "of", "test"));
  EXPECT_THAT(receiver.upTo("end.of:test|s"), ElementsAre("n.k:0|g\nn.k:-1|g", "n.k.a:x|s"));
}

TEST_F(StatsdClientTest, LeavesTheEarlierServerForTheNewOne) {
  const UdpReceiver other;
  ASSERT_TRUE(client_.setServer(other.address(), other.port()));
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_EQ(other.next(), "n.k:1|g");
  ASSERT_TRUE(client_.setServer(receiver_.address(), receiver_.port()));
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(StatsdClientTest, DropsWhatIsSentBeforeThereIsAServer) {
  io_context other;
  ASSERT_TRUE(client_.setAsioContext(&other, false));
  const test::LogCapture log;
  EXPECT_FALSE(client_.string("n", "k", "1"));
  EXPECT_FALSE(client_.jsonObject("n", "k", R"({"a":1})"));
  EXPECT_THAT(log.lines(), SizeIs(2));
  EXPECT_EQ(log.count(DEBUG), 2U);
}

TEST_F(StatsdClientTest, ReachesAServerThatIsBackWithTheFirstSend) {
  // An address that no other test's socket stands on: the port must be free again.
  auto server = std::make_unique<UdpReceiver>("127.17.3.9");
  ASSERT_TRUE(server->isOpen());
  const std::uint16_t port = server->port();
  ASSERT_TRUE(client_.setServer(server->address(), port));
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_EQ(server->next(), "n.k:1|g");

  for (int sends = 1; sends <= 5; ++sends) {
    server.reset();
    for (int i = 0; i < sends; ++i) client_.string("n", "k", "lost");
    server = std::make_unique<UdpReceiver>("127.17.3.9", port);
    ASSERT_TRUE(server->isOpen());
    EXPECT_TRUE(client_.string("n", "k", "2")) << "after " << sends;
    EXPECT_EQ(server->next(), "n.k:2|g") << "after " << sends;
  }
}

TEST_F(StatsdClientTest, LogsNoMoreThanOneDebugLineForEachMetricThatAServerGoneLoses) {
  receiver_.close();
  const test::LogCapture log;
  std::size_t lost = 0;
  for (int i = 0; i < 100; ++i) lost += client_.string("n", "k", "1") ? 0 : 1;
  EXPECT_THAT(log.lines(), SizeIs(lost));
  EXPECT_EQ(log.count(DEBUG), lost);
}

TEST_F(StatsdClientTest, DropsWhatIsSentAfterItsContextEnded) {
  context_.reset();
  {
    const test::LogCapture log;
    EXPECT_FALSE(client_.string("n", "k", "1"));
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(log.count(DEBUG), 1U);
  }
  EXPECT_THROW(client_.setServer(receiver_.address(), receiver_.port()), std::logic_error);

  io_context next;
  ASSERT_TRUE(client_.setAsioContext(&next, false));
  ASSERT_TRUE(client_.setServer(receiver_.address(), receiver_.port()));
  EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(StatsdClientTest, SurvivesOneContextAfterAnother) {
  for (int i = 0; i < 20; ++i) {
    context_ = std::make_unique<io_context>();
    ASSERT_TRUE(client_.setAsioContext(context_.get(), false));
    ASSERT_TRUE(client_.setServer(receiver_.address(), receiver_.port()));
    EXPECT_TRUE(client_.string("n", "k", std::to_string(i)));
    EXPECT_EQ(receiver_.next(), "n.k:" + std::to_string(i) + "|g");
  }
}

TEST_F(StatsdClientTest, LosesTheServerWithAnotherContext) {
  io_context other;
  ASSERT_TRUE(client_.setAsioContext(&other, false));
  EXPECT_FALSE(client_.string("n", "k", "1"));
  ASSERT_TRUE(client_.setServer(receiver_.address(), receiver_.port()));
  // The context before is nothing to the client any more.
  context_.reset();
  EXPECT_TRUE(client_.string("n", "k", "2"));
  EXPECT_THAT(sent(), ElementsAre("n.k:2|g"));
}

TEST_F(StatsdClientTest, KeepsTheServerWhenTheSameContextIsSetAgain) {
  EXPECT_TRUE(client_.setAsioContext(context_.get(), false));
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_THAT(sent(), ElementsAre("n.k:1|g"));
}

TEST_F(StatsdClientTest, ClosesWithTheNullContext) {
  EXPECT_FALSE(client_.setAsioContext(nullptr, false));
  EXPECT_FALSE(client_.string("n", "k", "1"));
  EXPECT_FALSE(client_.setAsioContext(nullptr, false));
}

TEST_F(StatsdClientTest, RefusesAThreadOfItsOwnAndChangesNothing) {
  io_context other;
  EXPECT_FALSE(client_.setAsioContext(&other, true));
  EXPECT_FALSE(client_.setAsioContext(nullptr, true));
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_THAT(sent(), ElementsAre("n.k:1|g"));
}

TEST_F(StatsdClientTest, ThrowsForNoAddressAndKeepsTheServer) {
  for (const char* const address : {"", "localhost", "127.0.0", "127.0.0.1:8125", "127.0.0.1 ", "::g", "1.2.3.256"}) {
    EXPECT_THROW(client_.setServer(address, 8125), boost::system::system_error) << address;
  }
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_THAT(sent(), ElementsAre("n.k:1|g"));
}

TEST_F(StatsdClientTest, ThrowsForAnAddressThatTheSystemRefusesAndKeepsTheServer) {
  // A socket has to ask for broadcasting first.
  EXPECT_THROW(client_.setServer("255.255.255.255", 8125), boost::system::system_error);
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_THAT(sent(), ElementsAre("n.k:1|g"));
}

TEST_F(StatsdClientTest, ThrowsForAPortBeyondTheLastAndKeepsTheServer) {
  EXPECT_THROW(client_.setServer("127.0.0.1", 65536), std::invalid_argument);
  EXPECT_THROW(client_.setServer("127.0.0.1", 4294967295U), std::invalid_argument);
  EXPECT_TRUE(client_.string("n", "k", "1"));
  EXPECT_THAT(sent(), ElementsAre("n.k:1|g"));
  EXPECT_TRUE(client_.setServer("127.0.0.1", 65535));
}

TEST_F(StatsdClientTest, ThrowsForAServerWithoutAContext) {
  client_.setAsioContext(nullptr, false);
  EXPECT_THROW(client_.setServer("127.0.0.1", 8125), std::logic_error);
}

TEST_F(StatsdClientTest, DoesNotWaitForAReceiverThatNeverReads) {
  constexpr int SENDS = 20000;
  const std::string value(1000, 'v');
  for (int i = 0; i < SENDS; ++i) client_.string("n", "k", value);
  // What found room is there, whole; the rest is lost.
  int arrived = 0;
  char datagram[2048];
  for (ssize_t length; (length = ::recv(receiver_.socket(), datagram, sizeof datagram, MSG_DONTWAIT)) >= 0; ++arrived) {
    ASSERT_EQ(length, 4 + 1000 + 2);
  }
  EXPECT_GT(arrived, 0);
  EXPECT_LT(arrived, SENDS) << "the receiver's buffer was not full";
  EXPECT_THAT(sent(), IsEmpty());
}

/// This process's socket that is connected to `port`.
std::optional<int> socketTo(std::uint16_t port) {
  rlimit files{};
  ::getrlimit(RLIMIT_NOFILE, &files);
  for (int file = 0; file < 4096 && static_cast<rlim_t>(file) < files.rlim_cur; ++file) {
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    if (::getpeername(file, reinterpret_cast<sockaddr*>(&peer), &size) == 0 && peer.sin_family == AF_INET &&
        ntohs(peer.sin_port) == port) {
      return file;
    }
  }
  return std::nullopt;
}

// The loopback takes whatever is sent, so that only the socket itself tells what a full buffer of its own would do.
TEST_F(StatsdClientTest, HasASocketThatDoesNotBlock) {
  const std::optional<int> socket = socketTo(receiver_.port());
  ASSERT_TRUE(socket);
  EXPECT_NE(::fcntl(*socket, F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(StatsdClientTest, ClosesTheSocketOfTheServerBefore) {
  ASSERT_TRUE(socketTo(receiver_.port()));
  const UdpReceiver other;
  client_.setServer(other.address(), other.port());
  EXPECT_FALSE(socketTo(receiver_.port()));
  context_.reset();
  EXPECT_FALSE(socketTo(other.port()));
}

TEST_F(StatsdClientTest, TakesSendsOfManyThreadsWhileItsServerAndContextChange) {
  constexpr int SENDERS = 4;
  constexpr int ROUNDS = 50;
  std::atomic<bool> isOver{false};
  std::atomic<int> started{0};
  std::vector<std::thread> senders;
  for (int i = 0; i < SENDERS; ++i) {
    senders.emplace_back([&, number = std::to_string(i)] {
      ++started;
      while (!isOver) {
        client_.string("n", number, "-1");
        client_.jsonObject("n", number, R"({"a":"x"})");
      }
    });
  }
  while (started < SENDERS) std::this_thread::yield();
  for (int i = 0; i < ROUNDS; ++i) {
    client_.setServer(receiver_.address(), receiver_.port());
    client_.setServer(receiver_.address(), receiver_.port());
    EXPECT_THROW(client_.setServer("nowhere", 1), boost::system::system_error);
    if (i % 2 == 0) context_.reset();
    context_ = std::make_unique<io_context>();
    client_.setAsioContext(context_.get(), false);
  }
  isOver = true;
  for (std::thread& sender : senders) sender.join();

  char datagram[2048];
  for (ssize_t length; (length = ::recv(receiver_.socket(), datagram, sizeof datagram, MSG_DONTWAIT)) >= 0;) {
    EXPECT_THAT(std::string(datagram, static_cast<std::size_t>(length)),
                testing::MatchesRegex("n\\.[0-3](:0.g\nn\\.[0-3]:-1.g|\\.a:x.s)"));
  }
  ASSERT_TRUE(client_.setServer(receiver_.address(), receiver_.port()));
  EXPECT_THAT(sent(), IsEmpty());
}

}  // namespace
}  // namespace qx

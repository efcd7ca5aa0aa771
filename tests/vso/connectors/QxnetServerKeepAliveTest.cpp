#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <cerrno>
#include <set>
#include <string>
#include <vector>

#include "qxnet/TCPConnection.h"
#include "support/LogCapture.h"
#include "vso/connectors/QxnetServer.h"

namespace {

struct Option {
  int level;
  int name;
  int value;
};

bool operator==(const Option& a, const Option& b) {
  return a.level == b.level && a.name == b.name && a.value == b.value;
}

constexpr int NO_SOCKET = -1;

int watchedSocket = NO_SOCKET;
std::set<int> refusedNames;
std::vector<Option> asked;

}  // namespace

// In front of the system's own: notes what is asked for on the watched socket, and refuses some of it.
extern "C" int setsockopt(int descriptor, int level, int name, const void* value, socklen_t size) noexcept {
  static auto* const next = reinterpret_cast<decltype(setsockopt)*>(::dlsym(RTLD_NEXT, "setsockopt"));
  if (descriptor == watchedSocket) {
    asked.push_back({level, name, *static_cast<const int*>(value)});
    if (refusedNames.count(name) != 0) {
      errno = ENOPROTOOPT;
      return -1;
    }
  }
  return next(descriptor, level, name, value, size);
}

namespace qx {
namespace {

using net::stream::TCPConnection;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

struct Row {
  const char* name;
  int option;
  const char* text;
};

/// Applies the common options to an open socket, of which the system refuses some, and gives the log lines.
std::vector<test::LogLine> linesWith(const std::set<int>& refused) {
  boost::asio::io_context context;
  const auto connection = boost::make_shared<TCPConnection>(context);
  connection->socket().open(boost::asio::ip::tcp::v4());
  watchedSocket = connection->socket().native_handle();
  refusedNames = refused;
  asked.clear();
  LogCapture capture;
  QxnetServer::commonSocketOptions(connection);
  watchedSocket = NO_SOCKET;
  return capture.lines();
}

class QxnetServerKeepAlive : public testing::TestWithParam<Row> {};

TEST_P(QxnetServerKeepAlive, RefusedOptionIsAWarningAndTheOthersAreStillSet) {
  const std::vector<test::LogLine> lines = linesWith({GetParam().option});
  EXPECT_THAT(asked, ElementsAre(Option{SOL_SOCKET, SO_KEEPALIVE, 1}, Option{IPPROTO_TCP, TCP_KEEPCNT, 10},
                                 Option{IPPROTO_TCP, TCP_KEEPIDLE, 30}, Option{IPPROTO_TCP, TCP_KEEPINTVL, 5}));
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ('(' + std::to_string(::syscall(SYS_gettid)) + ") QxnetServer::commonSocketOptions: " + GetParam().text +
                ", Protocol not available",
            lines[0].text);
  EXPECT_EQ(log4cplus::WARN_LOG_LEVEL, lines[0].level);
}

INSTANTIATE_TEST_SUITE_P(Options, QxnetServerKeepAlive,
                         testing::Values(Row{"KeepAlive", SO_KEEPALIVE, "failed to set keep alive option"},
                                         Row{"Count", TCP_KEEPCNT, "failed to set keep alive count option"},
                                         Row{"Idle", TCP_KEEPIDLE, "failed to set keep alive idle option"},
                                         Row{"Interval", TCP_KEEPINTVL, "failed to set keep alive interval option"}),
                         [](const auto& row) { return row.param.name; });

TEST(QxnetServer, SetsTheKeepAliveOptionsInOrder) {
  EXPECT_THAT(linesWith({}), IsEmpty());
  EXPECT_THAT(asked, ElementsAre(Option{SOL_SOCKET, SO_KEEPALIVE, 1}, Option{IPPROTO_TCP, TCP_KEEPCNT, 10},
                                 Option{IPPROTO_TCP, TCP_KEEPIDLE, 30}, Option{IPPROTO_TCP, TCP_KEEPINTVL, 5}));
}

}  // namespace
}  // namespace qx

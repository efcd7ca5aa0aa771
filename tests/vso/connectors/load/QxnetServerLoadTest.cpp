// Many clients in another process, whose lines must all come, once, whole and in order; and nothing be left of them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <boost/asio/io_context.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Crowd.h"
#include "lines.h"
#include "support/Loopback.h"
#include "support/sanitized.h"
#include "vso/connectors/QxnetClient.h"
#include "vso/connectors/QxnetServer.h"

namespace {

using qx::net::stream::TCPConnection;
using qx::test::ContextThreads;
using qx::test::Crowd;
using qx::test::IS_SANITIZED;
using qx::test::openDescriptors;
using qx::test::waitUntil;

constexpr unsigned int CONNECTIONS = IS_SANITIZED ? 64 : 256;
constexpr unsigned int LINES_OF_EACH = IS_SANITIZED ? 200 : 782;  // 200,192 in all
constexpr int THREADS = 2;

/// Compares every line with the one that is due on its connection.
class Auditor : public qx::QxnetClient {
 public:
  void handleData(qx::QxnetTcpConnectionPtr connection, const std::string& data) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    Account& account = accounts_[connection.get()];
    if (account.lines == 0) account.number = static_cast<unsigned int>(std::stoul(data));
    if (data != qx::test::crowdLine(account.number, account.lines) && errors_.size() < 10) {
      errors_.push_back("line " + std::to_string(account.lines) + " of " + std::to_string(account.number) + ": " +
                        data);
    }
    ++account.lines;
    ++lines_;
  }
  void handleState(qx::QxnetTcpConnectionPtr connection, qx::QxnetConnectionState state,
                   qx::QxnetConnectionState /*previous*/, qx::QxnetConnectionOperation /*operation*/,
                   const qx::BErrorCode& /*error*/) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state == qx::net::stream::CONNECTION_OPEN) {
      ++opened_;
      seen_.emplace_back(connection);
      connection->asyncReadUntil("\r\n");
    } else if (state == qx::net::stream::CONNECTION_CLOSED) {
      ++closed_;
      linesOf_.push_back(accounts_[connection.get()].lines);
      accounts_.erase(connection.get());
    }
  }

  bool hasClosed(std::size_t count) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return closed_ == count && opened_ == count;
  }
  /// True when nobody holds any of the connections any more.
  bool areAllGone() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& connection : seen_) {
      if (!connection.expired()) return false;
    }
    return true;
  }
  void forget() {
    const std::lock_guard<std::mutex> lock(mutex_);
    opened_ = closed_ = lines_ = 0;
    std::vector<boost::weak_ptr<TCPConnection>>().swap(seen_);
    std::vector<unsigned int>().swap(linesOf_);
  }

  std::size_t lines() const { return lines_; }
  const std::vector<unsigned int>& linesOf() const { return linesOf_; }
  const std::vector<std::string>& errors() const { return errors_; }

 private:
  struct Account {
    unsigned int number = 0;
    unsigned int lines = 0;
  };

  mutable std::mutex mutex_;
  std::map<const TCPConnection*, Account> accounts_;
  std::vector<boost::weak_ptr<TCPConnection>> seen_;
  std::vector<unsigned int> linesOf_;
  std::size_t opened_ = 0;
  std::size_t closed_ = 0;
  std::size_t lines_ = 0;
  std::vector<std::string> errors_;
};

class QxnetServerLoad : public testing::Test {
 protected:
  QxnetServerLoad()
      : server_(boost::make_shared<qx::QxnetServer>(context_, boost::asio::ip::address_v4::loopback(), 0, auditor_)) {
    EXPECT_FALSE(server_->start());
  }
  ~QxnetServerLoad() override { server_->stop(); }

  /// Lets a crowd come and go. False if it did not, or something is left of its connections.
  void meet(const std::string& how, unsigned int connections, unsigned int lines, unsigned int seed) {
    Crowd crowd({how, std::to_string(server_->endpoint().port()), std::to_string(connections), std::to_string(lines),
                 std::to_string(seed)});
    EXPECT_EQ(0, crowd.wait());
    EXPECT_TRUE(waitUntil([&] { return auditor_.hasClosed(connections); }));
    EXPECT_TRUE(waitUntil([&] { return auditor_.areAllGone(); }));
  }

  boost::asio::io_context context_;
  Auditor auditor_;
  boost::shared_ptr<qx::QxnetServer> server_;
};

TEST_F(QxnetServerLoad, EveryLineArrivesOnceWholeAndInItsOrder) {
  const ContextThreads threads(context_, THREADS);
  meet("send", CONNECTIONS, LINES_OF_EACH, 1);
  EXPECT_EQ(std::vector<std::string>(), auditor_.errors());
  EXPECT_EQ(std::size_t{CONNECTIONS} * LINES_OF_EACH, auditor_.lines());
  EXPECT_EQ(std::vector<unsigned int>(CONNECTIONS, LINES_OF_EACH), auditor_.linesOf());
}

TEST_F(QxnetServerLoad, OfAClientThatVanishesTheLinesBeforeArrive) {
  const ContextThreads threads(context_, THREADS);
  meet("vanish", CONNECTIONS, LINES_OF_EACH, 2);
  EXPECT_EQ(std::vector<std::string>(), auditor_.errors());
  EXPECT_GT(auditor_.lines(), 0U);
  EXPECT_LT(auditor_.lines(), std::size_t{CONNECTIONS} * LINES_OF_EACH);
}

TEST_F(QxnetServerLoad, NothingIsLeftOfClientsThatVanished) {
  const ContextThreads threads(context_, THREADS);
  // The first crowd makes what stays: tables and pools of the size that such a crowd needs.
  meet("vanish", CONNECTIONS, LINES_OF_EACH / 10, 3);
  auditor_.forget();
  const std::size_t descriptors = openDescriptors();
  const std::size_t memory = ::mallinfo2().uordblks;
  constexpr unsigned int CROWDS = 4;
  for (unsigned int i = 0; i < CROWDS; ++i) {
    meet("vanish", CONNECTIONS, LINES_OF_EACH / 10, 4 + i);
    auditor_.forget();
  }
  EXPECT_EQ(std::vector<std::string>(), auditor_.errors());
  EXPECT_TRUE(waitUntil([&] { return openDescriptors() == descriptors; }));
  // Of each connection of each crowd 4 KiB would have stayed at the least; pools may yet grow to the most connections
  // at a time. (Sanitizers have their own heap, and their own leak check.)
  constexpr std::size_t SLACK = std::size_t{CONNECTIONS} * 1024;
  EXPECT_LE(::mallinfo2().uordblks, memory + SLACK);
}

}  // namespace

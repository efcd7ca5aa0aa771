// A server that notes what it is told, with hooks for tests.

#pragma once

#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/system/error_code.hpp>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "qxnet/TCPServer.h"
#include "support/ConnectionEvents.h"
#include "support/Loopback.h"

namespace qx::test {

using ConnectionPtr = boost::shared_ptr<net::stream::TCPConnection>;

/// A connection that calls a hook before and a hook after the server starts it, which is inside the server's accept.
class HookedConnection : public net::stream::TCPConnection {
 public:
  HookedConnection(boost::asio::io_context& ioContext, std::function<void()> before, std::function<void()> after)
      : TCPConnection(ioContext), before_(std::move(before)), after_(std::move(after)) {}

  void start() override {
    before_();
    TCPConnection::start();
    after_();
  }

 private:
  std::function<void()> before_;
  std::function<void()> after_;
};

/// Reads lines that end with "\n" from every connection. The context may be run by several threads: `events` may be
/// read meanwhile, the rest of the record when they have ended, and hooks stay what they are.
class RecordingServer : public net::stream::TCPServer {
 public:
  explicit RecordingServer(boost::asio::io_context& context,
                           const boost::asio::ip::address& address = boost::asio::ip::address_v4::loopback(),
                           unsigned int port = 0)
      : TCPServer(context, address, port), context_(context) {}

  using TCPServer::acceptor_;

  unsigned int connectionHash(ConnectionPtr connection) const override {
    onHash(connection);
    return fixedHash ? *fixedHash : TCPServer::connectionHash(std::move(connection));
  }

  // What has happened.
  Events events;
  std::vector<ConnectionPtr> created;
  std::vector<ConnectionPtr> opened;
  std::vector<boost::system::error_code> accepts;

  // What is to happen. A hook may replace itself: its copy runs.
  std::function<void(const std::string&)> onData = [](auto&&...) {};
  std::function<void(const ConnectionPtr&, net::stream::ConnectionState)> onState = [](auto&&...) {};
  std::function<void()> onStarting = [] {};
  std::function<void()> onStarted = [] {};
  std::function<void()> onCreate = [] {};
  // An accept has ended, and the server has not handled it yet.
  std::function<void()> onAccept = [] {};
  // The hash of a connection is wanted, by the server for its table.
  std::function<void(const ConnectionPtr&)> onHash = [](auto&&...) {};
  std::optional<unsigned int> fixedHash;
  std::optional<boost::system::error_code> nextAccept;

 protected:
  ConnectionPtr createConnection() override {
    const ConnectionPtr connection(new HookedConnection(
        context_, [this] { runCopyOf(onStarting); }, [this] { runCopyOf(onStarted); }));
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      created.push_back(connection);
    }
    connection->handleDataFunc([this](auto&&...) { events.add("data callback of createConnection"); });
    connection->handleStateFunc([this](auto&&...) { events.add("state callback of createConnection"); });
    runCopyOf(onCreate);
    return connection;
  }
  void handleData(ConnectionPtr connection, const std::string& data) override {
    connection->asyncReadUntil("\n");
    events.add(data);
    runCopyOf(onData, data);
  }
  void handleState(ConnectionPtr connection, net::stream::ConnectionState state, net::stream::ConnectionState previous,
                   net::stream::ConnectionOperation operation, const boost::system::error_code& error) override {
    if (state == net::stream::CONNECTION_OPEN) {
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        opened.push_back(connection);
      }
      connection->asyncReadUntil("\n");
    }
    events.add(changeOf(state, previous, operation, error));
    runCopyOf(onState, connection, state);
  }
  /// `nextAccept`, once, in place of how it went.
  void handleAccept(const boost::system::error_code& error) override {
    boost::system::error_code outcome = error;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      outcome = nextAccept.value_or(error);
      nextAccept.reset();
      accepts.push_back(outcome);
    }
    runCopyOf(onAccept);
    TCPServer::handleAccept(outcome);
  }

 private:
  template <typename Hook, typename... Arguments>
  static void runCopyOf(Hook hook, const Arguments&... arguments) {
    hook(arguments...);
  }

  boost::asio::io_context& context_;
  std::mutex mutex_;
};

}  // namespace qx::test

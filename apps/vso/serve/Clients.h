// Those who speak with the server.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>

#include "apps/vso/serve/LineCommands.h"
#include "vso/connectors/QxnetClient.h"
#include "vso/connectors/QxnetServer.h"

namespace qx::app {

/// Hands the lines of all clients to the commands, and the answers back, each in its turn. A client that reads slower
/// than it asks is waited for: while 1 MiB of its answers wait, no more of its lines are read or answered. So what
/// waits for a client is less than that and one answer.
///
/// For the thread that runs the context.
class Clients : public QxnetClient {
 public:
  /// What becomes of an accept that failed, after which its server accepts no more.
  using Failed = std::function<void(const BErrorCode& error)>;

  Clients(boost::asio::io_context& context, LineCommands& commands);

  /// A server of these clients, still to be started. There is one at a time: of the clients of a former one nothing
  /// more is heard.
  boost::shared_ptr<QxnetServer> serverAt(const boost::asio::ip::tcp::endpoint& place, Failed hasFailed);

  void handleData(QxnetTcpConnectionPtr connection, const std::string& data) override;
  void handleState(QxnetTcpConnectionPtr connection, QxnetConnectionState state, QxnetConnectionState previousState,
                   QxnetConnectionOperation operation, const BErrorCode& error) override;

  /// As many as there may be; the next one is sent away.
  std::size_t most() const { return most_; }

 private:
  class Listener;
  bool answer(net::stream::TCPConnection& connection, const std::string& line);
  void sendLater();
  bool sendHeld();

  boost::asio::io_context& context_;
  LineCommands& commands_;
  const std::size_t most_;
  std::size_t count_ = 0;
  /// Lines for whose answers there is no room yet.
  std::map<QxnetTcpConnectionPtr, std::string> held_;
  boost::asio::steady_timer nextSending_;
  /// Until the next look at them.
  std::chrono::milliseconds pause_;
};

}  // namespace qx::app

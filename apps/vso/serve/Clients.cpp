#include "apps/vso/serve/Clients.h"

#include <sys/resource.h>

#include <algorithm>
#include <boost/asio/error.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <chrono>
#include <utility>

#include "qxnet/TCPConnection.h"

namespace qx::app {

namespace {

constexpr const char* DELIMITER = "\r\n";

/// A server that has no descriptor left for a connection accepts no more, so it should not come to that.
std::size_t mostClients() {
  constexpr rlim_t MOST = 200;
  rlimit descriptors{};
  if (::getrlimit(RLIMIT_NOFILE, &descriptors) != 0) return MOST;
  return std::min(MOST, descriptors.rlim_cur / 2);
}

}  // namespace

/// Leaves it to the clients to ask for the next line: the library's server asks before one is answered.
class Clients::Listener : public QxnetServer {
 public:
  Listener(Clients& clients, const boost::asio::ip::tcp::endpoint& place, Failed hasFailed)
      : QxnetServer(clients.context_, place.address(), place.port(), clients),
        clients_(clients),
        hasFailed_(std::move(hasFailed)) {}

 protected:
  void handleData(QxnetTcpConnectionPtr connection, const std::string& data) override {
    clients_.handleData(std::move(connection), data);
  }
  void handleAccept(const BErrorCode& error) override {
    QxnetServer::handleAccept(error);
    if (error && error != boost::asio::error::operation_aborted) hasFailed_(error);
  }

 private:
  Clients& clients_;
  Failed hasFailed_;
};

Clients::Clients(boost::asio::io_context& context, LineCommands& commands)
    : context_(context), commands_(commands), most_(mostClients()), nextSending_(context) {}

boost::shared_ptr<QxnetServer> Clients::serverAt(const boost::asio::ip::tcp::endpoint& place, Failed hasFailed) {
  count_ = 0;
  held_.clear();
  return boost::make_shared<Listener>(*this, place, std::move(hasFailed));
}

void Clients::handleData(QxnetTcpConnectionPtr connection, const std::string& data) {
  std::string answer = data == DELIMITER ? std::string() : commands_.answer(data);
  if (connection->asyncWrite(answer) != boost::asio::error::no_buffer_space) {
    connection->asyncReadUntil(DELIMITER);
    return;
  }
  held_.emplace(std::move(connection), std::move(answer));
  if (held_.size() == 1) sendLater();
}

void Clients::handleState(QxnetTcpConnectionPtr connection, QxnetConnectionState state,
                          QxnetConnectionState previousState, QxnetConnectionOperation /*operation*/,
                          const BErrorCode& /*error*/) {
  if (state == net::stream::CONNECTION_CLOSED) {
    held_.erase(connection);
    if (previousState != net::stream::CONNECTION_OPENING) --count_;
  }
  if (state != net::stream::CONNECTION_OPEN) return;
  if (++count_ > most_) {
    connection->close();
    return;
  }
  QxnetServer::commonSocketOptions(connection);
  connection->asyncReadUntil(DELIMITER);
}

/// A connection does not tell when it has sent something.
void Clients::sendLater() {
  nextSending_.expires_after(std::chrono::milliseconds(5));
  nextSending_.async_wait([this](const BErrorCode& error) {
    if (error) return;
    sendHeld();
    if (!held_.empty()) sendLater();
  });
}

void Clients::sendHeld() {
  for (auto held = held_.begin(); held != held_.end();) {
    const auto& [connection, answer] = *held;
    if (connection->asyncWrite(answer) == boost::asio::error::no_buffer_space) {
      ++held;
      continue;
    }
    connection->asyncReadUntil(DELIMITER);
    held = held_.erase(held);
  }
}

}  // namespace qx::app

#include "apps/vso/serve/Clients.h"

#include <sys/resource.h>

#include <algorithm>
#include <boost/asio/error.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <iterator>
#include <utility>

#include "qxnet/TCPConnection.h"

namespace qx::app {

namespace {

constexpr const char* DELIMITER = "\r\n";

constexpr std::chrono::milliseconds SHORTEST_PAUSE(5);
constexpr std::chrono::milliseconds LONGEST_PAUSE(160);

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
    : context_(context), commands_(commands), most_(mostClients()), nextSending_(context), pause_(SHORTEST_PAUSE) {}

boost::shared_ptr<QxnetServer> Clients::serverAt(const boost::asio::ip::tcp::endpoint& place, Failed hasFailed) {
  count_ = 0;
  held_.clear();
  return boost::make_shared<Listener>(*this, place, std::move(hasFailed));
}

void Clients::handleData(QxnetTcpConnectionPtr connection, const std::string& data) {
  if (answer(*connection, data)) return;
  held_.emplace(std::move(connection), data);
  pause_ = SHORTEST_PAUSE;
  sendLater();
}

/// False, and nothing is done, if there is no room for an answer.
bool Clients::answer(net::stream::TCPConnection& connection, const std::string& line) {
  // Where there is room for nothing there is room for an answer of any size.
  if (connection.asyncWrite({}) == boost::asio::error::no_buffer_space) return false;
  if (line != DELIMITER) connection.asyncWrite(commands_.answer(line));
  connection.asyncReadUntil(DELIMITER);
  return true;
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

/// A connection does not tell when it has sent something. Who has not read for long is looked at more seldom.
void Clients::sendLater() {
  nextSending_.expires_after(pause_);
  nextSending_.async_wait([this](const BErrorCode& error) {
    if (error) return;
    pause_ = sendHeld() ? SHORTEST_PAUSE : std::min(2 * pause_, LONGEST_PAUSE);
    if (!held_.empty()) sendLater();
  });
}

/// True if there was room for any.
bool Clients::sendHeld() {
  const std::size_t before = held_.size();
  for (auto held = held_.begin(); held != held_.end();) {
    held = answer(*held->first, held->second) ? held_.erase(held) : std::next(held);
  }
  return held_.size() < before;
}

}  // namespace qx::app

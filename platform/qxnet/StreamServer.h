// A server: accepts connections and keeps a table of them.
#pragma once

#include <log4cplus/loglevel.h>

#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/bimap.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/system/error_code.hpp>
#include <cstdint>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "qxnet/ConnectionOperation.h"
#include "qxnet/ConnectionState.h"
#include "qxnet/streamLog.h"

namespace qx::net::stream {

/// Accepts connections on the context it was given and hands what they say to its derived class. A server is held in a
/// boost::shared_ptr before it is started; an accept under way keeps it alive, a connection does not.
///
/// Accepting ends with the first accept that fails, whatever the reason, until `stop` and `start`: a process out of
/// descriptors does not spin, and its owner decides.
///
/// `stop` it before it is let go: connections that it leaves behind stay open, and nobody hears of them.
///
/// `start`, `stop`, `connectionHash`, `findConnection` and `endpoint` may be called from any thread and from within
/// callbacks. The order of the virtual operations is part of the interface.
template <typename AcceptorPolicy, typename Connection>
class StreamServer : public AcceptorPolicy,
                     public boost::enable_shared_from_this<StreamServer<AcceptorPolicy, Connection>> {
 public:
  using ConnectionPtr = boost::shared_ptr<Connection>;
  using ErrorCode = boost::system::error_code;

  using AcceptorPolicy::AcceptorPolicy;

  /// Opens the acceptor and begins to accept. The acceptor's error, which is logged; then nothing else has happened,
  /// and `stop` comes before another attempt. A server that is not held in a boost::shared_ptr accepts nothing: a fatal
  /// log line says so, and the result is success.
  virtual ErrorCode start();
  /// Closes the acceptor and every connection. The connections have left the table before they are closed; their last
  /// state is told on the context.
  virtual void stop();
  /// For derived classes that care whether the process has forked. Does nothing.
  virtual void forked(bool /*isChild*/) {}

 protected:
  /// Makes a connection for the next accept. Its callbacks are replaced by the server's. What it throws leaves `start`,
  /// or the context's `run`; the server listens then without accepting, until `stop` and `start`.
  virtual ConnectionPtr createConnection() = 0;
  /// A connection has read what it was asked to read.
  virtual void handleData(ConnectionPtr connection, const std::string& data) = 0;
  /// A connection has changed its state. When that is the closed state, it leaves the table afterwards.
  virtual void handleState(ConnectionPtr connection, ConnectionState state, ConnectionState previousState,
                           ConnectionOperation operation, const ErrorCode& error) = 0;

  /// A callback for connections that calls `method` of this server, and nothing once the server is gone. It does not
  /// keep the server: what is left of a connection must not hold one that was let go.
  template <typename Server, typename... Arguments>
  auto whileAlive(void (Server::*method)(ConnectionPtr, Arguments...)) {
    return [weak = this->weak_from_this(), method](ConnectionPtr connection, Arguments... arguments) {
      const auto server = weak.lock();
      if (server) (static_cast<Server&>(*server).*method)(std::move(connection), arguments...);
    };
  }

 private:
  using Lock = std::lock_guard<std::mutex>;

 public:
  ~StreamServer() override = default;

  /// The number that a connection has in the table: its address and an eighth of it, cut to 32 bits. Called while the
  /// table is locked: an override must not call this object.
  virtual unsigned int connectionHash(ConnectionPtr connection) const;
  /// The connection in the table with that hash; empty if there is none.
  virtual ConnectionPtr findConnection(unsigned int hash) const;

  /// Where the server listens, with the port that the system chose for port 0; while it does not listen, the endpoint
  /// that it was made with.
  auto endpoint() const {
    const Lock lock(acceptMutex_);
    return this->listeningEndpoint();
  }

 protected:
  /// The pending accept has ended. Enters the connection into the table (unless it or its hash is in it), starts it,
  /// and accepts the next one; after an error accepts no more, and logs it unless it says that there is nobody to
  /// accept.
  virtual void handleAccept(const ErrorCode& error);

 private:
  using Connections = boost::bimap<ConnectionPtr, std::uint32_t>;

  /// The mutex of the acceptor is held.
  bool isAcceptingIn(unsigned long long round) const { return isAccepting_ && round == round_; }
  void accept(unsigned long long round);
  void acceptEnded(const ConnectionPtr& connection, unsigned long long round, const ErrorCode& error);
  void handleConnectionData(ConnectionPtr connection, const std::string& data);
  void handleConnectionState(ConnectionPtr connection, ConnectionState state, ConnectionState previousState,
                             ConnectionOperation operation, const ErrorCode& error);

  // Guards the acceptor and the fields behind it. Taken before connectionsMutex_.
  mutable std::mutex acceptMutex_;
  bool isAccepting_ = false;
  // Counts the starts. What was begun in an earlier round is nobody's when it ends.
  unsigned long long round_ = 0;
  ConnectionPtr pendingConnection_;
  // The pending one from its accept until it is in the table.
  ConnectionPtr acceptedConnection_;

  mutable std::mutex connectionsMutex_;
  Connections connections_;
};

template <typename AcceptorPolicy, typename Connection>
auto StreamServer<AcceptorPolicy, Connection>::start() -> ErrorCode {
  unsigned long long round = 0;
  {
    const Lock lock(acceptMutex_);
    if (const ErrorCode error = this->openAcceptor()) return error;
    isAccepting_ = true;
    round = ++round_;
  }
  try {
    accept(round);
  } catch (const boost::bad_weak_ptr&) {
    detail::log(log4cplus::FATAL_LOG_LEVEL,
                "StreamServer::start got bad_weak_ptr exception, did you forget to wrap your server in a boost "
                "shared_ptr?",
                __FILE__, __LINE__, __PRETTY_FUNCTION__);
  }
  return {};
}

template <typename AcceptorPolicy, typename Connection>
void StreamServer<AcceptorPolicy, Connection>::stop() {
  {
    const Lock lock(acceptMutex_);
    isAccepting_ = false;
    this->closeAcceptor(false);
    pendingConnection_.reset();
    acceptedConnection_.reset();
  }
  std::vector<ConnectionPtr> connections;
  {
    const Lock lock(connectionsMutex_);
    connections.reserve(connections_.size());
    for (const auto& entry : connections_.left) connections.push_back(entry.first);
    connections_.clear();
  }
  for (const ConnectionPtr& connection : connections) connection->close();
}

/// Makes a connection and accepts into it, unless the round is over by then. Throws boost::bad_weak_ptr if no
/// boost::shared_ptr holds the server.
template <typename AcceptorPolicy, typename Connection>
void StreamServer<AcceptorPolicy, Connection>::accept(unsigned long long round) {
  const ConnectionPtr connection = createConnection();
  connection->handleDataFunc(whileAlive(&StreamServer::handleConnectionData));
  connection->handleStateFunc(whileAlive(&StreamServer::handleConnectionState));

  const Lock lock(acceptMutex_);
  if (!isAcceptingIn(round)) return;
  pendingConnection_ = connection;
  this->acceptor_.async_accept(connection->socket(),
                               [self = this->shared_from_this(), connection, round](const ErrorCode& error) {
                                 self->acceptEnded(connection, round, error);
                               });
}

/// The accept into `connection` has ended, of whatever round.
template <typename AcceptorPolicy, typename Connection>
void StreamServer<AcceptorPolicy, Connection>::acceptEnded(const ConnectionPtr& connection, unsigned long long round,
                                                           const ErrorCode& error) {
  {
    const Lock lock(acceptMutex_);
    if (round != round_ || (!error && !isAccepting_)) {
      ErrorCode ignored;
      connection->socket().close(ignored);
      return;
    }
    if (!error) acceptedConnection_.swap(pendingConnection_);
  }
  handleAccept(error);
}

template <typename AcceptorPolicy, typename Connection>
void StreamServer<AcceptorPolicy, Connection>::handleAccept(const ErrorCode& error) {
  if (error) {
    if (error == boost::asio::error::operation_aborted || error == boost::asio::error::connection_aborted ||
        error == boost::asio::error::eof) {
      return;
    }
    std::ostringstream text;
    text << "handleAccept(): Error accepting connection for \"" << this->endpoint_ << "\": " << error.message();
    detail::log(log4cplus::ERROR_LOG_LEVEL, text.str(), __FILE__, __LINE__, __PRETTY_FUNCTION__);
    return;
  }
  ConnectionPtr connection;
  unsigned long long round = 0;
  {
    const Lock lock(acceptMutex_);
    connection.swap(acceptedConnection_);
    if (!connection) return;  // stopped since
    round = round_;
    const Lock connectionsLock(connectionsMutex_);
    connections_.insert(typename Connections::value_type(connection, connectionHash(connection)));
  }
  connection->start();
  {
    const Lock lock(acceptMutex_);
    if (!isAcceptingIn(round)) return;
  }
  accept(round);
}

template <typename AcceptorPolicy, typename Connection>
void StreamServer<AcceptorPolicy, Connection>::handleConnectionData(ConnectionPtr connection, const std::string& data) {
  handleData(std::move(connection), data);
}

template <typename AcceptorPolicy, typename Connection>
void StreamServer<AcceptorPolicy, Connection>::handleConnectionState(ConnectionPtr connection, ConnectionState state,
                                                                     ConnectionState previousState,
                                                                     ConnectionOperation operation,
                                                                     const ErrorCode& error) {
  const auto leaveTable = [&] {
    if (state != CONNECTION_CLOSED) return;
    const Lock lock(connectionsMutex_);
    connections_.left.erase(connection);
  };
  try {
    handleState(connection, state, previousState, operation, error);
  } catch (...) {
    leaveTable();
    throw;
  }
  leaveTable();
}

template <typename AcceptorPolicy, typename Connection>
unsigned int StreamServer<AcceptorPolicy, Connection>::connectionHash(ConnectionPtr connection) const {
  const auto address = reinterpret_cast<std::uintptr_t>(connection.get());
  return static_cast<unsigned int>(address + (address >> 3));
}

template <typename AcceptorPolicy, typename Connection>
auto StreamServer<AcceptorPolicy, Connection>::findConnection(unsigned int hash) const -> ConnectionPtr {
  const Lock lock(connectionsMutex_);
  const auto found = connections_.right.find(hash);
  return found == connections_.right.end() ? ConnectionPtr() : found->second;
}

}  // namespace qx::net::stream

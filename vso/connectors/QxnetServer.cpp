#include "vso/connectors/QxnetServer.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <ostream>
#include <utility>

#include "qxnet/TCPConnection.h"
#include "qxshared/cleanString.h"
#include "vso/connectors/QxnetClient.h"
#include "vso/logging/Log.h"

namespace qx {

namespace {

using net::stream::TCPConnection;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

constexpr const char DELIMITER[] = "\r\n";
constexpr std::size_t DELIMITER_SIZE = sizeof DELIMITER - 1;

/// Writes the number by which the kernel knows the calling thread, as every line of this server begins.
struct ThreadId {
  friend std::ostream& operator<<(std::ostream& out, ThreadId /*self*/) {
    return out << '(' << ::syscall(SYS_gettid) << ") ";
  }
};

void warnOf(const char* option, const BErrorCode& error) {
  if (!error) return;
  VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
          ThreadId() << "QxnetServer::commonSocketOptions: failed to set " << option << " option, " << error.message());
}

}  // namespace

QxnetServer::QxnetServer(boost::asio::io_context& ioContext, const boost::asio::ip::address& address, unsigned int port,
                         QxnetClient& client)
    : TCPServer(ioContext, address, port), ioContext_(ioContext), client_(client) {}

QxnetServer::~QxnetServer() {
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL, ThreadId() << "QxnetServer::~QxnetServer: destroying " << this);
}

void QxnetServer::commonSocketOptions(QxnetTcpConnectionPtr connection) {
  if (!connection) return;
  constexpr int PROBES = 10;
  constexpr int IDLE_SECONDS = 30;
  constexpr int INTERVAL_SECONDS = 5;
  warnOf("keep alive", connection->setKeepAlive(true));
  warnOf("keep alive count", connection->setKeepAliveCount(PROBES));
  warnOf("keep alive idle", connection->setKeepAliveIdle(IDLE_SECONDS));
  warnOf("keep alive interval", connection->setKeepAliveInterval(INTERVAL_SECONDS));
}

QxnetTcpConnectionPtr QxnetServer::createConnection() {
  QxnetTcpConnectionPtr connection(new TCPConnection(ioContext_));
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
          ThreadId() << "QxnetServer::createConnection: connection = " << connection << ", created and set call backs");
  connection->handleDataFunc(whileAlive(&QxnetServer::handleData));
  connection->handleStateFunc(whileAlive(&QxnetServer::handleState));
  return connection;
}

void QxnetServer::handleData(QxnetTcpConnectionPtr connection, const std::string& data) {
  VSO_LOG(logger, log4cplus::TRACE_LOG_LEVEL,
          ThreadId() << "QxnetServer::handleData: IN: " << connection << " size = " << data.size()
                     << ", data = " << cleanString(data));
  VSO_LOG(logger, log4cplus::TRACE_LOG_LEVEL, ThreadId() << "QxnetServer::handleData: Enqueue next asyncReadUntil");
  if (connection) connection->asyncReadUntil(DELIMITER);
  if (!connection) {
    VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
            ThreadId() << "QxnetServer::handleData: Connection pointer is null, ignoring data");
    return;
  }
  if (data.size() <= DELIMITER_SIZE) {
    VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
            ThreadId() << "QxnetServer::handleData: Data is short " << data.size() << ", ignoring data");
    return;
  }
  client_.handleData(std::move(connection), data);
}

void QxnetServer::handleState(QxnetTcpConnectionPtr connection, QxnetConnectionState state,
                              QxnetConnectionState previousState, QxnetConnectionOperation operation,
                              const BErrorCode& error) {
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
          ThreadId() << "QxnetServer::handleState: " << connection << ' ' << state << ", " << operation << ", "
                     << std::strerror(error.value()) << " (" << error.value() << ')');
  client_.handleState(std::move(connection), state, previousState, operation, error);
}

}  // namespace qx

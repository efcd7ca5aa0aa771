// A TCP server of lines.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <string>

#include "qxnet/TCPServer.h"
#include "vso/connectors/QxnetTypes.h"

namespace qx {

class QxnetClient;

/// Accepts any number of connections, reads each as lines that end with "\r\n", and hands every line of more than the
/// bare delimiter to one client, which hears of the connections' states too. Starts no thread: it works on the context
/// that it was given.
///
///   const auto server = boost::make_shared<QxnetServer>(context, boost::asio::ip::address_v4::loopback(), 80, client);
///   if (const BErrorCode error = server->start()) return error;
///   context.run();
class QxnetServer : public net::stream::TCPServer {
 public:
  /// Opens nothing. Context and client must outlive the server and its connections. With port 0 the system chooses one,
  /// see `endpoint`. Throws std::invalid_argument for a port above 65535.
  QxnetServer(boost::asio::io_context& ioContext, const boost::asio::ip::address& address, unsigned int port,
              QxnetClient& client);

  /// Has a connection's peer probed when it is silent: after 30 seconds, every 5 seconds, and given up after 10 probes.
  /// What the system refuses is logged as a warning, and the connection stays in use. The server does not call this: an
  /// owner who wants it does, when a connection opens.
  static void commonSocketOptions(QxnetTcpConnectionPtr connection);

 protected:
  QxnetTcpConnectionPtr createConnection() override;
  /// Asks for the next line, and then hands `data` to the client if it is more than a delimiter.
  void handleData(QxnetTcpConnectionPtr connection, const std::string& data) override;
  void handleState(QxnetTcpConnectionPtr connection, QxnetConnectionState state, QxnetConnectionState previousState,
                   QxnetConnectionOperation operation, const BErrorCode& error) override;

 public:
  ~QxnetServer() override;

 private:
  boost::asio::io_context& ioContext_;
  QxnetClient& client_;
};

}  // namespace qx

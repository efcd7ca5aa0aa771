// A server of TCP connections.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>

#include "qxnet/BasicAcceptorPolicy.h"
#include "qxnet/StreamServer.h"
#include "qxnet/TCPConnection.h"

namespace qx::net::stream {

using TCPAcceptorPolicy = BasicAcceptorPolicy<boost::asio::ip::tcp::acceptor, boost::asio::ip::tcp::endpoint>;

extern template class BasicAcceptorPolicy<boost::asio::ip::tcp::acceptor, boost::asio::ip::tcp::endpoint>;
extern template class StreamServer<TCPAcceptorPolicy, TCPConnection>;

class TCPServer : public StreamServer<TCPAcceptorPolicy, TCPConnection> {
 public:
  /// Opens nothing. With port 0 the system chooses one at `start`. The context must outlive the server. Throws
  /// std::invalid_argument for a port above 65535.
  TCPServer(boost::asio::io_context& ioContext, const boost::asio::ip::address& address, unsigned int port);
  ~TCPServer() override;
};

}  // namespace qx::net::stream

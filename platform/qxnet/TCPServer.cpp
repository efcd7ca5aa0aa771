#include "qxnet/TCPServer.h"

#include <limits>
#include <stdexcept>

namespace qx::net::stream {

namespace {

using boost::asio::ip::tcp;

tcp::endpoint endpointAt(const boost::asio::ip::address& address, unsigned int port) {
  if (port > std::numeric_limits<unsigned short>::max()) throw std::invalid_argument("TCPServer: no such port");
  return {address, static_cast<unsigned short>(port)};
}

}  // namespace

template class BasicAcceptorPolicy<tcp::acceptor, tcp::endpoint>;
template class StreamServer<TCPAcceptorPolicy, TCPConnection>;

TCPServer::TCPServer(boost::asio::io_context& ioContext, const boost::asio::ip::address& address, unsigned int port)
    : StreamServer(ioContext, endpointAt(address, port)) {}

TCPServer::~TCPServer() = default;

}  // namespace qx::net::stream

// A metrics gateway of the test's own: what the library sends, as it arrives.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <boost/asio/io_context.hpp>
#include <boost/make_shared.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "qxstatsdclient/StatsdClient.h"
#include "tests/support/UdpReceiver.h"
#include "vso/connectors/QxMetricsClient.h"

namespace qx::test {

/// While it lives and unless told otherwise, the process's metrics client is connected and sends to a UDP socket on a
/// free port of the loopback.
class MetricsGateway {
 public:
  MetricsGateway() { connect(); }
  ~MetricsGateway() { disconnect(); }
  MetricsGateway(const MetricsGateway&) = delete;
  MetricsGateway& operator=(const MetricsGateway&) = delete;

  bool isConnected() const { return isConnected_; }
  void connect() {
    QxMetricsClient::instance().initializeDataLakeConnection(context_);
    StatsdClient::getInstance()->setServer(receiver_.address(), receiver_.port());
    isConnected_ = true;
  }
  void disconnect() {
    QxMetricsClient::instance().stop();
    isConnected_ = false;
  }

  /// The datagrams that have come since the last call. One of the gateway's own, sent behind them, tells the end.
  std::vector<std::string> datagrams() const {
    const std::string end = "end of the datagrams";
    sockaddr_in own{};
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    own.sin_port = htons(receiver_.port());
    if (::sendto(receiver_.socket(), end.data(), end.size(), 0, reinterpret_cast<const sockaddr*>(&own), sizeof own) <
        0) {
      throw std::runtime_error("the gateway cannot send to itself");
    }
    return receiver_.upTo(end);
  }

 private:
  boost::shared_ptr<boost::asio::io_context> context_ = boost::make_shared<boost::asio::io_context>();
  UdpReceiver receiver_;
  bool isConnected_ = false;
};

}  // namespace qx::test

// Sends the metrics of one diagnostics report and of one JSON text to a server on the loopback.
#include <boost/asio/io_context.hpp>
#include <boost/make_shared.hpp>
#include <iostream>
#include <string>

#include "qxstatsdclient/StatsdClient.h"
#include "vso/connectors/QxMetricsClient.h"
#include "vso/identifiers/Euid.h"
#include "vso/zcl/QxZclHaDiagnostics.h"

int main(int argc, char** argv) {
  if (argc != 6) {
    std::cerr << "usage: statsd_sender PORT NAME EUID HEX JSON\n";
    return 2;
  }
  const unsigned long port = std::stoul(argv[1]);
  const std::string name = argv[2];
  qx::Euid node;
  node = argv[3];
  const std::string report = argv[4];
  const std::string json = argv[5];

  const auto context = boost::make_shared<boost::asio::io_context>();
  qx::QxMetricsClient& client = qx::QxMetricsClient::instance();
  client.initializeDataLakeConnection(context);
  qx::StatsdClient::getInstance()->setServer("127.0.0.1", static_cast<unsigned int>(port));

  const bool isBroken = qx::QxZclHaDiagnostics(report).sendMetrics(name, node);
  client.sendJson(name, "json", json);
  client.stop();
  return isBroken ? 1 : 0;
}

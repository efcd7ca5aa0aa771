#include "vso/connectors/QxMetricsClient.h"

#include <log4cplus/logger.h>

#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdio>
#include <exception>

#include "qxstatsdclient/StatsdClient.h"
#include "vso/logging/Log.h"

namespace qx {

namespace {

using boost::asio::ip::tcp;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

constexpr const char* GATEWAY_HOST = VSO_METRICS_GATEWAY_HOST;
constexpr const char* GATEWAY_SERVICE = "8125";
constexpr unsigned int GATEWAY_PORT = 8125;

constexpr std::size_t NUMBER_SIZE = 16;

}  // namespace

const std::string QxMetricsClient::PREFIX = "vessori2.v2.";

QxMetricsClient& QxMetricsClient::instance() {
  static QxMetricsClient client;
  return client;
}

void QxMetricsClient::initializeDataLakeConnection(boost::shared_ptr<boost::asio::io_context> ioContext) {
  try {
    StatsdClient* const client = StatsdClient::getInstance();
    statsdClient_ = client;
    if (client == nullptr) {
      VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
              "QxMetricsClient::initializeDataLakeConnection: cannot get a StatsdClient instance");
      return;
    }
    if (!ioContext) {
      VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
              "QxMetricsClient::initializeDataLakeConnection: ioContext is nullptr");
      return;
    }
    // Of the TCP resolver only the address is wanted: nothing is connected.
    tcp::resolver resolver(*ioContext);
    const tcp::resolver::results_type found =
        resolver.resolve(GATEWAY_HOST, GATEWAY_SERVICE, tcp::resolver::address_configured);
    if (found.empty()) throw boost::system::system_error(boost::asio::error::host_not_found);
    const std::string address = found.begin()->endpoint().address().to_string();
    client->setAsioContext(ioContext.get(), false);
    client->setServer(address, GATEWAY_PORT);
    connected_ = true;
  } catch (const std::exception&) {
    VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
            "QxMetricsClient::initializeDataLakeConnection: cannot resolve host name " << GATEWAY_HOST);
  }
}

void QxMetricsClient::stop() { connected_ = false; }

void QxMetricsClient::send(const std::string& name, const std::string& key, const std::string& value) {
  sendImpl(false, name, key, value);
}

void QxMetricsClient::sendJson(const std::string& name, const std::string& key, const std::string& value) {
  sendImpl(true, name, key, value);
}

void QxMetricsClient::send(const std::string& name, const std::string& key, int value) {
  char text[NUMBER_SIZE];
  std::snprintf(text, sizeof text, "%d", value);
  send(name, key, std::string(text));
}

void QxMetricsClient::send(const std::string& name, const std::string& key, unsigned int value) {
  char text[NUMBER_SIZE];
  std::snprintf(text, sizeof text, "%u", value);
  send(name, key, std::string(text));
}

void QxMetricsClient::sendImpl(bool json, const std::string& name, const std::string& key, const std::string& value) {
  if (!connected_.load(std::memory_order_relaxed)) {
    VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL, "QxMetricsClient::sendImpl: StatsdClient connection not initialized");
    return;
  }
  StatsdClient* const client = StatsdClient::getInstance();
  statsdClient_.store(client, std::memory_order_relaxed);
  if (client == nullptr) return;
  const std::string fullName = PREFIX + name;
  if (json) {
    client->jsonObject(fullName, key, value);
  } else {
    client->string(fullName, key, value);
  }
}

}  // namespace qx

#include <qxnet/TCPConnection.h>
#include <vso/vso.h>

#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

// Queues who has asked something, for a thread that may take its time.
class Desk : public qx::QxnetClient {
 public:
  qx::QxnetTcpConnectionQueue waiting;

 private:
  void handleData(qx::QxnetTcpConnectionPtr connection, const std::string&) override { waiting.push(connection); }
  void handleState(qx::QxnetTcpConnectionPtr connection, qx::QxnetConnectionState state, qx::QxnetConnectionState,
                   qx::QxnetConnectionOperation, const qx::BErrorCode&) override {
    if (state == qx::net::stream::CONNECTION_OPEN) connection->asyncReadUntil("\r\n");
  }
};

int main() {
  boost::asio::io_context context;
  Desk desk;
  const auto server = boost::make_shared<qx::QxnetServer>(context, boost::asio::ip::address_v4::loopback(), 0, desk);
  if (const qx::BErrorCode error = server->start()) return error.value();
  std::thread thread([&] { context.run(); });  // the server works where its context runs

  // Somebody out there asks.
  boost::asio::io_context outside;
  boost::asio::ip::tcp::socket client(outside);
  client.connect(server->endpoint());
  boost::asio::write(client, boost::asio::buffer(std::string("image?\r\n")));

  // The answer: what the image service says of a node's image.
  qx::Euid node;
  node = "0011223344556677";
  const auto answer = qx::ZigbeeOtaUpgradeOperation::createImageInfoResponse(
      qx::OtaUpgradeOperationStatus::success, node, 0x1040, 7, "file:///images/7", "driver", 2, 0x0105);
  std::ostringstream line;
  line << answer->operation() << " " << answer->status() << " " << answer->euid() << " version "
       << answer->imageVersion() << "\r\n";
  if (const qx::BErrorCode error = desk.waiting.pop()->asyncWrite(line.str())) return error.value();

  std::string heard;
  boost::asio::read_until(client, boost::asio::dynamic_buffer(heard), "\r\n");
  std::cout << heard.substr(0, heard.find('\r')) << "\n";

  server->stop();
  thread.join();  // nothing is left to do for the context

  // Metrics are dropped until `initializeDataLakeConnection` was called, and never fail the caller.
  qx::QxMetricsClient::instance().send("0011223344556677", "reboot.count", 3);
}

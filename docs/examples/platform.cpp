#include <qxcrypto/Base64Encoder.h>
#include <qxresponse/JsonResponse.h>
#include <qxshared/cleanString.h>
#include <qxshared/hexStr.h>
#include <qxstatsdclient/StatsdClient.h>
#include <qxxml/XmlReader.h>
#include <qxxml/XmlWriter.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <iostream>
#include <sstream>
#include <string>

int main() {
  // A document, and back. Whatever bytes a text has, the document can be read.
  std::ostringstream document;
  qx::XmlWriter writer(document);
  writer.startElement("node");
  writer.writeElement("label", "hall \x01 lamp");
  writer.endElement();
  std::cout << document.str() << "\n";
  qx::XmlReader reader(document.str());
  while (reader.read()) {
    if (reader.nodeType() == 1) std::cout << reader.name() << " ";
  }
  std::cout << "\n";

  // The answer to a client as JSON.
  qx::response::JsonResponse response;
  response.startObject("node", 0);
  response.addString("label", "hall");
  response.addInteger("reboots", 3);
  response.endObject();
  std::cout << response.document() << "\n";

  // A metric, as a StatsD server receives it.
  using boost::asio::ip::udp;
  boost::asio::io_context context;
  udp::socket gateway(context, udp::endpoint(boost::asio::ip::address_v4::loopback(), 0));
  qx::StatsdClient& metrics = *qx::StatsdClient::getInstance();
  metrics.setAsioContext(&context, false);
  metrics.setServer("127.0.0.1", gateway.local_endpoint().port());
  if (!metrics.string("hall", "reboot.count", "3")) return 1;
  char datagram[1500];
  std::cout << std::string(datagram, gateway.receive(boost::asio::buffer(datagram))) << "\n";
  metrics.setAsioContext(nullptr, false);  // before the context ends

  std::cout << qx::Base64Encoder().Base64Encode("qx") << " " << qx::hexStr(0x1234, 2, true) << " "
            << qx::cleanString("one\r\ntwo") << "\n";
}

// The message of an access point into its record and out again. Reachable from outside: the records come back from
// saved files and from other processes, and only the parser has looked at the bytes before.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include "fuzz/support/trapUnless.h"
#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"
#include "vso/mesh/Zap.h"
#include "vso/proto/ZapPBuf.pb.h"

namespace {

using qx::Hop;
using qx::Route;
using qx::Zap;
using qx::fuzz::trapUnless;

bool isTruth(int number) { return number >= 0 && number <= 2; }

bool throwsOnRead(const qx::pb::ZapPBuf& message) {
  return std::any_of(message.hops().begin(), message.hops().end(), [](const qx::pb::HopPBuf& hop) {
    return !isTruth(hop.rxonwhenidle()) || !isTruth(hop.permitjoining());
  });
}

bool isShort(const qx::pb::PanIdPBuf& panId) { return panId.addr().size() < 8; }

bool isShort(const qx::pb::MeshSecurityDataPBuf& data) { return data.key().contents().size() < 16; }

/// What the result of reading should be, by a look at the message alone.
bool failsOnRead(const qx::pb::ZapPBuf& message) {
  return isShort(message.xpanid()) || isShort(message.trustcenterlinkdata()) ||
         isShort(message.trustcentermasterdata()) || isShort(message.trustcurrentnetworkdata()) ||
         isShort(message.trustnextnetworkdata()) || isShort(message.applicationlinkdata()) ||
         isShort(message.applicationmasterdata()) ||
         std::any_of(message.hops().begin(), message.hops().end(),
                     [](const qx::pb::HopPBuf& hop) { return isShort(hop.neighborpanid()); });
}

/// The readers of a record against the message that it was read from.
void checkReaders(const Zap& zap, const qx::pb::ZapPBuf& message) {
  trapUnless(zap.ip() == message.ip(), "ip");
  trapUnless(zap.port() == (message.port() & 0xFFFF), "port");
  trapUnless(zap.panId() == (message.panid() & 0xFFFF), "PAN id");
  trapUnless(zap.channel() == (message.channel() & 0xFF), "channel");
  trapUnless(zap.status() == (message.status() & 0xFF), "status");
  trapUnless(zap.coordinator() == message.iscoordinator(), "coordinator");
  trapUnless(zap.radioTxPower() == static_cast<signed char>(message.radiotxpower()), "transmit power");
  trapUnless(zap.timeStarted() == static_cast<std::int32_t>(message.timestarted().seconds()), "time started");
  trapUnless(zap.rolloverCount() == message.rollovercount(), "rollover count");
  trapUnless(zap.noBufferCount() == message.nobuffercount(), "no-buffer count");
  trapUnless(zap.sid() == (message.sid() & 0xFFFF), "short address");
  trapUnless(zap.stackVersion() == (message.stackversion() & 0xFFFF), "stack version");
  trapUnless(zap.protocolVersion() == (message.protocolversion() & 0xFF), "protocol version");
  trapUnless(zap.stackId() == (message.stackid() & 0xFF), "stack id");
  trapUnless(zap.configuredAsCoordinator() == message.configureascoordinator(), "configured as coordinator");
  trapUnless(zap.maxInflightMessages() == (message.maxinflightmessages() & 0xFFFF), "most in flight");
  trapUnless(zap.numInflightMessages() == (message.numinflightmessages() & 0xFFFF), "in flight");
  trapUnless(zap.inflightMessagesWatermark() == (message.inflightmessageswatermark() & 0xFF), "watermark");
  const std::string ip = zap.ipStr();
  trapUnless(std::count(ip.begin(), ip.end(), '.') == 3, "an address prints as a dotted quad");
}

void checkHops(const Zap& zap, const qx::pb::ZapPBuf& message) {
  std::list<Hop> hops;
  zap.getHopList(hops);
  trapUnless(hops.size() == static_cast<std::size_t>(message.hops_size()), "as many hops as the message has");
  for (const Hop& hop : hops) {
    trapUnless(zap.getHop(hop.neighbor_).neighbor_ == hop.neighbor_, "a hop is found by its short address");
    trapUnless(zap.getHop(hop.neighbor_lid_).neighbor_lid_ == hop.neighbor_lid_, "a hop is found by its long address");
    std::ostringstream out;
    out << hop;
    trapUnless(out.str().rfind("Neighbor: 0x", 0) == 0, "a hop prints");
  }
}

void checkRoutes(const Zap& zap, const qx::pb::ZapPBuf& message) {
  std::list<Route> routes;
  zap.getRoutes(routes);
  trapUnless(routes.size() == static_cast<std::size_t>(message.routes_size()), "as many routes as the message has");
  trapUnless(zap.numRoutes() == routes.size(), "as many routes as it says");
  unsigned int index = 0;
  for (const Route& route : routes) {
    if (index < 256) trapUnless(zap.getRoute(index) == route, "a route is found by its index");
    std::ostringstream out;
    out << route;
    trapUnless(out.str().rfind("Destination: 0x", 0) == 0, "a route prints");
    ++index;
  }
  for (const unsigned int beyond : {index, 256U, 0xFFFFFFFFU}) {
    bool thrown = false;
    try {
      zap.getRoute(beyond);
    } catch (const std::runtime_error& error) {
      thrown = std::string(error.what()) == "Invalid index.";
    }
    trapUnless(thrown, "there is no route beyond the last");
  }
}

void checkForms(const Zap& zap) {
  const std::unique_ptr<qx::pb::ZapPBuf> written(zap.toProtobuf());
  trapUnless(!failsOnRead(*written), "a record writes whole ids and keys");
  Zap restored;
  trapUnless(!restored.fromProtobuf(*written), "a record reads what it wrote");
  const std::unique_ptr<qx::pb::ZapPBuf> again(restored.toProtobuf());
  trapUnless(again->SerializeAsString() == written->SerializeAsString(), "a record survives its message");

  const Zap copy(zap);
  trapUnless(copy == zap && copy.numRoutes() == 0, "a copy has no routes");

  std::ostringstream out;
  {
    qx::XmlWriter writer(out);
    zap.toXml(writer, "zap");
  }
  qx::XmlReader reader(out.str());
  while (reader.read()) continue;
  trapUnless(reader.state() != 2, "a record writes well-formed XML");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // Every bad record is warned of, and nobody reads it here.
  static const log4cplus::Initializer logging;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qx::pb::ZapPBuf message;
  if (!message.ParseFromArray(data, static_cast<int>(size))) return 0;

  Zap zap;
  try {
    const bool failed = zap.fromProtobuf(message);
    trapUnless(!throwsOnRead(message), "a bad truth is thrown on");
    trapUnless(failed == failsOnRead(message), "reading fails on short ids and keys, and on nothing else");
    checkReaders(zap, message);
    checkRoutes(zap, message);
  } catch (const std::runtime_error& error) {
    trapUnless(std::string(error.what()) == "triboolFromProtobuf: invalid tribool", "nothing else is thrown");
    trapUnless(throwsOnRead(message), "good truths are not thrown on");
  }
  checkHops(zap, message);
  checkForms(zap);
  return 0;
}

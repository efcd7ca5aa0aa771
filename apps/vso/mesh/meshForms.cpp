#include "apps/vso/mesh/meshForms.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <list>
#include <memory>
#include <sstream>

#include "apps/vso/mesh/nodeWords.h"
#include "qxresponse/JsonResponse.h"
#include "qxxml/XmlWriter.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"
#include "vso/serial/vsoProtobufHelpers.h"

namespace qx::app {

namespace {

using qx::response::IResponse;
using qx::response::JsonResponse;

/// Opens a list of objects in `response`, and lets `put` fill one for each row.
template <typename Rows, typename Put>
void putList(IResponse& response, const std::string& name, const Rows& rows, const Put& put) {
  response.startArray(name, 0);
  response.addCount("count", rows.size());
  for (const auto& row : rows) {
    response.startObject("row", 0);
    put(row);
    response.endObject();
  }
  response.endArray();
}

void put(const ZigbeeNode& node, IResponse& response) {
  response.addString("euid", node.lid().toString());
  response.addString("shortAddress", shortAddressOf(node));
  response.addString("label", node.label());
  response.addString("product", node.product());
  response.addString("firmware", node.fwVer());
  response.addString("type", typeOf(node));
  response.addString("state", presenceOf(node));
  response.addInteger("lastContact", node.lastContact());
  response.addInteger("bootCount", node.bootCount());
  response.addInteger("reboots", node.reboots());
  response.addInteger("inboundRouteFailures", static_cast<long long>(node.manyToOneRouteFailures()));
  response.addInteger("outboundRouteFailures", static_cast<long long>(node.sourceRouteFailures()));
  response.addInteger("signalBars", node.signalStrength());
  if (node.hasRssi()) response.addInteger("rssi", node.rssi());
  if (node.hasRxLqi()) response.addInteger("rxLqi", node.rxLqi());
  if (node.hasBatteryLevel()) response.addInteger("batteryLevel", node.batteryLevel());
  response.addInteger("channel", node.channel());
  response.addInteger("uptime", node.uptime());
  std::list<Hop> hops;
  node.getHopList(hops);
  putList(response, "neighbours", hops, [&](const Hop& hop) {
    response.addString("euid", hop.neighbor_lid_.toString());
    response.addString("shortAddress", textOfAddress(hop.neighbor_));
    response.addInteger("lqi", hop.lqi_);
    response.addString("relationship", Hop::toStr(hop.relationship_));
  });
  std::list<Route> routes;
  node.getMtoRouteList(routes);
  putList(response, "routes", routes, [&](const Route& route) {
    response.addString("destination", textOfAddress(route.destination_));
    response.addString("nextHop", textOfAddress(route.next_hop_));
    response.addString("status", Route::toStr(route.route_status_));
  });
  std::list<AccessPoint> zaps;
  node.getApTable(zaps);
  putList(response, "accessPoints", zaps,
          [&](const AccessPoint& zap) { response.addString("shortAddress", textOfAddress(zap.destination_)); });
}

template <typename Record>
std::string xmlOf(const Record& record, const std::string& name) {
  std::ostringstream out;
  constexpr bool INDENT = true;
  XmlWriter writer(out, INDENT);
  record.toXml(writer, name);
  return out.str();
}

template <typename Record>
std::string inAny(const Record& record) {
  const auto message = std::unique_ptr<std::remove_pointer_t<decltype(record.toProtobuf())>>(record.toProtobuf());
  return serializeWithAny(*message);
}

}  // namespace

std::string jsonOf(const ZigbeeNode& node) {
  JsonResponse response;
  put(node, response);
  return response.document();
}

std::string jsonOf(const NetworkHealth& health) {
  const auto response = boost::make_shared<JsonResponse>();
  health.toIResponse(response);
  return response->document();
}

std::string xmlOf(const ZigbeeNode& node) { return xmlOf(node, "node"); }
std::string xmlOf(const NetworkHealth& health) { return xmlOf(health, "health"); }

std::string anyOf(const ZigbeeNode& node) { return inAny(node); }
std::string anyOf(const NetworkHealth& health) { return inAny(health); }

}  // namespace qx::app

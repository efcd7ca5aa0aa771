#include "apps/vso/decode/tables.h"

#include <algorithm>
#include <boost/logic/tribool.hpp>

#include "apps/vso/decode/hexBytes.h"
#include "vso/layout/PayloadWalk.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"

namespace qx::app {

namespace {

using Row = std::vector<NamedValue>;

constexpr unsigned int SHORT_ADDRESS_DIGITS = 4;

NamedValue shortAddress(const char* name, unsigned short address) {
  return {name, address, nullptr, SHORT_ADDRESS_DIGITS};
}

Value shown(boost::logic::tribool value) {
  if (boost::logic::indeterminate(value)) return nullptr;
  return static_cast<bool>(value);
}

Row rowOf(const Hop& hop) {
  const auto type = static_cast<pb::ZigbeeNodeDeviceTypePEnum>(hop.type_);
  return {shortAddress("neighbor", hop.neighbor_),
          {"lqi", hop.lqi_},
          {"neighborLid", hop.neighbor_lid_.toString()},
          {"type", hop.type_, pb::ZigbeeNodeDeviceTypePEnum_Name(type).c_str()},
          {"rxOnWhenIdle", shown(hop.rx_on_when_idle_)},
          {"relationship", hop.relationship_, Hop::toStr(hop.relationship_)},
          {"permitJoining", shown(hop.permit_joining_)},
          {"treeDepth", hop.tree_depth_},
          {"neighborPanId", std::string(hop.neighbor_pan_id_)}};
}

Row rowOf(const Route& route) {
  return {shortAddress("destination", route.destination_),
          {"routeStatus", route.route_status_, Route::toStr(route.route_status_)},
          {"memConstrained", route.mem_constrained_},
          {"manyToOne", route.many_to_one_},
          {"routeRecordRequired", route.route_record_required_},
          shortAddress("nextHop", route.next_hop_)};
}

Row rowOf(const AccessPoint& accessPoint) {
  return {shortAddress("destination", accessPoint.destination_), {"tableIndex", accessPoint.table_index_}};
}

/// The first `count` of `records`.
template <typename Record>
std::vector<Row> rowsOf(const std::list<Record>& records, std::size_t count) {
  std::vector<Row> rows;
  for (const Record& record : records) {
    if (rows.size() == count) break;
    rows.push_back(rowOf(record));
  }
  return rows;
}

std::vector<Row> energyLevels(const ZdoNetworkUpdateResponse& response, std::size_t count) {
  signed char levels[ZdoNetworkUpdateResponse::CHANNEL_COUNT] = {};
  response.setEnergyLevels(levels);
  std::vector<Row> rows;
  for (unsigned int i = 0; i < ZdoNetworkUpdateResponse::CHANNEL_COUNT && rows.size() < count; ++i) {
    const unsigned int channel = ZdoNetworkUpdateResponse::FIRST_CHANNEL + i;
    if ((response.scannedChannels() >> channel & 1) != 0) rows.push_back({{"channel", channel}, {"rssi", levels[i]}});
  }
  return rows;
}

/// Each extension where it stands. (The typed reader of the library begins at the name.)
std::vector<Row> extensions(FrameReader in) {
  constexpr unsigned int HEAD = 3;
  std::vector<Row> rows;
  while (in.left() >= HEAD) {
    const unsigned short clusterId = in.u16le();
    const unsigned char length = in.u8();
    if (in.left() < length) break;
    rows.push_back({shortAddress("clusterId", clusterId), {"length", length}, {"value", hexBytes(in, length)}});
    in.skip(length);
  }
  return rows;
}

}  // namespace

bool readTable(const PayloadWalk& walk, const U255Buff<unsigned char>& frame, DecodedTable& table) {
  table.name = walk.field().name;
  const unsigned int whole = walk.rowSize() == 0 ? 0 : std::min(walk.rows(), walk.value().left() / walk.rowSize());
  switch (walk.field().kind) {
    case FieldKind::NEIGHBOURS: {
      std::list<Hop> hops;
      ZdoNetworkLqiResponse(frame).hops(hops);
      table.rows = rowsOf(hops, whole);
      return true;
    }
    case FieldKind::ROUTES: {
      std::list<Route> routes;
      ZdoNetworkRtgResponse(frame).routes(routes);
      table.rows = rowsOf(routes, whole);
      return true;
    }
    case FieldKind::ENERGY_VALUES:
      table.rows = energyLevels(ZdoNetworkUpdateResponse(frame), whole);
      return true;
    case FieldKind::SCENE_EXTENSIONS:
      table.rows = extensions(walk.value());
      return true;
    default:
      return false;
  }
}

DecodedTable tableOf(const std::list<AccessPoint>& accessPoints) {
  return {"apRouteTable", rowsOf(accessPoints, accessPoints.size())};
}

}  // namespace qx::app

// The state of a route in a device's routing table.
#pragma once

namespace qx {

/// The numbers of a Zigbee routing-table record. Any other number may arrive.
enum RouteStatus : int {
  ROUTE_ACTIVE = 0,
  ROUTE_DISCOVERY_UNDERWAY = 1,
  ROUTE_DISCOVERY_FAILED = 2,
  ROUTE_INACTIVE = 3,
  ROUTE_VALIDATION_UNDERWAY = 4,
  ROUTE_UNKNOWN = 5,
};

}  // namespace qx

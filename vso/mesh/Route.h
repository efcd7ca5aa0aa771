// One row of a device's routing table.
#pragma once

#include <iosfwd>
#include <string>

#include "vso/mesh/RouteStatus.h"

namespace qx {

class XmlWriter;
namespace pb {
class RoutePBuf;
}

/// Where a short address is reached, and how that route stands.
class Route {
 public:
  /// What a lookup answers that finds nothing: destination 0xFFFF.
  static const Route INVALID;

  /// The next hop stands second here and last in the class.
  Route(unsigned short destination, unsigned short nextHop, RouteStatus status, bool memConstrained, bool manyToOne,
        bool routeRecordRequired);

  /// Compare all six fields.
  bool operator==(const Route& other) const;
  bool operator!=(const Route& other) const { return !(*this == other); }

  /// The enumerator's name; "ROUTE_UNKNOWN" for a number without one.
  static const char* toStr(RouteStatus status);

  /// Caller owns the result.
  pb::RoutePBuf* toProtobuf() const;
  /// Takes all fields, wider ones cut to their low bits. True on failure, of which there is none.
  bool fromProtobuf(const pb::RoutePBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;

  /// Short address that the route leads to.
  unsigned short destination_;
  RouteStatus route_status_;
  bool mem_constrained_;
  bool many_to_one_;
  bool route_record_required_;
  /// Short address of the next hop.
  unsigned short next_hop_;
};

/// One line without its end. Leaves the stream in hexadecimal with a fill of '0' and booleans in words.
std::ostream& operator<<(std::ostream& out, const Route& route);

}  // namespace qx

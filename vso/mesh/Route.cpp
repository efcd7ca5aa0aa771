#include "vso/mesh/Route.h"

#include <iomanip>
#include <memory>
#include <ostream>

#include "qxshared/hexStr.h"
#include "vso/proto/RoutePBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

const Route Route::INVALID(0xFFFF, 0xFFFF, ROUTE_UNKNOWN, false, false, false);

Route::Route(unsigned short destination, unsigned short nextHop, RouteStatus status, bool memConstrained,
             bool manyToOne, bool routeRecordRequired)
    : destination_(destination),
      route_status_(status),
      mem_constrained_(memConstrained),
      many_to_one_(manyToOne),
      route_record_required_(routeRecordRequired),
      next_hop_(nextHop) {}

bool Route::operator==(const Route& other) const {
  return destination_ == other.destination_ && route_status_ == other.route_status_ &&
         mem_constrained_ == other.mem_constrained_ && many_to_one_ == other.many_to_one_ &&
         route_record_required_ == other.route_record_required_ && next_hop_ == other.next_hop_;
}

const char* Route::toStr(RouteStatus status) {
  switch (status) {
    case ROUTE_ACTIVE:
      return "ROUTE_ACTIVE";
    case ROUTE_DISCOVERY_UNDERWAY:
      return "ROUTE_DISCOVERY_UNDERWAY";
    case ROUTE_DISCOVERY_FAILED:
      return "ROUTE_DISCOVERY_FAILED";
    case ROUTE_INACTIVE:
      return "ROUTE_INACTIVE";
    case ROUTE_VALIDATION_UNDERWAY:
      return "ROUTE_VALIDATION_UNDERWAY";
    case ROUTE_UNKNOWN:
      return "ROUTE_UNKNOWN";
  }
  return "ROUTE_UNKNOWN";
}

pb::RoutePBuf* Route::toProtobuf() const {
  auto message = std::make_unique<pb::RoutePBuf>();
  message->set_destination(destination_);
  message->set_routestatus(static_cast<pb::RouteStatusPEnum>(route_status_));
  message->set_memconstrained(mem_constrained_);
  message->set_manytoone(many_to_one_);
  message->set_routerecordrequired(route_record_required_);
  message->set_nexthop(next_hop_);
  return message.release();
}

bool Route::fromProtobuf(const pb::RoutePBuf& message) {
  destination_ = static_cast<unsigned short>(message.destination());
  route_status_ = static_cast<RouteStatus>(message.routestatus());
  mem_constrained_ = message.memconstrained();
  many_to_one_ = message.manytoone();
  route_record_required_ = message.routerecordrequired();
  next_hop_ = static_cast<unsigned short>(message.nexthop());
  return false;
}

void Route::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("destination_", destination_);
  writer.writeElement("route_status_", static_cast<int>(route_status_));
  writer.writeElement("mem_constrained_", mem_constrained_, true);
  // A text of its own, not the writer's boolean form as its neighbours: whatever that form is, this one stays a digit.
  writer.writeElement("many_to_one_", std::string(1, static_cast<char>('0' + (many_to_one_ ? 1 : 0))));
  writer.writeElement("route_record_required_", route_record_required_, true);
  writer.writeElement("next_hop_", next_hop_);
}

std::ostream& operator<<(std::ostream& out, const Route& route) {
  return out << std::hex << std::setfill('0') << std::boolalpha
             << "Destination: " << hexStr(route.destination_, 2, true)
             << " Status: " << Route::toStr(route.route_status_) << " Mem Constrained: " << route.mem_constrained_
             << " Many To One: " << route.many_to_one_ << " Route Record Required: " << route.route_record_required_
             << " Next Hop: " << hexStr(route.next_hop_, 2, true);
}

}  // namespace qx

#include "vso/mesh/Hop.h"

#include <iomanip>
#include <memory>
#include <ostream>

#include "qxshared/hexStr.h"
#include "vso/proto/HopPBuf.pb.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

const char* deviceTypeStr(unsigned char type) {
  switch (type) {
    case pb::QX_COORDINATOR:
      return "QX_COORDINATOR";
    case pb::QX_ROUTER:
      return "QX_ROUTER";
    case pb::QX_END_DEVICE:
      return "QX_END_DEVICE";
    case pb::QX_SLEEPY_END_DEVICE:
      return "QX_SLEEPY_END_DEVICE";
    case pb::QX_MOBILE_END_DEVICE:
      return "QX_MOBILE_END_DEVICE";
    default:
      return "QX_UNKNOWN_DEVICE";
  }
}

}  // namespace

const Hop Hop::INVALID(0xFFFF, 0, Euid::INVALID, 0, boost::logic::indeterminate, NONE_OF_THE_ABOVE,
                       boost::logic::indeterminate, 0, PanId::INVALID);

Hop::Hop(unsigned short neighbor, unsigned char lqi, const Euid& lid, unsigned char type,
         const boost::logic::tribool& rxOnWhenIdle, HopRelationship relationship,
         const boost::logic::tribool& permitJoining, unsigned char treeDepth, const PanId& neighborPanId)
    : neighbor_(neighbor),
      lqi_(lqi),
      neighbor_lid_(lid),
      type_(type),
      rx_on_when_idle_(rxOnWhenIdle),
      relationship_(relationship),
      permit_joining_(permitJoining),
      tree_depth_(treeDepth),
      neighbor_pan_id_(neighborPanId) {}

const char* Hop::toStr(HopRelationship relationship) {
  switch (relationship) {
    case NEIGHBOR_IS_PARENT:
      return "NEIGHBOR_IS_PARENT";
    case NEIGHBOR_IS_CHILD:
      return "NEIGHBOR_IS_CHILD";
    case NEIGHBOR_IS_SIBLING:
      return "NEIGHBOR_IS_SIBLING";
    case NONE_OF_THE_ABOVE:
      return "NONE_OF_THE_ABOVE";
    case PREVIOUS_CHILD:
      return "PREVIOUS_CHILD";
  }
  return "NONE_OF_THE_ABOVE";
}

pb::HopPBuf* Hop::toProtobuf() const {
  auto message = std::make_unique<pb::HopPBuf>();
  message->set_neighbor(neighbor_);
  message->set_lqi(lqi_);
  message->set_allocated_neighborlid(neighbor_lid_.toProtobuf());
  message->set_type(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(type_));
  message->set_rxonwhenidle(triboolToProtobuf(rx_on_when_idle_));
  message->set_relationship(static_cast<pb::HopRelationshipPEnum>(relationship_));
  message->set_permitjoining(triboolToProtobuf(permit_joining_));
  message->set_treedepth(tree_depth_);
  message->set_allocated_neighborpanid(neighbor_pan_id_.toProtobuf());
  return message.release();
}

bool Hop::fromProtobuf(const pb::HopPBuf& message) {
  neighbor_ = static_cast<unsigned short>(message.neighbor());
  lqi_ = static_cast<unsigned char>(message.lqi());
  bool failed = neighbor_lid_.fromProtobuf(message.neighborlid());
  type_ = static_cast<unsigned char>(message.type());
  rx_on_when_idle_ = triboolFromProtobuf(message.rxonwhenidle());
  relationship_ = static_cast<HopRelationship>(message.relationship());
  permit_joining_ = triboolFromProtobuf(message.permitjoining());
  tree_depth_ = static_cast<unsigned char>(message.treedepth());
  failed |= neighbor_pan_id_.fromProtobuf(message.neighborpanid());
  return failed;
}

void Hop::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("neighbor_", neighbor_);
  writer.writeElement("lqi_", lqi_);
  neighbor_lid_.toXml(writer, "neighbor_lid_");
  writer.writeElement("type_", type_);
  triboolToXml(rx_on_when_idle_, writer, "rx_on_when_idle_");
  writer.writeElement("relationship_", static_cast<int>(relationship_));
  triboolToXml(permit_joining_, writer, "permit_joining_");
  writer.writeElement("tree_depth_", tree_depth_);
  neighbor_pan_id_.toXml(writer, "neighbor_pan_id_");
}

std::ostream& operator<<(std::ostream& out, const Hop& hop) {
  return out << "Neighbor: " << hexStr(hop.neighbor_, 2, true) << " LQI: " << std::dec << static_cast<int>(hop.lqi_)
             << " LID: 0x" << hop.neighbor_lid_ << " DT: " << deviceTypeStr(hop.type_) << std::boolalpha
             << " RX on when idle: " << static_cast<bool>(hop.rx_on_when_idle_)
             << " Relationship: " << Hop::toStr(hop.relationship_)
             << " Permit Joining: " << static_cast<bool>(hop.permit_joining_) << " Tree depth: " << std::dec
             << static_cast<int>(hop.tree_depth_) << " XPANID: 0x" << hop.neighbor_pan_id_;
}

}  // namespace qx

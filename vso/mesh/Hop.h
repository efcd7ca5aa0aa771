// One row of a device's neighbour table.
#pragma once

#include <boost/logic/tribool.hpp>
#include <iosfwd>
#include <string>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/PanId.h"
#include "vso/mesh/HopRelationship.h"

namespace qx {

class XmlWriter;
namespace pb {
class HopPBuf;
}

/// Whom a device can hear, how well, and how that neighbour stands to it. Has no comparison: users compare the address
/// they look for.
class Hop {
 public:
  /// What a lookup answers that finds nothing: neighbour 0xFFFF.
  static const Hop INVALID;

  Hop(unsigned short neighbor, unsigned char lqi, const Euid& lid, unsigned char type,
      const boost::logic::tribool& rxOnWhenIdle, HopRelationship relationship,
      const boost::logic::tribool& permitJoining, unsigned char treeDepth, const PanId& neighborPanId);

  /// The enumerator's name; "NONE_OF_THE_ABOVE" for a number without one.
  static const char* toStr(HopRelationship relationship);

  /// Caller owns the result.
  pb::HopPBuf* toProtobuf() const;
  /// Takes all fields, wider ones cut to their low bits. True on failure: the PAN id held fewer than 8 bytes. Throws
  /// what `triboolFromProtobuf` throws, with the fields before the bad one taken.
  bool fromProtobuf(const pb::HopPBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;

  /// Short address of the neighbour.
  unsigned short neighbor_;
  /// Link quality, 0 to 255.
  unsigned char lqi_;
  /// Long address of the neighbour.
  Euid neighbor_lid_;
  /// Device type, a number of ZigbeeNodeDeviceTypePEnum.
  unsigned char type_;
  /// Whether the neighbour keeps its receiver on when idle; indeterminate when not reported.
  boost::logic::tribool rx_on_when_idle_;
  HopRelationship relationship_;
  /// Whether the neighbour accepts joins; indeterminate when not reported.
  boost::logic::tribool permit_joining_;
  /// Depth of the neighbour in the network tree.
  unsigned char tree_depth_;
  /// Extended PAN id of the neighbour.
  PanId neighbor_pan_id_;
};

/// One line without its end. A tribool prints as whether it is exactly true. Leaves the stream in hexadecimal with a
/// fill of '0' and booleans in words.
std::ostream& operator<<(std::ostream& out, const Hop& hop);

}  // namespace qx

#include "vso/zdo/ZdoNetworkLqiResponse.h"

#include <boost/logic/tribool.hpp>

#include "vso/mesh/Hop.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"

namespace qx {

namespace {

using boost::logic::tribool;

template <typename Id>
Id nextId(FrameReader& in) {
  unsigned char bytes[8];
  in.bytes(bytes);
  Id id(bytes);
  id.byteSwap();
  return id;
}

unsigned char deviceType(unsigned char flags) {
  constexpr unsigned char TYPES[] = {pb::QX_COORDINATOR, pb::QX_ROUTER, pb::QX_END_DEVICE, pb::QX_UNKNOWN_DEVICE};
  return TYPES[flags & 0x03];
}

/// 0 stands for a receiver that is on: the reverse of what 0 means for `permitJoining`.
tribool rxOnWhenIdle(unsigned char flags) {
  switch (flags >> 2 & 0x03) {
    case 0:
      return true;
    case 1:
      return false;
    default:
      return boost::logic::indeterminate;
  }
}

HopRelationship relationship(unsigned char flags) {
  const int value = flags >> 4 & 0x07;
  return value <= PREVIOUS_CHILD ? static_cast<HopRelationship>(value) : NONE_OF_THE_ABOVE;
}

tribool permitJoining(unsigned char flags) {
  switch (flags & 0x03) {
    case 0:
      return false;
    case 1:
      return true;
    default:
      return boost::logic::indeterminate;
  }
}

}  // namespace

void ZdoNetworkLqiResponse::hops(std::list<Hop>& out) const {
  out.clear();
  detail::TableEntries<ENTRY_SIZE> page(*this);
  for (unsigned int i = 0; i < entries(); ++i) {
    FrameReader in = page.next();
    const auto panId = nextId<PanId>(in);
    const auto lid = nextId<Euid>(in);
    const unsigned short neighbor = in.u16le();
    const unsigned char flags = in.u8();
    const unsigned char joining = in.u8();
    const unsigned char treeDepth = in.u8();
    const unsigned char lqi = in.u8();
    out.emplace_back(neighbor, lqi, lid, deviceType(flags), rxOnWhenIdle(flags), relationship(flags),
                     permitJoining(joining), treeDepth, panId);
  }
}

}  // namespace qx

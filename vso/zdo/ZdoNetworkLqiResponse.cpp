#include "vso/zdo/ZdoNetworkLqiResponse.h"

#include <boost/logic/tribool.hpp>

#include "vso/mesh/Hop.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"

namespace qx {

namespace {

using boost::logic::indeterminate;
using boost::logic::tribool;

// What the bits of an entry stand for, by their value.

constexpr unsigned char DEVICE_TYPES[] = {pb::QX_COORDINATOR, pb::QX_ROUTER, pb::QX_END_DEVICE, pb::QX_UNKNOWN_DEVICE};
/// 0 stands for a receiver that is on: the reverse of what 0 means for PERMIT_JOINING.
constexpr tribool RX_ON_WHEN_IDLE[] = {true, false, indeterminate, indeterminate};
constexpr tribool PERMIT_JOINING[] = {false, true, indeterminate, indeterminate};
constexpr HopRelationship RELATIONSHIPS[] = {NEIGHBOR_IS_PARENT, NEIGHBOR_IS_CHILD, NEIGHBOR_IS_SIBLING,
                                             NONE_OF_THE_ABOVE,  PREVIOUS_CHILD,    NONE_OF_THE_ABOVE,
                                             NONE_OF_THE_ABOVE,  NONE_OF_THE_ABOVE};

template <typename Id>
Id nextId(FrameReader& in) {
  unsigned char bytes[8];
  in.bytes(bytes);
  Id id(bytes);
  id.byteSwap();
  return id;
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
    out.emplace_back(neighbor, lqi, lid, DEVICE_TYPES[flags & 0x03], RX_ON_WHEN_IDLE[flags >> 2 & 0x03],
                     RELATIONSHIPS[flags >> 4 & 0x07], PERMIT_JOINING[joining & 0x03], treeDepth, panId);
  }
}

}  // namespace qx

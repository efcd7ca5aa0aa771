// Rows of neighbour and routing tables as plain records, and their messages filled and read by hand: what the
// benchmarks of whole records are held against.
#pragma once

#include <google/protobuf/repeated_field.h>

#include <list>
#include <string>

#include "vso/proto/HopPBuf.pb.h"
#include "vso/proto/RoutePBuf.pb.h"

namespace qx::bench {

struct HandHop {
  unsigned short neighbor;
  unsigned char lqi;
  unsigned long long lid;
  unsigned char type;
  int rxOnWhenIdle;
  int relationship;
  int permitJoining;
  unsigned char treeDepth;
  unsigned char panId[8];
};

struct HandRoute {
  unsigned short destination;
  int status;
  bool memConstrained;
  bool manyToOne;
  bool routeRecordRequired;
  unsigned short nextHop;
};

inline void readBytes(const std::string& from, unsigned char* to, std::size_t size) {
  from.copy(reinterpret_cast<char*>(to), size);
}

inline void readHops(const google::protobuf::RepeatedPtrField<pb::HopPBuf>& messages, std::list<HandHop>& hops) {
  hops.clear();
  for (const pb::HopPBuf& from : messages) {
    HandHop& hop = hops.emplace_back();
    hop.neighbor = static_cast<unsigned short>(from.neighbor());
    hop.lqi = static_cast<unsigned char>(from.lqi());
    hop.lid = from.neighborlid().id();
    hop.type = static_cast<unsigned char>(from.type());
    hop.rxOnWhenIdle = from.rxonwhenidle();
    hop.relationship = from.relationship();
    hop.permitJoining = from.permitjoining();
    hop.treeDepth = static_cast<unsigned char>(from.treedepth());
    readBytes(from.neighborpanid().addr(), hop.panId, sizeof hop.panId);
  }
}

inline void readRoutes(const google::protobuf::RepeatedPtrField<pb::RoutePBuf>& messages,
                       std::list<HandRoute>& routes) {
  routes.clear();
  for (const pb::RoutePBuf& from : messages) {
    routes.push_back({static_cast<unsigned short>(from.destination()), from.routestatus(), from.memconstrained(),
                      from.manytoone(), from.routerecordrequired(), static_cast<unsigned short>(from.nexthop())});
  }
}

inline void fillHop(const HandHop& hop, pb::HopPBuf* to) {
  to->set_neighbor(hop.neighbor);
  to->set_lqi(hop.lqi);
  to->mutable_neighborlid()->set_id(hop.lid);
  to->set_type(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(hop.type));
  to->set_rxonwhenidle(static_cast<pb::TriboolPEnum>(hop.rxOnWhenIdle));
  to->set_relationship(static_cast<pb::HopRelationshipPEnum>(hop.relationship));
  to->set_permitjoining(static_cast<pb::TriboolPEnum>(hop.permitJoining));
  to->set_treedepth(hop.treeDepth);
  to->mutable_neighborpanid()->set_addr(hop.panId, sizeof hop.panId);
}

inline void fillRoute(const HandRoute& route, pb::RoutePBuf* to) {
  to->set_destination(route.destination);
  to->set_routestatus(static_cast<pb::RouteStatusPEnum>(route.status));
  to->set_memconstrained(route.memConstrained);
  to->set_manytoone(route.manyToOne);
  to->set_routerecordrequired(route.routeRecordRequired);
  to->set_nexthop(route.nextHop);
}

}  // namespace qx::bench

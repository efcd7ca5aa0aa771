// Small meshes for the tests of what shows one.
#pragma once

#include <ctime>
#include <list>
#include <string>
#include <utility>

#include "apps/vso/mesh/MeshServer.h"
#include "vso/mesh/Hop.h"

namespace qx::test {

inline Euid euidOf(const std::string& digits) {
  Euid euid;
  euid = digits;
  return euid;
}

/// A row of a neighbour table of which nothing matters but whom it is about, and how well that is heard.
inline Hop hopTo(const std::string& euid, unsigned char lqi) {
  return {0, lqi, euidOf(euid), 1, true, NEIGHBOR_IS_SIBLING, false, 1, PanId()};
}

/// A router without neighbours that has just been heard.
inline ZigbeeNode nodeOf(const std::string& euid, unsigned short sid, const std::string& label) {
  ZigbeeNode node;
  node.lid(euidOf(euid));
  node.sid(sid);
  node.label(label);
  node.online(true);
  node.lastContact(std::time(nullptr));
  return node;
}

inline ZigbeeNode nodeOf(const std::string& euid, unsigned short sid, const std::string& label,
                         const std::list<Hop>& hops) {
  ZigbeeNode node = nodeOf(euid, sid, label);
  node.setHopList(hops);
  return node;
}

inline Zap zapOf(const std::string& euid, unsigned short sid, bool isCoordinator, const std::list<Hop>& hops = {}) {
  Zap zap(0, 0, isCoordinator, euidOf(euid), PanId(), 0, 0, -1, 0, isCoordinator, 0, 0);
  zap.sid(sid);
  zap.setHopList(hops);
  return zap;
}

inline void add(app::MeshServer::Nodes& nodes, const ZigbeeNode& node) { nodes.emplace(node.lid(), node); }
inline void add(app::MeshServer::Zaps& zaps, const Zap& zap) { zaps.emplace(zap.id(), zap); }

/// A server that knows these.
class Mesh : public app::MeshServer {
 public:
  explicit Mesh(Nodes nodes = {}, Zaps zaps = {}) : app::MeshServer(std::time(nullptr)) {
    restore(std::move(nodes), std::move(zaps));
  }
};

}  // namespace qx::test

#include "apps/vso/mesh/savedMesh.h"

#include <boost/crc.hpp>
#include <list>
#include <memory>
#include <utility>

#include "apps/vso/mesh/MeshPBuf.pb.h"
#include "vso/mesh/Route.h"

namespace qx::app {

namespace {

constexpr unsigned int VERSION = 1;

unsigned int checksumOf(const std::string& bytes) {
  boost::crc_32_type crc;
  crc.process_bytes(bytes.data(), bytes.size());
  return crc.checksum();
}

}  // namespace

std::string bytesOfMesh(const MeshServer::Nodes& nodes, const MeshServer::Zaps& zaps) {
  pb::MeshPBuf mesh;
  for (const auto& [euid, node] : nodes) mesh.mutable_nodes()->AddAllocated(node.toProtobuf());
  for (const auto& [euid, zap] : zaps) mesh.mutable_zaps()->AddAllocated(zap.toProtobuf());
  pb::MeshFilePBuf file;
  file.set_version(VERSION);
  std::string bytes;
  // A message has an end: 2 GiB. Nothing would be written in place of more than that.
  bool isWritten = mesh.SerializeToString(file.mutable_mesh());
  file.set_checksum(checksumOf(file.mesh()));
  isWritten = isWritten && file.SerializeToString(&bytes);
  if (!isWritten) throw std::runtime_error("the mesh is too large to be saved");
  return bytes;
}

SavedMesh meshOfBytes(const std::string& bytes) {
  pb::MeshFilePBuf file;
  constexpr const char* NO_MESH = "it is no saved mesh, or has lost its end";
  if (!file.ParseFromString(bytes) || bytes.empty()) throw BadMesh(NO_MESH);
  if (file.version() > VERSION) throw UnknownForm("it has an unknown form, " + std::to_string(file.version()));
  if (file.version() < VERSION || !file.has_checksum() || !file.has_mesh()) throw BadMesh(NO_MESH);
  pb::MeshPBuf mesh;
  if (checksumOf(file.mesh()) != file.checksum()) throw BadMesh("its content does not match its checksum");
  if (!mesh.ParseFromString(file.mesh())) throw BadMesh("its content is no mesh");
  SavedMesh saved;
  try {
    for (const qx::pb::ZigbeeNodePBuf& message : mesh.nodes()) {
      ZigbeeNode node;
      if (node.fromProtobuf(message)) throw BadMesh("a node in it is not whole");
      saved.nodes.emplace(node.lid(), node);
    }
    for (const qx::pb::ZapPBuf& message : mesh.zaps()) {
      const auto zap = std::make_unique<Zap>();
      if (zap->fromProtobuf(message)) throw BadMesh("an access point in it is not whole");
      std::list<Route> routes;  // which a copy would not have
      zap->getRoutes(routes);
      saved.zaps.emplace(zap->id(), *zap).first->second.setRoutes(routes);
    }
  } catch (const BadMesh&) {
    throw;
  } catch (const std::runtime_error& error) {  // a number that stands for nothing
    throw BadMesh(std::string("a record in it does not read: ") + error.what());
  }
  return saved;
}

}  // namespace qx::app

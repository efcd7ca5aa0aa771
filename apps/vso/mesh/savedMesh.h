// A mesh as the bytes of a file.
#pragma once

#include <stdexcept>
#include <string>

#include "apps/vso/mesh/MeshServer.h"

namespace qx::app {

/// Bytes that are no saved mesh, or not the whole of one. The text is one line that says why.
class BadMesh : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct SavedMesh {
  MeshServer::Nodes nodes;
  MeshServer::Zaps zaps;
};

/// The records of all nodes and access points; reports and unfinished tables are not among them. Throws
/// std::runtime_error for more than a message holds, 2 GiB.
std::string bytesOfMesh(const MeshServer::Nodes& nodes, const MeshServer::Zaps& zaps);

/// Throws BadMesh.
SavedMesh meshOfBytes(const std::string& bytes);

}  // namespace qx::app

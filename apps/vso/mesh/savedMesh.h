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

/// A mesh in a form that this program does not know: it is a later one's.
class UnknownForm : public BadMesh {
 public:
  using BadMesh::BadMesh;
};

struct SavedMesh {
  MeshServer::Nodes nodes;
  MeshServer::Zaps zaps;
};

/// The records of all nodes and access points; reports and unfinished tables are not among them. Throws
/// std::runtime_error for more than a message holds, 2 GiB.
std::string bytesOfMesh(const MeshServer::Nodes& nodes, const MeshServer::Zaps& zaps);

/// Throws BadMesh, or UnknownForm.
SavedMesh meshOfBytes(const std::string& bytes);

}  // namespace qx::app

// The state of a mesh.
#pragma once

namespace qx {

/// What a mesh is in, or is asked to do. Any other number may come from a document.
enum MeshState : int {
  MESH_DOWN = 0,
  MESH_UP = 1,
  MESH_UNKNOWN_STATE = 2,
  MESH_FORCE_CREATION = 3,
  MESH_CLEAN = 4,
};

}  // namespace qx

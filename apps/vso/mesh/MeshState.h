// A mesh that outlives its server.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/StateDirectory.h"

namespace qx::app {

/// Ties a mesh to a folder: restores it from there, and saves it.
class MeshState {
 public:
  static constexpr const char* FILE_NAME = "mesh.state";

  /// Restores `mesh` if the folder holds one. A file that does not read is kept aside, which standard error says; the
  /// mesh is left as it is then. Throws as StateDirectory, also for a file in a form that is not known.
  MeshState(const std::string& folder, MeshServer& mesh);

  /// Fails as StateDirectory does, whose file then holds what it held.
  void save();
  /// The same, unless the mesh is as it was when it was restored or saved last: flash memory wears.
  void saveChanges();
  std::string file() const { return folder_.fileOf(FILE_NAME); }

 private:
  void save(const std::string& bytes);

  StateDirectory folder_;
  MeshServer& mesh_;
  /// A checksum of what was restored or saved last.
  std::optional<std::size_t> saved_;
};

}  // namespace qx::app

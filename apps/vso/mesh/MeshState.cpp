#include "apps/vso/mesh/MeshState.h"

#include <iostream>
#include <optional>
#include <utility>

#include "apps/vso/mesh/savedMesh.h"

namespace qx::app {

MeshState::MeshState(const std::string& folder, MeshServer& mesh) : folder_(folder), mesh_(mesh) {
  const std::optional<std::string> bytes = folder_.load(FILE_NAME);
  if (!bytes) return;
  try {
    SavedMesh saved = meshOfBytes(*bytes);
    mesh_.restore(std::move(saved.nodes), std::move(saved.zaps));
  } catch (const BadMesh& error) {
    const std::string aside = folder_.setAside(FILE_NAME);
    std::cerr << "vso: " << file() << ": " << error.what() << "; it is kept as " << aside
              << ", and the mesh begins anew\n";
  }
}

void MeshState::save() const { folder_.save(FILE_NAME, bytesOfMesh(mesh_.nodes(), mesh_.zaps())); }

}  // namespace qx::app

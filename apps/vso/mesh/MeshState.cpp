#include "apps/vso/mesh/MeshState.h"

#include <functional>
#include <iostream>
#include <optional>
#include <utility>

#include "apps/vso/OpenFile.h"
#include "apps/vso/mesh/savedMesh.h"

namespace qx::app {

MeshState::MeshState(const std::string& folder, MeshServer& mesh) : folder_(folder), mesh_(mesh) {
  const std::optional<std::string> bytes = folder_.load(FILE_NAME);
  if (!bytes) return;
  try {
    SavedMesh saved = meshOfBytes(*bytes);
    mesh_.restore(std::move(saved.nodes), std::move(saved.zaps));
    saved_ = std::hash<std::string>()(*bytes);
  } catch (const UnknownForm& error) {
    throw FileError(file(), error.what());
  } catch (const BadMesh& error) {
    const std::string aside = folder_.setAside(FILE_NAME);
    std::cerr << "vso: " << file() << ": " << error.what() << "; it is kept as " << aside
              << ", and the mesh begins anew\n";
  }
}

void MeshState::save() { save(bytesOfMesh(mesh_.nodes(), mesh_.zaps())); }

void MeshState::saveChanges() {
  const std::string bytes = bytesOfMesh(mesh_.nodes(), mesh_.zaps());
  if (saved_ != std::hash<std::string>()(bytes)) save(bytes);
}

void MeshState::save(const std::string& bytes) {
  folder_.save(FILE_NAME, bytes);
  saved_ = std::hash<std::string>()(bytes);
}

}  // namespace qx::app

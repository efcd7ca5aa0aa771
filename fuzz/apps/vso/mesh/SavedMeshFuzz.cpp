// A saved mesh back into its records, and from them to all that is shown of a mesh. Whoever can write a state folder,
// or sends such a file to be looked at, decides what stands in it.
#include <google/protobuf/stubs/logging.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <boost/crc.hpp>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <utility>

#include "apps/vso/mesh/MeshPBuf.pb.h"
#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/meshForms.h"
#include "apps/vso/mesh/nodeTable.h"
#include "apps/vso/mesh/savedMesh.h"
#include "apps/vso/node/meshMap.h"
#include "fuzz/support/trapUnless.h"

namespace {

using qx::app::BadMesh;
using qx::app::bytesOfMesh;
using qx::app::MeshServer;
using qx::app::SavedMesh;
using qx::fuzz::trapUnless;

/// As a file with the right checksum, which no fuzzer finds.
std::string fileOf(const std::string& mesh) {
  boost::crc_32_type crc;
  crc.process_bytes(mesh.data(), mesh.size());
  qx::app::pb::MeshFilePBuf file;
  file.set_version(1);
  file.set_checksum(crc.checksum());
  file.set_mesh(mesh);
  return file.SerializeAsString();
}

void show(const std::string& bytes) {
  SavedMesh saved;
  try {
    saved = qx::app::meshOfBytes(bytes);
  } catch (const BadMesh& error) {
    trapUnless(std::string(error.what()).find('\n') == std::string::npos, "what is wrong is told in one line");
    return;
  }
  const std::string written = bytesOfMesh(saved.nodes, saved.zaps);
  const SavedMesh again = qx::app::meshOfBytes(written);
  trapUnless(bytesOfMesh(again.nodes, again.zaps) == written, "what was restored is saved as it is");

  MeshServer mesh(0);
  mesh.restore(std::move(saved.nodes), std::move(saved.zaps));
  mesh.look(std::time(nullptr));
  trapUnless(!nodeTable(mesh, false).empty(), "every mesh has a table");
  trapUnless(qx::app::graphOf(mesh).substr(0, 10) == "graph mesh", "every mesh has a map");
  for (const auto& [euid, node] : mesh.nodes()) {
    trapUnless(qx::app::jsonOf(node).front() == '{', "every node has a JSON form");
    static_cast<void>(qx::app::xmlOf(node));
  }
  trapUnless(qx::app::jsonOf(mesh.health()).front() == '{', "every mesh has a report");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  static const log4cplus::Initializer initializer;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  google::protobuf::SetLogHandler(nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  show(bytes);
  show(fileOf(bytes));
  return 0;
}

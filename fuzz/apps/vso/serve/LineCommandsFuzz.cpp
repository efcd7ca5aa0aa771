// Lines of a client to the answers of the server: commands, and with them frames through its engine and into its state.
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <set>
#include <sstream>
#include <string>

#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/nodeTable.h"
#include "apps/vso/mesh/savedMesh.h"
#include "apps/vso/serve/LineCommands.h"
#include "fuzz/support/trapUnless.h"

namespace {

using qx::app::bytesOfMesh;
using qx::app::LineCommands;
using qx::app::MeshServer;
using qx::fuzz::trapUnless;

bool beginsWith(const std::string& text, const std::string& beginning) { return text.rfind(beginning, 0) == 0; }

/// One line, or a block of as many lines as it says, all ended by CR LF, of nothing but one line's characters.
void checkAnswer(const std::string& answer) {
  std::size_t lines = 0;
  std::size_t begin = 0;
  for (std::size_t end; (end = answer.find("\r\n", begin)) != std::string::npos; begin = end + 2) ++lines;
  trapUnless(lines > 0 && begin == answer.size(), "every line of an answer is ended");
  const std::string first = answer.substr(0, answer.find("\r\n"));
  if (beginsWith(first, "block ")) {
    trapUnless(first == "block " + std::to_string(lines - 1), "a block has as many lines as it says");
    return;
  }
  trapUnless(lines == 1, "any other answer is one line");
  trapUnless(first == "ok" || beginsWith(first, "ok ") || beginsWith(first, "error "), "an answer says how it went");
  trapUnless(first.find_first_of("\r\n") == std::string::npos, "a line is one line");
}

void checkMesh(MeshServer& mesh) {
  std::set<unsigned short> addresses;
  for (const auto& [euid, node] : mesh.nodes()) {
    trapUnless(node.lid() == euid, "a node is found by its address");
    trapUnless(node.sid() == MeshServer::UNKNOWN_ADDRESS || node.sid() < MeshServer::FIRST_BROADCAST,
               "an address is one device's");
    trapUnless(node.sid() == MeshServer::UNKNOWN_ADDRESS || addresses.insert(node.sid()).second,
               "a short address has one owner");
  }
  addresses.clear();
  for (const auto& [euid, zap] : mesh.zaps()) {
    trapUnless(addresses.insert(zap.sid()).second, "there is one access point at an address");
  }
  const std::string bytes = bytesOfMesh(mesh.nodes(), mesh.zaps());
  const qx::app::SavedMesh saved = qx::app::meshOfBytes(bytes);
  trapUnless(bytesOfMesh(saved.nodes, saved.zaps) == bytes, "a mesh outlives its server");
  trapUnless(!nodeTable(mesh, true).empty(), "every mesh has a table");
}

const std::string LAMP = "0017880100a00010";

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  static const log4cplus::Initializer initializer;
  // What the library says of such frames goes nowhere.
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  MeshServer mesh(std::time(nullptr));
  LineCommands commands(mesh, [] {});
  const std::string announcement = " 0x1c02 0xc25f 1 18050a000020020600210700120041047a010000";
  trapUnless(commands.answer("frame now " + LAMP + announcement) == "ok taken\r\n", "there is a lamp");
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  for (std::string line; std::getline(in, line);) checkAnswer(commands.answer(line));
  checkMesh(mesh);
  return 0;
}

// The command `vso node`, as its users meet it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "apps/vso/mesh/savedMesh.h"
#include "apps/vso/node/Meshes.h"
#include "qxxml/XmlReader.h"
#include "support/ProgramRunner.h"
#include "support/TemporaryDirectory.h"

namespace qx::app {
namespace {

using nlohmann::json;
using test::contentOf;
using test::hopTo;
using test::Outcome;
using test::runProgram;
using test::TemporaryDirectory;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

constexpr const char* KITCHEN_DOOR =
    "K\xc3\xbc"
    "chent\xc3\xbcr";

/// A lamp that has just been heard, a door that has been silent for a week, and an access point.
class NodeCommand : public testing::Test {
 protected:
  NodeCommand() {
    test::Mesh mesh;  // so that the counting begins
    MeshServer::Nodes nodes;
    MeshServer::Zaps zaps;
    ZigbeeNode lamp = test::nodeOf("0000000000000a01", 0x0A01, "Hall \"lamp\"\n", {hopTo("0000000000000b01", 200)});
    lamp.deviceType(2);
    for (int i = 0; i < 15; ++i) lamp.addRebootEvent(ZigbeeNode::localtime());
    test::add(nodes, lamp);
    ZigbeeNode door = test::nodeOf("0000000000000a02", 0x0A02, KITCHEN_DOOR);
    door.deviceType(2);
    door.lastContact(std::time(nullptr) - 7 * 86'400);
    test::add(nodes, door);
    test::add(zaps, test::zapOf("0000000000000b01", 0, true, {hopTo("0000000000000a01", 220)}));
    bytes_ = bytesOfMesh(nodes, zaps);
    file_ = folder_.file("mesh.state", bytes_);
  }

  Outcome node(std::vector<std::string> options) const {
    options.insert(options.begin(), "node");
    options.push_back(file_);
    return runProgram({options});
  }
  /// What it prints, if that is all it does.
  std::string outputOf(const std::vector<std::string>& options) const {
    const Outcome outcome = node(options);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }

  TemporaryDirectory folder_;
  std::string bytes_;
  std::string file_;
};

TEST_F(NodeCommand, PrintsTheTable) {
  EXPECT_EQ(outputOf({}),
            std::string(
                R"(NAME           TYPE    ADDRESS  SIGNAL  STATE   REBOOTS        INBOUND FAILURES  OUTBOUND FAILURES
Hall "lamp"\n  Router  0x0a01   ?       online  15/day yellow  0/h green         0/h green
)") + KITCHEN_DOOR +
                "      Router  0x0a02   ?       silent  0/day green    0/h green         0/h green\n");
}

TEST_F(NodeCommand, PaintsTheLightsIfAsked) {
  EXPECT_THAT(outputOf({"--color", "always"}), HasSubstr("\x1b[33m15/day yellow\x1b[0m"));
  EXPECT_THAT(outputOf({"--color=never"}), Not(HasSubstr("\x1b")));
}

TEST_F(NodeCommand, PrintsAnObjectALineAsJson) {
  const std::vector<std::string> lines = linesOf(outputOf({"--json"}));
  ASSERT_EQ(lines.size(), 2u);
  const json lamp = json::parse(lines[0]);
  EXPECT_EQ(lamp.at("euid"), "0000000000000a01");
  EXPECT_EQ(lamp.at("shortAddress"), "0x0a01");
  EXPECT_EQ(lamp.at("label"), "Hall \"lamp\"\n");
  EXPECT_EQ(lamp.at("state"), "online");
  ASSERT_EQ(lamp.at("neighbours").size(), 1u);
  EXPECT_EQ(lamp.at("neighbours")[0].at("euid"), "0000000000000b01");
  EXPECT_EQ(lamp.at("neighbours")[0].at("lqi"), 200);
  const json door = json::parse(lines[1]);
  EXPECT_EQ(door.at("label"), KITCHEN_DOOR);
  EXPECT_EQ(door.at("state"), "silent");
}

TEST_F(NodeCommand, PrintsOneXmlDocument) {
  XmlReader reader(outputOf({"--xml"}));
  std::vector<std::string> path;
  std::vector<std::string> children;
  std::vector<std::string> labels;
  while (reader.read()) {
    if (reader.nodeType() == 1) {
      if (path.size() == 1) children.push_back(reader.name());
      path.push_back(reader.name());
    } else if (reader.nodeType() == 15) {
      // An empty tag has no end.
      while (path.back() != reader.name()) path.pop_back();
      path.pop_back();
    } else if (reader.nodeType() == 3 && path.back() == "label_") {
      labels.push_back(reader.value());
    }
    if (path.size() == 1) {
      EXPECT_EQ(path.front(), "mesh");
    }
  }
  EXPECT_EQ(reader.state(), 3);
  EXPECT_THAT(children, ElementsAre("node", "node", "zap"));
  EXPECT_THAT(labels, ElementsAre("Hall \"lamp\"\n", KITCHEN_DOOR));
}

TEST_F(NodeCommand, PrintsTheHealthOfAllNodesAsOneObject) {
  const std::vector<std::string> lines = linesOf(outputOf({"--health"}));
  ASSERT_EQ(lines.size(), 1u);
  const std::string text = json::parse(lines[0]).dump();
  EXPECT_THAT(text, AllOf(HasSubstr("0000000000000a01"), HasSubstr("0000000000000a02")));
  EXPECT_THAT(text, HasSubstr("reboot.sliding_quality"));
}

TEST_F(NodeCommand, DrawsTheMapBesidesWhatItPrints) {
  const std::string map = folder_.path("map.gv");
  EXPECT_EQ(outputOf({"--map", map}), outputOf({}));
  EXPECT_THAT(contentOf(map), AllOf(StartsWith("graph mesh {\n"),
                                    HasSubstr(R"(  "0000000000000a01" -- "0000000000000b01" [label="210")"),
                                    HasSubstr(R"([label="Hall \"lamp\"\\n\n0x0a01", fillcolor="#f6e08b"])"),
                                    HasSubstr("fillcolor=\"#b9dfb4\", style=\"rounded,filled,dashed\"")));
  EXPECT_EQ(linesOf(outputOf({"--json", "--map", folder_.path("other.gv")})).size(), 2u);
  EXPECT_EQ(contentOf(folder_.path("other.gv")), contentOf(map));
}

TEST_F(NodeCommand, DrawsAMapWhoseNameBeginsWithADash) {
  if (std::system("dot -V > /dev/null 2>&1") != 0) GTEST_SKIP() << "Graphviz is not installed";
  const std::string former = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  const Outcome outcome = node({"--map=-v.svg"});
  std::filesystem::current_path(former);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(contentOf(folder_.path("-v.svg")), HasSubstr("<svg"));
}

TEST_F(NodeCommand, RefusesAMapWithoutAPath) {
  const Outcome outcome = node({"--map", ""});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "vso: --map: an empty path\nTry 'vso node --help'.\n");
}

TEST_F(NodeCommand, PrintsNothingIfTheMapFails) {
  const Outcome outcome = node({"--map", folder_.path("map.bmp")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "vso: " + folder_.path("map.bmp") + ": a map is drawn as svg, png or pdf, or written as gv or dot\n");
}

TEST_F(NodeCommand, SaysThatThereIsNoGraphviz) {
  const Outcome outcome = runProgram({{"node", "--map", folder_.path("map.svg"), file_}, "", {"PATH="}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err,
              StartsWith("vso: Graphviz (dot) is not installed; the graph is in " + folder_.path("map.svg.")));
}

TEST_F(NodeCommand, LeavesTheFileAsItIs) {
  outputOf({"--map", folder_.path("map.gv")});
  EXPECT_EQ(contentOf(file_), bytes_);
}

// What has not been saved by a server

void expectTrouble(const std::string& file, const std::string& text) {
  for (const char* const form : {"--json", "--xml", "--health", "--color=never"}) {
    const Outcome outcome = runProgram({{"node", form, file}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "vso: " + file + ": " + text + "\n");
  }
}

TEST_F(NodeCommand, NamesAFileThatIsMissing) { expectTrouble("/nowhere/mesh.state", "No such file or directory"); }

TEST_F(NodeCommand, NamesAFolder) { expectTrouble(folder_.path(), "Is a directory"); }

TEST_F(NodeCommand, NamesAFileThatDoesNotOpenOrDoesNotRead) {
  const std::string loop = folder_.path("loop");
  std::filesystem::create_symlink(loop, loop);
  expectTrouble(loop, "Too many levels of symbolic links");
  expectTrouble("/proc/self/mem", "Input/output error");  // there is nothing at the address 0
}

TEST_F(NodeCommand, ReadsAPipeAsAFile) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const auto shown = [&pipe](const std::string& bytes) {
    auto writer = std::async(std::launch::async, [&] { std::ofstream(pipe, std::ios::binary) << bytes; });
    const Outcome outcome = runProgram({{"node", pipe}});
    writer.get();
    return outcome;
  };
  EXPECT_EQ(shown(bytes_).out, outputOf({}));
  const Outcome outcome = shown("half a mesh");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vso: " + pipe + ": it is no saved mesh, or has lost its end\n");
}

TEST_F(NodeCommand, RefusesAnEmptyFile) {
  expectTrouble(folder_.file("empty", ""), "it is no saved mesh, or has lost its end");
}

TEST_F(NodeCommand, RefusesAFileThatHasLostItsEnd) {
  for (const std::size_t kept : {std::size_t{1}, std::size_t{10}, bytes_.size() / 2, bytes_.size() - 1}) {
    const std::string file = folder_.file("short", bytes_.substr(0, kept));
    const Outcome outcome = runProgram({{"node", file}});
    EXPECT_EQ(outcome.status, 1) << kept;
    EXPECT_EQ(outcome.out, "") << kept;
    EXPECT_THAT(outcome.err, StartsWith("vso: " + file + ": it")) << kept;
  }
}

TEST_F(NodeCommand, RefusesAFileOfWhichABitHasTurned) {
  std::string bytes = bytes_;
  bytes[bytes.size() - 3] ^= 1;
  expectTrouble(folder_.file("turned", bytes), "its content does not match its checksum");
}

TEST_F(NodeCommand, ShowsAnEmptyMesh) {
  const std::string file = folder_.file("nobody", bytesOfMesh({}, {}));
  const auto show = [&file](const char* form) { return runProgram({{"node", form, file}}); };
  for (const char* const form : {"--json", "--xml", "--health", "--color=never"}) EXPECT_EQ(show(form).status, 0);
  EXPECT_EQ(show("--json").out, "");
  EXPECT_EQ(linesOf(show("--color=never").out).size(), 1u);
  XmlReader reader(show("--xml").out);
  while (reader.read()) {
  }
  EXPECT_EQ(reader.state(), 3);
  EXPECT_TRUE(json::parse(show("--health").out).is_object());
}

// Usage

TEST_F(NodeCommand, PrintsInOneFormOnly) {
  const char* const forms[] = {"--json", "--xml", "--health"};
  for (const char* const one : forms) {
    for (const char* const other : forms) {
      if (one == other) continue;
      const Outcome outcome = node({one, other});
      EXPECT_EQ(outcome.status, 2);
      EXPECT_EQ(outcome.out, "");
      EXPECT_THAT(outcome.err,
                  AllOf(StartsWith("vso: "), HasSubstr(one), HasSubstr(other), HasSubstr("Try 'vso node --help'.\n")));
    }
  }
}

TEST_F(NodeCommand, WantsOneFile) {
  EXPECT_EQ(runProgram({{"node"}}).status, 2);
  EXPECT_EQ(node({file_}).status, 2);
}

}  // namespace
}  // namespace qx::app

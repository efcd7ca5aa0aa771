#include "apps/vso/node/meshMap.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/vso/node/Meshes.h"
#include "qxxml/XmlReader.h"
#include "support/TemporaryDirectory.h"

namespace qx::app {
namespace {

using test::add;
using test::contentOf;
using test::hopTo;
using test::Mesh;
using test::nodeOf;
using test::TemporaryDirectory;
using test::zapOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* LAMP = "0000000000000a01";
constexpr const char* DOOR = "0000000000000a02";
constexpr const char* ATTIC = "0000000000000a03";
constexpr const char* CELLAR = "0000000000000b01";
constexpr const char* OFFICE = "0000000000000b02";
constexpr const char* NOBODY = "0000000000000c01";

const std::string HEAD =
    "graph mesh {\n"
    "  layout=neato; splines=true; overlap=scale; outputorder=edgesfirst; bgcolor=white;\n"
    "  node [shape=box, style=\"rounded,filled\", fontname=\"sans-serif\", fontsize=11];\n"
    "  edge [fontname=\"sans-serif\", fontsize=9];\n";

/// The lines of a graph that name `what`.
std::vector<std::string> linesWith(const std::string& graph, const std::string& what) {
  std::vector<std::string> lines;
  std::istringstream in(graph);
  for (std::string line; std::getline(in, line);) {
    if (line.find(what) != std::string::npos) lines.push_back(line);
  }
  return lines;
}

std::string graphOfNode(const ZigbeeNode& node) {
  Mesh::Nodes nodes;
  add(nodes, node);
  Mesh mesh(nodes);
  return graphOf(mesh);
}

/// Two nodes with these tables, and the lines of their links.
std::vector<std::string> linksOf(const std::list<Hop>& ofLamp, const std::list<Hop>& ofDoor) {
  Mesh::Nodes nodes;
  add(nodes, nodeOf(LAMP, 0x0A01, "lamp", ofLamp));
  add(nodes, nodeOf(DOOR, 0x0A02, "door", ofDoor));
  Mesh mesh(nodes);
  return linesWith(graphOf(mesh), " -- ");
}

/// The graph's text of a link between the first two nodes, up to its look.
std::string linkText(const std::string& lqi, const std::string& length) {
  return "  \"0000000000000a01\" -- \"0000000000000a02\" [label=\"" + lqi + "\", len=" + length + ", ";
}

const std::string GREEN = R"(color="#3a8f3a", fontcolor="#3a8f3a", penwidth=2.5];)";
const std::string YELLOW = R"(color="#94780c", fontcolor="#94780c", penwidth=1.5];)";
const std::string RED = R"(color="#c0504d", fontcolor="#c0504d", penwidth=1];)";

// The graph

TEST(MeshMap, TellsAllOfASmallMesh) {
  Mesh::Nodes nodes;
  Mesh::Zaps zaps;
  add(nodes, nodeOf(LAMP, 0x0A01, "lamp", {hopTo(CELLAR, 240), hopTo(DOOR, 180), hopTo(ATTIC, 100)}));
  add(nodes, nodeOf(DOOR, 0x0A02, "door", {hopTo(LAMP, 160)}));
  ZigbeeNode attic = nodeOf(ATTIC, 0x0A03, "attic");
  attic.online(false);
  add(nodes, attic);
  add(zaps, zapOf(CELLAR, 0x0000, true, {hopTo(LAMP, 220)}));
  add(zaps, zapOf(OFFICE, 0x7A01, false));
  Mesh mesh(nodes, zaps);
  EXPECT_EQ(
      graphOf(mesh),
      HEAD +
          R"(  "0000000000000b01" [label="access point\ncoordinator\n0x0000", shape=doubleoctagon, style=filled, fillcolor="#a9c8ea"];
  "0000000000000b02" [label="access point\n0x7a01", shape=doubleoctagon, style=filled, fillcolor="#a9c8ea"];
  "0000000000000a01" [label="lamp\n0x0a01", fillcolor="#b9dfb4"];
  "0000000000000a02" [label="door\n0x0a02", fillcolor="#b9dfb4"];
  "0000000000000a03" [label="attic\n0x0a03", fillcolor="#b9dfb4", style="rounded,filled,dashed"];
  "0000000000000a01" -- "0000000000000a03" [label="100", len=5.33, color="#c0504d", fontcolor="#c0504d", penwidth=1];
  "0000000000000a01" -- "0000000000000a02" [label="170", len=4.17, color="#94780c", fontcolor="#94780c", penwidth=1.5];
  "0000000000000a01" -- "0000000000000b01" [label="230", len=3.17, color="#3a8f3a", fontcolor="#3a8f3a", penwidth=2.5];
}
)");
}

TEST(MeshMap, IsAGraphWithoutNodesForAnEmptyMesh) {
  Mesh mesh;
  EXPECT_EQ(graphOf(mesh), HEAD + "}\n");
}

// Names

TEST(MeshMap, LetsNoNameOutOfItsQuotes) {
  const struct {
    std::string name;
    std::string label;
  } rows[] = {
      {"plain", R"(plain)"},
      {R"(")", R"(\")"},
      {R"(\)", R"(\\)"},
      {R"(\")", R"(\\\")"},
      {R"(a\nb)", R"(a\\nb)"},
      {R"("]; evil [label=")", R"(\"]; evil [label=\")"},
      {"<b>&lt;&#7;", "<b>&amp;lt;&amp;#7;"},
      {"two\nlines", R"(two\\nlines)"},
      {"return\rtab\t", R"(return\\rtab\\t)"},
      {"\x1b[2J", R"(\\x1b[2J)"},
      {std::string("\0end", 4), R"(\\x00end)"},
      {"K\xc3\xbc"
       "che",
       "K\xc3\xbc"
       "che"},
      {"\xff", R"(\\xff)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(graphOfNode(nodeOf(LAMP, 0x0A01, row.name)),
              HEAD + "  \"0000000000000a01\" [label=\"" + row.label + "\\n0x0a01\", fillcolor=\"#b9dfb4\"];\n}\n");
  }
}

TEST(MeshMap, TakesASwifterLayoutForMoreDevicesAndLinks) {
  const auto layoutOf = [](unsigned int devices, unsigned int links) {
    Mesh::Nodes nodes;
    Mesh::Zaps zaps;
    add(zaps, zapOf(CELLAR, 0x0000, true));
    for (unsigned int i = 1; i < devices; ++i) {
      char euid[17];
      std::snprintf(euid, sizeof euid, "%016x", 0x10000 + i);
      add(nodes, i <= links ? nodeOf(euid, 1, "lamp", {hopTo(CELLAR, 200)}) : nodeOf(euid, 1, "lamp"));
    }
    Mesh mesh(nodes, zaps);
    const std::string graph = graphOf(mesh);
    EXPECT_EQ(linesWith(graph, " -- ").size(), links);
    const std::size_t at = graph.find("layout=");
    return graph.substr(at, graph.find(" overlap") - at);
  };
  EXPECT_EQ(layoutOf(251, 250), "layout=neato; splines=true;");
  EXPECT_EQ(layoutOf(252, 251), "layout=neato; splines=line;");
  EXPECT_EQ(layoutOf(1000, 0), "layout=neato; splines=true;");
  EXPECT_EQ(layoutOf(1001, 251), "layout=sfdp; splines=line;");
}

TEST(MeshMap, CountsTheNeighboursThatNobodyKnowsForItsLayout) {
  const auto isSwift = [](unsigned int strangers) {
    Mesh::Nodes nodes;
    std::list<Hop> hops;
    for (unsigned int i = 0; i < strangers; ++i) {
      char euid[17];
      std::snprintf(euid, sizeof euid, "%016x", 0x20000 + i);
      hops.push_back(hopTo(euid, 200));
    }
    add(nodes, nodeOf(CELLAR, 1, "lamp", hops));
    add(nodes, nodeOf("0000000000010000", 1, "lamp", hops));
    Mesh mesh(nodes, {});
    return graphOf(mesh).find("layout=sfdp") != std::string::npos;
  };
  EXPECT_FALSE(isSwift(998));
  EXPECT_TRUE(isSwift(999));
}

TEST(MeshMap, CallsANodeWithoutALabelByItsProductOrItsAddress) {
  ZigbeeNode node;
  node.lid(test::euidOf(LAMP));
  node.sid(0x0A01);
  EXPECT_THAT(graphOfNode(node), HasSubstr(R"([label="0000000000000a01\n0x0a01")"));
  node.product("qx:lamp");
  EXPECT_THAT(graphOfNode(node), HasSubstr(R"([label="qx:lamp\n0x0a01")"));
}

// Lights

TEST(MeshMap, GivesANodeTheColourOfItsWorstLight) {
  const BPosixTime now = ZigbeeNode::localtime();
  const auto colourAfter = [now](int reboots, int failures) {
    ZigbeeNode node = nodeOf(LAMP, 0x0A01, "lamp");
    for (int i = 0; i < reboots; ++i) node.addRebootEvent(now);
    for (int i = 0; i < failures; ++i) node.addManyToOneRouteFailure(now);
    const std::string graph = graphOfNode(node);
    const std::size_t at = graph.find("fillcolor=");
    return graph.substr(at, graph.find(']', at) - at);
  };
  const std::string green = "fillcolor=\"#b9dfb4\"";
  const std::string yellow = "fillcolor=\"#f6e08b\"";
  const std::string red = "fillcolor=\"#f4a6a0\"";
  EXPECT_EQ(colourAfter(0, 0), green);
  EXPECT_EQ(colourAfter(10, 50), green);
  EXPECT_EQ(colourAfter(11, 0), yellow);
  EXPECT_EQ(colourAfter(0, 51), yellow);
  EXPECT_EQ(colourAfter(20, 300), yellow);
  EXPECT_EQ(colourAfter(21, 0), red);
  EXPECT_EQ(colourAfter(11, 301), red);
  EXPECT_EQ(colourAfter(21, 51), red);
}

TEST(MeshMap, CountsFailuresOfTheRoutesToANodeToo) {
  ZigbeeNode node = nodeOf(LAMP, 0x0A01, "lamp");
  for (int i = 0; i < 301; ++i) node.addSourceRouteFailure(ZigbeeNode::localtime());
  EXPECT_THAT(graphOfNode(node), HasSubstr("fillcolor=\"#f4a6a0\""));
}

TEST(MeshMap, DashesASilentNodeAndNoOther) {
  ZigbeeNode node = nodeOf(LAMP, 0x0A01, "lamp");
  EXPECT_THAT(graphOfNode(node), Not(HasSubstr("dashed")));
  node.awake(false);
  EXPECT_THAT(graphOfNode(node), Not(HasSubstr("dashed")));
  node.online(false);
  EXPECT_THAT(graphOfNode(node), HasSubstr("style=\"rounded,filled,dashed\""));
}

// Links

TEST(MeshMap, DrawsALinkThatOneEndAloneReports) {
  const std::vector<std::string> expected{linkText("200", "3.67") + GREEN};
  EXPECT_EQ(linksOf({hopTo(DOOR, 200)}, {}), expected);
  EXPECT_EQ(linksOf({}, {hopTo(LAMP, 200)}), expected);
}

TEST(MeshMap, DrawsALinkOfTwoEndsOnceWithTheMeanQuality) {
  EXPECT_EQ(linksOf({hopTo(DOOR, 255)}, {hopTo(LAMP, 254)}), std::vector<std::string>{linkText("254", "2.77") + GREEN});
  EXPECT_EQ(linksOf({hopTo(DOOR, 0)}, {hopTo(LAMP, 255)}), std::vector<std::string>{linkText("127", "4.88") + RED});
}

TEST(MeshMap, ShowsTheQualityOfALinkAsColourWidthAndLength) {
  EXPECT_EQ(linksOf({hopTo(DOOR, 255)}, {}), std::vector<std::string>{linkText("255", "2.75") + GREEN});
  EXPECT_EQ(linksOf({hopTo(DOOR, 199)}, {}), std::vector<std::string>{linkText("199", "3.68") + YELLOW});
  EXPECT_EQ(linksOf({hopTo(DOOR, 140)}, {}), std::vector<std::string>{linkText("140", "4.67") + YELLOW});
  EXPECT_EQ(linksOf({hopTo(DOOR, 139)}, {}), std::vector<std::string>{linkText("139", "4.68") + RED});
  EXPECT_EQ(linksOf({hopTo(DOOR, 0)}, {}), std::vector<std::string>{linkText("0", "7.00") + RED});
}

TEST(MeshMap, DrawsALinkToADeviceThatNobodyKnows) {
  const std::vector<std::string> links = linksOf({hopTo(NOBODY, 200)}, {});
  ASSERT_EQ(links.size(), 1u);
  EXPECT_THAT(links[0], HasSubstr(R"("0000000000000a01" -- "0000000000000c01" [label="200")"));
}

TEST(MeshMap, DrawsTheLinksOfAccessPointsAmongEachOther) {
  Mesh::Zaps zaps;
  add(zaps, zapOf(CELLAR, 0x0000, true, {hopTo(OFFICE, 90)}));
  add(zaps, zapOf(OFFICE, 0x7A01, false, {hopTo(CELLAR, 110)}));
  Mesh mesh({}, zaps);
  EXPECT_EQ(linesWith(graphOf(mesh), " -- "),
            std::vector<std::string>{R"(  "0000000000000b01" -- "0000000000000b02" [label="100", len=5.33, )" + RED});
}

// Drawing

/// What `drawGraph` throws; empty if it does not.
std::string troubleOf(const std::string& graph, const std::string& file) {
  try {
    drawGraph(graph, file);
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

std::vector<std::string> entriesOf(const TemporaryDirectory& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

/// A program search path while it lives.
class SearchPath {
 public:
  explicit SearchPath(const std::string& path) : former_(std::getenv("PATH")) { ::setenv("PATH", path.c_str(), 1); }
  ~SearchPath() { ::setenv("PATH", former_.c_str(), 1); }
  SearchPath(const SearchPath&) = delete;
  SearchPath& operator=(const SearchPath&) = delete;

 private:
  std::string former_;
};

/// Puts a program called dot, a shell script, into the folder.
void putDot(const TemporaryDirectory& folder, const std::string& script) {
  std::filesystem::permissions(folder.file("dot", "#!/bin/sh\n" + script), std::filesystem::perms::owner_all);
}

std::string smallGraph() {
  Mesh::Nodes nodes;
  add(nodes, nodeOf(LAMP, 0x0A01, "\"<lamp>\" & &lt;&#7; \\co \n", {hopTo(DOOR, 210)}));
  Mesh mesh(nodes);
  return graphOf(mesh);
}

TEST(MeshMapDrawing, WritesTheGraphItself) {
  const TemporaryDirectory folder;
  for (const char* const name : {"map.gv", "map.dot", ".gv"}) {
    EXPECT_EQ(troubleOf("graph {}\n", folder.path(name)), "");
    EXPECT_EQ(contentOf(folder.path(name)), "graph {}\n");
  }
  EXPECT_EQ(entriesOf(folder).size(), 3u);
}

TEST(MeshMapDrawing, ReplacesAFile) {
  const TemporaryDirectory folder;
  folder.file("map.gv", "something far longer than what comes now");
  drawGraph("graph {}\n", folder.path("map.gv"));
  EXPECT_EQ(contentOf(folder.path("map.gv")), "graph {}\n");
}

TEST(MeshMapDrawing, RefusesAnEndingThatItDoesNotKnowAndWritesNothing) {
  const TemporaryDirectory folder;
  for (const char* const name : {"map", "map.", "map.jpg", "map.SVG", "svg", "map.svg.bak", "map.gvx"}) {
    EXPECT_EQ(troubleOf("graph {}\n", folder.path(name)),
              folder.path(name) + ": a map is drawn as svg, png or pdf, or written as gv or dot");
  }
  EXPECT_EQ(entriesOf(folder), std::vector<std::string>{});
}

TEST(MeshMapDrawing, NamesAFileThatItCannotWrite) {
  const TemporaryDirectory folder;
  for (const char* const name : {"none/map.gv", "none/map.svg"}) {
    EXPECT_EQ(troubleOf("graph {}\n", folder.path(name)), folder.path(name) + ": No such file or directory");
  }
}

TEST(MeshMapDrawing, NoticesAFullDisk) {
  const TemporaryDirectory folder;
  std::filesystem::create_symlink("/dev/full", folder.path("map.gv"));
  EXPECT_EQ(troubleOf("graph {}\n", folder.path("map.gv")), folder.path("map.gv") + ": No space left on device");
}

/// What a trouble says behind `words`, a path, if it is that of the graph that was kept.
std::string keptGraph(const std::string& trouble, const std::string& words) {
  EXPECT_EQ(trouble.substr(0, words.size()), words);
  return contentOf(trouble.substr(std::min(words.size(), trouble.size())));
}

TEST(MeshMapDrawing, KeepsTheGraphWhereThereIsNoGraphviz) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  const SearchPath path(programs.path());
  EXPECT_EQ(
      keptGraph(troubleOf("graph {}\n", folder.path("map.svg")), "Graphviz (dot) is not installed; the graph is in "),
      "graph {}\n");
  EXPECT_EQ(entriesOf(folder).size(), 1u);
}

TEST(MeshMapDrawing, KeepsTheGraphThatGraphvizFailsAt) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  const SearchPath path(programs.path());
  for (const char* const script : {"exit 1\n", "kill -9 $$\n"}) {
    putDot(programs, script);
    EXPECT_EQ(keptGraph(troubleOf("graph {}\n", folder.path("map.svg")),
                        "Graphviz could not draw " + folder.path("map.svg") + "; the graph is in "),
              "graph {}\n");
  }
}

TEST(MeshMapDrawing, KeepsTheGraphWhereGraphvizDoesNotStart) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  const SearchPath path(programs.path());
  programs.file("dot", "no program");
  EXPECT_EQ(keptGraph(troubleOf("graph {}\n", folder.path("map.svg")),
                      "Graphviz cannot be started: dot: Permission denied; the graph is in "),
            "graph {}\n");
}

TEST(MeshMapDrawing, EndsAGraphvizThatTakesTooLong) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  putDot(programs, "exec sleep 3600\n");
  const SearchPath path(programs.path() + ":/usr/bin:/bin");
  const auto start = std::chrono::steady_clock::now();
  std::string trouble;
  try {
    drawGraph("graph {}\n", folder.path("map.svg"), std::chrono::seconds(1));
  } catch (const std::runtime_error& error) {
    trouble = error.what();
  }
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  EXPECT_EQ(keptGraph(trouble, "Graphviz took longer than 1 s; the graph is in "), "graph {}\n");
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST(MeshMapDrawing, LetsGraphvizReadNothingOfOurs) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  const SearchPath path(programs.path());
  putDot(programs, "while read -r line; do echo \"$line\"; done > \"${2#-o}\"\n");
  const std::string input = folder.file("input", "ours\n");
  const int before = ::dup(STDIN_FILENO);
  const int file = ::open(input.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(::dup2(file, STDIN_FILENO), 0);
  const std::string trouble = troubleOf("graph {}\n", folder.path("map.svg"));
  EXPECT_EQ(::lseek(STDIN_FILENO, 0, SEEK_CUR), 0);
  ::dup2(before, STDIN_FILENO);
  ::close(before);
  ::close(file);
  EXPECT_EQ(trouble, "");
  EXPECT_EQ(contentOf(folder.path("map.svg")), "");
}

// As a process begins whose parent does not want to know of its children.
TEST(MeshMapDrawing, LearnsHowGraphvizEndedWhereChildrenAreIgnored) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  const SearchPath path(programs.path());
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  putDot(programs, "exit 0\n");
  const std::string good = troubleOf("graph {}\n", folder.path("map.svg"));
  std::signal(SIGCHLD, SIG_IGN);
  putDot(programs, "exit 1\n");
  const std::string bad = troubleOf("graph {}\n", folder.path("map.svg"));
  std::signal(SIGCHLD, before);
  EXPECT_EQ(good, "");
  EXPECT_THAT(bad, HasSubstr("could not draw"));
}

TEST(MeshMapDrawing, TakesNoOtherFilesPlace) {
  const TemporaryDirectory folder;
  const TemporaryDirectory programs;
  const SearchPath path(programs.path());
  putDot(programs, "for last; do :; done\nwhile read -r line; do echo \"$line\"; done < \"$last\" > \"${2#-o}\"\n");
  folder.file("map.svg.gv", "mine");
  ASSERT_EQ(troubleOf("graph {}\n", folder.path("map.svg")), "");
  EXPECT_EQ(entriesOf(folder), (std::vector<std::string>{"map.svg", "map.svg.gv"}));
  EXPECT_EQ(contentOf(folder.path("map.svg.gv")), "mine");
  EXPECT_EQ(contentOf(folder.path("map.svg")), "graph {}\n");
}

/// With the real Graphviz, where there is one.
class MeshMapPicture : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("dot -V > /dev/null 2>&1") != 0) GTEST_SKIP() << "Graphviz is not installed";
  }

  TemporaryDirectory folder_;
};

/// Behind the type of the document, whose outer part the reader of this project refuses.
std::string withoutDocumentType(const std::string& svg) {
  const std::size_t root = svg.find("<svg");
  return root == std::string::npos ? "(no svg)" : svg.substr(root);
}

TEST_F(MeshMapPicture, IsAnSvgThatSaysTheNames) {
  ASSERT_EQ(troubleOf(smallGraph(), folder_.path("map.svg")), "");
  EXPECT_EQ(entriesOf(folder_), std::vector<std::string>{"map.svg"});
  XmlReader reader(withoutDocumentType(contentOf(folder_.path("map.svg"))));
  ASSERT_TRUE(reader.read());
  EXPECT_EQ(reader.name(), "svg");
  std::vector<std::string> texts;
  std::string element;
  while (reader.read()) {
    if (reader.nodeType() == 1) element = reader.name();
    if (reader.nodeType() == 3 && element == "text") texts.push_back(reader.value());
  }
  EXPECT_EQ(reader.state(), 3);
  EXPECT_THAT(texts,
              testing::UnorderedElementsAre("\"<lamp>\" & &lt;&#7; \\co \\n", "0x0a01", "0000000000000a02", "210"));
}

TEST_F(MeshMapPicture, IsAnSvgWhateverTheNamesAre) {
  Mesh::Nodes nodes;
  add(nodes, nodeOf(LAMP, 0x0A01,
                    "\xff\xc3 \xc0\x80 \xed\xa0\x80 \xef\xbf\xbf \xc2\x85 \xe2\x80\xae K\xc3\xbc"
                    "che \xf0\x9f\x92\xa1"));
  Mesh mesh(nodes);
  ASSERT_EQ(troubleOf(graphOf(mesh), folder_.path("map.svg")), "");
  const std::string svg = contentOf(folder_.path("map.svg"));
  XmlReader reader(withoutDocumentType(svg));
  while (reader.read()) {
  }
  EXPECT_EQ(reader.state(), 3);
  EXPECT_THAT(svg, HasSubstr(R"(\xff\xc3 \xc0\x80 \xed\xa0\x80 \xef\xbf\xbf \xc2\x85 \xe2\x80\xae K)"
                             "\xc3\xbc"
                             "che \xf0\x9f\x92\xa1"));
}

TEST_F(MeshMapPicture, IsDrawnOfALargeMesh) {
  constexpr unsigned int SIZE = 400;
  const auto euidAt = [](unsigned int i) {
    char euid[17];
    std::snprintf(euid, sizeof euid, "%016x", 0x10000 + i % SIZE);
    return std::string(euid);
  };
  Mesh::Nodes nodes;
  for (unsigned int i = 0; i < SIZE; ++i) {
    std::list<Hop> hops;
    for (const unsigned int step : {1, 2, 19, 20, 21}) hops.push_back(hopTo(euidAt(i + step), 200));
    add(nodes, nodeOf(euidAt(i), 1, "lamp", hops));
  }
  Mesh mesh(nodes);
  ASSERT_EQ(troubleOf(graphOf(mesh), folder_.path("map.svg")), "");
  EXPECT_THAT(contentOf(folder_.path("map.svg")), HasSubstr("</svg>"));
}

TEST_F(MeshMapPicture, IsAPngOrAPdfByItsEnding) {
  ASSERT_EQ(troubleOf(smallGraph(), folder_.path("map.png")), "");
  ASSERT_EQ(troubleOf(smallGraph(), folder_.path("map.pdf")), "");
  EXPECT_EQ(contentOf(folder_.path("map.png")).substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(contentOf(folder_.path("map.pdf")).substr(0, 5), "%PDF-");
}

TEST_F(MeshMapPicture, IsDrawnOfAnEmptyMesh) {
  Mesh mesh;
  ASSERT_EQ(troubleOf(graphOf(mesh), folder_.path("map.svg")), "");
  XmlReader reader(withoutDocumentType(contentOf(folder_.path("map.svg"))));
  while (reader.read()) {
  }
  EXPECT_EQ(reader.state(), 3);
}

}  // namespace
}  // namespace qx::app

#include "apps/vso/node/meshMap.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <list>
#include <map>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "apps/vso/mesh/nodeWords.h"
#include "qxshared/hexStr.h"

namespace qx::app {

namespace {

/// Of a link, what each end says of it.
struct Link {
  unsigned int lqi = 0;
  unsigned int reports = 0;
};
/// By its two ends, the lesser first.
using Links = std::map<std::pair<Euid, Euid>, Link>;

void addLinks(Links& links, const Euid& from, const std::list<Hop>& hops) {
  for (const Hop& hop : hops) {
    Link& link = links[std::minmax(from, hop.neighbor_lid_)];
    link.lqi += hop.lqi_;
    ++link.reports;
  }
}

Links linksOf(const MeshServer& mesh) {
  Links links;
  std::list<Hop> hops;
  for (const auto& [euid, node] : mesh.nodes()) {
    node.getHopList(hops);
    addLinks(links, euid, hops);
  }
  for (const auto& [euid, zap] : mesh.zaps()) {
    zap.getHopList(hops);
    addLinks(links, euid, hops);
  }
  return links;
}

/// As it stands between quotes in the language of the graph.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result;
}

/// The lines for people, in the language of the graph.
std::string labelOf(const std::vector<std::string>& lines) {
  std::string label;
  for (const std::string& line : lines) label += (label.empty() ? "" : "\\n") + escaped(line);
  return '"' + label + '"';
}

std::string addressOf(unsigned short sid) { return hexStr(sid, sizeof sid, true); }

const char* fillOf(const std::string& light) {
  if (light == "red") return "#f4a6a0";
  return light == "yellow" ? "#f6e08b" : "#b9dfb4";
}

/// A link as a line of the picture.
struct Line {
  Euid one;
  Euid other;
  unsigned int lqi = 0;
};

/// The weakest first, so that the good ones are drawn over them.
std::vector<Line> linesOf(const MeshServer& mesh) {
  std::vector<Line> lines;
  for (const auto& [ends, link] : linksOf(mesh)) lines.push_back({ends.first, ends.second, link.lqi / link.reports});
  std::stable_sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.lqi < b.lqi; });
  return lines;
}

/// The quality of a link as a colour and a width: green and broad, or red and thin. Its figure has the same colour,
/// which tells in a crowd whose it is.
std::string lookOf(unsigned int lqi) {
  constexpr unsigned int GOOD = 200;
  constexpr unsigned int FAIR = 140;
  const char* const colour = lqi >= GOOD ? "\"#3a8f3a\"" : lqi >= FAIR ? "\"#94780c\"" : "\"#c0504d\"";
  const char* const width = lqi >= GOOD ? "2.5" : lqi >= FAIR ? "1.5" : "1";
  return std::string("color=") + colour + ", fontcolor=" + colour + ", penwidth=" + width;
}

/// Runs `arguments`, and returns its exit status; 127 if there is no such program.
int run(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t process = -1;
  constexpr int NOT_FOUND = 127;
  if (::posix_spawnp(&process, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return NOT_FOUND;
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

[[noreturn]] void fail(const std::string& file) {
  throw std::runtime_error(file + ": " + std::generic_category().message(errno));
}

void writeFile(const std::string& file, const std::string& content) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << content;
  out.close();
  if (!out) fail(file);
}

/// The graph in a file of its own beside `file`, whose path is returned. It takes nobody's place.
std::string writeBeside(const std::string& file, const std::string& graph) {
  constexpr const char* END = ".gv";
  std::string path = file + ".XXXXXX" + END;
  const int descriptor = ::mkstemps(path.data(), static_cast<int>(std::strlen(END)));
  if (descriptor < 0) fail(file);
  ::close(descriptor);
  writeFile(path, graph);
  return path;
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

std::string graphOf(MeshServer& mesh) {
  std::string graph =
      "graph mesh {\n"
      "  layout=neato; overlap=scale; splines=true; outputorder=edgesfirst; bgcolor=white;\n"
      "  node [shape=box, style=\"rounded,filled\", fontname=\"sans-serif\", fontsize=11];\n"
      "  edge [fontname=\"sans-serif\", fontsize=9];\n";
  for (const auto& [euid, zap] : mesh.zaps()) {
    std::vector<std::string> label{"access point", addressOf(zap.sid())};
    if (zap.coordinator()) label.insert(label.begin() + 1, "coordinator");
    graph += "  \"" + euid.toString() + "\" [label=" + labelOf(label) +
             ", shape=doubleoctagon, style=filled, fillcolor=\"#a9c8ea\"];\n";
  }
  for (const auto& [euid, known] : mesh.nodes()) {
    ZigbeeNode& node = *mesh.node(euid);
    node.updateNetworkHealth();
    graph += "  \"" + euid.toString() + "\" [label=" + labelOf({nameOf(node), addressOf(node.sid())}) +
             ", fillcolor=\"" + fillOf(worstLightOf(node)) + "\"" +
             (node.isOnline() ? "" : ", style=\"rounded,filled,dashed\"") + "];\n";
  }
  for (const Line& line : linesOf(mesh)) {
    // In inches, as far as the others let it.
    constexpr unsigned int LONGEST = 420;
    constexpr double AN_INCH = 60;
    char length[16];
    std::snprintf(length, sizeof length, "%.2f", (LONGEST - line.lqi) / AN_INCH);
    graph += "  \"" + line.one.toString() + "\" -- \"" + line.other.toString() + "\" [label=\"" +
             std::to_string(line.lqi) + "\", len=" + length + ", " + lookOf(line.lqi) + "];\n";
  }
  return graph + "}\n";
}

void drawGraph(const std::string& graph, const std::string& file) {
  if (endsWith(file, ".gv") || endsWith(file, ".dot")) {
    writeFile(file, graph);
    return;
  }
  const std::size_t dot = file.rfind('.');
  const std::string form = dot == std::string::npos ? "" : file.substr(dot + 1);
  if (form != "svg" && form != "png" && form != "pdf") {
    throw std::runtime_error(file + ": a map is drawn as svg, png or pdf, or written as gv or dot");
  }
  // Of a name that begins with a dash, dot would make an option.
  const std::string source = writeBeside(file.front() == '-' ? "./" + file : file, graph);
  constexpr int NOT_FOUND = 127;
  const int status = run({"dot", "-T" + form, "-o" + file, source});
  if (status == NOT_FOUND) {
    throw std::runtime_error("Graphviz (dot) is not installed; the graph is in " + source);
  }
  if (status != 0) throw std::runtime_error("Graphviz could not draw " + file + "; the graph is in " + source);
  ::unlink(source.c_str());
}

}  // namespace qx::app

#include "apps/vso/node/meshMap.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
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

/// As a text in the language of the graph.
std::string quotedText(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

/// Two lines for people.
std::string labelOf(const std::string& name, unsigned short sid) {
  std::string label = quotedText(name);
  label.insert(label.size() - 1, "\\n" + hexStr(sid, sizeof sid, true));
  return label;
}

const char* fillOf(const std::string& light) {
  if (light == "red") return "#f4a6a0";
  return light == "yellow" ? "#f6e08b" : "#b9dfb4";
}

/// The quality of a link as a colour and a width: green and broad, or red and thin.
std::string lookOf(unsigned int lqi) {
  constexpr unsigned int GOOD = 200;
  constexpr unsigned int FAIR = 140;
  if (lqi >= GOOD) return "color=\"#3a8f3a\", penwidth=2.5";
  return lqi >= FAIR ? "color=\"#b59a1e\", penwidth=1.5" : "color=\"#c0504d\", penwidth=1";
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

void writeFile(const std::string& file, const std::string& content) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << content;
  out.close();
  if (!out) throw std::runtime_error(file + ": " + std::generic_category().message(errno));
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

std::string graphOf(MeshServer& mesh) {
  std::string graph =
      "graph mesh {\n"
      "  layout=neato; overlap=false; splines=true; outputorder=edgesfirst; bgcolor=white;\n"
      "  node [shape=box, style=\"rounded,filled\", fontname=\"sans-serif\", fontsize=11];\n"
      "  edge [fontname=\"sans-serif\", fontsize=9, fontcolor=\"#555555\"];\n";
  for (const auto& [euid, zap] : mesh.zaps()) {
    graph += "  \"" + euid.toString() +
             "\" [label=" + labelOf(zap.coordinator() ? "access point, coordinator" : "access point", zap.sid()) +
             ", shape=doubleoctagon, style=filled, fillcolor=\"#a9c8ea\"];\n";
  }
  for (const auto& [euid, known] : mesh.nodes()) {
    ZigbeeNode& node = *mesh.node(euid);
    node.updateNetworkHealth();
    graph += "  \"" + euid.toString() + "\" [label=" + labelOf(nameOf(node), node.sid()) + ", fillcolor=\"" +
             fillOf(worstLightOf(node)) + "\"" + (node.isOnline() ? "" : ", style=\"rounded,filled,dashed\"") + "];\n";
  }
  for (const auto& [ends, link] : linksOf(mesh)) {
    const unsigned int lqi = link.lqi / link.reports;
    constexpr unsigned int LONGEST = 420;
    char length[16];
    std::snprintf(length, sizeof length, "%.2f", (LONGEST - lqi) / 100.0);
    graph += "  \"" + ends.first.toString() + "\" -- \"" + ends.second.toString() + "\" [label=\"" +
             std::to_string(lqi) + "\", len=" + length + ", " + lookOf(lqi) + "];\n";
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
  const std::string source = file + ".gv";
  writeFile(source, graph);
  constexpr int NOT_FOUND = 127;
  const int status = run({"dot", "-T" + form, "-o", file, source});
  if (status == NOT_FOUND) {
    throw std::runtime_error("Graphviz (dot) is not installed; the graph is in " + source);
  }
  if (status != 0) throw std::runtime_error("Graphviz could not draw " + file + "; the graph is in " + source);
  ::unlink(source.c_str());
}

}  // namespace qx::app

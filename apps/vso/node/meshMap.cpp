#include "apps/vso/node/meshMap.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "apps/vso/OpenFile.h"
#include "apps/vso/mesh/nodeWords.h"

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

/// As it stands between quotes in the language of the graph, which knows the entities of HTML.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
    if (c == '&') result += "amp;";
  }
  return result;
}

/// The lines for people, in the language of the graph.
std::string labelOf(const std::vector<std::string>& lines) {
  std::string label;
  for (const std::string& line : lines) label += (label.empty() ? "" : "\\n") + escaped(line);
  return '"' + label + '"';
}

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

/// How many devices are drawn: all that are known, and those that others name as a neighbour.
std::size_t devicesOf(const MeshServer& mesh, const std::vector<Line>& lines) {
  std::set<Euid> devices;
  for (const auto& [euid, node] : mesh.nodes()) devices.insert(euid);
  for (const auto& [euid, zap] : mesh.zaps()) devices.insert(euid);
  for (const Line& line : lines) devices.insert({line.one, line.other});
  return devices.size();
}

/// How the picture is laid out, so that Graphviz is done within seconds: lines that bend around nodes take a minute
/// for 1000 links, and neato, which alone heeds the length of a link, for 4000 devices.
std::string layoutOf(std::size_t devices, std::size_t links) {
  constexpr std::size_t MOST_FOR_NEATO = 1000;
  constexpr std::size_t MOST_BENT = 250;
  return std::string("layout=") + (devices <= MOST_FOR_NEATO ? "neato" : "sfdp") +
         "; splines=" + (links <= MOST_BENT ? "true;" : "line;");
}

/// What became of a program that was run.
struct Ending {
  /// Why it was not started, an `errno`; 0 if it was.
  int error = 0;
  bool tookTooLong = false;
  bool succeeded = false;
};

/// Starts a program that has nothing to read, and returns its process; -1, with `errno` set, if that fails.
pid_t start(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  pid_t process = -1;
  const int error = ::posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  errno = error;
  return error == 0 ? process : -1;
}

/// Runs a program, and kills it if it takes longer than `limit`.
Ending run(const std::vector<std::string>& arguments, std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds NAP(10);
  Ending ending;
  // A parent that ignored the signal would have left us without the exit status.
  static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
  const Clock::time_point end = Clock::now() + limit;
  const pid_t process = start(arguments);
  if (process < 0) {
    ending.error = errno;
    return ending;
  }
  int status = 0;
  pid_t ended;
  while ((ended = ::waitpid(process, &status, WNOHANG)) == 0 || (ended < 0 && errno == EINTR)) {
    if (!ending.tookTooLong && Clock::now() >= end) {
      ending.tookTooLong = true;
      ::kill(process, SIGKILL);
    }
    std::this_thread::sleep_for(NAP);
  }
  ending.succeeded = ended == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return ending;
}

void writeFile(const std::string& path, const std::string& content) {
  OpenFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
  file.writeAll(content);
  file.close();
}

/// The graph in a file of its own beside `file`, whose path is returned. It takes nobody's place.
std::string writeBeside(const std::string& file, const std::string& graph) {
  constexpr const char* END = ".gv";
  std::string path = file + ".XXXXXX" + END;
  const int descriptor = ::mkstemps(path.data(), static_cast<int>(std::strlen(END)));
  if (descriptor < 0) throw FileError(file, errno);
  ::close(descriptor);
  writeFile(path, graph);
  return path;
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

std::string graphOf(MeshServer& mesh) {
  const std::vector<Line> lines = linesOf(mesh);
  std::string graph =
      "graph mesh {\n"
      "  " +
      layoutOf(devicesOf(mesh, lines), lines.size()) +
      " overlap=scale; outputorder=edgesfirst; bgcolor=white;\n"
      "  node [shape=box, style=\"rounded,filled\", fontname=\"sans-serif\", fontsize=11];\n"
      "  edge [fontname=\"sans-serif\", fontsize=9];\n";
  for (const auto& [euid, zap] : mesh.zaps()) {
    std::vector<std::string> label{"access point", textOfAddress(zap.sid())};
    if (zap.coordinator()) label.insert(label.begin() + 1, "coordinator");
    graph += "  \"" + euid.toString() + "\" [label=" + labelOf(label) +
             ", shape=doubleoctagon, style=filled, fillcolor=\"#a9c8ea\"];\n";
  }
  for (const auto& [euid, known] : mesh.nodes()) {
    ZigbeeNode& node = *mesh.node(euid);
    node.updateNetworkHealth();
    graph += "  \"" + euid.toString() + "\" [label=" + labelOf({nameOf(node), shortAddressOf(node)}) +
             ", fillcolor=\"" + fillOf(worstLightOf(node)) + "\"" +
             (node.isOnline() ? "" : ", style=\"rounded,filled,dashed\"") + "];\n";
  }
  for (const Line& line : lines) {
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

void drawGraph(const std::string& graph, const std::string& file, std::chrono::milliseconds limit) {
  if (endsWith(file, ".gv") || endsWith(file, ".dot")) {
    writeFile(file, graph);
    return;
  }
  const std::size_t dot = file.rfind('.');
  const std::string form = dot == std::string::npos ? "" : file.substr(dot + 1);
  if (form != "svg" && form != "png" && form != "pdf") {
    throw FileError(file, "a map is drawn as svg, png or pdf, or written as gv or dot");
  }
  // Of a name that begins with a dash, dot would make an option.
  const std::string source = writeBeside(file.front() == '-' ? "./" + file : file, graph);
  const Ending ending = run({"dot", "-T" + form, "-o" + file, source}, limit);
  const auto fail = [&source](const std::string& what) {
    throw std::runtime_error("Graphviz " + what + "; the graph is in " + source);
  };
  if (ending.error == ENOENT) fail("(dot) is not installed");
  if (ending.error != 0) fail(std::string("cannot be started: ") + FileError("dot", ending.error).what());
  if (ending.tookTooLong) fail("took longer than " + std::to_string(limit.count() / 1000) + " s");
  if (!ending.succeeded) fail("could not draw " + file);
  ::unlink(source.c_str());
}

}  // namespace qx::app

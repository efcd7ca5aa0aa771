#include "apps/vso/node/nodeCommand.h"

#include <log4cplus/loglevel.h>

#include <CLI/CLI.hpp>
#include <ctime>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/OpenFile.h"
#include "apps/vso/colour.h"
#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/meshForms.h"
#include "apps/vso/mesh/nodeTable.h"
#include "apps/vso/mesh/savedMesh.h"
#include "apps/vso/node/meshMap.h"
#include "apps/vso/printText.h"
#include "qxlogger/Logger.h"
#include "qxxml/XmlWriter.h"

namespace qx::app {

namespace {

constexpr const char* HELP = R"(Output:
  The table of vso replay. With --json an object a line for each node, with
  --xml one document with all nodes and access points, with --health the health
  reports of all nodes as one JSON object.

  --map draws the neighbour tables with Graphviz, as svg, png or pdf by the end
  of the name (gv: the graph itself): nodes in the colour of their worst light,
  dashed if they are silent, access points as octagons, links with their quality
  (0 to 255; the mean, if both ends report it).

Examples:
  vso node home/mesh.state
  vso node --json home/mesh.state | jq 'select(.state == "silent") | .euid'
  vso node --map home.svg home/mesh.state

Exit status:
  0  all is printed and drawn
  1  the file could not be read, or output or map could not be written
  2  wrong usage)";

struct Options {
  std::string file;
  bool json = false;
  bool xml = false;
  bool health = false;
  std::string map;
  std::string colour = "auto";
};

std::string xmlOf(const MeshServer& mesh) {
  std::ostringstream out;
  constexpr bool INDENT = true;
  XmlWriter writer(out, INDENT);
  writer.startElement("mesh");
  for (const auto& [euid, node] : mesh.nodes()) node.toXml(writer, "node");
  for (const auto& [euid, zap] : mesh.zaps()) zap.toXml(writer, "zap");
  writer.endElement();
  return out.str();
}

std::string textOf(MeshServer& mesh, const Options& options) {
  if (options.xml) return xmlOf(mesh);
  if (options.health) return jsonOf(mesh.health()) + "\n";
  if (!options.json) return nodeTable(mesh, isColoured(options.colour));
  std::string lines;
  for (const auto& [euid, node] : mesh.nodes()) lines += jsonOf(node) + "\n";
  return lines;
}

int show(const Options& options) try {
  Logger::setLevel(log4cplus::FATAL_LOG_LEVEL);
  MeshServer mesh(std::time(nullptr));
  SavedMesh saved = meshOfBytes(OpenFile(options.file).readAll());
  mesh.restore(std::move(saved.nodes), std::move(saved.zaps));
  mesh.look(std::time(nullptr));
  if (!options.map.empty()) drawGraph(graphOf(mesh), options.map);
  return printText(textOf(mesh, options));
} catch (const BadMesh& error) {
  std::cerr << "vso: " << options.file << ": " << error.what() << "\n";
  return ExitStatus::TROUBLE;
}

}  // namespace

void addNodeCommand(CLI::App& program, std::function<int()>& chosen) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = program.add_subcommand("node", "Show a saved mesh.");
  command->add_option("FILE", options->file, "The file mesh.state of a state folder")->option_text(" ")->required();
  CLI::Option* const json = command->add_flag("--json", options->json, "Print an object a line for each node");
  CLI::Option* const xml = command->add_flag("--xml", options->xml, "Print all as one XML document")->excludes(json);
  command->add_flag("--health", options->health, "Print the health reports as one JSON object")
      ->excludes(json)
      ->excludes(xml);
  command->add_option("--map", options->map, "Draw the mesh into this file")
      ->option_text("FILE")
      ->check([](const std::string& file) { return file.empty() ? "an empty path" : std::string(); }, "");
  addColourOption(*command, options->colour);
  command->footer(HELP);
  command->callback([options, &chosen] { chosen = [options] { return show(*options); }; });
}

}  // namespace qx::app

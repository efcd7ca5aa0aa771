// A picture of a mesh, drawn from its neighbour tables.
#pragma once

#include <chrono>
#include <string>

#include "apps/vso/mesh/MeshServer.h"

namespace qx::app {

/// The mesh as a graph in the language of Graphviz: nodes in the colour of their worst light, access points marked,
/// links with their quality. Makes a new report of each node.
std::string graphOf(MeshServer& mesh);

/// Has Graphviz draw a graph into a file, in the form that the end of its name says ("map.svg"); a file that ends in
/// ".gv" or ".dot" gets the graph itself. Throws std::runtime_error, with a text of one line, if that fails, or takes
/// longer than `limit`.
void drawGraph(const std::string& graph, const std::string& file,
               std::chrono::milliseconds limit = std::chrono::seconds(60));

}  // namespace qx::app

// The nodes of a mesh as a table for people.
#pragma once

#include <string>

#include "apps/vso/mesh/MeshServer.h"

namespace qx::app {

/// A line for each node: name (of up to 32 characters), type, short address, signal, and its three stories with their
/// lights; in colour, or in words alone. Makes a new report of each.
std::string nodeTable(MeshServer& mesh, bool isColoured);

}  // namespace qx::app

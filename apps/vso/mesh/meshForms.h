// A node and a health report in the forms in which they leave the server.
#pragma once

#include <string>

#include "vso/node/NetworkHealth.h"
#include "vso/node/ZigbeeNode.h"

namespace qx::app {

/// The main fields of a node as a JSON object of one line, and its tables with them.
std::string jsonOf(const ZigbeeNode& node);
/// A health report as a JSON object of one line.
std::string jsonOf(const NetworkHealth& health);

/// As indented XML; ends with a newline.
std::string xmlOf(const ZigbeeNode& node);
std::string xmlOf(const NetworkHealth& health);

/// As base64 of the message in a google.protobuf.Any.
std::string anyOf(const ZigbeeNode& node);
std::string anyOf(const NetworkHealth& health);

}  // namespace qx::app

#include "apps/vso/mesh/nodeWords.h"

#include <algorithm>

#include "apps/vso/cleanText.h"
#include "qxshared/hexStr.h"
#include "vso/node/NetworkHealth.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace qx::app {

namespace {

/// The word for a light, which a report has as its number.
std::string wordOf(const std::string& light) {
  if (light == std::to_string(qx::pb::green)) return "green";
  if (light == std::to_string(qx::pb::yellow)) return "yellow";
  return light == std::to_string(qx::pb::red) ? "red" : "unknown";
}

/// The value of an item of the node's report; empty if it has none of that name.
std::string valueOf(const ZigbeeNode& node, const std::string& name) {
  const auto found = node.networkHealth()->nodeHealth().find(node.lid());
  if (found == node.networkHealth()->nodeHealth().end()) return {};
  const auto item = std::find_if(found->second.begin(), found->second.end(),
                                 [&name](const NetworkHealthItem& candidate) { return candidate.name() == name; });
  return item == found->second.end() ? std::string() : item->value();
}

}  // namespace

std::string nameOf(const ZigbeeNode& node) {
  if (!node.defaultLabel()) return cleanText(node.label());
  return node.hasProduct() ? cleanText(node.product()) : node.lid().toString();
}

std::string counted(std::size_t number, const std::string& thing) {
  return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

std::string typeOf(const ZigbeeNode& node) { return node.deviceTypeStr(); }

std::string textOfAddress(unsigned short address) { return hexStr(address, sizeof address, true); }

std::string shortAddressOf(const ZigbeeNode& node) { return textOfAddress(node.sid()); }

std::string presenceOf(const ZigbeeNode& node) {
  if (!node.isOnline()) return "silent";
  return node.isAwake() ? "online" : "asleep";
}

std::array<Story, STORIES> storiesOf(const ZigbeeNode& node) {
  return {Story{valueOf(node, ZigbeeNode::REBOOT_SLIDING_AVERAGE) + "/day",
                wordOf(valueOf(node, ZigbeeNode::REBOOT_SLIDING_QUALITY))},
          Story{valueOf(node, ZigbeeNode::IRF_SLIDING_AVERAGE) + "/h",
                wordOf(valueOf(node, ZigbeeNode::IRF_SLIDING_QUALITY))},
          Story{valueOf(node, ZigbeeNode::ORF_SLIDING_AVERAGE) + "/h",
                wordOf(valueOf(node, ZigbeeNode::ORF_SLIDING_QUALITY))}};
}

std::string worstLightOf(const ZigbeeNode& node) {
  std::string worst = "green";
  for (const Story& story : storiesOf(node)) {
    if (story.light == "red" || (story.light == "yellow" && worst == "green")) worst = story.light;
  }
  return worst;
}

}  // namespace qx::app

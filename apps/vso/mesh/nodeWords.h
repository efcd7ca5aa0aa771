// What is said of a node wherever one is shown.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "vso/node/ZigbeeNode.h"

namespace qx::app {

/// What people call the node, else its product, else its long address. In UTF-8, and safe for a terminal.
std::string nameOf(const ZigbeeNode& node);

/// "1 node", "2 nodes".
std::string counted(std::size_t number, const std::string& thing);

/// "Router" and so on, as the library says it.
std::string typeOf(const ZigbeeNode& node);

/// "0x1a2b".
std::string textOfAddress(unsigned short address);
/// The same of the node's.
std::string shortAddressOf(const ZigbeeNode& node);

/// "online", "asleep" or "silent".
std::string presenceOf(const ZigbeeNode& node);

/// One of the three things that a node's health tells of: how often it happens now, and how good that is.
struct Story {
  /// "3/day".
  std::string rate;
  /// "green", "yellow" or "red".
  std::string light;
};

constexpr std::size_t STORIES = 3;
/// What the stories are of, in their order.
constexpr std::array<const char*, STORIES> STORY_HEADINGS{"REBOOTS", "INBOUND FAILURES", "OUTBOUND FAILURES"};

/// Out of the node's last report, which there is.
std::array<Story, STORIES> storiesOf(const ZigbeeNode& node);

/// The worst light of the stories.
std::string worstLightOf(const ZigbeeNode& node);

}  // namespace qx::app

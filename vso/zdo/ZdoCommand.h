// Command ids of the ZDO frames that the library builds and reads.
#pragma once

namespace qx::ZdoCommand {

// Requests (Zigbee device profile, network management client services). On the air the id travels as the cluster of
// profile 0.
constexpr unsigned short NETWORK_LQI = 0x0031;
constexpr unsigned short NETWORK_RTG = 0x0032;
constexpr unsigned short LEAVE = 0x0034;
constexpr unsigned short PERMIT_JOIN = 0x0036;
constexpr unsigned short NETWORK_UPDATE = 0x0038;

/// Set in the id of every response.
constexpr unsigned short RESPONSE = 0x8000;

}  // namespace qx::ZdoCommand

// The attributes of the maker's own clusters. Announce, SSCP and SetZap share one space of ids: an id means the same in
// all of them.
#pragma once

#include <string>

#include "vso/zcl/Attribute.h"
#include "vso/zcl/ZclType.h"

namespace qx::detail::QxAttributes {

inline constexpr Attribute<unsigned char> DEVICE_TYPE{0x0000, ZclType::UINT8};
inline constexpr Attribute<unsigned short> ANNOUNCE_WINDOW{0x0001, ZclType::UINT16};
inline constexpr Attribute<unsigned short> MTORR_PERIOD{0x0002, ZclType::UINT16};
/// How many access points a device knows, or is told to use.
inline constexpr Attribute<unsigned char> ZAP_COUNT{0x0003, ZclType::UINT8};
inline constexpr Attribute<std::string> FIRMWARE_VERSION{0x0004, ZclType::CHARACTER_STRING};
inline constexpr Attribute<unsigned char> REFLASH_VERSION{0x0005, ZclType::UINT8};
inline constexpr Attribute<unsigned short> BOOT_COUNT{0x0006, ZclType::UINT16};
inline constexpr Attribute<std::string> PRODUCT_STRING{0x0007, ZclType::CHARACTER_STRING};
inline constexpr Attribute<unsigned short> ZAP_SID{0x0008, ZclType::UINT16};
inline constexpr Attribute<Euid> ZAP_LID{0x0009, ZclType::IEEE_ADDRESS};
inline constexpr Attribute<unsigned char> ZAP_COST{0x000A, ZclType::UINT8};
inline constexpr Attribute<unsigned short> AP_POLL_INTERVAL{0x000B, ZclType::UINT16};
inline constexpr Attribute<unsigned char> CHANNEL{0x000C, ZclType::UINT8};
inline constexpr Attribute<unsigned short> PARENT_POLL_INTERVAL{0x000F, ZclType::UINT16};
/// Two bytes for each entry, a short address with its most significant byte first; its place is its index.
inline constexpr Attribute<std::string> AP_ROUTE_TABLE{0x0012, ZclType::OCTET_STRING};
inline constexpr Attribute<signed char> NODE_RSSI{0x0013, ZclType::INT8};
inline constexpr Attribute<unsigned char> NODE_LQI{0x0014, ZclType::UINT8};
inline constexpr Attribute<signed char> BATTERY_LEVEL{0x0015, ZclType::INT8};
inline constexpr Attribute<unsigned char> NODE_RADIO_BARS{0x0016, ZclType::UINT8};

}  // namespace qx::detail::QxAttributes

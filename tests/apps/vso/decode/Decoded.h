// Frames for the tests of what is made of them.
#pragma once

#include <string>

#include "apps/vso/decode/decodeFrame.h"
#include "support/Bytes.h"

namespace qx::test {

constexpr unsigned short HOME = 0x0104;
constexpr unsigned short BASIC = 0x0000;
constexpr unsigned short IDENTIFY = 0x0003;
constexpr unsigned short GROUPS = 0x0004;
constexpr unsigned short SCENES = 0x0005;
constexpr unsigned short ON_OFF = 0x0006;
constexpr unsigned short LEVEL_CONTROL = 0x0008;
constexpr unsigned short OTA_UPGRADE = 0x0019;

constexpr unsigned short QX_PRIVATE = 0xC25D;
constexpr unsigned short MESH_PARAMETERS = 0x0001;
constexpr unsigned short QX_ANNOUNCE = 0xC25F;
constexpr unsigned short ANNOUNCE = 0x0001;

constexpr unsigned short ZDO = 0x0000;

inline app::DecodedFrame decoded(unsigned short profile, unsigned short cluster, const std::string& hex) {
  return app::decodeFrame({profile, cluster, bytesOf(hex)});
}

}  // namespace qx::test

// The commands of the cluster library that the program knows by name, and what their payloads hold.
#pragma once

#include <array>

#include "apps/vso/decode/DecodedFrame.h"

namespace qx {
class ZclMessage;
}

namespace qx::app {

enum class ZclFieldKind : unsigned char {
  NONE,
  U8,
  U16,     ///< Little-endian.
  RATE,    ///< One byte, as the standard has it, or two, little-endian, as this system sends it.
  STATUS,  ///< One byte, a ZclStatus.
};

struct ZclField {
  const char* name = nullptr;
  ZclFieldKind kind = ZclFieldKind::NONE;
};

/// In the order of the payload.
using ZclFields = std::array<ZclField, 5>;

/// Bytes of a field in front of which `left` bytes of payload are left; 0 for NONE.
unsigned int fieldSize(ZclFieldKind kind, unsigned int left);

/// Reads a payload that is no plain sequence of fields.
using ZclPayloadDecoder = void (*)(const ZclMessage& frame, DecodedFrame& decoded);

enum class ZclDirection : unsigned char { EITHER, TO_SERVER, TO_CLIENT };

struct ZclCommandRow {
  /// GENERAL_COMMANDS for those that are the same for all clusters.
  int cluster;
  ZclDirection direction;
  unsigned char command;
  const char* name;
  ZclFields fields = {};
  /// In place of `fields`; null for none.
  ZclPayloadDecoder decodePayload = nullptr;
};

constexpr int GENERAL_COMMANDS = -1;

/// Null for a command that is not known.
const ZclCommandRow* findGeneralCommand(unsigned char command);
const ZclCommandRow* findClusterCommand(unsigned short cluster, bool fromServer, unsigned char command);

}  // namespace qx::app

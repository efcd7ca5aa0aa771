// A frame as it came off the air, with the ids that it travelled under.
#pragma once

#include <optional>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::app {

struct ReceivedFrame {
  unsigned short profile = 0;
  unsigned short cluster = 0;
  /// From the frame control byte on, or from the sequence number on for ZDO.
  U255Buff<unsigned char> bytes = {};
  /// Where it comes from, if that is known.
  std::optional<Euid> node = std::nullopt;
};

}  // namespace qx::app

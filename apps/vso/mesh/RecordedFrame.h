// A frame as a recording has it: when it came, from whom, and what it says.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::app {

struct RecordedFrame {
  /// Frames of the network layer have no profile, and stand under this one: `cluster` is the command's id then.
  static constexpr unsigned short NETWORK_LAYER = 0xFFFF;

  /// Seconds since 1970.
  std::time_t time = 0;
  Euid source = {};
  unsigned short shortAddress = 0;
  unsigned short profile = 0;
  unsigned short cluster = 0;
  U255Buff<unsigned char> bytes = {};

  /// True if it comes later than another clock may be ahead of this one, a minute. A node would count as heard for as
  /// long.
  bool isToCome() const;
};

/// Reads a line "time euid short-address profile cluster hex", without its line end:
///
///   1700000000 0011223344556677 0x1a2b 0x0104 6 18 05 01 00 00 00 10 01   # a comment
///
/// Numbers are in C notation, the time may be "now" in place of the seconds, and the bytes may have blanks between
/// them. Nothing for a line that is blank or a comment. Throws BadArgument, with a text that names the part that does
/// not do.
std::optional<RecordedFrame> parseRecordedFrame(const std::string& line);

}  // namespace qx::app

// One line of input: what it says, or why it cannot be read.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "apps/vso/decode/ReceivedFrame.h"

namespace qx::app {

/// Blank, or nothing but a comment.
struct EmptyLine {};

struct UnreadableLine {
  /// One line, safe for a terminal whatever the input.
  std::string reason;
  /// The digits as the line has them, if it got that far. Any bytes.
  std::optional<std::string> hex;
};

using FrameLine = std::variant<EmptyLine, ReceivedFrame, UnreadableLine>;

/// Reads a line in one of two forms, without its line end (a carriage return counts as a blank):
///
///   0x0104 6 18 05 01 00 00 00 10 01                                   # profile, cluster, bytes; a comment
///   {"profile": 260, "cluster": "0x0006", "hex": "1805010000001001"}   # (no comment here)
///
/// The second form may have a key "euid" with the 16 digits of the node's address; other keys are ignored.
///
/// Numbers are in C notation, JSON numbers as JSON has them, and lie within 0 to 0xFFFF. The digits of the bytes may be
/// of either case and have blanks anywhere between them. The first form has at least one byte, the second may have
/// none ("hex": "").
FrameLine parseFrameLine(const std::string& line);

}  // namespace qx::app

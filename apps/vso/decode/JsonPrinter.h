// Frames as JSON, one object a line.
#pragma once

#include "apps/vso/decode/FramePrinter.h"

namespace qx::app {

/// Numbers are numbers. Bytes of a frame that are no UTF-8 are replaced by U+FFFD, and whatever is not printable ASCII
/// is escaped, so that each line is valid JSON and safe for a terminal.
///
/// In `header` a field is null that the frame does not have: `manufacturerCode` without one, `name` of an unknown
/// command, and all that a frame is too short for. `attributes` stands in every command with a list of them; in a
/// record what it does not carry is absent, and so is a `value` that does not print. `fields` and `readings` are absent
/// where there are none. A line that cannot be read gives its `hex` (null if there is none) and the reason as `error`.
class JsonPrinter : public FramePrinter {
 public:
  std::string print(const DecodedFrame& frame) const override;
  std::string print(const UnreadableLine& line) const override;
};

}  // namespace qx::app

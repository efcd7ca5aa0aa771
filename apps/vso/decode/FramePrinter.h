// How a decoded frame is shown.
#pragma once

#include <string>

#include "apps/vso/decode/DecodedFrame.h"
#include "apps/vso/decode/FrameLine.h"

namespace qx::app {

class FramePrinter {
 public:
  FramePrinter() = default;
  FramePrinter(const FramePrinter&) = delete;
  FramePrinter& operator=(const FramePrinter&) = delete;
  virtual ~FramePrinter() = default;

  /// Whole lines.
  virtual std::string print(const DecodedFrame& frame) const = 0;
  /// What stands in the output for a line that cannot be read, maybe nothing: the reason is reported elsewhere too.
  virtual std::string print(const UnreadableLine& line) const = 0;
};

}  // namespace qx::app

// Frames as text for people.
#pragma once

#include "apps/vso/decode/FramePrinter.h"

namespace qx::app {

/// One block of lines for each frame: a heading with its bytes, and indented below it a line for each thing that is
/// known. Bytes that are not printable ASCII are shown as \xNN and the like, so that no frame can play with a terminal.
/// A line that cannot be read shows nothing.
class TextPrinter : public FramePrinter {
 public:
  enum class Colour { NONE, ANSI };

  explicit TextPrinter(Colour colour) : colour_(colour) {}

  std::string print(const DecodedFrame& frame) const override;
  std::string print(const UnreadableLine& line) const override;

 private:
  Colour colour_;
};

}  // namespace qx::app

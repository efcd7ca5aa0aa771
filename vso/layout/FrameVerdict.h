// Whether a frame is whole, and if not, where it stops making sense.
#pragma once

#include <iosfwd>
#include <string>

#include "vso/identifiers/U255Buff.h"

namespace qx {

/// What a look at a frame's structure found. The readers of the message classes answer from a broken frame as well as
/// they can; what is behind `byte` is then not to be believed. Of a whole frame a reader may still see less, or
/// something else, where its comment says so: a group's name of 16 characters, the extensions of a scene with a name.
struct FrameVerdict {
  enum State : int {
    WHOLE,    ///< Every field is there, and nothing else.
    BROKEN,   ///< At `byte` the frame stops making sense.
    UNKNOWN,  ///< The header is whole, and from `byte` on nothing is known of what should be there.
  };

  State state = WHOLE;
  /// Offset in the frame.
  unsigned int byte = 0;
  /// The first thing that is wrong: "neighbour 4 of 25 runs past the end". Empty for a whole frame. In it, numbers and
  /// names of fields alone come from the frame.
  std::string what;

  /// "whole", or `what` and the byte: "neighbour 4 of 25 runs past the end at byte 71".
  std::string toString() const;
};

bool operator==(const FrameVerdict& a, const FrameVerdict& b);
std::ostream& operator<<(std::ostream& out, const FrameVerdict& verdict);

/// Looks at a frame that travelled under these ids, from the frame control byte on; under profile 0, which is ZDO, the
/// cluster is the command, and the frame begins with its sequence number. Allocates only for a frame that is not whole.
///
/// A type outside of ZclType in a list of attributes breaks the frame: the walk over the records goes on right behind
/// the type, and what it finds from there on is anybody's guess. Commands that are not known, and those whose payload
/// is not, are UNKNOWN.
FrameVerdict judgeFrame(unsigned short profile, unsigned short cluster, const U255Buff<unsigned char>& frame);

}  // namespace qx

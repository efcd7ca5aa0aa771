// What holds for every frame whatever its bytes are, for tests and fuzz targets that make the bytes.
#pragma once

#include "vso/identifiers/U255Buff.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

/// Takes the bytes through every class of a frame, every reader, every builder of a list and every append operation,
/// and compares the lists with a second decoder, which knows no more than the rules. Throws std::logic_error with the
/// claim that does not hold.
void requireFrameProperties(const U255Buff<unsigned char>& bytes);

/// The part of it that holds for frames that no constructor makes, such as one whose `length_` was set beyond the
/// storage: what header and lists say.
void requireReaderProperties(const ZclMessage& frame);

}  // namespace qx::test

// The payloads of the general commands that carry lists of attributes.
#pragma once

#include "vso/layout/CommandLayout.h"

namespace qx {
class ZclMessage;
}

namespace qx::app {

struct DecodedFrame;

/// Fills in `attributes` with what the library reads from a list of this kind; leaves them absent for any other kind.
void decodeAttributeList(FieldKind kind, const ZclMessage& frame, DecodedFrame& decoded);

}  // namespace qx::app

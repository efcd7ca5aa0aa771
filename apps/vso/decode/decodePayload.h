// The payload of a command, by its layout.
#pragma once

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/identifiers/U255Buff.h"
#include "vso/layout/CommandLayout.h"

namespace qx::app {

/// Fills in the fields, lists and tables that lie wholly within the frame from its `payloadOffset` on, and what is left
/// of it. `layout` is null for a command that is not known.
void decodePayload(const CommandLayout* layout, const U255Buff<unsigned char>& frame, unsigned int payloadOffset,
                   DecodedFrame& decoded);

}  // namespace qx::app

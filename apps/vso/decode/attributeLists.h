// The payloads of the general commands that carry lists of attributes.
#pragma once

namespace qx {
class ZclMessage;
}

namespace qx::app {

struct DecodedFrame;

// Each fills in `attributes` with what the library reads from the list.

void decodeAttributeIds(const ZclMessage& frame, DecodedFrame& decoded);
void decodeReadResponses(const ZclMessage& frame, DecodedFrame& decoded);
void decodeWrites(const ZclMessage& frame, DecodedFrame& decoded);
void decodeWriteResponses(const ZclMessage& frame, DecodedFrame& decoded);
void decodeReports(const ZclMessage& frame, DecodedFrame& decoded);

}  // namespace qx::app

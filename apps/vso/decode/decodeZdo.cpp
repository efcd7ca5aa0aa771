#include "apps/vso/decode/decodeZdo.h"

#include "apps/vso/decode/decodePayload.h"
#include "vso/layout/ZdoCommandLayouts.h"
#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx::app {

namespace {

constexpr unsigned int SEQUENCE_SIZE = 1;
constexpr unsigned int STATUS_SIZE = 1;

}  // namespace

void decodeZdo(const ReceivedFrame& received, DecodedFrame& decoded) {
  const CommandLayout* const layout = findZdoCommand(received.cluster);
  const ZdoResponse response(received.cluster, received.bytes);
  ZdoHeader header;
  if (response.length_ >= SEQUENCE_SIZE) header.sequence = response.seqNum();
  header.isResponse = (received.cluster & ZdoCommand::RESPONSE) != 0;
  if (header.isResponse && response.length_ >= SEQUENCE_SIZE + STATUS_SIZE) {
    header.status = response.status();
  }
  decoded.header = header;
  if (layout == nullptr) {
    decodePayload(nullptr, received.bytes, SEQUENCE_SIZE + (header.status ? STATUS_SIZE : 0), decoded);
    return;
  }
  decoded.clusterName = layout->name;
  decodePayload(layout, received.bytes, SEQUENCE_SIZE, decoded);
  // The status of a response is in the header.
  if (header.status) decoded.fields.erase(decoded.fields.begin());
}

}  // namespace qx::app

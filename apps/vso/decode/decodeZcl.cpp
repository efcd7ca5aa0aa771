#include "apps/vso/decode/decodeZcl.h"

#include "apps/vso/decode/ZclClusters.h"
#include "apps/vso/decode/ZclCommands.h"
#include "apps/vso/decode/undecodedBytes.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::app {

namespace {

ZclFrameType frameType(const ZclMessage& frame) {
  if (frame.affectsEntireProfile()) return ZclFrameType::GENERAL;
  return frame.affectsSpecificCluster() ? ZclFrameType::CLUSTER_SPECIFIC : ZclFrameType::RESERVED;
}

/// The header without the command's name.
ZclHeader readHeader(const ZclMessage& frame) {
  constexpr unsigned int MANUFACTURER_CODE_END = 3;
  const unsigned int length = frame.length_;
  ZclHeader header;
  if (length == 0) return header;
  header.frameControl = FrameReader(frame).u8();
  header.frameType = frameType(frame);
  header.manufacturerSpecific = frame.isManufacturerSpecific();
  header.fromServer = frame.isCommandFromServer();
  header.defaultResponseDisabled = frame.defaultResponseDisabled();
  if (header.manufacturerSpecific && length >= MANUFACTURER_CODE_END)
    header.manufacturerCode = frame.manufacturerCode();
  // The sequence number and the command are the last two bytes of either header.
  if (length >= frame.headerLength() - 1) header.sequence = frame.transactionSequenceNumber();
  if (length >= frame.headerLength()) header.command = frame.commandIdentifier();
  return header;
}

const ZclCommandRow* commandOf(const ZclHeader& header, const ZclClusterRow* cluster) {
  switch (header.frameType) {
    case ZclFrameType::GENERAL:
      return findGeneralCommand(*header.command);
    case ZclFrameType::CLUSTER_SPECIFIC:
      if (cluster == nullptr || header.manufacturerSpecific) return nullptr;
      return findClusterCommand(cluster->cluster, header.fromServer, *header.command);
    case ZclFrameType::RESERVED:
      break;
  }
  return nullptr;
}

/// Reads the fields that lie wholly within the payload, and leaves `in` behind the last of them.
void readFields(const ZclFields& fields, FrameReader& in, DecodedFrame& decoded) {
  for (const ZclField& field : fields) {
    const unsigned int size = fieldSize(field.kind, in.left());
    if (size == 0 || size > in.left()) return;
    NamedValue value{field.name, size == 1 ? static_cast<unsigned int>(in.u8()) : in.u16le()};
    if (field.kind == ZclFieldKind::STATUS) {
      value.meaning = ZclMessage::zclStatusToStr(static_cast<ZclStatus>(std::get<unsigned int>(value.value)));
    }
    decoded.fields.push_back(value);
  }
}

}  // namespace

void decodeZcl(const ReceivedFrame& received, DecodedFrame& decoded) {
  const ZclMessage frame(received.bytes);
  const ZclClusterRow* const cluster = findCluster(received.profile, received.cluster);
  ZclHeader header = readHeader(frame);
  decoded.headerLength = frame.headerLength();
  if (cluster != nullptr) decoded.clusterName = cluster->name;
  if (header.command) {
    const ZclCommandRow* const command = commandOf(header, cluster);
    if (command != nullptr) header.name = command->name;
    if (command != nullptr && command->decodePayload != nullptr) {
      command->decodePayload(frame, decoded);
    } else {
      FrameReader in = frame.payload();
      if (command != nullptr) readFields(command->fields, in, decoded);
      decoded.undecoded = undecodedBytes(in);
    }
    // The library's readers go by the command alone and would take the payload of a cluster's own command for a list.
    const bool clusterAttributes = header.frameType == ZclFrameType::GENERAL && !header.manufacturerSpecific;
    if (cluster != nullptr && cluster->addReadings != nullptr && clusterAttributes) {
      cluster->addReadings(received.bytes, decoded.readings);
    }
  }
  decoded.header = header;
}

}  // namespace qx::app

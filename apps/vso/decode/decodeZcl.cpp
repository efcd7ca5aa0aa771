#include "apps/vso/decode/decodeZcl.h"

#include "apps/vso/decode/ZclClusters.h"
#include "apps/vso/decode/decodePayload.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/layout/ZclCommandLayouts.h"
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

}  // namespace

void decodeZcl(const ReceivedFrame& received, DecodedFrame& decoded) {
  const ZclMessage frame(received.bytes);
  const ZclClusterRow* const cluster = findCluster(received.profile, received.cluster);
  ZclHeader header = readHeader(frame);
  if (cluster != nullptr) decoded.clusterName = cluster->name;
  if (header.command) {
    const CommandLayout* const layout = findZclCommand(received.profile, received.cluster, frame);
    if (layout != nullptr) header.name = layout->name;
    decodePayload(layout, frame, frame.headerLength(), decoded);
    // The library's readers go by the command alone and would take the payload of a cluster's own command for a list,
    // and a manufacturer's attribute for the cluster's.
    const bool clusterAttributes = decoded.attributes && !header.manufacturerSpecific;
    if (cluster != nullptr && cluster->addReadings != nullptr && clusterAttributes) {
      cluster->addReadings(received.bytes, decoded);
    }
  }
  decoded.header = header;
}

}  // namespace qx::app

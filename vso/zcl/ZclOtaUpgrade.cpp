#include "vso/zcl/ZclOtaUpgrade.h"

#include "vso/zcl/Attribute.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

using boost::logic::indeterminate;
using boost::logic::tribool;

namespace {

constexpr detail::Attribute<unsigned int> FILE_VERSION{ZclOtaUpgrade::CURRENT_FILE_VERSION, ZclType::UINT32};
constexpr detail::Attribute<unsigned char> UPGRADE_STATUS{ZclOtaUpgrade::IMAGE_UPGRADE_STATUS, ZclType::UINT8};
constexpr detail::Attribute<unsigned short> MANUFACTURER{ZclOtaUpgrade::MANUFACTURER_ID, ZclType::UINT16};
constexpr detail::Attribute<unsigned short> IMAGE_TYPE{ZclOtaUpgrade::IMAGE_TYPE_ID, ZclType::UINT16};

// Bytes of the payloads, without the fields that may be missing.
constexpr unsigned int QUERY_NEXT_IMAGE_REQUEST_SIZE = 9;
constexpr unsigned int IMAGE_BLOCK_REQUEST_SIZE = 14;
constexpr unsigned int IMAGE_PAGE_REQUEST_SIZE = 18;
constexpr unsigned int IMAGE_BLOCK_RESPONSE_SIZE = 14;
constexpr unsigned int UPGRADE_END_REQUEST_SIZE = 9;
constexpr unsigned int UPGRADE_END_RESPONSE_SIZE = 16;
constexpr unsigned int HARDWARE_VERSION_SIZE = 2;
constexpr unsigned int BLOCK_PERIOD_SIZE = 2;
constexpr unsigned int ADDRESS_SIZE = sizeof(OtaNodeAddress);

template <typename Record>
void readImage(FrameReader& in, Record& record) {
  record.manufacturerCode = in.u16le();
  record.imageType = in.u16le();
  record.fileVersion = in.u32le();
}

void readAddress(FrameReader& in, OtaNodeAddress& address) { in.bytes(address.data(), ADDRESS_SIZE); }

/// True if a read attributes response has the attribute in its own type; `value` is then what its first such record
/// holds.
template <typename T>
bool readResponse(const ZclMessage& frame, const detail::Attribute<T>& attribute, T& value) {
  detail::AttributeWalk walk(frame, detail::RecordLayout::STATUS_VALUE);
  while (walk.find(attribute.id)) {
    if (walk.value().type() != attribute.type) continue;
    value = static_cast<T>(ZclMessage::toUint32(walk.value().readable()));
    return true;
  }
  return false;
}

}  // namespace

ZclOtaUpgrade::ZclOtaUpgrade(const std::vector<unsigned short>& attributeIds)
    : ZclMessage(ZclGeneralCommand::READ_ATTRIBUTES, false, false) {
  setFcf(FROM_SERVER);
  setCid(ZclGeneralCommand::READ_ATTRIBUTES);
  setReadAttributes(attributeIds);
}

short ZclOtaUpgrade::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclOtaUpgrade::getClusterId() const { return CLUSTER_ID; }

void ZclOtaUpgrade::queryNextImageResponse(const QueryNextImageResponse& response) {
  FrameWriter out = morePayload();
  out.u8(response.status);
  if (response.status == ZCL_SUCCESS) {
    writeImage(out, response);
    out.u32le(response.imageSize);
  }
  endPayload(out);
}

void ZclOtaUpgrade::sendUpgradeEndRequest(const UpgradeEndRequest& request) {
  FrameWriter out = morePayload();
  out.u8(request.status);
  writeImage(out, request);
  endPayload(out);
}

void ZclOtaUpgrade::upgradeEndResponse(const UpgradeEndResponse& response) {
  FrameWriter out = morePayload();
  writeImage(out, response);
  out.u32le(response.currentTime);
  out.u32le(response.upgradeTime);
  endPayload(out);
}

void ZclOtaUpgrade::imageNotify(const ImageNotifyCommand& command) {
  FrameWriter out = morePayload();
  out.u8(command.payloadType);
  out.u8(command.queryJitter);
  if (command.payloadType >= ImageNotifyCommand::WITH_MANUFACTURER_CODE) out.u16le(command.manufacturerCode);
  if (command.payloadType >= ImageNotifyCommand::WITH_IMAGE_TYPE) out.u16le(command.imageType);
  if (command.payloadType >= ImageNotifyCommand::WITH_FILE_VERSION) out.u32le(command.fileVersion);
  endPayload(out);
}

void ZclOtaUpgrade::sendUnsupportedCommand(unsigned char commandId) {
  initMessage(ZclGeneralCommand::DEFAULT_RESPONSE, false, false);
  setFcf(FROM_SERVER);
  addByte(commandId);
  addByte(ZCL_UNSUP_CLUSTER_COMMAND);
}

void ZclOtaUpgrade::getOtaAttributes() {
  setFcf(FROM_SERVER);
  setCid(ZclGeneralCommand::READ_ATTRIBUTES);
  addUint16(CURRENT_FILE_VERSION);
  addUint16(MANUFACTURER_ID);
  addUint16(IMAGE_TYPE_ID);
}

void ZclOtaUpgrade::getOtaUpgradeStatus() {
  setFcf(FROM_SERVER);
  setCid(ZclGeneralCommand::READ_ATTRIBUTES);
  addUint16(IMAGE_UPGRADE_STATUS);
}

tribool ZclOtaUpgrade::queryNextImageRequest(QueryNextImageRequest& request) const {
  if (!isCommand(QUERY_NEXT_IMAGE_REQUEST) || !isPayloadOf(QUERY_NEXT_IMAGE_REQUEST_SIZE)) return indeterminate;
  FrameReader in = payloadOf(QUERY_NEXT_IMAGE_REQUEST_SIZE + HARDWARE_VERSION_SIZE);
  request.fieldControl = in.u8();
  readImage(in, request);
  if ((request.fieldControl & QueryNextImageRequest::HAS_HARDWARE_VERSION) == 0) {
    request.hardwareVersion = 0;
    return true;
  }
  if (!isPayloadOf(QUERY_NEXT_IMAGE_REQUEST_SIZE + HARDWARE_VERSION_SIZE)) return indeterminate;
  request.hardwareVersion = in.u16le();
  return true;
}

tribool ZclOtaUpgrade::imageBlockRequest(ImageBlockRequest& request) const {
  constexpr unsigned int LARGEST = IMAGE_BLOCK_REQUEST_SIZE + ADDRESS_SIZE + BLOCK_PERIOD_SIZE;
  if (!isCommand(IMAGE_BLOCK_REQUEST) || !isPayloadOf(IMAGE_BLOCK_REQUEST_SIZE, LARGEST)) return indeterminate;
  FrameReader in = payloadOf(LARGEST);
  const unsigned char fieldControl = in.u8();
  const bool hasAddress = (fieldControl & ImageBlockRequest::HAS_REQUEST_NODE_ADDRESS) != 0;
  const bool hasPeriod = (fieldControl & ImageBlockRequest::HAS_MINIMUM_BLOCK_PERIOD) != 0;
  const unsigned int optional = (hasAddress ? ADDRESS_SIZE : 0) + (hasPeriod ? BLOCK_PERIOD_SIZE : 0);
  if (!isPayloadOf(IMAGE_BLOCK_REQUEST_SIZE + optional)) return indeterminate;
  request.fieldControl = fieldControl;
  readImage(in, request);
  request.fileOffset = in.u32le();
  request.maximumDataSize = in.u8();
  request.requestNodeAddress.fill(0);
  if (hasAddress) readAddress(in, request.requestNodeAddress);
  request.minimumBlockPeriod = hasPeriod ? in.u16le() : 0;
  return true;
}

tribool ZclOtaUpgrade::imagePageRequest(ImagePageRequest& request) const {
  if (!isCommand(IMAGE_PAGE_REQUEST)) return indeterminate;
  if (!isPayloadOf(IMAGE_PAGE_REQUEST_SIZE, IMAGE_PAGE_REQUEST_SIZE + ADDRESS_SIZE)) return indeterminate;
  FrameReader in = payloadOf(IMAGE_PAGE_REQUEST_SIZE + ADDRESS_SIZE);
  request.fieldControl = in.u8();
  readImage(in, request);
  request.fileOffset = in.u32le();
  request.maximumDataSize = in.u8();
  request.pageSize = in.u16le();
  request.responseSpacing = in.u16le();
  request.requestNodeAddress.fill(0);
  if ((request.fieldControl & ImagePageRequest::HAS_REQUEST_NODE_ADDRESS) != 0) {
    readAddress(in, request.requestNodeAddress);
  }
  return true;
}

tribool ZclOtaUpgrade::upgradeEndRequest(UpgradeEndRequest& request) const {
  if (!isCommand(UPGRADE_END_REQUEST)) return indeterminate;
  if (!isPayloadOf(UPGRADE_END_REQUEST_SIZE, UPGRADE_END_REQUEST_SIZE)) return indeterminate;
  FrameReader in = payloadOf(UPGRADE_END_REQUEST_SIZE);
  request.status = in.u8();
  readImage(in, request);
  return true;
}

tribool ZclOtaUpgrade::readAttributesResponseManufacturer(unsigned short& manufacturer) {
  return readResponse(*this, MANUFACTURER, manufacturer);
}

tribool ZclOtaUpgrade::readAttributesResponseImageTypeId(unsigned short& imageType) {
  return readResponse(*this, IMAGE_TYPE, imageType);
}

tribool ZclOtaUpgrade::readAttributesResponseFwv(unsigned int& firmwareVersion) {
  return readResponse(*this, FILE_VERSION, firmwareVersion);
}

tribool ZclOtaUpgrade::readAttributesResponseImageUpgradeStatus(unsigned char& status) {
  return readResponse(*this, UPGRADE_STATUS, status);
}

tribool ZclOtaUpgrade::testingImageBlockResponse(ImageBlockResponse& response) const {
  if (!isCommand(IMAGE_BLOCK_RESPONSE) || !isPayloadOf(IMAGE_BLOCK_RESPONSE_SIZE)) return indeterminate;
  FrameReader in = payloadOf(IMAGE_BLOCK_RESPONSE_SIZE);
  response.status = in.u8();
  readImage(in, response);
  response.fileOffset = in.u32le();
  response.dataSize = in.u8();
  return true;
}

void ZclOtaUpgrade::testingImagePageRequest(ImagePageRequest& request) {
  FrameWriter out = morePayload();
  out.u8(request.fieldControl);
  writeImage(out, request);
  out.u32le(request.fileOffset);
  out.u8(request.maximumDataSize);
  out.u16le(request.pageSize);
  out.u16le(request.responseSpacing);
  if ((request.fieldControl & ImagePageRequest::HAS_REQUEST_NODE_ADDRESS) != 0) {
    out.bytes(request.requestNodeAddress.data(), ADDRESS_SIZE);
  }
  endPayload(out);
}

tribool ZclOtaUpgrade::testingUpgradeEndResponse(UpgradeEndResponse& response) const {
  if (!isCommand(UPGRADE_END_RESPONSE)) return indeterminate;
  if (!isPayloadOf(UPGRADE_END_RESPONSE_SIZE, UPGRADE_END_RESPONSE_SIZE)) return indeterminate;
  FrameReader in = payloadOf(UPGRADE_END_RESPONSE_SIZE);
  readImage(in, response);
  response.currentTime = in.u32le();
  response.upgradeTime = in.u32le();
  return true;
}

}  // namespace qx

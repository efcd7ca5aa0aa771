#include "vso/zcl/ZclMessage.h"

#include <log4cplus/logger.h>

#include <algorithm>
#include <stdexcept>

#include "qxshared/AssertWrite.h"
#include "qxshared/StackTrace.h"
#include "vso/identifiers/hexify.h"
#include "vso/logging/Log.h"
#include "vso/zcl/ZclGeneralCommand.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

}  // namespace

unsigned char ZclMessage::transactionSequenceNumber_ = 0;

ZclMessage::ZclMessage(const std::string& hex) {
  const std::size_t bytes = hex.size() / 2;
  if (bytes <= CAPACITY) {
    deHexify(hex, contents, CAPACITY);
    length_ = static_cast<unsigned int>(bytes);
  }
  takeFlagsFromFrameControl();
}

void ZclMessage::prepareQxCustomMessage(unsigned char frameControl, unsigned char commandId, bool clusterSpecific) {
  manufacturerSpecific_ = true;
  clusterSpecific_ = clusterSpecific;
  setFcf(frameControl);
  setMc(QX_MANUFACTURER_CODE);
  setCid(commandId);
  length_ = headerLength();
}

short ZclMessage::getProfileId() const { return 0xFF; }
short ZclMessage::getClusterId() const { return -1; }

bool ZclMessage::isReadAttributesResponse() const {
  return commandIdentifier() == ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE;
}
bool ZclMessage::isWriteAttributesResponse() const {
  return commandIdentifier() == ZclGeneralCommand::WRITE_ATTRIBUTES_RESPONSE;
}
bool ZclMessage::isReportAttributes() const { return commandIdentifier() == ZclGeneralCommand::REPORT_ATTRIBUTES; }

void ZclMessage::disableDefaultResponse() {
  if (!defaultResponseDisabled()) setFcf(readByte(FRAME_CONTROL_OFFSET) | DISABLE_DEFAULT_RESPONSE);
}

unsigned short ZclMessage::manufacturerCode() const {
  return manufacturerSpecific_ ? FrameReader(*this, MANUFACTURER_CODE_OFFSET).u16le() : 0;
}

void ZclMessage::setMc(unsigned short code) {
  if (!manufacturerSpecific_) AssertWrite("ZclMessage", __LINE__, StackTrace());
  FrameWriter(*this, MANUFACTURER_CODE_OFFSET).u16le(code);
}

void ZclMessage::addByte(unsigned char value) {
  FrameWriter out(*this, length_);
  out.u8(value);
  endPayload(out);
}

void ZclMessage::addUint16(unsigned short value) {
  FrameWriter out(*this, length_);
  out.u16le(value);
  endPayload(out);
}

void ZclMessage::addUint32(unsigned int value) {
  FrameWriter out(*this, length_);
  out.u32le(value);
  endPayload(out);
}

void ZclMessage::addString(const std::string& text) {
  FrameWriter out(*this, length_);
  out.u8(static_cast<unsigned char>(text.size()));
  // More than a frame's worth is dropped anyway, and the count of dropped bytes need not be exact beyond that.
  out.bytes(reinterpret_cast<const unsigned char*>(text.data()),
            static_cast<unsigned int>(std::min<std::size_t>(text.size(), 0xFFFF)));
  endPayload(out);
}

void ZclMessage::setCountedIds(const std::vector<unsigned short>& ids) {
  FrameWriter out = newPayload();
  endPayload(out);
  if (headerLength() + 2 * ids.size() + 1 > CAPACITY) throw std::runtime_error("Too many ids to fit in packet");
  out.u8(static_cast<unsigned char>(ids.size()));
  for (const unsigned short id : ids) out.u16le(id);
  endPayload(out);
}

void ZclMessage::warnOfLength() const {
  VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "ZclMessage::isValidLength: Invalid ZCL packet length: " << length_);
}

void ZclMessage::warnOfOverflow(unsigned int dropped) const {
  VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
          "ZclMessage::endPayload: Frame is full, bytes dropped: " << dropped << ", command: "
                                                                   << static_cast<int>(readByte(commandOffset())));
}

}  // namespace qx

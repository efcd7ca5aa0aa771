#include "vso/zcl/AttributeReading.h"

#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::detail {

namespace {

void convert(const AttributeValue& value, bool& out) { out = value.firstByte() == 1; }
void convert(const AttributeValue& value, unsigned char& out) { out = value.firstByte(); }
void convert(const AttributeValue& value, unsigned short& out) { out = value.firstUint16(); }

}  // namespace

template <typename T>
ZclReading<T> readAttribute(const ZclMessage& frame, unsigned short id) {
  ZclReading<T> reading;
  RecordLayout layout;
  switch (frame.commandIdentifier()) {
    case ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE:
      layout = RecordLayout::STATUS_VALUE;
      break;
    case ZclGeneralCommand::REPORT_ATTRIBUTES:
      layout = RecordLayout::VALUE;
      break;
    default:
      return reading;
  }
  AttributeWalk walk(frame, layout);
  while (walk.next()) {
    if (walk.id() == id && walk.status() == ZCL_SUCCESS) {
      convert(walk.value(), reading.value);
      reading.state = ZclReading<T>::ANSWERED;
      break;
    }
  }
  return reading;
}

template ZclReading<bool> readAttribute(const ZclMessage&, unsigned short);
template ZclReading<unsigned char> readAttribute(const ZclMessage&, unsigned short);
template ZclReading<unsigned short> readAttribute(const ZclMessage&, unsigned short);

ZclReading<bool> wroteAttribute(const ZclMessage& frame, unsigned short id) {
  if (frame.isWriteAttributesResponse()) {
    for (AttributeWalk walk(frame, RecordLayout::STATUS_ID); walk.next();) {
      if (walk.id() == id && walk.status() == ZCL_SUCCESS) return {true, ZclReading<bool>::ANSWERED};
    }
  }
  return {};
}

}  // namespace qx::detail

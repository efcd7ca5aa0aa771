#include "vso/zcl/Attribute.h"

#include <algorithm>

#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::detail {

namespace {

void convert(const AttributeValue& value, unsigned char& out) { out = value.firstByte(); }
void convert(const AttributeValue& value, signed char& out) { out = static_cast<signed char>(value.firstByte()); }
void convert(const AttributeValue& value, unsigned short& out) { out = value.firstUint16(); }
void convert(const AttributeValue& value, Euid& out) { out = ZclMessage::toEuid(value.readable()); }
void convert(const AttributeValue& value, std::string& out) { out = textOf(value.readable()); }

void store(AttributeRecordData::Data& data, unsigned char value) { ZclMessage::toData8(data, value); }
void store(AttributeRecordData::Data& data, signed char value) {
  ZclMessage::toData8(data, static_cast<unsigned char>(value));
}
void store(AttributeRecordData::Data& data, unsigned short value) { ZclMessage::toData16(data, value); }
void store(AttributeRecordData::Data& data, const Euid& value) { ZclMessage::toData(data, value); }
void store(AttributeRecordData::Data& data, const std::string& value) { ZclMessage::toData(data, value); }

}  // namespace

template <typename T>
T readFirst(const ZclMessage& frame, RecordLayout layout, const Attribute<T>& attribute) {
  T value{};
  AttributeWalk walk(frame, layout);
  if (walk.find(attribute.id)) convert(walk.value(), value);
  return value;
}

template unsigned char readFirst(const ZclMessage&, RecordLayout, const Attribute<unsigned char>&);
template signed char readFirst(const ZclMessage&, RecordLayout, const Attribute<signed char>&);
template unsigned short readFirst(const ZclMessage&, RecordLayout, const Attribute<unsigned short>&);
template Euid readFirst(const ZclMessage&, RecordLayout, const Attribute<Euid>&);
template std::string readFirst(const ZclMessage&, RecordLayout, const Attribute<std::string>&);

std::string textOf(const AttributeRecordData::Data& data, unsigned int from) {
  const auto* const begin = data.begin() + from;
  return {begin, std::find(begin, data.end(), '\0')};
}

template <typename T>
AttributeRecordData recordOf(const Attribute<T>& attribute, const T& value) {
  AttributeRecordData record;
  record.id_ = attribute.id;
  record.type_ = attribute.type;
  store(record.data_, value);
  return record;
}

template AttributeRecordData recordOf(const Attribute<unsigned char>&, const unsigned char&);
template AttributeRecordData recordOf(const Attribute<signed char>&, const signed char&);
template AttributeRecordData recordOf(const Attribute<unsigned short>&, const unsigned short&);
template AttributeRecordData recordOf(const Attribute<Euid>&, const Euid&);
template AttributeRecordData recordOf(const Attribute<std::string>&, const std::string&);

}  // namespace qx::detail

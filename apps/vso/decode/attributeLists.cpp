#include "apps/vso/decode/attributeLists.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/identifiers/hexify.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclType.h"

namespace qx::app {

namespace {

/// The list readers leave an octet string as hexadecimal text, and it prints from its bytes behind their number.
void makePrintable(AttributeRecordData& record) {
  if (record.type_ != ZclType::OCTET_STRING) return;
  const std::string digits(record.data_.begin(), std::find(record.data_.begin(), record.data_.end(), '\0'));
  record.data_.fill(0);
  record.data_[0] = static_cast<unsigned char>(digits.size() / 2);
  deHexify(digits, record.data_.data() + 1, AttributeRecordData::DATA_SIZE - 1);
}

DecodedAttributeValue valueOf(AttributeRecordData record) {
  makePrintable(record);
  DecodedAttributeValue value;
  value.type = record.type_;
  std::string text;
  if (!record.valueToString(text)) value.text = text;
  std::ostringstream printed;
  record.print(printed);
  value.record = printed.str();
  return value;
}

DecodedAttribute attributeOf(unsigned short id) { return {id, std::nullopt, std::nullopt}; }
DecodedAttribute attributeOf(const WriteAttributeReportRecord& record) {
  return {record.id_, record.status_, std::nullopt};
}
DecodedAttribute attributeOf(const ReadAttributeStatusRecord& record) {
  // A record that reports a failure has no value: it shows that of the record before it.
  if (record.status_ != ZCL_SUCCESS) return {record.id_, record.status_, std::nullopt};
  return {record.id_, record.status_, valueOf(record)};
}
DecodedAttribute attributeOf(const AttributeRecordData& record) { return {record.id_, std::nullopt, valueOf(record)}; }

template <typename Record>
void decodeList(const ZclMessage& frame, void (ZclMessage::*get)(std::vector<Record>&) const, DecodedFrame& decoded) {
  std::vector<Record> records;
  (frame.*get)(records);
  std::vector<DecodedAttribute>& attributes = decoded.attributes.emplace();
  attributes.reserve(records.size());
  for (const Record& record : records) attributes.push_back(attributeOf(record));
}

}  // namespace

void decodeAttributeList(FieldKind kind, const ZclMessage& frame, DecodedFrame& decoded) {
  switch (kind) {
    case FieldKind::ATTRIBUTE_IDS:
      return decodeList<unsigned short>(frame, &ZclMessage::getReadAttributes, decoded);
    case FieldKind::ATTRIBUTE_VALUES:
      return decodeList<WriteAttributeRecord>(frame, &ZclMessage::getWriteAttributes, decoded);
    case FieldKind::ATTRIBUTE_ANSWERS:
      return decodeList<ReadAttributeStatusRecord>(frame, &ZclMessage::getReadAttributesResponse, decoded);
    case FieldKind::ATTRIBUTE_STATUSES:
      return decodeList<WriteAttributeReportRecord>(frame, &ZclMessage::getWriteAttributeResponses, decoded);
    default:
      return;
  }
}

}  // namespace qx::app

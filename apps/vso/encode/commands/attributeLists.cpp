#include "apps/vso/encode/commands/attributeLists.h"

#include "apps/vso/encode/attributeRecords.h"

namespace qx::app {

namespace {

constexpr unsigned int ID_SIZE = 2;
constexpr unsigned int TYPE_SIZE = 1;
constexpr unsigned int STATUS_SIZE = 1;

// Bytes of a record in the lists.
unsigned int sizeOf(unsigned short) { return ID_SIZE; }
unsigned int sizeOf(const AttributeRecordData& record) { return ID_SIZE + TYPE_SIZE + sizeOfValue(record); }
unsigned int sizeOf(const WriteAttributeReportRecord&) { return STATUS_SIZE + ID_SIZE; }
unsigned int sizeOf(const ReadAttributeStatusRecord& record) {
  return ID_SIZE + STATUS_SIZE + (record.status_ == 0 ? TYPE_SIZE + sizeOfValue(record) : 0);
}
/// A refused attribute: as one of a read attributes response.
unsigned int sizeOfRefusal(unsigned short) { return ID_SIZE + STATUS_SIZE; }

/// The library would drop what does not fit.
template <typename Record, typename Size>
std::vector<Record> listOf(const ZclMessage& frame, const Arguments& in, Record (*parse)(const std::string&),
                           Size size) {
  std::vector<Record> records;
  unsigned int length = frame.headerLength();
  for (const std::string& text : in.texts("attribute")) {
    records.push_back(parse(text));
    length += size(records.back());
  }
  if (length > ZclMessage::CAPACITY) {
    throw BadArgument("--attribute: the frame has " + std::to_string(length) + " bytes with all of them, at most " +
                      std::to_string(ZclMessage::CAPACITY) + " fit");
  }
  return records;
}

template <typename Record>
Record parseAs(const std::string& text) {
  const AttributeRecordData value = parseAttributeValue(text);
  return {value.id_, value.type_, value.data_};
}

constexpr auto SIZE = [](const auto& record) { return sizeOf(record); };

}  // namespace

void fillReadAttributes(ZclMessage& frame, const Arguments& in) {
  frame.setReadAttributes(listOf(frame, in, parseAttributeId, SIZE));
}

void fillReadAttributesResponse(ZclMessage& frame, const Arguments& in) {
  frame.setReadAttributesResponse(listOf(frame, in, parseAttributeAnswer, SIZE));
}

void fillNoReadAttributesResponse(ZclMessage& frame, const Arguments& in) {
  frame.setNoReadAttributeResponse(listOf(frame, in, parseAttributeId, sizeOfRefusal));
}

void fillWriteAttributes(ZclMessage& frame, const Arguments& in) {
  frame.setWriteAttributes(listOf(frame, in, parseAs<WriteAttributeRecord>, SIZE));
}

void fillWriteAttributesResponse(ZclMessage& frame, const Arguments& in) {
  frame.setWriteAttributeResponses(listOf(frame, in, parseAttributeStatus, SIZE));
}

void fillReportAttributes(ZclMessage& frame, const Arguments& in) {
  frame.setReportAttributes(listOf(frame, in, parseAs<ReportAttributeRecord>, SIZE));
}

}  // namespace qx::app

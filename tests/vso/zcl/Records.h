// Attribute records to and from text, for tests that compare whole lists.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

using Data = AttributeRecordData::Data;

/// The bytes that the text gives, and zeros behind them.
inline Data dataOf(const std::string& text) {
  const U255Buff<unsigned char> bytes = bytesOf(text);
  Data data{};
  std::copy_n(bytes.contents, std::min<std::size_t>(bytes.length_, data.size()), data.begin());
  return data;
}

/// All 200 bytes, without the zeros at their end: "04 03".
inline std::string hex(const Data& data) {
  auto count = static_cast<unsigned int>(data.size());
  while (count != 0 && data[count - 1] == 0) --count;
  std::string text;
  hexify(data.data(), count, text, true);
  return text;
}

/// "0102 21: 04 03": id, type and value.
inline std::string show(const AttributeRecordData& record) {
  std::string id;
  std::string type;
  hexify(&record.id_, 1, id, false);
  hexify(&record.type_, 1, type, false);
  return id + ' ' + type + ": " + hex(record.data_);
}

/// "86 0102 21: 04 03": the status in front.
template <typename Record>
std::string showWithStatus(const Record& record) {
  std::string status;
  hexify(&record.status_, 1, status, false);
  return status + ' ' + show(static_cast<const AttributeRecordData&>(record));
}
inline std::string show(const ReadAttributeStatusRecord& record) { return showWithStatus(record); }
inline std::string show(const WriteAttributeReportRecord& record) { return showWithStatus(record); }

/// What `read` puts into a list that held a record before.
template <typename Record, typename Read>
std::vector<std::string> showList(Read read) {
  std::vector<Record> records(1);
  records[0].id_ = 0xDEAD;
  read(records);
  std::vector<std::string> texts;
  texts.reserve(records.size());
  for (const Record& record : records) texts.push_back(show(record));
  return texts;
}

inline std::vector<std::string> reported(const ZclMessage& frame) {
  return showList<ReportAttributeRecord>([&frame](auto& records) { frame.getReportAttributes(records); });
}
inline std::vector<std::string> written(const ZclMessage& frame) {
  return showList<WriteAttributeRecord>([&frame](auto& records) { frame.getWriteAttributes(records); });
}
inline std::vector<std::string> responded(const ZclMessage& frame) {
  return showList<ReadAttributeStatusRecord>([&frame](auto& records) { frame.getReadAttributesResponse(records); });
}
inline std::vector<std::string> respondedInForm(const ZclMessage& frame, bool wireForm) {
  return showList<ReadAttributeStatusRecord>(
      [&frame, wireForm](auto& records) { frame.getReadAttributesResponse(records, wireForm); });
}
inline std::vector<std::string> confirmed(const ZclMessage& frame) {
  return showList<WriteAttributeReportRecord>([&frame](auto& records) { frame.getWriteAttributeResponses(records); });
}
inline std::vector<unsigned short> requested(const ZclMessage& frame) {
  std::vector<unsigned short> ids{0xDEAD};
  frame.getReadAttributes(ids);
  return ids;
}

template <typename Record>
Record record(unsigned short id, unsigned char type, const std::string& data) {
  return Record(id, type, dataOf(data));
}
template <typename Record>
Record record(unsigned char status, unsigned short id, unsigned char type, const std::string& data) {
  Record made(id, type, dataOf(data));
  made.status_ = status;
  return made;
}

}  // namespace qx::test

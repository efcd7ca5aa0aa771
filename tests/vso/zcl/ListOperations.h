// Attributes read and added through the lists of a message: what typed readers and writers must agree with.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tests/vso/zcl/QxRows.h"
#include "vso/identifiers/U255Buff.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

// The list operation that a type of record belongs to.
inline void getList(const ZclMessage& frame, std::vector<ReportAttributeRecord>& list) {
  frame.getReportAttributes(list);
}
inline void getList(const ZclMessage& frame, std::vector<WriteAttributeRecord>& list) {
  frame.getWriteAttributes(list);
}
inline void getList(const ZclMessage& frame, std::vector<ReadAttributeStatusRecord>& list) {
  frame.getReadAttributesResponse(list);
}
inline void setList(ZclMessage& frame, const std::vector<ReportAttributeRecord>& list) {
  frame.setReportAttributes(list);
}
inline void setList(ZclMessage& frame, const std::vector<WriteAttributeRecord>& list) {
  frame.setWriteAttributes(list);
}
inline void setList(ZclMessage& frame, const std::vector<ReadAttributeStatusRecord>& list) {
  frame.setReadAttributesResponse(list);
}

template <typename Record>
std::vector<Record> listOf(const ZclMessage& frame) {
  std::vector<Record> list;
  getList(frame, list);
  return list;
}

/// Adds an attribute whose data is in wire form, unless the frame's list has its id.
template <typename Record>
void addThroughList(ZclMessage& frame, unsigned short id, unsigned char type, const AttributeRecordData::Data& data) {
  std::vector<Record> list = listOf<Record>(frame);
  if (std::any_of(list.begin(), list.end(), [id](const Record& record) { return record.id_ == id; })) return;
  list.emplace_back(id, type, data);
  setList(frame, list);
}

/// What the reader of an attribute must give, by the frame's list.
template <typename Record, typename Frame>
std::string readThroughList(const Frame& frame, const AttributeRow<Frame>& row) {
  std::string all;
  for (const Record& record : listOf<Record>(frame)) {
    if (record.id_ != row.id) continue;
    const std::string one = row.reading(record.data_);
    if (!row.takesAll) return one;
    if (!all.empty() && !one.empty()) all += ' ';
    all += one;
  }
  return row.takesAll ? all : row.missing;
}

/// The whole storage and the length, whatever that is.
inline bool sameStorage(const U255Buff<unsigned char>& a, const U255Buff<unsigned char>& b) {
  return a.length_ == b.length_ && std::equal(a.contents, a.contents + a.CAPACITY, b.contents);
}

/// The length and the whole storage as text, "5: 18 05 01 ..", also for a length beyond it.
inline std::string stored(const U255Buff<unsigned char>& frame) {
  std::string text;
  hexify(frame.contents, U255Buff<unsigned char>::CAPACITY, text, true);
  return std::to_string(frame.length_) + ": " + text;
}

/// Puts these bytes into the frame's storage, also those behind the length, and leaves its flags.
inline void setStorage(ZclMessage& frame, const U255Buff<unsigned char>& bytes) {
  std::copy_n(bytes.contents, bytes.CAPACITY, frame.contents);
  frame.length_ = bytes.length_;
}

}  // namespace qx::test

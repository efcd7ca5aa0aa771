// The lists of the general commands.
#include <algorithm>

#include "vso/identifiers/storage.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {

namespace {

using detail::AttributeValue;
using detail::AttributeWalk;
using detail::RecordLayout;

void addTypeAndValue(FrameWriter& payload, const AttributeRecordData& record) {
  payload.u8(record.type_);
  AttributeValue(record.type_,
                 FrameReader(record.data_.data(), AttributeRecordData::DATA_SIZE, AttributeRecordData::DATA_SIZE))
      .appendTo(payload);
}

template <typename Record>
void addIdsAndValues(FrameWriter& payload, const std::vector<Record>& records) {
  for (const Record& record : records) {
    payload.u16le(record.id_);
    addTypeAndValue(payload, record);
  }
}

/// Appends a cleared record. The list grows at most once a frame: moving records of 200 bytes costs more than walking
/// the frame to count them.
template <typename Record>
Record& append(std::vector<Record>& records, const AttributeWalk& walk) {
  if (records.size() == records.capacity()) records.reserve(records.size() + 1 + walk.countRest());
  return records.emplace_back();
}

template <typename Record>
void collectValues(const ZclMessage& frame, std::vector<Record>& records) {
  AttributeWalk walk(frame, RecordLayout::VALUE);
  records.clear();
  while (walk.next()) {
    Record& record = append(records, walk);
    record.id_ = walk.id();
    record.type_ = walk.value().type();
    walk.value().copyTo(record.data_, false);
  }
}

}  // namespace

void ZclMessage::setReadAttributes(const std::vector<unsigned short>& ids) {
  FrameWriter out = newPayload();
  for (const unsigned short id : ids) out.u16le(id);
  endPayload(out);
}

void ZclMessage::getReadAttributes(std::vector<unsigned short>& ids) const {
  AttributeWalk walk(*this, RecordLayout::ID);
  ids.clear();
  while (walk.next()) ids.push_back(walk.id());
}

bool ZclMessage::hasReadAttributeId(unsigned short id) const { return AttributeWalk(*this, RecordLayout::ID).find(id); }

void ZclMessage::setWriteAttributes(const std::vector<WriteAttributeRecord>& records) {
  FrameWriter out = newPayload();
  addIdsAndValues(out, records);
  endPayload(out);
}

void ZclMessage::getWriteAttributes(std::vector<WriteAttributeRecord>& records) const { collectValues(*this, records); }

void ZclMessage::setReportAttributes(const std::vector<ReportAttributeRecord>& records) {
  FrameWriter out = newPayload();
  addIdsAndValues(out, records);
  endPayload(out);
}

void ZclMessage::getReportAttributes(std::vector<ReportAttributeRecord>& records) const {
  collectValues(*this, records);
}

void ZclMessage::addReadResponse(FrameWriter& payload, const ReadAttributeStatusRecord& record) {
  payload.u16le(record.id_);
  payload.u8(record.status_);
  if (record.status_ == ZCL_SUCCESS) addTypeAndValue(payload, record);
}

void ZclMessage::setReadAttributesResponse(const std::vector<ReadAttributeStatusRecord>& records) {
  FrameWriter out = newPayload();
  for (const ReadAttributeStatusRecord& record : records) addReadResponse(out, record);
  endPayload(out);
}

void ZclMessage::setNoReadAttributeResponse(const std::vector<unsigned short>& ids) {
  ReadAttributeStatusRecord unsupported;
  unsupported.status_ = ZCL_UNSUPPORTED_ATTRIBUTE;
  FrameWriter out = newPayload();
  for (const unsigned short id : ids) {
    unsupported.id_ = id;
    addReadResponse(out, unsupported);
  }
  endPayload(out);
}

void ZclMessage::getReadAttributesResponse(std::vector<ReadAttributeStatusRecord>& records) const {
  getReadAttributesResponse(records, false);
}

void ZclMessage::getReadAttributesResponse(std::vector<ReadAttributeStatusRecord>& records, bool wireForm) const {
  AttributeWalk walk(*this, RecordLayout::STATUS_VALUE);
  records.clear();
  while (walk.next()) {
    ReadAttributeStatusRecord& record = append(records, walk);
    record.id_ = walk.id();
    record.status_ = walk.status();
    // The walk keeps its value over a failed record, which carries none of its own: it shows that of its predecessor.
    record.type_ = walk.value().type();
    walk.value().copyTo(record.data_, wireForm);
  }
}

void ZclMessage::setWriteAttributeResponses(const std::vector<WriteAttributeReportRecord>& records) {
  FrameWriter out = newPayload();
  for (const WriteAttributeReportRecord& record : records) {
    out.u8(record.status_);
    out.u16le(record.id_);
  }
  endPayload(out);
}

void ZclMessage::getWriteAttributeResponses(std::vector<WriteAttributeReportRecord>& records) const {
  AttributeWalk walk(*this, RecordLayout::STATUS_ID);
  records.clear();
  while (walk.next()) {
    WriteAttributeReportRecord& record = append(records, walk);
    record.status_ = walk.status();
    record.id_ = walk.id();
  }
}

void ZclMessage::addAttribute(RecordLayout layout, const AttributeRecordData& record) {
  if (AttributeWalk(*this, layout).find(record.id_)) return;
  unsigned char before[CAPACITY];
  detail::copyBytes(before, contents, CAPACITY);
  AttributeWalk walk(FrameReader(before, CAPACITY, length_, headerLength()), layout);
  FrameWriter out = newPayload();
  const auto add = [&out, layout](const ReadAttributeStatusRecord& added) {
    if (layout == RecordLayout::STATUS_VALUE) {
      addReadResponse(out, added);
    } else {
      out.u16le(added.id_);
      addTypeAndValue(out, added);
    }
  };
  while (walk.next()) {
    ReadAttributeStatusRecord known(walk.id(), walk.value().type(), walk.value().readable());
    known.status_ = walk.status();
    add(known);
  }
  add(ReadAttributeStatusRecord(record.id_, record.type_, record.data_));
  endPayload(out);
}

}  // namespace qx

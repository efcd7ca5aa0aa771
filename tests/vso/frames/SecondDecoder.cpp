#include "tests/vso/frames/SecondDecoder.h"

#include <algorithm>

namespace qx::test {

namespace {

unsigned int sizeAt(const ZclMessage& frame, unsigned int offset, unsigned char type) {
  if (!isKnown(type)) return 0;
  if (isText(type) || isOctets(type)) return 1U + byteAt(frame, offset);
  if (type == 0xF0) return 8;
  if (type == 0x10) return 1;
  if (type == 0xE8 || type == 0xE9) return 2;
  if (type >= 0xE0) return 4;
  if (type >= 0x38) return 2U << (type & 0x03);
  return 1U + (type & 0x03);
}

}  // namespace

unsigned char byteAt(const ZclMessage& frame, unsigned int offset) {
  return offset < STORAGE ? frame.contents[offset] : 0;
}

unsigned short wordAt(const ZclMessage& frame, unsigned int offset) {
  return static_cast<unsigned short>(byteAt(frame, offset) + 256 * byteAt(frame, offset + 1));
}

unsigned int headerOf(const ZclMessage& frame) { return frame.isManufacturerSpecific() ? 5 : 3; }
unsigned int endOf(const ZclMessage& frame) { return std::min(frame.length_, STORAGE); }

bool isText(unsigned char type) { return type == 0x40 || type == 0x42; }
bool isOctets(unsigned char type) { return type == 0x41; }

bool isKnown(unsigned char type) {
  switch (type & 0xF8) {
    case 0x08:
    case 0x18:
    case 0x20:
    case 0x28:
      return (type & 0x07) <= 3;  // data, bitmap, unsigned, signed: 1 to 4 bytes
    case 0x10:
    case 0xF0:
      return (type & 0x07) == 0;  // boolean, address
    case 0x30:
    case 0xE0:
      return (type & 0x07) <= 1;  // enumerations, times
    case 0x38:
    case 0x40:
    case 0xE8:
      return (type & 0x07) <= 2;  // floats, strings, identifiers
    default:
      return false;
  }
}

StatedList statedList(const ZclMessage& frame, Layout layout) {
  StatedList list;
  StatedRecord record;
  unsigned int at = headerOf(frame);
  while (at < endOf(frame)) {
    bool hasValue = layout == Layout::VALUE;
    if (layout == Layout::STATUS_ID) {
      record.status = byteAt(frame, at);
      record.id = wordAt(frame, at + 1);
      at += 3;
    } else {
      record.id = wordAt(frame, at);
      at += 2;
    }
    if (layout == Layout::STATUS_VALUE) {
      record.status = byteAt(frame, at++);
      hasValue = record.status == 0;
    }
    if (hasValue) {
      record.type = byteAt(frame, at++);
      record.valueAt = at;
      record.valueSize = sizeAt(frame, at, record.type);
      at += record.valueSize;
    }
    list.records.push_back(record);
  }
  list.whole = at == frame.length_;
  return list;
}

AttributeRecordData::Data dataOf(const ZclMessage& frame, const StatedRecord& record, Form form) {
  const bool isStripped = form == Form::READABLE && (isText(record.type) || isOctets(record.type));
  AttributeRecordData::Data data;
  data.fill(0);
  std::size_t filled = 0;
  for (unsigned int i = isStripped ? 1 : 0; i < record.valueSize && filled < DATA_SIZE; ++i) {
    const unsigned char byte = byteAt(frame, record.valueAt + i);
    if (isStripped && isOctets(record.type)) {
      data[filled++] = static_cast<unsigned char>("0123456789abcdef"[byte / 16]);
      data[filled++] = static_cast<unsigned char>("0123456789abcdef"[byte % 16]);
    } else {
      data[filled++] = byte;
    }
  }
  return data;
}

}  // namespace qx::test

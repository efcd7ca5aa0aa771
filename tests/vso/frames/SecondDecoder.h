// A decoder of attribute lists to hold the library's against. It indexes the storage and computes sizes from the bits
// of a type's code, so that it shares neither reader nor table with the library.
#pragma once

#include <cstddef>
#include <vector>

#include "vso/zcl/AttributeRecordData.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

constexpr unsigned int STORAGE = 255;
constexpr std::size_t DATA_SIZE = 200;

/// Zero behind the storage.
unsigned char byteAt(const ZclMessage& frame, unsigned int offset);
/// Little-endian.
unsigned short wordAt(const ZclMessage& frame, unsigned int offset);

unsigned int headerOf(const ZclMessage& frame);
/// Where the walks end: the frame's length, cut to the storage.
unsigned int endOf(const ZclMessage& frame);

bool isText(unsigned char type);
bool isOctets(unsigned char type);
/// True for the types that have a value.
bool isKnown(unsigned char type);

struct StatedRecord {
  unsigned short id = 0;
  unsigned char status = 0;
  unsigned char type = 0;
  unsigned int valueAt = 0;  // offset in the frame
  unsigned int valueSize = 0;
};

struct StatedList {
  std::vector<StatedRecord> records;
  bool whole = false;  // the last record ends where the frame does
};

enum class Form { READABLE, WIRE };
enum class Layout { VALUE, STATUS_VALUE, STATUS_ID };

StatedList statedList(const ZclMessage& frame, Layout layout);

/// `data_` of a record that holds the value in this form.
AttributeRecordData::Data dataOf(const ZclMessage& frame, const StatedRecord& record, Form form);

}  // namespace qx::test

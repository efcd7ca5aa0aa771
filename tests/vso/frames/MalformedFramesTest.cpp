// Broken and cut frames do no harm, and what lies before the cut is read as in the whole frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/frames/FrameProperties.h"
#include "tests/vso/frames/FramesFile.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {
namespace {

constexpr int NO_LOGGING = 60000;

U255Buff<unsigned char> cut(const U255Buff<unsigned char>& frame, unsigned int length) {
  return {frame.contents, length};
}

bool isSame(unsigned short id, unsigned short other) { return id == other; }
bool isSame(const AttributeRecordData& record, const AttributeRecordData& other) {
  return record.id_ == other.id_ && record.type_ == other.type_ && record.data_ == other.data_;
}
template <typename Record>
bool isSameWithStatus(const Record& record, const Record& other) {
  return record.status_ == other.status_ &&
         isSame(static_cast<const AttributeRecordData&>(record), static_cast<const AttributeRecordData&>(other));
}
bool isSame(const ReadAttributeStatusRecord& record, const ReadAttributeStatusRecord& other) {
  return isSameWithStatus(record, other);
}
bool isSame(const WriteAttributeReportRecord& record, const WriteAttributeReportRecord& other) {
  return isSameWithStatus(record, other);
}

template <typename Record>
using Reader = void (ZclMessage::*)(std::vector<Record>&) const;

template <typename Record>
std::vector<Record> read(const U255Buff<unsigned char>& frame, Reader<Record> reader) {
  std::vector<Record> records;
  (ZclMessage(frame).*reader)(records);
  return records;
}

/// How many records, read from the start on, are the same in both lists.
template <typename Record>
std::size_t same(const std::vector<Record>& records, const std::vector<Record>& others) {
  std::size_t count = 0;
  while (count < std::min(records.size(), others.size()) && isSame(records[count], others[count])) ++count;
  return count;
}

/// A cut frame has the records of the whole one as far as they lie before the cut. The last one may lie across it; if
/// the next byte begins another record, it does not.
template <typename Record>
void expectWholeRecordsBeforeEveryCut(const RecordedFrame& frame, Reader<Record> reader, const char* name) {
  const std::vector<Record> whole = read(frame.bytes, reader);
  std::vector<Record> longer = whole;
  for (unsigned int length = frame.bytes.length_; length-- != 0;) {
    const std::vector<Record> records = read(cut(frame.bytes, length), reader);
    const bool endsWithRecord = longer.size() > records.size();
    const std::size_t untouched = endsWithRecord || records.empty() ? records.size() : records.size() - 1;
    EXPECT_GE(same(records, whole), untouched) << name << " of " << frame.id << " cut to " << length << " bytes";
    EXPECT_LE(longer.size() - records.size(), 1U) << name << " of " << frame.id << " cut to " << length << " bytes";
    longer = records;
  }
  EXPECT_TRUE(longer.empty()) << name << " of " << frame.id << " without a byte";
}

/// The tests of the frames of a file.
class FramesOfFile : public ::testing::Test {
 protected:
  explicit FramesOfFile(std::string file) : file_(std::move(file)) {}

  void SetUp() override {
    const std::optional<std::string> path = pathOfFrames(file_);
    if (!path) GTEST_SKIP() << "VSO_FRAMES_DIR names no folder with a file " << file_;
    frames_ = readFrames(*path);
    ASSERT_EQ(frames_.size(), countFrames(*path));
    ASSERT_FALSE(frames_.empty());
  }

  std::vector<RecordedFrame> frames_;

 private:
  std::string file_;
};

class MalformedFrames : public FramesOfFile {
 protected:
  MalformedFrames() : FramesOfFile("malformed.jsonl") {}
};

class TruncatedFrames : public FramesOfFile {
 protected:
  TruncatedFrames() : FramesOfFile("open.jsonl") {}
};

void expectPropertiesAtEveryLength(const std::vector<RecordedFrame>& frames) {
  for (const RecordedFrame& frame : frames) {
    for (unsigned int length = 0; length <= frame.bytes.length_; ++length) {
      EXPECT_NO_THROW(requireFrameProperties(cut(frame.bytes, length)))
          << frame.id << ": " << hex(cut(frame.bytes, length));
    }
  }
}

TEST_F(MalformedFrames, KeepTheProperties) {
  const LogCapture log;
  expectPropertiesAtEveryLength(frames_);
}

TEST_F(TruncatedFrames, KeepTheProperties) {
  const LogCapture quiet(NO_LOGGING);
  expectPropertiesAtEveryLength(frames_);
}

TEST_F(TruncatedFrames, HaveTheRecordsBeforeTheCut) {
  const LogCapture quiet(NO_LOGGING);
  for (const RecordedFrame& frame : frames_) {
    expectWholeRecordsBeforeEveryCut<unsigned short>(frame, &ZclMessage::getReadAttributes, "ids");
    expectWholeRecordsBeforeEveryCut<ReportAttributeRecord>(frame, &ZclMessage::getReportAttributes, "report");
    expectWholeRecordsBeforeEveryCut<WriteAttributeRecord>(frame, &ZclMessage::getWriteAttributes, "write");
    expectWholeRecordsBeforeEveryCut<ReadAttributeStatusRecord>(frame, &ZclMessage::getReadAttributesResponse,
                                                                "read response");
    expectWholeRecordsBeforeEveryCut<WriteAttributeReportRecord>(frame, &ZclMessage::getWriteAttributeResponses,
                                                                 "write response");
  }
}

// Frames that need no file, so that the properties are tested everywhere.

U255Buff<unsigned char> filled(const std::string& start, unsigned char fill) {
  U255Buff<unsigned char> frame = bytesOf(start);
  while (frame.length_ < U255Buff<unsigned char>::CAPACITY) frame.contents[frame.length_++] = fill;
  return frame;
}

struct Shape {
  const char* name;
  U255Buff<unsigned char> frame;
};

std::ostream& operator<<(std::ostream& out, const Shape& shape) { return out << shape.name; }

class BrokenFrame : public ::testing::TestWithParam<Shape> {};

TEST_P(BrokenFrame, KeepsThePropertiesAtEveryLength) {
  const LogCapture quiet(NO_LOGGING);
  const U255Buff<unsigned char>& frame = GetParam().frame;
  for (unsigned int length = 0; length <= frame.length_; ++length) {
    EXPECT_NO_THROW(requireFrameProperties(cut(frame, length))) << hex(cut(frame, length));
  }
}

TEST_P(BrokenFrame, IsReadWithALengthBeyondTheStorage) {
  const LogCapture quiet(NO_LOGGING);
  for (const unsigned int length : {256U, 257U, 511U, 65536U, 0xFFFFFFFFU}) {
    ZclMessage frame(GetParam().frame);
    frame.length_ = length;
    EXPECT_NO_THROW(requireReaderProperties(frame)) << length;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, BrokenFrame,
    ::testing::Values(Shape{"ReportOfTypeZero", filled("18 01 0A", 0x00)}, Shape{"AllOnes", filled("18 01 0A", 0xFF)},
                      Shape{"TextOf255Characters", filled("18 01 0A 05 00 42 FF", 'a')},
                      Shape{"OneOctetMoreThanFitsARecord", filled("18 01 01 05 00 00 41 C8", 0xAB)},
                      Shape{"AsManyOctetsAsFitARecord", filled("18 01 01 05 00 00 41 C7", 0xAB)},
                      Shape{"FailuresBehindAManufacturerCode", filled("1C 40 10 01 01 00 00 00 20 86", 0x86)},
                      Shape{"DoubleFloats", filled("18 01 0A 00 00 F0 01 02 03 04", 0x3A)},
                      Shape{"UnknownTypeAndValueBehindTheEnd", bytesOf("18 01 0A 02 01 21 04 03 0C 00 0C 07 00 10")},
                      Shape{"FailureBetweenValues", bytesOf("18 01 01 00 00 00 10 01 01 00 86 02 00 00 41 02 AB CD")},
                      Shape{"AttributesThatComeTwice",
                            bytesOf("18 01 0A 00 00 20 01 00 00 20 02 01 00 21 01 00 01 00 21 02 00")},
                      Shape{"OneStatusByte", bytesOf("18 01 04 00")},
                      Shape{"CutInTheLongerHeader", bytesOf("1C 40 10 01")}),
    [](const auto& shape) { return std::string(shape.param.name); });

TEST(FrameOfAnyType, KeepsTheProperties) {
  const LogCapture quiet(NO_LOGGING);
  for (unsigned int type = 0; type <= 0xFF; ++type) {
    for (const char* start : {"18 01 0A 00 00", "18 01 01 00 00 00"}) {  // report, read attributes response
      ZclMessage frame(bytesOf(start));
      frame.addByte(static_cast<unsigned char>(type));
      for (const unsigned char byte : {3, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7}) frame.addByte(byte);
      EXPECT_NO_THROW(requireFrameProperties(frame)) << hex(frame);
    }
  }
}

}  // namespace
}  // namespace qx::test

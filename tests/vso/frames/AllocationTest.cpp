// Frames work inside their own storage.
#include <gtest/gtest.h>

#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/frames/AllocationCount.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclIdentify.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclOnOffSwitch.h"
#include "vso/zcl/ZclTime.h"

namespace qx::test {
namespace {

using Data = AttributeRecordData::Data;

constexpr std::align_val_t WIDE{64};
constexpr std::size_t MOST_IDS = 126;
constexpr std::size_t MOST_RECORDS = 84;
constexpr int NO_LOGGING = 60000;

TEST(AllocationCount, CountsEveryFormOfNew) {
  EXPECT_EQ(allocationsOf([] { ::operator delete(::operator new(1)); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete[](::operator new[](1)); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete(::operator new(1, std::nothrow)); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete[](::operator new[](1, std::nothrow)); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete(::operator new(1, WIDE), WIDE); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete[](::operator new[](1, WIDE), WIDE); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete(::operator new(1, WIDE, std::nothrow), WIDE); }), 1U);
  EXPECT_EQ(allocationsOf([] { ::operator delete[](::operator new[](1, WIDE, std::nothrow), WIDE); }), 1U);
}

TEST(AllocationCount, CountsTheAllocationsOfTheStandardLibrary) {
  // Static, because a compiler may do without the storage of an object that nobody else can see.
  static std::vector<char> list;
  static std::string text;
  EXPECT_EQ(allocationsOf([] { list.reserve(100); }), 1U);
  EXPECT_EQ(allocationsOf([] { text.assign(100, 'a').append(1000, 'b'); }), 2U);
  EXPECT_EQ(allocationsOf([] { list.reserve(100); }), 0U);
}

/// What the operations work on, made before the count begins.
struct Prepared {
  Prepared() {
    Data data;
    ZclMessage::toData(data, std::string("text"));
    ReadAttributeStatusRecord failed(2, 0, Data{});
    failed.status_ = ZCL_UNSUPPORTED_ATTRIBUTE;
    read = {ReadAttributeStatusRecord(1, 0x42, data), failed};
    report = {ReportAttributeRecord(1, 0x42, data), ReportAttributeRecord(2, 0x20, data)};
    write = {WriteAttributeRecord(1, 0x42, data), WriteAttributeRecord(2, 0x20, data)};
    written.resize(2);
  }

  const std::string text = std::string(300, 'a');
  const std::string digits = "18050a0000100102004104deadbeef";
  const U255Buff<unsigned char> bytes = bytesOf(digits);
  const std::vector<unsigned short> ids{1, 2, 3};
  std::vector<ReadAttributeStatusRecord> read;
  std::vector<ReportAttributeRecord> report;
  std::vector<WriteAttributeRecord> write;
  std::vector<WriteAttributeReportRecord> written;
};

struct Operation {
  const char* name;
  void (*run)(const Prepared&);
};

std::ostream& operator<<(std::ostream& out, const Operation& operation) { return out << operation.name; }

class FrameOperation : public ::testing::TestWithParam<Operation> {};

TEST_P(FrameOperation, AllocatesNothing) {
  const Prepared prepared;
  EXPECT_EQ(allocationsOf([&] { GetParam().run(prepared); }), 0U);
}

const auto nameOf = [](const auto& instance) { return std::string(instance.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Constructors, FrameOperation,
    ::testing::Values(
        Operation{"Message", [](const Prepared&) { ZclMessage frame; }},
        Operation{"MessageWithManufacturerCode", [](const Prepared&) { ZclMessage frame(0x0A, true, true); }},
        Operation{"MessageFromBytes", [](const Prepared& from) { ZclMessage frame(from.bytes); }},
        Operation{"MessageFromText", [](const Prepared& from) { ZclMessage frame(from.digits); }},
        Operation{"OnOff", [](const Prepared&) { ZclOnOff frame; }},
        Operation{"OnOffOfCommand", [](const Prepared&) { ZclOnOff frame(ZclOnOff::ON); }},
        Operation{"OnOffFromBytes", [](const Prepared& from) { ZclOnOff frame(from.bytes); }},
        Operation{"OnOffFromText", [](const Prepared& from) { ZclOnOff frame(from.digits); }},
        Operation{"LevelControl", [](const Prepared&) { ZclLevelControl frame; }},
        Operation{"LevelControlOfCommand", [](const Prepared&) { ZclLevelControl frame(ZclLevelControl::MOVE); }},
        Operation{"LevelControlFromBytes", [](const Prepared& from) { ZclLevelControl frame(from.bytes); }},
        Operation{"LevelControlFromText", [](const Prepared& from) { ZclLevelControl frame(from.digits); }},
        Operation{"OnOffSwitch", [](const Prepared&) { ZclOnOffSwitch frame; }},
        Operation{"Identify", [](const Prepared&) { ZclIdentify frame; }},
        Operation{"Time", [](const Prepared&) { ZclTime frame; }}),
    nameOf);

/// `build` on a new frame of class Frame.
template <typename Frame, typename Build>
void onNew(Build build) {
  Frame frame;
  build(frame);
}

INSTANTIATE_TEST_SUITE_P(
    Builders, FrameOperation,
    ::testing::Values(
        Operation{"SetOff", [](const Prepared&) { onNew<ZclOnOff>([](auto& frame) { frame.setOff(); }); }},
        Operation{"SetOn", [](const Prepared&) { onNew<ZclOnOff>([](auto& frame) { frame.setOn(); }); }},
        Operation{"SetToggle", [](const Prepared&) { onNew<ZclOnOff>([](auto& frame) { frame.setToggle(); }); }},
        Operation{"MoveToLevel",
                  [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.moveToLevel(1, 2); }); }},
        Operation{"Move", [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.move(1, 2); }); }},
        Operation{"Step", [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.step(1, 2, 3); }); }},
        Operation{"Stop", [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.stop(); }); }},
        Operation{"MoveToLevelWOnOff",
                  [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.moveToLevelWOnOff(1, 2); }); }},
        Operation{"MoveWOnOff",
                  [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.moveWOnOff(1, 2); }); }},
        Operation{"StepWOnOff",
                  [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.stepWOnOff(1, 2, 3); }); }},
        Operation{"StopWOnOff",
                  [](const Prepared&) { onNew<ZclLevelControl>([](auto& frame) { frame.stopWOnOff(); }); }},
        Operation{"PopulateTime", [](const Prepared&) { onNew<ZclTime>([](auto& frame) { frame.populateTime(); }); }},
        Operation{"PopulateFixedTime",
                  [](const Prepared&) {
                    onNew<ZclTime>([](auto& frame) {
                      frame.fixedTime(946684801);
                      frame.populateTime();
                    });
                  }},
        Operation{"PopulateStatus",
                  [](const Prepared&) { onNew<ZclTime>([](auto& frame) { frame.populateStatus(); }); }},
        Operation{"InitMessage",
                  [](const Prepared&) { onNew<ZclMessage>([](auto& frame) { frame.initMessage(1, true, true); }); }},
        Operation{
            "PrepareQxCustomMessage",
            [](const Prepared&) { onNew<ZclMessage>([](auto& frame) { frame.prepareQxCustomMessage(0, 7, false); }); }},
        Operation{"HeaderSetters",
                  [](const Prepared&) {
                    ZclMessage frame(1, true, true);
                    frame.disableDefaultResponse();
                    frame.setFcf(0x18);
                    frame.setMc(0x1040);
                    frame.setTsn(5);
                    frame.setCid(10);
                  }},
        Operation{"Add",
                  [](const Prepared& from) {
                    ZclIdentify frame;
                    frame.addByte(1);
                    frame.addUint16(2);
                    frame.addUint32(3);
                    frame.addString(from.digits);
                  }},
        Operation{
            "SetReadAttributes",
            [](const Prepared& from) { onNew<ZclIdentify>([&](auto& frame) { frame.setReadAttributes(from.ids); }); }},
        Operation{"SetNoReadAttributeResponse",
                  [](const Prepared& from) {
                    onNew<ZclOnOffSwitch>([&](auto& frame) { frame.setNoReadAttributeResponse(from.ids); });
                  }},
        Operation{"SetReadAttributesResponse",
                  [](const Prepared& from) {
                    onNew<ZclIdentify>([&](auto& frame) { frame.setReadAttributesResponse(from.read); });
                  }},
        Operation{"SetReportAttributes",
                  [](const Prepared& from) {
                    onNew<ZclIdentify>([&](auto& frame) { frame.setReportAttributes(from.report); });
                  }},
        Operation{"SetWriteAttributes",
                  [](const Prepared& from) {
                    onNew<ZclIdentify>([&](auto& frame) { frame.setWriteAttributes(from.write); });
                  }},
        Operation{"SetWriteAttributeResponses",
                  [](const Prepared& from) {
                    onNew<ZclIdentify>([&](auto& frame) { frame.setWriteAttributeResponses(from.written); });
                  }}),
    nameOf);

// Readers, on frames of every shape.

struct Shape {
  const char* name;
  const char* digits;
};

std::ostream& operator<<(std::ostream& out, const Shape& shape) { return out << shape.name; }

class FrameOfAnyShape : public ::testing::TestWithParam<Shape> {
 protected:
  /// A warning that is let through allocates its text; one that is not allocates nothing.
  const LogCapture quiet_{NO_LOGGING};
  const U255Buff<unsigned char> bytes_ = bytesOf(GetParam().digits);
};

/// Keeps what is read, so that no reading is optimised away.
struct Sink {
  template <typename T>
  void operator()(T value) {
    kept = kept + static_cast<unsigned int>(value);
  }
  template <typename T>
  void operator()(ZclReading<T> reading) {
    kept = kept + reading.value + reading.state;
  }
  volatile unsigned int kept = 0;
};

TEST_P(FrameOfAnyShape, IsConstructedAndReadWithoutAllocation) {
  Sink sink;
  EXPECT_EQ(allocationsOf([&] {
              const ZclMessage frame(bytes_);
              sink(frame.isValidLength());
              sink(frame.affectsEntireProfile());
              sink(frame.affectsSpecificCluster());
              sink(frame.isManufacturerSpecific());
              sink(frame.isCommandFromClient());
              sink(frame.isCommandFromServer());
              sink(frame.isReadAttributesResponse());
              sink(frame.isWriteAttributesResponse());
              sink(frame.isReportAttributes());
              sink(frame.defaultResponseDisabled());
              sink(frame.transactionSequenceNumber());
              sink(frame.commandIdentifier());
              sink(frame.manufacturerCode());
              sink(frame.hasReadAttributeId(0xFFFE));
              sink(frame.getProfileId());
              sink(frame.getClusterId());
            }),
            0U);
}

TEST_P(FrameOfAnyShape, GivesTypedReadingsWithoutAllocation) {
  const ZclOnOff onOff(bytes_);
  const ZclLevelControl level(bytes_);
  Sink sink;
  EXPECT_EQ(allocationsOf([&] {
              sink(onOff.on());
              sink(onOff.off());
              sink(onOff.onSuccess());
              sink(onOff.offSuccess());
              sink(onOff.toggleSuccess());
              sink(level.currentLevel());
              sink(level.remainingTime());
              sink(level.transitionTime());
              sink(level.onLevel());
              sink(level.currentLevelSuccess());
              sink(level.remainingTimeSuccess());
              sink(level.transitionTimeSuccess());
              sink(level.onLevelSuccess());
            }),
            0U);
}

/// `read` fills a list of the frame. A new list costs `fresh` allocations, one with room for all records none.
template <typename Record, typename Read>
void expectAllocations(unsigned int fresh, std::size_t most, Read read) {
  std::vector<Record> records;
  EXPECT_EQ(allocationsOf([&] { read(records); }), fresh);
  EXPECT_EQ(allocationsOf([&] { read(records); }), 0U) << "into the list of the frame before";
  std::vector<Record> roomy;
  roomy.reserve(most);
  EXPECT_EQ(allocationsOf([&] { read(roomy); }), 0U) << "into a list with room";
  EXPECT_EQ(roomy.size(), records.size());
}

TEST_P(FrameOfAnyShape, ListsItsAttributesWithOneAllocation) {
  const ZclMessage frame(bytes_);
  const unsigned int fresh = bytes_.length_ > frame.headerLength() ? 1 : 0;
  expectAllocations<ReportAttributeRecord>(fresh, MOST_RECORDS, [&](auto& list) { frame.getReportAttributes(list); });
  expectAllocations<WriteAttributeRecord>(fresh, MOST_RECORDS, [&](auto& list) { frame.getWriteAttributes(list); });
  expectAllocations<ReadAttributeStatusRecord>(fresh, MOST_RECORDS,
                                               [&](auto& list) { frame.getReadAttributesResponse(list); });
  expectAllocations<ReadAttributeStatusRecord>(fresh, MOST_RECORDS,
                                               [&](auto& list) { frame.getReadAttributesResponse(list, true); });
  expectAllocations<WriteAttributeReportRecord>(fresh, MOST_RECORDS,
                                                [&](auto& list) { frame.getWriteAttributeResponses(list); });
}

TEST_P(FrameOfAnyShape, ListsItsIdsInAListWithRoomWithoutAllocation) {
  const ZclMessage frame(bytes_);
  std::vector<unsigned short> ids;
  ids.reserve(MOST_IDS);
  EXPECT_EQ(allocationsOf([&] { frame.getReadAttributes(ids); }), 0U);
  EXPECT_EQ(ids.empty(), bytes_.length_ <= frame.headerLength());
}

TEST_P(FrameOfAnyShape, GrowsPastItsEndWithoutAllocation) {
  const std::string text(300, 'a');
  ZclMessage frame(bytes_);
  EXPECT_EQ(allocationsOf([&] {
              frame.addString(text);
              frame.addByte(1);
              frame.addUint16(2);
              frame.addUint32(3);
            }),
            0U);
  EXPECT_EQ(frame.length_, U255Buff<unsigned char>::CAPACITY);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, FrameOfAnyShape,
    ::testing::Values(Shape{"Empty", ""}, Shape{"OneByte", "18"}, Shape{"HeaderCut", "1C 40 10 01"},
                      Shape{"HeaderAlone", "18 05 01"}, Shape{"ReadAttributes", "00 05 00 00 00 01 00 10 00 11 00"},
                      Shape{"ResponseOfNumbers", "18 05 01 00 00 00 10 01 01 00 00 21 04 03 10 00 86 11 00 00 20 FE"},
                      Shape{"ResponseOfText", "18 05 01 00 00 00 42 03 61 62 63 01 00 00 42 00 10 00 00 40 02 61 62"},
                      Shape{"ResponseOfOctets", "18 05 01 00 00 00 41 03 01 02 03 01 00 00 41 00 11 00 00 41 FF 01"},
                      Shape{"ReportOfNumbers", "18 05 0A 00 00 20 7F 01 00 21 04 03 10 00 21 0A 00 11 00 20 FE"},
                      Shape{"ReportOfText", "18 05 0A 00 00 42 03 61 62 63 01 00 40 02 61 62"},
                      Shape{"ReportOfOctets", "18 05 0A 00 00 41 03 01 02 03 01 00 41 02 AB CD"},
                      Shape{"ReportOfUnknownTypes", "18 05 0A 00 00 E2 01 00 00 4C 02 00"},
                      Shape{"ReportBehindAManufacturerCode", "1C 40 10 05 0A 00 00 20 7F 01 00 21 04 03"},
                      Shape{"WriteResponse", "18 05 04 86 00 00 00 01 00 00 10 00 00 11 00"},
                      Shape{"WriteResponseOfOneStatus", "18 05 04 00"}),
    nameOf);

}  // namespace
}  // namespace qx::test

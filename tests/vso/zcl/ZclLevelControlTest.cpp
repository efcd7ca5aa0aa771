#include "vso/zcl/ZclLevelControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/BuiltCommand.h"
#include "vso/zcl/ClusterFrames.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;

TEST(ZclLevelControl, BelongsToItsCluster) {
  EXPECT_EQ(ZclLevelControl().getProfileId(), 0x0104);
  EXPECT_EQ(ZclLevelControl().getClusterId(), 0x0008);
}

TEST(ZclLevelControl, IsAClusterFrameWithoutACommandByDefault) {
  test::expectAClusterFrameByDefault<ZclLevelControl>();
}

TEST(ZclLevelControl, TakesACommand) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(ZclLevelControl(static_cast<unsigned char>(0x40))), hex(bytes({0x01, sequence, 0x40})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclLevelControl, ParsesBytesAndText) { test::expectParsesBytesAndText<ZclLevelControl>(); }

using Command = test::BuiltCommand<ZclLevelControl>;

const Command COMMANDS[] = {
    {"moveToLevel",
     [](ZclLevelControl& frame) { frame.moveToLevel(0x80, 10); },
     "00 80 0a 00",
     {"setFcf(01)", "setCid(00)", "isValidLength()"}},
    {"moveToLevelWide",
     [](ZclLevelControl& frame) { frame.moveToLevel(0xFF, 0xFEDC); },
     "00 ff dc fe",
     {"setFcf(01)", "setCid(00)", "isValidLength()"}},
    {"move",
     [](ZclLevelControl& frame) { frame.move(1, 0x0203); },
     "01 01 03 02",
     {"setFcf(01)", "setCid(01)", "isValidLength()"}},
    {"step",
     [](ZclLevelControl& frame) { frame.step(0, 16, 1); },
     "02 00 10 01 00",
     {"setFcf(01)", "setCid(02)", "isValidLength()"}},
    {"stepWide",
     [](ZclLevelControl& frame) { frame.step(1, 0xFF, 0xFEDC); },
     "02 01 ff dc fe",
     {"setFcf(01)", "setCid(02)", "isValidLength()"}},
    {"stop", [](ZclLevelControl& frame) { frame.stop(); }, "03", {"setFcf(01)", "setCid(03)"}},
    {"moveToLevelWOnOff",
     [](ZclLevelControl& frame) { frame.moveToLevelWOnOff(0x80, 10); },
     "04 80 0a 00",
     {"setFcf(01)", "setCid(00)", "isValidLength()", "setCid(04)"}},
    {"moveWOnOff",
     [](ZclLevelControl& frame) { frame.moveWOnOff(1, 3); },
     "05 01 03 00",
     {"setFcf(01)", "setCid(01)", "isValidLength()", "setCid(05)"}},
    {"moveWOnOffWide",
     [](ZclLevelControl& frame) { frame.moveWOnOff(0, 0xFF); },
     "05 00 ff 00",
     {"setFcf(01)", "setCid(01)", "isValidLength()", "setCid(05)"}},
    {"stepWOnOff",
     [](ZclLevelControl& frame) { frame.stepWOnOff(1, 16, 0x0102); },
     "06 01 10 02 01",
     {"setFcf(01)", "setCid(02)", "isValidLength()", "setCid(06)"}},
    {"stopWOnOff",
     [](ZclLevelControl& frame) { frame.stopWOnOff(); },
     "07",
     {"setFcf(01)", "setCid(03)", "setCid(07)"}},
};

class ZclLevelControlCommand : public testing::TestWithParam<Command> {};

INSTANTIATE_TEST_SUITE_P(Commands, ZclLevelControlCommand, testing::ValuesIn(COMMANDS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclLevelControlCommand, IsBuiltBehindTheSequenceOfTheConstructor) { expectBuiltBehindTheSequence(GetParam()); }
TEST_P(ZclLevelControlCommand, IsBuiltOverAnyFrame) { expectBuiltOverAnyFrame(GetParam()); }
TEST_P(ZclLevelControlCommand, IsBuiltByItsVirtualOperationsWithoutAWarning) { expectBuiltByItsCalls(GetParam()); }

TEST(ZclLevelControl, LooksAtTheLengthBehindTheFinishedCommand) {
  const test::LogCapture log;
  ZclLevelControl frame(bytesOf("05 40 10"));  // shorter than its header until the command is in
  frame.moveToLevel(0x80, 10);
  EXPECT_EQ(hex(frame), "05 40 10 00 00 80 0a 00");
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

/// "value/state".
template <typename T>
std::string show(const ZclReading<T>& reading) {
  return std::to_string(static_cast<unsigned int>(reading.value)) + '/' + std::to_string(reading.state);
}

struct Attribute {
  const char* name;
  const char* id;  ///< As in a frame.
  bool twoBytes;   ///< Read as a 16-bit number, otherwise as a byte.
  std::string (*read)(const ZclLevelControl&);
  std::string (*success)(const ZclLevelControl&);
};

std::ostream& operator<<(std::ostream& out, const Attribute& row) { return out << row.name; }

const Attribute ATTRIBUTES[] = {
    {"currentLevel", "00 00", false, [](const ZclLevelControl& frame) { return show(frame.currentLevel()); },
     [](const ZclLevelControl& frame) { return show(frame.currentLevelSuccess()); }},
    {"remainingTime", "01 00", true, [](const ZclLevelControl& frame) { return show(frame.remainingTime()); },
     [](const ZclLevelControl& frame) { return show(frame.remainingTimeSuccess()); }},
    {"transitionTime", "10 00", true, [](const ZclLevelControl& frame) { return show(frame.transitionTime()); },
     [](const ZclLevelControl& frame) { return show(frame.transitionTimeSuccess()); }},
    {"onLevel", "11 00", false, [](const ZclLevelControl& frame) { return show(frame.onLevel()); },
     [](const ZclLevelControl& frame) { return show(frame.onLevelSuccess()); }},
};

class ZclLevelControlAttribute : public testing::TestWithParam<Attribute> {
 protected:
  static std::string id() { return GetParam().id; }
  static std::string read(const std::string& frame) { return GetParam().read(ZclLevelControl(bytesOf(frame))); }
  static std::string success(const std::string& frame) { return GetParam().success(ZclLevelControl(bytesOf(frame))); }
};

INSTANTIATE_TEST_SUITE_P(Attributes, ZclLevelControlAttribute, testing::ValuesIn(ATTRIBUTES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclLevelControlAttribute, IsReadFromAResponse) {
  // Two bytes 0xFE and 0x81, of which a level is the first.
  EXPECT_EQ(read("18 05 01 " + id() + " 00 21 fe 81"), GetParam().twoBytes ? "33278/1" : "254/1");
  EXPECT_EQ(read("18 05 01 " + id() + " 00 20 fe"), "254/1");
}

TEST_P(ZclLevelControlAttribute, IsReadFromAReport) {
  EXPECT_EQ(read("18 05 0a " + id() + " 21 fe 81"), GetParam().twoBytes ? "33278/1" : "254/1");
  EXPECT_EQ(read("18 05 0a " + id() + " 20 fe"), "254/1");
}

TEST_P(ZclLevelControlAttribute, IsFoundAmongOthers) {
  const std::string others = "00 01 00 20 01 01 01 86 10 01 00 21 02 02 11 01 00 20 03 ";
  EXPECT_EQ(read("18 05 01 " + others + id() + " 86 " + id() + " 00 20 05 " + id() + " 00 20 06"), "5/1");
}

TEST_P(ZclLevelControlAttribute, IsNotAnsweredWhereNothingIsFound) {
  for (const std::string& frame : {std::string("18 05 01"), std::string("18 05 0a"), "18 05 01 " + id() + " 86",
                                   std::string("18 05 0a 02 00 20 05"), "18 05 0b " + id() + " 20 05",
                                   "18 05 00 " + id(), "18 05 04 00 " + id()}) {
    EXPECT_EQ(read(frame), "0/2") << frame;
  }
}

TEST_P(ZclLevelControlAttribute, SucceedsInAWriteResponse) {
  EXPECT_EQ(success("18 05 04 00 " + id()), "1/1");
  EXPECT_EQ(success("18 05 04 88 02 00 00 " + id()), "1/1");
}

TEST_P(ZclLevelControlAttribute, DoesNotSucceedOtherwise) {
  for (const std::string& frame : {std::string("18 05 04"), "18 05 04 88 " + id(), std::string("18 05 04 00 02 00"),
                                   "18 05 01 " + id() + " 00 20 05", "18 05 0a " + id() + " 20 05"}) {
    EXPECT_EQ(success(frame), "0/2") << frame;
  }
}

TEST_P(ZclLevelControlAttribute, SucceedsBySingleStatusByteOnlyAsAttributeZero) {
  EXPECT_EQ(success("18 05 04 00"), id() == "00 00" ? "1/1" : "0/2");
}

}  // namespace
}  // namespace qx

#include "apps/vso/decode/decodeFrame.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "apps/vso/decode/Decoded.h"
#include "support/LogCapture.h"

namespace qx::app {
namespace {

using test::BASIC;
using test::decoded;
using test::HOME;
using test::IDENTIFY;
using test::LEVEL_CONTROL;
using test::ON_OFF;

ZclHeader zclHeader(const DecodedFrame& frame) { return std::get<ZclHeader>(frame.header); }

std::string nameOf(const DecodedFrame& frame) {
  const char* const name = zclHeader(frame).name;
  return name != nullptr ? name : "none";
}

std::string text(bool value) { return value ? "true" : "false"; }
std::string text(unsigned int value) { return std::to_string(value); }

/// "level=128 transitionTime=10"
std::string listed(const std::vector<NamedValue>& values) {
  std::string list;
  for (const NamedValue& named : values) {
    list += (list.empty() ? "" : " ") + std::string(named.name) + "=";
    list += std::visit([](auto value) { return text(value); }, named.value);
  }
  return list;
}

/// "0(status 0, type 16)=1 5(status 134)"
std::string listed(const std::optional<std::vector<DecodedAttribute>>& attributes) {
  if (!attributes) return "no list";
  std::string list;
  for (const DecodedAttribute& attribute : *attributes) {
    std::string known;
    if (attribute.status) known += "status " + std::to_string(*attribute.status);
    if (attribute.value) known += (known.empty() ? "type " : ", type ") + std::to_string(attribute.value->type);
    list += (list.empty() ? "" : " ") + std::to_string(attribute.id);
    if (!known.empty()) list += "(" + known + ")";
    if (attribute.value && attribute.value->text) list += "=" + *attribute.value->text;
  }
  return list;
}

/// A frame of the home automation profile, and what is to be known of it.
struct FrameCase {
  const char* name;
  unsigned short cluster;
  const char* hex;
  const char* expected;
  const char* undecoded = "";
};

void PrintTo(const FrameCase& c, std::ostream* out) { *out << c.name; }

std::string nameOfCase(const testing::TestParamInfo<FrameCase>& row) { return row.param.name; }

// Header

TEST(decodeFrame, ReadsTheHeaderOfAGeneralFrame) {
  const DecodedFrame frame = decoded(HOME, ON_OFF,
                                     "18 05 0b "  // header: control, sequence, default response
                                     "01 00");    // on, success
  const ZclHeader header = zclHeader(frame);
  EXPECT_EQ(frame.hex, "18050b0100");
  EXPECT_EQ(frame.length, 5u);
  EXPECT_EQ(frame.headerLength, 3u);
  EXPECT_STREQ(frame.clusterName, "On/Off");
  EXPECT_EQ(header.frameControl, 0x18);
  EXPECT_EQ(header.frameType, ZclFrameType::GENERAL);
  EXPECT_FALSE(header.manufacturerSpecific);
  EXPECT_EQ(header.manufacturerCode, std::nullopt);
  EXPECT_TRUE(header.fromServer);
  EXPECT_TRUE(header.defaultResponseDisabled);
  EXPECT_EQ(header.sequence, 5);
  EXPECT_EQ(header.command, 11);
  EXPECT_STREQ(header.name, "default response");
}

TEST(decodeFrame, ReadsTheHeaderOfAManufacturersFrame) {
  const DecodedFrame frame = decoded(HOME, BASIC,
                                     "05 40 10 10 07 "  // header: control, code, sequence, command
                                     "aa bb");          // payload
  const ZclHeader header = zclHeader(frame);
  EXPECT_EQ(frame.headerLength, 5u);
  EXPECT_EQ(header.frameControl, 0x05);
  EXPECT_EQ(header.frameType, ZclFrameType::CLUSTER_SPECIFIC);
  EXPECT_TRUE(header.manufacturerSpecific);
  EXPECT_EQ(header.manufacturerCode, 0x1040);
  EXPECT_FALSE(header.fromServer);
  EXPECT_FALSE(header.defaultResponseDisabled);
  EXPECT_EQ(header.sequence, 16);
  EXPECT_EQ(header.command, 7);
  EXPECT_EQ(header.name, nullptr);
  EXPECT_EQ(frame.undecoded, "aabb");
}

TEST(decodeFrame, GivesOnlyTheHeaderFieldsThatAFrameHas) {
  const test::LogCapture capture;
  const std::string withoutCode = "180501";
  const std::string withCode = "1c40100501";
  constexpr struct {
    bool frameControl, manufacturerCode, sequence, command;
  } WITHOUT_CODE[] = {{false, false, false, false},
                      {true, false, false, false},
                      {true, false, true, false},
                      {true, false, true, true}},
    WITH_CODE[] = {{false, false, false, false}, {true, false, false, false}, {true, false, false, false},
                   {true, true, false, false},   {true, true, true, false},   {true, true, true, true}};
  const auto check = [](const std::string& hex, const auto& expected) {
    for (std::size_t length = 0; length <= hex.size() / 2; ++length) {
      const ZclHeader header = zclHeader(decoded(HOME, ON_OFF, hex.substr(0, 2 * length)));
      EXPECT_EQ(header.frameControl.has_value(), expected[length].frameControl) << length;
      EXPECT_EQ(header.manufacturerCode.has_value(), expected[length].manufacturerCode) << length;
      EXPECT_EQ(header.sequence.has_value(), expected[length].sequence) << length;
      EXPECT_EQ(header.command.has_value(), expected[length].command) << length;
      EXPECT_EQ(header.name != nullptr, expected[length].command) << length;
    }
  };
  check(withoutCode, WITHOUT_CODE);
  check(withCode, WITH_CODE);
}

TEST(decodeFrame, ReadsNothingBehindAHeaderThatIsCutShort) {
  const test::LogCapture capture;
  const DecodedFrame frame = decoded(HOME, ON_OFF, "18 05");
  EXPECT_LT(frame.length, frame.headerLength);
  EXPECT_EQ(listed(frame.attributes), "no list");
  EXPECT_EQ(listed(frame.fields), "");
  EXPECT_EQ(listed(frame.readings), "");
  EXPECT_EQ(frame.undecoded, "");
}

TEST(decodeFrame, KnowsNoCommandsOfReservedFrameTypes) {
  for (const char* const hex : {"02 05 00 00 00", "03 05 00 00 00"}) {
    const DecodedFrame frame = decoded(HOME, ON_OFF, hex);
    EXPECT_EQ(zclHeader(frame).frameType, ZclFrameType::RESERVED);
    EXPECT_EQ(nameOf(frame), "none");
    EXPECT_EQ(listed(frame.attributes), "no list");
    EXPECT_EQ(frame.undecoded, "0000");
  }
}

// Names

TEST(decodeFrame, NamesGeneralCommandsInEveryProfileAndBehindAManufacturerCode) {
  EXPECT_EQ(nameOf(decoded(HOME, 0xFC00, "00 05 00")), "read attributes");
  EXPECT_EQ(nameOf(decoded(0xC25D, 0x0002, "18 05 0a")), "report attributes");
  EXPECT_EQ(nameOf(decoded(HOME, BASIC, "04 40 10 05 02")), "write attributes");
}

TEST(decodeFrame, NamesClusterCommandsByDirection) {
  EXPECT_EQ(nameOf(decoded(HOME, IDENTIFY, "01 05 00 1e 00")), "identify");
  EXPECT_EQ(nameOf(decoded(HOME, IDENTIFY, "09 05 00 1e 00")), "identify query response");
  EXPECT_EQ(nameOf(decoded(HOME, ON_OFF, "09 05 02")), "none");
}

TEST(decodeFrame, NamesNoClusterCommandOfAnotherProfileOrAManufacturer) {
  EXPECT_EQ(nameOf(decoded(0xC25D, ON_OFF, "01 05 02")), "none");
  EXPECT_EQ(nameOf(decoded(HOME, ON_OFF, "05 40 10 05 02")), "none");
}

// Lists

class AttributeLists : public testing::TestWithParam<FrameCase> {};

TEST_P(AttributeLists, Read) {
  const test::LogCapture capture;
  const DecodedFrame frame = decoded(HOME, GetParam().cluster, GetParam().hex);
  EXPECT_EQ(listed(frame.attributes), GetParam().expected);
  EXPECT_EQ(frame.undecoded, GetParam().undecoded);
}

INSTANTIATE_TEST_SUITE_P(
    decodeFrame, AttributeLists,
    testing::Values(
        FrameCase{"ReadAttributes", BASIC, "00 05 00  04 00 05 00", "4 5"},
        FrameCase{"ReadResponse", ON_OFF, "18 05 01  00 00 00 10 01", "0(status 0, type 16)=1"},
        FrameCase{"FailedRecordWithoutItsPredecessorsValue", BASIC,
                  "18 05 01  00 00 00 20 03  0f 00 86  01 00 00 21 39 30",
                  "0(status 0, type 32)=3 15(status 134) 1(status 0, type 33)=12345"},
        FrameCase{"Write", LEVEL_CONTROL, "00 05 02  11 00 20 c8", "17(type 32)=200"},
        FrameCase{"WriteUndivided", LEVEL_CONTROL, "00 05 03  11 00 20 c8", "17(type 32)=200"},
        FrameCase{"WriteWithoutResponse", LEVEL_CONTROL, "00 05 05  11 00 20 c8", "17(type 32)=200"},
        FrameCase{"WriteResponse", BASIC, "18 05 04  86 01 40 88 02 40", "16385(status 134) 16386(status 136)"},
        FrameCase{"WriteResponseOfASingleStatus", BASIC, "18 05 04  00", "0(status 0)"},
        FrameCase{"Report", BASIC, "18 05 0a  00 00 20 03  10 00 29 38 ff  05 00 42 03 61 62 63",
                  "0(type 32)=3 16(type 41)=ff38 5(type 66)=abc"},
        FrameCase{"OctetStringAsItsBytes", BASIC, "18 05 0a  06 00 41 03 20 25 06  07 00 30 01",
                  "6(type 65)=202506 7(type 48)=1"},
        FrameCase{"OctetStringOfReadResponse", BASIC, "18 05 01  06 00 00 41 02 ab cd", "6(status 0, type 65)=abcd"},
        FrameCase{"EmptyStrings", BASIC, "18 05 0a  05 00 42 00  06 00 41 00", "5(type 66)= 6(type 65)="},
        FrameCase{"UnknownTypeWithoutValue", BASIC, "18 05 0a  00 00 0c  04 00 20 2a", "0(type 12) 4(type 32)=42"},
        FrameCase{"NoRecord", BASIC, "18 05 01", ""},
        FrameCase{"ManufacturersAttributes", BASIC, "0c 40 10 05 0a  00 00 20 03", "0(type 32)=3"}),
    nameOfCase);

TEST(decodeFrame, PrintsRecordsAsTheLibraryDoes) {
  const DecodedFrame frame = decoded(HOME, BASIC, "18 05 0a  05 00 42 03 61 07 63  06 00 41 02 ab cd");
  ASSERT_EQ(frame.attributes->size(), 2u);
  EXPECT_EQ(frame.attributes->at(0).value->record, "<AttributeRecordData id_: 0x0005, type_: 0x42, data_: a\ac>");
  EXPECT_EQ(frame.attributes->at(1).value->record, "<AttributeRecordData id_: 0x0006, type_: 0x41, data_: abcd>");
}

TEST(decodeFrame, ShowsTheFirst100BytesOfALongOctetString) {
  std::string value;
  for (int i = 0; i < 120; ++i) value += "5a";
  const DecodedFrame frame = decoded(HOME, BASIC,
                                     "18050a060041"
                                     "78" +
                                         value);
  EXPECT_EQ(listed(frame.attributes), "6(type 65)=" + value.substr(0, 200));
}

// Fields

class CommandFields : public testing::TestWithParam<FrameCase> {};

TEST_P(CommandFields, Read) {
  const DecodedFrame frame = decoded(HOME, GetParam().cluster, GetParam().hex);
  EXPECT_EQ(listed(frame.fields), GetParam().expected);
  EXPECT_EQ(frame.undecoded, GetParam().undecoded);
  EXPECT_EQ(listed(frame.attributes), "no list");
}

INSTANTIATE_TEST_SUITE_P(
    decodeFrame, CommandFields,
    testing::Values(
        FrameCase{"DefaultResponse", ON_OFF, "18 05 0b  42 81", "commandId=66 status=129"},
        FrameCase{"DiscoverAttributes", BASIC, "00 05 0c  01 02 0a", "startAttributeId=513 maximumAttributeIds=10"},
        FrameCase{"DiscoverCommandsReceived", BASIC, "00 05 11  01 0a", "startCommandId=1 maximumCommandIds=10"},
        FrameCase{"DiscoverCommandsGenerated", BASIC, "00 05 13  01 0a", "startCommandId=1 maximumCommandIds=10"},
        FrameCase{"DiscoverAttributesExtended", BASIC, "00 05 15  01 02 0a",
                  "startAttributeId=513 maximumAttributeIds=10"},
        FrameCase{"GeneralCommandWithoutKnownFields", BASIC, "00 05 06  00 01 00", "", "000100"},
        FrameCase{"Identify", IDENTIFY, "01 05 00  1e 01", "identifyTime=286"},
        FrameCase{"IdentifyQuery", IDENTIFY, "01 05 01", ""},
        FrameCase{"IdentifyQueryResponse", IDENTIFY, "09 05 00  1e 01", "timeout=286"},
        FrameCase{"TriggerEffect", IDENTIFY, "01 05 40  02 01", "effectIdentifier=2 effectVariant=1"},
        FrameCase{"Toggle", ON_OFF, "01 05 02", ""},
        FrameCase{"OffWithEffect", ON_OFF, "01 05 40  01 02", "effectIdentifier=1 effectVariant=2"},
        FrameCase{"OnWithTimedOff", ON_OFF, "01 05 42  01 64 00 32 01", "onOffControl=1 onTime=100 offWaitTime=306"},
        FrameCase{"MoveToLevel", LEVEL_CONTROL, "01 05 00  80 0a 01", "level=128 transitionTime=266"},
        FrameCase{"MoveToLevelWithOptions", LEVEL_CONTROL, "01 05 00  80 0a 00 01 02",
                  "level=128 transitionTime=10 optionsMask=1 optionsOverride=2"},
        FrameCase{"MoveOfTheStandard", LEVEL_CONTROL, "01 05 01  01 20", "mode=1 rate=32"},
        FrameCase{"MoveOfTheStandardWithOptions", LEVEL_CONTROL, "01 05 01  01 20 03 04",
                  "mode=1 rate=32 optionsMask=3 optionsOverride=4"},
        FrameCase{"MoveOfThisSystem", LEVEL_CONTROL, "01 05 01  01 03 02", "mode=1 rate=515"},
        FrameCase{"MoveOfThisSystemWithOptions", LEVEL_CONTROL, "01 05 01  01 03 02 03 04",
                  "mode=1 rate=515 optionsMask=3 optionsOverride=4"},
        FrameCase{"Step", LEVEL_CONTROL, "01 05 02  00 10 01 02", "mode=0 stepSize=16 transitionTime=513"},
        FrameCase{"Stop", LEVEL_CONTROL, "01 05 03", ""},
        FrameCase{"StopWithOptions", LEVEL_CONTROL, "01 05 03  01 02", "optionsMask=1 optionsOverride=2"},
        FrameCase{"MoveToLevelWithOnOff", LEVEL_CONTROL, "01 05 04  80 0a 01", "level=128 transitionTime=266"},
        FrameCase{"MoveWithOnOff", LEVEL_CONTROL, "01 05 05  01 03 00", "mode=1 rate=3"},
        FrameCase{"StepWithOnOff", LEVEL_CONTROL, "01 05 06  01 10 01 00", "mode=1 stepSize=16 transitionTime=1"},
        FrameCase{"StopWithOnOff", LEVEL_CONTROL, "01 05 07", ""},
        FrameCase{"BytesBehindTheFields", IDENTIFY, "01 05 00  1e 00 ab cd", "identifyTime=30", "abcd"},
        FrameCase{"BytesBehindACommandWithoutFields", ON_OFF, "01 05 01  ab", "", "ab"},
        FrameCase{"FieldCutInTheMiddle", LEVEL_CONTROL, "01 05 00  80 0a", "level=128", "0a"},
        FrameCase{"MoveWithoutARate", LEVEL_CONTROL, "01 05 01  01", "mode=1"},
        FrameCase{"NoFieldAtAll", LEVEL_CONTROL, "01 05 00", ""},
        FrameCase{"CommandOfAManufacturer", LEVEL_CONTROL, "05 40 10 05 00  80 0a 00", "", "800a00"},
        FrameCase{"OtherCluster", 0xFC00, "01 05 00  80 0a 00", "", "800a00"}),
    nameOfCase);

TEST(decodeFrame, GivesTheStatusOfADefaultResponseInWords) {
  const DecodedFrame frame = decoded(HOME, ON_OFF, "18 05 0b  42 81");
  ASSERT_EQ(frame.fields.size(), 2u);
  EXPECT_EQ(frame.fields[0].meaning, nullptr);
  EXPECT_STREQ(frame.fields[1].meaning, "ZCL_UNSUP_CLUSTER_COMMAND");
}

// Readings

class Readings : public testing::TestWithParam<FrameCase> {};

TEST_P(Readings, Read) {
  EXPECT_EQ(listed(decoded(HOME, GetParam().cluster, GetParam().hex).readings), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    decodeFrame, Readings,
    testing::Values(
        FrameCase{"On", ON_OFF, "18 05 01  00 00 00 10 01", "on=true"},
        FrameCase{"ReportedOff", ON_OFF, "18 05 0a  00 00 10 00", "on=false"},
        FrameCase{"FailedOnOff", ON_OFF, "18 05 01  00 00 86", ""},
        FrameCase{"OnSuccess", ON_OFF, "18 05 04  00", "onSuccess=true"},
        FrameCase{"OnFailure", ON_OFF, "18 05 04  88 00 00", ""},
        FrameCase{"Levels", LEVEL_CONTROL, "18 05 0a  00 00 20 7f  01 00 21 01 02  10 00 21 03 04  11 00 20 fe",
                  "currentLevel=127 remainingTime=513 transitionTime=1027 onLevel=254"},
        FrameCase{"LevelOfAReadResponse", LEVEL_CONTROL, "18 05 01  00 00 86  11 00 00 20 10", "onLevel=16"},
        FrameCase{"LevelSuccesses", LEVEL_CONTROL, "18 05 04  00 00 00 00 01 00 00 10 00 00 11 00",
                  "currentLevelSuccess=true remainingTimeSuccess=true transitionTimeSuccess=true "
                  "onLevelSuccess=true"},
        FrameCase{"NoneOfAnotherCluster", BASIC, "18 05 01  00 00 00 10 01", ""},
        FrameCase{"NoneOfAManufacturersAttributes", ON_OFF, "1c 40 10 05 01  00 00 00 10 01", ""},
        FrameCase{"NoneOfAClusterCommandWithTheNumberOfAList", LEVEL_CONTROL, "01 05 04  00 00 00", ""}),
    nameOfCase);

TEST(decodeFrame, TakesNoReadingsFromAnotherProfile) {
  EXPECT_EQ(listed(decoded(0xC25D, ON_OFF, "18 05 01  00 00 00 10 01").readings), "");
}

// ZDO

TEST(decodeFrame, TakesProfile0ForZdo) {
  const DecodedFrame frame = decoded(0x0000, 0x8031, "07 84 00");
  EXPECT_EQ(std::get<ZdoHeader>(frame.header).sequence, 7);
  EXPECT_EQ(frame.headerLength, 1u);
  EXPECT_EQ(frame.clusterName, nullptr);
  EXPECT_EQ(frame.undecoded, "8400");
}

TEST(decodeFrame, GivesNoSequenceNumberOfAnEmptyZdoFrame) {
  const DecodedFrame frame = decoded(0x0000, 0x8031, "");
  EXPECT_EQ(std::get<ZdoHeader>(frame.header).sequence, std::nullopt);
  EXPECT_LT(frame.length, frame.headerLength);
}

}  // namespace
}  // namespace qx::app

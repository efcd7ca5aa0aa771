#include "apps/vso/decode/decodeFrame.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "apps/vso/decode/Decoded.h"
#include "support/LogCapture.h"

namespace qx::app {
namespace {

using test::ANNOUNCE;
using test::BASIC;
using test::decoded;
using test::GROUPS;
using test::HOME;
using test::IDENTIFY;
using test::LEVEL_CONTROL;
using test::MESH_PARAMETERS;
using test::ON_OFF;
using test::OTA_UPGRADE;
using test::QX_ANNOUNCE;
using test::QX_PRIVATE;
using test::SCENES;
using test::ZDO;

ZclHeader zclHeader(const DecodedFrame& frame) { return std::get<ZclHeader>(frame.header); }

std::string nameOf(const DecodedFrame& frame) {
  const char* const name = zclHeader(frame).name;
  return name != nullptr ? name : "none";
}

std::string text(std::nullptr_t) { return "null"; }
std::string text(bool value) { return value ? "true" : "false"; }
std::string text(long long value) { return std::to_string(value); }
std::string text(const std::string& value) { return value; }
std::string text(const std::vector<unsigned int>& values) {
  std::string list;
  for (const unsigned int value : values) list += (list.empty() ? "" : ",") + std::to_string(value);
  return "[" + list + "]";
}

/// "level=128 transitionTime=10 groupIds=[1,2]"
std::string listed(const std::vector<NamedValue>& values) {
  std::string list;
  for (const NamedValue& named : values) {
    list += (list.empty() ? "" : " ") + std::string(named.name) + "=";
    list += std::visit([](const auto& value) { return text(value); }, named.value);
  }
  return list;
}

/// "extensions: clusterId=6 length=1; clusterId=8 length=2"
std::string listed(const std::optional<DecodedTable>& table) {
  if (!table) return "no table";
  std::string list;
  for (const auto& row : table->rows) list += (list.empty() ? " " : "; ") + listed(row);
  return std::string(table->name) + ":" + list;
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

/// A frame, and what is to be known of it.
struct FrameCase {
  const char* name;
  unsigned short cluster;
  const char* hex;
  const char* expected;
  const char* undecoded = "";
  unsigned short profile = HOME;
};

DecodedFrame decodedCase(const FrameCase& c) { return decoded(c.profile, c.cluster, c.hex); }

FrameCase inProfile(unsigned short profile, FrameCase c) {
  c.profile = profile;
  return c;
}

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
  EXPECT_EQ(frame.verdict.toString(), "command is missing at byte 2");
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

TEST(decodeFrame, NamesTheMakersOwnCommandBehindItsCodeAlone) {
  EXPECT_EQ(nameOf(decoded(HOME, SCENES, "05 40 10 05 05 01 00 02")), "un-recall scene");
  EXPECT_EQ(nameOf(decoded(HOME, SCENES, "05 41 10 05 05 01 00 02")), "none");
  EXPECT_EQ(nameOf(decoded(HOME, SCENES, "01 05 05 01 00 02")), "recall scene");
}

TEST(decodeFrame, NamesNoClusterCommandOfAnotherProfileOrAManufacturer) {
  EXPECT_EQ(nameOf(decoded(0xC25D, ON_OFF, "01 05 02")), "none");
  EXPECT_EQ(nameOf(decoded(HOME, ON_OFF, "05 40 10 05 02")), "none");
}

// Lists

class AttributeLists : public testing::TestWithParam<FrameCase> {};

TEST_P(AttributeLists, Read) {
  const test::LogCapture capture;
  const DecodedFrame frame = decodedCase(GetParam());
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
  const DecodedFrame frame = decodedCase(GetParam());
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
        FrameCase{"AddGroup", GROUPS, "01 05 00  02 01 03 61 62 63", "groupId=258 groupName=abc"},
        FrameCase{"ViewGroup", GROUPS, "01 05 01  02 01", "groupId=258"},
        FrameCase{"GetGroupMembership", GROUPS, "01 05 02  02 02 01 04 03", "groupCount=2 groupIds=[258,772]"},
        FrameCase{"GetMembershipOfAllGroups", GROUPS, "01 05 02  00", "groupCount=0 groupIds=[]"},
        FrameCase{"RemoveAllGroups", GROUPS, "01 05 04", ""},
        FrameCase{"ViewGroupResponse", GROUPS, "09 05 01  00 02 01 02 61 62", "status=0 groupId=258 groupName=ab"},
        FrameCase{"FailedViewGroupResponse", GROUPS, "09 05 01  8b 02 01", "status=139 groupId=258"},
        FrameCase{"GroupNameThatIsCut", GROUPS, "09 05 01  00 02 01 03 61 62", "status=0 groupId=258", "036162"},
        FrameCase{"GetGroupMembershipResponse", GROUPS, "09 05 02  08 01 02 01",
                  "capacity=8 groupCount=1 groupIds=[258]"},
        FrameCase{"GroupIdsThatAreCut", GROUPS, "09 05 02  08 02 02 01 04", "capacity=8 groupCount=2", "020104"},
        FrameCase{"AddScene", SCENES, "01 05 00  02 01 03 0a 01 01 61",
                  "groupId=258 sceneId=3 transitionTime=266 sceneName=a"},
        FrameCase{"RecallScene", SCENES, "01 05 05  02 01 03", "groupId=258 sceneId=3"},
        FrameCase{"RecallSceneWithATime", SCENES, "01 05 05  02 01 03 0a 01",
                  "groupId=258 sceneId=3 transitionTime=266"},
        FrameCase{"UnRecallScene", SCENES, "05 40 10 00 05  02 01 03", "groupId=258 sceneId=3"},
        FrameCase{"FailedViewSceneResponse", SCENES, "09 05 01  8b 02 01 03", "status=139 groupId=258 sceneId=3"},
        FrameCase{"GetSceneMembershipResponse", SCENES, "09 05 06  00 10 02 01 02 03 04",
                  "status=0 capacity=16 groupId=258 sceneCount=2 sceneIds=[3,4]"},
        FrameCase{"ImageNotify", OTA_UPGRADE, "09 05 00  02 32 40 10 34 12",
                  "payloadType=2 queryJitter=50 manufacturerCode=4160 imageType=4660"},
        FrameCase{"QueryNextImageRequest", OTA_UPGRADE, "01 05 01  01 40 10 34 12 04 03 02 01 78 56",
                  "fieldControl=1 manufacturerCode=4160 imageType=4660 fileVersion=16909060 hardwareVersion=22136"},
        FrameCase{"QueryNextImageResponse", OTA_UPGRADE, "09 05 02  00 40 10 34 12 04 03 02 01 00 00 00 f0",
                  "status=0 manufacturerCode=4160 imageType=4660 fileVersion=16909060 imageSize=4026531840"},
        FrameCase{"NoImageAvailable", OTA_UPGRADE, "09 05 02  98", "status=152"},
        FrameCase{"ImageBlockRequest", OTA_UPGRADE,
                  "01 05 03  03 40 10 34 12 04 03 02 01 00 01 00 00 40 77 66 55 44 33 22 11 00 32 00",
                  "fieldControl=3 manufacturerCode=4160 imageType=4660 fileVersion=16909060 fileOffset=256 "
                  "maximumDataSize=64 requestNodeAddress=0011223344556677 minimumBlockPeriod=50"},
        FrameCase{"ImagePageRequest", OTA_UPGRADE, "01 05 04  00 40 10 34 12 04 03 02 01 00 01 00 00 40 00 02 0a 00",
                  "fieldControl=0 manufacturerCode=4160 imageType=4660 fileVersion=16909060 fileOffset=256 "
                  "maximumDataSize=64 pageSize=512 responseSpacing=10"},
        FrameCase{"ImageBlockResponse", OTA_UPGRADE, "09 05 05  00 40 10 34 12 04 03 02 01 00 01 00 00 03 0a bb cc",
                  "status=0 manufacturerCode=4160 imageType=4660 fileVersion=16909060 fileOffset=256 dataSize=3 "
                  "data=0abbcc"},
        FrameCase{"ImageBlockToWaitFor", OTA_UPGRADE, "09 05 05  97 10 00 00 00 20 00 00 00 32 00",
                  "status=151 currentTime=16 requestTime=32 minimumBlockPeriod=50"},
        FrameCase{"UpgradeEndRequest", OTA_UPGRADE, "01 05 06  00 40 10 34 12 04 03 02 01",
                  "status=0 manufacturerCode=4160 imageType=4660 fileVersion=16909060"},
        FrameCase{"UpgradeEndResponse", OTA_UPGRADE, "09 05 07  40 10 34 12 04 03 02 01 10 00 00 00 20 00 00 00",
                  "manufacturerCode=4160 imageType=4660 fileVersion=16909060 currentTime=16 upgradeTime=32"},
        inProfile(QX_PRIVATE,
                  {"ImmediateAnnounce", MESH_PARAMETERS, "01 05 00  02 01 00 02 03", "idCount=2 ids=[1,770]"}),
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

TEST(decodeFrame, GivesTheDigitsInWhichIdsAndVersionsAreRead) {
  const DecodedFrame frame = decoded(HOME, OTA_UPGRADE, "01 05 06  00 40 10 34 12 04 03 02 01");
  ASSERT_EQ(frame.fields.size(), 4u);
  EXPECT_EQ(frame.fields[0].digits, 0u);
  EXPECT_EQ(frame.fields[1].digits, 4u);
  EXPECT_EQ(frame.fields[2].digits, 4u);
  EXPECT_EQ(frame.fields[3].digits, 8u);
}

TEST(decodeFrame, GivesTheDeviceTypeOfAnAnnounceInWords) {
  const auto meaning = [](const std::string& type) {
    return std::string(decoded(QX_ANNOUNCE, ANNOUNCE, "18 05 0a  00 00 20" + type).readings.at(0).meaning);
  };
  EXPECT_EQ(meaning("01"), "QX_COORDINATOR");
  EXPECT_EQ(meaning("03"), "QX_END_DEVICE");
  EXPECT_EQ(meaning("63"), "");
}

// Readings

class Readings : public testing::TestWithParam<FrameCase> {};

TEST_P(Readings, Read) {
  const test::LogCapture capture;
  EXPECT_EQ(listed(decodedCase(GetParam()).readings), GetParam().expected);
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
        FrameCase{"FirmwareOfTheUpgradeCluster", OTA_UPGRADE,
                  "18 05 01  02 00 00 23 04 03 02 01  06 00 00 20 01  07 00 00 21 40 10  08 00 00 21 34 12",
                  "manufacturer=4160 imageTypeId=4660 firmwareVersion=16909060 imageUpgradeStatus=1"},
        FrameCase{"FirmwareOfAnotherType", OTA_UPGRADE, "18 05 01  02 00 00 21 04 03", ""},
        FrameCase{"FirmwareOfAReport", OTA_UPGRADE, "18 05 0a  02 00 23 04 03 02 01", ""},
        inProfile(QX_ANNOUNCE,
                  {"Announce", ANNOUNCE,
                   "18 05 0a  00 00 20 02  01 00 21 2c 01  02 00 21 3c 00  03 00 20 02  04 00 42 03 31 2e 30 "
                   "05 00 20 07  06 00 21 05 00  07 00 42 04 4c 61 6d 70  0b 00 21 0a 00  0c 00 20 0f "
                   "0f 00 21 14 00  13 00 28 c5  14 00 20 ff  15 00 28 9c  16 00 20 04",
                   "deviceType=2 announceWindow=300 mtorrPeriod=60 numZaps=2 firmwareVersion=1.0 reflashVersion=7 "
                   "bootCount=5 productString=Lamp apPollInterval=10 channel=15 parentPollInterval=20 nodeRssi=-59 "
                   "nodeLqi=255 batteryLevel=-100 nodeRadioBars=4"}),
        inProfile(QX_ANNOUNCE, {"SignedValuesAroundZero", ANNOUNCE, "18 05 0a  13 00 28 80  15 00 28 7f",
                                "nodeRssi=-128 batteryLevel=127"}),
        inProfile(QX_ANNOUNCE,
                  {"VersionBehindAZeroByte", ANNOUNCE, "18 05 0a  04 00 42 04 00 31 2e 30", "firmwareVersion=1.0"}),
        inProfile(QX_ANNOUNCE, {"AnnounceOfAnotherType", ANNOUNCE, "18 05 0a  13 00 20 c5", ""}),
        inProfile(QX_ANNOUNCE, {"NoReport", ANNOUNCE, "18 05 01  13 00 00 28 c5", ""}),
        inProfile(QX_PRIVATE, {"MeshParameters", MESH_PARAMETERS,
                               "10 05 05  01 00 21 02 01  02 00 21 3c 00  03 00 20 02  0c 00 20 0f",
                               "announceWindow=258 mtorrPeriod=60 apCount=2 channel=15"}),
        inProfile(QX_PRIVATE,
                  {"MeshParametersOfAClusterSpecificFrame", MESH_PARAMETERS, "11 05 05  0c 00 20 0f", "channel=15"}),
        inProfile(QX_PRIVATE, {"NoneOfAnAnswerWithMeshParameters", MESH_PARAMETERS, "11 05 01  0c 00 00 20 0f", ""}),
        FrameCase{"NoneOfAnotherCluster", BASIC, "18 05 01  00 00 00 10 01", ""},
        FrameCase{"NoneOfAManufacturersAttributes", ON_OFF, "1c 40 10 05 01  00 00 00 10 01", ""},
        FrameCase{"NoneOfAClusterCommandWithTheNumberOfAList", LEVEL_CONTROL, "01 05 04  00 00 00", ""}),
    nameOfCase);

TEST(decodeFrame, TakesNoReadingsFromAnotherProfile) {
  EXPECT_EQ(listed(decoded(0xC25D, ON_OFF, "18 05 01  00 00 00 10 01").readings), "");
}

// ZDO

TEST(decodeFrame, TakesProfile0ForZdo) {
  const DecodedFrame frame = decoded(ZDO, 0x8036, "07 84");
  const ZdoHeader header = std::get<ZdoHeader>(frame.header);
  EXPECT_EQ(header.sequence, 7);
  EXPECT_EQ(header.status, 0x84);
  EXPECT_STREQ(frame.clusterName, "permit join response");
  EXPECT_EQ(frame.hex, "0784");
  EXPECT_EQ(frame.length, 2u);
}

TEST(decodeFrame, TakesTheZdoHeaderAsFarAsTheFrameGoes) {
  const auto header = [](unsigned short command, const char* hex) {
    return std::get<ZdoHeader>(decoded(ZDO, command, hex).header);
  };
  EXPECT_EQ(header(0x8036, "").sequence, std::nullopt);
  EXPECT_EQ(header(0x8036, "").status, std::nullopt);
  EXPECT_EQ(header(0x8036, "07").sequence, 7);
  EXPECT_EQ(header(0x8036, "07").status, std::nullopt);
}

TEST(decodeFrame, LooksForNoStatusInARequest) {
  EXPECT_EQ(std::get<ZdoHeader>(decoded(ZDO, 0x0036, "07 3c 01").header).status, std::nullopt);
}

TEST(decodeFrame, ReadsTheStatusOfEveryZdoResponse) {
  const DecodedFrame frame = decoded(ZDO, 0x8033, "07 84 ab");
  EXPECT_EQ(std::get<ZdoHeader>(frame.header).status, 0x84);
  EXPECT_EQ(frame.clusterName, nullptr);
  EXPECT_EQ(listed(frame.fields), "");
  EXPECT_EQ(frame.verdict.state, FrameVerdict::UNKNOWN);
}

INSTANTIATE_TEST_SUITE_P(
    Zdo, CommandFields,
    testing::Values(
        inProfile(ZDO, {"LqiRequest", 0x0031, "07 09", "startIndex=9"}),
        inProfile(ZDO, {"RoutingRequest", 0x0032, "07 09", "startIndex=9"}),
        inProfile(ZDO, {"Leave", 0x0034, "07 77 66 55 44 33 22 11 00 40", "device=0011223344556677 options=64"}),
        inProfile(ZDO, {"PermitJoin", 0x0036, "07 3c 01", "duration=60 trustCentreSignificance=1"}),
        inProfile(ZDO, {"Scan", 0x0038, "07 00 80 00 00 02 03", "channelMask=32768 duration=2 scanCount=3"}),
        inProfile(ZDO,
                  {"ChannelChange", 0x0038, "07 00 00 00 80 fe 04", "channelMask=2147483648 duration=254 updateId=4"}),
        inProfile(ZDO, {"ManagerUpdate", 0x0038, "07 00 80 00 00 ff 04 34 12",
                        "channelMask=32768 duration=255 updateId=4 managerAddress=4660"}),
        inProfile(ZDO, {"UpdateOfNoForm", 0x0038, "07 00 80 00 00 06 03", "channelMask=32768 duration=6", "03"}),
        inProfile(ZDO, {"LeaveResponse", 0x8034, "07 00", ""}),
        inProfile(ZDO, {"PermitJoinResponseWithMore", 0x8036, "07 84 ab", "", "ab"}),
        inProfile(ZDO, {"FailedLqiResponse", 0x8031, "07 84", ""}),
        inProfile(ZDO, {"LqiResponse", 0x8031, "07 00 05 02 00",
                        "totalNeighborTableEntriesOnDevice=5 startIndex=2 entries=0"}),
        inProfile(ZDO, {"RoutingResponse", 0x8032, "07 00 05 02 00",
                        "totalRoutingTableEntriesOnDevice=5 startIndex=2 entries=0"}),
        inProfile(ZDO, {"UpdateResponse", 0x8038, "07 00 00 08 00 00 05 01 01 02 01 ff",
                        "scannedChannels=2048 transmissions=261 failures=513 energyCount=1"}),
        inProfile(ZDO, {"UnknownCommand", 0x0033, "07 09", "", "09"})),
    nameOfCase);

// Tables

class Tables : public testing::TestWithParam<FrameCase> {};

TEST_P(Tables, Read) {
  const DecodedFrame frame = decodedCase(GetParam());
  EXPECT_EQ(listed(frame.table), GetParam().expected);
  EXPECT_EQ(frame.undecoded, GetParam().undecoded);
}

INSTANTIATE_TEST_SUITE_P(
    decodeFrame, Tables,
    testing::Values(
        inProfile(ZDO, {"Neighbours", 0x8031,
                        "07 00 02 00 02 "
                        "11 22 33 44 55 66 77 88  77 66 55 44 33 22 11 00  34 12  12 01 01 80 "
                        "18 27 36 45 54 63 72 81  ef cd ab 89 67 45 23 01  cd ab  7f fe 0f 01",
                        "hops: neighbor=4660 lqi=128 neighborLid=0011223344556677 type=3 rxOnWhenIdle=true "
                        "relationship=1 permitJoining=true treeDepth=1 neighborPanId=8877665544332211; "
                        "neighbor=43981 lqi=1 neighborLid=0123456789abcdef type=0 rxOnWhenIdle=null "
                        "relationship=3 permitJoining=null treeDepth=15 neighborPanId=8172635445362718"}),
        inProfile(ZDO, {"NeighbourWithItsReceiverOff", 0x8031,
                        "07 00 01 00 01 "
                        "11 22 33 44 55 66 77 88  77 66 55 44 33 22 11 00  34 12  05 00 02 ff",
                        "hops: neighbor=4660 lqi=255 neighborLid=0011223344556677 type=2 rxOnWhenIdle=false "
                        "relationship=0 permitJoining=false treeDepth=2 neighborPanId=8877665544332211"}),
        inProfile(ZDO, {"NeighboursUpToTheLastWholeOne", 0x8031,
                        "07 00 02 00 02 "
                        "11 22 33 44 55 66 77 88  77 66 55 44 33 22 11 00  34 12  12 01 01 80 "
                        "18 27 36",
                        "hops: neighbor=4660 lqi=128 neighborLid=0011223344556677 type=3 rxOnWhenIdle=true "
                        "relationship=1 permitJoining=true treeDepth=1 neighborPanId=8877665544332211",
                        "182736"}),
        inProfile(ZDO, {"NoNeighbours", 0x8031, "07 00 00 00 00", "hops:"}),
        inProfile(ZDO, {"NeighboursThatAreOnlyClaimed", 0x8031, "07 00 00 00 ff", "hops:"}),
        inProfile(ZDO, {"NoTableOfAFailure", 0x8031, "07 84", "no table"}),
        inProfile(ZDO, {"Routes", 0x8032, "07 00 02 00 02  01 02 38 03 04  11 12 07 13 14",
                        "routes: destination=513 routeStatus=0 memConstrained=true manyToOne=true "
                        "routeRecordRequired=true nextHop=1027; "
                        "destination=4625 routeStatus=5 memConstrained=false manyToOne=false "
                        "routeRecordRequired=false nextHop=5139"}),
        inProfile(ZDO, {"RoutesUpToTheLastWholeOne", 0x8032, "07 00 02 00 02  01 02 04 03 04  11 12",
                        "routes: destination=513 routeStatus=4 memConstrained=false manyToOne=false "
                        "routeRecordRequired=false nextHop=1027",
                        "1112"}),
        inProfile(ZDO, {"EnergyLevels", 0x8038, "07 00  00 28 00 04  05 00 01 00 03  00 ff 80",
                        "energyLevels: channel=11 rssi=-100; channel=13 rssi=-37; channel=26 rssi=-68"}),
        inProfile(ZDO, {"EnergyLevelsThatAreThere", 0x8038, "07 00  00 28 00 04  05 00 01 00 03  04",
                        "energyLevels: channel=11 rssi=-99"}),
        FrameCase{"ExtensionsOfAScene", SCENES,
                  "09 05 01  00 02 01 03 0a 00 02 61 62  06 00 01 01  00 03 02 fe 01  01 01 00",
                  "extensions: clusterId=6 length=1 value=01; clusterId=768 length=2 value=fe01; "
                  "clusterId=257 length=0 value="},
        FrameCase{"ExtensionsUpToTheLastWholeOne", SCENES, "01 05 00  02 01 03 0a 00 00  06 00 01 01  08 00 02 fe",
                  "extensions: clusterId=6 length=1 value=01"},
        FrameCase{"NoExtensions", SCENES, "01 05 00  02 01 03 0a 00 00", "extensions:"},
        inProfile(QX_ANNOUNCE, {"AccessPoints", ANNOUNCE, "18 05 0a  12 00 41 04 ab cd 12 34",
                                "apRouteTable: destination=43981 tableIndex=0; destination=4660 tableIndex=1"}),
        inProfile(QX_ANNOUNCE, {"NoAccessPoints", ANNOUNCE, "18 05 0a  12 00 41 00", "apRouteTable:"}),
        inProfile(QX_ANNOUNCE, {"AccessPointsOfAnotherType", ANNOUNCE, "18 05 0a  12 00 42 02 61 62", "no table"}),
        inProfile(QX_ANNOUNCE, {"NoReport", ANNOUNCE, "18 05 01  12 00 00 41 02 ab cd", "no table"}),
        FrameCase{"NoTable", ON_OFF, "18 05 0a  00 00 10 01", "no table"}),
    nameOfCase);

TEST(decodeFrame, GivesWhatTheNumbersOfATableMean) {
  const DecodedFrame frame = decoded(ZDO, 0x8031,
                                     "07 00 01 00 01 "
                                     "11 22 33 44 55 66 77 88  77 66 55 44 33 22 11 00  34 12  41 00 02 ff");
  ASSERT_TRUE(frame.table && frame.table->rows.size() == 1);
  for (const NamedValue& cell : frame.table->rows[0]) {
    const std::string name = cell.name;
    const char* const meaning = name == "type" ? "QX_ROUTER" : name == "relationship" ? "PREVIOUS_CHILD" : nullptr;
    EXPECT_STREQ(cell.meaning, meaning) << name;
    EXPECT_EQ(cell.digits, name == "neighbor" ? 4u : 0u) << name;
  }
}

// Verdict

TEST(decodeFrame, JudgesEveryFrame) {
  EXPECT_EQ(decoded(HOME, ON_OFF, "01 05 02").verdict, FrameVerdict());
  EXPECT_EQ(decoded(HOME, ON_OFF, "01 05 03").verdict.state, FrameVerdict::UNKNOWN);
  EXPECT_EQ(decoded(HOME, ON_OFF, "01 05 02 ab").verdict.toString(), "1 byte behind the last field at byte 3");
  EXPECT_EQ(decoded(HOME, ON_OFF, "").verdict.toString(), "frame control is missing at byte 0");
  EXPECT_EQ(decoded(ZDO, 0x8036, "07").verdict.toString(), "status is missing at byte 1");
}

}  // namespace
}  // namespace qx::app

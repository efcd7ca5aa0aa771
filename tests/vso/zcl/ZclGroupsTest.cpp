#include "vso/zcl/ZclGroups.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/Answer.h"
#include "vso/zcl/BuiltCommand.h"
#include "vso/zcl/ClusterFrames.h"
#include "vso/zcl/TracedMessage.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::digits;
using test::fields;
using test::headerLength;
using test::hex;
using test::NAME_OF_16;
using test::NAME_OF_16_HEX;
using test::RESPONSE_HEADERS;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string NAME_OF_17 = NAME_OF_16 + 'g';

TEST(ZclGroups, BelongsToItsCluster) {
  EXPECT_EQ(ZclGroups().getProfileId(), 0x0104);
  EXPECT_EQ(ZclGroups().getClusterId(), 0x0004);
}

TEST(ZclGroups, IsAClusterFrameWithoutACommandByDefault) { test::expectAClusterFrameByDefault<ZclGroups>(); }

TEST(ZclGroups, TakesACommand) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(ZclGroups(static_cast<unsigned char>(0x40))), hex(bytes({0x01, sequence, 0x40})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclGroups, ParsesBytesAndText) { test::expectParsesBytesAndText<ZclGroups>(); }

using Command = test::BuiltCommand<ZclGroups>;

const Command COMMANDS[] = {
    {"addGroup",
     [](ZclGroups& frame) { frame.addGroup(0x0102, "Hall"); },
     "00 02 01 04 48 61 6c 6c",
     {"setFcf(01)", "setCid(00)", "isValidLength()"}},
    {"addGroupWithTheLongestName",
     [](ZclGroups& frame) { frame.addGroup(0xFEDC, NAME_OF_16); },
     "00 dc fe 10 " + NAME_OF_16_HEX,
     {"setFcf(01)", "setCid(00)", "isValidLength()"}},
    {"addGroupWithoutAName",
     [](ZclGroups& frame) { frame.addGroup(1, ""); },
     "00 01 00 00",
     {"setFcf(01)", "setCid(00)", "isValidLength()"}},
    {"viewGroup",
     [](ZclGroups& frame) { frame.viewGroup(0xFEDC); },
     "01 dc fe",
     {"setFcf(01)", "setCid(01)", "isValidLength()"}},
    {"getGroupMembership",
     [](ZclGroups& frame) {
       frame.getGroupMembership({0x0102, 0xFEDC});
     },
     "02 02 02 01 dc fe",
     {"setFcf(01)", "setCid(02)", "isValidLength()"}},
    {"getGroupMembershipOfAll",
     [](ZclGroups& frame) { frame.getGroupMembership({}); },
     "02 00",
     {"setFcf(01)", "setCid(02)", "isValidLength()"}},
    {"removeGroup",
     [](ZclGroups& frame) { frame.removeGroup(0xFEDC); },
     "03 dc fe",
     {"setFcf(01)", "setCid(03)", "isValidLength()"}},
    {"removeAllGroups", [](ZclGroups& frame) { frame.removeAllGroups(); }, "04", {"setFcf(01)", "setCid(04)"}},
    {"addGroupIfIdentifying",
     [](ZclGroups& frame) { frame.addGroupIfIdentifying(0x0102, "Hall"); },
     "05 02 01 04 48 61 6c 6c",
     {"setFcf(01)", "setCid(05)", "isValidLength()"}},
    {"addGroupIfIdentifyingWithTheLongestName",
     [](ZclGroups& frame) { frame.addGroupIfIdentifying(0xFEDC, NAME_OF_16); },
     "05 dc fe 10 " + NAME_OF_16_HEX,
     {"setFcf(01)", "setCid(05)", "isValidLength()"}},
    {"addGroupIfIdentifyingWithoutAName",
     [](ZclGroups& frame) { frame.addGroupIfIdentifying(1, ""); },
     "05 01 00 00",
     {"setFcf(01)", "setCid(05)", "isValidLength()"}},
};

class ZclGroupsCommand : public testing::TestWithParam<Command> {};

INSTANTIATE_TEST_SUITE_P(Commands, ZclGroupsCommand, testing::ValuesIn(COMMANDS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclGroupsCommand, IsBuiltBehindTheSequenceOfTheConstructor) { expectBuiltBehindTheSequence(GetParam()); }
TEST_P(ZclGroupsCommand, IsBuiltOverAnyFrame) { expectBuiltOverAnyFrame(GetParam()); }
TEST_P(ZclGroupsCommand, IsBuiltByItsVirtualOperationsWithoutAWarning) { expectBuiltByItsCalls(GetParam()); }

/// Notes the texts that are appended.
class NotedStrings : public ZclGroups {
 public:
  void addString(const std::string& text) override {
    texts.push_back(text);
    ZclGroups::addString(text);
  }

  std::vector<std::string> texts;
};

TEST(ZclGroups, AppendsNamesThroughTheVirtualOperation) {
  NotedStrings frame;
  frame.addGroup(1, "Hall");
  frame.addGroupIfIdentifying(1, "");
  EXPECT_THAT(frame.texts, ElementsAre("Hall", ""));
}

TEST(ZclGroups, AppendsNamesAsTheyStand) {
  ZclGroups frame(bytesOf("01 05 ff"));
  frame.addGroup(1, std::string("\0\xff", 2));
  EXPECT_EQ(hex(frame), "01 05 00 01 00 02 00 ff");
}

/// What a call throws as std::runtime_error.
template <typename Call>
std::string thrownBy(Call call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing";
}

TEST(ZclGroups, RefusesALongNameBeforeTheFrameIsTouched) {
  for (const std::string& name : {NAME_OF_17, std::string(256, 'n'), std::string(272, 'n')}) {
    const std::string message = "groupName has to be less than 16 characters in length";
    test::TracedMessage<ZclGroups> frame(bytesOf("1a 05 33 01 02 03 04"));
    std::vector<unsigned char> storage(frame.contents, frame.contents + sizeof frame.contents);
    EXPECT_EQ(thrownBy([&] { frame.addGroup(1, name); }), message);
    EXPECT_EQ(thrownBy([&] { frame.addGroupIfIdentifying(1, name); }), message);
    EXPECT_THAT(frame.contents, ElementsAreArray(storage));
    EXPECT_EQ(frame.length_, 7U);
    EXPECT_THAT(frame.calls, IsEmpty());
  }
}

std::vector<unsigned short> idsFrom1(unsigned short count) {
  std::vector<unsigned short> ids;
  for (unsigned short id = 1; id <= count; ++id) ids.push_back(id);
  return ids;
}

/// The payload of these ids behind `head`.
std::string idsHex(const std::string& head, unsigned short count) {
  std::string text = head;
  for (const unsigned short id : idsFrom1(count)) text += ' ' + digits(static_cast<unsigned char>(id)) + " 00";
  return text;
}

TEST(ZclGroups, AsksForUpTo125Groups) {
  ZclGroups frame(bytesOf("01 05 ff"));
  frame.getGroupMembership(idsFrom1(125));
  EXPECT_EQ(frame.length_, 254U);
  EXPECT_EQ(hex(frame), idsHex("01 05 02 7d", 125));
}

TEST(ZclGroups, AsksForUpTo124GroupsBehindAManufacturerCode) {
  ZclGroups frame(bytesOf("05 40 10 05 ff"));
  frame.getGroupMembership(idsFrom1(124));
  EXPECT_EQ(frame.length_, 254U);
  EXPECT_EQ(hex(frame), idsHex("05 40 10 05 02 7c", 124));
}

TEST(ZclGroups, RefusesMoreGroupsThanFitWithTheCommandSetAndThePayloadEmpty) {
  const std::string message = "Too many ids to fit in packet";
  for (const unsigned short count : {126, 127, 128, 256, 381}) {
    test::TracedMessage<ZclGroups> frame(bytesOf("1a 05 33 01 02 03 04"));
    EXPECT_EQ(thrownBy([&] { frame.getGroupMembership(idsFrom1(count)); }), message) << count;
    EXPECT_EQ(hex(frame), "01 05 02") << count;
    EXPECT_THAT(frame.calls, ElementsAre("setFcf(01)", "setCid(02)")) << count;
  }
  ZclGroups frame(bytesOf("05 40 10 05 ff 01 02"));
  EXPECT_EQ(thrownBy([&] { frame.getGroupMembership(idsFrom1(125)); }), message);
  EXPECT_EQ(hex(frame), "05 40 10 05 02");
}

// A bundle that a reader has left alone shows its marks.

std::string showAdd(const ZclGroups& frame) {
  StatusGroupidBundle bundle{0xAA, 0xBBBB};
  const auto answer = frame.addGroupResponse(bundle);
  return test::show(answer) + ' ' + fields(bundle.status, bundle.groupId);
}

std::string showRemove(const ZclGroups& frame) {
  StatusGroupidBundle bundle{0xAA, 0xBBBB};
  const auto answer = frame.remGroupResponse(bundle);
  return test::show(answer) + ' ' + fields(bundle.status, bundle.groupId);
}

std::string showView(const ZclGroups& frame) {
  StatusGroupIdGroupNameBundle bundle{0xAA, 0xBBBB, "marks"};
  const auto answer = frame.viewGroupResponse(bundle);
  return test::show(answer) + ' ' + fields(bundle.status, bundle.groupId) + ' ' + bundle.groupName;
}

std::string showMembership(const ZclGroups& frame) {
  GroupIdsBundle bundle{0xAA, 0xBB, {0xCCCC, 0xDDDD, 0xEEEE}};
  const auto answer = frame.getGroupMembershipResponse(bundle);
  return test::show(answer) + ' ' + fields(bundle.capacity, bundle.groupCount) + ' ' + test::list(bundle.groupIds);
}

struct Response {
  const char* name;
  std::string (*read)(const ZclGroups&);
  std::string command;
  std::string payload;  ///< 40 bytes, any number of which may be in use.
  unsigned int least;   ///< Bytes of payload with which a response is taken.
  unsigned int most;
  std::string taken;
  std::string left;
};

std::ostream& operator<<(std::ostream& out, const Response& row) { return out << row.name; }

const std::string PAYLOAD =
    "86 02 01 02 48 69 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 "
    "14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27";
constexpr unsigned int ANY = 1000;

const Response RESPONSES[] = {
    {"addGroupResponse", showAdd, "00", PAYLOAD, 3, 3, "true 86 0102", "indeterminate aa bbbb"},
    {"remGroupResponse", showRemove, "03", PAYLOAD, 3, 3, "true 86 0102", "indeterminate aa bbbb"},
    {"viewGroupResponse", showView, "01", PAYLOAD, 3, 19, "true 86 0102 Hi", "indeterminate aa bbbb marks"},
    {"getGroupMembershipResponse", showMembership, "02", PAYLOAD, 2, ANY, "true 86 02 [0201 6948]",
     "indeterminate aa bb [cccc dddd eeee]"},
};

class ZclGroupsResponse : public testing::TestWithParam<Response> {};

INSTANTIATE_TEST_SUITE_P(Responses, ZclGroupsResponse, testing::ValuesIn(RESPONSES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclGroupsResponse, IsTakenByItsLength) {
  const test::LogCapture log;
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclGroups frame(bytesOf(header + GetParam().command + GetParam().payload));
    const unsigned int least = headerLength(header) + GetParam().least;
    const unsigned int most = headerLength(header) + GetParam().most;
    // What is behind the length is in the buffer, so that only the length decides. The last two are beyond it.
    for (unsigned int length = 0; length <= 300; ++length) {
      frame.length_ = length;
      EXPECT_EQ(GetParam().read(frame), length >= least && length <= most ? GetParam().taken : GetParam().left)
          << header << length;
    }
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclGroupsResponse, IsTakenByItsCommand) {
  const test::LogCapture log;
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclGroups frame(bytesOf(header + GetParam().command + GetParam().payload));
    frame.length_ = headerLength(header) + 3;  // fits all of them
    const std::string before = hex(frame);
    EXPECT_EQ(GetParam().read(frame), GetParam().taken) << header;
    EXPECT_EQ(hex(frame), before) << "a reader changes nothing";
    const unsigned char own = frame.commandIdentifier();
    for (unsigned int command = 0; command <= 0xFF; ++command) {
      frame.setCid(static_cast<unsigned char>(command));
      EXPECT_EQ(GetParam().read(frame), command == own ? GetParam().taken : GetParam().left) << header << command;
    }
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclGroupsResponse, IsTakenFromAnyFrameTypeAndDirection) {
  for (const char* control : {"00 ", "01 ", "02 ", "03 ", "18 ", "fb "}) {
    ZclGroups frame(bytesOf(std::string(control) + "07 " + GetParam().command + GetParam().payload));
    frame.length_ = 6;
    EXPECT_EQ(GetParam().read(frame), GetParam().taken) << control;
  }
}

TEST_P(ZclGroupsResponse, LogsNothingWhereTheHeaderIsCut) {
  const test::LogCapture log;
  for (const char* frame : {"", "0d", "0d 40", "0d 40 10", "0d 40 10 07", "09", "09 07"}) {
    EXPECT_EQ(GetParam().read(ZclGroups(bytesOf(frame))), GetParam().left) << frame;
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclGroups, ReadsAGroupWithAName) {
  EXPECT_EQ(showView(ZclGroups(bytesOf("09 07 01 00 02 01 04 48 61 6c 6c"))), "true 00 0102 Hall");
  EXPECT_EQ(showView(ZclGroups(bytesOf("09 07 01 00 02 01 00"))), "true 00 0102 ");
}

TEST(ZclGroups, TakesAFailedViewWithoutANameLength) {
  EXPECT_EQ(showView(ZclGroups(bytesOf("09 07 01 8b 02 01"))), "true 8b 0102 ");
}

TEST(ZclGroups, ReadsANameOf15CharactersAndRefusesOneOf16) {
  const std::string head = "09 07 01 00 02 01 ";
  const std::string nameOf15 = NAME_OF_16_HEX.substr(0, NAME_OF_16_HEX.size() - 3);
  EXPECT_EQ(showView(ZclGroups(bytesOf(head + "0f " + nameOf15))), "true 00 0102 0123456789abcde");
  EXPECT_EQ(showView(ZclGroups(bytesOf(head + "10 " + NAME_OF_16_HEX))), "indeterminate aa bbbb marks");
  EXPECT_EQ(showView(ZclGroups(bytesOf(head + "10 " + nameOf15))),
            "true 00 0102 0123456789abcde" + std::string(1, '\0'));
}

TEST(ZclGroups, ReadsANamePastTheFramesEnd) {
  ZclGroups frame(bytesOf("09 07 01 00 02 01 04 48 61 6c 6c"));
  frame.length_ = 8;
  EXPECT_EQ(showView(frame), "true 00 0102 Hall");
  EXPECT_EQ(showView(ZclGroups(bytesOf("09 07 01 00 02 01 04 48 61"))),
            std::string("true 00 0102 Ha") + std::string(2, '\0'));
}

TEST(ZclGroups, ReadsZerosForANamePastTheStorage) {
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclGroups frame(bytesOf(header + "01 00 02 01 ff"));
    const unsigned int name = headerLength(header) + 4;
    for (unsigned int at = name; at < 255; ++at) frame.contents[at] = 'n';
    StatusGroupIdGroupNameBundle bundle;
    EXPECT_EQ(test::show(frame.viewGroupResponse(bundle)), "true");
    EXPECT_EQ(bundle.groupName, std::string(255 - name, 'n') + std::string(name, '\0')) << header;
  }
}

TEST(ZclGroups, ReadsMembershipsByTheirCount) {
  EXPECT_EQ(showMembership(ZclGroups(bytesOf("09 07 02 fe 00"))), "true fe 00 []");
  EXPECT_EQ(showMembership(ZclGroups(bytesOf("09 07 02 fe 02 02 01 dc fe"))), "true fe 02 [0102 fedc]");
  EXPECT_EQ(showMembership(ZclGroups(bytesOf("09 07 02 fe 01 02 01 dc fe"))), "true fe 01 [0102]");
  EXPECT_EQ(showMembership(ZclGroups(bytesOf("09 07 02 fe 00 02 01 dc fe"))), "true fe 00 []");
  EXPECT_EQ(showMembership(ZclGroups(bytesOf("0d 40 10 07 02 ff 01 02 01"))), "true ff 01 [0102]");
}

TEST(ZclGroups, ReadsMembershipsPastTheFramesEnd) {
  ZclGroups frame(bytesOf("09 07 02 fe 03 02 01 dc fe"));
  EXPECT_EQ(showMembership(frame), "true fe 03 [0102 fedc 0000]");
  frame.length_ = 8;
  EXPECT_EQ(showMembership(frame), "true fe 03 [0102 fedc 0000]");
  frame.length_ = 5;
  EXPECT_EQ(showMembership(frame), "true fe 03 [0102 fedc 0000]");
}

TEST(ZclGroups, ReadsZerosForMembershipsPastTheStorage) {
  ZclGroups frame(bytesOf("09 07 02 fe ff"));
  for (unsigned int at = 5; at < 255; ++at) frame.contents[at] = 0x5A;
  frame.length_ = 255;
  GroupIdsBundle bundle;
  EXPECT_EQ(test::show(frame.getGroupMembershipResponse(bundle)), "true");
  std::vector<unsigned short> expected(125, 0x5A5A);
  expected.resize(255);
  EXPECT_EQ(bundle.groupIds, expected);

  ZclGroups shifted(bytesOf("09 07 02 fe ff"));
  shifted.contents[254] = 0x5A;
  EXPECT_EQ(test::show(shifted.getGroupMembershipResponse(bundle)), "true");
  expected.assign(255, 0);
  expected[124] = 0x5A00;
  EXPECT_EQ(bundle.groupIds, expected);
}

TEST(ZclGroups, HasBundlesOfTheWireWidths) {
  EXPECT_EQ(fields(StatusGroupidBundle().status, StatusGroupidBundle().groupId), "00 0000");
  EXPECT_EQ(fields(StatusGroupIdGroupNameBundle().status, StatusGroupIdGroupNameBundle().groupId), "00 0000");
  EXPECT_EQ(fields(GroupIdsBundle().capacity, GroupIdsBundle().groupCount), "00 00");
}

}  // namespace
}  // namespace qx

#include "vso/zcl/ZclScenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
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
using test::fields;
using test::headerLength;
using test::hex;
using test::NAME_OF_16;
using test::NAME_OF_16_HEX;
using test::RESPONSE_HEADERS;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

TEST(ZclScenes, BelongsToItsCluster) {
  EXPECT_EQ(ZclScenes().getProfileId(), 0x0104);
  EXPECT_EQ(ZclScenes().getClusterId(), 0x0005);
}

TEST(ZclScenes, IsAClusterFrameWithoutACommandByDefault) { test::expectAClusterFrameByDefault<ZclScenes>(); }

TEST(ZclScenes, ParsesBytesAndText) { test::expectParsesBytesAndText<ZclScenes>(); }

/// "0006/01/01 ffff/00/00 ...": the slots.
std::string show(const SceneExtensions& slots) {
  std::string text;
  for (const SceneExtension& slot : slots) {
    if (!text.empty()) text += ' ';
    text += test::digits(slot.clusterId) + '/' + test::digits(slot.length) + '/' + test::digits(slot.value);
  }
  return text;
}

SceneTableEntry scene(const std::string& name, const SceneExtensions& extensions) {
  return {0x0102, 0x03, 0x0405, name, extensions};
}

TEST(SceneTableEntry, IsEmptyAtFirst) {
  const SceneTableEntry entry;
  EXPECT_EQ(fields(entry.groupId, entry.sceneId, entry.transitionTime), "0000 00 0000");
  EXPECT_EQ(entry.sceneName, "");
  EXPECT_EQ(show(entry.extensions), "ffff/00/00 ffff/00/00 ffff/00/00 ffff/00/00");
}

TEST(SceneTableEntry, StoresASceneWithOneExtension) {
  SceneTableEntry entry = scene("before", {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}}});
  entry.SetSceneData(0xFEDC, 0xBA, 0x9876, "Evening", 0x0300, 0x54);
  EXPECT_EQ(fields(entry.groupId, entry.sceneId, entry.transitionTime), "fedc ba 9876");
  EXPECT_EQ(entry.sceneName, "Evening");
  EXPECT_EQ(show(entry.extensions), "0300/01/54 ffff/00/00 ffff/00/00 ffff/00/00");
}

TEST(SceneTableEntry, StoresAnyCluster) {
  SceneTableEntry entry;
  entry.SetSceneData(1, 2, 3, "", 0xFFFF, 4);
  EXPECT_EQ(show(entry.extensions), "ffff/01/04 ffff/00/00 ffff/00/00 ffff/00/00");
}

using Command = test::BuiltCommand<ZclScenes>;

const std::vector<std::string> ADD_SCENE_CALLS = {"setFcf(01)", "setCid(00)", "isValidLength()"};
const SceneExtension EMPTY_SLOT{0xFFFF, 0, 0};

const Command COMMANDS[] = {
    {"addSceneOfOneExtension",
     [](ZclScenes& frame) {
       SceneTableEntry entry;
       entry.SetSceneData(1, 2, 3, "", 6, 1);
       frame.addScene(entry);
     },
     "00 01 00 02 03 00 00 06 00 01 01", ADD_SCENE_CALLS},
    {"addSceneWithoutExtensions", [](ZclScenes& frame) { frame.addScene(scene("Hi", {})); },
     "00 02 01 03 05 04 02 48 69", ADD_SCENE_CALLS},
    {"addSceneWithTheLongestName",
     [](ZclScenes& frame) {
       frame.addScene(scene(NAME_OF_16, {{{8, 1, 0x7F}, EMPTY_SLOT, EMPTY_SLOT, EMPTY_SLOT}}));
     },
     "00 02 01 03 05 04 10 " + NAME_OF_16_HEX + " 08 00 01 7f", ADD_SCENE_CALLS},
    {"addSceneWithOnlyTheSecondSlotInUse",
     [](ZclScenes& frame) {
       frame.addScene(scene("", {{EMPTY_SLOT, {8, 1, 0x7F}, EMPTY_SLOT, EMPTY_SLOT}}));
     },
     "00 02 01 03 05 04 00 08 00 01 7f", ADD_SCENE_CALLS},
    {"addSceneWithGaps",
     [](ZclScenes& frame) {
       frame.addScene(scene("", {{{6, 1, 1}, EMPTY_SLOT, EMPTY_SLOT, {0x0300, 1, 2}}}));
     },
     "00 02 01 03 05 04 00 06 00 01 01 00 03 01 02", ADD_SCENE_CALLS},
    {"addSceneWithAllSlotsInUse",
     [](ZclScenes& frame) {
       frame.addScene(scene("", {{{6, 1, 1}, {8, 1, 2}, {0x0300, 1, 3}, {0xFFFE, 1, 4}}}));
     },
     "00 02 01 03 05 04 00 06 00 01 01 08 00 01 02 00 03 01 03 fe ff 01 04", ADD_SCENE_CALLS},
    {"addSceneOfOneValueByteWhateverTheLength",
     [](ZclScenes& frame) {
       frame.addScene(scene("", {{{6, 0, 1}, {8, 9, 2}, {0, 255, 3}, EMPTY_SLOT}}));
     },
     "00 02 01 03 05 04 00 06 00 00 01 08 00 09 02 00 00 ff 03", ADD_SCENE_CALLS},
    {"addSceneWithoutSlotsThatHaveOnlyALength",
     [](ZclScenes& frame) {
       frame.addScene(scene("", {{{0xFFFF, 1, 1}, {6, 1, 1}, {0xFFFF, 1, 1}, EMPTY_SLOT}}));
     },
     "00 02 01 03 05 04 00 06 00 01 01", ADD_SCENE_CALLS},
    {"viewScene",
     [](ZclScenes& frame) { frame.viewScene(0xFEDC, 0xBA); },
     "01 dc fe ba",
     {"setFcf(01)", "setCid(01)", "isValidLength()"}},
    {"removeScene",
     [](ZclScenes& frame) { frame.removeScene(0xFEDC, 0xBA); },
     "02 dc fe ba",
     {"setFcf(01)", "setCid(02)", "isValidLength()"}},
    {"removeAllScenes",
     [](ZclScenes& frame) { frame.removeAllScenes(0xFEDC); },
     "03 dc fe",
     {"setFcf(01)", "setCid(03)", "isValidLength()"}},
    {"storeScene",
     [](ZclScenes& frame) { frame.storeScene(0xFEDC, 0xBA); },
     "04 dc fe ba",
     {"setFcf(01)", "setCid(04)", "isValidLength()"}},
    {"recallScene",
     [](ZclScenes& frame) { frame.recallScene(0xFEDC, 0xBA); },
     "05 dc fe ba",
     {"setFcf(01)", "setCid(05)", "isValidLength()"}},
    {"getSceneMembership",
     [](ZclScenes& frame) { frame.getSceneMembership(0xFEDC); },
     "06 dc fe",
     {"setFcf(01)", "setCid(06)", "isValidLength()"}},
};

class ZclScenesCommand : public testing::TestWithParam<Command> {};

INSTANTIATE_TEST_SUITE_P(Commands, ZclScenesCommand, testing::ValuesIn(COMMANDS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclScenesCommand, IsBuiltBehindTheSequenceOfTheConstructor) { expectBuiltBehindTheSequence(GetParam()); }
TEST_P(ZclScenesCommand, IsBuiltOverAnyFrame) { expectBuiltOverAnyFrame(GetParam()); }
TEST_P(ZclScenesCommand, IsBuiltByItsVirtualOperationsWithoutAWarning) { expectBuiltByItsCalls(GetParam()); }

/// Notes calls of operations that others are made of.
class NotedScenes : public ZclScenes {
 public:
  using ZclScenes::ZclScenes;

  void addString(const std::string& text) override {
    calls.push_back("addString(" + text + ')');
    ZclScenes::addString(text);
  }
  void prepareQxCustomMessage(unsigned char frameControl, unsigned char commandId, bool clusterSpecific) override {
    calls.push_back("prepareQxCustomMessage(" + fields(frameControl, commandId) + (clusterSpecific ? " true)" : ")"));
    ZclScenes::prepareQxCustomMessage(frameControl, commandId, clusterSpecific);
  }
  void addUint16(unsigned short value) override {
    calls.push_back("addUint16(" + std::to_string(value) + ')');
    ZclScenes::addUint16(value);
  }
  void addByte(unsigned char value) override {
    calls.push_back("addByte(" + std::to_string(value) + ')');
    ZclScenes::addByte(value);
  }
  void setReadAttributes(const std::vector<unsigned short>& ids) override {
    calls.push_back("setReadAttributes(" + test::list(ids) + ')');
    ZclScenes::setReadAttributes(ids);
  }

  std::vector<std::string> calls;
};

TEST(ZclScenes, AppendsTheNameThroughTheVirtualOperation) {
  NotedScenes frame;
  frame.addScene(scene("Evening", {}));
  EXPECT_THAT(frame.calls, ElementsAre("addString(Evening)"));
}

TEST(ZclScenes, RefusesALongNameBeforeTheFrameIsTouched) {
  for (const std::string& name : {NAME_OF_16 + 'g', std::string(256, 'n'), std::string(272, 'n')}) {
    test::TracedMessage<ZclScenes> frame(bytesOf("1a 05 33 01 02 03 04"));
    const std::vector<unsigned char> storage(std::begin(frame.contents), std::end(frame.contents));
    std::string message;
    try {
      frame.addScene(scene(name, {}));
    } catch (const std::runtime_error& error) {
      message = error.what();
    }
    EXPECT_EQ(message, "Scene name too large");
    EXPECT_THAT(frame.contents, ElementsAreArray(storage));
    EXPECT_EQ(frame.length_, 7U);
    EXPECT_THAT(frame.calls, IsEmpty());
  }
}

TEST(ZclScenesUnRecall, MakesAFrameOfTheMakersWithoutASequenceNumber) {
  ZclScenes frame;
  frame.setTsn(0x77);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const test::LogCapture log;
  frame.unRecallScene(0x0102, 3);
  EXPECT_EQ(hex(frame),
            "05 "         // cluster specific, manufacturer specific
            "40 10 "      // the maker
            "00 05 "      // no sequence number, command
            "02 01 03");  // group, scene
  EXPECT_EQ(frame.length_, 8U);
  EXPECT_TRUE(frame.isManufacturerSpecific());
  EXPECT_EQ(frame.manufacturerCode(), 0x1040);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclScenesUnRecall, KeepsTheByteAtThePlaceOfTheSequenceNumber) {
  ZclScenes used;
  used.viewScene(0x0177, 3);
  used.unRecallScene(0xFEDC, 0xBA);
  EXPECT_EQ(hex(used), "05 40 10 77 05 dc fe ba");

  ZclScenes makers(bytesOf("1d 99 88 66 33 01 02 03 04"));
  makers.unRecallScene(0xFEDC, 0xBA);
  EXPECT_EQ(hex(makers), "05 40 10 66 05 dc fe ba");
}

TEST(ZclScenesUnRecall, TakesASequenceNumberFromItsCaller) {
  ZclScenes frame;
  frame.unRecallScene(0x0102, 3);
  frame.setTsn(0x44);
  EXPECT_EQ(hex(frame), "05 40 10 44 05 02 01 03");
  frame.unRecallScene(0x0103, 4);
  EXPECT_EQ(hex(frame), "05 40 10 44 05 03 01 04");
}

TEST(ZclScenesUnRecall, MakesAGeneralFrameClusterSpecific) {
  ZclScenes frame(bytesOf("18 07 01"));
  frame.unRecallScene(0x0102, 3);
  EXPECT_EQ(hex(frame), "05 40 10 00 05 02 01 03");
  EXPECT_TRUE(frame.affectsSpecificCluster());
}

TEST(ZclScenesUnRecall, LeavesTheMakersCodeToLaterCommands) {
  for (const Command& command : COMMANDS) {
    ZclScenes frame;
    frame.unRecallScene(0x0102, 3);
    frame.setTsn(0x44);
    command.build(frame);
    EXPECT_EQ(hex(frame), "05 40 10 44 " + command.tail) << command.name;
  }
  ZclScenes frame;
  frame.unRecallScene(0x0102, 3);
  frame.getSceneCount();
  EXPECT_EQ(hex(frame), "04 40 10 00 00 00 00");
}

TEST(ZclScenesUnRecall, CallsTheVirtualOperationsInOrder) {
  test::TracedMessage<ZclScenes> frame;
  frame.unRecallScene(0x0102, 3);
  EXPECT_THAT(frame.calls, ElementsAre("setFcf(00)", "setMc(1040)", "setCid(05)", "isValidLength()"));
  NotedScenes noted;
  noted.unRecallScene(0x0102, 3);
  EXPECT_THAT(noted.calls, ElementsAre("prepareQxCustomMessage(00 05 true)", "addUint16(258)", "addByte(3)"));
}

TEST(ZclScenesCount, IsReadByAGeneralCommand) {
  ZclScenes frame;
  frame.setTsn(5);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.getSceneCount();
  EXPECT_EQ(hex(frame), "00 05 00 00 00");
  EXPECT_TRUE(frame.affectsEntireProfile());
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclScenesCount, ClearsTheFlagOfTheFrame) {
  ZclScenes frame;
  frame.setTsn(5);
  frame.getSceneCount();
  frame.setFcf(0x10);
  EXPECT_EQ(hex(frame), "10 05 00 00 00");
}

TEST(ZclScenesCount, ReplacesAnyPayloadAndControlBits) {
  ZclScenes frame(bytesOf("1b 05 33 01 02 03 04 05 06 07 08"));
  frame.getSceneCount();
  EXPECT_EQ(hex(frame), "00 05 00 00 00");
  ZclScenes makers(bytesOf("1d 99 88 66 33 01 02 03 04"));
  makers.getSceneCount();
  EXPECT_EQ(hex(makers), "04 99 88 66 00 00 00");
}

TEST(ZclScenesCount, LeavesTheFrameToLaterCommands) {
  ZclScenes frame;
  frame.setTsn(5);
  frame.getSceneCount();
  frame.viewScene(0x0102, 3);
  EXPECT_EQ(hex(frame), "01 05 01 02 01 03");
}

TEST(ZclScenesCount, CallsTheVirtualOperationsInOrder) {
  test::TracedMessage<ZclScenes> frame;
  frame.getSceneCount();
  EXPECT_THAT(frame.calls, ElementsAre("setFcf(00)", "setCid(00)"));
}

TEST(ZclScenesCount, AsksThroughTheVirtualListOperation) {
  NotedScenes frame;
  frame.getSceneCount();
  EXPECT_THAT(frame.calls, ElementsAre("setReadAttributes([0000])"));
}

// A bundle that a reader has left alone shows its marks.

template <boost::logic::tribool (ZclScenes::*READ)(SceneBundle&) const>
std::string showScene(const ZclScenes& frame) {
  SceneBundle bundle{0xAA, 0xBBBB, 0xCC};
  const auto answer = (frame.*READ)(bundle);
  return test::show(answer) + ' ' + fields(bundle.status, bundle.groupId, bundle.sceneId);
}

std::string showRemoveAll(const ZclScenes& frame) {
  RemoveScenesBundle bundle{0xAA, 0xBBBB};
  const auto answer = frame.removeAllScenesResponse(bundle);
  return test::show(answer) + ' ' + fields(bundle.status, bundle.groupId);
}

std::string showMembership(const ZclScenes& frame) {
  SceneMembershipBundle bundle{0xAA, 0xBB, 0xCCCC, 0xDD, {0xEE, 0xEE, 0xEE}};
  const auto answer = frame.getSceneMembershipResponse(bundle);
  return test::show(answer) + ' ' + fields(bundle.status, bundle.capacity, bundle.groupId, bundle.sceneCount) + ' ' +
         test::list(bundle.sceneIds);
}

const std::string MARKS = "eeee/ee/ee eeee/ee/ee eeee/ee/ee eeee/ee/ee";
const std::string NO_EXTENSION = "ffff/00/00 ffff/00/00 ffff/00/00 ffff/00/00";

std::string showView(const ZclScenes& frame) {
  constexpr unsigned int GUARDS = 300;
  struct {
    ViewSceneBundle bundle;
    unsigned char guards[GUARDS];
  } read;
  read.bundle = {0xAA, 0xBBBB, 0xCC, 0xDDDD, "marks", {}};
  read.bundle.extensions.fill({0xEEEE, 0xEE, 0xEE});
  std::fill_n(read.guards, GUARDS, 0x99);
  const auto answer = frame.viewSceneResponse(read.bundle);
  EXPECT_EQ(std::count(read.guards, read.guards + GUARDS, 0x99), GUARDS) << "a value ran past the last slot";
  const ViewSceneBundle& bundle = read.bundle;
  return test::show(answer) + ' ' + fields(bundle.status, bundle.groupId, bundle.sceneId, bundle.transitionTime) +
         " '" + bundle.sceneName + "' " + show(bundle.extensions);
}

struct Response {
  const char* name;
  std::string (*read)(const ZclScenes&);
  std::string command;
  bool anyCommand;     ///< The command is not looked at.
  unsigned int least;  ///< Bytes of payload with which a response is taken.
  unsigned int most;
  std::string taken;  ///< With 4 bytes of payload, or 3 if that is all it may have.
  std::string left;
};

std::ostream& operator<<(std::ostream& out, const Response& row) { return out << row.name; }

const std::string PAYLOAD = "86 02 01 03 02 48 69 06 07 08";
constexpr unsigned int ANY = 1000;

const Response RESPONSES[] = {
    {"sceneBundleResponse", showScene<&ZclScenes::sceneBundleResponse>, "99", true, 4, 4, "true 86 0102 03",
     "indeterminate aa bbbb cc"},
    {"addSceneResponse", showScene<&ZclScenes::addSceneResponse>, "00", false, 4, 4, "true 86 0102 03",
     "indeterminate aa bbbb cc"},
    {"removeSceneResponse", showScene<&ZclScenes::removeSceneResponse>, "02", false, 4, 4, "true 86 0102 03",
     "indeterminate aa bbbb cc"},
    {"storeSceneResponse", showScene<&ZclScenes::storeSceneResponse>, "04", false, 4, 4, "true 86 0102 03",
     "indeterminate aa bbbb cc"},
    {"removeAllScenesResponse", showRemoveAll, "03", false, 3, 3, "true 86 0102", "indeterminate aa bbbb"},
    {"viewSceneResponse", showView, "01", false, 4, ANY, "false 86 0102 03 dddd 'marks' " + MARKS,
     "indeterminate aa bbbb cc dddd 'marks' " + MARKS},
    {"getSceneMembershipResponse", showMembership, "06", false, 4, ANY, "true 86 02 0301 dd []",
     "indeterminate aa bb cccc dd [ee ee ee]"},
};

class ZclScenesResponse : public testing::TestWithParam<Response> {};

INSTANTIATE_TEST_SUITE_P(Responses, ZclScenesResponse, testing::ValuesIn(RESPONSES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclScenesResponse, IsTakenByItsLength) {
  const test::LogCapture log;
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclScenes frame(bytesOf(header + GetParam().command + PAYLOAD));
    const unsigned int least = headerLength(header) + GetParam().least;
    const unsigned int most = headerLength(header) + GetParam().most;
    // What is behind the length is in the buffer, so that only the length decides. The last are beyond it.
    for (unsigned int length = 0; length <= 300; ++length) {
      frame.length_ = length;
      if (length == least) {
        EXPECT_EQ(GetParam().read(frame), GetParam().taken) << header << length;
      } else if (length > least && length <= most) {
        EXPECT_NE(GetParam().read(frame), GetParam().left) << header << length;
      } else {
        EXPECT_EQ(GetParam().read(frame), GetParam().left) << header << length;
      }
    }
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclScenesResponse, IsTakenByItsCommand) {
  const test::LogCapture log;
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclScenes frame(bytesOf(header + GetParam().command + PAYLOAD));
    frame.length_ = headerLength(header) + GetParam().least;
    const unsigned char own = frame.commandIdentifier();
    const std::string before = hex(frame);
    EXPECT_EQ(GetParam().read(frame), GetParam().taken) << header;
    EXPECT_EQ(hex(frame), before) << "a reader changes nothing";
    for (unsigned int command = 0; command <= 0xFF; ++command) {
      frame.setCid(static_cast<unsigned char>(command));
      const bool taken = GetParam().anyCommand || command == own;
      EXPECT_EQ(GetParam().read(frame), taken ? GetParam().taken : GetParam().left) << header << command;
    }
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclScenesResponse, IsTakenFromAnyFrameTypeAndDirection) {
  for (const char* control : {"00 ", "01 ", "02 ", "03 ", "18 ", "fb "}) {
    ZclScenes frame(bytesOf(std::string(control) + "07 " + GetParam().command + PAYLOAD));
    frame.length_ = 3 + GetParam().least;
    EXPECT_EQ(GetParam().read(frame), GetParam().taken) << control;
  }
}

TEST_P(ZclScenesResponse, LogsNothingWhereTheHeaderIsCut) {
  const test::LogCapture log;
  for (const char* frame : {"", "0d", "0d 40", "0d 40 10", "0d 40 10 07", "09", "09 07"}) {
    EXPECT_EQ(GetParam().read(ZclScenes(bytesOf(frame))), GetParam().left) << frame;
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclScenesMembership, IsReadByItsCount) {
  EXPECT_EQ(showMembership(ZclScenes(bytesOf("09 07 06 00 fe 02 01 03 0a 0b 0c"))), "true 00 fe 0102 03 [0a 0b 0c]");
  EXPECT_EQ(showMembership(ZclScenes(bytesOf("09 07 06 00 fe 02 01 02 0a 0b 0c"))), "true 00 fe 0102 02 [0a 0b]");
  EXPECT_EQ(showMembership(ZclScenes(bytesOf("09 07 06 00 fe 02 01 00 0a 0b 0c"))), "true 00 fe 0102 00 []");
  EXPECT_EQ(showMembership(ZclScenes(bytesOf("0d 40 10 07 06 00 fe 02 01 01 0a"))), "true 00 fe 0102 01 [0a]");
}

TEST(ZclScenesMembership, IsReadWhateverTheStatus) {
  EXPECT_EQ(showMembership(ZclScenes(bytesOf("09 07 06 85 fe 02 01 01 0a"))), "true 85 fe 0102 01 [0a]");
}

TEST(ZclScenesMembership, KeepsTheCountOfAShortAnswerAndEmptiesTheIds) {
  for (const char* frame : {"09 07 06 85 fe 02 01", "0d 40 10 07 06 85 fe 02 01", "09 07 06 00 fe 02 01"}) {
    const ZclScenes parsed(bytesOf(frame));
    EXPECT_EQ(showMembership(parsed).substr(8), "fe 0102 dd []") << frame;
  }
  ZclScenes stale(bytesOf("09 07 06 85 fe 02 01 02 0a 0b"));
  stale.length_ = 7;
  EXPECT_EQ(showMembership(stale), "true 85 fe 0102 dd []");
}

TEST(ZclScenesMembership, IsReadPastTheFramesEnd) {
  ZclScenes frame(bytesOf("09 07 06 00 fe 02 01 04 0a 0b 0c"));
  EXPECT_EQ(showMembership(frame), "true 00 fe 0102 04 [0a 0b 0c 00]");
  frame.length_ = 8;
  EXPECT_EQ(showMembership(frame), "true 00 fe 0102 04 [0a 0b 0c 00]");
}

TEST(ZclScenesMembership, IsZerosPastTheStorage) {
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclScenes frame(bytesOf(header + "06 00 fe 02 01 ff"));
    const unsigned int first = headerLength(header) + 5;
    std::fill(frame.contents + first, frame.contents + 255, 0x5A);
    SceneMembershipBundle bundle;
    EXPECT_EQ(test::show(frame.getSceneMembershipResponse(bundle)), "true");
    std::vector<unsigned char> expected(255 - first, 0x5A);
    expected.resize(255);
    EXPECT_EQ(bundle.sceneIds, expected);
  }
}

TEST(ZclScenesView, OfAFailedSceneIsFalseWithTheThreeFieldsSet) {
  EXPECT_EQ(showView(ZclScenes(bytesOf("09 07 01 8b 02 01 03"))), "false 8b 0102 03 dddd 'marks' " + MARKS);
}

TEST(ZclScenesView, DependsOnTheLengthAlone) {
  const std::string slot = "0006/01/07 ffff/00/00 ffff/00/00 ffff/00/00";
  const std::pair<unsigned int, std::string> expected[] = {
      {3, "indeterminate aa bbbb cc dddd 'marks' " + MARKS},
      {4, "false 00 0102 03 dddd 'marks' " + MARKS},
      {5, "false 00 0102 03 dddd 'marks' " + MARKS},
      {6, "true 00 0102 03 0405 '' " + NO_EXTENSION},
      {7, "true 00 0102 03 0405 '' " + NO_EXTENSION},
      {8, "true 00 0102 03 0405 '' " + slot},
      {9, "true 00 0102 03 0405 '' " + slot},
      {10, "true 00 0102 03 0405 '' " + slot},
      {11, "true 00 0102 03 0405 '' " + slot},
  };
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclScenes frame(bytesOf(header + "01 00 02 01 03 05 04 00 06 00 01 07"));
    for (const auto& [length, text] : expected) {
      frame.length_ = headerLength(header) + length;
      EXPECT_EQ(showView(frame), text) << header << length;
    }
  }
}

TEST(ZclScenesView, ReadsZerosBehindAFrameThatIsCut) {
  EXPECT_EQ(showView(ZclScenes(bytesOf("09 07 01 00 02 01 03 05 04"))), "true 00 0102 03 0405 '' " + NO_EXTENSION);
  // A cluster id of one byte, then a length of 0, so that the slot keeps its value.
  EXPECT_EQ(showView(ZclScenes(bytesOf("09 07 01 00 02 01 03 05 04 00 08"))),
            "true 00 0102 03 0405 '' 0008/00/ee ffff/00/00 ffff/00/00 ffff/00/00");
}

/// What a view of the scene with these bytes behind its transition time is, without the fields in front of the name.
std::string viewOf(const std::string& tail) {
  const std::string shown = showView(ZclScenes(bytesOf("09 07 01 00 02 01 03 05 04 " + tail)));
  EXPECT_EQ(shown.substr(0, 21), "true 00 0102 03 0405 ");
  return shown.substr(21);
}

TEST(ZclScenesView, FillsASlotForEachExtension) {
  EXPECT_EQ(viewOf("00 06 00 01 01"), "'' 0006/01/01 ffff/00/00 ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 06 00 01 01 08 00 01 02"), "'' 0006/01/01 0008/01/02 ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 06 00 01 01 08 00 01 02 00 03 01 03 06 00 01 04"),
            "'' 0006/01/01 0008/01/02 0300/01/03 0006/01/04");
}

TEST(ZclScenesView, FillsFourSlotsAtMost) {
  EXPECT_EQ(viewOf("00 06 00 01 01 06 00 01 02 06 00 01 03 06 00 01 04 06 00 01 05"),
            "'' 0006/01/01 0006/01/02 0006/01/03 0006/01/04");
}

TEST(ZclScenesView, LeavesTheSlotOfAnUnknownClusterAndMovesOn4Bytes) {
  EXPECT_EQ(viewOf("00 04 00 01 01"), "'' eeee/ee/ee ffff/00/00 ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 04 00 01 01 06 00 01 02"), "'' eeee/ee/ee 0006/01/02 ffff/00/00 ffff/00/00");
  // Whatever its length says.
  EXPECT_EQ(viewOf("00 04 00 05 01 06 00 01 02"), "'' eeee/ee/ee 0006/01/02 ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 04 00 00 06 00 01 02 09"), "'' eeee/ee/ee eeee/ee/ee ffff/00/00 ffff/00/00");
}

TEST(ZclScenesView, KnowsThreeClusters) {
  for (const char* unknown : {"00 00", "05 00", "07 00", "01 03", "ff 02", "06 01", "06 03", "00 06", "ff ff"}) {
    EXPECT_EQ(viewOf("00 " + std::string(unknown) + " 01 01"), "'' eeee/ee/ee ffff/00/00 ffff/00/00 ffff/00/00")
        << unknown;
  }
}

TEST(ZclScenesView, KeepsTheValueOfAnEmptyExtension) {
  EXPECT_EQ(viewOf("00 06 00 00 08 00 01 02"), "'' 0006/00/ee 0008/01/02 ffff/00/00 ffff/00/00");
}

TEST(ZclScenesView, TakesTheCharactersOfANameForExtensions) {
  // Two unknown clusters in the name of 8, then the extension.
  EXPECT_EQ(viewOf("08 41 42 43 44 45 46 47 48 06 00 01 07"), "'ABCDEFGH' eeee/ee/ee eeee/ee/ee 0006/01/07 ffff/00/00");
  // The name of 5 shifts the walk: "ABCD", "E" with most of the extension, and the rest of it.
  EXPECT_EQ(viewOf("05 41 42 43 44 45 06 00 01 07"), "'ABCDE' eeee/ee/ee eeee/ee/ee eeee/ee/ee ffff/00/00");
  // Names that spell an extension.
  EXPECT_EQ(viewOf("04 08 00 01 09 06 00 01 07"),
            std::string("'\x08\0\x01\x09' ", 7) + "0008/01/09 0006/01/07 ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("02 06 00 01 07"), std::string("'\x06\0' ", 5) + "0006/01/07 ffff/00/00 ffff/00/00 ffff/00/00");
}

TEST(ZclScenesView, ReadsANamePastTheFramesEnd) {
  ZclScenes frame(bytesOf("09 07 01 00 02 01 03 05 04 04 48 61 6c 6c"));
  frame.length_ = 10;
  EXPECT_EQ(showView(frame), "true 00 0102 03 0405 'Hall' " + NO_EXTENSION);
  EXPECT_EQ(viewOf("03 41"), std::string("'A\0\0' ", 6) + "eeee/ee/ee ffff/00/00 ffff/00/00 ffff/00/00");
}

TEST(ZclScenesView, ReadsZerosForANamePastTheStorage) {
  for (const std::string& header : RESPONSE_HEADERS) {
    ZclScenes frame(bytesOf(header + "01 00 02 01 03 05 04 ff"));
    const unsigned int name = headerLength(header) + 7;
    std::fill(frame.contents + name, frame.contents + 255, 'n');
    ViewSceneBundle bundle;
    EXPECT_EQ(test::show(frame.viewSceneResponse(bundle)), "true");
    EXPECT_EQ(bundle.sceneName, std::string(255 - name, 'n') + std::string(name, '\0'));
  }
}

TEST(ZclScenesView, RunsALongValueIntoTheNextSlots) {
  // The next turns find the frame's end, and empty their slots.
  EXPECT_EQ(viewOf("00 06 00 03 11 12 13"), "'' 0006/03/11 ffff/00/00 ffff/00/00 ffff/00/00");
  // An unknown cluster leaves what has run into its slot.
  EXPECT_EQ(viewOf("00 06 00 02 11 12 04 00 01 01"), "'' 0006/02/11 ee12/ee/ee ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 06 00 03 11 12 13 04 00 01 01"), "'' 0006/03/11 1312/ee/ee ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 06 00 06 11 12 13 14 15 16 04 00 01 01 04 00 01 01 04 00 01 01"),
            "'' 0006/06/11 1312/14/15 ee16/ee/ee eeee/ee/ee");
  // A known one overwrites it, but for the value if that is empty.
  EXPECT_EQ(viewOf("00 06 00 05 11 12 13 14 15 08 00 01 01"), "'' 0006/05/11 0008/01/01 ffff/00/00 ffff/00/00");
  EXPECT_EQ(viewOf("00 06 00 05 11 12 13 14 15 08 00 00"), "'' 0006/05/11 0008/00/15 ffff/00/00 ffff/00/00");
}

TEST(ZclScenesView, StopsALongValueAtTheEndOfTheLastSlot) {
  const std::string threeUnknown = "04 00 01 01 04 00 01 01 04 00 01 01";
  // 13 bytes fill all slots, and the walk moves on by the whole value.
  EXPECT_EQ(viewOf("00 06 00 0d 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d " + threeUnknown),
            "'' 0006/0d/11 1312/14/15 1716/18/19 1b1a/1c/1d");
  EXPECT_EQ(viewOf("00 06 00 0f 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f " + threeUnknown),
            "'' 0006/0f/11 1312/14/15 1716/18/19 1b1a/1c/1d");
  // In the last slot there is room for one.
  EXPECT_EQ(viewOf("00 " + threeUnknown + " 08 00 04 11 12 13 14"), "'' eeee/ee/ee eeee/ee/ee eeee/ee/ee 0008/04/11");
  EXPECT_EQ(viewOf("00 " + threeUnknown + " 08 00 ff 11 12 13 14"), "'' eeee/ee/ee eeee/ee/ee eeee/ee/ee 0008/ff/11");
}

TEST(ZclScenesView, EndsAValueThatRunsPastTheFramesEnd) {
  EXPECT_EQ(viewOf("00 06 00 ff 11 12"), "'' 0006/ff/11 ffff/00/00 ffff/00/00 ffff/00/00");
}

TEST(ZclScenesView, EmptiesNoSlotOfAFrameFullOfUnknownClusters) {
  ZclScenes frame(bytesOf("09 07 01 00 02 01 03 05 04 00"));
  frame.length_ = 255;
  EXPECT_EQ(showView(frame), "true 00 0102 03 0405 '' " + MARKS);
}

TEST(ZclScenesView, StaysInsideTheStorageOfAFrameWhoseLengthLies) {
  ZclScenes frame(bytesOf("09 07 01 00 02 01 03 05 04 ff 06 00 ff 11"));
  frame.length_ = 400;
  ViewSceneBundle bundle;
  EXPECT_EQ(test::show(frame.viewSceneResponse(bundle)), "true");
  EXPECT_EQ(bundle.sceneName, std::string("\x06\0\xff\x11", 4) + std::string(251, '\0'));
  EXPECT_EQ(show(bundle.extensions), "0006/ff/11 ffff/00/00 ffff/00/00 ffff/00/00");
}

}  // namespace
}  // namespace qx

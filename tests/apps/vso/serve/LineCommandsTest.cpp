#include "apps/vso/serve/LineCommands.h"

#include <gmock/gmock.h>
#include <google/protobuf/any.pb.h>
#include <gtest/gtest.h>

#include <boost/beast/core/detail/base64.hpp>
#include <cctype>
#include <ctime>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/vso/mesh/MeshServer.h"
#include "mesh/announcements.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace qx::app {
namespace {

using test::announcementOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::string LAMP = "0011223344556677";
const std::string NOBODY = "ffeeddccbbaa9988";

constexpr const char* NODE_USAGE = "error usage: node EUID [json|xml|any]\r\n";
constexpr const char* HEALTH_USAGE = "error usage: health EUID|all [json|xml|any]\r\n";
constexpr const char* FRAME_USAGE = "error usage: frame TIME EUID SHORT PROFILE CLUSTER HEX\r\n";
constexpr const char* RESET_USAGE = "error usage: reset EUID COUNTER...\r\n";
constexpr const char* LABEL_USAGE = "error usage: label EUID NAME...\r\n";
constexpr const char* BUILD_USAGE = "error usage: build EUID GROUP COMMAND [--ARGUMENT VALUE]...\r\n";

/// The lines of an answer, each of which has to end with "\r\n".
std::vector<std::string> linesOf(const std::string& answer) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end; (end = answer.find("\r\n", begin)) != std::string::npos; begin = end + 2) {
    lines.push_back(answer.substr(begin, end - begin));
  }
  EXPECT_EQ(begin, answer.size()) << answer;
  return lines;
}

/// What is wrong with the form of an answer; empty if nothing is.
std::string faultOf(const std::string& answer) {
  if (answer.size() < 2 || answer.compare(answer.size() - 2, 2, "\r\n") != 0) return "no line end";
  const std::vector<std::string> lines = linesOf(answer);
  const std::string first = lines.front();
  if (first.rfind("block ", 0) == 0) {
    return first == "block " + std::to_string(lines.size() - 1) ? "" : "wrong count: " + first;
  }
  if (lines.size() != 1) return "more than one line";
  return first == "ok" || first.rfind("ok ", 0) == 0 || first.rfind("error ", 0) == 0 ? "" : "neither ok nor error";
}

std::string bytesOfBase64(const std::string& text) {
  std::string bytes(boost::beast::detail::base64::decoded_size(text.size()), '\0');
  bytes.resize(boost::beast::detail::base64::decode(bytes.data(), text.data(), text.size()).first);
  return bytes;
}

/// A mesh of one lamp.
class LineCommandsTest : public testing::Test {
 protected:
  LineCommandsTest() { EXPECT_EQ(say("frame " + announcementOf(LAMP, 7)), "ok taken\r\n"); }

  std::string say(const std::string& line) { return commands_.answer(line); }
  ZigbeeNode& lamp() {
    Euid euid;
    euid = LAMP;
    return *mesh_.node(euid);
  }

  MeshServer mesh_{std::time(nullptr)};
  int saves_ = 0;
  std::string failure_;
  LineCommands commands_{mesh_, [this] {
                           ++saves_;
                           if (!failure_.empty()) throw std::runtime_error(failure_);
                         }};
};

struct Said {
  const char* name;
  std::string line;
  std::string answer;
};

class LineCommandsErrors : public LineCommandsTest, public testing::WithParamInterface<Said> {};

TEST_P(LineCommandsErrors, AreOneLineAndChangeNothing) {
  const std::string before = say("node " + LAMP + " any");
  EXPECT_EQ(say(GetParam().line), GetParam().answer);
  EXPECT_EQ(say("node " + LAMP + " any"), before);
  EXPECT_EQ(mesh_.nodes().size(), 1u);
  EXPECT_EQ(saves_, 0);
}

INSTANTIATE_TEST_SUITE_P(
    OfLines, LineCommandsErrors,
    testing::Values(Said{"Empty", "", "error an empty line\r\n"}, Said{"OnlyTheEnd", "\r\n", "error an empty line\r\n"},
                    Said{"Blanks", " \t  \r\n", "error an empty line\r\n"},
                    Said{"Unknown", "sing\r\n", "error there is no command \"sing\": say help\r\n"},
                    Said{"OtherCase", "HELP", "error there is no command \"HELP\": say help\r\n"},
                    Said{"UnknownWithControlBytes", "\x1b[2Jboo",
                         "error there is no command \"\\x1b[2Jboo\": say help\r\n"},
                    Said{"LongUnknown", std::string(100, 'x'),
                         "error there is no command \"" + std::string(40, 'x') + "...\": say help\r\n"}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    OfUsage, LineCommandsErrors,
    testing::Values(Said{"HelpOfSomething", "help me", "error usage: help\r\n"},
                    Said{"NodesOfSomething", "nodes all", "error usage: nodes\r\n"},
                    Said{"SaveAs", "save file", "error usage: save\r\n"}, Said{"NodeOfNone", "node", NODE_USAGE},
                    Said{"NodeWithTwoForms", "node " + LAMP + " json xml", NODE_USAGE},
                    Said{"HealthOfNone", "health", HEALTH_USAGE},
                    Said{"HealthWithTwoForms", "health all xml any", HEALTH_USAGE},
                    Said{"FrameOfNone", "frame", FRAME_USAGE},
                    Said{"FrameWithoutBytes", "frame now " + LAMP + " 1 0x0104 6", FRAME_USAGE},
                    Said{"ResetOfNone", "reset", RESET_USAGE}, Said{"ResetOfNothing", "reset " + LAMP, RESET_USAGE},
                    Said{"LabelOfNone", "label", LABEL_USAGE}, Said{"LabelWithoutName", "label " + LAMP, LABEL_USAGE},
                    Said{"BuildOfNone", "build", BUILD_USAGE}, Said{"BuildWithoutGroup", "build " + LAMP, BUILD_USAGE},
                    Said{"BuildWithoutCommand", "build " + LAMP + " on-off", BUILD_USAGE}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    OfNodes, LineCommandsErrors,
    testing::Values(
        Said{"NoNode", "node " + NOBODY, "error there is no node " + NOBODY + "\r\n"},
        Said{"NoHealth", "health " + NOBODY, "error there is no node " + NOBODY + "\r\n"},
        Said{"NoReset", "reset " + NOBODY + " reboot.cumulative_count", "error there is no node " + NOBODY + "\r\n"},
        Said{"NoLabel", "label " + NOBODY + " a", "error there is no node " + NOBODY + "\r\n"},
        Said{"NoBuild", "build " + NOBODY + " on-off on", "error there is no node " + NOBODY + "\r\n"},
        Said{"ShortAddress", "node 1234", "error \"1234\" has 4 digits, an address has 16\r\n"},
        Said{"NoDigits", "node lamp", "error \"lamp\" is not made of hexadecimal digits\r\n"},
        Said{"AllIsNoNode", "node all", "error \"all\" is not made of hexadecimal digits\r\n"},
        Said{"NodeInNoForm", "node " + LAMP + " yaml", "error there is no form \"yaml\": json, xml or any\r\n"},
        Said{"HealthInNoForm", "health " + LAMP + " XML", "error there is no form \"XML\": json, xml or any\r\n"},
        Said{"HealthOfAllInNoForm", "health all html", "error there is no form \"html\": json, xml or any\r\n"}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    OfFrames, LineCommandsErrors,
    testing::Values(
        Said{"Time", "frame soon " + LAMP + " 1 1 1 00", "error time: \"soon\" is no number\r\n"},
        Said{"LateTime", "frame 2147483648 " + LAMP + " 1 1 1 00",
             "error time: \"2147483648\" is out of range, 0..0x7fffffff\r\n"},
        Said{"Euid", "frame now 12 1 1 1 00", "error euid: \"12\" has 2 digits, an address has 16\r\n"},
        Said{"Short", "frame now " + LAMP + " 65536 1 1 00",
             "error short address: \"65536\" is out of range, 0..65535\r\n"},
        Said{"Profile", "frame now " + LAMP + " 1 -1 1 00", "error profile: \"-1\" is out of range, 0..65535\r\n"},
        Said{"Cluster", "frame now " + LAMP + " 1 1 x 00", "error cluster: \"x\" is no number\r\n"},
        Said{"OddDigits", "frame now " + LAMP + " 1 1 1 001", "error hex: \"001\" has an odd number of digits, 3\r\n"},
        Said{"NoHex", "frame now " + LAMP + " 1 1 1 0g", "error hex: \"0g\" is not made of hexadecimal digits\r\n"},
        Said{"TooLong", "frame now " + LAMP + " 1 1 1 " + std::string(512, '0'),
             "error hex: \"" + std::string(40, '0') + "...\" has 256 bytes, and there is room for 255\r\n"},
        Said{"Comment", "frame # now " + LAMP + " 1 1 1 00", "error an empty line\r\n"},
        Said{"BytesInComment", "frame now " + LAMP + " 1 1 1 # 00", "error hex: missing\r\n"}),
    [](const auto& row) { return row.param.name; });

const std::string KNOWN_COUNTERS =
    "reboot.cumulative_count, inbound_route_failures.cumulative_count or outbound_route_failures.cumulative_count";

INSTANTIATE_TEST_SUITE_P(
    OfCommands, LineCommandsErrors,
    testing::Values(
        Said{"Counter", "reset " + LAMP + " reboot.count",
             "error there is no counter \"reboot.count\": " + KNOWN_COUNTERS + "\r\n"},
        Said{"LongLabel", "label " + LAMP + " " + std::string(32, 'a') + " " + std::string(32, 'b'),
             "error \"" + std::string(32, 'a') + " " + std::string(7, 'b') +
                 "...\" has 65 bytes, and there is room for 64\r\n"},
        Said{"Group", "build " + LAMP + " off-on on", "error there is no group of commands \"off-on\"\r\n"},
        Said{"Command", "build " + LAMP + " on-off blink", "error the group on-off has no command \"blink\"\r\n"},
        Said{"ArgumentWithoutDashes", "build " + LAMP + " on-off on sequence 3",
             "error \"sequence\" is no argument's name\r\n"},
        Said{"UnknownArgument", "build " + LAMP + " on-off on --level 3", "error \"--level\" is not known\r\n"},
        Said{"ArgumentWithoutName", "build " + LAMP + " on-off on --", "error \"--\" is not known\r\n"},
        Said{"ArgumentOfControlBytes", "build " + LAMP + " on-off on --\x01", "error \"--\\x01\" is not known\r\n"},
        Said{"ArgumentTwice", "build " + LAMP + " on-off on --sequence 3 --sequence 4",
             "error --sequence is given twice\r\n"},
        Said{"FlagTwice", "build " + LAMP + " on-off on --disable-default-response --disable-default-response",
             "error --disable-default-response is given twice\r\n"},
        Said{"FlagWithValue", "build " + LAMP + " on-off on --disable-default-response true",
             "error \"true\" is no argument's name\r\n"},
        Said{"NoValue", "build " + LAMP + " on-off on --sequence", "error --sequence has no value\r\n"},
        Said{"MissingArgument", "build " + LAMP + " level-control move-to-level --level 3",
             "error --transition-time is required\r\n"},
        Said{"BadValue", "build " + LAMP + " level-control move-to-level --level 256 --transition-time 0",
             "error --level: \"256\" is out of range, 0..255\r\n"},
        Said{"Destination", "build " + LAMP + " zdo lqi-request --destination " + NOBODY,
             "error --destination is the node's address, and not given\r\n"},
        Said{"NameAsValue", "build " + LAMP + " on-off on --sequence --sequence",
             "error --sequence: \"--sequence\" is no number\r\n"}),
    [](const auto& row) { return row.param.name; });

TEST_F(LineCommandsTest, HelpNamesEveryCommandWithItsUse) {
  const std::vector<std::string> lines = linesOf(say("help"));
  ASSERT_EQ(lines.size(), 19u);
  EXPECT_EQ(lines[0], "block 18");
  const std::vector<std::string> uses{"help",
                                      "frame TIME EUID SHORT PROFILE CLUSTER HEX",
                                      "nodes",
                                      "node EUID [json|xml|any]",
                                      "health EUID|all [json|xml|any]",
                                      "reset EUID COUNTER...",
                                      "label EUID NAME...",
                                      "build EUID GROUP COMMAND [--ARGUMENT VALUE]...",
                                      "save"};
  for (std::size_t i = 0; i < uses.size(); ++i) {
    EXPECT_EQ(lines[1 + 2 * i], uses[i]);
    EXPECT_THAT(lines[2 + 2 * i], StartsWith("    ")) << uses[i];
    EXPECT_GT(lines[2 + 2 * i].size(), 8u) << uses[i];
  }
}

TEST_F(LineCommandsTest, TheEndOfALineCountsForNothing) {
  for (const char* const end : {"", "\n", "\r", "\r\n", "  \r\n"}) {
    EXPECT_EQ(say(std::string("\t save") + end), "ok\r\n");
  }
  EXPECT_EQ(saves_, 5);
}

TEST_F(LineCommandsTest, FrameTellsWhatBecameOfIt) {
  const std::string stranger = "now " + NOBODY + " 0x7777 ";
  const std::string known = "now " + LAMP + " 0x1a2b ";
  EXPECT_EQ(say("frame " + announcementOf(LAMP, 8)), "ok taken\r\n");
  EXPECT_EQ(say("frame " + known + "0x0104 6 18 05 0a 00 00 10 01"), "ok heard\r\n");
  EXPECT_EQ(say("frame " + known + "0xc25f 1 18 05 0a 00 00"), "ok broken\r\n");
  EXPECT_EQ(say("frame " + stranger + "0x0104 6 18 05 0a 00 00 10 01"), "ok stranger\r\n");
  EXPECT_EQ(lamp().reboots(), 1u);
}

TEST_F(LineCommandsTest, FrameMayHaveBlanksAndAComment) {
  EXPECT_EQ(say("  frame\t" + announcementOf(LAMP, 9) + "   # nine\r\n"), "ok taken\r\n");
  EXPECT_EQ(lamp().bootCount(), 9u);
}

TEST_F(LineCommandsTest, FrameIsNotToCome) {
  const std::time_t soon = std::time(nullptr) + 30;
  EXPECT_EQ(say("frame " + announcementOf(LAMP, 8, std::to_string(soon))), "ok taken\r\n");
  const std::string later = std::to_string(soon + 60);
  EXPECT_EQ(say("frame " + announcementOf(LAMP, 9, later)), "error time: " + later + " is to come\r\n");
  EXPECT_EQ(say("frame " + announcementOf(LAMP, 9, "2147483647")), "error time: 2147483647 is to come\r\n");
  EXPECT_EQ(lamp().bootCount(), 8u);
  EXPECT_EQ(lamp().lastContact(), soon);
}

TEST_F(LineCommandsTest, NodesHasALineForEach) {
  EXPECT_EQ(say("nodes"), "block 1\r\n" + LAMP + " 0x1a2b online qx:lamp\r\n");
  say("frame " + announcementOf("0000000000000001", 1, "1000", "0x0c0d"));
  say("label " + LAMP + "  the   hall \t lamp");
  EXPECT_EQ(say("nodes"),
            "block 2\r\n0000000000000001 0x0c0d silent qx:lamp\r\n" + LAMP + " 0x1a2b online the hall lamp\r\n");
}

TEST(LineCommands, NodesOfAnEmptyMeshAreABlockOfNone) {
  MeshServer mesh(0);
  LineCommands commands(mesh, [] {});
  EXPECT_EQ(commands.answer("nodes"), "block 0\r\n");
}

TEST_F(LineCommandsTest, LabelIsTextInUtf8) {
  const std::string kitchen =
      "K\xc3\xbc"
      "che \"\\'<&>";
  EXPECT_EQ(say("label " + LAMP + " " + kitchen), "ok\r\n");
  EXPECT_EQ(lamp().label(), kitchen);
  EXPECT_EQ(say("nodes"), "block 1\r\n" + LAMP + " 0x1a2b online " + kitchen + "\r\n");
  for (const char* const form : {"json", "xml", "any"}) {
    const std::string answer = say("node " + LAMP + " " + form);
    EXPECT_EQ(faultOf(answer), "") << form;
    EXPECT_THAT(answer, testing::Not(StartsWith("error"))) << form;
  }
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    if ((c > ' ' && c <= '~') || std::isspace(byte) != 0) continue;
    const std::string answer = say("label " + LAMP + " a" + c + "b");
    EXPECT_EQ(faultOf(answer), "") << byte;
    EXPECT_THAT(answer, testing::EndsWith(" is no text in UTF-8, or controls what shows it\r\n")) << byte;
    EXPECT_EQ(lamp().label(), kitchen) << byte;
  }
}

TEST_F(LineCommandsTest, NodeIsJsonUnlessAskedOtherwise) {
  const std::string answer = say("node " + LAMP);
  EXPECT_EQ(answer, say("node " + LAMP + " json"));
  ASSERT_EQ(faultOf(answer), "");
  const auto json = nlohmann::json::parse(answer.substr(3));
  EXPECT_EQ(json["euid"], LAMP);
  EXPECT_EQ(json["shortAddress"], "0x1a2b");
  EXPECT_EQ(json["product"], "qx:lamp");
  EXPECT_EQ(json["bootCount"], 7);
  EXPECT_EQ(json["reboots"], 0);
}

TEST_F(LineCommandsTest, NodeAsXmlIsABlock) {
  const std::string answer = say("node " + LAMP + " xml");
  EXPECT_EQ(faultOf(answer), "");
  EXPECT_THAT(answer, StartsWith("block "));
  EXPECT_THAT(answer, HasSubstr("<product_>qx:lamp</product_>\r\n"));
  EXPECT_THAT(answer, HasSubstr("<boot_count_>7</boot_count_>\r\n"));
  EXPECT_THAT(answer, testing::EndsWith("</node>\r\n"));
}

TEST_F(LineCommandsTest, NodeAsAnyIsTheMessage) {
  const std::string answer = say("node " + LAMP + " any");
  ASSERT_EQ(faultOf(answer), "");
  google::protobuf::Any any;
  ASSERT_TRUE(any.ParseFromString(bytesOfBase64(answer.substr(3, answer.size() - 5))));
  EXPECT_EQ(any.type_url(), "type.googleapis.com/qx.pb.ZigbeeNodePBuf");
  qx::pb::ZigbeeNodePBuf message;
  ASSERT_TRUE(any.UnpackTo(&message));
  EXPECT_EQ(message.product(), "qx:lamp");
  EXPECT_EQ(message.bootcount(), 7u);
}

TEST_F(LineCommandsTest, HealthIsOfOneOrOfAll) {
  say("frame " + announcementOf("0000000000000001", 1));
  const auto one = nlohmann::json::parse(say("health " + LAMP).substr(3));
  const auto all = nlohmann::json::parse(say("health all json").substr(3));
  EXPECT_EQ(one["NetworkHealth"]["nodeHealth_"].size(), 1u + 0u) << one;
  EXPECT_EQ(all["NetworkHealth"]["nodeHealth_"].size(), 2u) << all;
  for (const char* const question : {"health all xml", "health 0000000000000001 xml"}) {
    const std::string answer = say(question);
    EXPECT_EQ(faultOf(answer), "") << question;
    EXPECT_THAT(answer, HasSubstr("<name_>reboot.count</name_>")) << question;
  }
  EXPECT_THAT(say("health all any"), StartsWith("ok "));
}

TEST_F(LineCommandsTest, ResetSetsWhatItNamesToZero) {
  say("frame " + announcementOf(LAMP, 10));
  say("frame now " + LAMP + " 0x1a2b 0xffff 3 0c 01 7a");
  say("frame now " + LAMP + " 0x1a2b 0xffff 3 0b 2b 1a");
  ASSERT_EQ(lamp().reboots(), 3u);
  ASSERT_EQ(lamp().manyToOneRouteFailures(), 1u);
  ASSERT_EQ(lamp().sourceRouteFailures(), 1u);

  EXPECT_EQ(say("reset " + LAMP + " reboot.cumulative_count"), "ok\r\n");
  EXPECT_EQ(lamp().reboots(), 0u);
  EXPECT_EQ(lamp().manyToOneRouteFailures(), 1u);
  EXPECT_EQ(say("reset " + LAMP + " inbound_route_failures.cumulative_count reboot.cumulative_count"), "ok\r\n");
  EXPECT_EQ(lamp().manyToOneRouteFailures(), 0u);
  EXPECT_EQ(lamp().sourceRouteFailures(), 1u);
  EXPECT_EQ(say("reset " + LAMP + " outbound_route_failures.cumulative_count"), "ok\r\n");
  EXPECT_EQ(lamp().sourceRouteFailures(), 0u);
}

TEST_F(LineCommandsTest, ResetWithOneUnknownNameChangesNothing) {
  say("frame " + announcementOf(LAMP, 10));
  EXPECT_THAT(say("reset " + LAMP + " reboot.cumulative_count reboot.sliding_average"),
              StartsWith("error there is no counter \"reboot.sliding_average\""));
  EXPECT_EQ(lamp().reboots(), 3u);
}

TEST_F(LineCommandsTest, LabelIsTheRestOfTheLineWithSingleBlanks) {
  EXPECT_EQ(say("label " + LAMP + "  the   hall \t lamp \r\n"), "ok\r\n");
  EXPECT_EQ(lamp().label(), "the hall lamp");
}

struct Built {
  const char* name;
  std::string rest;
  std::string line;
};

class LineCommandsBuild : public LineCommandsTest, public testing::WithParamInterface<Built> {};

TEST_P(LineCommandsBuild, GivesIdsAndBytes) {
  EXPECT_EQ(say("build " + LAMP + " " + GetParam().rest + "\r\n"), "ok " + GetParam().line + "\r\n");
}

INSTANTIATE_TEST_SUITE_P(
    Frames, LineCommandsBuild,
    testing::Values(Built{"WithoutArguments", "on-off on --sequence 5", "0x0104 0x0006 010501"},
                    // The bit of the disabled default response is the fifth of the first byte.
                    Built{"Flag", "on-off toggle --disable-default-response --sequence 0xff", "0x0104 0x0006 11ff02"},
                    Built{"FlagLast", "on-off off --sequence 1 --disable-default-response", "0x0104 0x0006 110100"},
                    // Level 128, 10 tenths of a second.
                    Built{"Numbers", "level-control move-to-level --transition-time 10 --level 0x80 --sequence 7",
                          "0x0104 0x0008 010700800a00"},
                    Built{"RepeatedArgument",
                          "general read-attributes --cluster 6 --attribute 0 --attribute 0x4001 --sequence 9",
                          "0x0104 0x0006 00090000000140"},
                    Built{"NetworkLayer", "zdo permit-join-request --duration 60 --sequence 3", "0x0000 0x0036 033c00"},
                    // The device that is to leave, least significant byte first.
                    Built{"OtherDevice", "zdo leave-request --device 0102030405060708 --sequence 4",
                          "0x0000 0x0034 04080706050403020100"},
                    Built{"PageOfATable", "zdo lqi-request --start-index 3 --sequence 2", "0x0000 0x0031 0203"},
                    Built{"DestinationIsTheNode", "zdo lqi-request --sequence 2", "0x0000 0x0031 0200"}),
    [](const auto& row) { return row.param.name; });

TEST_F(LineCommandsTest, AFrameWithoutADestinationTakesNone) {
  EXPECT_EQ(say("build " + LAMP + " on-off on --destination " + LAMP), "error \"--destination\" is not known\r\n");
}

TEST_F(LineCommandsTest, SaveSavesOnce) {
  EXPECT_EQ(say("save"), "ok\r\n");
  EXPECT_EQ(saves_, 1);
}

TEST_F(LineCommandsTest, AFailedSavingIsToldInOneLine) {
  failure_ = "folder/mesh.state:\nNo space left on device\x7f";
  EXPECT_EQ(say("save"), "error folder/mesh.state:\\nNo space left on device\\x7f\r\n");
  EXPECT_EQ(saves_, 1);
}

TEST_F(LineCommandsTest, LongLinesAreAnsweredShortly) {
  const std::string word(1'000'000, 'a');
  EXPECT_LT(say(word).size(), 200u);
  EXPECT_LT(say("node " + word).size(), 200u);
  EXPECT_LT(say("frame now " + LAMP + " 1 1 1 " + word).size(), 200u);
  EXPECT_LT(say("reset " + LAMP + " " + word).size(), 300u);
  EXPECT_LT(say("build " + LAMP + " on-off on --sequence " + word).size(), 200u);
  EXPECT_LT(say("build " + LAMP + " on-off on --" + word).size(), 200u);
  EXPECT_LT(say("build " + LAMP + " " + word + " on").size(), 200u);
}

TEST_F(LineCommandsTest, EveryByteMayStandInEveryPlace) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    for (const std::string& line :
         {one, "node " + one, "node " + LAMP + " " + one, "reset " + LAMP + " x" + one, "build " + LAMP + " " + one,
          "build " + LAMP + " on-off " + one, "build " + LAMP + " on-off on --" + one,
          "build " + LAMP + " on-off on --sequence " + one, "frame now " + LAMP + " 1 1 1 " + one,
          "frame " + one + " " + LAMP + " 1 1 1 00", "health " + one + " xml"}) {
      const std::string answer = say(line);
      EXPECT_EQ(faultOf(answer), "") << byte << ": " << answer;
      for (const char c : answer.substr(0, answer.size() - 2)) {
        ASSERT_TRUE(c >= ' ' && c <= '~') << byte << ": " << answer;
      }
    }
  }
}

TEST_F(LineCommandsTest, NoLineMakesItThrow) {
  std::mt19937 chance(20'260'314);  // always the same lines
  const std::vector<std::string> words{"help",       "frame",   "nodes",
                                       "node",       "health",  "reset",
                                       "label",      "build",   "save",
                                       LAMP,         NOBODY,    "all",
                                       "json",       "xml",     "any",
                                       "now",        "0",       "0x1a2b",
                                       "0xffff",     "0x0104",  "0xc25f",
                                       "1",          "3",       "0x8031",
                                       "0c017a",     "180a",    "18010a0600",
                                       "2107",       "zdo",     "on-off",
                                       "on",         "toggle",  "scenes",
                                       "add-scene",  "general", "write-attributes",
                                       "--sequence", "--level", "--attribute",
                                       "--cluster",  "#",       "",
                                       "\r",         "\n",      "reboot.cumulative_count",
                                       "4294967295"};
  constexpr int LINES = 20'000;
  for (int i = 0; i < LINES; ++i) {
    std::string line;
    for (unsigned int left = chance() % 10; left > 0; --left) {
      if (chance() % 5 != 0) {
        line += words[chance() % words.size()];
      } else {
        for (unsigned int bytes = chance() % 12; bytes > 0; --bytes) line += static_cast<char>(chance() % 256);
      }
      if (chance() % 8 != 0) line += ' ';
    }
    std::string answer;
    ASSERT_NO_THROW(answer = say(line)) << line;
    ASSERT_EQ(faultOf(answer), "") << line << "\n" << answer;
  }
}

TEST(LineCommands, UsageIsWhatHelpAnswers) {
  MeshServer mesh(0);
  LineCommands commands(mesh, [] {});
  std::string expected;
  std::istringstream usage(LineCommands::usage());
  for (std::string line; std::getline(usage, line);) expected += line + "\r\n";
  EXPECT_EQ(commands.answer("help"), "block 18\r\n" + expected);
}

}  // namespace
}  // namespace qx::app

// `vso encode` as its users meet it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "apps/vso/encode/CommandRow.h"
#include "support/ProgramRunner.h"

namespace qx::app {
namespace {

using test::Outcome;
using test::runProgram;
using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

Outcome encode(Words words) {
  words.insert(words.begin(), "encode");
  return runProgram({words});
}

TEST(EncodeProgram, PrintsHex) {
  const Outcome outcome = encode({"level-control", "move-to-level", "--level", "128", "--transition-time", "10"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "010000800a00\n");
}

TEST(EncodeProgram, BeginsWithTheFirstSequenceNumbersOfTheLibrary) {
  EXPECT_EQ(encode({"on-off", "toggle"}).out, "010002\n");
  EXPECT_EQ(encode({"ota", "unsupported-command", "--command-id", "9"}).out, "08000b0981\n");
  EXPECT_EQ(encode({"zdo", "lqi-request", "--destination", "0011223344556677", "--start-index", "9"}).out, "0109\n");
}

TEST(EncodeProgram, PrintsALineForDecode) {
  EXPECT_EQ(encode({"level-control", "stop", "--sequence", "0x2A", "--line"}).out, "0x0104 0x0008 012a03\n");
  EXPECT_EQ(encode({"zdo", "lqi-request", "--line"}).out, "0x0000 0x0031 0100\n");
  EXPECT_EQ(encode({"announce", "report", "--node-rssi", "-60", "--line"}).out, "0xc25f 0x0001 00000a130028c4\n");
}

TEST(EncodeProgram, TakesValuesThatLookLikeOptionsOrLists) {
  EXPECT_EQ(encode({"groups", "add-group", "--group-id", "1", "--group-name", "--"}).out, "0100000100022d2d\n");
  EXPECT_EQ(encode({"groups", "add-group", "--group-id", "1", "--group-name", "[a]"}).out, "0100000100035b615d\n");
  EXPECT_EQ(encode({"groups", "add-group", "--group-id", "1", "--group-name", "view-group"}).out,
            "01000001000a766965772d67726f7570\n");
  EXPECT_EQ(encode({"groups", "add-group", "--group-id", "1", "--group-name", ""}).out, "010000010000\n");
  EXPECT_EQ(encode({"groups", "add-group", "--group-id=010", "--group-name=a,b"}).out, "010000080003612c62\n");
}

TEST(EncodeProgram, TakesATextOfTheLongestAttribute) {
  const Outcome outcome = encode(
      {"general", "write-attributes", "--cluster", "0", "--attribute", "16:character-string:" + std::string(199, 'x')});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.size(), 2 * (3 + 3 + 1 + 199) + 1u);
}

// What cannot be built

struct Refusal {
  Words words;
  const char* message;
};

const Refusal REFUSALS[] = {
    {{}, "a group of commands is missing"},
    {{"cinema"}, "there is no group of commands \"cinema\""},
    {{"--list", "cinema"}, "there is no group of commands \"cinema\""},
    {{"groups"}, "a command of the group groups is missing"},
    {{"groups", "frobnicate"}, "there is no command of the group groups \"frobnicate\""},
    {{"groups", "view-group"}, "--group-id is required"},
    {{"groups", "view-group", "--group-id"}, "--group-id"},
    {{"groups", "view-group", "--group-id", "1", "--bogus", "2"}, "--bogus"},
    {{"groups", "view-group", "--group-id", "1", "more"}, "more"},
    {{"groups", "view-group", "--group-id", "1", "--group-id", "2"}, "--group-id"},
    {{"groups", "view-group", "--group-id", "1", "remove-all-groups"}, "remove-all-groups"},
    {{"groups", "view-group", "--group-id", "65536"}, "--group-id: \"65536\" is out of range, 0..65535"},
    {{"groups", "view-group", "--group-id", "-1"}, "--group-id: \"-1\" is out of range, 0..65535"},
    {{"groups", "view-group", "--group-id", "99999999999999999999"}, "is out of range, 0..65535"},
    {{"groups", "view-group", "--group-id", "1x"}, "--group-id: \"1x\" is no number"},
    {{"groups", "view-group", "--group-id", ""}, "--group-id: \"\" is no number"},
    {{"groups", "view-group", "--group-id", "0x"}, "--group-id: \"0x\" is no number"},
    {{"groups", "view-group", "--group-id", "--1"}, "--group-id: \"--1\" is no number"},
    {{"groups", "view-group", "--group-id", "08"}, "--group-id: \"08\" is no number: a leading 0 stands for octal"},
    {{"groups", "view-group", "--group-id", "\x1b[2J"}, "--group-id: \"\\x1b[2J\" is no number"},
    {{"groups", "add-group", "--group-id", "1", "--group-name", "seventeen letters"},
     "groupName has to be less than 16 characters in length"},
    {{"groups", "get-group-membership", "--group-ids", "1,,2"}, "--group-ids: \"\" is no number"},
    {{"groups", "get-group-membership", "--group-ids", "1,65536"}, "--group-ids: \"65536\" is out of range"},
    {{"scenes", "add-scene", "--group-id", "1", "--scene-id", "1", "--scene-name", "seventeen letters"},
     "Scene name too large"},
    {{"scenes", "add-scene", "--group-id", "1", "--scene-id", "1", "--extension", "6"},
     "--extension: \"6\" is not of the form CLUSTER:VALUE"},
    {{"scenes", "add-scene", "--group-id", "1", "--scene-id", "1", "--extension", "0xFFFF:1"},
     "--extension: \"0xFFFF\" is out of range, 0..65534"},
    {{"scenes", "add-scene", "--group-id", "1", "--scene-id", "1", "--extension", "1:1", "--extension", "2:1",
      "--extension", "3:1", "--extension", "4:1", "--extension", "5:1"},
     "--extension: 5 of them, and a scene has at most 4"},
    {{"on-off", "on", "--sequence", "256"}, "--sequence: \"256\" is out of range, 0..255"},
    {{"general", "read-attributes", "--attribute", "0"}, "--cluster is required"},
    {{"general", "read-attributes", "--cluster", "0", "--profile", "0", "--attribute", "0"},
     "--profile: \"0\" is out of range, 1..65535"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:5"},
     "--attribute: \"0:5\" is not of the form ID:TYPE:VALUE"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:number:5"}, "\"number\" is no type"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:0x0c:5"}, "\"0x0c\" is no type"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:int8:128"}, "is out of range, -128..127"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:uint24:0x1000000"},
     "is out of range, 0..0xffffff"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:boolean:yes"}, "\"yes\" is no number"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:single-float:x"}, "\"x\" is no number"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:octet-string:0"},
     "has an odd number of digits, 1"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:ieee-address:00"},
     "\"00\" has 2 digits, an address has 16"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:character-string:" + std::string(200, 'x')},
     "has 200 bytes, and an attribute has room for 199"},
    {{"general", "write-attributes", "--cluster", "0", "--attribute", "0:text:" + std::string(199, 'x'), "--attribute",
      "1:text:" + std::string(46, 'x')},
     "--attribute: the frame has 256 bytes with all of them, at most 255 fit"},
    {{"general", "read-attributes-response", "--cluster", "0", "--attribute", "0:success"}, "comes with a value"},
    {{"general", "write-attributes-response", "--cluster", "0", "--attribute", "0:splendid"},
     "\"splendid\" is neither a number nor the name of a status"},
    {{"zdo", "leave-request", "--device", "001122334455667"}, "has 15 digits, an address has 16"},
    {{"zdo", "leave-request", "--device", "001122334455667g"}, "is not made of hexadecimal digits"},
    {{"zdo", "energy-scan", "--duration", "6"}, "--duration: \"6\" is out of range, 0..5"},
    {{"zdo", "lqi-request", "--start-index", "-1"}, "--start-index: \"-1\" is out of range, 0..255"},
    {{"ota", "image-notify", "--payload-type", "4"}, "--payload-type: \"4\" is out of range, 0..3"},
    {{"ota", "image-notify", "--payload-type", "1"}, "--manufacturer-code is required with payload type 1 to 3"},
    {{"ota", "image-notify", "--payload-type", "0", "--file-version", "1"},
     "--file-version goes out only with payload type 3"},
    {{"ota", "query-next-image-response", "--status", "0x98", "--image-size", "1"},
     "--image-size goes out only with status 0"},
    {{"ota", "image-block-response", "--manufacturer-code", "1", "--image-type", "1", "--file-version", "1",
      "--file-offset", "0", "--data", std::string(2 * 239, '0')},
     "has 239 bytes, and there is room for 238"},
    {{"announce", "report", "--firmware-version", "x", "--product-string", std::string(199, 'x')},
     "the attributes do not fit into a frame"},
    {{"announce", "report", "--product-string", std::string(200, 'x')},
     "has 200 characters, and there is room for 199"},
    {{"announce", "report", "--node-rssi", "128"}, "--node-rssi: \"128\" is out of range, -128..127"},
};

TEST(EncodeProgram, RefusesWhatCannotBeBuilt) {
  for (const Refusal& refusal : REFUSALS) {
    const Outcome outcome = encode(refusal.words);
    SCOPED_TRACE(testing::PrintToString(refusal.words));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("vso: "));
    const std::string message = outcome.err.substr(0, outcome.err.find('\n') + 1);
    EXPECT_THAT(message, HasSubstr(refusal.message));
    EXPECT_THAT(outcome.err.substr(message.size()), testing::MatchesRegex("Try 'vso encode[-a-z ]* --help'.\n"));
  }
}

TEST(EncodeProgram, RefusesMoreIdsThanFit) {
  std::string ids = "1";
  for (int i = 1; i < 125; ++i) ids += ",1";
  EXPECT_EQ(encode({"immediate-announce", "request", "--ids", ids}).out.size(), 2 * (3 + 1 + 2 * 125) + 1u);
  for (const Words& words : {Words{"immediate-announce", "request", "--ids", ids + ",1"},
                             Words{"groups", "get-group-membership", "--group-ids", ids + ",1"}}) {
    const Outcome outcome = encode(words);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("vso: Too many ids to fit in packet\n"));
  }
}

TEST(EncodeProgram, ReportsAFullDisk) {
  const Outcome outcome = test::runProgramInto("/dev/full", {{"encode", "on-off", "on"}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "vso: standard output: No space left on device\n");
}

// Help

TEST(EncodeProgram, ListsEachCommandOfTheTable) {
  const Outcome outcome = encode({"--list"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  Words lines;
  std::istringstream stream(outcome.out);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  Words expected;
  for (const CommandGroup& group : commandGroups()) {
    for (const CommandRow& row : group.commands) expected.push_back(usageOf(group, row));
  }
  EXPECT_EQ(lines, expected);
}

TEST(EncodeProgram, ListsTheArgumentsOfACommand) {
  EXPECT_THAT(encode({"--list"}).out, HasSubstr("level-control move --mode 0..255 --rate 0..65535 [--sequence 0..255] "
                                                "[--disable-default-response]\n"));
  EXPECT_THAT(encode({"--list"}).out,
              HasSubstr("scenes add-scene --group-id 0..65535 --scene-id 0..255 [--transition-time 0..65535] "
                        "[--scene-name TEXT] [--extension CLUSTER:VALUE]... [--sequence 0..255] "));
}

TEST(EncodeProgram, ExplainsItself) {
  const Outcome outcome = encode({"--help"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* const part : {"--list", "level-control", "zdo", "character-string", "Examples:", "Exit status:"}) {
    EXPECT_THAT(outcome.out, HasSubstr(part));
  }
}

TEST(EncodeProgram, RunsTheExamplesOfItsHelp) {
  const std::string help = encode({"--help"}).out;
  std::istringstream examples(help.substr(help.find("Examples:\n")));
  unsigned int count = 0;
  for (std::string line; std::getline(examples, line);) {
    constexpr const char* PROGRAM = "  vso encode ";
    if (line.rfind(PROGRAM, 0) != 0) continue;
    std::istringstream stream(line.substr(std::string(PROGRAM).size(), line.find(" |") - std::string(PROGRAM).size()));
    Words words;
    for (std::string word; stream >> word;) words.push_back(word);
    const Outcome outcome = encode(words);
    EXPECT_EQ(outcome.status, 0) << line;
    EXPECT_EQ(outcome.err, "") << line;
    ++count;
  }
  EXPECT_EQ(count, 3u);
}

TEST(EncodeProgram, ExplainsAGroupAndACommand) {
  const Outcome group = encode({"groups", "--help"});
  EXPECT_EQ(group.status, 0);
  EXPECT_THAT(group.out, HasSubstr("add-group-if-identifying"));
  const Outcome command = encode({"ota", "image-notify", "--help"});
  EXPECT_EQ(command.status, 0);
  for (const char* const part : {"--payload-type 0..3 REQUIRED", "--query-jitter 1..100", "(100)", "--line"}) {
    EXPECT_THAT(command.out, HasSubstr(part));
  }
}

}  // namespace
}  // namespace qx::app

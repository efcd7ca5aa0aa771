// The program as its users meet it: a process with arguments, streams and an exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "support/ProgramRunner.h"

namespace qx::app {
namespace {

using test::Outcome;
using test::runProgram;
using test::TemporaryFile;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* ON = "0x0104 6 18 05 01 00 00 00 10 01\n";
constexpr const char* ON_JSON =
    R"({"layer":"zcl","profile":260,"cluster":6,"hex":"1805010000001001",)"
    R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":1,"name":"read attributes response"},)"
    R"("attributes":[{"id":0,"status":0,"type":16,"value":"1"}],"readings":{"on":true},)"
    R"("verdict":{"whole":true}})"
    "\n";
constexpr const char* ON_TEXT = R"(ZCL frame of 8 bytes: 18 05 01 00 00 00 10 01
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x01 read attributes response
  attributes
    <AttributeRecordData id_: 0x0000, type_: 0x10, data_: 1>, status 0x00 ZCL_SUCCESS
  readings
    on                        true
  verdict                     whole
)";
constexpr const char* ZDO = "0 0x8031 07\n";
constexpr const char* ZDO_JSON =
    R"({"layer":"zdo","profile":0,"cluster":32817,"hex":"07","header":{"sequence":7,"status":null},)"
    R"("verdict":{"whole":false,"byte":1,"what":"status is missing"}})"
    "\n";

const std::string ESCAPE = "\x1b[";

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

void expectOutcome(const Outcome& outcome, int status, const std::string& out, const std::string& err) {
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, err);
}

// Input

TEST(Program, DecodesStandardInputWithoutAFile) { expectOutcome(runProgram({{"decode"}, ON}), 0, ON_TEXT, ""); }

TEST(Program, DecodesStandardInputForADash) { expectOutcome(runProgram({{"decode", "-"}, ON}), 0, ON_TEXT, ""); }

TEST(Program, DecodesFilesInTheirOrder) {
  const TemporaryFile on(ON);
  const TemporaryFile zdo(ZDO);
  expectOutcome(runProgram({{"decode", "--json", zdo.name(), on.name(), "-"}, ZDO}), 0,
                std::string(ZDO_JSON) + ON_JSON + ZDO_JSON, "");
}

TEST(Program, PrintsNothingForNothing) {
  expectOutcome(runProgram({{"decode"}, ""}), 0, "", "");
  expectOutcome(runProgram({{"decode", "--json"}, "\n# comment\n \t\n"}), 0, "", "");
}

TEST(Program, TakesDosLineEndsAndAMissingLastNewline) {
  expectOutcome(runProgram({{"decode", "--json"}, "\r\n0 0x8031 07\r\n# x\r\n0 0x8031 07"}), 0,
                std::string(ZDO_JSON) + ZDO_JSON, "");
}

TEST(Program, AnswersALineBeforeTheNextComes) {
  EXPECT_EQ(test::firstOutputOfProgram({"decode", "--json"}, ON), ON_JSON);
}

// Trouble

TEST(Program, ReportsUnreadableLinesAndDecodesTheOthers) {
  const Outcome outcome = runProgram({{"decode"}, std::string("260 6 180\n") + ON + "# comment\n260\n"});
  expectOutcome(outcome, 1, ON_TEXT,
                "<stdin>:1: hex: an odd number of digits, 3\n"
                "<stdin>:4: cluster: missing\n");
}

TEST(Program, NamesTheFileOfAnUnreadableLine) {
  const TemporaryFile file(std::string(ON) + "{\n");
  const Outcome outcome = runProgram({{"decode", file.name(), "-"}, "x\n"});
  expectOutcome(outcome, 1, ON_TEXT,
                file.name() + ":2: not JSON from byte 2 of the object on\n<stdin>:1: profile: \"x\" is no number\n");
}

TEST(Program, PrintsUnreadableLinesAsJsonToo) {
  const Outcome outcome = runProgram({{"decode", "--json"}, std::string("260 6 180\n") + ZDO + "260\n"});
  expectOutcome(outcome, 1,
                std::string(R"({"hex":"180","error":"hex: an odd number of digits, 3"})"
                            "\n") +
                    ZDO_JSON +
                    R"({"hex":null,"error":"cluster: missing"})"
                    "\n",
                "<stdin>:1: hex: an odd number of digits, 3\n<stdin>:3: cluster: missing\n");
}

TEST(Program, RefusesLongLinesAndGoesOn) {
  const std::string longLine = "260 6 " + std::string(200000, '0') + "\n";
  expectOutcome(runProgram({{"decode", "--json"}, longLine + ZDO}), 1,
                std::string(R"({"hex":null,"error":"longer than 65536 bytes"})"
                            "\n") +
                    ZDO_JSON,
                "<stdin>:1: longer than 65536 bytes\n");
}

TEST(Program, RefusesZeroBytesAndGoesOn) {
  expectOutcome(runProgram({{"decode", "--json"}, std::string("0 0 \0\0\n", 7) + ZDO}), 1,
                std::string(R"({"hex":"\u0000\u0000","error":"hex: \"\\x00\" is no hexadecimal digit"})"
                            "\n") +
                    ZDO_JSON,
                "<stdin>:1: hex: \"\\x00\" is no hexadecimal digit\n");
}

TEST(Program, KeepsEscapeSequencesOfItsInputFromTheTerminal) {
  const Outcome outcome = runProgram({{"decode"}, "\x1b[2J 6 18\n260 6 \x1b[2J\n"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, Not(HasSubstr("\x1b")));
}

TEST(Program, ReportsAFileThatIsMissingAndDecodesTheOthers) {
  const TemporaryFile zdo(ZDO);
  expectOutcome(runProgram({{"decode", "--json", "/nowhere/frames.txt", zdo.name()}}), 1, ZDO_JSON,
                "vso: /nowhere/frames.txt: No such file or directory\n");
}

TEST(Program, ReportsADirectoryAndDecodesTheOthers) {
  const TemporaryFile zdo(ZDO);
  expectOutcome(runProgram({{"decode", "--json", "/", zdo.name()}}), 1, ZDO_JSON, "vso: /: Is a directory\n");
}

TEST(Program, ReportsAFullDisk) {
  const Outcome outcome = test::runProgramInto("/dev/full", {{"decode"}, ON});
  expectOutcome(outcome, 1, "", "vso: standard output: No space left on device\n");
}

TEST(Program, ReportsAClosedPipe) {
  const Outcome outcome = test::runProgramIntoClosedPipe({{"decode"}, ON});
  expectOutcome(outcome, 1, "", "vso: standard output: Broken pipe\n");
}

TEST(Program, ReportsAFullDiskForItsHelpToo) {
  expectOutcome(test::runProgramInto("/dev/full", {{"--help"}}), 1, "",
                "vso: standard output: No space left on device\n");
}

// Frames that are wrong are no trouble of the program.

TEST(Program, SaysInTheOutputAloneThatAFrameIsShort) {
  const Outcome outcome = runProgram({{"decode"}, "260 6 18\n260 6 18 05\n"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("sequence number is missing at byte 1\n"));
  EXPECT_THAT(outcome.out, HasSubstr("command is missing at byte 2\n"));
}

TEST(Program, SaysInTheOutputAloneThatAValueDoesNotPrint) {
  const Outcome outcome = runProgram({{"decode"}, "260 0 18 05 0a 00 00 0c\n"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("type_: 0x0c, data_: 00000000 (error)>"));
}

TEST(Program, TakesAnyBytesForAFrame) {
  constexpr unsigned int FRAMES = 2000;
  std::string input;
  unsigned int state = 12345;
  const auto random = [&state](unsigned int bound) {
    state = state * 1664525 + 1013904223;
    return (state >> 8) % bound;
  };
  for (unsigned int i = 0; i < FRAMES; ++i) {
    constexpr const char* IDS[] = {"0x0104 0x0000 ", "0x0104 0x0004 ", "0x0104 0x0005 ", "0x0104 0x0006 ",
                                   "0x0104 0x0008 ", "0x0104 0x0019 ", "0xc25d 0x0001 ", "0xc25f 0x0001 ",
                                   "0x0000 0x8031 ", "0x0000 0x8032 ", "0x0000 0x8038 ", "0x0000 0x0038 "};
    input += IDS[random(static_cast<unsigned int>(std::size(IDS)))];
    // Half of the frames have the header of a general command, whose lists read the most.
    const bool general = random(2) == 0;
    const unsigned int length = 1 + random(255);
    for (unsigned int at = 0; at < length; ++at) {
      constexpr const char* DIGITS = "0123456789abcdef";
      const unsigned int byte = general && at == 0 ? random(2) * 8 : general && at == 2 ? random(12) : random(256);
      input += {DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
    input += "\n";
  }

  const Outcome json = runProgram({{"decode", "--json"}, input});
  EXPECT_EQ(json.status, 0);
  EXPECT_EQ(json.err, "");
  const std::vector<std::string> lines = linesOf(json.out);
  ASSERT_EQ(lines.size(), FRAMES);
  for (const std::string& line : lines) EXPECT_TRUE(nlohmann::json::accept(line)) << line;

  const Outcome text = runProgram({{"decode"}, input});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.err, "");
  for (const char c : text.out) ASSERT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << static_cast<int>(c);
}

// Colour

TEST(Program, PaintsOnATerminalOnly) {
  EXPECT_THAT(test::runProgramOnTerminal({{"decode"}, ON}).out, HasSubstr(ESCAPE));
  EXPECT_THAT(runProgram({{"decode"}, ON}).out, Not(HasSubstr(ESCAPE)));
}

TEST(Program, HonoursNoColor) {
  EXPECT_THAT(test::runProgramOnTerminal({{"decode"}, ON, {"NO_COLOR=1"}}).out, Not(HasSubstr(ESCAPE)));
  EXPECT_THAT(test::runProgramOnTerminal({{"decode"}, ON, {"NO_COLOR="}}).out, HasSubstr(ESCAPE));
}

TEST(Program, PaintsAsToldWhateverTheOutput) {
  EXPECT_THAT(runProgram({{"decode", "--color=always"}, ON, {"NO_COLOR=1"}}).out, HasSubstr(ESCAPE));
  EXPECT_THAT(test::runProgramOnTerminal({{"decode", "--color", "never"}, ON}).out, Not(HasSubstr(ESCAPE)));
}

TEST(Program, NeverPaintsJson) { EXPECT_EQ(runProgram({{"decode", "--json", "--color=always"}, ZDO}).out, ZDO_JSON); }

// Usage

TEST(Program, ExplainsItself) {
  const Outcome outcome = runProgram({{"--help"}});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("decode"));
}

TEST(Program, ExplainsDecode) {
  const Outcome outcome = runProgram({{"decode", "--help"}});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  for (const char* const part : {"Usage: vso decode", "--json", "--color", "NO_COLOR", "standard input",
                                 "Lines:", "Examples:", "Exit status:"}) {
    EXPECT_THAT(outcome.out, HasSubstr(part));
  }
}

TEST(Program, DecodesTheLinesOfItsHelp) {
  const std::string help = runProgram({{"decode", "--help"}}).out;
  const std::size_t section = help.find("\nLines:\n");
  ASSERT_NE(section, std::string::npos);
  std::string lines;
  for (const std::string& line : linesOf(help.substr(section, help.find("\nOutput:\n") - section))) {
    if (line.rfind("    ", 0) == 0) lines += line + "\n";
  }
  const Outcome outcome = runProgram({{"decode", "--json"}, lines});
  expectOutcome(outcome, 0, std::string(ON_JSON) + ON_JSON + ON_JSON, "");
}

TEST(Program, TellsItsVersion) { expectOutcome(runProgram({{"--version"}}), 0, "vso " VSO_VERSION "\n", ""); }

TEST(Program, RefusesWrongUsageWithAHint) {
  const struct {
    std::vector<std::string> arguments;
    const char* hint;
  } wrong[] = {{{}, "Try 'vso --help'.\n"},
               {{"encrypt"}, "Try 'vso --help'.\n"},
               {{"--unknown"}, "Try 'vso --help'.\n"},
               {{"decode", "--unknown"}, "Try 'vso decode --help'.\n"},
               {{"decode", "--color=blue"}, "Try 'vso decode --help'.\n"},
               {{"decode", "--color"}, "Try 'vso decode --help'.\n"},
               {{"decode", "--json=x"}, "Try 'vso decode --help'.\n"}};
  for (const auto& usage : wrong) {
    const Outcome outcome = runProgram({usage.arguments, ON});
    EXPECT_EQ(outcome.status, 2) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("vso: "));
    EXPECT_THAT(outcome.err, HasSubstr(usage.hint));
  }
}

// The shipped example

TEST(Program, DecodesTheShippedExample) {
  const Outcome outcome = runProgram({{"decode", "--json", VSO_EXAMPLES "/frames.txt"}});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(linesOf(outcome.out).size(), 34u);
  for (const char* const name :
       {"read attributes", "read attributes response", "write attributes", "write attributes response",
        "report attributes", "default response", "toggle", "move to level", "step", "move", "identify", "add group",
        "view scene response", "un-recall scene", "image block response", "immediate announce",
        "write attributes no response"}) {
    EXPECT_THAT(outcome.out, HasSubstr("\"name\":\"" + std::string(name) + "\""));
  }
}

}  // namespace
}  // namespace qx::app

// `vso replay` as its users meet it: a process with arguments, streams and an exit status.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "support/ProgramRunner.h"
#include "support/TemporaryDirectory.h"

namespace qx::app {
namespace {

using test::Outcome;
using test::runProgram;
using test::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string MESH_DAY = std::string(VSO_EXAMPLES) + "/mesh-day.txt";
// The hours of a clock that is put forward or back would not be those of the recording.
const std::string ZONE = "TZ=UTC";

Outcome replay(std::vector<std::string> arguments, std::vector<std::string> environment = {ZONE}) {
  arguments.insert(arguments.begin(), "replay");
  return runProgram({arguments, "", environment});
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// The line of a table that begins with a name, or has an address.
std::string lineWith(const std::string& table, const std::string& part) {
  for (const std::string& line : linesOf(table)) {
    if (line.find(part) != std::string::npos) return line;
  }
  return "no line with " + part;
}

// Worked out by hand from what the recording was made of:
//
// - The hall lamp, 0x4f3f, starts 30 times within the one day that has begun: more than 20 is red. A link quality of
//   195 is just worth two bars, and -56 dBm take none away.
// - The garden socket, 0xc7b7, has been there for a little less than four hours, so for four hours begun: 1600 failures
//   of the routes to the server are 400 an hour, above 300 and red; 300 of the routes from it are 75, above 50 and
//   yellow. Its link quality of 122 is less than a bar.
// - The keypad 0x837b is quiet. Its link quality of 239 is worth four bars, and -47 dBm take none away.
const std::string TABLE_OF_THE_DAY =
    "NAME           TYPE               ADDRESS  SIGNAL  STATE   REBOOTS      INBOUND FAILURES  OUTBOUND FAILURES\n"
    "qx:dimmer      Router             0x1c02   ||||    online  0/day green  0/h green         0/h green\n"
    "qx:dimmer      Router             0x2d11   ||..    online  0/day green  0/h green         0/h green\n"
    "qx:switch      Router             0x3e20   |...    online  0/day green  0/h green         0/h green\n"
    "qx:lamp        Router             0x4f3f   ||..    online  30/day red   0/h green         0/h green\n"
    "qx:lamp        Router             0x504e   ....    online  0/day green  0/h green         0/h green\n"
    "qx:socket      Router             0x615d   ....    online  0/day green  0/h green         0/h green\n"
    "qx:thermostat  Router             0x726c   |||.    online  0/day green  0/h green         0/h green\n"
    "qx:keypad      End Device         0x837b   ||||    online  0/day green  0/h green         0/h green\n"
    "qx:keypad      End Device         0x948a   |||.    online  0/day green  0/h green         0/h green\n"
    "qx:motion      Sleepy End Device  0xa599   ||..    online  0/day green  0/h green         0/h green\n"
    "qx:contact     Sleepy End Device  0xb6a8   ....    asleep  0/day green  0/h green         0/h green\n"
    "qx:socket      Router             0xc7b7   ....    online  0/day green  400/h red         75/h yellow\n"
    "\n"
    "12 nodes, 2 access points; 2577 frames, of which 6 broken and 1 from strangers\n";

TEST(ReplayCommand, ClosesWithTheTableOfTheNodes) {
  const Outcome outcome = replay({MESH_DAY});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, TABLE_OF_THE_DAY);
}

TEST(ReplayCommand, ShowsTheSameInAnyZone) {
  for (const char* const zone : {"TZ=EAST-5:30", "TZ=WEST+11"})
    EXPECT_EQ(replay({MESH_DAY}, {zone}).out, TABLE_OF_THE_DAY);
}

TEST(ReplayCommand, ShowsLightsInColourIfAskedTo) {
  for (const std::vector<std::string>& environment : {std::vector<std::string>{ZONE}, {ZONE, "NO_COLOR=1"}}) {
    const Outcome outcome = replay({"--color", "always", MESH_DAY}, environment);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(lineWith(outcome.out, "0x4f3f"),
              "qx:lamp        Router             0x4f3f   ||..    online  \x1b[31m30/day red\x1b[0m   "
              "\x1b[32m0/h green\x1b[0m         \x1b[32m0/h green\x1b[0m");
    EXPECT_THAT(lineWith(outcome.out, "0xc7b7"),
                HasSubstr("\x1b[31m400/h red\x1b[0m         \x1b[33m75/h yellow\x1b[0m"));
  }
  EXPECT_EQ(replay({"--color", "never", MESH_DAY}).out, TABLE_OF_THE_DAY);
}

TEST(ReplayCommand, ShowsLightsInColourOnATerminalUnlessToldOtherwise) {
  const std::vector<std::string> arguments{"replay", MESH_DAY};
  EXPECT_THAT(test::runProgramOnTerminal({arguments, "", {ZONE}}).out, HasSubstr("\x1b[31m30/day red\x1b[0m"));
  EXPECT_THAT(test::runProgramOnTerminal({arguments, "", {ZONE, "NO_COLOR=1"}}).out, Not(HasSubstr("\x1b")));
}

/// A line of the lamp, `seconds` after the first.
std::string lineAt(long seconds, const std::string& ids, const std::string& hex) {
  return std::to_string(1000000000 + seconds) + " 0017880100a00010 0x1c02 " + ids + " " + hex + "\n";
}
/// It announces itself with a count of its reboots.
std::string boot(long seconds, unsigned int count) {
  std::string digits = "00";
  digits[0] = "0123456789abcdef"[count / 16];
  digits[1] = "0123456789abcdef"[count % 16];
  return lineAt(seconds, "0xc25f 1", "18 05 0a 00 00 20 02 06 00 21 " + digits + " 00");
}

/// The only line of the table, from the state of the node on; and the summary.
std::vector<std::string> endsOf(const std::string& table) {
  const std::string line = lineWith(table, "0017880100a00010");
  return {line.substr(std::min(line.size(), line.find("?") + 8)), linesOf(table).back()};
}

TEST(ReplayCommand, MovesTheLastFrameToNow) {
  const test::TemporaryFile file(boot(0, 1) + "# twelve more\n" + boot(60, 13));
  EXPECT_THAT(endsOf(replay({file.name()}).out),
              ElementsAre("online  12/day yellow  0/h green         0/h green",
                          "1 node, 0 access points; 2 frames, of which 0 broken and 0 from strangers"));
}

TEST(ReplayCommand, LeavesTimesAsTheyAreIfAskedTo) {
  const test::TemporaryFile file(boot(0, 1) + boot(60, 13));
  EXPECT_THAT(endsOf(replay({"--as-recorded", file.name()}).out),
              ElementsAre("online  0/day green  0/h green         0/h green",
                          "1 node, 0 access points; 2 frames, of which 0 broken and 0 from strangers"));
}

TEST(ReplayCommand, KeepsTheOrderOfTheFilesAndOfTheirLines) {
  const test::TemporaryFile first(boot(0, 1) + boot(60, 3));
  const test::TemporaryFile second(boot(120, 4) + boot(180, 5));
  EXPECT_EQ(endsOf(replay({first.name(), second.name()}).out)[0], "online  4/day green  0/h green         0/h green");
  EXPECT_EQ(endsOf(replay({second.name(), first.name()}).out)[0], "online  1/day green  0/h green         0/h green")
      << "4 and 5; then 1 and 3 come late";
}

TEST(ReplayCommand, LooksAtSilenceFromTheLastFrameOn) {
  const std::string other = std::to_string(1000000000 + 3 * 3600) + " 0017880100a00011 2 6 6 180501\n";
  const test::TemporaryFile silent(boot(0, 1) + other);
  EXPECT_THAT(endsOf(replay({silent.name()}).out)[0], StartsWith("silent "));
  const test::TemporaryFile there(boot(1, 1) + other);
  EXPECT_THAT(endsOf(replay({there.name()}).out)[0], StartsWith("online "));
}

TEST(ReplayCommand, SaysWhichLinesDoNotDoAndReplaysTheOthers) {
  const test::TemporaryFile file("yesterday\n" + boot(0, 1) + "\n# a comment\n1000000001 00 1 2 3 04\n" +
                                 std::string(70000, '1') + "\n" + boot(60, 3) + "1000000060 0017880100a00010 1 2 3");
  const Outcome outcome = replay({file.name()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, file.name() + ":1: time: \"yesterday\" is no number\n" +  //
                             file.name() + ":5: euid: \"00\" has 2 digits, an address has 16\n" + file.name() +
                             ":6: the line is too long\n" +  //
                             file.name() + ":8: hex: missing\n");
  EXPECT_THAT(endsOf(outcome.out),
              ElementsAre("online  2/day green  0/h green         0/h green",
                          "1 node, 0 access points; 2 frames, of which 0 broken and 0 from strangers"));
}

TEST(ReplayCommand, SaysWhichFilesDoNotReadAndReplaysTheOthers) {
  const TemporaryDirectory folder;
  const std::string day = folder.file("day", boot(0, 1));
  const Outcome outcome = replay({folder.path("missing"), day, folder.path()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "vso: " + folder.path("missing") + ": No such file or directory\n" +  //
                             "vso: " + folder.path() + ": Is a directory\n");
  EXPECT_THAT(outcome.out, HasSubstr("\n1 node, "));
}

// The files are read twice: once for the time of the last frame.
TEST(ReplayCommand, RefusesAPipe) {
  const TemporaryDirectory folder;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const std::string complaint = "vso: " + pipe + ": a pipe or a terminal cannot be read twice, as a recording is\n";
  const Outcome alone = replay({pipe});
  EXPECT_EQ(alone.status, 1);
  EXPECT_EQ(alone.err, complaint) << "nobody writes";
  const int writer = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  const Outcome outcome = replay({pipe});
  ::close(writer);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, complaint);
}

TEST(ReplayCommand, ReplaysAFileThatIsStandardInput) {
  const Outcome outcome = runProgram({{"replay", "/dev/stdin"}, boot(0, 1), {ZONE}});
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("\n1 node, 0 access points; 1 frame"));
}

TEST(ReplayCommand, ReplaysNothing) {
  const test::TemporaryFile empty("");
  const test::TemporaryFile comments("# nothing\n\n");
  const Outcome outcome = replay({empty.name(), comments.name()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "NAME  TYPE  ADDRESS  SIGNAL  STATE  REBOOTS  INBOUND FAILURES  OUTBOUND FAILURES\n\n"
            "0 nodes, 0 access points; 0 frames, of which 0 broken and 0 from strangers\n");
}

TEST(ReplayCommand, StandsTimesThatLieFarApart) {
  const std::string ids = " 0017880100a00010 0x1c02 ";
  const test::TemporaryFile file("0" + ids + "0xc25f 1 18 05 0a 06 00 21 01 00\n" +  //
                                 "0" + ids + "0xffff 3 0c 00 00\n" +                 //
                                 "1700000000" + ids + "0xffff 3 0c 00 00\n" +        //
                                 "1700000000" + ids + "0xc25f 1 18 05 0a 06 00 21 03 00\n");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{file.name()}, {"--as-recorded", file.name()}}) {
    const Outcome outcome = replay(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(linesOf(outcome.out).back(), "1 node, 0 access points; 4 frames, of which 0 broken and 0 from strangers");
  }
}

TEST(ReplayCommand, TakesFramesOfNow) {
  const std::string ids = " 0017880100a00010 0x1c02 ";
  const test::TemporaryFile file("now" + ids + "0xc25f 1 18 05 0a 06 00 21 01 00\n" +  //
                                 "now" + ids + "0xc25f 1 18 05 0a 06 00 21 05 00\n");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{file.name()}, {"--as-recorded", file.name()}}) {
    EXPECT_EQ(endsOf(replay(arguments).out)[0], "online  4/day green  0/h green         0/h green");
  }
}

TEST(ReplayCommand, GoesOnFromTheStateThatTheLastOneKept) {
  const TemporaryDirectory folder;
  const std::string state = folder.path("state");
  const std::string first = folder.file("first", boot(0, 1) + boot(60, 3));
  const std::string second = folder.file("second", boot(86400, 6));
  const Outcome before = replay({"--state", state, first});
  EXPECT_EQ(before.status, 0);
  EXPECT_EQ(endsOf(before.out)[0], "online  2/day green  0/h green         0/h green");
  const Outcome after = replay({"--state", state, second});
  EXPECT_EQ(after.status, 0);
  EXPECT_EQ(after.err, "");
  EXPECT_THAT(endsOf(after.out),
              ElementsAre("online  5/day green  0/h green         0/h green",
                          "1 node, 0 access points; 1 frame, of which 0 broken and 0 from strangers"));
}

TEST(ReplayCommand, LooksAtSilenceFromTheNewestContactOnBesideAnOlderRecording) {
  const TemporaryDirectory folder;
  const std::string state = folder.path("state");
  // The lamp has been silent for three hours when the other one is heard.
  const std::string other =
      std::to_string(1000000000 + 3 * 3600) + " 0017880100a00011 2 0xc25f 1 18 05 0a 00 00 20 02\n";
  const std::string day = folder.file("day", boot(0, 1) + other);
  const std::string before = folder.file("before", boot(-86400, 1));
  EXPECT_THAT(lineWith(replay({"--state", state, "--as-recorded", day}).out, "0x1c02"), HasSubstr(" silent "));
  const Outcome outcome = replay({"--state", state, "--as-recorded", before});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(lineWith(outcome.out, "0x1c02"), HasSubstr(" silent "));
  EXPECT_THAT(lineWith(outcome.out, "0x0002"), HasSubstr(" online "));
}

TEST(ReplayCommand, WarnsOfDaysThatFallOnOneAnother) {
  const TemporaryDirectory folder;
  const std::string state = folder.path("state");
  const std::string day = folder.file("day", boot(0, 1) + boot(3600, 2));
  const std::string next = folder.file("next", boot(86400, 3) + boot(90000, 4));
  EXPECT_EQ(replay({"--state", state, day}).err, "");
  const Outcome outcome = replay({"--state", state, next});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "vso: " + state +
                             ": what it holds is told of times after the first frame, as both were moved to end now; "
                             "name all recordings at once, or leave them --as-recorded\n");
  const std::string recorded = folder.path("recorded");
  EXPECT_EQ(replay({"--state", recorded, "--as-recorded", day}).err, "");
  EXPECT_EQ(replay({"--state", recorded, "--as-recorded", next}).err, "");
}

TEST(ReplayCommand, LeavesOutWhatIsToComeUnlessItIsMoved) {
  const std::string later = std::to_string(std::time(nullptr) + 3600) + " 0017880100a00010 0x1c02 6 6 180501\n";
  const test::TemporaryFile file(boot(0, 1) + later);
  const Outcome outcome = replay({"--as-recorded", file.name()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, file.name() + ":2: time: it is to come\n");
  EXPECT_EQ(endsOf(outcome.out).back(), "1 node, 0 access points; 1 frame, of which 0 broken and 0 from strangers");
  EXPECT_EQ(replay({file.name()}).status, 0);
}

TEST(ReplayCommand, RefusesAStateWithoutAPath) {
  const Outcome outcome = replay({"--state", "", MESH_DAY});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vso: --state: an empty path\nTry 'vso replay --help'.\n");
}

TEST(ReplayCommand, KeepsTheDayWithItsAccessPoints) {
  const TemporaryDirectory folder;
  const std::string state = folder.path("state");
  EXPECT_EQ(replay({"--state", state, MESH_DAY}).out, TABLE_OF_THE_DAY);
  const std::string nothing = folder.file("nothing", "");
  const std::string table = replay({"--state", state, nothing}).out;
  EXPECT_EQ(linesOf(table).back(), "12 nodes, 2 access points; 0 frames, of which 0 broken and 0 from strangers");
  EXPECT_THAT(lineWith(table, "0xc7b7"), HasSubstr("0/day green  400/h red         75/h yellow"));
}

TEST(ReplayCommand, ChangesNothingWithoutAFrame) {
  const TemporaryDirectory folder;
  const std::string state = folder.path("state");
  ASSERT_EQ(replay({"--state", state, "--as-recorded", folder.file("day", boot(0, 1))}).status, 0);
  const std::string saved = test::contentOf(state + "/mesh.state");
  EXPECT_EQ(replay({"--state", state, folder.file("nothing", "")}).status, 0);
  EXPECT_EQ(replay({"--state", state, folder.path("no file")}).status, 1);
  EXPECT_EQ(test::contentOf(state + "/mesh.state"), saved);
}

TEST(ReplayCommand, BeginsAnewBesideAStateThatDoesNotRead) {
  const TemporaryDirectory folder;
  const std::string day = folder.file("day", boot(0, 1));
  const std::string saved = folder.path("state/mesh.state");
  ASSERT_EQ(replay({"--state", folder.path("state"), day}).status, 0);
  const std::string damaged = test::contentOf(saved).substr(0, 20);
  folder.file("state/mesh.state", damaged);
  const Outcome outcome = replay({"--state", folder.path("state"), day});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "vso: " + saved + ": it is no saved mesh, or has lost its end; it is kept as " + saved +
                             ".damaged-1, and the mesh begins anew\n");
  EXPECT_EQ(test::contentOf(saved + ".damaged-1"), damaged);
  EXPECT_THAT(outcome.out, HasSubstr("\n1 node, "));
}

TEST(ReplayCommand, RefusesAStateThatItCannotKeep) {
  const TemporaryDirectory folder;
  const std::string file = folder.file("file", boot(0, 1));
  const struct {
    std::string state;
    std::string complaint;
  } rows[] = {
      {file, "vso: " + file + "/lock: Not a directory\n"},
      {folder.path("no/state"), "vso: " + folder.path("no/state") + ": No such file or directory\n"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = replay({"--state", row.state, file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, row.complaint);
  }
  EXPECT_EQ(test::contentOf(file), boot(0, 1));
}

TEST(ReplayCommand, SaysThatItsOutputWasLost) {
  const TemporaryDirectory folder;
  const std::string day = folder.file("day", boot(0, 1));
  const Outcome outcome =
      test::runProgramInto("/dev/full", {{"replay", "--state", folder.path("state"), day}, "", {ZONE}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "vso: standard output: No space left on device\n");
  EXPECT_THAT(replay({"--state", folder.path("state"), day}).out, HasSubstr("\n1 node, ")) << "the state was kept";
}

TEST(ReplayCommand, RefusesWrongUsage) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"--state"}, {"--color", "pink", MESH_DAY}, {"--faster", MESH_DAY}}) {
    const Outcome outcome = replay(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("vso: "));
    EXPECT_THAT(outcome.err, HasSubstr("\nTry 'vso replay --help'.\n"));
  }
}

TEST(ReplayCommand, ExplainsItself) {
  const Outcome outcome = replay({"--help"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* const part : {"--state DIR", "--as-recorded", "--color", "Lines:", "Times:", "Exit status:"}) {
    EXPECT_THAT(outcome.out, HasSubstr(part));
  }
}

}  // namespace
}  // namespace qx::app

// `vso replay` of a recording that is slow to read. This program has its own definition of the function that reads, so
// it stands alone.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "apps/vso/replay/replayCommand.h"
#include "support/NextFunction.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryDirectory.h"

namespace {

std::chrono::milliseconds delay(0);

}  // namespace

extern "C" ssize_t read(int file, void* bytes, size_t size) {
  if (delay.count() != 0) std::this_thread::sleep_for(delay);
  return qx::test::nextFunction<ssize_t(int, void*, size_t)>("read")(file, bytes, size);
}

namespace qx::app {
namespace {

using testing::EndsWith;
using testing::Ge;
using testing::IsEmpty;
using testing::Lt;
using testing::Not;
using testing::StartsWith;

/// The exit status of a process that replays a file, with a terminal for its complaints, and in which a read takes so
/// long.
int replayOn(const test::PseudoTerminal& terminal, const std::string& file, std::chrono::milliseconds perRead,
             std::string& screen) {
  const pid_t process = ::fork();
  if (process == 0) {
    ::setenv("TZ", "UTC", 1);
    const int errors = ::open(terminal.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const int output = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (::dup2(errors, STDERR_FILENO) < 0 || ::dup2(output, STDOUT_FILENO) < 0) ::_exit(99);
    ::close(errors);
    CLI::App program;
    std::function<int()> chosen;
    addReplayCommand(program, chosen);
    program.parse(std::vector<std::string>{file, "replay"});  // the last one first
    delay = perRead;
    ::_exit(chosen());
  }
  // Up to where the process ends.
  constexpr std::size_t ALL = 1'000'000;
  screen = terminal.receive(ALL);
  int status = -1;
  ::waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// A recording that takes seven reads: the seventh finds the end.
std::string recording() {
  constexpr std::size_t PIECE = 65536;
  std::string text;
  const std::string comment = "#" + std::string(998, '-') + "\n";
  while (text.size() < 5 * PIECE) text += comment;
  return text + "1000000000 0017880100a00010 0x1c02 0xc25f 1 18 05 0a 00 00 20 02\nno frame\n";
}

/// The percentages that were drawn.
std::vector<int> percentages(const std::string& screen) {
  static const std::regex BAR("\rreplaying \\[[#-]{42}\\] ([ 0-9]{3}) %");
  std::vector<int> all;
  for (std::sregex_iterator bar(screen.begin(), screen.end(), BAR); bar != std::sregex_iterator(); ++bar) {
    all.push_back(std::stoi((*bar)[1]));
  }
  return all;
}

const std::string AWAY = "\r\x1b[K";

// In 1.75 seconds a pass the bar comes in the first.
TEST(ReplayCalls, ShowOneBarForBothPassesOverTheFiles) {
  const test::TemporaryDirectory folder;
  const test::PseudoTerminal terminal;
  const std::string file = folder.file("day", recording());
  std::string screen;
  EXPECT_EQ(replayOn(terminal, file, std::chrono::milliseconds(250), screen), 1);
  const std::vector<int> drawn = percentages(screen);
  ASSERT_THAT(drawn, Not(IsEmpty())) << screen;
  EXPECT_THAT(drawn.front(), Lt(50));
  EXPECT_THAT(drawn.back(), Ge(75));
  EXPECT_TRUE(std::is_sorted(drawn.begin(), drawn.end())) << screen;
  EXPECT_THAT(screen, StartsWith("\rreplaying ["));
  // A complaint stands in a line of its own, and comes once.
  const std::string complaint = AWAY + file + ":330: time: \"no\" is no number\r\n";
  EXPECT_NE(screen.find(complaint), std::string::npos) << screen;
  EXPECT_EQ(screen.find(complaint, screen.find(complaint) + 1), std::string::npos) << screen;
  EXPECT_THAT(screen, testing::AnyOf(EndsWith(complaint), EndsWith(AWAY)));
}

// Neither pass alone takes a second.
TEST(ReplayCalls, CountBothPassesTowardsThePatienceOfTheBar) {
  const test::TemporaryDirectory folder;
  const test::PseudoTerminal terminal;
  std::string screen;
  EXPECT_EQ(replayOn(terminal, folder.file("day", recording()), std::chrono::milliseconds(110), screen), 1);
  const std::vector<int> drawn = percentages(screen);
  ASSERT_THAT(drawn, Not(IsEmpty())) << screen;
  EXPECT_THAT(drawn.back(), Ge(50));
}

}  // namespace
}  // namespace qx::app

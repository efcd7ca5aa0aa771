#include "apps/vso/replay/ProgressBar.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/PseudoTerminal.h"
#include "support/TemporaryDirectory.h"

namespace qx::app {
namespace {

using Clock = std::chrono::steady_clock;

TEST(ProgressLine, Has60Columns) {
  EXPECT_EQ(progressLine("replaying", 0, 10), "replaying [" + std::string(42, '-') + "]   0 %");
  EXPECT_EQ(progressLine("replaying", 5, 10), "replaying [" + std::string(21, '#') + std::string(21, '-') + "]  50 %");
  EXPECT_EQ(progressLine("replaying", 10, 10), "replaying [" + std::string(42, '#') + "] 100 %");
  for (std::size_t done = 0; done <= 1000; ++done) ASSERT_EQ(progressLine("x", done, 1000).size(), 60U);
}

TEST(ProgressLine, IsFullNeitherTooEarlyNorTooLate) {
  EXPECT_EQ(progressLine("replaying", 999, 1000), "replaying [" + std::string(41, '#') + "-]  99 %");
  EXPECT_EQ(progressLine("replaying", 11, 10), progressLine("replaying", 10, 10)) << "more than was to be done";
  EXPECT_EQ(progressLine("replaying", 0, 0), progressLine("replaying", 10, 10)) << "nothing to do";
}

TEST(ProgressLine, LeavesOutTheBarIfThereIsNoRoom) {
  const std::string what(60, 'x');
  EXPECT_EQ(progressLine(what, 1, 2), what + " []  50 %");
}

/// Standard error is another file for a while.
class StandardErrorAs {
 public:
  explicit StandardErrorAs(const std::string& path) : before_(::dup(STDERR_FILENO)) {
    const int file = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (before_ < 0 || file < 0 || ::dup2(file, STDERR_FILENO) < 0) throw std::runtime_error("no " + path);
    ::close(file);
  }
  ~StandardErrorAs() {
    ::dup2(before_, STDERR_FILENO);
    ::close(before_);
  }
  StandardErrorAs(const StandardErrorAs&) = delete;
  StandardErrorAs& operator=(const StandardErrorAs&) = delete;

 private:
  int before_;
};

/// Goes on with the work until the patience of a bar has gone by for sure; each step is looked at.
template <typename Step>
void workOn(Step step) {
  for (int i = 0; i < 30; ++i) {
    step();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

const std::string AWAY = "\r\x1b[K";

TEST(ProgressBar, ComesAfterASecond) {
  const test::PseudoTerminal terminal;
  // One that stays at the beginning for as long as this takes.
  const std::string line = "\r" + progressLine("working", 0, 1);
  const Clock::time_point start = Clock::now();
  Clock::time_point drawn;
  std::string screen;
  std::thread reader([&] {
    screen = terminal.receive(line.size());
    drawn = Clock::now();
  });
  {
    const StandardErrorAs terminalInstead(terminal.path());
    std::size_t steps = 0;
    ProgressBar bar("working", 1'000'000'000);
    workOn([&] { bar.at(steps += 64); });
    reader.join();
  }
  EXPECT_GE(drawn - start, std::chrono::seconds(1));
  EXPECT_EQ(screen.substr(0, line.size()), line);
}

TEST(ProgressBar, IsTakenAwayForOtherOutputAndInTheEnd) {
  const test::PseudoTerminal terminal;
  const std::string line = "\r" + progressLine("working", 0, 1);
  {
    const StandardErrorAs terminalInstead(terminal.path());
    ProgressBar bar("working", 1'000'000'000);
    workOn([] {});
    bar.at(64);
    bar.hide();
    bar.hide();  // there is nothing any more to take away
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    bar.at(65);  // too few steps for another look at the clock
    bar.at(128);
  }
  const std::string expected = line + AWAY + line + AWAY;
  EXPECT_EQ(terminal.receive(expected.size()), expected);
}

TEST(ProgressBar, IsForTerminalsAlone) {
  const test::TemporaryDirectory folder;
  const std::string file = folder.file("errors", "");
  {
    const StandardErrorAs fileInstead(file);
    std::size_t steps = 0;
    ProgressBar bar("working", 1000);
    workOn([&] { bar.at(steps += 64); });
  }
  EXPECT_EQ(test::contentOf(file), "");
}

}  // namespace
}  // namespace qx::app

// What a SerialPipe asks of the system, call by call: the terminal functions are defined here, for the whole program.
#include <gtest/gtest.h>
#include <termios.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/vso/runtime/FileChecks.h"
#include "vso/runtime/SerialPipe.h"

namespace {

using qx::test::textOf;

/// The line as tcgetattr finds it: no field is like what a SerialPipe sets.
termios foundLine() {
  termios line{};
  line.c_iflag = 0x1234;
  line.c_oflag = 0x2345;
  line.c_cflag = 0xFFFFFFFF;
  line.c_lflag = 0x4567;
  line.c_line = 9;
  for (std::size_t at = 0; at < sizeof line.c_cc; ++at) line.c_cc[at] = static_cast<cc_t>(100 + at);
  return line;
}

/// A system with one serial line that keeps a list of what it was asked.
struct TerminalCalls {
  std::vector<std::string> calls;
  termios applied{};
  const termios* record = nullptr;
  std::string failing;
  int reason = 0;

  int answer(const std::string& function, const std::string& arguments) {
    calls.push_back(function + arguments);
    if (function != failing) return 0;
    errno = reason;
    return -1;
  }
};

TerminalCalls terminal;

std::string numbers(int first, int second) { return " " + std::to_string(first) + " " + std::to_string(second); }

/// The speed functions are to work on the record that was applied, and as it was applied.
std::string speedOn(const termios* record, speed_t speed) {
  const bool isThatApplied = record == terminal.record && textOf(*record) == textOf(terminal.applied);
  return " " + std::to_string(static_cast<int>(speed)) + (isThatApplied ? "" : " on another record");
}

}  // namespace

extern "C" {

int tcgetattr(int handle, termios* line) noexcept {
  const int result = terminal.answer("tcgetattr", " " + std::to_string(handle));
  if (result == 0) *line = foundLine();
  return result;
}

int tcsetattr(int handle, int when, const termios* line) noexcept {
  terminal.applied = *line;
  terminal.record = line;
  return terminal.answer("tcsetattr", numbers(handle, when));
}

int cfsetospeed(termios* line, speed_t speed) noexcept { return terminal.answer("cfsetospeed", speedOn(line, speed)); }

int cfsetispeed(termios* line, speed_t speed) noexcept { return terminal.answer("cfsetispeed", speedOn(line, speed)); }

int tcflush(int handle, int queue) noexcept { return terminal.answer("tcflush", numbers(handle, queue)); }
}

namespace qx {
namespace {

/// A device that can be opened; the functions above make a line of it.
const std::string DEVICE = "/dev/null";

class SerialPipeCalls : public ::testing::Test {
 protected:
  SerialPipeCalls() { terminal = {}; }
  ~SerialPipeCalls() override { terminal = {}; }
};

SerialPipe pipeWith(int speed, int dataBits, int stopBits, int parity) {
  return {DEVICE, static_cast<Xspeed>(speed), static_cast<unsigned char>(dataBits), static_cast<XstopBits>(stopBits),
          static_cast<Xparity>(parity)};
}

/// The line that a pipe makes of the one it finds.
termios appliedLine(tcflag_t input, tcflag_t control) {
  termios line = foundLine();
  line.c_iflag = input;
  line.c_oflag = 0;
  line.c_cflag = control;
  line.c_lflag = 0;
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  for (const int name : {VINTR, VQUIT, VERASE, VKILL, VEOF, VSUSP}) line.c_cc[name] = 0;
  return line;
}

TEST_F(SerialPipeCalls, ConstructorAndSetParamsAskNothing) {
  SerialPipe pipe = pipeWith(5, 8, 1, 0);
  pipe.setParams(DEVICE, Xspeed{9}, 7, XstopBits{2}, Xparity{1});
  EXPECT_TRUE(terminal.calls.empty());
  pipe.open();
  terminal.calls.clear();
  pipe.setParams(DEVICE, Xspeed{5}, 8, XstopBits{1}, Xparity{0});
  EXPECT_TRUE(terminal.calls.empty());
}

TEST_F(SerialPipeCalls, AttributesAreAppliedBeforeTheSpeedsAreSetAndTheFlushIsLast) {
  SerialPipe pipe = pipeWith(5, 8, 1, 0);
  pipe.open();
  const std::string handle = std::to_string(pipe.handle());
  EXPECT_EQ(terminal.calls, (std::vector<std::string>{
                                "tcgetattr " + handle,
                                "tcsetattr " + handle + " 0",  // TCSANOW
                                "cfsetospeed 13", "cfsetispeed 5",
                                "tcflush " + handle + " 0",  // TCIFLUSH
                            }));
}

TEST_F(SerialPipeCalls, OutputSpeedIsTheSystemsNumberAndInputSpeedThePlainOne) {
  const std::pair<int, int> rows[] = {{0, 3},  {1, 7},    {2, 9},    {3, 11},  {4, 12},  {5, 13},    {6, 14},
                                      {7, 15}, {8, 4097}, {9, 4098}, {10, 14}, {-1, 14}, {1000, 14}, {INT_MAX, 14}};
  for (const auto& [speed, number] : rows) {
    terminal = {};
    SerialPipe pipe = pipeWith(speed, 8, 1, 0);
    pipe.open();
    ASSERT_EQ(terminal.calls.size(), 5U);
    EXPECT_EQ(terminal.calls[2], "cfsetospeed " + std::to_string(number)) << speed;
    EXPECT_EQ(terminal.calls[3], "cfsetispeed " + std::to_string(speed)) << speed;
  }
}

TEST_F(SerialPipeCalls, EverySettingGivesItsFlags) {
  const std::pair<int, tcflag_t> speeds[] = {{0, 3},  {1, 7},    {2, 9},    {3, 11},  {4, 12},  {5, 13},   {6, 14},
                                             {7, 15}, {8, 4097}, {9, 4098}, {10, 14}, {-1, 14}, {1000, 14}};
  const std::pair<int, tcflag_t> sizes[] = {{0, 0},  {4, 0}, {5, 48}, {6, 48}, {7, 48},
                                            {8, 48}, {9, 0}, {16, 0}, {255, 0}};
  const std::pair<int, tcflag_t> stops[] = {{0, 0}, {1, 0}, {2, 64}, {3, 0}};
  const std::pair<int, tcflag_t> parities[] = {{0, 0}, {1, 768}, {2, 256}, {3, 0}, {-1, 0}};
  for (const auto& [speed, speedFlags] : speeds) {
    for (const auto& [dataBits, sizeFlags] : sizes) {
      for (const auto& [stopBits, stopFlags] : stops) {
        for (const auto& [parity, parityFlags] : parities) {
          SerialPipe pipe = pipeWith(speed, dataBits, stopBits, parity);
          pipe.open();
          const tcflag_t input = parity == 0 ? 5 : foundLine().c_iflag;
          const tcflag_t control = 3200 | speedFlags | sizeFlags | stopFlags | parityFlags;
          ASSERT_EQ(textOf(terminal.applied), textOf(appliedLine(input, control)))
              << speed << " " << dataBits << " " << stopBits << " " << parity;
        }
      }
    }
  }
}

TEST_F(SerialPipeCalls, NewParametersAreThoseOfTheNextOpen) {
  SerialPipe pipe = pipeWith(5, 8, 1, 0);
  pipe.open();
  pipe.setParams(DEVICE, Xspeed{8}, 9, XstopBits{2}, Xparity{2});
  pipe.close();
  pipe.open();
  EXPECT_EQ(textOf(terminal.applied), textOf(appliedLine(0x1234, 3200 | 4097 | 64 | 256)));
}

TEST_F(SerialPipeCalls, LineThatCannotBeReadIsSetAllTheSame) {
  terminal.failing = "tcgetattr";
  terminal.reason = EIO;
  SerialPipe pipe = pipeWith(9, 8, 2, 0);
  EXPECT_NO_THROW(pipe.open());
  EXPECT_EQ(terminal.calls.size(), 5U);
  EXPECT_EQ(terminal.applied.c_iflag, 5U);
  EXPECT_EQ(terminal.applied.c_oflag, 0U);
  EXPECT_EQ(terminal.applied.c_cflag, 3200U | 4098U | 64U | 48U);
  EXPECT_EQ(terminal.applied.c_lflag, 0U);
  EXPECT_EQ(terminal.applied.c_cc[VMIN], 1);
  for (const int name : {VTIME, VINTR, VQUIT, VERASE, VKILL, VEOF, VSUSP}) {
    EXPECT_EQ(terminal.applied.c_cc[name], 0) << name;
  }
}

TEST_F(SerialPipeCalls, FailureIsReportedWithItsReasonAndLeavesTheLineOpen) {
  struct Row {
    const char* function;
    int reason;
    const char* text;
    std::size_t calls;
  };
  const Row rows[] = {
      {"tcsetattr", ENOTTY, "Failed to set attributes on serial connection: Inappropriate ioctl for device", 2},
      {"tcsetattr", EINVAL, "Failed to set attributes on serial connection: Invalid argument", 2},
      {"cfsetospeed", EINVAL, "Failed to set output baud rate on serial port: Invalid argument", 3},
      {"cfsetospeed", EDOM, "Failed to set output baud rate on serial port: Numerical argument out of domain", 3},
      {"cfsetispeed", EINVAL, "Failed to set input baud rate on serial port: Invalid argument", 4},
      {"cfsetispeed", ERANGE, "Failed to set input baud rate on serial port: Numerical result out of range", 4},
      {"tcflush", EIO, "Failed to flush serial port on initial connection: Input/output error", 5},
      {"tcflush", EBADF, "Failed to flush serial port on initial connection: Bad file descriptor", 5},
  };
  for (const Row& row : rows) {
    terminal = {};
    terminal.failing = row.function;
    terminal.reason = row.reason;
    SerialPipe pipe = pipeWith(5, 8, 1, 0);
    std::string thrown;
    try {
      pipe.open();
    } catch (const std::runtime_error& error) {
      thrown = error.what();
    }
    EXPECT_EQ(thrown, row.text);
    EXPECT_TRUE(pipe.isOpen()) << row.function;
    EXPECT_EQ(terminal.calls.size(), row.calls) << row.function;
    EXPECT_NO_THROW(pipe.close()) << row.function;
  }
}

TEST_F(SerialPipeCalls, ClosedPipeAsksNothing) {
  SerialPipe pipe = pipeWith(5, 8, 1, 0);
  EXPECT_THROW(pipe.init(), std::runtime_error);
  EXPECT_TRUE(terminal.calls.empty());
}

TEST_F(SerialPipeCalls, DeviceThatCannotBeOpenedIsAskedNothing) {
  SerialPipe pipe("/dev/null/none", Xspeed{5}, 8, XstopBits{1}, Xparity{0});
  EXPECT_THROW(pipe.open(), std::runtime_error);
  EXPECT_TRUE(terminal.calls.empty());
}

}  // namespace
}  // namespace qx

#include "vso/runtime/SerialPipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <type_traits>

#include "support/Bytes.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryDirectory.h"
#include "tests/vso/runtime/FileChecks.h"

namespace qx {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test::bufferOf;
using test::PseudoTerminal;
using test::slotOf;
using test::TemporaryDirectory;
using test::textOf;
using test::thrownBy;
using Buffer = U255Buff<unsigned char>;

constexpr Xspeed SPEED{5};
constexpr unsigned char DATA_BITS = 8;
constexpr XstopBits STOP_BITS{1};
constexpr Xparity NO_PARITY{0};

static_assert(std::is_base_of_v<Xfile, SerialPipe>);
static_assert(std::is_convertible_v<Xspeed, int> && std::is_convertible_v<XstopBits, int> &&
              std::is_convertible_v<Xparity, int>);

SerialPipe pipeTo(const std::string& name) { return {name, SPEED, DATA_BITS, STOP_BITS, NO_PARITY}; }

/// A line that is as different as can be from one that has been opened.
termios cookedLine() {
  termios line{};
  line.c_iflag = BRKINT | ICRNL | IXON | INPCK;
  line.c_oflag = OPOST | ONLCR;
  line.c_cflag = CREAD | CS8 | B2400;
  line.c_lflag = ISIG | ICANON | ECHO;
  std::fill_n(line.c_cc, test::LINE_CHARACTERS, cc_t{0x55});
  return line;
}

/// The same after a pipe has opened it without parity at 9600.
termios rawLine() {
  termios line = cookedLine();
  line.c_iflag = 5;
  line.c_oflag = 0;
  line.c_cflag = 3200 | CS8 | 13;
  line.c_lflag = 0;
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  for (const int name : {VINTR, VQUIT, VERASE, VKILL, VEOF, VSUSP}) line.c_cc[name] = 0;
  return line;
}

/// So many bytes from the pipe, in as many pieces as they come.
std::string receive(const SerialPipe& pipe, std::size_t count) {
  constexpr int PATIENCE = 80;  // quarters of a second
  std::string bytes;
  for (int waits = 0; bytes.size() < count && waits < PATIENCE;) {
    Buffer buffer;
    const int length = pipe.read(buffer);
    EXPECT_GE(length, 0);
    EXPECT_LE(length, 255);
    EXPECT_EQ(buffer.length_, static_cast<unsigned int>(length));
    if (length <= 0) ++waits;
    bytes.append(reinterpret_cast<const char*>(buffer.contents), buffer.storedLength());
  }
  return bytes;
}

std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

TEST(SerialPipe, SpeedsBecomeTheSystemsNumbers) {
  const int rows[][2] = {{0, 3},   {1, 7},     {2, 9},          {3, 11},        {4, 12},  {5, 13},
                         {6, 14},  {7, 15},    {8, 4097},       {9, 4098},      {10, 14}, {11, 14},
                         {-1, 14}, {1000, 14}, {INT32_MAX, 14}, {INT32_MIN, 14}};
  for (const auto& [speed, number] : rows) {
    EXPECT_EQ(SerialPipe::transmorgrifySpeed(static_cast<Xspeed>(speed)), number) << speed;
  }
}

TEST(SerialPipe, TwoStopBitsAreAskedForByTwoAlone) {
  const int rows[][2] = {{2, 64}, {0, 0}, {1, 0}, {3, 0}, {4, 0}, {-1, 0}, {64, 0}, {258, 0}};
  for (const auto& [bits, flag] : rows) {
    EXPECT_EQ(SerialPipe::transmorgrifyBits(static_cast<XstopBits>(bits)), flag) << bits;
  }
}

TEST(SerialPipe, ParityIsOddForOneAndEvenForTwo) {
  const int rows[][2] = {{0, 0}, {1, 768}, {2, 256}, {3, 0}, {-1, 0}, {257, 0}, {768, 0}};
  for (const auto& [parity, flags] : rows) {
    EXPECT_EQ(SerialPipe::transmorgrifyParity(static_cast<Xparity>(parity)), flags) << parity;
  }
}

TEST(SerialPipe, ConstructorOpensNothing) {
  const PseudoTerminal terminal;
  terminal.attributes(cookedLine());
  const SerialPipe pipe = pipeTo(terminal.path());
  EXPECT_EQ(pipe.name(), terminal.path());
  EXPECT_EQ(pipe.handle(), -1);
  EXPECT_FALSE(pipe.isOpen());
  EXPECT_EQ(textOf(terminal.attributes()), textOf(cookedLine()));
}

TEST(SerialPipe, EmptyNameIsRefused) {
  EXPECT_EQ(thrownBy([] { pipeTo(""); }), "Can't access an Xfile without a name.");
}

TEST(SerialPipe, InitOfAClosedPipeThrows) {
  SerialPipe pipe = pipeTo("/dev/null");
  EXPECT_EQ(thrownBy([&] { pipe.init(); }), "Can't set the out speed with a closed serial port.");
}

TEST(SerialPipe, OpenPutsTheLineInRawMode) {
  const PseudoTerminal terminal;
  terminal.attributes(cookedLine());
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  EXPECT_TRUE(pipe.isOpen());
  EXPECT_EQ(::fcntl(pipe.handle(), F_GETFL) & O_ACCMODE, O_RDWR);
  EXPECT_EQ(textOf(terminal.attributes()), textOf(rawLine()));
}

TEST(SerialPipe, OpenThroughTheBasePutsTheLineInRawMode) {
  const PseudoTerminal terminal;
  terminal.attributes(cookedLine());
  SerialPipe pipe = pipeTo(terminal.path());
  static_cast<Xfile&>(pipe).open();
  EXPECT_EQ(textOf(terminal.attributes()), textOf(rawLine()));
}

TEST(SerialPipe, InitPutsAnOpenLineInRawModeAgain) {
  const PseudoTerminal terminal;
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  terminal.attributes(cookedLine());
  pipe.init();
  EXPECT_EQ(textOf(terminal.attributes()), textOf(rawLine()));
}

// A pseudo-terminal has 8 bits and no parity whatever it is told, and so its driver answers: these flags are left out
// here and looked at where the system's calls are recorded.
TEST(SerialPipe, LineTakesEverySettingThatAPseudoTerminalHas) {
  const int speeds[][2] = {{0, 3},  {1, 7},  {2, 9},    {3, 11},   {4, 12}, {5, 13},
                           {6, 14}, {7, 15}, {8, 4097}, {9, 4098}, {10, 14}};
  const int parities[][2] = {{0, 0}, {1, PARODD}, {2, 0}, {3, 0}};
  const PseudoTerminal terminal;
  for (const auto& [speed, number] : speeds) {
    for (const unsigned char dataBits : {4, 5, 6, 7, 8, 9}) {
      for (const int stopBits : {1, 2, 3}) {
        for (const auto& [parity, flags] : parities) {
          terminal.attributes(cookedLine());
          SerialPipe pipe(terminal.path(), static_cast<Xspeed>(speed), dataBits, static_cast<XstopBits>(stopBits),
                          static_cast<Xparity>(parity));
          pipe.open();
          termios expected = rawLine();
          if (parity != 0) expected.c_iflag = cookedLine().c_iflag;
          expected.c_cflag = static_cast<tcflag_t>(3200 | number | flags | (stopBits == 2 ? CSTOPB : 0));
          termios line = terminal.attributes();
          line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB);
          ASSERT_EQ(textOf(line), textOf(expected))
              << speed << " " << int{dataBits} << " " << stopBits << " " << parity;
        }
      }
    }
  }
}

TEST(SerialPipe, InputSpeedThatTheSystemDoesNotKnowIsRefusedOnceTheLineIsSet) {
  for (const int speed : {-1, 1000}) {
    const PseudoTerminal terminal;
    terminal.attributes(cookedLine());
    SerialPipe pipe(terminal.path(), static_cast<Xspeed>(speed), DATA_BITS, STOP_BITS, NO_PARITY);
    EXPECT_EQ(thrownBy([&] { pipe.open(); }), "Failed to set input baud rate on serial port: Invalid argument");
    EXPECT_TRUE(pipe.isOpen());
    termios expected = rawLine();
    expected.c_cflag = 3200 | CS8 | 14;
    EXPECT_EQ(textOf(terminal.attributes()), textOf(expected));
  }
}

TEST(SerialPipe, EveryByteComesThroughUnchanged) {
  const PseudoTerminal terminal;
  terminal.attributes(cookedLine());
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  ASSERT_TRUE(terminal.send(everyByte()));
  EXPECT_EQ(receive(pipe, 256), everyByte());
}

TEST(SerialPipe, EveryByteGoesOutUnchanged) {
  const PseudoTerminal terminal;
  terminal.attributes(cookedLine());
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  EXPECT_EQ(pipe.write(bufferOf(everyByte().substr(0, 255))), 255);
  EXPECT_EQ(pipe.write(bufferOf(everyByte().substr(255))), 1);
  EXPECT_EQ(terminal.receive(256), everyByte());
}

TEST(SerialPipe, ReadReturnsWithTheFirstByte) {
  const PseudoTerminal terminal;
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  for (const std::string byte : {"a", "\x03", "\x04", "\r"}) {
    ASSERT_TRUE(terminal.send(byte));
    EXPECT_EQ(receive(pipe, 1), byte);
  }
}

TEST(SerialPipe, ReadWithoutDataGivesZeroAfterAQuarterOfASecond) {
  const PseudoTerminal terminal;
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  Buffer buffer = bufferOf("as before");
  const steady_clock::time_point begin = steady_clock::now();
  EXPECT_EQ(pipe.read(buffer), 0);
  EXPECT_GE(steady_clock::now() - begin, milliseconds(240));
  EXPECT_EQ(test::hex(buffer), test::hex(bufferOf("as before")));
}

TEST(SerialPipe, OpenDropsInputThatIsWaiting) {
  const PseudoTerminal terminal;
  SerialPipe first = pipeTo(terminal.path());
  first.open();
  ASSERT_TRUE(terminal.send("stale"));
  pollfd waiting{first.handle(), POLLIN, 0};
  ASSERT_EQ(::poll(&waiting, 1, 20000), 1);
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  ASSERT_TRUE(terminal.send("fresh"));
  EXPECT_EQ(receive(pipe, 5), "fresh");
}

TEST(SerialPipe, OpenLeavesOutputThatIsUnderWay) {
  const PseudoTerminal terminal;
  SerialPipe first = pipeTo(terminal.path());
  first.open();
  EXPECT_EQ(first.write(bufferOf("out")), 3);
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  EXPECT_EQ(pipe.write(bufferOf("side")), 4);
  EXPECT_EQ(terminal.receive(7), "outside");
}

TEST(SerialPipe, HangUpEndsReadingAndWriting) {
  PseudoTerminal terminal;
  SerialPipe pipe = pipeTo(terminal.path());
  pipe.open();
  terminal.hangUp();
  Buffer buffer;
  int count = 1;
  EXPECT_NO_THROW(count = pipe.read(buffer));
  EXPECT_LE(count, 0);
  EXPECT_EQ(buffer.length_, 0U);
  EXPECT_EQ(thrownBy([&] { pipe.write(bufferOf("a")); }),
            "Could not write the full buffer to Xfile: " + terminal.path());
  EXPECT_TRUE(pipe.isOpen());
  EXPECT_NO_THROW(pipe.close());
}

TEST(SerialPipe, DeviceThatHasVanishedCannotBeOpened) {
  const TemporaryDirectory folder;
  const PseudoTerminal terminal;
  const std::string link = folder.path("line");
  fs::create_symlink(terminal.path(), link);
  SerialPipe pipe = pipeTo(link);
  pipe.open();
  pipe.close();
  fs::remove(link);
  EXPECT_EQ(thrownBy([&] { pipe.open(); }), "Unable to open Xfile: " + link);
  EXPECT_FALSE(pipe.isOpen());
}

TEST(SerialPipe, WhatIsNoLineIsLeftOpen) {
  const TemporaryDirectory folder;
  for (const std::string& path : {folder.file("record", "content"), std::string("/dev/null")}) {
    SerialPipe pipe = pipeTo(path);
    EXPECT_EQ(thrownBy([&] { pipe.open(); }),
              "Failed to set attributes on serial connection: Inappropriate ioctl for device");
    EXPECT_TRUE(pipe.isOpen()) << path;
    EXPECT_NE(::fcntl(pipe.handle(), F_GETFD), -1) << path;
  }
  EXPECT_EQ(test::contentOf(folder.path("record")), "content");
}

TEST(SerialPipe, SetParamsCountsFromTheNextOpen) {
  const PseudoTerminal before;
  const PseudoTerminal after;
  after.attributes(cookedLine());
  SerialPipe pipe = pipeTo(before.path());
  pipe.open();
  const int handle = pipe.handle();
  before.attributes(cookedLine());

  pipe.setParams(after.path(), Xspeed{9}, 8, XstopBits{2}, Xparity{1});
  EXPECT_EQ(pipe.name(), after.path());
  EXPECT_EQ(pipe.handle(), handle);
  EXPECT_EQ(textOf(before.attributes()), textOf(cookedLine()));
  EXPECT_EQ(textOf(after.attributes()), textOf(cookedLine()));

  pipe.close();
  pipe.open();
  EXPECT_EQ(textOf(before.attributes()), textOf(cookedLine()));
  termios expected = rawLine();
  expected.c_iflag = cookedLine().c_iflag;
  expected.c_cflag = 3200 | 4098 | CSTOPB | PARODD;
  termios line = after.attributes();
  line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB);
  EXPECT_EQ(textOf(line), textOf(expected));
  EXPECT_EQ(::fcntl(pipe.handle(), F_GETFL) & O_ACCMODE, O_RDWR);
}

TEST(SerialPipe, SetParamsWithAnEmptyNameThrowsAndReplacesNothing) {
  const PseudoTerminal terminal;
  terminal.attributes(cookedLine());
  SerialPipe pipe = pipeTo(terminal.path());
  EXPECT_EQ(thrownBy([&] { pipe.setParams("", Xspeed{9}, 8, XstopBits{2}, Xparity{1}); }),
            "Can't access an Xfile without a name.");
  EXPECT_EQ(pipe.name(), terminal.path());
  pipe.open();
  EXPECT_EQ(textOf(terminal.attributes()), textOf(rawLine()));
}

/// True if a process that leads a session without a terminal still has none after this.
bool keepsSessionWithoutTerminal(const std::function<void()>& action) {
  const pid_t child = ::fork();
  if (child == 0) {
    bool isWell = ::setsid() != -1;
    try {
      action();
      isWell = isWell && ::open("/dev/tty", O_RDWR) == -1 && errno == ENXIO;
    } catch (...) {
      isWell = false;
    }
    ::_exit(isWell ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(SerialPipe, LineDoesNotBecomeTheControllingTerminal) {
  const PseudoTerminal terminal;
  SerialPipe pipe = pipeTo(terminal.path());
  EXPECT_TRUE(keepsSessionWithoutTerminal([&] { pipe.open(); }));
  pipe.setParams(terminal.path(), SPEED, DATA_BITS, STOP_BITS, NO_PARITY);
  EXPECT_TRUE(keepsSessionWithoutTerminal([&] { pipe.open(); }));
  EXPECT_FALSE(keepsSessionWithoutTerminal([&] { ::open(terminal.path().c_str(), O_RDWR); }))
      << "a terminal that is opened without the option does become one";
}

/// Overrides what a SerialPipe adds and overrides.
class Recorder : public SerialPipe {
 public:
  explicit Recorder(std::string& calls)
      : SerialPipe("recorder", SPEED, DATA_BITS, STOP_BITS, NO_PARITY), calls_(calls) {}
  void open() override { calls_ += "open "; }
  void setParams(const std::string& name, Xspeed, unsigned char, XstopBits, Xparity) override {
    calls_ += "setParams " + name + " ";
  }

 private:
  std::string& calls_;
};

TEST(SerialPipe, OpenAndSetParamsCanBeOverridden) {
  std::string calls;
  Recorder recorder(calls);
  SerialPipe& pipe = recorder;
  pipe.open();
  pipe.setParams("line", SPEED, DATA_BITS, STOP_BITS, NO_PARITY);
  EXPECT_EQ(calls, "open setParams line ");
}

TEST(SerialPipe, SetParamsTakesTheSlotBehindTheBase) {
  EXPECT_EQ(slotOf(&SerialPipe::open), slotOf(&Xfile::open));
  EXPECT_EQ(slotOf(&SerialPipe::setParams), slotOf(&Xfile::isOpen) + 1);
}

}  // namespace
}  // namespace qx

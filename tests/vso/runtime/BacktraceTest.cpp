#include "vso/runtime/Backtrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/thread/exceptions.hpp>
#include <functional>
#include <iomanip>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/vso/runtime/ControlledSystem.h"
#include "tests/vso/runtime/Threads.h"
#include "tests/vso/runtime/WatchedBuffer.h"

namespace qx {
namespace {

using test::ControlledSystem;
using test::Elsewhere;
using test::WatchedBuffer;
using testing::AnyOf;
using testing::ElementsAre;
using testing::Eq;
using testing::StartsWith;

std::string dumpedTrace(const Backtrace& backtrace) {
  std::ostringstream out;
  backtrace.dumptrace(out);
  return out.str();
}

std::string dumpedSignal(const Backtrace& backtrace) {
  std::ostringstream out;
  backtrace.dumpSignal(out);
  return out.str();
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST(Backtrace, IsEmptyWhenNew) {
  const Backtrace backtrace;
  EXPECT_FALSE(backtrace.wasGrabbed());
  EXPECT_FALSE(backtrace.sigWasSet());
  EXPECT_FALSE(backtrace.sigIsFatal());
  EXPECT_EQ(backtrace.signal(), 0);
}

TEST(Backtrace, SaysThatThereIsNoSignalAndGoesOn) {
  EXPECT_EQ(dumpedSignal(Backtrace()), "No signal was setUnknown signal");
}

TEST(Backtrace, SaysThatThereIsNoTraceWithoutALineEnd) {
  EXPECT_EQ(dumpedTrace(Backtrace()), "No stack trace was grabbed");
}

TEST(Backtrace, CannotBeMadeWithoutAMutex) {
  ControlledSystem system;
  system.noMutex = true;
  EXPECT_THROW(Backtrace(), boost::thread_resource_error);
  system.noMutex = false;
  EXPECT_NO_THROW(Backtrace());
}

TEST(Backtrace, HasNoVirtualOperation) { EXPECT_FALSE(std::is_polymorphic_v<Backtrace>); }

struct SignalRow {
  int number;
  const char* text;
  bool fatal;
};

std::ostream& operator<<(std::ostream& out, const SignalRow& row) { return out << row.number << ' ' << row.text; }

class BacktraceSignal : public testing::TestWithParam<SignalRow> {};

TEST_P(BacktraceSignal, IsStoredAndNamed) {
  const SignalRow& row = GetParam();
  Backtrace backtrace;
  backtrace.setSig(row.number);
  EXPECT_TRUE(backtrace.sigWasSet());
  EXPECT_EQ(backtrace.signal(), row.number);
  EXPECT_EQ(backtrace.sigIsFatal(), row.fatal);
  EXPECT_EQ(dumpedSignal(backtrace), row.text);
  EXPECT_FALSE(backtrace.wasGrabbed());
}

INSTANTIATE_TEST_SUITE_P(WithText, BacktraceSignal,
                         testing::Values(SignalRow{3, "SIGQUIT", true}, SignalRow{4, "Illegal instruction", true},
                                         SignalRow{6, "Abort", false}, SignalRow{7, "Bus error", true},
                                         SignalRow{8, "Arithmetic point exception", true},
                                         SignalRow{11, "Memory violation", true}, SignalRow{15, "Terminate", false},
                                         SignalRow{24, "CPU resource limit exceeded", true},
                                         SignalRow{25, "File size resource limit exceeded", true}));

std::vector<SignalRow> otherSignals() {
  std::vector<SignalRow> rows;
  for (const int number : {std::numeric_limits<int>::min(),
                           -11,
                           -1,
                           0,
                           1,
                           2,
                           5,
                           9,
                           10,
                           12,
                           13,
                           14,
                           16,
                           17,
                           22,
                           23,
                           26,
                           27,
                           31,
                           34,
                           64,
                           256 + 11,
                           std::numeric_limits<int>::max()}) {
    rows.push_back({number, "Unknown signal", true});
  }
  return rows;
}

INSTANTIATE_TEST_SUITE_P(WithoutText, BacktraceSignal, testing::ValuesIn(otherSignals()));

TEST(Backtrace, KeepsTheFirstSignal) {
  Backtrace backtrace;
  backtrace.setSig(11);
  backtrace.setSig(15);
  EXPECT_EQ(backtrace.signal(), 11);
  EXPECT_TRUE(backtrace.sigIsFatal());
  EXPECT_EQ(dumpedSignal(backtrace), "Memory violation");
}

TEST(Backtrace, KeepsAFirstSignalThatIsNotFatal) {
  Backtrace backtrace;
  backtrace.setSig(15);
  backtrace.setSig(11);
  EXPECT_EQ(backtrace.signal(), 15);
  EXPECT_FALSE(backtrace.sigIsFatal());
  EXPECT_EQ(dumpedSignal(backtrace), "Terminate");
}

TEST(Backtrace, KeepsASignalOfZero) {
  Backtrace backtrace;
  backtrace.setSig(0);
  backtrace.setSig(11);
  EXPECT_EQ(backtrace.signal(), 0);
  EXPECT_TRUE(backtrace.sigWasSet());
}

TEST(Backtrace, WritesSignalAndTraceBehindWhatStandsInTheStream) {
  std::ostringstream out;
  out << "crash: ";
  Backtrace backtrace;
  backtrace.setSig(7);
  backtrace.dumpSignal(out);
  backtrace.dumptrace(out);
  EXPECT_EQ(out.str(), "crash: Bus errorNo stack trace was grabbed");
}

TEST(Backtrace, KeepsOneOfTheSignalsOfSeveralThreads) {
  Backtrace backtrace;
  test::onEachThread([&backtrace](int thread) {
    for (int repeats = 0; repeats < 1000; ++repeats) {
      backtrace.setSig(20 + thread);
      EXPECT_TRUE(backtrace.sigIsFatal());
      EXPECT_EQ(dumpedSignal(backtrace), "Unknown signal");
    }
  });
  EXPECT_THAT(backtrace.signal(), AnyOf(20, 21, 22, 23));
}

TEST(Backtrace, HoldsItsLockWhileItWritesTheSignal) {
  const std::function<void(Backtrace&)> operations[] = {
      [](Backtrace& backtrace) { backtrace.setSig(6); },     [](Backtrace& backtrace) { backtrace.signal(); },
      [](Backtrace& backtrace) { backtrace.sigWasSet(); },   [](Backtrace& backtrace) { backtrace.sigIsFatal(); },
      [](Backtrace& backtrace) { dumpedSignal(backtrace); }, [](Backtrace& backtrace) { backtrace.reset(); },
  };
  for (const auto& operation : operations) {
    const std::string number = std::to_string(&operation - operations);
    Backtrace backtrace;
    std::optional<Elsewhere<void>> other;
    // "No signal was set" is written first: the lock is to be held from there on.
    WatchedBuffer buffer([&] {
      other.emplace([&] { operation(backtrace); });
      EXPECT_TRUE(other->blocks()) << number;
    });
    std::ostream out(&buffer);
    backtrace.dumpSignal(out);
    EXPECT_EQ(buffer.str(), "No signal was setUnknown signal");
    ASSERT_TRUE(other) << number;
    EXPECT_TRUE(other->ends()) << number;
  }
}

TEST(Backtrace, TakesNoLockForTheTrace) {
  const auto backtrace = std::make_shared<Backtrace>();
  const std::function<void()> operations[] = {[backtrace] { backtrace->grab(); },
                                              [backtrace] { backtrace->wasGrabbed(); },
                                              [backtrace] { dumpedTrace(*backtrace); }};
  bool asked = false;
  WatchedBuffer buffer([&] {
    asked = true;
    for (const auto& operation : operations) {
      EXPECT_TRUE(Elsewhere(operation).ends()) << &operation - operations;
    }
  });
  std::ostream out(&buffer);
  backtrace->dumpSignal(out);  // under the lock
  EXPECT_TRUE(asked);
  EXPECT_TRUE(backtrace->wasGrabbed());
}

TEST(Backtrace, ForgetsSignalAndTraceAtReset) {
  Backtrace backtrace;
  backtrace.setSig(11);
  backtrace.grab();
  backtrace.reset();
  EXPECT_FALSE(backtrace.wasGrabbed());
  EXPECT_FALSE(backtrace.sigWasSet());
  EXPECT_FALSE(backtrace.sigIsFatal());
  EXPECT_EQ(backtrace.signal(), 0);
  EXPECT_EQ(dumpedSignal(backtrace), "No signal was setUnknown signal");
  EXPECT_EQ(dumpedTrace(backtrace), "No stack trace was grabbed");
}

TEST(Backtrace, StoresAndGrabsAgainAfterReset) {
  ControlledSystem system;
  system.stack = {"first", "second", "third"};
  Backtrace backtrace;
  backtrace.setSig(11);
  EXPECT_EQ(backtrace.grab(), 3U);
  backtrace.reset();
  backtrace.setSig(6);
  system.stack = {"other", "last"};
  EXPECT_EQ(backtrace.grab(), 2U);
  EXPECT_EQ(backtrace.signal(), 6);
  EXPECT_TRUE(backtrace.sigWasSet());
  EXPECT_EQ(dumpedSignal(backtrace), "Abort");
  EXPECT_EQ(dumpedTrace(backtrace), "Frame 00: other\nFrame 01: last\n");
}

TEST(Backtrace, ResetsWhatIsEmpty) {
  Backtrace backtrace;
  backtrace.reset();
  EXPECT_FALSE(backtrace.wasGrabbed());
  EXPECT_FALSE(backtrace.sigWasSet());
  backtrace.setSig(15);
  EXPECT_EQ(backtrace.signal(), 15);
}

TEST(Backtrace, GrabsWithoutASignalAndStoresASignalBesideATrace) {
  ControlledSystem system;
  system.stack = {"only"};
  Backtrace backtrace;
  EXPECT_EQ(backtrace.grab(), 1U);
  EXPECT_TRUE(backtrace.wasGrabbed());
  EXPECT_FALSE(backtrace.sigWasSet());
  backtrace.setSig(8);
  EXPECT_EQ(dumpedSignal(backtrace), "Arithmetic point exception");
  EXPECT_EQ(dumpedTrace(backtrace), "Frame 00: only\n");
}

TEST(Backtrace, KeepsTheFirstTrace) {
  ControlledSystem system;
  system.stack = {"first", "second"};
  Backtrace backtrace;
  EXPECT_EQ(backtrace.grab(), 2U);
  system.stack = {"other", "other", "other"};
  EXPECT_EQ(backtrace.grab(), 1U);
  EXPECT_EQ(backtrace.grab(), 1U);
  EXPECT_TRUE(backtrace.wasGrabbed());
  EXPECT_EQ(dumpedTrace(backtrace), "Frame 00: first\nFrame 01: second\n");
}

TEST(Backtrace, GrabsAgainIfTheSystemGaveNoFrame) {
  ControlledSystem system;
  system.stack.emplace();
  Backtrace backtrace;
  EXPECT_EQ(backtrace.grab(), 0U);
  EXPECT_FALSE(backtrace.wasGrabbed());
  EXPECT_EQ(dumpedTrace(backtrace), "No stack trace was grabbed");
  system.stack = {"now"};
  EXPECT_EQ(backtrace.grab(), 1U);
  EXPECT_EQ(dumpedTrace(backtrace), "Frame 00: now\n");
}

TEST(Backtrace, NumbersFramesWithTwoDigits) {
  ControlledSystem system;
  system.stack.emplace(13, "line");
  Backtrace backtrace;
  EXPECT_EQ(backtrace.grab(), 13U);
  EXPECT_EQ(dumpedTrace(backtrace),
            "Frame 00: line\nFrame 01: line\nFrame 02: line\nFrame 03: line\nFrame 04: line\nFrame 05: line\n"
            "Frame 06: line\nFrame 07: line\nFrame 08: line\nFrame 09: line\nFrame 10: line\nFrame 11: line\n"
            "Frame 12: line\n");
}

TEST(Backtrace, AsksForSixtyFramesOnce) {
  ControlledSystem system;
  system.stack.emplace(100, "line");
  Backtrace backtrace;
  system.framesAsked.clear();
  EXPECT_EQ(backtrace.grab(), 60U);
  EXPECT_EQ(backtrace.grab(), 1U);
  EXPECT_THAT(system.framesAsked, ElementsAre(60));
  const std::vector<std::string> lines = linesOf(dumpedTrace(backtrace));
  ASSERT_EQ(lines.size(), 60U);
  EXPECT_EQ(lines.back(), "Frame 59: line");
}

TEST(Backtrace, DemanglesALineThatIsAMangledNameAsAWhole) {
  ControlledSystem system;
  system.stack = {"_ZN2qx9Backtrace4grabEv",                  // a name
                  "/usr/bin/server(main+0x1f) [0x4010af]",    // a plain line
                  "server(_ZN2qx9Backtrace4grabEv+0x5) [7]",  // a name within a line
                  "_ZN2qx9Backtrace4grabEv+0x5",              // a name and more
                  "_Z4loadPKcj",                              // a name with parameters
                  "i",                                        // a type
                  "",                                         // no text
                  "%s%n"};                                    // no format
  Backtrace backtrace;
  EXPECT_EQ(backtrace.grab(), 8U);
  EXPECT_EQ(dumpedTrace(backtrace),
            "Frame 00: qx::Backtrace::grab()\n"
            "Frame 01: /usr/bin/server(main+0x1f) [0x4010af]\n"
            "Frame 02: server(_ZN2qx9Backtrace4grabEv+0x5) [7]\n"
            "Frame 03: _ZN2qx9Backtrace4grabEv+0x5\n"
            "Frame 04: load(char const*, unsigned int)\n"
            "Frame 05: int\n"
            "Frame 06: \n"
            "Frame 07: %s%n\n");
}

TEST(Backtrace, WritesNoFrameWithoutSymbols) {
  ControlledSystem system;
  system.stack = {"line"};
  Backtrace backtrace;
  backtrace.grab();
  system.noSymbols = true;
  EXPECT_EQ(dumpedTrace(backtrace), "");
  system.noSymbols = false;
  EXPECT_EQ(dumpedTrace(backtrace), "Frame 00: line\n");
}

TEST(Backtrace, NeitherObeysNorChangesTheFormatOfTheStream) {
  ControlledSystem system;
  system.stack.emplace(12, "line");
  Backtrace backtrace;
  backtrace.grab();
  std::ostringstream out;
  out << std::hex << std::showbase << std::showpos << std::left << std::setfill('*');
  const std::ios::fmtflags flags = out.flags();
  backtrace.dumptrace(out);
  EXPECT_EQ(out.str(), dumpedTrace(backtrace));
  EXPECT_THAT(linesOf(out.str()).back(), StartsWith("Frame 11: "));
  EXPECT_EQ(out.flags(), flags);
  EXPECT_EQ(out.fill(), '*');
}

/// Keeps what stands in it at each flush.
class FlushedText : public std::stringbuf {
 public:
  std::vector<std::string> flushed;

 protected:
  int sync() override {
    flushed.push_back(str());
    return 0;
  }
};

TEST(Backtrace, FlushesBehindEachFrame) {
  ControlledSystem system;
  system.stack = {"first", "second", "third"};
  Backtrace backtrace;
  backtrace.grab();
  FlushedText text;
  std::ostream out(&text);
  backtrace.dumptrace(out);
  EXPECT_THAT(text.flushed, ElementsAre("Frame 00: first\n", "Frame 00: first\nFrame 01: second\n",
                                        "Frame 00: first\nFrame 01: second\nFrame 02: third\n"));
}

/// Grabs from below `depth` calls. The empty statement keeps the compiler from making a loop of them.
[[gnu::noinline]] unsigned int grabBelow(unsigned int depth, Backtrace& backtrace) {
  const unsigned int count = depth == 0 ? backtrace.grab() : grabBelow(depth - 1, backtrace);
  asm volatile("" : : : "memory");
  return count;
}

TEST(Backtrace, KeepsSixtyFramesOfADeepStack) {
  Backtrace backtrace;
  EXPECT_EQ(grabBelow(80, backtrace), 60U);
  const std::vector<std::string> lines = linesOf(dumpedTrace(backtrace));
  ASSERT_EQ(lines.size(), 60U);
  EXPECT_THAT(lines[0], StartsWith("Frame 00: "));
  EXPECT_THAT(lines[7], StartsWith("Frame 07: "));
  EXPECT_THAT(lines[12], StartsWith("Frame 12: "));
  EXPECT_THAT(lines[59], StartsWith("Frame 59: "));
}

TEST(Backtrace, CountsTheCallsOfTheRealStack) {
  Backtrace shallow;
  Backtrace deep;
  const unsigned int few = grabBelow(2, shallow);
  const unsigned int more = grabBelow(12, deep);
  EXPECT_GT(few, 2U);
  EXPECT_EQ(more, few + 10);
  EXPECT_EQ(linesOf(dumpedTrace(deep)).size(), more);
  EXPECT_EQ(dumpedTrace(deep).back(), '\n');
}

TEST(Backtrace, GrabsARealStackOnce) {
  Backtrace backtrace;
  const unsigned int count = backtrace.grab();
  EXPECT_GT(count, 1U);
  const std::string trace = dumpedTrace(backtrace);
  EXPECT_EQ(grabBelow(20, backtrace), 1U);
  EXPECT_EQ(dumpedTrace(backtrace), trace);
}

}  // namespace
}  // namespace qx

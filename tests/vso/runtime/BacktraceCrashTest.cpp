// What a process that crashes tells about itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/ProgramRunner.h"

namespace qx {
namespace {

using test::Outcome;
using test::runProgram;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int REPORTED = 42;

/// The lines of the program's report: the count of frames that were grabbed, the signal's text, the frames.
struct Report {
  explicit Report(const std::string& text) {
    std::istringstream in(text);
    std::string line;
    std::getline(in, line);
    count = line;
    std::getline(in, signal);
    while (std::getline(in, line)) frames.push_back(line);
  }

  std::size_t frameWith(const std::string& text) const {
    std::size_t i = 0;
    while (i < frames.size() && frames[i].find(text) == std::string::npos) ++i;
    return i;
  }

  std::string count;
  std::string signal;
  std::vector<std::string> frames;
};

TEST(BacktraceCrash, IsReportedFromTheHandlerOfTheFault) {
  const Outcome outcome = runProgram({{"fault"}});
  EXPECT_EQ(outcome.status, REPORTED);
  EXPECT_EQ(outcome.err, "");
  const Report report(outcome.out);
  EXPECT_EQ(report.signal, "Memory violation");
  EXPECT_EQ(report.count, std::to_string(report.frames.size()));
  for (std::size_t i = 0; i < report.frames.size(); ++i) {
    EXPECT_THAT(report.frames[i], StartsWith("Frame " + std::string(i < 10 ? "0" : "") + std::to_string(i) + ": "));
  }
}

TEST(BacktraceCrash, NamesTheFunctionThatFaultedAndItsCallers) {
  const Report report(runProgram({{"fault"}}).out);
  const std::size_t handler = report.frameWith("(reportSignal+0");
  const std::size_t fault = report.frameWith("(writeToForbiddenPage+0");
  const std::size_t cause = report.frameWith("(main+0");
  EXPECT_LT(handler, fault);
  EXPECT_LT(fault, cause);
  EXPECT_LT(cause, report.frames.size());
}

TEST(BacktraceCrash, KeepsSixtyFramesOfADeepStack) {
  const Outcome outcome = runProgram({{"deep"}});
  EXPECT_EQ(outcome.status, REPORTED);
  const Report report(outcome.out);
  EXPECT_EQ(report.count, "60");
  EXPECT_EQ(report.signal, "Memory violation");
  ASSERT_EQ(report.frames.size(), 60U);
  EXPECT_LT(report.frameWith("(writeToForbiddenPage+0"), 60U);
  EXPECT_THAT(report.frames.back(), StartsWith("Frame 59: "));
  EXPECT_THAT(report.frames.back(), HasSubstr("(faultBelow+0"));
}

struct Raised {
  int number;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const Raised& row) { return out << row.text; }

class BacktraceRaisedSignal : public testing::TestWithParam<Raised> {};

TEST_P(BacktraceRaisedSignal, IsNamed) {
  const Outcome outcome = runProgram({{std::to_string(GetParam().number)}});
  EXPECT_EQ(outcome.status, REPORTED);
  const Report report(outcome.out);
  EXPECT_EQ(report.signal, GetParam().text);
  EXPECT_LT(report.frameWith("(main+0"), report.frames.size());
}

INSTANTIATE_TEST_SUITE_P(Signals, BacktraceRaisedSignal,
                         testing::Values(Raised{SIGQUIT, "SIGQUIT"}, Raised{SIGILL, "Illegal instruction"},
                                         Raised{SIGABRT, "Abort"}, Raised{SIGBUS, "Bus error"},
                                         Raised{SIGFPE, "Arithmetic point exception"},
                                         Raised{SIGSEGV, "Memory violation"}, Raised{SIGTERM, "Terminate"},
                                         Raised{SIGXCPU, "CPU resource limit exceeded"},
                                         Raised{SIGXFSZ, "File size resource limit exceeded"},
                                         Raised{SIGUSR1, "Unknown signal"}));

}  // namespace
}  // namespace qx

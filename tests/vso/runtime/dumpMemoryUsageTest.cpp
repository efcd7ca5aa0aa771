#include "vso/runtime/dumpMemoryUsage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>

#include "tests/vso/runtime/ControlledSystem.h"

namespace qx {
namespace {

using test::ControlledSystem;
using testing::ElementsAre;
using testing::MatchesRegex;

std::string dumped() {
  std::ostringstream out;
  dumpMemoryUsage(out);
  return out.str();
}

TEST(dumpMemoryUsage, TellsTheFiguresOfThisProcess) {
  EXPECT_THAT(dumped(), MatchesRegex("TOTAL PROGRAM SIZE: [1-9][0-9]* RESIDENT SET SIZE: [1-9][0-9]* SHARED PAGES: "
                                     "[0-9]+ TEXT: [1-9][0-9]* LIBRARY: [0-9]+ DATA: [1-9][0-9]*"));
}

TEST(dumpMemoryUsage, ReadsTheFileOfTheProcess) {
  ControlledSystem system;
  system.processId = 1234567;
  system.content = "1 2 3 4 5 6 7\n";
  dumped();
  EXPECT_THAT(system.opened, ElementsAre("/proc/1234567/statm"));
}

TEST(dumpMemoryUsage, TakesTheProcessIdAsUnsigned) {
  ControlledSystem system;
  system.processId = -1;
  system.content = "1 2 3 4 5 6 7\n";
  EXPECT_NE(dumped(), "");
  EXPECT_THAT(system.opened, ElementsAre("/proc/4294967295/statm"));
}

TEST(dumpMemoryUsage, WritesBehindWhatStandsInTheStream) {
  ControlledSystem system;
  system.content = "1 2 3 4 5 6 7\n";
  std::ostringstream out;
  out << "Memory: ";
  dumpMemoryUsage(out);
  out << '.';
  EXPECT_EQ(out.str(),
            "Memory: TOTAL PROGRAM SIZE: 1 RESIDENT SET SIZE: 2 SHARED PAGES: 3 TEXT: 4 LIBRARY: 5 DATA: 6.");
}

// A process that the system does not know has no file.
TEST(dumpMemoryUsage, WritesNothingWithoutAFile) {
  ControlledSystem system;
  system.processId = -1;
  EXPECT_EQ(dumped(), "");
  EXPECT_THAT(system.opened, ElementsAre("/proc/4294967295/statm"));
  system.processId.reset();
  EXPECT_NE(dumped(), "");
  system.noFile = true;
  EXPECT_EQ(dumped(), "");
}

struct Statm {
  const char* content;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const Statm& row) { return out << '"' << row.content << '"'; }

class dumpMemoryUsageOf : public testing::TestWithParam<Statm> {};

TEST_P(dumpMemoryUsageOf, WritesAllSixOrNothing) {
  ControlledSystem system;
  system.content = GetParam().content;
  EXPECT_EQ(dumped(), GetParam().text);
  EXPECT_EQ(system.opened.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Readable, dumpMemoryUsageOf,
    testing::Values(
        Statm{"2671 482 421 9 0 88 0\n",
              "TOTAL PROGRAM SIZE: 2671 RESIDENT SET SIZE: 482 SHARED PAGES: 421 TEXT: 9 LIBRARY: 0 DATA: 88"},
        // The seventh is not looked at.
        Statm{"11 22 33 44 55 66 x",
              "TOTAL PROGRAM SIZE: 11 RESIDENT SET SIZE: 22 SHARED PAGES: 33 TEXT: 44 LIBRARY: 55 DATA: 66"},
        Statm{"11 22 33 44 55 66",
              "TOTAL PROGRAM SIZE: 11 RESIDENT SET SIZE: 22 SHARED PAGES: 33 TEXT: 44 LIBRARY: 55 DATA: 66"},
        Statm{"0 0 0 0 0 0 0\n",
              "TOTAL PROGRAM SIZE: 0 RESIDENT SET SIZE: 0 SHARED PAGES: 0 TEXT: 0 LIBRARY: 0 DATA: 0"},
        Statm{"4294967295 4294967294 4294967293 2147483648 0 4294967292 0\n",
              "TOTAL PROGRAM SIZE: 4294967295 RESIDENT SET SIZE: 4294967294 SHARED PAGES: 4294967293 "
              "TEXT: 2147483648 LIBRARY: 0 DATA: 4294967292"}));

INSTANTIATE_TEST_SUITE_P(Unreadable, dumpMemoryUsageOf,
                         testing::Values(Statm{"", ""}, Statm{"\n", ""}, Statm{"11", ""}, Statm{"11 22 33 44 55\n", ""},
                                         Statm{"x 22 33 44 55 66 77\n", ""}, Statm{"11 22 x 44 55 66 77\n", ""},
                                         Statm{"11 22 33 44 55 x 77\n", ""}, Statm{"11,22,33,44,55,66,77\n", ""}));

}  // namespace
}  // namespace qx

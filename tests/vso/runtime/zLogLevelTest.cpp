#include "vso/runtime/zLogLevel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <log4cplus/logger.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <ostream>

#include "qxlogger/Logger.h"
#include "support/LogCapture.h"

namespace qx {
namespace {

using test::LogCapture;
using testing::ElementsAre;

int rootLevel() { return log4cplus::Logger::getRoot().getLogLevel(); }

/// Puts the level of the process back, and then that of the root logger.
class LevelKept {
 public:
  ~LevelKept() { zLogLevel(earlier_); }

 private:
  const LogCapture rootLevel_;
  const int earlier_ = zGetLogLevel();
};

struct Level {
  int set;
  int level;
};

std::ostream& operator<<(std::ostream& out, const Level& row) { return out << row.set; }

class zLogLevelOf : public testing::TestWithParam<Level> {};

TEST_P(zLogLevelOf, IsStoredAndSet) {
  const LevelKept kept;
  zLogLevel(GetParam().set);
  EXPECT_EQ(zGetLogLevel(), GetParam().level);
  EXPECT_EQ(rootLevel(), GetParam().level);
  EXPECT_EQ(Logger::logLxToLevel(GetParam().set), GetParam().level);
}

INSTANTIATE_TEST_SUITE_P(CountedFromTrace, zLogLevelOf,
                         testing::Values(Level{0, 0}, Level{1, 10000}, Level{2, 20000}, Level{3, 30000},
                                         Level{4, 40000}, Level{5, 50000}));
INSTANTIATE_TEST_SUITE_P(OfLog4cplus, zLogLevelOf,
                         testing::Values(Level{10000, 10000}, Level{20000, 20000}, Level{25000, 25000},
                                         Level{50000, 50000}));
INSTANTIATE_TEST_SUITE_P(OutsideOfTheScale, zLogLevelOf,
                         testing::Values(Level{-1, 0}, Level{60000, 50000}, Level{std::numeric_limits<int>::min(), 0},
                                         Level{std::numeric_limits<int>::max(), 50000}));

TEST(zLogLevel, SetsTheLevelAgainAndAgain) {
  const LevelKept kept;
  zLogLevel(4);
  EXPECT_EQ(zGetLogLevel(), 40000);
  zLogLevel(1);
  EXPECT_EQ(zGetLogLevel(), 10000);
  EXPECT_EQ(rootLevel(), 10000);
}

TEST(zLogLevel, DecidesWhatIsLogged) {
  const LevelKept kept;
  const LogCapture capture;
  zLogLevel(3);
  log4cplus::Logger root = log4cplus::Logger::getRoot();
  root.log(20000, "info");
  root.log(30000, "warn");
  EXPECT_THAT(capture.texts(), ElementsAre("warn"));
}

TEST(zLogLevel, LeavesTheStoredLevelWhenTheLoggerIsSetByOthers) {
  const LevelKept kept;
  zLogLevel(3);
  Logger::setLevel(10000);
  EXPECT_EQ(zGetLogLevel(), 30000);
  EXPECT_EQ(rootLevel(), 10000);
}

/// Says at the end of the process which level it began with.
[[noreturn]] void tellFirstLevel() {
  Logger::setLevel(40000);
  const int first = zGetLogLevel();
  static_cast<void>(std::fprintf(stderr, "first %d, of the logger %d;", first, rootLevel()));
  std::_Exit(0);
}

// In a process of its own: other tests of this program set the level too.
TEST(zLogLevelDeathTest, IsInfoAtFirstWhateverTheLoggerHas) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(tellFirstLevel(), testing::ExitedWithCode(0), "first 20000, of the logger 40000;");
}

}  // namespace
}  // namespace qx

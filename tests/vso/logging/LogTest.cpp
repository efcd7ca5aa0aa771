#include "vso/logging/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <string>
#include <vector>

#include "support/LogCapture.h"

namespace qx {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int TRACE = 0;
constexpr int DEBUG = 10000;
constexpr int INFO = 20000;
constexpr int WARN = 30000;
constexpr int ERROR = 40000;
constexpr int FATAL = 50000;
constexpr int OFF = 60000;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

/// Counts how often it is asked for.
class Evaluated {
 public:
  int operator()() { return ++count; }
  int count = 0;
};

void logsFromAKnownFunction(int level) { VSO_LOG(logger, level, "text"); }

TEST(Log, BuildsTheTextFromInsertions) {
  const test::LogCapture log;
  VSO_LOG(logger, WARN, "Class::function: length " << 7 << ", " << 'x' << std::hex << 255);
  EXPECT_THAT(log.texts(), ElementsAre("Class::function: length 7, xff"));
}

TEST(Log, StartsEachLineWithAFreshStream) {
  const test::LogCapture log;
  VSO_LOG(logger, WARN, std::hex << 255);
  VSO_LOG(logger, WARN, 255);
  EXPECT_THAT(log.texts(), ElementsAre("ff", "255"));
}

TEST(Log, CarriesEachLevel) {
  const test::LogCapture log;
  std::vector<int> levels;
  for (const int level : {TRACE, DEBUG, INFO, WARN, ERROR, FATAL}) VSO_LOG(logger, level, "text");
  for (const test::LogLine& line : log.lines()) levels.push_back(line.level);
  EXPECT_THAT(levels, ElementsAre(0, 10000, 20000, 30000, 40000, 50000));
}

TEST(Log, CarriesSourceLineAndSignature) {
  const test::LogCapture log;
  logsFromAKnownFunction(INFO);
  const int lineBefore = __LINE__;
  VSO_LOG(logger, INFO, "text");
  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].file, __FILE__);
  EXPECT_THAT(lines[0].file, testing::EndsWith("LogTest.cpp"));
  EXPECT_THAT(lines[0].function, HasSubstr("void "));
  EXPECT_THAT(lines[0].function, HasSubstr("logsFromAKnownFunction(int)"));
  EXPECT_LT(lines[0].line, lineBefore);
  EXPECT_EQ(lines[1].line, lineBefore + 1);
}

TEST(Log, EvaluatesTheTextOfAnEnabledLevelOnce) {
  const test::LogCapture log(WARN);
  Evaluated evaluated;
  VSO_LOG(logger, WARN, evaluated());
  EXPECT_EQ(evaluated.count, 1);
  EXPECT_THAT(log.texts(), ElementsAre("1"));
}

TEST(Log, EvaluatesNothingOfADisabledLevel) {
  const test::LogCapture log(WARN);
  Evaluated evaluated;
  VSO_LOG(logger, INFO, "text " << evaluated());
  VSO_LOG(logger, WARN - 1, evaluated());
  EXPECT_EQ(evaluated.count, 0);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(Log, IsOneStatement) {
  const test::LogCapture log;
  for (const bool first : {true, false}) {
    if (first)
      VSO_LOG(logger, INFO, "then");
    else
      VSO_LOG(logger, INFO, "else");
  }
  EXPECT_THAT(log.texts(), ElementsAre("then", "else"));
}

/// A process that has logged nothing yet and has no appender; puts everything back afterwards.
class LogBeforeTheFirstLine : public testing::Test {
 protected:
  static log4cplus::Logger root() { return log4cplus::Logger::getRoot(); }

 private:
  test::LogBeforeTheFirstLine before_;
};

TEST_F(LogBeforeTheFirstLine, SetsTheLoggerUp) {
  testing::internal::CaptureStderr();
  VSO_LOG(logger, WARN, "the first text");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("the first text"));
  EXPECT_TRUE(Logger::hasBeenInitialized);
  EXPECT_EQ(root().getAllAppenders().size(), 1U);
}

TEST_F(LogBeforeTheFirstLine, SetsTheLoggerUpBeforeTheLevelIsTested) {
  root().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  root().setLogLevel(OFF);
  Evaluated evaluated;
  VSO_LOG(logger, FATAL, evaluated());
  EXPECT_TRUE(Logger::hasBeenInitialized);
  EXPECT_EQ(evaluated.count, 0);
}

TEST_F(LogBeforeTheFirstLine, SetsTheLoggerUpOnce) {
  testing::internal::CaptureStderr();
  VSO_LOG(logger, WARN, "the first text");
  // A second set-up would give the root logger an appender again.
  root().removeAllAppenders();
  VSO_LOG(logger, WARN, "the second text");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::Not(HasSubstr("the second text")));
  EXPECT_THAT(root().getAllAppenders(), IsEmpty());
}

TEST_F(LogBeforeTheFirstLine, LeavesASetUpThatStandsAlone) {
  Logger::hasBeenInitialized = true;
  root().setLogLevel(OFF);
  VSO_LOG(logger, FATAL, "text");
  EXPECT_THAT(root().getAllAppenders(), IsEmpty());
  EXPECT_EQ(root().getLogLevel(), OFF);
}

}  // namespace
}  // namespace qx

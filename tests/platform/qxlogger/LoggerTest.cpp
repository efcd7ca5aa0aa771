#include "qxlogger/Logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>
#include <boost/thread/barrier.hpp>

#include "support/LogCapture.h"

namespace qx {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr int TRACE = 0;
constexpr int DEBUG = 10000;
constexpr int INFO = 20000;
constexpr int WARN = 30000;
constexpr int ERROR = 40000;

// NOLINTNEXTLINE(cert-dcl50-cpp): levelImpl is made for functions of this kind
void logAt(int level, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  Logger::levelImpl(log4cplus::Logger::getRoot(), level, format, args);
  va_end(args);
}

/// A process that has logged nothing yet; puts everything back afterwards.
class LoggerBeforeItsStart : public testing::Test {
 protected:
  LoggerBeforeItsStart() { root_.setLogLevel(log4cplus::DEBUG_LOG_LEVEL); }

  log4cplus::Logger& root() { return root_; }

 private:
  test::LogBeforeTheFirstLine before_;
  log4cplus::Logger root_ = log4cplus::Logger::getRoot();
};

TEST_F(LoggerBeforeItsStart, GetsOneAppenderAndTheInfoLevel) {
  Logger::initialize();
  EXPECT_TRUE(Logger::hasBeenInitialized);
  EXPECT_EQ(root().getAllAppenders().size(), 1U);
  EXPECT_EQ(root().getLogLevel(), INFO);
}

TEST_F(LoggerBeforeItsStart, IsStartedOnlyOnce) {
  Logger::initialize();
  Logger::setLevel(TRACE);
  Logger::initialize();
  EXPECT_EQ(root().getAllAppenders().size(), 1U);
  EXPECT_EQ(root().getLogLevel(), TRACE);
}

TEST_F(LoggerBeforeItsStart, WritesOneLineAnEventOnStandardError) {
  testing::internal::CaptureStderr();
  Logger::initialize();
  root().log(INFO, "the text", "some/folder/Source.cpp", 42, "void function()");
  root().log(DEBUG, "below the level");
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              MatchesRegex("[0-9-]{10} [0-9:.]{12} INFO  Source\\.cpp:42 the text\n"));
}

TEST_F(LoggerBeforeItsStart, LeavesAnAppenderAndItsLevelAlone) {
  const log4cplus::SharedAppenderPtr own(new log4cplus::NullAppender);
  root().addAppender(own);
  root().setLogLevel(ERROR);
  Logger::initialize();
  EXPECT_TRUE(Logger::hasBeenInitialized);
  EXPECT_THAT(root().getAllAppenders(), ElementsAre(own));
  EXPECT_EQ(root().getLogLevel(), ERROR);
}

TEST_F(LoggerBeforeItsStart, KeepsALevelThatWasSetAlready) {
  Logger::setLevel(TRACE);
  EXPECT_FALSE(Logger::hasBeenInitialized);
  Logger::initialize();
  EXPECT_EQ(root().getAllAppenders().size(), 1U);
  EXPECT_EQ(root().getLogLevel(), TRACE);

  // For that start, not for another.
  root().removeAllAppenders();
  Logger::hasBeenInitialized = false;
  Logger::initialize();
  EXPECT_EQ(root().getLogLevel(), INFO);
}

TEST_F(LoggerBeforeItsStart, GetsOneAppenderFromManyThreads) {
  constexpr unsigned int THREADS = 8;
  constexpr int ROUNDS = 25;
  for (int round = 0; round < ROUNDS; ++round) {
    root().removeAllAppenders();
    Logger::hasBeenInitialized = false;
    boost::barrier start(THREADS);
    std::vector<std::size_t> seen(THREADS, 0);
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    for (std::size_t& appenders : seen) {
      threads.emplace_back([&start, &appenders] {
        start.wait();
        Logger::initialize();
        appenders = log4cplus::Logger::getRoot().getAllAppenders().size();
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(seen, Each(1U));
    EXPECT_EQ(root().getAllAppenders().size(), 1U);
    EXPECT_TRUE(Logger::hasBeenInitialized);
  }
}

TEST_F(LoggerBeforeItsStart, IsStartedByTheFirstText) {
  testing::internal::CaptureStderr();
  logAt(WARN, "first %d", 1);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("first 1\n"));
  EXPECT_TRUE(Logger::hasBeenInitialized);
}

TEST(Logger, SetsTheRootLevel) {
  const test::LogCapture log;
  Logger::setLevel(ERROR);
  EXPECT_EQ(log4cplus::Logger::getRoot().getLogLevel(), ERROR);
}

TEST(Logger, TakesSmallNumbersAsStepsAndLargeOnesAsLevels) {
  EXPECT_EQ(Logger::logLxToLevel(0), 0);
  EXPECT_EQ(Logger::logLxToLevel(1), 10000);
  EXPECT_EQ(Logger::logLxToLevel(2), 20000);
  EXPECT_EQ(Logger::logLxToLevel(3), 30000);
  EXPECT_EQ(Logger::logLxToLevel(4), 40000);
  EXPECT_EQ(Logger::logLxToLevel(5), 50000);
  EXPECT_EQ(Logger::logLxToLevel(6), 6);
  EXPECT_EQ(Logger::logLxToLevel(12345), 12345);
}

TEST(Logger, KeepsLevelsWithinTraceAndFatal) {
  EXPECT_EQ(Logger::logLxToLevel(-1), 0);
  EXPECT_EQ(Logger::logLxToLevel(-2147483647 - 1), 0);
  EXPECT_EQ(Logger::logLxToLevel(50000), 50000);
  EXPECT_EQ(Logger::logLxToLevel(50001), 50000);
  EXPECT_EQ(Logger::logLxToLevel(2147483647), 50000);
}

TEST(Logger, FillsInTheFormat) {
  const test::LogCapture log;
  logAt(WARN, "%s is %d of %#x", "this", 7, 255U);
  ASSERT_THAT(log.texts(), ElementsAre("this is 7 of 0xff"));
  EXPECT_EQ(log.lines()[0].level, WARN);
}

TEST(Logger, IsSilentBelowTheLevel) {
  const test::LogCapture log(WARN);
  logAt(INFO, "info");
  logAt(WARN, "warn");
  EXPECT_THAT(log.texts(), ElementsAre("warn"));
}

TEST(Logger, DoesNotFormatBelowTheLevel) {
  const test::LogCapture log(WARN);
  int written = -1;
  // %n stores how much has been formatted so far.
  logAt(INFO, "info%n", &written);
  EXPECT_EQ(written, -1);
}

TEST(Logger, LogsTextsOfEveryLengthWhole) {
  const test::LogCapture log;
  for (const std::size_t length : {0, 1, 510, 511, 512, 513, 1023, 1024, 100'000}) {
    const std::string text(length, 'x');
    logAt(INFO, "%s", text.c_str());
    // Not EXPECT_EQ, which would print the long one twice.
    EXPECT_TRUE(log.texts().back() == text) << length;
  }
}

TEST(Logger, ReadsTheArgumentsOfALongTextAnew) {
  const test::LogCapture log;
  const std::string filler(100'000, 'x');
  logAt(INFO, "%d %s %d %.1f %s", 1, filler.c_str(), 2, 3.5, "end");
  EXPECT_TRUE(log.texts().back() == "1 " + filler + " 2 3.5 end");
}

TEST(Logger, LogsTheFormatWhereItCannotBeFilledIn) {
  const test::LogCapture log;
  // No such character exists, so there is no way to write it.
  const wchar_t unwritable[] = {static_cast<wchar_t>(0x7fffffff), 0};
  logAt(ERROR, "value %ls", unwritable);
  EXPECT_THAT(log.texts(), ElementsAre("value %ls"));
}

TEST(Logger, HasATextFromEachOfManyThreads) {
  constexpr unsigned int THREADS = 4;
  constexpr int TEXTS = 200;
  const test::LogCapture log;
  boost::barrier start(THREADS);
  std::vector<std::thread> threads;
  threads.reserve(THREADS);
  for (unsigned int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&start] {
      start.wait();
      for (int text = 0; text < TEXTS; ++text) logAt(INFO, "text %d", text);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(log.count(INFO), THREADS * TEXTS);
}

TEST(LogCapture, GivesEveryPartOfALine) {
  const test::LogCapture log;
  log4cplus::Logger::getRoot().log(WARN, "the text", "Source.cpp", 42, "void function()");
  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, WARN);
  EXPECT_EQ(lines[0].text, "the text");
  EXPECT_EQ(lines[0].file, "Source.cpp");
  EXPECT_EQ(lines[0].line, 42);
  EXPECT_EQ(lines[0].function, "void function()");
  EXPECT_EQ(testing::PrintToString(lines[0]), "30000 Source.cpp:42 \"the text\"");
}

TEST(LogCapture, CountsALevel) {
  const test::LogCapture log;
  logAt(WARN, "one");
  logAt(INFO, "two");
  logAt(WARN, "three");
  EXPECT_EQ(log.count(WARN), 2U);
  EXPECT_EQ(log.count(INFO), 1U);
  EXPECT_EQ(log.count(ERROR), 0U);
}

TEST(LogCapture, PutsAppendersAndLevelBack) {
  const test::LogCapture outer(ERROR);
  const auto before = log4cplus::Logger::getRoot().getAllAppenders();
  {
    const test::LogCapture inner;
    EXPECT_TRUE(Logger::hasBeenInitialized);
    logAt(TRACE, "for the inner one");
    EXPECT_THAT(inner.texts(), ElementsAre("for the inner one"));
  }
  EXPECT_EQ(log4cplus::Logger::getRoot().getAllAppenders(), before);
  EXPECT_EQ(log4cplus::Logger::getRoot().getLogLevel(), ERROR);
  EXPECT_THAT(outer.texts(), IsEmpty());
  logAt(ERROR, "for the outer one");
  EXPECT_THAT(outer.texts(), ElementsAre("for the outer one"));
}

TEST_F(LoggerBeforeItsStart, CountsAsNotStartedAgainAfterACapture) {
  {
    const test::LogCapture log;
    EXPECT_TRUE(Logger::hasBeenInitialized);
  }
  EXPECT_FALSE(Logger::hasBeenInitialized);
  EXPECT_THAT(root().getAllAppenders(), IsEmpty());
}

}  // namespace
}  // namespace qx

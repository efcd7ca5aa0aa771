#include "vso/runtime/OneShotLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <boost/thread/exceptions.hpp>
#include <functional>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/LogCapture.h"
#include "tests/vso/runtime/ControlledSystem.h"
#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

using test::ControlledSystem;
using test::Elsewhere;
using test::LogCapture;
using test::LogLine;
using test::onEachThread;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

constexpr int TRACE = 0;
constexpr int INFO = 20000;
constexpr int WARN = 30000;
constexpr int FATAL = 50000;

TEST(OneShotLog, WritesOnceForAKey) {
  const LogCapture capture;
  OneShotLog log;
  log.log("k", INFO, "x");
  log.log("k", INFO, "x");
  EXPECT_THAT(capture.texts(), ElementsAre("x"));
}

TEST(OneShotLog, WritesOnceWhateverElseIsToBeWritten) {
  const LogCapture capture;
  OneShotLog log;
  log.log("k", INFO, "x");
  log.log("k", FATAL, "y %d", 1);
  EXPECT_THAT(capture.texts(), ElementsAre("x"));
}

TEST(OneShotLog, WritesOneTextForEachOfItsKeys) {
  const LogCapture capture;
  OneShotLog log;
  for (int i = 0; i < 2; ++i) {
    for (const char* key : {"first", "second", "third"}) log.log(key, INFO, "x");
  }
  EXPECT_THAT(capture.texts(), ElementsAre("x", "x", "x"));
}

TEST(OneShotLog, WritesAgainAfterAResetOfTheKey) {
  const LogCapture capture;
  OneShotLog log;
  log.log("k", INFO, "x");
  log.reset("k");
  log.log("k", INFO, "y");
  log.log("k", INFO, "z");
  EXPECT_THAT(capture.texts(), ElementsAre("x", "y"));
}

TEST(OneShotLog, ForgetsThatKeyOnly) {
  const LogCapture capture;
  OneShotLog log;
  for (const char* key : {"a", "b", "c"}) log.log(key, INFO, "%s", key);
  log.reset("b");
  for (const char* key : {"a", "b", "c"}) log.log(key, INFO, "%s again", key);
  EXPECT_THAT(capture.texts(), ElementsAre("a", "b", "c", "b again"));
}

TEST(OneShotLog, ResetsAnUnknownKey) {
  const LogCapture capture;
  OneShotLog log;
  log.reset("unknown");
  log.log("k", INFO, "x");
  log.reset("unknown");
  log.reset("");
  log.log("k", INFO, "y");
  log.log("unknown", INFO, "z");
  EXPECT_THAT(capture.texts(), ElementsAre("x", "z"));
}

TEST(OneShotLog, ForgetsAllKeysWhenCleared) {
  const LogCapture capture;
  OneShotLog log;
  log.clear();
  for (int i = 0; i < 2; ++i) {
    for (const char* key : {"a", "b", "c"}) log.log(key, INFO, "%s%d", key, i);
    log.clear();
  }
  EXPECT_THAT(capture.texts(), ElementsAre("a0", "b0", "c0", "a1", "b1", "c1"));
}

TEST(OneShotLog, ComparesKeysByLengthAndBytes) {
  const std::vector<std::string> keys{"",
                                      "k",
                                      "K",
                                      "kk",
                                      " k",
                                      "k ",
                                      std::string(1, '\0'),
                                      std::string("k\0", 2),
                                      std::string("k\0a", 3),
                                      std::string("k\0b", 3),
                                      std::string(1000, 'k'),
                                      "\xC3\xA9",
                                      "\xC3"};
  const LogCapture capture;
  OneShotLog log;
  for (int round = 0; round < 2; ++round) {
    for (const std::string& key : keys) log.log(key, INFO, "x");
  }
  EXPECT_EQ(capture.texts(), std::vector<std::string>(keys.size(), "x"));
  log.reset(std::string("k\0a", 3));
  for (const std::string& key : keys) log.log(key, INFO, "again");
  EXPECT_EQ(capture.texts().size(), keys.size() + 1);
}

TEST(OneShotLog, KeepsItsOwnCopyOfAKey) {
  const LogCapture capture;
  OneShotLog log;
  std::string key = "k";
  log.log(key, INFO, "x");
  key = "l";
  log.log(key, INFO, "y");
  log.log("k", INFO, "z");
  EXPECT_THAT(capture.texts(), ElementsAre("x", "y"));
}

TEST(OneShotLog, LogsToTheRootLoggerAtTheLevelItIsTold) {
  const LogCapture capture;
  OneShotLog log;
  for (const int level : {TRACE, INFO, 20001, FATAL}) log.log(std::to_string(level), level, "x");
  std::vector<int> levels;
  for (const LogLine& line : capture.lines()) {
    levels.push_back(line.level);
    EXPECT_EQ(line.logger, "root");
  }
  EXPECT_THAT(levels, ElementsAre(0, 20000, 20001, 50000));
}

TEST(OneShotLog, RemembersAKeyWhoseLevelIsOff) {
  OneShotLog log;
  {
    const LogCapture capture(WARN);
    log.log("k", INFO, "x");
    EXPECT_THAT(capture.texts(), IsEmpty());
  }
  const LogCapture capture;
  log.log("k", INFO, "y");
  EXPECT_THAT(capture.texts(), IsEmpty());
  log.reset("k");
  log.log("k", INFO, "z");
  EXPECT_THAT(capture.texts(), ElementsAre("z"));
}

TEST(OneShotLog, FillsInWhatStandsBehindTheFormat) {
  const LogCapture capture;
  OneShotLog log;
  log.log("k", WARN, "%s %d %#x %c %.2f %llu %%", "text", -7, 255U, 'c', 2.5, 18446744073709551615ULL);
  log.log("l", WARN, "%s%s%s%s%s%s%s%s", "1", "2", "3", "4", "5", "6", "7", "8");
  EXPECT_THAT(capture.texts(), ElementsAre("text -7 0xff c 2.50 18446744073709551615 %", "12345678"));
}

TEST(OneShotLog, WritesALongTextWhole) {
  const std::string text(100'000, 'x');
  const LogCapture capture;
  OneShotLog log;
  log.log("k", INFO, "%s.%d", text.c_str(), 12);
  EXPECT_THAT(capture.texts(), ElementsAre(text + ".12"));
}

TEST(OneShotLog, WritesAnEmptyText) {
  const LogCapture capture;
  OneShotLog log;
  log.log("k", INFO, "%s", "");
  EXPECT_THAT(capture.texts(), ElementsAre(""));
}

TEST(OneShotLog, RemembersAKeyWhoseTextCannotBeFormatted) {
  const wchar_t noCharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
  OneShotLog log;
  {
    const LogCapture capture;
    log.log("k", INFO, "no %ls", noCharacter);
  }
  const LogCapture capture;
  log.log("k", INFO, "a text");
  EXPECT_THAT(capture.texts(), IsEmpty());
  log.reset("k");
  log.log("k", INFO, "a text");
  EXPECT_THAT(capture.texts(), ElementsAre("a text"));
}

TEST(OneShotLog, IsOneObject) {
  const LogCapture capture;
  const std::string key = "OneShotLog.IsOneObject";
  EXPECT_EQ(&OneShotLog::instance(), &OneShotLog::instance());
  OneShotLog::instance().reset(key);  // if the test is repeated
  OneShotLog::instance().log(key, INFO, "x");
  OneShotLog::instance().log(key, INFO, "y");
  EXPECT_THAT(capture.texts(), ElementsAre("x"));
}

TEST(OneShotLog, HasAVirtualDestructor) { EXPECT_TRUE(std::has_virtual_destructor_v<OneShotLog>); }

TEST(OneShotLog, CannotBeMadeWithoutAMutex) {
  ControlledSystem system;
  system.noMutex = true;
  EXPECT_THROW(OneShotLog(), boost::thread_resource_error);
  system.noMutex = false;
  EXPECT_NO_THROW(OneShotLog());
}

TEST(OneShotLog, WritesOnceForAKeyOfSeveralThreads) {
  constexpr int KEYS = 300;
  const LogCapture capture;
  OneShotLog log;
  onEachThread([&log](int) {
    for (int key = 0; key < KEYS; ++key) log.log(std::to_string(key), INFO, "text %d", key);
  });
  std::vector<std::string> expected;
  for (int key = 0; key < KEYS; ++key) expected.push_back("text " + std::to_string(key));
  EXPECT_THAT(capture.texts(), UnorderedElementsAreArray(expected));
}

TEST(OneShotLog, IsResetAndClearedBesideThreadsThatLog) {
  constexpr int ROUNDS = 300;
  const LogCapture capture;
  OneShotLog log;
  onEachThread([&log](int thread) {
    for (int i = 0; i < ROUNDS; ++i) {
      if (thread == 0) {
        log.reset("k");
      } else if (thread == 1) {
        log.clear();
      } else {
        log.log("k", INFO, "x");
      }
    }
  });
  EXPECT_GE(capture.texts().size(), 1U);
  EXPECT_LE(capture.texts().size(), static_cast<std::size_t>((test::THREADS - 2) * ROUNDS));
  log.log("k", INFO, "x");
  const std::size_t lines = capture.texts().size();
  log.log("k", INFO, "x");
  EXPECT_EQ(capture.texts().size(), lines);
}

/// Does something while a message is written.
class BusyAppender : public log4cplus::Appender {
 public:
  explicit BusyAppender(std::function<void()> work) : work_(std::move(work)) {}
  ~BusyAppender() override { destructorImpl(); }
  void close() override { closed = true; }

 protected:
  void append(const log4cplus::spi::InternalLoggingEvent&) override { work_(); }

 private:
  std::function<void()> work_;
};

TEST(OneShotLog, KnowsTheKeyWhileItsMessageIsWritten) {
  const LogCapture capture;
  OneShotLog log;
  int written = 0;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new BusyAppender([&] {
    if (++written < 5) log.log("k", INFO, "within");
  })));
  log.log("k", INFO, "x");
  EXPECT_EQ(written, 1);
  EXPECT_THAT(capture.texts(), ElementsAre("x"));
}

TEST(OneShotLog, LetsTheWritingThreadIn) {
  const LogCapture capture;
  OneShotLog log;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new BusyAppender([&] { log.reset("k"); })));
  log.log("k", INFO, "x");
  log.log("k", INFO, "y");
  EXPECT_THAT(capture.texts(), ElementsAre("x", "y"));
}

TEST(OneShotLog, KeepsOtherThreadsOutWhileAMessageIsWritten) {
  const LogCapture capture;
  OneShotLog log;
  // None of these writes, so it is the key's lock alone that can hold them.
  const std::function<void()> operations[] = {[&] { log.log("k", INFO, "y"); }, [&] { log.reset("unknown"); },
                                              [&] { log.clear(); }};
  std::vector<Elsewhere<void>> others;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new BusyAppender([&] {
    for (const auto& operation : operations) {
      others.emplace_back(operation);
      EXPECT_TRUE(others.back().blocks()) << others.size();
    }
  })));
  log.log("k", INFO, "x");
  EXPECT_EQ(others.size(), std::size(operations));
  for (const Elsewhere<void>& other : others) EXPECT_TRUE(other.ends());
}

}  // namespace
}  // namespace qx

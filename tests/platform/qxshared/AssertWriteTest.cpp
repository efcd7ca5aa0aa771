#include "qxshared/AssertWrite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include "qxshared/StackTrace.h"
#include "support/LogCapture.h"

namespace qx {
namespace {

using testing::HasSubstr;

TEST(AssertWrite, LogsSourceLineAndStackAtFatalLevel) {
  const test::LogCapture log;
  const StackTrace trace;
  AssertWrite("Frame", 217, trace);

  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, 50000);
  EXPECT_THAT(lines[0].text, HasSubstr("Frame, line 217"));
  std::ostringstream stack;
  stack << trace;
  EXPECT_THAT(lines[0].text, HasSubstr(stack.str()));
  EXPECT_EQ(lines[0].file, "Frame");
  EXPECT_EQ(lines[0].line, 217);
}

TEST(AssertWrite, SetsTheLoggerUpBeforeTheFirstLine) {
  const test::LogBeforeTheFirstLine before;
  testing::internal::CaptureStderr();
  AssertWrite("Frame", 217, StackTrace());
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Frame, line 217"));
}

TEST(AssertWrite, LogsToTheRootLogger) {
  const test::LogCapture log;
  AssertWrite("Frame", 217, StackTrace());
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].logger, "root");
}

TEST(AssertWrite, TakesANullSource) {
  const test::LogCapture log;
  AssertWrite(nullptr, 1, StackTrace());
  EXPECT_EQ(log.count(50000), 1U);
}

TEST(AssertWrite, IsSilentWhereFatalIsOff) {
  constexpr int OFF = 60000;
  const test::LogCapture log(OFF);
  AssertWrite("Frame", 1, StackTrace());
  EXPECT_TRUE(log.lines().empty());
}

TEST(AssertWrite, SwallowsAnAppendersException) {
  class Throwing : public log4cplus::Appender {
   public:
    ~Throwing() override { destructorImpl(); }
    void close() override { closed = true; }

   protected:
    void append(const log4cplus::spi::InternalLoggingEvent& /*event*/) override { throw std::runtime_error("full"); }
  };
  const test::LogCapture log;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new Throwing));
  AssertWrite("Frame", 1, StackTrace());
}

}  // namespace
}  // namespace qx

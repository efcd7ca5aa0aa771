#include "support/LogCapture.h"

#include <algorithm>
#include <mutex>
#include <ostream>
#include <utility>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include "qxlogger/Logger.h"

namespace qx::test {

namespace {

class MemoryAppender : public log4cplus::Appender {
 public:
  ~MemoryAppender() override { destructorImpl(); }

  void close() override { closed = true; }

  std::vector<LogLine> lines() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }

 protected:
  void append(const log4cplus::spi::InternalLoggingEvent& event) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back({event.getLogLevel(), event.getMessage(), event.getFile(), event.getLine(), event.getFunction(),
                      event.getLoggerName()});
  }

 private:
  mutable std::mutex mutex_;
  std::vector<LogLine> lines_;
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << line.level << ' ' << line.file << ':' << line.line << " \"" << line.text << '"';
}

struct LogCapture::State {
  log4cplus::helpers::SharedObjectPtr<MemoryAppender> appender{new MemoryAppender};
  log4cplus::Logger root = log4cplus::Logger::getRoot();
  log4cplus::SharedAppenderPtrList earlierAppenders = root.getAllAppenders();
  int earlierLevel = root.getLogLevel();
  bool wasInitialized = Logger::hasBeenInitialized;
};

LogCapture::LogCapture(int level) : state_(std::make_unique<State>()) {
  // The flag first: a log statement of another thread must not bring its own appender in between.
  Logger::hasBeenInitialized = true;
  state_->root.addAppender(log4cplus::SharedAppenderPtr(state_->appender.get()));
  for (const log4cplus::SharedAppenderPtr& earlier : state_->earlierAppenders) state_->root.removeAppender(earlier);
  state_->root.setLogLevel(level);
}

LogCapture::~LogCapture() {
  state_->root.removeAllAppenders();
  for (const log4cplus::SharedAppenderPtr& earlier : state_->earlierAppenders) state_->root.addAppender(earlier);
  state_->root.setLogLevel(state_->earlierLevel);
  Logger::hasBeenInitialized = state_->wasInitialized;
}

std::vector<LogLine> LogCapture::lines() const { return state_->appender->lines(); }

std::vector<std::string> LogCapture::texts() const {
  std::vector<std::string> texts;
  for (LogLine& line : lines()) texts.push_back(std::move(line.text));
  return texts;
}

std::size_t LogCapture::count(int level) const {
  const std::vector<LogLine> all = lines();
  const auto matches = [level](const LogLine& line) { return line.level == level; };
  return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), matches));
}

LogBeforeTheFirstLine::LogBeforeTheFirstLine() {
  log4cplus::Logger::getRoot().removeAllAppenders();
  Logger::hasBeenInitialized = false;
}

}  // namespace qx::test

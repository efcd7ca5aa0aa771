#include "qxlogger/Logger.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>

namespace qx {

std::atomic<bool> Logger::hasBeenInitialized{false};

namespace {

constexpr int LEVEL_STEP = 10000;
constexpr int HIGHEST_LX = 5;

// Guards what initialize and setLevel decide together.
std::mutex setUpMutex;
bool levelChosen = false;

log4cplus::SharedAppenderPtr standardErrorAppender() {
  constexpr bool TO_STANDARD_ERROR = true;
  constexpr bool FLUSH_EACH_EVENT = true;
  log4cplus::SharedAppenderPtr appender(new log4cplus::ConsoleAppender(TO_STANDARD_ERROR, FLUSH_EACH_EVENT));
  appender->setName("stderr");
  appender->setLayout(std::make_unique<log4cplus::PatternLayout>("%D{%Y-%m-%d %H:%M:%S.%q} %-5p %b:%L %m%n"));
  return appender;
}

[[gnu::format(printf, 1, 0)]] std::string formatted(const char* format, std::va_list args) {
  std::array<char, 512> brief;
  std::va_list first;
  va_copy(first, args);
  const int length = std::vsnprintf(brief.data(), brief.size(), format, first);
  va_end(first);
  if (length < 0) return format;
  const auto size = static_cast<std::size_t>(length);
  if (size < brief.size()) return std::string(brief.data(), size);
  std::string text(size, '\0');
  // The terminating zero goes where the string keeps its own.
  if (std::vsnprintf(text.data(), size + 1, format, args) < 0) return format;
  return text;
}

}  // namespace

void Logger::initialize() {
  const std::lock_guard<std::mutex> lock(setUpMutex);
  if (hasBeenInitialized) return;
  log4cplus::Logger root = log4cplus::Logger::getRoot();
  if (root.getAllAppenders().empty()) {
    root.addAppender(standardErrorAppender());
    if (!levelChosen) root.setLogLevel(log4cplus::INFO_LOG_LEVEL);
  }
  levelChosen = false;
  hasBeenInitialized = true;
}

void Logger::setLevel(int level) {
  const std::lock_guard<std::mutex> lock(setUpMutex);
  log4cplus::Logger::getRoot().setLogLevel(level);
  if (!hasBeenInitialized) levelChosen = true;
}

int Logger::logLxToLevel(int n) {
  const int level = n <= HIGHEST_LX ? std::max(n, 0) * LEVEL_STEP : n;
  return std::min(level, HIGHEST_LX * LEVEL_STEP);
}

void Logger::levelImpl(const log4cplus::Logger& logger, int level, const char* format, std::va_list args) {
  if (!hasBeenInitialized) initialize();
  if (!logger.isEnabledFor(level)) return;
  logger.forcedLog(level, formatted(format, args), __FILE__, __LINE__, __PRETTY_FUNCTION__);
}

}  // namespace qx

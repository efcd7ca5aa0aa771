#include "vso/runtime/OneShotLog.h"

#include <log4cplus/logger.h>

#include <algorithm>
#include <boost/thread/lock_guard.hpp>
#include <cstdarg>

#include "qxlogger/Logger.h"

namespace qx {

namespace {

using Lock = boost::lock_guard<boost::recursive_mutex>;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

}  // namespace

OneShotLog& OneShotLog::instance() {
  static OneShotLog log;
  return log;
}

void OneShotLog::log(const std::string& key, int level, const char* format, ...) {
  const Lock lock(mutex_);
  if (std::find(logged_.begin(), logged_.end(), key) != logged_.end()) return;
  logged_.push_back(key);
  std::va_list args;
  va_start(args, format);
  try {
    Logger::levelImpl(logger, level, format, args);
  } catch (...) {
    va_end(args);
    throw;
  }
  va_end(args);
}

void OneShotLog::reset(const std::string& key) {
  const Lock lock(mutex_);
  logged_.remove(key);
}

void OneShotLog::clear() {
  const Lock lock(mutex_);
  logged_.clear();
}

}  // namespace qx

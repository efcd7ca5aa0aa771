#include "qxnet/streamLog.h"

#include <log4cplus/logger.h>

#include "qxlogger/Logger.h"

namespace qx::net::stream::detail {

void log(int level, const std::string& text, const char* file, int line, const char* function) {
  if (!Logger::hasBeenInitialized) Logger::initialize();
  log4cplus::Logger::getRoot().log(level, text, file, line, function);
}

}  // namespace qx::net::stream::detail

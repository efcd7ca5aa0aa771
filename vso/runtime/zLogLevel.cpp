#include "vso/runtime/zLogLevel.h"

#include <log4cplus/loglevel.h>

#include "qxlogger/Logger.h"

namespace qx {

namespace {

int presentLevel = log4cplus::INFO_LOG_LEVEL;

}  // namespace

void zLogLevel(int level) {
  presentLevel = Logger::logLxToLevel(level);
  Logger::setLevel(presentLevel);
}

int zGetLogLevel() { return presentLevel; }

}  // namespace qx

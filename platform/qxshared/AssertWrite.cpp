#include "qxshared/AssertWrite.h"

#include <sstream>

#include <log4cplus/logger.h>

#include "qxlogger/Logger.h"
#include "qxshared/StackTrace.h"

namespace qx {

void AssertWrite(const char* source, int line, const StackTrace& trace) noexcept {
  try {
    if (!Logger::hasBeenInitialized) Logger::initialize();
    const log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (!root.isEnabledFor(log4cplus::FATAL_LOG_LEVEL)) return;
    const char* const name = source != nullptr ? source : "(unknown)";
    std::ostringstream text;
    text << "AssertWrite: assertion failed in " << name << ", line " << line << ", called from\n" << trace;
    root.forcedLog(log4cplus::FATAL_LOG_LEVEL, text.str(), name, line, __PRETTY_FUNCTION__);
  } catch (...) {  // An assertion reports; it must not be what ends the operation that it stands in.
  }
}

}  // namespace qx

// The one way in which the library writes a log line.
#pragma once

#include <log4cplus/logger.h>

#include <sstream>

#include "qxlogger/Logger.h"

namespace qx::detail {

/// True if `logger` lets lines of `level` through. The process's log set-up is made at the first call.
inline bool logs(const log4cplus::Logger& logger, int level) {
  if (!Logger::hasBeenInitialized) Logger::initialize();
  return logger.isEnabledFor(level);
}

}  // namespace qx::detail

/// Logs `text`, a chain of stream insertions, at `level` (a log4cplus number such as log4cplus::WARN_LOG_LEVEL) with
/// the place it stands at. A level that is not let through costs the test: nothing of `text` is evaluated.
///
///   VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "ZclMessage::isValidLength: Invalid ZCL packet length: " << length_);
///
/// A macro because only one can give the name of the source, the line and the signature of the function it stands in,
/// and leave its argument unevaluated.
#define VSO_LOG(logger, level, text)                                                      \
  do {                                                                                    \
    if (::qx::detail::logs(logger, level)) {                                              \
      std::ostringstream vsoLogText;                                                      \
      vsoLogText << text; /* NOLINT(bugprone-macro-parentheses): a chain of insertions */ \
      (logger).log(level, vsoLogText.str(), __FILE__, __LINE__, __PRETTY_FUNCTION__);     \
    }                                                                                     \
  } while (false)

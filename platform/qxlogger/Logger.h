// The process's log set-up in front of log4cplus.

#pragma once

#include <atomic>
#include <cstdarg>

namespace log4cplus {
class Logger;
}

namespace qx {

/// Sets the root logger of log4cplus up once, and logs printf-style text through it. Levels are log4cplus's numbers:
/// 0 trace, 10000 debug, 20000 info, 30000 warn, 40000 error, 50000 fatal.
///
/// A log statement reads `hasBeenInitialized` and calls `initialize` while it is false. Every operation may be called
/// from any thread.
class Logger {
 public:
  Logger() = delete;

  /// True once `initialize` has done its work. False from before any static object's constructor runs.
  static std::atomic<bool> hasBeenInitialized;

  /// Makes sure that what is logged is seen: a root logger without an appender gets one on standard error, one line an
  /// event, and the info level, unless `setLevel` has chosen another before. A root logger with an appender is left as
  /// it is. Later calls do nothing; a call that overlaps the first one returns when the appender is in place.
  static void initialize();

  /// Sets the root logger's level. A level set before `initialize` outlives it.
  static void setLevel(int level);

  /// The level that `n` stands for: 0 to 5 count the levels from trace to fatal, a larger number is a level already.
  /// The result lies within 0 to 50000.
  static int logLxToLevel(int n);

  /// Logs `format` filled in with `args`, whole whatever its length, if `logger` is enabled for `level`. Calls
  /// `initialize` first where that is still to be done. A text that cannot be formatted is logged as `format` stands.
  /// What `args` holds afterwards is indeterminate, as after `vprintf`.
  [[gnu::format(printf, 3, 0)]] static void levelImpl(const log4cplus::Logger& logger, int level, const char* format,
                                                      std::va_list args);
};

}  // namespace qx

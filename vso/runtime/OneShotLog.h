// Log messages that are written once only.
#pragma once

#include <boost/thread/recursive_mutex.hpp>
#include <list>
#include <string>

namespace qx {

/// Remembers which messages were logged, by a key for each. May be used from any thread.
class OneShotLog {
 public:
  /// The object that all share, made at first use and destroyed at process exit.
  static OneShotLog& instance();

  /// An object with keys of its own. Throws boost::thread_resource_error if its mutex cannot be made.
  OneShotLog() = default;
  OneShotLog(const OneShotLog&) = delete;
  OneShotLog& operator=(const OneShotLog&) = delete;
  virtual ~OneShotLog() = default;

  /// Logs `format`, filled in as by printf, at `level` (a number of log4cplus) if nothing was logged for `key` before.
  /// The key is remembered also if the level is off or the text cannot be formatted.
  [[gnu::format(printf, 4, 5)]] void log(const std::string& key, int level, const char* format, ...);

  /// Forgets `key`: its next message is written again. An unknown key is no error.
  void reset(const std::string& key);
  /// Forgets all keys.
  void clear();

 private:
  boost::recursive_mutex mutex_;
  // Oldest first.
  std::list<std::string> logged_;
};

}  // namespace qx

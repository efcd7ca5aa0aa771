// What a piece of code logs, for a test to look at.

#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace qx::test {

/// One logged event.
struct LogLine {
  int level;
  std::string text;
  std::string file;
  int line;
  std::string function;
  /// Name of the logger that was asked; events of others arrive at the root logger too.
  std::string logger;
};

/// For messages of failed tests: level, place and text.
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/// While it lives, what reaches the root logger is kept here and goes nowhere else, and the logger counts as
/// initialized. Afterwards the root logger has the appenders and the level that it had before. Any thread may log
/// meanwhile, but threads of a test should be joined before its capture ends. Captures nest.
class LogCapture {
 public:
  /// `level` is the root logger's level meanwhile; by default everything is captured.
  explicit LogCapture(int level = 0);
  ~LogCapture();

  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// The events so far, in the order in which they came.
  std::vector<LogLine> lines() const;
  /// Their texts alone.
  std::vector<std::string> texts() const;
  /// How many of them were logged at exactly `level`.
  std::size_t count(int level) const;

 private:
  struct State;

  std::unique_ptr<State> state_;
};

/// A process that has logged nothing yet: the root logger without appenders, at a level that lets everything through,
/// and not counted as initialized. Puts everything back at its end.
class LogBeforeTheFirstLine {
 public:
  LogBeforeTheFirstLine();

 private:
  LogCapture earlier_;  // keeps what was there, and restores it
};

}  // namespace qx::test

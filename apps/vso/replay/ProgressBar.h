// How far a long piece of work has come, for whoever waits at a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace qx::app {

/// Draws a line on standard error, if that is a terminal and the work has taken longer than a second; takes it away in
/// the end.
class ProgressBar {
 public:
  /// `total` steps are to be done.
  ProgressBar(std::string what, std::size_t total);
  ~ProgressBar();

  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// So many steps are done. Cheap: looks at the clock now and then only.
  void at(std::size_t done);
  /// Takes the line away, so that something else can be written. It comes back with the next step.
  void hide();

 private:
  using Clock = std::chrono::steady_clock;

  void draw(std::size_t done);

  std::string what_;
  std::size_t total_;
  bool isOnTerminal_;
  Clock::time_point next_;
  std::size_t nextStep_ = 0;
  bool isDrawn_ = false;
};

/// "replaying [#####-----]  50 %", in 60 columns.
std::string progressLine(const std::string& what, std::size_t done, std::size_t total);

}  // namespace qx::app

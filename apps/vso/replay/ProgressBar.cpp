#include "apps/vso/replay/ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace qx::app {

namespace {

constexpr std::chrono::seconds PATIENCE(1);
constexpr std::chrono::milliseconds REDRAW(100);
/// Steps between two looks at the clock.
constexpr std::size_t STRIDE = 64;

}  // namespace

ProgressBar::ProgressBar(std::string what, std::size_t total)
    : what_(std::move(what)),
      total_(total),
      isOnTerminal_(::isatty(STDERR_FILENO) == 1),
      next_(Clock::now() + PATIENCE) {}

ProgressBar::~ProgressBar() { hide(); }

void ProgressBar::at(std::size_t done) {
  if (!isOnTerminal_ || done < nextStep_) return;
  nextStep_ = done + STRIDE;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + REDRAW;
  draw(done);
}

void ProgressBar::hide() {
  if (!isDrawn_) return;
  std::cerr << "\r\x1b[K" << std::flush;
  isDrawn_ = false;
}

void ProgressBar::draw(std::size_t done) {
  std::cerr << '\r' << progressLine(what_, done, total_) << std::flush;
  isDrawn_ = true;
}

std::string progressLine(const std::string& what, std::size_t done, std::size_t total) {
  constexpr std::size_t WIDTH = 60;
  constexpr std::size_t AROUND = sizeof " [] 100 %" - 1;
  done = std::min(done, total);
  const std::size_t percent = total == 0 ? 100 : done * 100 / total;
  const std::size_t length = WIDTH - std::min(WIDTH, what.size() + AROUND);
  const std::size_t filled = total == 0 ? length : done * length / total;
  std::string number = std::to_string(percent);
  number.insert(0, 3 - number.size(), ' ');
  return what + " [" + std::string(filled, '#') + std::string(length - filled, '-') + "] " + number + " %";
}

}  // namespace qx::app

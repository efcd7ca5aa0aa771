#include "vso/runtime/timeText.h"

#include <sys/time.h>

#include <array>
#include <ctime>

namespace qx {

namespace {

constexpr std::size_t DIGITS = 2;

std::string padded(long number) {
  std::string text = std::to_string(number);
  if (text.size() < DIGITS) text.insert(0, DIGITS - text.size(), '0');
  return text;
}

}  // namespace

std::string getTimeMilli() {
  const std::time_t now = ::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  std::array<char, 64> text;
  const std::size_t size = std::strftime(text.data(), text.size(), "%X", &local);
  timeval precise{};
  ::gettimeofday(&precise, nullptr);
  return std::string(text.data(), size) + ':' + std::to_string(precise.tv_usec);
}

std::string timeTToStr(long seconds) {
  constexpr long SECONDS_PER_MINUTE = 60;
  constexpr long SECONDS_PER_HOUR = 3600;
  // The minutes are not reduced: those who read it expect them of the whole duration.
  return padded(seconds / SECONDS_PER_HOUR) + ':' + padded(seconds / SECONDS_PER_MINUTE) + ':' +
         padded(seconds % SECONDS_PER_MINUTE);
}

}  // namespace qx

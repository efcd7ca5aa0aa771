#include "vso/node/simpleTime.h"

#include <boost/date_time/posix_time/time_formatters.hpp>
#include <cstring>

namespace qx::detail {

namespace {

/// Writes `number` in as many decimal digits as `WIDTH` says, and returns the place behind them.
template <int WIDTH>
char* putDigits(char* to, long long number) {
  for (int i = WIDTH - 1; i >= 0; --i) {
    to[i] = static_cast<char>('0' + number % 10);
    number /= 10;
  }
  return to + WIDTH;
}

}  // namespace

std::string simpleTime(const boost::posix_time::ptime& time) {
  if (time.is_special()) return boost::posix_time::to_simple_string(time);
  constexpr char MONTHS[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
  const auto date = time.date().year_month_day();
  const auto day = time.time_of_day();
  char text[sizeof "2026-Nov-21 17:05:09.000123"];
  char* to = putDigits<4>(text, date.year);
  *to++ = '-';
  to = static_cast<char*>(std::memcpy(to, MONTHS + 3 * (date.month - 1), 3)) + 3;
  *to++ = '-';
  to = putDigits<2>(to, date.day);
  *to++ = ' ';
  to = putDigits<2>(to, day.hours());
  *to++ = ':';
  to = putDigits<2>(to, day.minutes());
  *to++ = ':';
  to = putDigits<2>(to, day.seconds());
  if (day.fractional_seconds() != 0) {
    *to++ = '.';
    to = putDigits<6>(to, day.fractional_seconds());
  }
  return {text, to};
}

}  // namespace qx::detail

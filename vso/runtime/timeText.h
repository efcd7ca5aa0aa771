// Times as text.
#pragma once

#include <string>

namespace qx {

/// The local time of day in the form of the locale, ":" and the microseconds within the second, not padded: 5000
/// microseconds behind 14:02:07 are "14:02:07:5000". (The name says milliseconds; its readers know.) The two come from
/// two reads of the clock.
std::string getTimeMilli();

/// A duration in hours, minutes and seconds with ":" between, each of two digits at least. The minutes are those of the
/// whole duration, so that 3661 gives "01:61:01". Division rounds toward zero, and a sign counts as a digit: -1 gives
/// "00:00:-1".
std::string timeTToStr(long seconds);

}  // namespace qx

// The system's clock in the hands of a test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qx::test {

/// In a program that has FakeClock.cpp, `time`, `gettimeofday` and `gmtime_r` go by this clock, which stands still
/// unless a test moves it. Any thread may read it.
class FakeClock {
 public:
  static constexpr std::int64_t SECOND = 1'000'000;

  /// Sets the clock to `microseconds` since 1970. What is below is as at first: no step, all convertible, no formats.
  static void begin(std::int64_t microseconds);
  static void advance(std::int64_t microseconds);

  /// Each reading is followed by a step of so many microseconds.
  static void stepAfterReading(std::int64_t microseconds);
  /// Whether a time can be converted to UTC.
  static void convertible(bool yes);

  /// The formats that `strftime` was given since `begin`.
  static std::vector<std::string> formats();
};

/// Each test begins at the same moment, and in the time zone that `zone` names, UTC unless it is set.
class ClockTest : public testing::Test {
 protected:
  /// 2023-11-14 22:13:20.123456 UTC
  static constexpr std::int64_t BEGIN = 1'700'000'000'123'456;

  ClockTest();
  ~ClockTest() override;

  static void zone(const char* name);
};

}  // namespace qx::test

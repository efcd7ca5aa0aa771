#include "tests/vso/runtime/FakeClock.h"

#include <sys/time.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <mutex>

#include "support/NextFunction.h"

namespace qx::test {

namespace {

std::atomic<std::int64_t> present{0};
std::atomic<std::int64_t> step{0};
std::atomic<bool> isConvertible{true};
std::mutex formatsMutex;
std::vector<std::string> formatsGiven;

}  // namespace

void FakeClock::begin(std::int64_t microseconds) {
  present = microseconds;
  step = 0;
  isConvertible = true;
  const std::lock_guard<std::mutex> lock(formatsMutex);
  formatsGiven.clear();
}

void FakeClock::advance(std::int64_t microseconds) { present += microseconds; }

void FakeClock::stepAfterReading(std::int64_t microseconds) { step = microseconds; }

void FakeClock::convertible(bool yes) { isConvertible = yes; }

std::vector<std::string> FakeClock::formats() {
  const std::lock_guard<std::mutex> lock(formatsMutex);
  return formatsGiven;
}

ClockTest::ClockTest() {
  zone("UTC0");
  FakeClock::begin(BEGIN);
}

ClockTest::~ClockTest() { zone("UTC0"); }

void ClockTest::zone(const char* name) {
  ::setenv("TZ", name, 1);
  ::tzset();
}

}  // namespace qx::test

// A program's own definitions go before those of the system's library.
extern "C" {

int gettimeofday(timeval* __restrict now, void* __restrict /*zone*/) noexcept {
  using qx::test::FakeClock;
  const std::int64_t microseconds = qx::test::present.fetch_add(qx::test::step);
  now->tv_sec = microseconds / FakeClock::SECOND;
  now->tv_usec = microseconds % FakeClock::SECOND;
  return 0;
}

std::time_t time(std::time_t* now) noexcept {
  const std::time_t seconds = qx::test::present.fetch_add(qx::test::step) / qx::test::FakeClock::SECOND;
  if (now != nullptr) *now = seconds;
  return seconds;
}

std::tm* gmtime_r(const std::time_t* __restrict seconds, std::tm* __restrict result) noexcept {
  if (!qx::test::isConvertible) return nullptr;
  static auto* const convert = qx::test::nextFunction<decltype(gmtime_r)>("gmtime_r");
  return convert(seconds, result);
}

std::size_t strftime(char* __restrict text, std::size_t size, const char* __restrict format,
                     const std::tm* __restrict time) noexcept {
  {
    const std::lock_guard<std::mutex> lock(qx::test::formatsMutex);
    qx::test::formatsGiven.emplace_back(format);
  }
  static auto* const write = qx::test::nextFunction<decltype(strftime)>("strftime");
  return write(text, size, format, time);
}
}

#include "vso/runtime/perfTime.h"

#include <log4cplus/logger.h>
#include <sys/time.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <map>

#include "vso/logging/Log.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

/// What is known of one point. Times in microseconds.
struct perf_time_struct {
  timeval start{};
  /// Samples since the last report.
  std::uint16_t count = 0;
  /// The count that must be exceeded before a report.
  std::uint16_t frequency = 0;
  std::uint32_t average = 0;
  std::uint32_t maximum = 0;
  /// 0 before the first sample.
  std::uint32_t minimum = 0;
};

using Points = std::map<std::string, boost::shared_ptr<perf_time_struct>>;

/// Never destroyed: a sample may end as late as the process does.
Points& points() {
  static auto* const byName = new Points;
  return *byName;
}

timeval presentTime() {
  timeval now{};
  ::gettimeofday(&now, nullptr);
  return now;
}

std::uint32_t microsecondsBetween(const timeval& start, const timeval& end) {
  constexpr std::uint32_t SECOND = 1'000'000;
  return static_cast<std::uint32_t>(end.tv_sec - start.tv_sec) * SECOND +
         static_cast<std::uint32_t>(end.tv_usec - start.tv_usec);
}

}  // namespace

void startPerfTime(const std::string& name, unsigned short frequency) {
  auto found = points().find(name);
  if (found == points().end()) {
    const auto point = boost::make_shared<perf_time_struct>();
    point->frequency = frequency;
    found = points().emplace(name, point).first;
  }
  found->second->start = presentTime();
}

void endPerfTime(const std::string& name) {
  const auto found = points().find(name);
  if (found == points().end()) return;
  perf_time_struct& point = *found->second;
  ++point.count;
  const std::uint32_t sample = microsecondsBetween(point.start, presentTime());
  if (sample > point.maximum) point.maximum = sample;
  if (point.minimum == 0 || sample < point.minimum) point.minimum = sample;
  point.average = point.count == 1 ? sample : (sample + point.average) >> 1;
  if (point.count <= point.frequency) return;
  const auto asSigned = [](std::uint32_t microseconds) { return static_cast<int>(microseconds); };
  VSO_LOG(logger, log4cplus::INFO_LOG_LEVEL,
          "PERF: " << name << " AVG: " << asSigned(point.average) << " MIN: " << asSigned(point.minimum)
                   << " MAX: " << asSigned(point.maximum));
  point.count = 0;
  point.average = 0;
  point.maximum = 0;
  point.minimum = 0;
}

}  // namespace qx

// A log statement whose level is not let through, beside the bare test of the level.
#include "vso/logging/Log.h"

#include <benchmark/benchmark.h>
#include <log4cplus/logger.h>

#include <sstream>

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

void DisabledLog_limit(benchmark::State& state) {
  qx::Logger::initialize();
  for (auto _ : state) {
    const bool enabled = logger.isEnabledFor(log4cplus::TRACE_LOG_LEVEL);
    benchmark::DoNotOptimize(enabled);
  }
}
BENCHMARK(DisabledLog_limit);

void DisabledLog(benchmark::State& state) {
  qx::Logger::initialize();
  int number = 42;
  for (auto _ : state) {
    benchmark::DoNotOptimize(number);
    VSO_LOG(logger, log4cplus::TRACE_LOG_LEVEL, "LogBench::disabledLog: A number: " << number);
  }
}
BENCHMARK(DisabledLog);

// What a statement costs that builds its text first.
void DisabledLog_textBuiltFirst(benchmark::State& state) {
  qx::Logger::initialize();
  int number = 42;
  for (auto _ : state) {
    benchmark::DoNotOptimize(number);
    std::ostringstream text;
    text << "LogBench::disabledLog: A number: " << number;
    const std::string built = text.str();
    if (logger.isEnabledFor(log4cplus::TRACE_LOG_LEVEL)) logger.log(log4cplus::TRACE_LOG_LEVEL, built);
  }
}
BENCHMARK(DisabledLog_textBuiltFirst);

}  // namespace

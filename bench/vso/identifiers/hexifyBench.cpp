// Hexadecimal text of 127 bytes, out and in, beside a table-driven loop into a reused string.
#include "vso/identifiers/hexify.h"

#include <benchmark/benchmark.h>

#include <array>
#include <string>

namespace {

constexpr unsigned int BYTES = 127;  // the payload of a full radio frame

std::array<unsigned char, BYTES> sampleBytes() {
  std::array<unsigned char, BYTES> bytes{};
  for (unsigned int i = 0; i < BYTES; ++i) bytes[i] = static_cast<unsigned char>(i * 37 + 11);
  return bytes;
}

struct Tables {
  char pairs[256][2];
  unsigned char nibbles[256];

  Tables() : pairs(), nibbles() {
    const char digits[] = "0123456789abcdef";
    for (unsigned int i = 0; i < 256; ++i) {
      pairs[i][0] = digits[i >> 4];
      pairs[i][1] = digits[i & 15];
    }
    for (unsigned char i = 0; i < 16; ++i) nibbles[static_cast<unsigned char>(digits[i])] = i;
  }
};
const Tables tables;

void Hexify127_limit(benchmark::State& state) {
  const auto bytes = sampleBytes();
  std::string text;
  for (auto _ : state) {
    text.resize(2 * BYTES);
    char* to = text.data();
    for (const unsigned char byte : bytes) {
      *to++ = tables.pairs[byte][0];
      *to++ = tables.pairs[byte][1];
    }
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Hexify127_limit);

void Hexify127(benchmark::State& state) {
  const auto bytes = sampleBytes();
  std::string text;
  for (auto _ : state) {
    qx::hexify(bytes.data(), BYTES, text, false);
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Hexify127);

void DeHexify127_limit(benchmark::State& state) {
  std::string text;
  qx::hexify(sampleBytes().data(), BYTES, text, false);
  unsigned char out[BYTES];
  for (auto _ : state) {
    for (unsigned int i = 0; i < BYTES; ++i) {
      out[i] = static_cast<unsigned char>(tables.nibbles[static_cast<unsigned char>(text[2 * i])] << 4 |
                                          tables.nibbles[static_cast<unsigned char>(text[2 * i + 1])]);
    }
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(DeHexify127_limit);

void DeHexify127(benchmark::State& state) {
  std::string text;
  qx::hexify(sampleBytes().data(), BYTES, text, false);
  unsigned char out[BYTES];
  for (auto _ : state) {
    qx::deHexify(text, out, BYTES);
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(DeHexify127);

}  // namespace

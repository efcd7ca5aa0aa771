// Headers, commands and single readings, beside the same work on bare bytes.
#include "vso/zcl/ZclMessage.h"

#include <benchmark/benchmark.h>

#include <cstring>

#include "HandFrame.h"
#include "vso/identifiers/U255Buff.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"

namespace {

using qx::bench::HandFrame;

// Read attributes response: attribute 0 succeeded, boolean, on.
constexpr unsigned char ON_RESPONSE[] = {0x18, 0x05, 0x01, 0x00, 0x00, 0x00, 0x10, 0x01};

unsigned char handSequence = 0;

/// What the seven header readers give.
struct Header {
  bool entireProfile;
  bool fromServer;
  bool responseDisabled;
  bool manufacturerSpecific;
  unsigned char sequence;
  unsigned char command;
  unsigned short manufacturer;
};

void HeaderReads_limit(benchmark::State& state) {
  HandFrame frame;
  std::memcpy(frame.bytes, ON_RESPONSE, sizeof ON_RESPONSE);
  frame.length = sizeof ON_RESPONSE;
  for (auto _ : state) {
    benchmark::DoNotOptimize(frame);
    const unsigned char* bytes = frame.bytes;
    const bool manufacturerSpecific = (bytes[0] & 0x04) != 0;
    const unsigned int at = manufacturerSpecific ? 3 : 1;
    Header header{(bytes[0] & 0x03) == 0,
                  (bytes[0] & 0x08) != 0,
                  (bytes[0] & 0x10) != 0,
                  manufacturerSpecific,
                  bytes[at],
                  bytes[at + 1],
                  static_cast<unsigned short>(manufacturerSpecific ? bytes[1] | bytes[2] << 8 : 0)};
    benchmark::DoNotOptimize(header);
  }
}
BENCHMARK(HeaderReads_limit);

Header headerOf(const qx::ZclMessage& frame) {
  return {frame.affectsEntireProfile(),   frame.isCommandFromServer(),       frame.defaultResponseDisabled(),
          frame.isManufacturerSpecific(), frame.transactionSequenceNumber(), frame.commandIdentifier(),
          frame.manufacturerCode()};
}

void HeaderReads(benchmark::State& state) {
  qx::ZclMessage frame(qx::U255Buff<unsigned char>(ON_RESPONSE, sizeof ON_RESPONSE));
  for (auto _ : state) {
    benchmark::DoNotOptimize(frame);
    Header header{frame.affectsEntireProfile(),   frame.isCommandFromServer(),       frame.defaultResponseDisabled(),
                  frame.isManufacturerSpecific(), frame.transactionSequenceNumber(), frame.commandIdentifier(),
                  frame.manufacturerCode()};
    benchmark::DoNotOptimize(header);
  }
}
BENCHMARK(HeaderReads);

// The same through a reference whose class the compiler does not know: every reader, and its test of the length, is a
// virtual call.
void HeaderReads_throughReference(benchmark::State& state) {
  const qx::ZclOnOff frame(qx::U255Buff<unsigned char>(ON_RESPONSE, sizeof ON_RESPONSE));
  const qx::ZclMessage* base = &frame;
  for (auto _ : state) {
    benchmark::DoNotOptimize(base);
    Header header = headerOf(*base);
    benchmark::DoNotOptimize(header);
  }
}
BENCHMARK(HeaderReads_throughReference);

void OnOfReadResponse_limit(benchmark::State& state) {
  const qx::U255Buff<unsigned char> received(ON_RESPONSE, sizeof ON_RESPONSE);
  for (auto _ : state) {
    HandFrame frame;
    std::memcpy(frame.bytes, received.contents, received.length_);
    frame.length = received.length_;
    bool on = false;
    if (frame.bytes[2] == 1 && frame.length >= 8 && frame.bytes[3] == 0 && frame.bytes[4] == 0 && frame.bytes[5] == 0) {
      on = frame.bytes[7] == 1;
    }
    benchmark::DoNotOptimize(on);
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(OnOfReadResponse_limit);

void OnOfReadResponse(benchmark::State& state) {
  const qx::U255Buff<unsigned char> received(ON_RESPONSE, sizeof ON_RESPONSE);
  for (auto _ : state) {
    const qx::ZclOnOff frame(received);
    bool on = frame.on().value;
    benchmark::DoNotOptimize(on);
  }
}
BENCHMARK(OnOfReadResponse);

void BuildToggle_limit(benchmark::State& state) {
  for (auto _ : state) {
    HandFrame frame;
    frame.bytes[0] = 0x01;
    frame.bytes[1] = handSequence++;
    frame.bytes[2] = 0x02;
    frame.length = 3;
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(BuildToggle_limit);

void BuildToggle(benchmark::State& state) {
  for (auto _ : state) {
    qx::ZclOnOff frame;
    frame.setToggle();
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(BuildToggle);

void BuildMoveToLevel_limit(benchmark::State& state) {
  for (auto _ : state) {
    HandFrame frame;
    frame.bytes[0] = 0x01;
    frame.bytes[1] = handSequence++;
    frame.bytes[2] = 0x00;
    frame.bytes[3] = 0x80;
    frame.bytes[4] = 0x0A;
    frame.bytes[5] = 0x00;
    frame.length = 6;
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(BuildMoveToLevel_limit);

void BuildMoveToLevel(benchmark::State& state) {
  for (auto _ : state) {
    qx::ZclLevelControl frame;
    frame.moveToLevel(0x80, 10);
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(BuildMoveToLevel);

}  // namespace

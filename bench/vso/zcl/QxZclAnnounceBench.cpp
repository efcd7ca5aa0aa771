// All readers of a full announcement, beside one walk by hand for each.
#include "vso/zcl/QxZclAnnounce.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <initializer_list>
#include <list>
#include <string>

#include "vso/identifiers/U255Buff.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/zcl/ZclType.h"

namespace {

using Frame = qx::U255Buff<unsigned char>;

class FrameMaker {
 public:
  void add(std::initializer_list<unsigned char> bytes) {
    for (const unsigned char byte : bytes) frame_.contents[frame_.length_++] = byte;
  }
  void add(const char* text) {
    add({static_cast<unsigned char>(std::strlen(text))});
    for (; *text != '\0'; ++text) add({static_cast<unsigned char>(*text)});
  }
  const Frame& frame() const { return frame_; }

 private:
  Frame frame_;
};

/// A report of all 16 attributes, in the order of their ids, as devices send it.
Frame fullAnnounce() {
  FrameMaker out;
  out.add({0x18, 0x05, 0x0A});
  out.add({0x00, 0x00, 0x20, 0x02});
  out.add({0x01, 0x00, 0x21, 0x2C, 0x01});
  out.add({0x02, 0x00, 0x21, 0x58, 0x02});
  out.add({0x03, 0x00, 0x20, 0x02});
  out.add({0x04, 0x00, 0x42});
  out.add("2.14.7");
  out.add({0x05, 0x00, 0x20, 0x03});
  out.add({0x06, 0x00, 0x21, 0x11, 0x00});
  out.add({0x07, 0x00, 0x42});
  out.add("dimmer 2 wire");
  out.add({0x0B, 0x00, 0x21, 0x0A, 0x00});
  out.add({0x0C, 0x00, 0x20, 0x0F});
  out.add({0x0F, 0x00, 0x21, 0x0A, 0x00});
  out.add({0x12, 0x00, 0x41, 0x08, 0x00, 0x01, 0x12, 0x34, 0xAB, 0xCD, 0xFF, 0xFE});
  out.add({0x13, 0x00, 0x28, 0xC5});
  out.add({0x14, 0x00, 0x20, 0xC8});
  out.add({0x15, 0x00, 0x28, 0x64});
  out.add({0x16, 0x00, 0x20, 0x04});
  return out.frame();
}

/// The first byte of the value of an attribute, its length byte if it is a string; null if it is not there.
const unsigned char* findByHand(const Frame& frame, unsigned int id) {
  unsigned int at = 3;
  while (at + 3 <= frame.length_) {
    const unsigned char* record = frame.contents + at;
    if ((record[0] | record[1] << 8) == static_cast<int>(id)) return record + 3;
    const qx::detail::ZclTypeRow& type = qx::detail::zclType(record[2]);
    at += 3 + type.size;
    if (type.isString()) at += record[3];
  }
  return nullptr;
}

unsigned int byteByHand(const Frame& frame, unsigned int id) {
  const unsigned char* const value = findByHand(frame, id);
  return value != nullptr ? *value : 0;
}

unsigned int wordByHand(const Frame& frame, unsigned int id) {
  const unsigned char* const value = findByHand(frame, id);
  return value != nullptr ? static_cast<unsigned int>(value[0] | value[1] << 8) : 0;
}

std::string textByHand(const Frame& frame, unsigned int id) {
  const unsigned char* const value = findByHand(frame, id);
  if (value == nullptr) return {};
  const char* const text = reinterpret_cast<const char*>(value + 1);
  return {text, ::strnlen(text, *value)};
}

void AnnounceReaders_limit(benchmark::State& state) {
  const Frame frame = fullAnnounce();
  std::list<qx::AccessPoint> accessPoints;
  for (auto _ : state) {
    benchmark::DoNotOptimize(frame);
    unsigned int sum = 0;
    for (const unsigned int id : {0x00, 0x03, 0x05, 0x0C, 0x13, 0x14, 0x15, 0x16}) sum += byteByHand(frame, id);
    for (const unsigned int id : {0x01, 0x02, 0x06, 0x0B, 0x0F}) sum += wordByHand(frame, id);
    std::string firmware = textByHand(frame, 0x04);
    std::string product = textByHand(frame, 0x07);
    accessPoints.clear();
    if (const unsigned char* const table = findByHand(frame, 0x12)) {
      for (unsigned int i = 0; i + 1 < *table; i += 2) {
        accessPoints.emplace_back(static_cast<unsigned short>(table[1 + i] << 8 | table[2 + i]),
                                  static_cast<unsigned char>(i / 2));
      }
    }
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(firmware);
    benchmark::DoNotOptimize(product);
    benchmark::DoNotOptimize(accessPoints);
  }
}
BENCHMARK(AnnounceReaders_limit);

void AnnounceReaders(benchmark::State& state) {
  const qx::QxZclAnnounce frame(fullAnnounce());
  std::list<qx::AccessPoint> accessPoints;
  for (auto _ : state) {
    benchmark::DoNotOptimize(frame);
    unsigned int sum = frame.deviceType() + frame.numZaps() + frame.reflashVersion() + frame.channel() +
                       static_cast<unsigned int>(frame.nodeRssi()) + frame.nodeLqi() +
                       static_cast<unsigned int>(frame.batteryLevel()) + frame.nodeRadioBars();
    sum += frame.announceWindow() + frame.mtorrPeriod() + frame.bootCount() + frame.apPollInterval() +
           frame.parentPollInterval();
    std::string firmware = frame.firmwareVersion();
    std::string product = frame.productString();
    frame.apRouteTable(accessPoints);
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(firmware);
    benchmark::DoNotOptimize(product);
    benchmark::DoNotOptimize(accessPoints);
  }
}
BENCHMARK(AnnounceReaders);

}  // namespace

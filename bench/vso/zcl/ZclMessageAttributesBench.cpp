// A report of 16 attributes of mixed types, beside hand-written walks.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclType.h"

namespace {

using qx::ReportAttributeRecord;
using qx::ZclMessage;
namespace ZclType = qx::ZclType;

ReportAttributeRecord number(unsigned short id, unsigned char type) {
  ReportAttributeRecord record;
  record.id_ = id;
  record.type_ = type;
  for (unsigned char i = 0; i < 8; ++i) record.data_[i] = static_cast<unsigned char>(0x11 * (i + 1));
  return record;
}

ReportAttributeRecord text(unsigned short id, unsigned char type, const std::string& characters) {
  ReportAttributeRecord record;
  record.id_ = id;
  record.type_ = type;
  ZclMessage::toData(record.data_, characters);
  return record;
}

/// 16 attributes; the last one is the transition time of Level Control.
qx::ZclLevelControl mixedReport() {
  qx::ZclLevelControl frame(10);
  frame.setReportAttributes({number(0x0100, ZclType::BOOLEAN), number(0x0101, ZclType::UINT8),
                             number(0x0102, ZclType::UINT16), text(0x0103, ZclType::CHARACTER_STRING, "hall lamp"),
                             number(0x0104, ZclType::UINT32), number(0x0105, ZclType::ENUM8),
                             number(0x0106, ZclType::BITMAP16), number(0x0107, ZclType::IEEE_ADDRESS),
                             text(0x0108, ZclType::OCTET_STRING, "\x01\x02\x03\x04"), number(0x0109, ZclType::INT16),
                             number(0x010A, ZclType::UINT24), number(0x010B, ZclType::SINGLE_FLOAT),
                             text(0x010C, ZclType::CHARACTER_STRING, "1.2.3"), number(0x010D, ZclType::DATA8),
                             number(0x010E, ZclType::INT8), number(0x0010, ZclType::UINT16)});
  return frame;
}

/// Bytes of a value in a frame, for the types that occur in the report.
unsigned int handSize(unsigned char type, const unsigned char* value) {
  switch (type) {
    case 0x08:
    case 0x10:
    case 0x18:
    case 0x20:
    case 0x28:
    case 0x30:
      return 1;
    case 0x09:
    case 0x19:
    case 0x21:
    case 0x29:
    case 0x31:
      return 2;
    case 0x22:
      return 3;
    case 0x23:
    case 0x39:
      return 4;
    case 0xF0:
      return 8;
    case 0x41:
    case 0x42:
      return 1U + value[0];
    default:
      return 0;
  }
}

void handFill(const unsigned char* frame, unsigned int length, std::vector<ReportAttributeRecord>& records) {
  const char digits[] = "0123456789abcdef";
  records.clear();
  for (unsigned int at = 3; at + 3 <= length;) {
    ReportAttributeRecord& record = records.emplace_back();
    record.id_ = static_cast<unsigned short>(frame[at] | frame[at + 1] << 8);
    record.type_ = frame[at + 2];
    at += 3;
    const unsigned int size = handSize(record.type_, frame + at);
    if (at + size > length) return;
    if (record.type_ == 0x42) {
      std::memcpy(record.data_.data(), frame + at + 1, std::min(size - 1, 200U));
    } else if (record.type_ == 0x41) {
      unsigned char* to = record.data_.data();
      for (unsigned int i = 1; i < size && i <= 100; ++i) {
        *to++ = static_cast<unsigned char>(digits[frame[at + i] >> 4]);
        *to++ = static_cast<unsigned char>(digits[frame[at + i] & 15]);
      }
    } else {
      std::memcpy(record.data_.data(), frame + at, size);
    }
    at += size;
  }
}

unsigned short handTransitionTime(const unsigned char* frame, unsigned int length) {
  for (unsigned int at = 3; at + 3 <= length;) {
    const unsigned int id = frame[at] | frame[at + 1] << 8;
    const unsigned char type = frame[at + 2];
    at += 3;
    const unsigned int size = handSize(type, frame + at);
    if (at + size > length) return 0;
    if (id == 0x0010) return static_cast<unsigned short>(frame[at] | frame[at + 1] << 8);
    at += size;
  }
  return 0;
}

void Report16_limit(benchmark::State& state) {
  const qx::ZclLevelControl frame = mixedReport();
  const unsigned char* bytes = frame.contents;
  std::vector<ReportAttributeRecord> records;
  for (auto _ : state) {
    benchmark::DoNotOptimize(bytes);
    handFill(bytes, frame.length_, records);
    benchmark::DoNotOptimize(records.data());
    benchmark::ClobberMemory();
  }
  if (records.size() != 16) std::abort();
}
BENCHMARK(Report16_limit);

void Report16(benchmark::State& state) {
  const qx::ZclLevelControl frame = mixedReport();
  std::vector<ReportAttributeRecord> records;
  for (auto _ : state) {
    frame.getReportAttributes(records);
    benchmark::DoNotOptimize(records.data());
    benchmark::ClobberMemory();
  }
  if (records.size() != 16) std::abort();
}
BENCHMARK(Report16);

void Report16_freshVector(benchmark::State& state) {
  const qx::ZclLevelControl frame = mixedReport();
  for (auto _ : state) {
    std::vector<ReportAttributeRecord> records;
    frame.getReportAttributes(records);
    benchmark::DoNotOptimize(records.data());
  }
}
BENCHMARK(Report16_freshVector);

void ReadingOutOf16_limit(benchmark::State& state) {
  const qx::ZclLevelControl frame = mixedReport();
  const unsigned char* bytes = frame.contents;
  unsigned short time = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(bytes);
    time = handTransitionTime(bytes, frame.length_);
    benchmark::DoNotOptimize(time);
  }
  if (time != 0x2211) std::abort();
}
BENCHMARK(ReadingOutOf16_limit);

void ReadingOutOf16(benchmark::State& state) {
  const qx::ZclLevelControl frame = mixedReport();
  qx::ZclReading<unsigned short> time;
  for (auto _ : state) {
    time = frame.transitionTime();
    benchmark::DoNotOptimize(time);
  }
  if (time.value != 0x2211 || time.state != 1) std::abort();
}
BENCHMARK(ReadingOutOf16);

}  // namespace

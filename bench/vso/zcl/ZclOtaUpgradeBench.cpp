// A block of an image asked for and answered, beside the same work on bare bytes.
#include "vso/zcl/ZclOtaUpgrade.h"

#include <benchmark/benchmark.h>

#include <cstring>

#include "HandFrame.h"
#include "vso/identifiers/U255Buff.h"

namespace {

using qx::bench::HandFrame;

// Image block request with address and block period.
constexpr unsigned char BLOCK_REQUEST[] = {0x01, 0x05, 0x03, 0x03, 0x40, 0x10, 0x01, 0x00, 0x04,
                                           0x03, 0x02, 0x01, 0x00, 0x10, 0x00, 0x00, 0x40, 0x01,
                                           0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x10, 0x00};

constexpr unsigned char DATA_SIZE = 64;

unsigned char handSequence = 0;

unsigned short u16(const unsigned char* bytes) { return static_cast<unsigned short>(bytes[0] | bytes[1] << 8); }
unsigned int u32(const unsigned char* bytes) { return u16(bytes) | static_cast<unsigned int>(u16(bytes + 2)) << 16; }

void putU16(unsigned char* bytes, unsigned short value) {
  bytes[0] = static_cast<unsigned char>(value);
  bytes[1] = static_cast<unsigned char>(value >> 8);
}
void putU32(unsigned char* bytes, unsigned int value) {
  putU16(bytes, static_cast<unsigned short>(value));
  putU16(bytes + 2, static_cast<unsigned short>(value >> 16));
}

void ImageBlockRequest_limit(benchmark::State& state) {
  const qx::U255Buff<unsigned char> received(BLOCK_REQUEST, sizeof BLOCK_REQUEST);
  for (auto _ : state) {
    HandFrame frame;
    std::memcpy(frame.bytes, received.contents, received.length_);
    frame.length = received.length_;
    qx::ImageBlockRequest request;
    const unsigned char* payload = frame.bytes + 3;
    if (frame.bytes[2] == 3 && frame.length >= 3 + 24 && payload[0] == 3) {
      request.fieldControl = payload[0];
      request.manufacturerCode = u16(payload + 1);
      request.imageType = u16(payload + 3);
      request.fileVersion = u32(payload + 5);
      request.fileOffset = u32(payload + 9);
      request.maximumDataSize = payload[13];
      std::memcpy(request.requestNodeAddress.data(), payload + 14, 8);
      request.minimumBlockPeriod = u16(payload + 22);
    }
    benchmark::DoNotOptimize(request);
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(ImageBlockRequest_limit);

void ImageBlockRequest(benchmark::State& state) {
  const qx::U255Buff<unsigned char> received(BLOCK_REQUEST, sizeof BLOCK_REQUEST);
  for (auto _ : state) {
    const qx::ZclOtaUpgrade frame(received);
    qx::ImageBlockRequest request;
    bool taken = static_cast<bool>(frame.imageBlockRequest(request));
    benchmark::DoNotOptimize(taken);
    benchmark::DoNotOptimize(request);
  }
}
BENCHMARK(ImageBlockRequest);

void ImageBlockResponse_limit(benchmark::State& state) {
  unsigned char data[DATA_SIZE] = {1, 2, 3};
  const qx::ImageBlockResponse response{0, 0x1040, 1, 0x01020304, 0x1000, DATA_SIZE};
  for (auto _ : state) {
    benchmark::DoNotOptimize(response);
    benchmark::DoNotOptimize(data);
    HandFrame frame;
    frame.bytes[0] = 0x09;
    frame.bytes[1] = handSequence++;
    frame.bytes[2] = 0x05;
    unsigned char* payload = frame.bytes + 3;
    payload[0] = response.status;
    putU16(payload + 1, response.manufacturerCode);
    putU16(payload + 3, response.imageType);
    putU32(payload + 5, response.fileVersion);
    putU32(payload + 9, response.fileOffset);
    payload[13] = DATA_SIZE;
    std::memcpy(payload + 14, data, DATA_SIZE);
    frame.length = 3 + 14 + DATA_SIZE;
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(ImageBlockResponse_limit);

void ImageBlockResponse(benchmark::State& state) {
  unsigned char data[DATA_SIZE] = {1, 2, 3};
  const qx::ImageBlockResponse response{0, 0x1040, 1, 0x01020304, 0x1000, DATA_SIZE};
  for (auto _ : state) {
    benchmark::DoNotOptimize(response);
    benchmark::DoNotOptimize(data);
    qx::ZclOtaUpgrade frame(qx::ZclOtaUpgrade::IMAGE_BLOCK_RESPONSE);
    frame.imageBlockResponse(response, data, DATA_SIZE);
    benchmark::DoNotOptimize(frame);
  }
}
BENCHMARK(ImageBlockResponse);

}  // namespace

// 255 bytes through a pseudo-terminal and 255 back, beside the bare system calls.
#include "vso/runtime/Xfile.h"

#include <benchmark/benchmark.h>
#include <pty.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "vso/runtime/SerialPipe.h"

namespace {

using Buffer = qx::U255Buff<unsigned char>;

/// A pseudo-terminal whose far end the bench holds; the line is in raw mode.
class Line {
 public:
  Line() : pipe_(openPair(), qx::XSPEED_115200, 8, qx::XSTOP_BITS_1, qx::XPARITY_NONE) { pipe_.open(); }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() { ::close(far_); }

  qx::Xfile& pipe() { return pipe_; }

  /// Takes all that was written into the line, and answers with as much.
  void answer() {
    unsigned char bytes[Buffer::CAPACITY];
    for (std::size_t size = 0; size < sizeof bytes;) {
      const ssize_t count = ::read(far_, bytes, sizeof bytes - size);
      if (count <= 0) std::abort();
      size += static_cast<std::size_t>(count);
    }
    if (::write(far_, bytes, sizeof bytes) != sizeof bytes) std::abort();
  }

 private:
  std::string openPair() {
    int near = -1;
    char name[64];
    if (::openpty(&far_, &near, name, nullptr, nullptr) != 0) std::abort();
    near_ = near;  // stays open: a terminal without a near end has hung up
    return name;
  }

  int far_ = -1;
  int near_ = -1;
  qx::SerialPipe pipe_;
};

const Buffer SENT = [] {
  Buffer buffer;
  buffer.length_ = Buffer::CAPACITY;
  for (unsigned int i = 0; i < buffer.length_; ++i) buffer.contents[i] = static_cast<unsigned char>(i);
  return buffer;
}();

void LineBothWays_limit(benchmark::State& state) {
  Line line;
  const int handle = line.pipe().handle();
  for (auto _ : state) {
    if (::write(handle, SENT.contents, SENT.length_) != static_cast<ssize_t>(SENT.length_)) std::abort();
    line.answer();
    unsigned char bytes[Buffer::CAPACITY];
    for (std::size_t size = 0; size < sizeof bytes;) {
      fd_set readable;
      FD_ZERO(&readable);
      FD_SET(handle, &readable);
      timeval limit{0, 250'000};
      if (::select(handle + 1, &readable, nullptr, nullptr, &limit) <= 0) std::abort();
      size += static_cast<std::size_t>(::read(handle, bytes, sizeof bytes));
    }
    benchmark::DoNotOptimize(bytes);
  }
}
BENCHMARK(LineBothWays_limit)->UseRealTime();

void LineBothWays(benchmark::State& state) {
  Line line;
  Buffer buffer;
  for (auto _ : state) {
    line.pipe().write(SENT);
    line.answer();
    for (int size = 0; size < static_cast<int>(SENT.length_);) size += line.pipe().read(buffer);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(LineBothWays)->UseRealTime();

}  // namespace

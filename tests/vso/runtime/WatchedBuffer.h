// A stream whose writer can be looked at while it writes.
#pragma once

#include <functional>
#include <sstream>
#include <utility>

namespace qx::test {

/// Keeps what is written, and does something right before the first character of it.
class WatchedBuffer : public std::stringbuf {
 public:
  explicit WatchedBuffer(std::function<void()> atFirst) : atFirst_(std::move(atFirst)) {}

 protected:
  int_type overflow(int_type character) override {
    begin();
    return std::stringbuf::overflow(character);
  }

  std::streamsize xsputn(const char* text, std::streamsize size) override {
    if (size > 0) begin();
    return std::stringbuf::xsputn(text, size);
  }

 private:
  void begin() {
    if (atFirst_) std::exchange(atFirst_, nullptr)();
  }

  std::function<void()> atFirst_;
};

}  // namespace qx::test

#include "apps/vso/LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace qx::app {

LineReader::LineReader(int descriptor, std::function<void()> beforeRead)
    : descriptor_(descriptor), beforeRead_(std::move(beforeRead)) {}

bool LineReader::next() {
  line_.clear();
  isTooLong_ = false;
  bool hasBytes = false;
  while (at_ != end_ || fill()) {
    hasBytes = true;
    const char* const begin = buffer_.data() + at_;
    const char* const end = buffer_.data() + end_;
    const char* const newline = std::find(begin, end, '\n');
    const auto found = static_cast<std::size_t>(newline - begin);
    const std::size_t room = LONGEST_LINE - line_.size();
    line_.append(begin, std::min(found, room));
    isTooLong_ = isTooLong_ || found > room;
    at_ += found;
    if (newline != end) {
      ++at_;
      break;
    }
  }
  // Half a line in front of an error is none.
  if (!hasBytes || error_ != 0) return false;
  ++number_;
  return true;
}

bool LineReader::fill() {
  if (beforeRead_) beforeRead_();
  ssize_t count;
  do {
    count = ::read(descriptor_, buffer_.data(), buffer_.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) error_ = errno;
  at_ = 0;
  end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
  return end_ != 0;
}

}  // namespace qx::app

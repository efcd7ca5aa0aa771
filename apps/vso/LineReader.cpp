#include "apps/vso/LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "apps/vso/OpenFile.h"

namespace qx::app {

LineReader::LineReader(int descriptor, std::string name, std::function<void()> beforeRead)
    : descriptor_(descriptor), name_(std::move(name)), beforeRead_(std::move(beforeRead)) {}

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
    const std::size_t taken = newline != end ? found + 1 : found;
    at_ += taken;
    offset_ += taken;
    if (newline != end) break;
  }
  if (!hasBytes) return false;
  ++number_;
  return true;
}

bool LineReader::fill() {
  if (beforeRead_) beforeRead_();
  ssize_t count;
  do {
    count = ::read(descriptor_, buffer_.data(), buffer_.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) throw FileError(name_, errno);
  at_ = 0;
  end_ = static_cast<std::size_t>(count);
  return end_ != 0;
}

std::string LineReader::complaint(const std::string& reason) const {
  return name_ + ":" + std::to_string(number_) + ": " + reason;
}

}  // namespace qx::app

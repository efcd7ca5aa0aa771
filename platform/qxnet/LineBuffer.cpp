#include "qxnet/LineBuffer.h"

#include <algorithm>
#include <cstring>

namespace qx::net::stream::detail {

LineBuffer::Space LineBuffer::space() {
  // Somebody who sends faster than is read here gets more room, who sends little keeps little.
  const bool isFull = end_ == bytes_.size();
  if (begin_ > 0) {
    std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    searched_ -= begin_;
    begin_ = 0;
  }
  if (isFull && bytes_.size() < LONGEST_LINE) {
    bytes_.resize(std::clamp(2 * bytes_.size(), FIRST_SIZE, LONGEST_LINE));
  }
  return {bytes_.data() + end_, bytes_.size() - end_};
}

void LineBuffer::received(std::size_t size) { end_ += size; }

std::string_view LineBuffer::line(std::string_view delimiter) {
  if (delimiter != delimiter_) {
    delimiter_ = delimiter;
    searched_ = begin_;
  }
  const std::string_view unread(bytes_.data() + begin_, end_ - begin_);
  const std::size_t at = unread.find(delimiter, searched_ - begin_);
  if (at == std::string_view::npos) {
    // The last bytes may be the beginning of a delimiter.
    const std::size_t kept = std::min(unread.size(), delimiter.size() - 1);
    searched_ = std::max(searched_, end_ - kept);
    return {};
  }
  const std::string_view line = unread.substr(0, at + delimiter.size());
  begin_ += line.size();
  searched_ = begin_;
  return line;
}

}  // namespace qx::net::stream::detail

// One datagram of the StatsD line protocol as it comes together.
#pragma once

#include <cstddef>
#include <string_view>

namespace qx::detail {

/// Lines `path:value|type`, with a line feed between them. Whatever bytes a path or a value has, it stays within its
/// place in its line: control characters and the protocol's own signs `:`, `|`, `@` and `#` become `_`.
class StatsdDatagram {
 public:
  /// Fits into one Ethernet frame, whatever the gateway's family.
  static constexpr std::size_t CAPACITY = 1432;

  /// Adds a metric: a gauge if `value` is a decimal number (digits with an optional minus in front and an optional
  /// fraction behind), otherwise a set. A negative gauge takes two lines, because the protocol takes a sign for a step
  /// up or down from the value before: the first sets it to 0. False, with nothing added, if the metric does not fit.
  bool add(std::string_view path, std::string_view value) noexcept;
  /// The same as a set, whatever the text.
  bool addText(std::string_view path, std::string_view text) noexcept { return addLine(path, text, 's'); }

  void clear() noexcept { size_ = 0; }
  bool empty() const noexcept { return size_ == 0; }
  const char* data() const noexcept { return bytes_; }
  std::size_t size() const noexcept { return size_; }

 private:
  bool addLine(std::string_view path, std::string_view value, char type) noexcept;

  char bytes_[CAPACITY];
  std::size_t size_ = 0;
};

}  // namespace qx::detail

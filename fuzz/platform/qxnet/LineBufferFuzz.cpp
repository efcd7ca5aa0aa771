// LineBuffer on arbitrary bytes in arbitrary pieces, beside a model that searches everything anew. Reachable from
// outside: whatever a peer sends to a line server goes through it.
#include "qxnet/LineBuffer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz/support/trapUnless.h"

using qx::fuzz::trapUnless;
using qx::net::stream::detail::LineBuffer;

// The input is a row of steps: a byte that says what to do, and, for bytes that are received, as many as it says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::string_view DELIMITERS[] = {"\r\n", "\n", "aab", "\r\n\r\n"};
  LineBuffer buffer;
  std::string model;
  const std::uint8_t* const end = data + size;
  while (data < end) {
    const std::uint8_t step = *data++;
    if (step < 128) {
      // Every 16th piece is so many times as long, to come to where the buffer is full.
      const std::size_t times = step % 16 == 15 ? 1000 : 1;
      const std::size_t piece = std::min<std::size_t>(step, static_cast<std::size_t>(end - data));
      for (std::size_t i = 0; i < times; ++i) {
        const LineBuffer::Space space = buffer.space();
        trapUnless((space.size == 0) == (model.size() == LineBuffer::LONGEST_LINE), "full at its limit and only there");
        const std::size_t taken = std::min(piece, space.size);
        if (taken > 0) std::memcpy(space.bytes, data, taken);
        buffer.received(taken);
        model.append(reinterpret_cast<const char*>(data), taken);
      }
      data += piece;
      continue;
    }
    const std::string_view delimiter = DELIMITERS[step % 4];
    const std::size_t at = model.find(delimiter);
    const std::string due = at == std::string::npos ? "" : model.substr(0, at + delimiter.size());
    trapUnless(buffer.line(delimiter) == due, "the line that comes next, or none");
    model.erase(0, due.size());
  }
  return 0;
}

// The bytes that a connection has received and nobody has read yet.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qx::net::stream::detail {

/// Bytes go in at the end and come out at the front, line by line. The storage grows with what is received at a time,
/// up to LONGEST_LINE, and stays.
class LineBuffer {
 public:
  /// In bytes, with the delimiter.
  static constexpr std::size_t LONGEST_LINE = 65'536;

  /// A place for further bytes.
  struct Space {
    char* bytes;
    std::size_t size;
  };

  /// Where the next bytes may be written. Its size is 0 if the buffer is full, which it only is when it holds
  /// LONGEST_LINE bytes. Views that `line` gave end.
  Space space();
  /// Says that `size` bytes have been written there.
  void received(std::size_t size);

  /// Takes the bytes up to and including the next `delimiter` (not empty) out; nothing, if there is none. Bytes that
  /// have been searched are not searched again, so that a line may come in any number of pieces. The view holds until
  /// the next call of `space`.
  std::string_view line(std::string_view delimiter);

 private:
  static constexpr std::size_t FIRST_SIZE = 4096;

  std::vector<char> bytes_;
  // The unread bytes, of which those before `searched_` hold no beginning of the delimiter that was looked for last.
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t searched_ = 0;
  std::string delimiter_;
};

}  // namespace qx::net::stream::detail

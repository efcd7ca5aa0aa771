#include "qxnet/LineBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace qx::net::stream::detail {
namespace {

/// Writes as much of `text` as there is space for at once, and says how much that was.
std::size_t write(LineBuffer& buffer, std::string_view text) {
  const LineBuffer::Space space = buffer.space();
  const std::size_t size = std::min(space.size, text.size());
  std::memcpy(space.bytes, text.data(), size);
  buffer.received(size);
  return size;
}

/// Writes all of `text`, in as many steps as that takes. False if the buffer is full before.
bool writeAll(LineBuffer& buffer, std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = write(buffer, text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

/// What a buffer of these bytes should do, in the simplest way.
struct Model {
  std::string unread;

  std::string line(const std::string& delimiter) {
    const std::size_t at = unread.find(delimiter);
    if (at == std::string::npos) return {};
    const std::string line = unread.substr(0, at + delimiter.size());
    unread.erase(0, line.size());
    return line;
  }
};

TEST(LineBuffer, EmptyOneHasNoLine) {
  LineBuffer buffer;
  EXPECT_EQ("", buffer.line("\r\n"));
  EXPECT_EQ("", buffer.line("\r\n"));
}

TEST(LineBuffer, LineHasItsDelimiter) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "hello\r\n"));
  EXPECT_EQ("hello\r\n", buffer.line("\r\n"));
  EXPECT_EQ("", buffer.line("\r\n"));
}

TEST(LineBuffer, LinesComeInOrderAndOnce) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "a\r\nbb\r\n\r\nccc\r\nrest"));
  EXPECT_EQ("a\r\n", buffer.line("\r\n"));
  EXPECT_EQ("bb\r\n", buffer.line("\r\n"));
  EXPECT_EQ("\r\n", buffer.line("\r\n"));
  EXPECT_EQ("ccc\r\n", buffer.line("\r\n"));
  EXPECT_EQ("", buffer.line("\r\n"));
  ASSERT_TRUE(writeAll(buffer, "\r\n"));
  EXPECT_EQ("rest\r\n", buffer.line("\r\n"));
}

TEST(LineBuffer, PartsOfADelimiterAreNone) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "a\nb\rc\n\rd\r\r\n"));
  EXPECT_EQ("a\nb\rc\n\rd\r\r\n", buffer.line("\r\n"));
}

TEST(LineBuffer, DelimiterMayBeSplitAnywhere) {
  for (const std::string delimiter : {"\n", "\r\n", "aab", "abcabd", "aaaa"}) {
    for (const std::string before : {"", "x", "a", "aa", "abc", "\r", "xaabx\r"}) {
      const std::string text = before + delimiter + "tail" + delimiter;
      for (std::size_t split = 0; split <= text.size(); ++split) {
        LineBuffer buffer;
        Model model;
        for (const std::string& piece : {text.substr(0, split), text.substr(split)}) {
          ASSERT_TRUE(writeAll(buffer, piece));
          model.unread += piece;
          for (int i = 0; i < 3; ++i) EXPECT_EQ(model.line(delimiter), buffer.line(delimiter)) << text << ' ' << split;
        }
      }
    }
  }
}

TEST(LineBuffer, DelimiterMayComeByteByByte) {
  LineBuffer buffer;
  for (const char byte : std::string("xabcabcab")) {
    ASSERT_TRUE(writeAll(buffer, std::string(1, byte)));
    EXPECT_EQ("", buffer.line("abcabcabd"));
  }
  ASSERT_TRUE(writeAll(buffer, "d"));
  EXPECT_EQ("xabcabcabd", buffer.line("abcabcabd"));
}

TEST(LineBuffer, OtherDelimiterIsLookedForFromTheBeginning) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "a;b;c"));
  EXPECT_EQ("", buffer.line("\r\n"));
  EXPECT_EQ("a;", buffer.line(";"));
  EXPECT_EQ("", buffer.line("\r\n"));
  EXPECT_EQ("b;", buffer.line(";"));
  EXPECT_EQ("", buffer.line(";"));
  ASSERT_TRUE(writeAll(buffer, "\r\n;"));
  EXPECT_EQ("c\r\n", buffer.line("\r\n"));
  EXPECT_EQ(";", buffer.line(";"));
}

TEST(LineBuffer, LongerDelimiterMayBeginInWhatWasSearchedForAShorter) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "x--"));
  EXPECT_EQ("", buffer.line("\n"));
  ASSERT_TRUE(writeAll(buffer, "--end"));
  EXPECT_EQ("x----", buffer.line("----"));
  EXPECT_EQ("end", buffer.line("end"));
}

TEST(LineBuffer, ShorterDelimiterMayBeTheBeginningOfALonger) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "x\r"));
  EXPECT_EQ("", buffer.line("\r\n"));
  EXPECT_EQ("x\r", buffer.line("\r"));
  ASSERT_TRUE(writeAll(buffer, "\n\r\n"));
  EXPECT_EQ("\n\r\n", buffer.line("\r\n"));
}

TEST(LineBuffer, KeepsBytesOfEveryValue) {
  std::string text;
  for (int byte = 0; byte < 256; ++byte) text += static_cast<char>(byte);
  const std::string delimiter("\0\0", 2);
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, text + delimiter));
  EXPECT_EQ(text + delimiter, buffer.line(delimiter));
}

class LineBufferLength : public testing::TestWithParam<std::size_t> {};

TEST_P(LineBufferLength, LineComesWhole) {
  const std::string line = std::string(GetParam() - 2, 'x') + "\r\n";
  for (const std::size_t piece : {std::size_t{1000}, std::size_t{4096}, line.size()}) {
    LineBuffer buffer;
    for (std::size_t at = 0; at < line.size(); at += piece) {
      EXPECT_EQ("", buffer.line("\r\n"));
      ASSERT_TRUE(writeAll(buffer, line.substr(at, piece))) << at;
    }
    EXPECT_TRUE(line == buffer.line("\r\n")) << piece;
    EXPECT_EQ("", buffer.line("\r\n"));
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, LineBufferLength,
                         testing::Values(2, 3, 4095, 4096, 4097, 8191, 8192, 8193, 65535, 65536));

TEST(LineBuffer, LongestLineIs65536Bytes) {
  EXPECT_EQ(65536U, LineBuffer::LONGEST_LINE);
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, std::string(65535, 'x')));
  EXPECT_EQ(1U, buffer.space().size);
  ASSERT_TRUE(writeAll(buffer, "x"));
  EXPECT_EQ(0U, buffer.space().size);
  EXPECT_EQ("", buffer.line("\r\n"));
  EXPECT_EQ(0U, buffer.space().size);
}

TEST(LineBuffer, FullOneHasSpaceAgainWhenALineIsTaken) {
  LineBuffer buffer;
  const std::string rest(65531, 'y');
  ASSERT_TRUE(writeAll(buffer, "abc\r\n" + rest));
  EXPECT_EQ(0U, buffer.space().size);
  EXPECT_EQ("abc\r\n", buffer.line("\r\n"));
  EXPECT_EQ(5U, buffer.space().size);
  ASSERT_TRUE(writeAll(buffer, "abc\r\n"));
  EXPECT_EQ(0U, buffer.space().size);
  EXPECT_TRUE(rest + "abc\r\n" == buffer.line("\r\n"));
}

TEST(LineBuffer, FullOneStillGivesItsLines) {
  LineBuffer buffer;
  const std::string line = std::string(1022, 'z') + "\r\n";
  for (int i = 0; i < 64; ++i) ASSERT_TRUE(writeAll(buffer, line));
  EXPECT_EQ(0U, buffer.space().size);
  for (int i = 0; i < 64; ++i) EXPECT_TRUE(line == buffer.line("\r\n")) << i;
  EXPECT_EQ("", buffer.line("\r\n"));
}

TEST(LineBuffer, WhoSendsLittleKeepsLittle) {
  LineBuffer buffer;
  const std::size_t first = buffer.space().size;
  EXPECT_LT(0U, first);
  EXPECT_GT(LineBuffer::LONGEST_LINE, first);
  for (int i = 0; i < 10000; ++i) {
    ASSERT_TRUE(writeAll(buffer, "a line\r\n"));
    EXPECT_EQ("a line\r\n", buffer.line("\r\n"));
  }
  EXPECT_EQ(first, buffer.space().size);
}

TEST(LineBuffer, WhoFillsTheSpaceGetsMoreUpToTheLongestLine) {
  LineBuffer buffer;
  std::size_t before = 0;
  for (int i = 0; i < 20 && before < LineBuffer::LONGEST_LINE; ++i) {
    const std::size_t size = buffer.space().size;
    EXPECT_LT(before, size);
    ASSERT_GE(LineBuffer::LONGEST_LINE, size);
    ASSERT_TRUE(writeAll(buffer, std::string(size - 1, 'x') + "\n"));
    EXPECT_EQ(size, buffer.line("\n").size());
    before = size;
  }
  EXPECT_EQ(LineBuffer::LONGEST_LINE, before);
  ASSERT_TRUE(writeAll(buffer, std::string(LineBuffer::LONGEST_LINE - 1, 'x') + "\n"));
  EXPECT_EQ(LineBuffer::LONGEST_LINE, buffer.line("\n").size());
  EXPECT_EQ(LineBuffer::LONGEST_LINE, buffer.space().size);
}

TEST(LineBuffer, UnusedSpaceDoesNotGrow) {
  LineBuffer buffer;
  const std::size_t first = buffer.space().size;
  for (int i = 0; i < 10; ++i) EXPECT_EQ(first, buffer.space().size);
  ASSERT_TRUE(writeAll(buffer, std::string(first - 1, 'x')));
  for (int i = 0; i < 10; ++i) EXPECT_EQ(1U, buffer.space().size);
}

TEST(LineBuffer, LineHoldsWhileFurtherLinesAreTaken) {
  LineBuffer buffer;
  ASSERT_TRUE(writeAll(buffer, "first\nsecond\nthird"));
  const std::string_view first = buffer.line("\n");
  const std::string_view second = buffer.line("\n");
  EXPECT_EQ("", buffer.line("\n"));
  EXPECT_EQ("first\n", first);
  EXPECT_EQ("second\n", second);
}

class LineBufferAgainstFind : public testing::TestWithParam<unsigned int> {};

TEST_P(LineBufferAgainstFind, RandomPiecesAndDelimitersGiveTheSameLines) {
  std::mt19937 random(GetParam());
  const auto number = [&random](std::size_t from, std::size_t to) {
    return std::uniform_int_distribution<std::size_t>(from, to)(random);
  };
  // Few different bytes, so that delimiters occur, also in parts and over each other.
  const auto text = [&](std::size_t size) {
    std::string made;
    for (std::size_t i = 0; i < size; ++i) made += static_cast<char>('a' + number(0, 1 + GetParam() % 2));
    return made;
  };
  const std::size_t longestPiece = GetParam() % 4 == 0 ? 9000 : 12;
  LineBuffer buffer;
  Model model;
  std::string delimiter = "ab";
  std::size_t lines = 0;
  for (int step = 0; step < 3000; ++step) {
    if (number(0, 9) == 0) delimiter = text(number(1, 12));
    if (number(0, 1) == 0) {
      std::string piece = text(number(0, longestPiece));
      piece.resize(write(buffer, piece));
      model.unread += piece;
    }
    const std::string expected = model.line(delimiter);
    lines += expected.empty() ? 0 : 1;
    ASSERT_EQ(expected, buffer.line(delimiter)) << "step " << step << ", delimiter " << delimiter;
    ASSERT_LE(model.unread.size(), LineBuffer::LONGEST_LINE);
  }
  EXPECT_LT(100U, lines);
}

INSTANTIATE_TEST_SUITE_P(Seeds, LineBufferAgainstFind, testing::Range(1U, 25U));

}  // namespace
}  // namespace qx::net::stream::detail

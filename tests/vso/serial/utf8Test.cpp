#include "vso/serial/utf8.h"

#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <random>
#include <string>

#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/serial/Forms.h"

namespace qx::detail {
namespace {

const std::string BAD = "\xEF\xBF\xBD";

/// U+FFFD that many times.
std::string bad(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += BAD;
  return text;
}

TEST(Utf8, LeavesAsciiAlone) {
  std::string ascii;
  for (char c = 0; c < 127; ++c) ascii += c;
  ascii += '\x7F';
  EXPECT_EQ(utf8(""), "");
  EXPECT_EQ(utf8(ascii), ascii);
}

struct Boundary {
  const char* text;
  const char* name;
};

std::ostream& operator<<(std::ostream& out, const Boundary& boundary) { return out << boundary.name; }

class Utf8Valid : public testing::TestWithParam<Boundary> {};

TEST_P(Utf8Valid, StaysAsItIsWhereverItStands) {
  const std::string text = GetParam().text;
  EXPECT_EQ(utf8(text), text);
  EXPECT_EQ(utf8("a" + text + "b"), "a" + text + "b");
  EXPECT_EQ(utf8(text + text), text + text);
  EXPECT_EQ(utf8("\xFF" + text + "\x80" + text), BAD + text + BAD + text);
}

TEST_P(Utf8Valid, CutShortIsBadByteByByte) {
  const std::string text = GetParam().text;
  for (std::size_t length = 1; length < text.size(); ++length) {
    EXPECT_EQ(utf8(text.substr(0, length)), bad(static_cast<int>(length)));
    EXPECT_EQ(utf8(text.substr(0, length) + "a"), bad(static_cast<int>(length)) + "a");
    EXPECT_EQ(utf8(text.substr(0, length) + text), bad(static_cast<int>(length)) + text);
  }
}

TEST_P(Utf8Valid, WithoutItsFirstByteIsBadByteByByte) {
  const std::string text = GetParam().text;
  EXPECT_EQ(utf8(text.substr(1)), bad(static_cast<int>(text.size()) - 1));
}

INSTANTIATE_TEST_SUITE_P(
    Boundaries, Utf8Valid,
    testing::Values(Boundary{"\xC2\x80", "U+0080"}, Boundary{"\xC2\xBF", "U+00BF"}, Boundary{"\xC3\x80", "U+00C0"},
                    Boundary{"\xDF\x80", "U+07C0"}, Boundary{"\xDF\xBF", "U+07FF"}, Boundary{"\xE0\xA0\x80", "U+0800"},
                    Boundary{"\xE0\xBF\xBF", "U+0FFF"}, Boundary{"\xE1\x80\x80", "U+1000"},
                    Boundary{"\xEC\xBF\xBF", "U+CFFF"}, Boundary{"\xED\x80\x80", "U+D000"},
                    Boundary{"\xED\x9F\xBF", "U+D7FF"}, Boundary{"\xEE\x80\x80", "U+E000"},
                    Boundary{"\xEF\xB7\x90", "U+FDD0"}, Boundary{"\xEF\xBF\xBD", "U+FFFD"},
                    Boundary{"\xEF\xBF\xBF", "U+FFFF"}, Boundary{"\xF0\x90\x80\x80", "U+10000"},
                    Boundary{"\xF0\xBF\xBF\xBF", "U+3FFFF"}, Boundary{"\xF1\x80\x80\x80", "U+40000"},
                    Boundary{"\xF3\xBF\xBF\xBF", "U+FFFFF"}, Boundary{"\xF4\x80\x80\x80", "U+100000"},
                    Boundary{"\xF4\x8F\xBF\xBF", "U+10FFFF"}));

struct Bad {
  std::string bytes;
  std::string expected;
  const char* name;
};

std::ostream& operator<<(std::ostream& out, const Bad& bad) { return out << bad.name; }

class Utf8Invalid : public testing::TestWithParam<Bad> {};

TEST_P(Utf8Invalid, GetsAReplacementForEachBadByte) {
  EXPECT_EQ(utf8(GetParam().bytes), GetParam().expected);
  EXPECT_EQ(utf8("a" + GetParam().bytes + "b"), "a" + GetParam().expected + "b");
}

INSTANTIATE_TEST_SUITE_P(
    Forms, Utf8Invalid,
    testing::Values(
        Bad{"\x80", bad(1), "first continuation"}, Bad{"\xBF", bad(1), "last continuation"},
        Bad{"\x80\xBF\x80", bad(3), "continuations"}, Bad{"\xC0\x80", bad(2), "zero in two bytes"},
        Bad{"\xC0\xAF", bad(2), "slash in two bytes"}, Bad{"\xC1\xBF", bad(2), "U+007F in two bytes"},
        Bad{"\xE0\x80\x80", bad(3), "zero in three bytes"}, Bad{"\xE0\x9F\xBF", bad(3), "U+07FF in three bytes"},
        Bad{"\xF0\x80\x80\x80", bad(4), "zero in four bytes"}, Bad{"\xF0\x8F\xBF\xBF", bad(4), "U+FFFF in four bytes"},
        Bad{"\xED\xA0\x80", bad(3), "first surrogate"}, Bad{"\xED\xAF\xBF", bad(3), "last high surrogate"},
        Bad{"\xED\xB0\x80", bad(3), "first low surrogate"}, Bad{"\xED\xBF\xBF", bad(3), "last surrogate"},
        Bad{"\xED\xA0\xBD\xED\xB8\x80", bad(6), "a pair of surrogates"}, Bad{"\xF4\x90\x80\x80", bad(4), "U+110000"},
        Bad{"\xF5\x80\x80\x80", bad(4), "lead F5"}, Bad{"\xF7\xBF\xBF\xBF", bad(4), "lead F7"},
        Bad{"\xF8\x88\x80\x80\x80", bad(5), "five bytes"}, Bad{"\xFC\x84\x80\x80\x80\x80", bad(6), "six bytes"},
        Bad{"\xFE", bad(1), "FE"}, Bad{"\xFF", bad(1), "FF"}, Bad{"\xC3(", bad(1) + "(", "two bytes, second ASCII"},
        Bad{"\xC3\xC3\xA9", bad(1) + "\xC3\xA9", "lead twice"},
        Bad{"\xE2(\xAC", bad(1) + "(" + bad(1), "three bytes, second ASCII"},
        Bad{"\xE2\x82(", bad(2) + "(", "three bytes, third ASCII"},
        Bad{"\xE2\x82\xC3\xA9", bad(2) + "\xC3\xA9", "three bytes, third a lead"},
        Bad{"\xF0\x9F\x98(", bad(3) + "(", "four bytes, fourth ASCII"},
        Bad{"\xF0\x9F(\x80", bad(2) + "(" + bad(1), "four bytes, third ASCII"},
        Bad{std::string("\xC3\0", 2), bad(1) + std::string(1, '\0'), "second byte zero"}));

// By code point, as the definition of UTF-8 has it.
TEST(Utf8, LeavesEveryCodePointAloneButSurrogates) {
  const auto byte = [](unsigned int value) { return static_cast<char>(static_cast<unsigned char>(value)); };
  for (unsigned int point = 0x80; point <= 0x10FFFF && !HasFailure(); ++point) {
    std::string text;
    if (point < 0x800) {
      text += byte(0xC0 | point >> 6);
    } else {
      if (point < 0x10000) {
        text += byte(0xE0 | point >> 12);
      } else {
        text += byte(0xF0 | point >> 18);
        text += byte(0x80 | (point >> 12 & 0x3F));
      }
      text += byte(0x80 | (point >> 6 & 0x3F));
    }
    text += byte(0x80 | (point & 0x3F));
    const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
    EXPECT_EQ(utf8(text), isSurrogate ? bad(3) : text) << point;
  }
}

// Random bytes: any, and those that sequences are made of.
TEST(Utf8, MakesTextThatAMessageParsesAndThatItLeavesAlone) {
  std::mt19937 random(629);
  const std::string likely = "a\x80\x8F\x90\x9F\xA0\xBF\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF5";
  for (int i = 0; i < 50000 && !HasFailure(); ++i) {
    std::string bytes(random() % 20, '\0');
    for (char& c : bytes) c = i % 2 == 0 ? static_cast<char>(random() % 256) : likely[random() % likely.size()];
    const std::string text = utf8(bytes);
    pb::NetworkHealthItemPBuf message;
    message.set_name(text);
    pb::NetworkHealthItemPBuf parsed;
    EXPECT_TRUE(parsed.ParseFromString(message.SerializeAsString())) << test::hexText(bytes);
    EXPECT_EQ(parsed.name(), text) << test::hexText(bytes);
    EXPECT_EQ(utf8(text), text) << test::hexText(bytes);
  }
}

// What parses already is not touched: the two agree on what UTF-8 is.
TEST(Utf8, TouchesOnlyWhatAMessageWouldNotParse) {
  const google::protobuf::LogSilencer silent;  // it complains of each bad text
  std::mt19937 random(630);
  const std::string likely = "\x80\x8F\x90\x9F\xA0\xBF\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF5";
  int untouched = 0;
  int touched = 0;
  for (int i = 0; i < 50000 && !HasFailure(); ++i) {
    std::string bytes(1 + random() % 4, '\0');
    for (char& c : bytes) c = likely[random() % likely.size()];
    const std::string wire = "\x12" + std::string(1, static_cast<char>(bytes.size())) + bytes;  // field 2, a text
    pb::NetworkHealthItemPBuf parsed;
    const bool isValid = parsed.ParseFromString(wire);
    EXPECT_EQ(utf8(bytes) == bytes, isValid) << test::hexText(bytes);
    ++(isValid ? untouched : touched);
  }
  EXPECT_GT(untouched, 100);
  EXPECT_GT(touched, 100);
}

}  // namespace
}  // namespace qx::detail

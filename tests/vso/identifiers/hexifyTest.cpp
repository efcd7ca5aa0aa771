#include "vso/identifiers/hexify.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace qx {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr unsigned char BYTES[] = {0x01, 0xAB, 0x00, 0xFF};
constexpr unsigned short SHORTS[] = {0x0ABC, 0xF00D, 0x0000};

TEST(hexify, PrintsBytesAsTwoLowercaseDigits) {
  std::string text;
  EXPECT_EQ(hexify(BYTES, 2, text, false), BYTES);
  EXPECT_EQ(text, "01ab");
}

TEST(hexify, PutsOneBlankBetweenElements) {
  std::string text;
  EXPECT_EQ(hexify(BYTES, 4, text, true), BYTES);
  EXPECT_EQ(text, "01 ab 00 ff");
  hexify(BYTES, 1, text, true);
  EXPECT_EQ(text, "01");
  hexify(SHORTS, 3, text, true);
  EXPECT_EQ(text, "0abc f00d 0000");
}

TEST(hexify, PrintsShortsAsNumbersOfFourDigits) {
  std::string text;
  EXPECT_EQ(hexify(SHORTS, 3, text, false), SHORTS);
  EXPECT_EQ(text, "0abcf00d0000");
}

TEST(hexify, ReplacesWhatTheTextHeld) {
  std::string text = "something longer than the result";
  hexify(BYTES, 1, text, false);
  EXPECT_EQ(text, "01");
}

TEST(hexify, EmptiesTheTextForNoElements) {
  for (const bool separators : {false, true}) {
    std::string text = "old";
    EXPECT_EQ(hexify(BYTES, 0, text, separators), BYTES);
    EXPECT_EQ(text, "");
    text = "old";
    EXPECT_EQ(hexify(SHORTS, 0, text, separators), SHORTS);
    EXPECT_EQ(text, "");
  }
}

TEST(hexify, LeavesTheTextAloneForNull) {
  for (const unsigned int count : {0U, 3U}) {
    std::string text = "old";
    EXPECT_EQ(hexify(static_cast<const unsigned char*>(nullptr), count, text, true), nullptr);
    EXPECT_EQ(hexify(static_cast<const unsigned short*>(nullptr), count, text, true), nullptr);
    EXPECT_EQ(text, "old");
  }
}

TEST(hexify, PrintsMoreElementsThanAFrameHas) {
  const std::vector<unsigned char> bytes(1000, 0xC3);
  std::string text;
  hexify(bytes.data(), 1000, text, true);
  EXPECT_EQ(text.size(), 2999U);
  EXPECT_EQ(text.substr(0, 5), "c3 c3");
  EXPECT_EQ(text.substr(2994), "c3 c3");
}

TEST(hexify, RoundTripsEveryByte) {
  unsigned char bytes[256];
  for (unsigned int i = 0; i < 256; ++i) bytes[i] = static_cast<unsigned char>(i);
  std::string text;
  hexify(bytes, 256, text, false);
  unsigned char back[256] = {};
  ASSERT_EQ(deHexify(text, back, 256), back);
  EXPECT_THAT(back, ElementsAreArray(bytes));
}

TEST(hexify, RoundTripsEveryShort) {
  std::vector<unsigned short> shorts(65536);
  for (unsigned int i = 0; i < shorts.size(); ++i) shorts[i] = static_cast<unsigned short>(i);
  std::string text;
  hexify(shorts.data(), 65536, text, false);
  std::vector<unsigned short> back(65536, 0xEEEE);
  ASSERT_EQ(deHexify(text, back.data(), 65536), back.data());
  EXPECT_TRUE(back == shorts);
}

TEST(deHexify, ReadsBothCases) {
  unsigned char out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(deHexify("0aB1Ff", out, 4), out);
  EXPECT_THAT(out, ElementsAre(0x0A, 0xB1, 0xFF, 0xEE));
}

TEST(deHexify, ReadsFourDigitsIntoAShort) {
  unsigned short out[3] = {0xEEEE, 0xEEEE, 0xEEEE};
  EXPECT_EQ(deHexify("0abcF00D", out, 3), out);
  EXPECT_THAT(out, ElementsAre(0x0ABC, 0xF00D, 0xEEEE));
}

TEST(deHexify, ReturnsNullForNull) {
  for (const char* const text : {"", "00", "0000", "0"}) {
    EXPECT_EQ(deHexify(text, static_cast<unsigned char*>(nullptr), 8), nullptr) << text;
    EXPECT_EQ(deHexify(text, static_cast<unsigned short*>(nullptr), 8), nullptr) << text;
  }
}

TEST(deHexify, RefusesPartOfAnElement) {
  unsigned char bytes[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  for (const char* const text : {"1", "123", "12345"}) EXPECT_EQ(deHexify(text, bytes, 4), nullptr) << text;
  EXPECT_THAT(bytes, Each(0xEE));
  unsigned short shorts[4] = {0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE};
  for (const char* const text : {"1", "12", "123", "12345", "123456", "1234567"}) {
    EXPECT_EQ(deHexify(text, shorts, 4), nullptr) << text;
  }
  EXPECT_THAT(shorts, Each(0xEEEE));
}

TEST(deHexify, RefusesMoreThanTheCapacity) {
  unsigned char bytes[2] = {0xEE, 0xEE};
  EXPECT_EQ(deHexify("12", bytes, 0), nullptr);
  EXPECT_EQ(deHexify("1234", bytes, 1), nullptr);
  EXPECT_EQ(deHexify("123456", bytes, 2), nullptr);
  EXPECT_THAT(bytes, Each(0xEE));
  unsigned short shorts[2] = {0xEEEE, 0xEEEE};
  EXPECT_EQ(deHexify("1234", shorts, 0), nullptr);
  EXPECT_EQ(deHexify("12345678", shorts, 1), nullptr);
  EXPECT_THAT(shorts, Each(0xEEEE));
}

TEST(deHexify, TakesExactlyTheCapacity) {
  unsigned char bytes[2] = {};
  EXPECT_EQ(deHexify("1234", bytes, 2), bytes);
  EXPECT_THAT(bytes, ElementsAre(0x12, 0x34));
  unsigned short shorts[2] = {};
  EXPECT_EQ(deHexify("12345678", shorts, 2), shorts);
  EXPECT_THAT(shorts, ElementsAre(0x1234, 0x5678));
}

TEST(deHexify, TakesACapacityWhoseDigitsPass32Bits) {
  unsigned char bytes[1] = {};
  EXPECT_EQ(deHexify("12", bytes, 0x80000000U), bytes);
  EXPECT_THAT(bytes, ElementsAre(0x12));
  unsigned short shorts[1] = {};
  EXPECT_EQ(deHexify("1234", shorts, 0x40000000U), shorts);
  EXPECT_THAT(shorts, ElementsAre(0x1234));
}

TEST(deHexify, LooksAtTheLow8BitsOfTheLengthForBytes) {
  // 258 characters count as 2, which is one byte; all 129 are written.
  std::vector<unsigned char> bytes(130, 0xEE);
  EXPECT_EQ(deHexify(std::string(258, '5'), bytes.data(), 1), bytes.data());
  std::vector<unsigned char> expected(129, 0x55);
  expected.push_back(0xEE);
  EXPECT_THAT(bytes, ElementsAreArray(expected));

  // 256 count as none.
  bytes.assign(129, 0xEE);
  EXPECT_EQ(deHexify(std::string(256, '5'), bytes.data(), 0), bytes.data());
  EXPECT_EQ(bytes[127], 0x55);
  EXPECT_EQ(bytes[128], 0xEE);

  // 260 count as 4, for which one byte is too little.
  bytes.assign(130, 0xEE);
  EXPECT_EQ(deHexify(std::string(260, '5'), bytes.data(), 1), nullptr);
  EXPECT_THAT(bytes, Each(0xEE));
}

TEST(deHexify, LooksAtTheLow16BitsOfTheLengthForShorts) {
  std::vector<unsigned short> shorts(16386, 0xEEEE);
  // 260 characters are 260: 64 elements have no room for them.
  EXPECT_EQ(deHexify(std::string(260, '5'), shorts.data(), 64), nullptr);
  EXPECT_THAT(shorts, Each(0xEEEE));

  // 65540 count as 4, which is one element; all 16385 are written.
  EXPECT_EQ(deHexify(std::string(65540, '5'), shorts.data(), 1), shorts.data());
  std::vector<unsigned short> expected(16385, 0x5555);
  expected.push_back(0xEEEE);
  EXPECT_TRUE(shorts == expected);
}

TEST(deHexify, WritesNothingForAnEmptyText) {
  unsigned char byte = 0xEE;
  EXPECT_EQ(deHexify("", &byte, 1), &byte);
  EXPECT_EQ(deHexify("", &byte, 0), &byte);
  EXPECT_EQ(byte, 0xEE);
  unsigned short number = 0xEEEE;
  EXPECT_EQ(deHexify("", &number, 0), &number);
  EXPECT_EQ(number, 0xEEEE);
}

TEST(deHexify, GivesEachCharacterItsNibble) {
  const std::map<char, unsigned int> nibbles = {
      {'*', 10}, {'+', 11}, {',', 12}, {'-', 13}, {'.', 14}, {'/', 15},  //
      {'0', 0},  {'1', 1},  {'2', 2},  {'3', 3},  {'4', 4},  {'5', 5},   //
      {'6', 6},  {'7', 7},  {'8', 8},  {'9', 9},                         //
      {':', 10}, {';', 11}, {'<', 12}, {'=', 13}, {'>', 14}, {'?', 15},  //
      {'a', 10}, {'b', 11}, {'c', 12}, {'d', 13}, {'e', 14}, {'f', 15},  //
      {'A', 10}, {'B', 11}, {'C', 12}, {'D', 13}, {'E', 14}, {'F', 15},
  };
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    const auto row = nibbles.find(c);
    const unsigned int nibble = row == nibbles.end() ? 0 : row->second;
    unsigned char byte = 0xEE;
    ASSERT_EQ(deHexify(std::string{c, '0'}, &byte, 1), &byte);
    EXPECT_EQ(byte, nibble << 4) << code;
    ASSERT_EQ(deHexify(std::string{'0', c}, &byte, 1), &byte);
    EXPECT_EQ(byte, nibble) << code;
    unsigned short number = 0xEEEE;
    ASSERT_EQ(deHexify(std::string{'0', c, '0', c}, &number, 1), &number);
    EXPECT_EQ(number, nibble << 8 | nibble) << code;
  }
}

TEST(byteOfDigits, ReadsTwoCharactersAsDeHexifyDoes) {
  for (unsigned int high = 0; high < 256; ++high) {
    for (unsigned int low = 0; low < 256; ++low) {
      unsigned char byte = 0xEE;
      deHexify(std::string{static_cast<char>(high), static_cast<char>(low)}, &byte, 1);
      ASSERT_EQ(detail::byteOfDigits(static_cast<unsigned char>(high), static_cast<unsigned char>(low)), byte)
          << high << ' ' << low;
    }
  }
}

TEST(byteOfDigits, TakesTheFirstForTheHighDigit) {
  EXPECT_EQ(detail::byteOfDigits('a', '1'), 0xA1);
  EXPECT_EQ(detail::byteOfDigits('F', 'f'), 0xFF);
  EXPECT_EQ(detail::byteOfDigits('7', '\0'), 0x70);
  EXPECT_EQ(detail::byteOfDigits('\0', '7'), 0x07);
  EXPECT_EQ(detail::byteOfDigits('g', ' '), 0x00);
}

}  // namespace
}  // namespace qx

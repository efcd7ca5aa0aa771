#include "apps/vso/textValues.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace qx::app {
namespace {

using testing::ElementsAre;

/// What the refusal of a text says.
std::string refusalOf(const std::function<void()>& parse) {
  try {
    parse();
  } catch (const BadArgument& error) {
    return error.what();
  }
  return "taken";
}

TEST(textValues, NumbersAreInTheNotationOfC) {
  EXPECT_EQ(parseNumber("260", 0, 0xFFFF), 260);
  EXPECT_EQ(parseNumber("0x0104", 0, 0xFFFF), 260);
  EXPECT_EQ(parseNumber("0X0104", 0, 0xFFFF), 260);
  EXPECT_EQ(parseNumber("0404", 0, 0xFFFF), 260);
  EXPECT_EQ(parseNumber("0", 0, 0xFFFF), 0);
  EXPECT_EQ(parseNumber("-128", -128, 127), -128);
}

TEST(textValues, WhatIsNoNumberIsRefusedWithItsText) {
  for (const std::string text : {"", "-", "--1", "+1", " 1", "1 ", "1.5", "0x", "x", "-0x-1", "one"}) {
    EXPECT_EQ(refusalOf([&] { parseNumber(text, -9, 9); }), '"' + text + "\" is no number");
  }
  EXPECT_EQ(refusalOf([] { parseNumber("08", 0, 9); }), "\"08\" is no number: a leading 0 stands for octal");
}

TEST(textValues, NumbersBeyondTheirBoundsAreRefusedWithThem) {
  EXPECT_EQ(refusalOf([] { parseNumber("256", 0, 255); }), "\"256\" is out of range, 0..255");
  EXPECT_EQ(refusalOf([] { parseNumber("-1", 0, 0xFFFFFFFF); }), "\"-1\" is out of range, 0..0xffffffff");
  EXPECT_EQ(refusalOf([] { parseNumber("99999999999999999999", 0, 255); }),
            "\"99999999999999999999\" is out of range, 0..255");
}

TEST(textValues, AnAddressHasSixteenDigits) {
  EXPECT_EQ(parseAddress("0011223344556677").toString(), "0011223344556677");
  EXPECT_EQ(parseAddress("aAbBcCdDeEfF0123").toString(), "aabbccddeeff0123");
  EXPECT_EQ(refusalOf([] { parseAddress("001122334455667"); }), "\"001122334455667\" has 15 digits, an address has 16");
  EXPECT_EQ(refusalOf([] { parseAddress("00112233445566778"); }),
            "\"00112233445566778\" has 17 digits, an address has 16");
  EXPECT_EQ(refusalOf([] { parseAddress("001122334455667g"); }),
            "\"001122334455667g\" is not made of hexadecimal digits");
}

TEST(textValues, OctetsAreTwoDigitsEach) {
  EXPECT_THAT(parseOctets("00aB7f", 3), ElementsAre(0x00, 0xAB, 0x7F));
  EXPECT_THAT(parseOctets("", 0), ElementsAre());
  EXPECT_EQ(refusalOf([] { parseOctets("012", 3); }), "\"012\" has an odd number of digits, 3");
  EXPECT_EQ(refusalOf([] { parseOctets("0x12", 3); }), "\"0x12\" is not made of hexadecimal digits");
  EXPECT_EQ(refusalOf([] { parseOctets("01020304", 3); }), "\"01020304\" has 4 bytes, and there is room for 3");
}

TEST(textValues, AQuotedTextIsShortAndObeyedByNoTerminal) {
  EXPECT_EQ(inQuotes("a b"), "\"a b\"");
  EXPECT_EQ(inQuotes("\x1b[31m\n"), "\"\\x1b[31m\\n\"");
  EXPECT_EQ(inQuotes("K\xc3\xbc"
                     "che \xff"),
            "\"K\xc3\xbc"
            "che \\xff\"");
  std::string umlauts;
  for (int i = 0; i < 40; ++i) umlauts += "\xc3\xbc";
  EXPECT_EQ(inQuotes(umlauts), '"' + umlauts + '"');
  EXPECT_EQ(inQuotes(umlauts + "x"), '"' + umlauts + "...\"");
  EXPECT_EQ(inQuotes(std::string(1'000'000, 'x')).size(), 45U);
  EXPECT_EQ(inQuotes(std::string(40, 'x')), '"' + std::string(40, 'x') + '"');
  EXPECT_EQ(inQuotes(std::string(41, 'x')), '"' + std::string(40, 'x') + "...\"");
}

TEST(textValues, ARefusalQuotesTheText) {
  EXPECT_EQ(refusalOf([] { refuse("on", "is no number"); }), "\"on\" is no number");
}

TEST(textValues, BoundsAreInDecimalAsLongAsThatIsRead) {
  EXPECT_EQ(rangeOf(0, 65535), "0..65535");
  EXPECT_EQ(rangeOf(-128, 0x10000), "-128..0x10000");
}

}  // namespace
}  // namespace qx::app

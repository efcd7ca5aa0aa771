#include "qxshared/hexStr.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(hexStr, GivesTheLowBytesMostSignificantFirst) {
  EXPECT_EQ(hexStr(0x0123456789abcdefULL, 8, false), "0123456789abcdef");
  EXPECT_EQ(hexStr(0x0123456789abcdefULL, 3, false), "abcdef");
  EXPECT_EQ(hexStr(0x0123456789abcdefULL, 1, false), "ef");
}

TEST(hexStr, FillsWithZeros) {
  EXPECT_EQ(hexStr(0x5, 1, false), "05");
  EXPECT_EQ(hexStr(0x5, 4, false), "00000005");
  EXPECT_EQ(hexStr(0, 2, false), "0000");
}

TEST(hexStr, PutsThePrefixInFrontWhenAsked) {
  EXPECT_EQ(hexStr(0xbeef, 2, true), "0xbeef");
  EXPECT_EQ(hexStr(0xbeef, 2, false), "beef");
}

TEST(hexStr, GivesNoDigitsForNoBytes) {
  EXPECT_EQ(hexStr(0xff, 0, false), "");
  EXPECT_EQ(hexStr(0xff, 0, true), "0x");
}

TEST(hexStr, HasAtMostEightBytes) {
  EXPECT_EQ(hexStr(~0ULL, 9, false), "ffffffffffffffff");
  EXPECT_EQ(hexStr(1, 4'000'000'000U, true), "0x0000000000000001");
}

}  // namespace
}  // namespace qx

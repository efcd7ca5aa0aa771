#include "qxshared/cleanString.h"

#include <gtest/gtest.h>

#include <string>

namespace qx {
namespace {

TEST(cleanString, LeavesPrintableAsciiAlone) {
  std::string printable;
  for (char c = 0x20; c <= 0x7e; ++c) printable += c;
  EXPECT_EQ(cleanString(printable), printable);
}

TEST(cleanString, LeavesABackslashSingle) { EXPECT_EQ(cleanString("a\\nb"), "a\\nb"); }

TEST(cleanString, NamesLineEndsAndTabs) { EXPECT_EQ(cleanString("a\r\n\tb"), "a\\r\\n\\tb"); }

TEST(cleanString, ShowsOtherBytesAsTwoLowercaseDigits) {
  EXPECT_EQ(cleanString(std::string("\0\x01\x1f\x7f\x80\xc3\xff", 7)), "\\x00\\x01\\x1f\\x7f\\x80\\xc3\\xff");
}

TEST(cleanString, ContinuesBehindAZeroByte) { EXPECT_EQ(cleanString(std::string("a\0b", 3)), "a\\x00b"); }

TEST(cleanString, KeepsAnEmptyTextEmpty) { EXPECT_EQ(cleanString(""), ""); }

}  // namespace
}  // namespace qx

#include "apps/vso/mesh/RecordedFrame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "apps/vso/cleanText.h"
#include "apps/vso/textValues.h"
#include "support/Bytes.h"

namespace qx::app {
namespace {

using testing::StartsWith;

/// What is wrong with a line; empty if nothing is.
std::string complaintOf(const std::string& line) {
  try {
    parseRecordedFrame(line);
  } catch (const BadArgument& error) {
    return error.what();
  }
  return {};
}

std::string bytesOfLine(const std::string& line) {
  const std::optional<RecordedFrame> frame = parseRecordedFrame(line);
  return frame ? test::hex(frame->bytes) : "no frame";
}

const std::string HEAD = "1700000000 0011223344556677 0x1a2b 0x0104 6 ";

TEST(RecordedFrame, HasEveryPartOfItsLine) {
  const std::optional<RecordedFrame> frame =
      parseRecordedFrame("1700000000 0011223344556677 0x1a2b 0x0104 6 18 05 01 00 00 00 10 01");
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->time, 1700000000);
  EXPECT_EQ(frame->source.toString(), "0011223344556677");
  EXPECT_EQ(frame->shortAddress, 0x1A2B);
  EXPECT_EQ(frame->profile, 0x0104);
  EXPECT_EQ(frame->cluster, 6);
  EXPECT_EQ(test::hex(frame->bytes), "18 05 01 00 00 00 10 01");
}

TEST(RecordedFrame, TakesNumbersInCNotation) {
  const std::optional<RecordedFrame> frame = parseRecordedFrame("0x6553f100 00112233445566aA 017 260 0X8031 FFfe");
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->time, 1700000000);
  EXPECT_EQ(frame->source.toString(), "00112233445566aa");
  EXPECT_EQ(frame->shortAddress, 15);
  EXPECT_EQ(frame->profile, 260);
  EXPECT_EQ(frame->cluster, 0x8031);
  EXPECT_EQ(test::hex(frame->bytes), "ff fe");
}

TEST(RecordedFrame, TakesTheLeastAndTheGreatestOfEachNumber) {
  const std::optional<RecordedFrame> least = parseRecordedFrame("0 0000000000000000 0 0 0 00");
  ASSERT_TRUE(least);
  EXPECT_EQ(least->time, 0);
  EXPECT_EQ(least->shortAddress + least->profile + least->cluster, 0);
  const std::optional<RecordedFrame> greatest = parseRecordedFrame("2147483647 ffffffffffffffff 65535 0xFFFF 65535 ff");
  ASSERT_TRUE(greatest);
  EXPECT_EQ(greatest->time, 2147483647);
  EXPECT_EQ(greatest->source.toString(), "ffffffffffffffff");
  EXPECT_EQ(greatest->shortAddress, 0xFFFF);
  EXPECT_EQ(greatest->profile, RecordedFrame::NETWORK_LAYER);
  EXPECT_EQ(greatest->cluster, 0xFFFF);
}

TEST(RecordedFrame, MayComeNow) {
  const std::time_t before = std::time(nullptr);
  const std::optional<RecordedFrame> frame = parseRecordedFrame("now 0011223344556677 1 2 3 04");
  const std::time_t after = std::time(nullptr);
  ASSERT_TRUE(frame);
  EXPECT_GE(frame->time, before);
  EXPECT_LE(frame->time, after);
}

TEST(RecordedFrame, IsNotInABlankLineOrAComment) {
  for (const char* const line : {"", " ", "\t \t", "\r", "# 1700000000 0011223344556677 1 2 3 04", "   # x", "#"}) {
    EXPECT_FALSE(parseRecordedFrame(line)) << line;
  }
}

TEST(RecordedFrame, MayHaveBlanksAnywhereBetweenItsPartsAndBytes) {
  const char* const lines[] = {"0102030a",
                               "01 02 03 0a",
                               "\t01\t02 03\t0a\t",
                               "01 02 03 0a\r",
                               "0 10 20 30 a",
                               "01 02 03 0a # a comment",
                               "01 02 03 0a#a comment"};
  for (const char* const bytes : lines) EXPECT_EQ(bytesOfLine(HEAD + bytes), "01 02 03 0a") << bytes;
  EXPECT_EQ(bytesOfLine("  1700000000\t 0011223344556677  1 \t2\t3   04  "), "04");
}

TEST(RecordedFrame, HoldsUpTo255Bytes) {
  std::string bytes;
  for (int i = 0; i < 255; ++i) bytes += "a5";
  const std::optional<RecordedFrame> frame = parseRecordedFrame(HEAD + bytes);
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->bytes.length_, 255U);
  EXPECT_EQ(frame->bytes.contents[254], 0xA5);
  EXPECT_EQ(complaintOf(HEAD + bytes + "a5"),
            "hex: \"" + bytes.substr(0, 40) + "...\" has 256 bytes, and there is room for 255");
}

TEST(RecordedFrame, SaysWhichPartDoesNotDo) {
  const struct {
    std::string line;
    const char* complaint;
  } rows[] = {
      {"x", "time: \"x\" is no number"},
      {"Now", "time: \"Now\" is no number"},
      {"-1", "time: \"-1\" is out of range, 0..0x7fffffff"},
      {"2147483648", "time: \"2147483648\" is out of range, 0..0x7fffffff"},
      {"99999999999999999999", "time: \"99999999999999999999\" is out of range, 0..0x7fffffff"},
      {"1.5", "time: \"1.5\" is no number"},
      {"089", "time: \"089\" is no number: a leading 0 stands for octal"},
      {"0x", "time: \"0x\" is no number"},
      {"1", "euid: missing"},
      {"1 # 0011223344556677", "euid: missing"},
      {"1 00112233445566", "euid: \"00112233445566\" has 14 digits, an address has 16"},
      {"1 001122334455667788", "euid: \"001122334455667788\" has 18 digits, an address has 16"},
      {"1 0x11223344556677", "euid: \"0x11223344556677\" is not made of hexadecimal digits"},
      {"1 0011223344556677", "short address: missing"},
      {"1 0011223344556677 one", "short address: \"one\" is no number"},
      {"1 0011223344556677 65536", "short address: \"65536\" is out of range, 0..65535"},
      {"1 0011223344556677 -1", "short address: \"-1\" is out of range, 0..65535"},
      {"1 0011223344556677 1", "profile: missing"},
      {"1 0011223344556677 1 0x10000", "profile: \"0x10000\" is out of range, 0..65535"},
      {"1 0011223344556677 1 home", "profile: \"home\" is no number"},
      {"1 0011223344556677 1 2", "cluster: missing"},
      {"1 0011223344556677 1 2 65536", "cluster: \"65536\" is out of range, 0..65535"},
      {"1 0011223344556677 1 2 +3", "cluster: \"+3\" is no number"},
      {"1 0011223344556677 1 2 3", "hex: missing"},
      {"1 0011223344556677 1 2 3  \t", "hex: missing"},
      {"1 0011223344556677 1 2 3 # 04", "hex: missing"},
      {"1 0011223344556677 1 2 3 0", "hex: \"0\" has an odd number of digits, 1"},
      {"1 0011223344556677 1 2 3 01 02 0", "hex: \"01020\" has an odd number of digits, 5"},
      {"1 0011223344556677 1 2 3 0x04", "hex: \"0x04\" is not made of hexadecimal digits"},
      {"1 0011223344556677 1 2 3 01,02", "hex: \"01,02\" is not made of hexadecimal digits"},
  };
  for (const auto& row : rows) EXPECT_EQ(complaintOf(row.line), row.complaint) << row.line;
}

TEST(RecordedFrame, ShowsHostileBytesAsText) {
  EXPECT_EQ(complaintOf("\x1b[31m 1"), "time: \"\\x1b[31m\" is no number");
  EXPECT_EQ(complaintOf(std::string("1\0 0011223344556677 1 2 3 04", 27)), "time: \"1\\x00\" is no number");
  EXPECT_EQ(complaintOf("1 \xff\xfe"), "euid: \"\\xff\\xfe\" is not made of hexadecimal digits");
  EXPECT_EQ(complaintOf(HEAD + "04\v05"), "hex: \"04\\x0b05\" is not made of hexadecimal digits");
  EXPECT_THAT(complaintOf(std::string(100000, '9')), StartsWith("time: \"" + std::string(40, '9') + "...\" is out"));
}

TEST(RecordedFrame, StandsAnyBytesOfALine) {
  std::mt19937 chance(20);
  const std::string whole = HEAD + "18 05 01 00 00 00 10 01 # c";
  for (int i = 0; i < 20000; ++i) {
    std::string line = whole;
    for (int changes = 1 + static_cast<int>(chance() % 3); changes > 0; --changes) {
      line[chance() % line.size()] = static_cast<char>(chance());
    }
    const std::string complaint = complaintOf(line);
    ASSERT_EQ(cleanText(complaint), complaint) << line;
  }
}

}  // namespace
}  // namespace qx::app

#include "apps/vso/decode/FrameLine.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace qx::app {
namespace {

/// What a line says as one text: "profile cluster bytes" in decimal and hexadecimal and " of " the node if that is
/// known, "" for an empty line, or "error: " and the reason.
std::string reading(const std::string& text) {
  const FrameLine line = parseFrameLine(text);
  if (const auto* const frame = std::get_if<ReceivedFrame>(&line)) {
    return std::to_string(frame->profile) + " " + std::to_string(frame->cluster) + " " + test::hex(frame->bytes) +
           (frame->node ? " of " + frame->node->toString() : "");
  }
  if (const auto* const unreadable = std::get_if<UnreadableLine>(&line)) return "error: " + unreadable->reason;
  return "";
}

struct Case {
  const char* name;
  std::string line;
  std::string expected;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

class FrameLineCase : public testing::TestWithParam<Case> {};

TEST_P(FrameLineCase, ReadsAs) { EXPECT_EQ(reading(GetParam().line), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(Words, FrameLineCase,
                         testing::Values(Case{"Hexadecimal", "0x0104 0x0006 180501", "260 6 18 05 01"},
                                         Case{"UppercasePrefixAndDigits", "0XC25F 0X0A 18AbCd", "49759 10 18 ab cd"},
                                         Case{"Decimal", "260 6 180501", "260 6 18 05 01"},
                                         Case{"Octal", "0404 010 180501", "260 8 18 05 01"},
                                         Case{"SmallestAndLargestNumber", "0 65535 00", "0 65535 00"},
                                         Case{"LeadingZerosOfAHexadecimalNumber", "0x0000000104 0x6 00", "260 6 00"},
                                         Case{"BlanksBetweenBytes", "260 6 18 05\t01", "260 6 18 05 01"},
                                         Case{"BlanksBetweenDigits", "260 6 1 80 501", "260 6 18 05 01"},
                                         Case{"OuterBlanks", " \t260  6\t 180501 \t", "260 6 18 05 01"},
                                         Case{"CarriageReturn", "260 6 180501\r", "260 6 18 05 01"},
                                         Case{"CommentBehindTheBytes", "260 6 180501#60 6 zz", "260 6 18 05 01"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Empty, FrameLineCase,
                         testing::Values(Case{"Nothing", "", ""}, Case{"Blanks", " \t\r", ""},
                                         Case{"Comment", "# 260 6 180501", ""}, Case{"IndentedComment", "  # {", ""}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    Json, FrameLineCase,
    testing::Values(
        Case{"Numbers", R"({"profile":260,"cluster":6,"hex":"180501"})", "260 6 18 05 01"},
        Case{"Strings", R"({"profile":"0x0104","cluster":"06","hex":"18 05 01"})", "260 6 18 05 01"},
        Case{"OtherKeys", R"( {"id":[1,{"a":null}],"hex":"00","x":1.5,"cluster":0,"profile":0} )", "0 0 00"},
        Case{"NoBytes", R"({"profile":260,"cluster":6,"hex":""})", "260 6 "},
        Case{"CarriageReturn", "{\"profile\":1,\"cluster\":2,\"hex\":\"00\"}\r", "1 2 00"},
        Case{"NumberSignInAString", R"({"profile":1,"cluster":2,"hex":"00","note":"#1"})", "1 2 00"},
        Case{"Node", R"({"profile":1,"cluster":2,"hex":"00","euid":"00112233445566aA"})", "1 2 00 of 00112233445566aa"},
        Case{"NodeOfZeros", R"({"euid":"0000000000000000","profile":1,"cluster":2,"hex":"00"})",
             "1 2 00 of 0000000000000000"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    UnreadableWords, FrameLineCase,
    testing::Values(
        Case{"WordForANumber", "home 6 00", R"(error: profile: "home" is no number)"},
        Case{"PrefixWithoutDigits", "0x 6 00", R"(error: profile: "0x" is no number)"},
        Case{"SignedNumber", "-1 6 00", R"(error: profile: "-1" is no number)"},
        Case{"PositiveSign", "260 +6 00", R"(error: cluster: "+6" is no number)"},
        Case{"FractionalNumber", "260 6.0 00", R"(error: cluster: "6.0" is no number)"},
        Case{"SecondPrefix", "0x0x1 6 00", R"(error: profile: "0x0x1" is no number)"},
        Case{"SignBehindAPrefix", "0x-1 6 00", R"(error: profile: "0x-1" is no number)"},
        Case{"EightInOctal", "260 0008 00", R"(error: cluster: "0008" is no number: a leading 0 stands for octal)"},
        Case{"ProfileAboveTheRange", "0x10000 6 00", R"(error: profile: "0x10000" is out of range, 0 to 0xFFFF)"},
        Case{"ClusterAboveTheRange", "260 65536 00", R"(error: cluster: "65536" is out of range, 0 to 0xFFFF)"},
        Case{"NumberOfManyDigits", "260 99999999999999999999999 00",
             R"(error: cluster: "99999999999999999999999" is out of range, 0 to 0xFFFF)"},
        Case{"ProfileAlone", "260", "error: cluster: missing"}, Case{"NoBytes", "260 6", "error: hex: missing"},
        Case{"NothingButACommentForBytes", "260 6 # 00", "error: hex: missing"},
        Case{"OddDigits", "260 6 18050", "error: hex: an odd number of digits, 5"},
        Case{"OtherCharacter", "260 6 18:05", R"(error: hex: ":" is no hexadecimal digit)"},
        Case{"PrefixInFrontOfTheBytes", "260 6 0x1805", R"(error: hex: "x" is no hexadecimal digit)"},
        Case{"ZeroByteInTheBytes", std::string("260 6 18\0 05", 12), R"(error: hex: "\x00" is no hexadecimal digit)"},
        Case{"ZeroByteInANumber", std::string("26\0 6 18", 8), R"(error: profile: "26\x00" is no number)"},
        Case{"EscapeSequence", "\x1b[2J 6 18", R"(error: profile: "\x1b[2J" is no number)"},
        Case{"LongWord", std::string(1000, 'a'), "error: profile: \"" + std::string(40, 'a') + "...\" is no number"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    UnreadableJson, FrameLineCase,
    testing::Values(
        Case{"Unfinished", R"({"profile":260)", "error: not JSON from byte 15 of the object on"},
        Case{"TextBehindTheObject", R"({"profile":1,"cluster":2,"hex":"00"} # on)",
             "error: not JSON from byte 38 of the object on"},
        Case{"BadUtf8", "{\"\xff\":1}", "error: not JSON from byte 3 of the object on"},
        Case{"HugeNumber", R"({"profile":1e999})", "error: not JSON: a number that no double holds"},
        Case{"NoProfile", R"({"cluster":6,"hex":"00"})", "error: profile: missing"},
        Case{"NoCluster", R"({"profile":260,"hex":"00"})", "error: cluster: missing"},
        Case{"NoBytes", R"({"profile":260,"cluster":6})", "error: hex: missing"},
        Case{"ProfileOfNull", R"({"profile":null,"cluster":6,"hex":"00"})",
             "error: profile: neither a number nor a string"},
        Case{"ClusterOfTrue", R"({"profile":260,"cluster":true,"hex":"00"})",
             "error: cluster: neither a number nor a string"},
        Case{"FractionalNumber", R"({"profile":260.5,"cluster":6,"hex":"00"})",
             "error: profile: 260.5 is no whole number, 0 to 0xFFFF"},
        Case{"NegativeNumber", R"({"profile":260,"cluster":-1,"hex":"00"})",
             R"(error: cluster: "-1" is out of range, 0 to 0xFFFF)"},
        Case{"NumberAboveTheRange", R"({"profile":65536,"cluster":6,"hex":"00"})",
             R"(error: profile: "65536" is out of range, 0 to 0xFFFF)"},
        Case{"EmptyStringForANumber", R"({"profile":"","cluster":6,"hex":"00"})", R"(error: profile: "" is no number)"},
        Case{"BlankInANumber", R"({"profile":" 260","cluster":6,"hex":"00"})",
             R"(error: profile: " 260" is no number)"},
        Case{"BytesOfANumber", R"({"profile":260,"cluster":6,"hex":1805})", "error: hex: not a string"},
        Case{"OddDigits", R"({"profile":260,"cluster":6,"hex":"180"})", "error: hex: an odd number of digits, 3"},
        Case{"OtherCharacter", R"({"profile":260,"cluster":6,"hex":"1g"})",
             R"(error: hex: "g" is no hexadecimal digit)"},
        Case{"NodeOfANumber", R"({"profile":260,"cluster":6,"hex":"00","euid":11})", "error: euid: not a string"},
        Case{"NodeOfNull", R"({"profile":260,"cluster":6,"hex":"00","euid":null})", "error: euid: not a string"},
        Case{"ShortNode", R"({"profile":260,"cluster":6,"hex":"00","euid":"0011"})",
             R"(error: euid: "0011" is not 16 hexadecimal digits)"},
        Case{"LongNode", R"({"profile":260,"cluster":6,"hex":"00","euid":"00112233445566778"})",
             R"(error: euid: "00112233445566778" is not 16 hexadecimal digits)"},
        Case{"OtherCharacterInANode", R"({"profile":260,"cluster":6,"hex":"00","euid":"001122334455667g"})",
             R"(error: euid: "001122334455667g" is not 16 hexadecimal digits)"}),
    nameOf);

std::string times(unsigned int count, const std::string& text) {
  std::string all;
  for (unsigned int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(FrameLine, TakesAFrameOf255Bytes) {
  const FrameLine line = parseFrameLine("260 6 " + times(255, "a5 "));
  const auto* const frame = std::get_if<ReceivedFrame>(&line);
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->bytes.length_, 255u);
  EXPECT_EQ(frame->bytes.contents[254], 0xA5);
}

TEST(FrameLine, RefusesAFrameOf256Bytes) {
  EXPECT_EQ(reading("260 6 " + times(256, "a5")), "error: hex: 256 bytes, and a frame has at most 255");
  EXPECT_EQ(reading(R"({"profile":260,"cluster":6,"hex":")" + times(256, "a5") + "\"}"),
            "error: hex: 256 bytes, and a frame has at most 255");
}

TEST(FrameLine, RefusesJsonOfManyLevelsWithoutHarm) {
  EXPECT_EQ(reading("{\"a\":" + times(60000, "[")), "error: not JSON from byte 60006 of the object on");
  EXPECT_EQ(reading("{\"a\":" + times(30000, "[") + times(30000, "]") + "}"), "error: profile: missing");
}

TEST(FrameLine, KeepsTheDigitsOfALineThatCannotBeRead) {
  const auto hexOf = [](const std::string& text) {
    const FrameLine line = parseFrameLine(text);
    return std::get<UnreadableLine>(line).hex;
  };
  EXPECT_EQ(hexOf("260 6 18 0"), "18 0");
  EXPECT_EQ(hexOf("home 6 18 05  # comment"), "18 05");
  EXPECT_EQ(hexOf(R"({"hex":"1805"})"), "1805");
  EXPECT_EQ(hexOf("260 6"), std::nullopt);
  EXPECT_EQ(hexOf(R"({"hex":1805,"profile":1,"cluster":2})"), std::nullopt);
  EXPECT_EQ(hexOf("{"), std::nullopt);
}

}  // namespace
}  // namespace qx::app

#include "qxstatsdclient/StatsdDatagram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>

namespace qx::detail {
namespace {

std::string_view textOf(const StatsdDatagram& datagram) { return {datagram.data(), datagram.size()}; }

std::string datagramOf(std::string_view path, std::string_view value) {
  StatsdDatagram datagram;
  EXPECT_TRUE(datagram.add(path, value));
  return std::string(textOf(datagram));
}

TEST(StatsdDatagram, IsEmptyAtFirst) {
  const StatsdDatagram datagram{};
  EXPECT_TRUE(datagram.empty());
  EXPECT_EQ(datagram.size(), 0U);
}

TEST(StatsdDatagram, PutsALineFeedBetweenLinesAndNoneBehindTheLast) {
  StatsdDatagram datagram;
  EXPECT_TRUE(datagram.add("a", "1"));
  EXPECT_TRUE(datagram.add("b", "-2"));
  EXPECT_TRUE(datagram.add("c", "text"));
  EXPECT_EQ(textOf(datagram), "a:1|g\nb:0|g\nb:-2|g\nc:text|s");
}

struct ValueCase {
  std::string value;
  std::string datagram;
};

std::ostream& operator<<(std::ostream& out, const ValueCase& c) { return out << '"' << c.value << '"'; }

class StatsdDatagramValue : public testing::TestWithParam<ValueCase> {};

TEST_P(StatsdDatagramValue, IsAGaugeOnlyIfItIsADecimalNumber) {
  EXPECT_EQ(datagramOf("p", GetParam().value), GetParam().datagram);
}

INSTANTIATE_TEST_SUITE_P(
    Values, StatsdDatagramValue,
    testing::Values(ValueCase{"0", "p:0|g"}, ValueCase{"7", "p:7|g"}, ValueCase{"007", "p:007|g"},
                    ValueCase{"4294967295", "p:4294967295|g"}, ValueCase{"1.5", "p:1.5|g"},
                    ValueCase{"0.000", "p:0.000|g"}, ValueCase{"-1", "p:0|g\np:-1|g"},
                    ValueCase{"-2147483648", "p:0|g\np:-2147483648|g"}, ValueCase{"-0.25", "p:0|g\np:-0.25|g"},
                    ValueCase{"99999999999999999999999999999999999999", "p:99999999999999999999999999999999999999|g"},
                    ValueCase{"+5", "p:+5|s"}, ValueCase{"1e3", "p:1e3|s"}, ValueCase{"1E3", "p:1E3|s"},
                    ValueCase{"5.", "p:5.|s"}, ValueCase{".5", "p:.5|s"}, ValueCase{"-.5", "p:-.5|s"},
                    ValueCase{"-5.", "p:-5.|s"}, ValueCase{"-", "p:-|s"}, ValueCase{"--1", "p:--1|s"},
                    ValueCase{"-+1", "p:-+1|s"}, ValueCase{"1-", "p:1-|s"}, ValueCase{".", "p:.|s"},
                    ValueCase{"1.2.3", "p:1.2.3|s"}, ValueCase{"1,5", "p:1,5|s"}, ValueCase{"0x10", "p:0x10|s"},
                    ValueCase{"1 ", "p:1 |s"}, ValueCase{" 1", "p: 1|s"}, ValueCase{"nan", "p:nan|s"},
                    ValueCase{"inf", "p:inf|s"}, ValueCase{"-inf", "p:-inf|s"}, ValueCase{"text", "p:text|s"},
                    ValueCase{"1\n", "p:1_|s"}, ValueCase{std::string("1\0", 2), "p:1_|s"},
                    ValueCase{"1|g\nforged:1", "p:1_g_forged_1|s"}, ValueCase{"\xD9\xA1", "p:\xD9\xA1|s"}));

TEST(StatsdDatagram, KeepsEveryByteWithinThePathAndTheValue) {
  for (int code = 0; code < 256; ++code) {
    const char byte = static_cast<char>(code);
    const bool breaksLines = code <= 0x1F || code == 0x7F || byte == ':' || byte == '|' || byte == '@' || byte == '#';
    const std::string shown(1, breaksLines ? '_' : byte);
    EXPECT_EQ(datagramOf(std::string("a") + byte + "b", "1"), "a" + shown + "b:1|g") << "byte " << code;
    EXPECT_EQ(datagramOf("p", std::string("a") + byte + "b"), "p:a" + shown + "b|s") << "byte " << code;
  }
}

TEST(StatsdDatagram, HoldsOneLineOfFourteenHundredAndThirtyTwoBytes) {
  StatsdDatagram datagram;
  const std::string path(1432 - 4, 'p');
  EXPECT_FALSE(datagram.add(path + "p", "1"));
  EXPECT_TRUE(datagram.empty());
  EXPECT_TRUE(datagram.add(path, "1"));
  EXPECT_EQ(textOf(datagram), path + ":1|g");
  EXPECT_EQ(datagram.size(), 1432U);
}

TEST(StatsdDatagram, CountsTheLineFeedWhenALineMustFit) {
  StatsdDatagram datagram;
  ASSERT_TRUE(datagram.add("a", "1"));
  const std::string path(1432 - 5 - 5, 'p');
  EXPECT_FALSE(datagram.add(path + "p", "1"));
  EXPECT_EQ(textOf(datagram), "a:1|g");
  EXPECT_TRUE(datagram.add(path, "1"));
  EXPECT_EQ(datagram.size(), 1432U);
}

TEST(StatsdDatagram, TakesBothLinesOfANegativeGaugeOrNone) {
  StatsdDatagram datagram;
  ASSERT_TRUE(datagram.add("a", "1"));
  // The first line fits, the second does not.
  const std::string path(900, 'p');
  EXPECT_FALSE(datagram.add(path, "-1"));
  EXPECT_EQ(textOf(datagram), "a:1|g");
  EXPECT_TRUE(datagram.add("b", "-1"));
  EXPECT_EQ(textOf(datagram), "a:1|g\nb:0|g\nb:-1|g");
}

TEST(StatsdDatagram, RefusesAPathOrAValueOfManyDatagrams) {
  StatsdDatagram datagram;
  EXPECT_FALSE(datagram.add(std::string(1 << 20, 'p'), "1"));
  EXPECT_FALSE(datagram.add("p", std::string(1 << 20, 'v')));
  EXPECT_FALSE(datagram.add("p", std::string(1 << 20, '1')));
  EXPECT_TRUE(datagram.empty());
}

TEST(StatsdDatagram, StartsAnewOnceCleared) {
  StatsdDatagram datagram;
  ASSERT_TRUE(datagram.add("a", "1"));
  datagram.clear();
  EXPECT_TRUE(datagram.empty());
  ASSERT_TRUE(datagram.add("b", "2"));
  EXPECT_EQ(textOf(datagram), "b:2|g");
}

}  // namespace
}  // namespace qx::detail

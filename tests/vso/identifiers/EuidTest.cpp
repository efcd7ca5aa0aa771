#include "vso/identifiers/Euid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>

namespace qx {
namespace {

using testing::ElementsAre;

constexpr unsigned char BYTES[] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};

Euid euid(const std::string& hex) {
  Euid made;
  made = hex;
  return made;
}

TEST(Euid, IsEightBytesWithoutVirtualOperations) {
  static_assert(sizeof(Euid) == 8);
  static_assert(!std::is_polymorphic_v<Euid>);
  EXPECT_EQ(Euid().length(), 8U);
  EXPECT_EQ(euid("0011223344556677").length(), 8U);
}

TEST(Euid, IsAllZeroByDefaultAndFromNull) {
  EXPECT_EQ(Euid().toString(), "0000000000000000");
  EXPECT_EQ(Euid(static_cast<const unsigned char*>(nullptr)).toString(), "0000000000000000");
}

TEST(Euid, TakesBytesWithoutChangeOfOrder) { EXPECT_EQ(Euid(BYTES).toString(), "0011223344556677"); }

TEST(Euid, GivesItsBytesInDisplayOrder) {
  const Euid id(BYTES);
  EXPECT_THAT(std::vector<unsigned char>(id.cArray(), id.cArray() + id.length()),
              ElementsAre(0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77));
}

TEST(Euid, CopiesExactlyEightBytesOut) {
  unsigned char out[10] = {};
  out[0] = out[9] = 0xEE;
  Euid(BYTES).copy(out + 1);
  EXPECT_THAT(out, ElementsAre(0xEE, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0xEE));
}

TEST(Euid, CopiesByConstructionAndAssignment) {
  const Euid original(BYTES);
  const Euid constructed(original);
  Euid assigned;
  EXPECT_EQ(&(assigned = original), &assigned);
  EXPECT_EQ(constructed.toString(), "0011223344556677");
  EXPECT_EQ(assigned.toString(), "0011223344556677");
}

TEST(Euid, ReadsTextIntoItsLeadingBytes) {
  const std::map<std::string, std::string> expected = {
      {"0011223344556677", "0011223344556677"}, {"1234", "1234000000000000"},
      {"12345678901234", "1234567890123400"},   {"", "0000000000000000"},
      {"ABCDEFabcdef", "abcdefabcdef0000"},     {":0", "a000000000000000"},
      {"zz11 2", "0011020000000000"},
  };
  for (const auto& [text, id] : expected) EXPECT_EQ(euid(text).toString(), id) << '"' << text << '"';
}

TEST(Euid, IsAllZeroAfterTextOfOddLength) {
  EXPECT_EQ(euid("abc").toString(), "0000000000000000");
  EXPECT_EQ(euid("112233445566778").toString(), "0000000000000000");
}

TEST(Euid, IsAllZeroAfterTextOfMoreThanSixteenCharacters) {
  // 258 to 272 characters are let through by the text reader's own test of the length.
  for (const std::size_t length : {17, 18, 32, 255, 256, 258, 270, 272, 274, 512, 65536, 65538}) {
    EXPECT_EQ(euid(std::string(length, '1')).toString(), "0000000000000000") << length;
  }
}

TEST(Euid, ForgetsItsBytesWhenTextIsAssigned) {
  Euid id = Euid::ALL;
  EXPECT_EQ(&(id = std::string("1234")), &id);
  EXPECT_EQ(id.toString(), "1234000000000000");
  id = std::string("abc");
  EXPECT_EQ(id.toString(), "0000000000000000");
}

TEST(Euid, ComparesWithTextAsIfItWasAssigned) {
  const Euid id(BYTES);
  EXPECT_TRUE(id == std::string("0011223344556677"));
  EXPECT_FALSE(id == std::string("0011223344556678"));
  EXPECT_FALSE(id == std::string("1011223344556677"));
  EXPECT_TRUE(euid("ABCD") == std::string("abcd000000000000"));
  EXPECT_TRUE(Euid() == std::string("abc"));
  EXPECT_TRUE(Euid() == std::string(258, '1'));
}

TEST(Euid, ComparesAllBits) {
  const Euid id(BYTES);
  for (unsigned int bit = 0; bit < 64; ++bit) {
    unsigned char bytes[8];
    id.copy(bytes);
    bytes[bit / 8] = static_cast<unsigned char>(bytes[bit / 8] ^ 1U << bit % 8);
    EXPECT_FALSE(id == Euid(bytes)) << bit;
    EXPECT_TRUE(id != Euid(bytes)) << bit;
  }
  EXPECT_TRUE(id == Euid(BYTES));
  EXPECT_FALSE(id != Euid(BYTES));
}

TEST(Euid, OrdersByTheLastByteFirst) {
  const Euid lowerInByte7 = euid("0200000000000001");
  const Euid higherInByte7 = euid("0100000000000002");
  EXPECT_TRUE(lowerInByte7 < higherInByte7);
  EXPECT_FALSE(higherInByte7 < lowerInByte7);
}

TEST(Euid, OrdersAsAnUnsignedNumber) {
  EXPECT_TRUE(euid("ffffffffffffff7f") < euid("0000000000000080"));
  EXPECT_FALSE(euid("0000000000000080") < euid("ffffffffffffff7f"));
  EXPECT_FALSE(Euid(BYTES) < Euid(BYTES));
}

TEST(Euid, OrdersByTheFirstByteLast) {
  EXPECT_TRUE(euid("0100000000000005") < euid("0200000000000005"));
  EXPECT_FALSE(euid("0200000000000005") < euid("0100000000000005"));
}

TEST(Euid, IsAKeyOfAnOrderedMap) {
  std::map<Euid, int> map;
  map[euid("0100000000000002")] = 2;
  map[euid("0200000000000001")] = 1;
  map[euid("0100000000000002")] += 20;
  ASSERT_EQ(map.size(), 2U);
  EXPECT_EQ(map.begin()->second, 1);
  EXPECT_EQ(map.rbegin()->second, 22);
}

TEST(Euid, SwapsItsBytes) {
  Euid id(BYTES);
  id.byteSwap();
  EXPECT_EQ(id.toString(), "7766554433221100");
  id.byteSwap();
  EXPECT_EQ(id.toString(), "0011223344556677");
}

TEST(Euid, IncrementsAsDisplayed) {
  const std::map<std::string, std::string> expected = {
      {"0000000000000000", "0000000000000001"}, {"00000000000000ff", "0000000000000100"},
      {"00000000ffffffff", "0000000100000000"}, {"0011223344556677", "0011223344556678"},
      {"7fffffffffffffff", "8000000000000000"}, {"fffffffffffffffe", "ffffffffffffffff"},
      {"00ffffffffffffff", "0100000000000000"},
  };
  for (const auto& [before, after] : expected) {
    Euid id = euid(before);
    id++;
    EXPECT_EQ(id.toString(), after) << before;
  }
}

TEST(Euid, IncrementsAllOnesToZero) {
  Euid id = Euid::ALL;
  id++;
  EXPECT_EQ(id.toString(), "0000000000000000");
}

TEST(Euid, HashesAllItsBytes) {
  // Worked out apart from this code, from the definition of the hash.
  const std::map<std::string, std::uint32_t> expected = {
      {"0000000000000000", 0xE6546B64}, {"ffffffffffffffff", 0x80C22A84}, {"0011223344556677", 0xB0B54A15},
      {"7766554433221100", 0xA13B5179}, {"0100000000000000", 0x26CF0576}, {"0000000100000000", 0xFF44F9DF},
      {"0000000000000001", 0xFD80ADDB}, {"0000000000000080", 0x9C5493D7}, {"000d6f0000123456", 0xAEC50BB5},
      {"8000000000000000", 0x13B72716}, {"00000000ffffffff", 0x3047F12F}, {"ffffffff00000000", 0x145EE0D5},
  };
  for (const auto& [text, hash] : expected) EXPECT_EQ(euid(text).hash(), hash) << text;
}

TEST(Euid, PrintsSixteenLowercaseDigits) {
  std::ostringstream out;
  out << euid("00112233445566FF") << ' ' << Euid::INVALID;
  EXPECT_EQ(out.str(), "00112233445566ff ffffffffffffffff");
}

TEST(Euid, PrintsTheSameWhateverTheStreamWasSetTo) {
  std::ostringstream out;
  out << std::uppercase << std::showbase << std::left << std::oct << std::setfill('*') << std::setw(30)
      << euid("00112233445566FF") << '|';
  EXPECT_EQ(out.str(), "00112233445566ff|");
}

TEST(Euid, PutsTheStreamBackToDecimalAndBlank) {
  std::ostringstream out;
  out << std::hex << std::setfill('0') << Euid() << std::setw(4) << 255;
  EXPECT_EQ(out.str(), "0000000000000000 255");
}

TEST(Euid, IsAppendedToAStringInPlace) {
  std::string text = "id ";
  std::string& result = text + Euid(BYTES);
  EXPECT_EQ(&result, &text);
  EXPECT_EQ(text, "id 0011223344556677");
}

TEST(Euid, ConstantsHaveAllBitsSetAndCannotBeToldApart) {
  EXPECT_EQ(Euid::INVALID.toString(), "ffffffffffffffff");
  EXPECT_EQ(Euid::ALL.toString(), "ffffffffffffffff");
  EXPECT_TRUE(Euid::INVALID == Euid::ALL);
  EXPECT_FALSE(Euid::INVALID != Euid::ALL);
}

}  // namespace
}  // namespace qx

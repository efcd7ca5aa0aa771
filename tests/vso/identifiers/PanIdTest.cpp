#include "vso/identifiers/PanId.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace qx {
namespace {

using testing::ElementsAre;

constexpr unsigned char BYTES[] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};

std::string textOf(const PanId& id) { return id; }

TEST(PanId, IsEightBytesWithoutVirtualOperations) {
  static_assert(sizeof(PanId) == 8);
  static_assert(!std::is_polymorphic_v<PanId>);
  EXPECT_EQ(PanId(BYTES).length(), 8U);
}

TEST(PanId, IsAllZeroByDefaultAndFromNull) {
  EXPECT_EQ(textOf(PanId()), "0000000000000000");
  EXPECT_EQ(textOf(PanId(static_cast<const unsigned char*>(nullptr))), "0000000000000000");
}

TEST(PanId, TakesBytesInTheOrderOfArrival) {
  const PanId id(BYTES);
  EXPECT_EQ(textOf(id), "0011223344556677");
  EXPECT_THAT(std::vector<unsigned char>(id.cArray(), id.cArray() + id.length()),
              ElementsAre(0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77));
}

TEST(PanId, CopiesExactlyEightBytesOut) {
  unsigned char out[10] = {};
  out[0] = out[9] = 0xEE;
  PanId(BYTES).copy(out + 1);
  EXPECT_THAT(out, ElementsAre(0xEE, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0xEE));
}

TEST(PanId, CopiesByConstructionAndAssignment) {
  const PanId original(BYTES);
  const PanId constructed(original);
  PanId assigned;
  EXPECT_EQ(&(assigned = original), &assigned);
  EXPECT_EQ(textOf(constructed), "0011223344556677");
  EXPECT_EQ(textOf(assigned), "0011223344556677");
}

TEST(PanId, ReadsTextIntoItsLeadingBytes) {
  const std::map<std::string, std::string> expected = {
      {"0011223344556677", "0011223344556677"}, {"1234", "1234000000000000"},
      {"12345678901234", "1234567890123400"},   {"", "0000000000000000"},
      {"ABCDEFabcdef", "abcdefabcdef0000"},     {"zz00000000000000", "0000000000000000"},
      {"zz110000000000f?", "00110000000000ff"}, {"abc", "0000000000000000"},
      {"112233445566778", "0000000000000000"},
  };
  for (const auto& [text, id] : expected) {
    PanId assigned = PanId::INVALID;
    assigned = text;
    EXPECT_EQ(textOf(PanId(text)), id) << '"' << text << '"';
    EXPECT_EQ(textOf(assigned), id) << '"' << text << '"';
  }
}

TEST(PanId, IsAllZeroAfterTextOfMoreThanSixteenCharacters) {
  // 258 to 272 characters are let through by the text reader's own test of the length.
  for (const std::size_t length : {17, 18, 32, 255, 256, 258, 270, 272, 274, 512, 65536, 65538}) {
    const std::string text(length, '1');
    PanId assigned = PanId::INVALID;
    assigned = text;
    EXPECT_EQ(textOf(PanId(text)), "0000000000000000") << length;
    EXPECT_EQ(textOf(assigned), "0000000000000000") << length;
  }
}

TEST(PanId, TakesOneValueForAllBytes) {
  PanId id(BYTES);
  EXPECT_EQ(&(id = static_cast<unsigned char>(0x41)), &id);
  EXPECT_EQ(textOf(id), "4141414141414141");
}

TEST(PanId, ComparesAllBits) {
  const PanId id(BYTES);
  for (unsigned int bit = 0; bit < 64; ++bit) {
    unsigned char bytes[8];
    id.copy(bytes);
    bytes[bit / 8] = static_cast<unsigned char>(bytes[bit / 8] ^ 1U << bit % 8);
    EXPECT_FALSE(id == PanId(bytes)) << bit;
    EXPECT_TRUE(id != PanId(bytes)) << bit;
  }
  EXPECT_TRUE(id == PanId(BYTES));
  EXPECT_FALSE(id != PanId(BYTES));
}

TEST(PanId, OrdersByTheFirstByteFirst) {
  const PanId higherInByte0(std::string("0200000000000001"));
  const PanId lowerInByte0(std::string("0100000000000002"));
  EXPECT_TRUE(lowerInByte0 < higherInByte0);
  EXPECT_FALSE(higherInByte0 < lowerInByte0);
  EXPECT_TRUE(higherInByte0 > lowerInByte0);
  EXPECT_FALSE(lowerInByte0 > higherInByte0);
}

TEST(PanId, OrdersByTheLastByteLast) {
  const PanId lower(std::string("0500000000000001"));
  const PanId higher(std::string("0500000000000002"));
  EXPECT_TRUE(lower < higher);
  EXPECT_TRUE(higher > lower);
}

TEST(PanId, OrdersUnsignedBytes) {
  const PanId lower(std::string("7fffffffffffffff"));
  const PanId higher(std::string("8000000000000000"));
  EXPECT_TRUE(lower < higher);
  EXPECT_TRUE(higher > lower);
}

TEST(PanId, IsNeitherBelowNorAboveItself) {
  const PanId id(BYTES);
  EXPECT_FALSE(id < PanId(BYTES));
  EXPECT_FALSE(id > PanId(BYTES));
}

TEST(PanId, EqualsANumberThatEveryByteEquals) {
  PanId id;
  id = static_cast<unsigned char>(0x41);
  EXPECT_TRUE(id == 0x41U);
  EXPECT_FALSE(id != 0x41U);
  EXPECT_FALSE(id == 0x42U);
  EXPECT_TRUE(id != 0x42U);
  EXPECT_TRUE(PanId() == 0U);
  EXPECT_TRUE(PanId::INVALID == 0xFFU);
}

TEST(PanId, EqualsNoNumberAbove255) {
  PanId id;
  id = static_cast<unsigned char>(0x41);
  for (const unsigned int value : {0x141U, 0x4141U, 0x41414141U, 0x80000041U}) {
    EXPECT_FALSE(id == value) << value;
    EXPECT_TRUE(id != value) << value;
  }
  EXPECT_FALSE(PanId::INVALID == 0xFFFFFFFFU);
  EXPECT_FALSE(PanId() == 0x100U);
}

TEST(PanId, DiffersFromANumberByASingleByte) {
  for (unsigned int at = 0; at < 8; ++at) {
    unsigned char bytes[8] = {0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41};
    bytes[at] = 0x40;
    EXPECT_FALSE(PanId(bytes) == 0x41U) << at;
    EXPECT_TRUE(PanId(bytes) != 0x41U) << at;
  }
}

TEST(PanId, ComparesWithTextAsIfItWasAssigned) {
  const PanId id(BYTES);
  EXPECT_TRUE(id == std::string("0011223344556677"));
  EXPECT_FALSE(id == std::string("0011223344556678"));
  EXPECT_TRUE(PanId(std::string("ABCD")) == std::string("abcd"));
  EXPECT_TRUE(PanId() == std::string("abc"));
  EXPECT_TRUE(PanId() == std::string(258, '1'));
}

TEST(PanId, SwapsItsBytes) {
  PanId id(BYTES);
  id.byteSwap();
  EXPECT_EQ(textOf(id), "7766554433221100");
  id.byteSwap();
  EXPECT_EQ(textOf(id), "0011223344556677");
}

unsigned long long microseconds() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec * 1000000ULL + now.tv_nsec / 1000;
}

TEST(PanId, IsDrawnFromTheGeneratorSeededWithTheMicrosecondsOfTheClock) {
  PanId id;
  const unsigned long long before = microseconds();
  id.randomize();
  const unsigned long long after = microseconds();
  const int next = std::rand();

  bool found = false;
  for (unsigned long long seed = before; seed <= after && !found; ++seed) {
    std::srand(static_cast<unsigned int>(seed));
    unsigned char bytes[8];
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(std::rand());
    found = id == PanId(bytes) && next == std::rand();
  }
  EXPECT_TRUE(found) << textOf(id) << " is of no seed from " << before << " to " << after;
}

TEST(PanId, PrintsSixteenLowercaseDigits) {
  std::ostringstream out;
  out << PanId(std::string("00112233445566FF")) << ' ' << PanId::INVALID;
  EXPECT_EQ(out.str(), "00112233445566ff ffffffffffffffff");
}

TEST(PanId, PrintsTheSameWhateverTheStreamWasSetTo) {
  std::ostringstream out;
  out << std::uppercase << std::showbase << std::left << std::oct << std::setfill('*') << std::setw(30)
      << PanId(std::string("00112233445566FF")) << '|';
  EXPECT_EQ(out.str(), "00112233445566ff|");
}

TEST(PanId, LeavesTheStreamInHexadecimalWithZeroFill) {
  std::ostringstream out;
  out << PanId() << std::setw(4) << 255;
  EXPECT_EQ(out.str(), "000000000000000000ff");
}

TEST(PanId, InvalidHasAllBitsSet) {
  EXPECT_EQ(textOf(PanId::INVALID), "ffffffffffffffff");
  EXPECT_TRUE(PanId::INVALID == std::string("FFFFFFFFFFFFFFFF"));
}

}  // namespace
}  // namespace qx

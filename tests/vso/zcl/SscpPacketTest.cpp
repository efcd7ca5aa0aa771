#include "vso/zcl/SscpPacket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/Bytes.h"

namespace qx {
namespace {

using test::hex;
using testing::Each;

TEST(SscpPacket, HoldsItsFieldsMostSignificantByteFirst) {
  const SscpPacket packet(0x0102, 0x0304, 5, 6);
  EXPECT_EQ(hex(packet), "01 02 03 04 05 06");
  EXPECT_EQ(packet.length_, 6U);
  EXPECT_EQ(packet.announceWindow(), 0x0102);
  EXPECT_EQ(packet.mtorrPeriod(), 0x0304);
  EXPECT_EQ(packet.apCount(), 5);
  EXPECT_EQ(packet.optionsType(), 6);
}

TEST(SscpPacket, HoldsZerosBehindItsFields) {
  const SscpPacket packet(0xFFFF, 0xFFFF, 0xFF, 0xFF);
  EXPECT_EQ(hex(packet), "ff ff ff ff ff ff");
  EXPECT_THAT(std::vector<unsigned char>(packet.contents + 6, packet.contents + 255), Each(0));
}

TEST(SscpPacket, IsFilled) {
  for (const unsigned char fill : {0x00, 0x01, 0x7F, 0xEE, 0xFF}) {
    const SscpPacket packet(fill);
    EXPECT_THAT(packet.contents, Each(fill));
    EXPECT_EQ(packet.length_, 6U);
    EXPECT_EQ(packet.announceWindow(), fill * 0x101);
    EXPECT_EQ(packet.mtorrPeriod(), fill * 0x101);
    EXPECT_EQ(packet.apCount(), fill);
    EXPECT_EQ(packet.optionsType(), fill);
  }
}

TEST(SscpPacket, WritesEachFieldAtItsPlaceAlone) {
  struct {
    void (*write)(SscpPacket&);
    const char* expected;
  } const rows[] = {
      {[](SscpPacket& packet) { packet.announceWindow(0x1234); }, "12 34 ee ee ee ee"},
      {[](SscpPacket& packet) { packet.mtorrPeriod(0xFE01); }, "ee ee fe 01 ee ee"},
      {[](SscpPacket& packet) { packet.apCount(0x80); }, "ee ee ee ee 80 ee"},
      {[](SscpPacket& packet) { packet.optionsType(0x7F); }, "ee ee ee ee ee 7f"},
  };
  for (const auto& row : rows) {
    SscpPacket packet(0xEE);
    row.write(packet);
    EXPECT_EQ(hex(packet), row.expected);
    EXPECT_THAT(std::vector<unsigned char>(packet.contents + 6, packet.contents + 255), Each(0xEE));
  }
}

TEST(SscpPacket, TakesTheLastWrite) {
  SscpPacket packet(1, 2, 3, 4);
  packet.announceWindow(0x0506);
  packet.announceWindow(0x0708);
  packet.apCount(9);
  EXPECT_EQ(packet.announceWindow(), 0x0708);
  EXPECT_EQ(hex(packet), "07 08 00 02 09 04");
}

TEST(SscpPacket, ReadsBackEveryNumber) {
  SscpPacket packet(0);
  for (unsigned int value = 0; value <= 0xFFFF; ++value) {
    packet.announceWindow(static_cast<unsigned short>(value));
    packet.mtorrPeriod(static_cast<unsigned short>(~value));
    ASSERT_EQ(packet.announceWindow(), value);
    ASSERT_EQ(packet.mtorrPeriod(), static_cast<unsigned short>(~value));
  }
}

}  // namespace
}  // namespace qx

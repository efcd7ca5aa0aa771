#include "vso/zdo/ZdoNetworkUpdateResponse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <type_traits>
#include <vector>

#include "Frames.h"
#include "support/Bytes.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using testing::Each;
using testing::ElementsAre;

constexpr signed char UNTOUCHED = 77;

/// What a caller's sixteen levels become, with two more behind them, which are not his.
std::vector<int> levelsOf(const ZdoNetworkUpdateResponse& response) {
  std::array<signed char, 18> levels;
  levels.fill(UNTOUCHED);
  response.setEnergyLevels(levels.data());
  EXPECT_EQ(levels[16], UNTOUCHED);
  EXPECT_EQ(levels[17], UNTOUCHED);
  return {levels.begin(), levels.begin() + 16};
}

std::vector<int> levelsOf(const std::string& frame) { return levelsOf(ZdoNetworkUpdateResponse(bytesOf(frame))); }

/// A response with a mask and the energy values 0x04, 0x08 and so on, which stand for -99, -98 and so on.
ZdoNetworkUpdateResponse scanOf(unsigned int mask) {
  U255Buff<unsigned char> frame = bytes({
      0x9C,                                    // sequence number
      0x00,                                    // status
      static_cast<unsigned char>(mask),        // scanned channels
      static_cast<unsigned char>(mask >> 8),   //
      static_cast<unsigned char>(mask >> 16),  //
      static_cast<unsigned char>(mask >> 24),  //
      0x34, 0x12,                              // transmissions
      0x02, 0x00,                              // failures
      0x10,                                    // number of energy values
  });
  for (unsigned int i = 0; i < 16; ++i) frame.contents[11 + i] = static_cast<unsigned char>(4 * (i + 1));
  frame.length_ = 27;
  return ZdoNetworkUpdateResponse(frame);
}

TEST(ZdoNetworkUpdateResponse, ReadsItsHeader) {
  const ZdoNetworkUpdateResponse response(bytes({
      0x9C,                    // sequence number
      0x84,                    // status
      0x04, 0x03, 0x02, 0x01,  // scanned channels
      0x34, 0x12,              // transmissions
      0x78, 0x56,              // failures
      0x10,                    // number of energy values
  }));
  EXPECT_EQ(hex(response), "9c 84 04 03 02 01 34 12 78 56 10");
  EXPECT_EQ(response.seqNum(), 0x9C);
  EXPECT_EQ(response.status(), 132);
  EXPECT_EQ(response.scannedChannels(), 0x01020304U);
  EXPECT_EQ(response.transmissions(), 0x1234);
  EXPECT_EQ(response.failures(), 0x5678);
  EXPECT_EQ(response.energyCount(), 16);
}

TEST(ZdoNetworkUpdateResponse, ReadsNumbersOfAllOnes) {
  const ZdoNetworkUpdateResponse response(bytesOf("9c 00 ff ff ff ff ff ff ff ff ff"));
  EXPECT_EQ(response.scannedChannels(), 0xFFFFFFFFU);
  EXPECT_EQ(response.transmissions(), 0xFFFF);
  EXPECT_EQ(response.failures(), 0xFFFF);
  EXPECT_EQ(response.energyCount(), 255);
}

TEST(ZdoNetworkUpdateResponse, ReadsZerosByDefault) {
  const ZdoNetworkUpdateResponse response;
  EXPECT_EQ(response.status(), 134);
  EXPECT_EQ(response.scannedChannels(), 0U);
  EXPECT_EQ(response.transmissions(), 0);
  EXPECT_EQ(response.failures(), 0);
  EXPECT_EQ(response.energyCount(), 0);
  EXPECT_THAT(levelsOf(response), Each(UNTOUCHED));
}

TEST(ZdoNetworkUpdateResponse, ReadsZerosWhereAReceivedFrameEnds) {
  const U255Buff<unsigned char> whole = bytesOf("9c 84 01 02 03 04 05 06 07 08 09");
  for (unsigned int length = 0; length <= 11; ++length) {
    const ZdoNetworkUpdateResponse response(U255Buff<unsigned char>(whole.contents, length));
    const auto at = [length](unsigned int offset) { return offset < length ? offset - 1 : 0U; };
    EXPECT_EQ(response.scannedChannels(), at(2) + 0x100 * at(3) + 0x10000 * at(4) + 0x1000000 * at(5)) << length;
    EXPECT_EQ(response.transmissions(), at(6) + 0x100 * at(7)) << length;
    EXPECT_EQ(response.failures(), at(8) + 0x100 * at(9)) << length;
    EXPECT_EQ(response.energyCount(), at(10)) << length;
  }
}

TEST(ZdoNetworkUpdateResponse, ReadsWhateverTheLength) {
  ZdoNetworkUpdateResponse response = scanOf(0x0800);
  for (const unsigned int length : {0U, 1U, 2U, 5U, 10U, 11U, 255U, 256U, 0xFFFFFFFFU}) {
    response.length_ = length;
    EXPECT_EQ(response.scannedChannels(), 0x0800U) << length;
    EXPECT_EQ(response.transmissions(), 0x1234) << length;
    EXPECT_EQ(response.failures(), 2) << length;
    EXPECT_EQ(response.energyCount(), 16) << length;
    EXPECT_EQ(levelsOf(response)[0], -99) << length;
  }
}

TEST(ZdoNetworkUpdateResponse, TakesOverAResponseWithItsCommand) {
  const ZdoNetworkUpdateResponse response(ZdoResponse(0x8038, bytesOf("9c 81 00 08")));
  EXPECT_EQ(hex(response), "9c 81 00 08");
  EXPECT_EQ(response.commandId(), 0x8038);
  EXPECT_EQ(response.scannedChannels(), 0x0800U);
  EXPECT_EQ(ZdoNetworkUpdateResponse(ZdoResponse(0x1234, bytesOf("9c"))).commandId(), 0x1234);
}

TEST(ZdoNetworkUpdateResponse, ConvertsEnergyToStrength) {
  const ZdoNetworkUpdateResponse response;
  static_assert(std::is_same_v<decltype(response.radioConvertEdToRssi(0)), signed char>);
  EXPECT_EQ(response.radioConvertEdToRssi(0), -100);
  EXPECT_EQ(response.radioConvertEdToRssi(3), -100);
  EXPECT_EQ(response.radioConvertEdToRssi(4), -99);
  EXPECT_EQ(response.radioConvertEdToRssi(251), -38);
  EXPECT_EQ(response.radioConvertEdToRssi(252), -37);
  EXPECT_EQ(response.radioConvertEdToRssi(255), -37);
  for (int energy = 0; energy < 256; ++energy) {
    EXPECT_EQ(response.radioConvertEdToRssi(static_cast<unsigned char>(energy)), energy / 4 - 100) << energy;
  }
}

TEST(ZdoNetworkUpdateResponse, SetsTheLevelsOfScannedChannelsAlone) {
  EXPECT_THAT(levelsOf("9c 00 "        // sequence number, status
                       "00 28 00 00 "  // channels 11 and 13
                       "00 00 00 00 "  // transmissions, failures
                       "02 00 ff"),    // two energy values
              ElementsAre(-100, 77, -37, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77, 77));
}

TEST(ZdoNetworkUpdateResponse, SetsTheLevelsOfTheWholeBand) {
  EXPECT_THAT(levelsOf(scanOf(0x07FFF800)),
              ElementsAre(-99, -98, -97, -96, -95, -94, -93, -92, -91, -90, -89, -88, -87, -86, -85, -84));
}

TEST(ZdoNetworkUpdateResponse, SetsTheLevelOfEachChannel) {
  for (unsigned int channel = 11; channel <= 26; ++channel) {
    std::vector<int> expected(16, UNTOUCHED);
    expected[channel - 11] = -99;
    EXPECT_EQ(levelsOf(scanOf(1U << channel)), expected) << channel;
  }
}

TEST(ZdoNetworkUpdateResponse, TakesOneValueForEachScannedChannelFromTheLowestUp) {
  for (unsigned int channels = 0; channels < 0x10000; channels += 7) {
    std::vector<int> expected(16, UNTOUCHED);
    int level = -99;
    for (unsigned int i = 0; i < 16; ++i) {
      if ((channels & 1U << i) != 0) expected[i] = level++;
    }
    EXPECT_EQ(levelsOf(scanOf(channels << 11)), expected) << channels;
  }
}

TEST(ZdoNetworkUpdateResponse, TakesNoValueForBitsThatAreNoChannel) {
  for (unsigned int bit = 0; bit < 32; ++bit) {
    if (bit >= 11 && bit <= 26) continue;
    EXPECT_THAT(levelsOf(scanOf(1U << bit)), Each(UNTOUCHED)) << bit;
    std::vector<int> expected(16, UNTOUCHED);
    expected[4] = -99;
    EXPECT_EQ(levelsOf(scanOf(1U << bit | 1U << 15)), expected) << bit;
  }
  EXPECT_EQ(levelsOf(scanOf(0xFFFFFFFF)), levelsOf(scanOf(0x07FFF800)));
}

TEST(ZdoNetworkUpdateResponse, DoesNotAskTheCountOfValues) {
  for (const int count : {0, 1, 255}) {
    ZdoNetworkUpdateResponse response = scanOf(0x07FFF800);
    response.contents[10] = static_cast<unsigned char>(count);
    EXPECT_EQ(levelsOf(response), levelsOf(scanOf(0x07FFF800))) << count;
  }
}

TEST(ZdoNetworkUpdateResponse, SetsTheWeakestLevelForValuesThatAreMissing) {
  EXPECT_THAT(
      levelsOf("9c 00 00 f8 ff 07 00 00 00 00 10 ff"),
      ElementsAre(-37, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100));
}

TEST(ZdoNetworkUpdateResponse, SetsNoLevelOfAFrameWithoutAMask) {
  for (const char* frame : {"", "9c", "9c 00", "9c 00 ff", "9c 00 00"}) {
    EXPECT_THAT(levelsOf(frame), Each(UNTOUCHED)) << frame;
  }
}

}  // namespace
}  // namespace qx

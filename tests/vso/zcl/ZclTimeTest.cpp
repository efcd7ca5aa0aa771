#include "vso/zcl/ZclTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "support/Bytes.h"
#include "vso/zcl/Records.h"

namespace qx {
namespace {

using test::hex;
using testing::ElementsAre;

/// A frame with sequence number 7.
ZclTime numbered() {
  ZclTime frame;
  frame.setTsn(0x07);
  return frame;
}

TEST(ZclTime, BelongsToItsCluster) {
  EXPECT_EQ(ZclTime().getProfileId(), 0x0104);
  EXPECT_EQ(ZclTime().getClusterId(), 0x000A);
}

TEST(ZclTime, IsAReadResponse) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const ZclTime frame;
  EXPECT_EQ(hex(frame), hex(test::bytes({0x00, sequence, 0x01})));
  EXPECT_EQ(frame.fixedTime(), 0);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclTime, HasNoOtherConstructor) {
  static_assert(!std::is_constructible_v<ZclTime, const U255Buff<unsigned char>&>);
  static_assert(!std::is_constructible_v<ZclTime, const std::string&>);
  static_assert(!std::is_constructible_v<ZclTime, unsigned char>);
  static_assert(std::is_base_of_v<ZclMessage, ZclTime>);
}

TEST(ZclTime, KeepsAFixedTime) {
  static_assert(std::is_same_v<decltype(ZclTime().fixedTime()), int>);
  ZclTime frame;
  for (const int seconds : {946684801, -1, 0, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    frame.fixedTime(seconds);
    EXPECT_EQ(frame.fixedTime(), seconds);
  }
}

TEST(ZclTime, AnswersTheFixedTimeMostSignificantByteFirst) {
  ZclTime frame = numbered();
  frame.fixedTime(946684801);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.populateTime();
  EXPECT_EQ(hex(frame),
            "00 07 01 "      // header
            "00 00 00 23 "   // attribute 0, success, unsigned 32-bit
            "00 00 00 01");  // a second after the epoch
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclTime, AnswersSecondsSince2000Modulo32Bits) {
  const std::pair<int, std::string> expected[] = {
      {946684800, "00 00 00 00"},
      {946684799, "ff ff ff ff"},
      {1700000000, "2c e6 ad 80"},
      {1, "c7 92 bc 81"},
      {-1, "c7 92 bc 7f"},
      {std::numeric_limits<int>::max(), "47 92 bc 7f"},
      {std::numeric_limits<int>::min(), "47 92 bc 80"},
  };
  for (const auto& [seconds, value] : expected) {
    ZclTime frame = numbered();
    frame.fixedTime(seconds);
    frame.populateTime();
    EXPECT_EQ(hex(frame), "00 07 01 00 00 00 23 " + value) << seconds;
  }
}

TEST(ZclTime, AnswersTheClockWithoutAFixedTime) {
  ZclTime frame;
  frame.fixedTime(946684801);
  frame.fixedTime(0);
  const std::time_t before = std::time(nullptr);
  frame.populateTime();
  const std::time_t after = std::time(nullptr);
  const std::time_t answered = FrameReader(frame, 7).u32be();
  EXPECT_EQ(frame.length_, 11U);
  EXPECT_GE(answered, before - 946684800);
  EXPECT_LE(answered, after - 946684800);
}

TEST(ZclTime, AnswersItsStatus) {
  ZclTime frame = numbered();
  frame.populateStatus();
  EXPECT_EQ(hex(frame),
            "00 07 01 "     // header
            "01 00 00 18 "  // attribute 1, success, 8-bit bitmap
            "01");          // master
}

TEST(ZclTime, AnswersForOneAttributeAtATime) {
  ZclTime frame = numbered();
  frame.fixedTime(946684801);
  frame.populateStatus();
  frame.populateTime();
  EXPECT_EQ(hex(frame), "00 07 01 00 00 00 23 00 00 00 01");
  frame.populateStatus();
  EXPECT_EQ(hex(frame), "00 07 01 01 00 00 18 01");
}

TEST(ZclTime, IsReadBackByTheListReaders) {
  ZclTime frame;
  frame.fixedTime(1700000000);
  frame.populateTime();
  EXPECT_THAT(test::responded(frame), ElementsAre("00 0000 23: 2c e6 ad 80"));
  frame.populateStatus();
  EXPECT_THAT(test::responded(frame), ElementsAre("00 0001 18: 01"));
}

TEST(ZclTime, SetsNoDirectionBit) {
  ZclTime frame;
  frame.populateTime();
  EXPECT_TRUE(frame.isCommandFromClient());
  frame.populateStatus();
  EXPECT_TRUE(frame.isCommandFromClient());
}

}  // namespace
}  // namespace qx

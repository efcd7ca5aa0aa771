#include "vso/identifiers/FrameReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Bytes.h"

namespace qx {
namespace {

using testing::ElementsAre;

/// A full frame that ends in 01 02 .. 08.
U255Buff<unsigned char> fullFrame() {
  U255Buff<unsigned char> frame(0x5A);
  for (unsigned char i = 1; i <= 8; ++i) frame.contents[246 + i] = i;
  frame.length_ = 255;
  return frame;
}

TEST(FrameReader, ReadsFrontToBack) {
  const auto frame = test::bytes({0x01,                                            // u8
                                  0x03, 0x02,                                      // u16le
                                  0x04, 0x05,                                      // u16be
                                  0x09, 0x08, 0x07, 0x06,                          // u32le
                                  0x0A, 0x0B, 0x0C, 0x0D,                          // u32be
                                  0x15, 0x14, 0x13, 0x12, 0x11, 0x10, 0x0F, 0x0E,  // u64le
                                  0xF1, 0xF2, 0xF3});                              // bytes
  FrameReader in(frame);
  EXPECT_EQ(in.u8(), 0x01);
  EXPECT_EQ(in.u16le(), 0x0203);
  EXPECT_EQ(in.u16be(), 0x0405);
  EXPECT_EQ(in.u32le(), 0x06070809U);
  EXPECT_EQ(in.u32be(), 0x0A0B0C0DU);
  EXPECT_EQ(in.u64le(), 0x0E0F101112131415ULL);
  EXPECT_EQ(in.at(), 21U);
  unsigned char rest[3];
  in.bytes(rest);
  EXPECT_THAT(rest, ElementsAre(0xF1, 0xF2, 0xF3));
  EXPECT_FALSE(in.more());
}

TEST(FrameReader, KeepsTheHighestBitsOfNumbers) {
  const auto frame = test::bytesOf("ff ff ff ff ff ff ff ff");
  EXPECT_EQ(FrameReader(frame).u8(), 0xFF);
  EXPECT_EQ(FrameReader(frame).u16le(), 0xFFFF);
  EXPECT_EQ(FrameReader(frame).u16be(), 0xFFFF);
  EXPECT_EQ(FrameReader(frame).u32le(), 0xFFFFFFFFU);
  EXPECT_EQ(FrameReader(frame).u32be(), 0xFFFFFFFFU);
  EXPECT_EQ(FrameReader(frame).u64le(), 0xFFFFFFFFFFFFFFFFULL);
}

TEST(FrameReader, StartsWhereItIsTold) {
  const auto frame = test::bytesOf("01 02 03");
  FrameReader in(frame, 1);
  EXPECT_EQ(in.at(), 1U);
  EXPECT_EQ(in.left(), 2U);
  EXPECT_EQ(in.u8(), 0x02);
}

TEST(FrameReader, HasMoreUntilTheEndOfTheFrame) {
  const auto frame = test::bytesOf("01 02");
  FrameReader in(frame);
  EXPECT_TRUE(in.more());
  EXPECT_EQ(in.left(), 2U);
  in.skip(1);
  EXPECT_TRUE(in.more());
  EXPECT_EQ(in.left(), 1U);
  in.skip(1);
  EXPECT_FALSE(in.more());
  EXPECT_EQ(in.left(), 0U);
  in.skip(1);
  EXPECT_FALSE(in.more());
  EXPECT_EQ(in.left(), 0U);
  EXPECT_EQ(in.at(), 3U);
}

TEST(FrameReader, HasNothingInAnEmptyFrame) {
  const U255Buff<unsigned char> empty;
  EXPECT_FALSE(FrameReader(empty).more());
  EXPECT_EQ(FrameReader(empty).left(), 0U);
}

TEST(FrameReader, ReadsBytesBehindTheEndAsTheyStand) {
  U255Buff<unsigned char> frame(0x5A);
  frame.length_ = 1;
  FrameReader in(frame);
  EXPECT_EQ(in.u16le(), 0x5A5A);
  EXPECT_EQ(in.at(), 2U);
  EXPECT_EQ(in.u8(), 0x5A);
}

TEST(FrameReader, ReadsZerosBehindTheStorage) {
  const auto frame = fullFrame();
  EXPECT_EQ(FrameReader(frame, 254).u8(), 8);
  EXPECT_EQ(FrameReader(frame, 255).u8(), 0);
  EXPECT_EQ(FrameReader(frame, 254).u16le(), 0x0008);
  EXPECT_EQ(FrameReader(frame, 254).u16be(), 0x0800);
  EXPECT_EQ(FrameReader(frame, 253).u32le(), 0x00000807U);
  EXPECT_EQ(FrameReader(frame, 253).u32be(), 0x07080000U);
  EXPECT_EQ(FrameReader(frame, 247).u64le(), 0x0807060504030201ULL);
  EXPECT_EQ(FrameReader(frame, 248).u64le(), 0x0008070605040302ULL);
  EXPECT_EQ(FrameReader(frame, 256).u64le(), 0U);
  EXPECT_EQ(FrameReader(frame, 4000000000U).u64le(), 0U);
}

TEST(FrameReader, FillsWithZerosWhatTheStorageLacks) {
  const auto frame = fullFrame();
  for (unsigned int at = 250; at <= 260; ++at) {
    FrameReader in(frame, at);
    unsigned char out[6] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    in.bytes(out, 5);
    EXPECT_EQ(in.at(), at + 5);
    for (unsigned int i = 0; i < 5; ++i) EXPECT_EQ(out[i], at + i < 255 ? at + i - 246 : 0) << at << '+' << i;
    EXPECT_EQ(out[5], 0xEE);
  }
}

TEST(FrameReader, MovesOnBehindTheStorage) {
  const auto frame = fullFrame();
  FrameReader in(frame, 254);
  in.u64le();
  EXPECT_EQ(in.at(), 262U);
  EXPECT_FALSE(in.more());
  in.u8();
  EXPECT_EQ(in.at(), 263U);
}

TEST(FrameReader, CutsTheEndToTheStorage) {
  auto frame = fullFrame();
  frame.length_ = 0xFFFFFFFF;
  EXPECT_EQ(FrameReader(frame).left(), 255U);
  EXPECT_TRUE(FrameReader(frame, 254).more());
  EXPECT_FALSE(FrameReader(frame, 255).more());
}

TEST(FrameReader, ReadsAnyStorage) {
  const unsigned char storage[] = {1, 2, 3, 4};
  FrameReader in(storage, 4, 2, 1);
  EXPECT_EQ(in.left(), 1U);
  EXPECT_EQ(in.u16le(), 0x0302);
  EXPECT_FALSE(in.more());
  EXPECT_EQ(in.u16le(), 0x0004);
  EXPECT_EQ(FrameReader(storage, 4, 9).left(), 4U);
}

TEST(FrameReader, ReadsText) {
  const auto frame = test::bytesOf("61 62 63 00 ff 64");
  FrameReader in(frame, 1);
  EXPECT_EQ(in.text(2), "bc");
  EXPECT_EQ(in.at(), 3U);
  EXPECT_EQ(in.text(2), std::string("\0\xFF", 2));
  EXPECT_EQ(in.text(0), "");
  EXPECT_EQ(in.at(), 5U);
  EXPECT_EQ(in.u8(), 0x64);
}

TEST(FrameReader, ReadsTextOfZerosBehindTheStorage) {
  const auto frame = fullFrame();
  FrameReader in(frame, 253);
  EXPECT_EQ(in.text(4), std::string("\x07\x08\0\0", 4));
  EXPECT_EQ(in.at(), 257U);
  EXPECT_EQ(in.text(3), std::string(3, '\0'));
  EXPECT_EQ(in.at(), 260U);
}

TEST(FrameReader, ReadsTextBehindTheEndAsItStands) {
  U255Buff<unsigned char> frame('x');
  frame.length_ = 1;
  EXPECT_EQ(FrameReader(frame).text(255), std::string(255, 'x'));
}

TEST(FrameReader, WritesNothingForNoBytes) {
  const auto frame = fullFrame();
  unsigned char out = 0xEE;
  FrameReader in(frame, 300);
  in.bytes(&out, 0);
  EXPECT_EQ(out, 0xEE);
  EXPECT_EQ(in.at(), 300U);
}

}  // namespace
}  // namespace qx

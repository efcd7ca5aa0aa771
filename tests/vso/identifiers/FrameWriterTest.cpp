#include "vso/identifiers/FrameWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "support/Bytes.h"

namespace qx {
namespace {

using testing::Each;

std::vector<unsigned char> storage(const U255Buff<unsigned char>& frame) {
  return {frame.contents, frame.contents + 255};
}

TEST(FrameWriter, WritesFrontToBack) {
  U255Buff<unsigned char> frame;
  FrameWriter out(frame, 1);
  out.u8(0x01);
  out.u16le(0x0203);
  out.u16be(0x0405);
  out.u32le(0x06070809);
  const unsigned char more[] = {0xF1, 0xF2};
  out.bytes(more, 2);
  EXPECT_EQ(out.at(), 12U);
  EXPECT_EQ(out.dropped(), 0U);
  frame.length_ = out.at();
  EXPECT_EQ(test::hex(frame), "00 01 03 02 04 05 09 08 07 06 f1 f2");
}

TEST(FrameWriter, LeavesTheLengthOfTheFrameAlone) {
  U255Buff<unsigned char> frame;
  frame.length_ = 7;
  FrameWriter(frame, 0).u32le(1);
  EXPECT_EQ(frame.length_, 7U);
}

TEST(FrameWriter, WritesUpToTheLastByteAndDropsTheNext) {
  U255Buff<unsigned char> frame;
  FrameWriter out(frame, 254);
  out.u8(0x11);
  EXPECT_EQ(out.at(), 255U);
  EXPECT_EQ(out.dropped(), 0U);
  out.u8(0x22);
  EXPECT_EQ(out.at(), 255U);
  EXPECT_EQ(out.dropped(), 1U);
  EXPECT_EQ(frame.contents[254], 0x11);
  EXPECT_EQ(frame.length_, 0U);
}

TEST(FrameWriter, WritesThePartOfANumberThatFits) {
  U255Buff<unsigned char> frame;
  FrameWriter little(frame, 254);
  little.u16le(0x0102);
  EXPECT_EQ(frame.contents[254], 0x02);
  EXPECT_EQ(little.dropped(), 1U);

  FrameWriter big(frame, 254);
  big.u16be(0x0102);
  EXPECT_EQ(frame.contents[254], 0x01);
  EXPECT_EQ(big.dropped(), 1U);

  FrameWriter wide(frame, 252);
  wide.u32le(0x01020304);
  EXPECT_EQ(frame.contents[252], 0x04);
  EXPECT_EQ(frame.contents[253], 0x03);
  EXPECT_EQ(frame.contents[254], 0x02);
  EXPECT_EQ(wide.at(), 255U);
  EXPECT_EQ(wide.dropped(), 1U);
  EXPECT_EQ(frame.length_, 0U);
}

TEST(FrameWriter, WritesThePartOfTheBytesThatFits) {
  std::vector<unsigned char> more(300);
  std::iota(more.begin(), more.end(), static_cast<unsigned char>(1));
  U255Buff<unsigned char> frame;
  FrameWriter out(frame, 250);
  out.bytes(more.data(), 300);
  EXPECT_EQ(out.at(), 255U);
  EXPECT_EQ(out.dropped(), 295U);
  EXPECT_EQ(frame.contents[249], 0);
  EXPECT_EQ(frame.contents[250], 1);
  EXPECT_EQ(frame.contents[254], 5);
  EXPECT_EQ(frame.length_, 0U);
}

TEST(FrameWriter, DropsEverythingWhenMadeOutsideTheStorage) {
  U255Buff<unsigned char> frame;
  FrameWriter out(frame, 300);
  out.u8(1);
  out.u16le(2);
  out.u16be(3);
  out.u32le(4);
  const unsigned char more[] = {5, 6, 7};
  out.bytes(more, 3);
  EXPECT_EQ(out.at(), 300U);
  EXPECT_EQ(out.dropped(), 12U);
  EXPECT_THAT(storage(frame), Each(0));
  EXPECT_EQ(frame.length_, 0U);
}

TEST(FrameWriter, TakesBytesFromAReaderThatMovesOn) {
  const auto source = test::bytesOf("a1 a2 a3 a4");
  FrameReader in(source, 1);
  U255Buff<unsigned char> frame;
  FrameWriter out(frame, 0);
  out.bytes(in, 2);
  EXPECT_EQ(in.at(), 3U);
  frame.length_ = out.at();
  EXPECT_EQ(test::hex(frame), "a2 a3");
}

TEST(FrameWriter, WritesZerosWhereTheReadersStorageEnds) {
  const unsigned char source[] = {0xA1, 0xA2};
  FrameReader in(source, 2, 2);
  U255Buff<unsigned char> frame(0x5A);
  FrameWriter out(frame, 0);
  out.bytes(in, 4);
  EXPECT_EQ(in.at(), 4U);
  frame.length_ = 5;
  EXPECT_EQ(test::hex(frame), "a1 a2 00 00 5a");
}

TEST(FrameWriter, MovesTheReaderOnOverDroppedBytesToo) {
  const auto source = test::bytesOf("a1 a2 a3 a4 a5");
  FrameReader in(source);
  U255Buff<unsigned char> frame;
  FrameWriter out(frame, 253);
  out.bytes(in, 4);
  EXPECT_EQ(in.at(), 4U);
  EXPECT_EQ(out.dropped(), 2U);
  EXPECT_EQ(frame.contents[253], 0xA1);
  EXPECT_EQ(frame.contents[254], 0xA2);
}

}  // namespace
}  // namespace qx

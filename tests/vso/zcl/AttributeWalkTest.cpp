#include "vso/zcl/AttributeWalk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Bytes.h"
#include "vso/zcl/Records.h"
#include "vso/zcl/TracedMessage.h"
#include "vso/zcl/TypeTable.h"

namespace qx {
namespace {

using detail::AttributeValue;
using detail::AttributeWalk;
using detail::RecordLayout;
using test::bytesOf;
using test::hex;
using testing::ElementsAre;

/// A value of this type that starts at the first of the frame's bytes.
AttributeValue valueOf(unsigned char type, const U255Buff<unsigned char>& frame) { return {type, FrameReader(frame)}; }

class AttributeValueOfType : public testing::TestWithParam<test::TypeSample> {
 protected:
  const U255Buff<unsigned char> frame_ = bytesOf(std::string(GetParam().wire) + " ee ee ee ee ee ee ee ee");
  const AttributeValue value_ = valueOf(GetParam().code, frame_);
};

INSTANTIATE_TEST_SUITE_P(Types, AttributeValueOfType, testing::ValuesIn(test::TYPE_SAMPLES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(AttributeValueOfType, HasTheSizeOfItsWireForm) {
  EXPECT_EQ(value_.type(), GetParam().code);
  EXPECT_EQ(value_.size(), GetParam().bytes);
}

TEST_P(AttributeValueOfType, IsCopiedInBothForms) {
  AttributeRecordData::Data data{};
  value_.copyTo(data, false);
  EXPECT_EQ(hex(data), GetParam().readable);
  data.fill(0);
  value_.copyTo(data, true);
  EXPECT_EQ(hex(data), GetParam().wire);
}

TEST_P(AttributeValueOfType, GivesItsReadableForm) {
  // All 200 bytes, so that what it does not fill is zero.
  EXPECT_EQ(value_.readable(), test::dataOf(GetParam().readable));
}

TEST_P(AttributeValueOfType, IsAppendedInWireForm) {
  U255Buff<unsigned char> frame(0x5A);
  FrameWriter out(frame, 1);
  value_.appendTo(out);
  frame.length_ = out.at() + 1;
  EXPECT_EQ(hex(frame), std::string("5a ") + GetParam().wire + " 5a");
}

TEST_P(AttributeValueOfType, StartsWithTheBytesOfItsReadableForm) {
  const AttributeRecordData::Data readable = test::dataOf(GetParam().readable);
  EXPECT_EQ(value_.firstByte(), readable[0]);
  EXPECT_EQ(value_.firstUint16(), readable[1] << 8 | readable[0]);
}

TEST(AttributeValue, StartsWithZerosWhereItIsShorter) {
  const auto byte = bytesOf("fe ee");
  EXPECT_EQ(valueOf(0x20, byte).firstUint16(), 0x00FE);
  const auto character = bytesOf("01 61 ee");
  EXPECT_EQ(valueOf(0x42, character).firstUint16(), 0x0061);
  const auto empty = bytesOf("00 ee ee");
  for (const unsigned char type : {0x40, 0x41, 0x42}) {
    EXPECT_EQ(valueOf(type, empty).firstByte(), 0) << int{type};
    EXPECT_EQ(valueOf(type, empty).firstUint16(), 0) << int{type};
  }
}

TEST(AttributeValue, HasNoBytesInATypeOutsideTheTable) {
  const auto frame = bytesOf("05 61 62 63 64 65 66 67 68");
  for (unsigned int code = 0; code < 256; ++code) {
    if (test::isKnownType(code)) continue;
    const AttributeValue value = valueOf(static_cast<unsigned char>(code), frame);
    EXPECT_EQ(value.size(), 0U) << code;
    EXPECT_EQ(value.firstByte(), 0) << code;
    EXPECT_EQ(value.firstUint16(), 0) << code;
    AttributeRecordData::Data data{};
    value.copyTo(data, false);
    value.copyTo(data, true);
    EXPECT_EQ(hex(data), "") << code;
    U255Buff<unsigned char> target(0x5A);
    FrameWriter out(target, 0);
    value.appendTo(out);
    EXPECT_EQ(out.at(), 0U) << code;
    EXPECT_EQ(target.contents[0], 0x5A) << code;
  }
}

TEST(AttributeValue, GivesZerosAsTheReadableFormOfATypeOutsideTheTable) {
  EXPECT_EQ(valueOf(0x0C, bytesOf("05 61 62")).readable(), AttributeRecordData::Data{});
}

TEST(AttributeValue, CutsItsReadableFormToTheDataOfARecord) {
  U255Buff<unsigned char> frame(0x61);
  frame.contents[0] = 255;
  AttributeRecordData::Data expected;
  expected.fill(0x61);
  EXPECT_EQ(valueOf(0x42, frame).readable(), expected);
  for (unsigned int i = 0; i < 200; i += 2) {
    expected[i] = '6';
    expected[i + 1] = '1';
  }
  EXPECT_EQ(valueOf(0x41, frame).readable(), expected);
}

TEST(AttributeValue, HasUpTo256BytesInAString) {
  for (const unsigned char type : {0x40, 0x41, 0x42}) {
    for (const unsigned char length : {0, 1, 199, 200, 255}) {
      EXPECT_EQ(valueOf(type, test::bytes({length})).size(), 1U + length) << int{type};
    }
  }
}

TEST(AttributeWalk, StepsThroughIds) {
  const ZclMessage frame(bytesOf("00 07 00 02 01 fe ff"));
  AttributeWalk walk(frame, RecordLayout::ID);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 0x0102);
  EXPECT_EQ(walk.status(), 0);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 0xFFFE);
  EXPECT_FALSE(walk.next());
  EXPECT_FALSE(walk.next());
}

TEST(AttributeWalk, StepsThroughValues) {
  const ZclMessage frame(bytesOf("18 07 0a 02 01 42 01 61 03 00 0c 04 00 21 04 03"));
  AttributeWalk walk(frame, RecordLayout::VALUE);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 0x0102);
  EXPECT_EQ(walk.status(), 0);
  EXPECT_EQ(walk.value().type(), 0x42);
  EXPECT_EQ(walk.value().firstUint16(), 0x61);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 3);
  EXPECT_EQ(walk.value().type(), 0x0C);
  EXPECT_EQ(walk.value().size(), 0U);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 4);
  EXPECT_EQ(walk.value().firstUint16(), 0x0304);
  EXPECT_FALSE(walk.next());
}

TEST(AttributeWalk, KeepsTheValueOverAFailedRecord) {
  const ZclMessage frame(bytesOf("18 07 01 01 00 c1 02 00 00 20 05 03 00 86 04 00 00 20 06"));
  AttributeWalk walk(frame, RecordLayout::STATUS_VALUE);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 1);
  EXPECT_EQ(walk.status(), 0xC1);
  EXPECT_EQ(walk.value().type(), 0);
  EXPECT_EQ(walk.value().size(), 0U);
  EXPECT_EQ(walk.value().firstUint16(), 0);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.status(), 0);
  EXPECT_EQ(walk.value().firstUint16(), 5);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 3);
  EXPECT_EQ(walk.status(), 0x86);
  EXPECT_EQ(walk.value().type(), 0x20);
  EXPECT_EQ(walk.value().firstUint16(), 5);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.status(), 0);
  EXPECT_EQ(walk.value().firstUint16(), 6);
  EXPECT_FALSE(walk.next());
}

TEST(AttributeWalk, StepsThroughConfirmations) {
  const ZclMessage frame(bytesOf("18 07 04 88 02 01 00"));
  AttributeWalk walk(frame, RecordLayout::STATUS_ID);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.status(), 0x88);
  EXPECT_EQ(walk.id(), 0x0102);
  EXPECT_EQ(walk.value().type(), 0);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.status(), 0);
  EXPECT_EQ(walk.id(), 0);
  EXPECT_FALSE(walk.next());
}

TEST(AttributeWalk, FindsTheNextRecordWithAnId) {
  const ZclMessage frame(bytesOf("18 07 0a 01 00 20 05 02 01 21 06 07 01 00 20 08 03 00 20 09"));
  AttributeWalk walk(frame, RecordLayout::VALUE);
  ASSERT_TRUE(walk.find(1));
  EXPECT_EQ(walk.id(), 1);
  EXPECT_EQ(walk.value().firstByte(), 5);
  ASSERT_TRUE(walk.find(1));
  EXPECT_EQ(walk.value().firstByte(), 8);
  // A record that was passed over is not found again.
  EXPECT_FALSE(walk.find(0x0102));
  EXPECT_FALSE(walk.next());
}

TEST(AttributeWalk, GoesOnBehindARecordThatWasFound) {
  const ZclMessage frame(bytesOf("18 07 0a 01 00 20 05 02 01 21 06 07 03 00 20 09"));
  AttributeWalk walk(frame, RecordLayout::VALUE);
  ASSERT_TRUE(walk.find(0x0102));
  EXPECT_EQ(walk.value().firstUint16(), 0x0706);
  EXPECT_EQ(walk.countRest(), 1U);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 3);
}

TEST(AttributeWalk, FindsInEveryLayout) {
  struct {
    RecordLayout layout;
    const char* frame;
    unsigned char status;
  } const rows[] = {
      {RecordLayout::ID, "00 07 00 01 00 02 01", 0},
      {RecordLayout::VALUE, "18 07 0a 01 00 20 02 02 01 20 05", 0},
      {RecordLayout::STATUS_VALUE, "18 07 01 01 00 00 20 02 02 01 86", 0x86},
      {RecordLayout::STATUS_ID, "18 07 04 02 01 00 88 02 01", 0x88},
  };
  for (const auto& row : rows) {
    const ZclMessage frame(bytesOf(row.frame));
    AttributeWalk walk(frame, row.layout);
    ASSERT_TRUE(walk.find(0x0102)) << row.frame;
    EXPECT_EQ(walk.id(), 0x0102);
    EXPECT_EQ(walk.status(), row.status);
    EXPECT_FALSE(walk.find(0x0102)) << row.frame;
    EXPECT_FALSE(AttributeWalk(frame, row.layout).find(0x0202)) << row.frame;
  }
}

TEST(AttributeWalk, FindsNothingInAnEmptyPayload) {
  EXPECT_FALSE(AttributeWalk(ZclMessage(bytesOf("18 07 0a")), RecordLayout::VALUE).find(0));
  EXPECT_FALSE(AttributeWalk(ZclMessage(bytesOf("18 07 01")), RecordLayout::STATUS_VALUE).find(0));
}

TEST(AttributeWalk, CountsTheRecordsThatFollow) {
  const ZclMessage frame(bytesOf("18 07 0a 01 00 20 05 02 00 42 02 61 62 03 00 0c 04 00"));
  AttributeWalk walk(frame, RecordLayout::VALUE);
  for (unsigned int rest = 4; rest != 0; --rest) {
    EXPECT_EQ(walk.countRest(), rest);
    ASSERT_TRUE(walk.next());
  }
  EXPECT_EQ(walk.countRest(), 0U);
  EXPECT_FALSE(walk.next());
}

TEST(AttributeWalk, CountingLeavesItWhereItIs) {
  const ZclMessage frame(bytesOf("18 07 0a 01 00 20 05 02 00 20 06"));
  AttributeWalk walk(frame, RecordLayout::VALUE);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.countRest(), 1U);
  EXPECT_EQ(walk.id(), 1);
  EXPECT_EQ(walk.value().firstUint16(), 5);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 2);
}

TEST(AttributeWalk, ChecksTheLengthOnce) {
  const test::TracedMessage<> frame(bytesOf("18 07 0a 01 00 20 05"));
  AttributeWalk walk(frame, RecordLayout::VALUE);
  EXPECT_TRUE(walk.next());
  EXPECT_FALSE(walk.next());
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
}

TEST(AttributeWalk, EndsWithinAFrameOfAnyBytesAndAnyLength) {
  for (const RecordLayout layout :
       {RecordLayout::ID, RecordLayout::VALUE, RecordLayout::STATUS_VALUE, RecordLayout::STATUS_ID}) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
      ZclMessage frame(U255Buff<unsigned char>{});
      std::fill(frame.contents, frame.contents + 255, static_cast<unsigned char>(byte));
      frame.length_ = 0xFFFFFFFF;
      AttributeWalk walk(frame, layout);
      const unsigned int counted = walk.countRest();
      EXPECT_GE(counted, 1U);
      EXPECT_LE(counted, layout == RecordLayout::ID ? 126U : 84U) << byte;
      unsigned int stepped = 0;
      while (walk.next()) ++stepped;
      EXPECT_EQ(stepped, counted) << byte;
    }
  }
}

}  // namespace
}  // namespace qx

#include "vso/layout/PayloadWalk.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/vso/layout/WholeFrames.h"
#include "vso/layout/ZclCommandLayouts.h"
#include "vso/layout/ZdoCommandLayouts.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

using test::bytesOf;

constexpr FieldCondition BIT_0{0, 0x01, 0x01, 0x01};

/// What a walk shows of a payload, field by field: name, offset and size, and the rows of a list. A field that does not
/// fit is followed by an exclamation mark, and the end by its offset.
std::string walked(const CommandLayout& layout, const std::string& hex, unsigned int offset = 0) {
  const U255Buff<unsigned char> frame = bytesOf(hex);
  PayloadWalk walk(layout, FrameReader(frame, offset));
  std::string text;
  while (walk.next()) {
    text += walk.field().name + (" @" + std::to_string(walk.value().at())) + "+" + std::to_string(walk.size());
    if (walk.rowSize() != 0) text += "=" + std::to_string(walk.rows()) + "x" + std::to_string(walk.rowSize());
    text += walk.isWhole() ? ", " : "! ";
  }
  return text + "end @" + std::to_string(walk.value().at());
}

class WalkedFrames : public testing::TestWithParam<test::WholeFrame> {};

TEST_P(WalkedFrames, AreWalkedFieldByFieldUpToTheirEnd) {
  const ZclMessage frame(GetParam().frame());
  const bool isZdo = GetParam().profile == 0;
  const CommandLayout* const layout =
      isZdo ? findZdoCommand(GetParam().cluster) : findZclCommand(GetParam().profile, GetParam().cluster, frame);
  ASSERT_NE(layout, nullptr);
  EXPECT_STREQ(layout->name, GetParam().name);

  std::string fields;
  PayloadWalk walk(*layout, isZdo ? FrameReader(frame, 1) : frame.payload());
  while (walk.next()) {
    EXPECT_TRUE(walk.isWhole()) << walk.field().name;
    EXPECT_EQ(walk.rows() * walk.rowSize(), walk.rowSize() == 0 ? 0 : walk.size()) << walk.field().name;
    fields += (fields.empty() ? "" : ", ") + (walk.field().name + (" " + std::to_string(walk.size())));
  }
  EXPECT_EQ(fields, GetParam().fields);
  EXPECT_EQ(walk.value().at(), frame.length_);
}

INSTANTIATE_TEST_SUITE_P(PayloadWalk, WalkedFrames, testing::ValuesIn(test::wholeFrames()));

TEST(PayloadWalk, ShowsNothingOfAPayloadWithoutFields) {
  EXPECT_EQ(walked({"toggle"}, ""), "end @0");
  EXPECT_EQ(walked({"toggle"}, "18 05 02 ab", 3), "end @3");
}

TEST(PayloadWalk, BeginsWhereThePayloadDoes) {
  const CommandLayout layout{"", {{{"a", FieldKind::U8}, {"b", FieldKind::U16, FieldPresence::IF, BIT_0}}}};
  EXPECT_EQ(walked(layout, "00 00 01 02 03", 2), "a @2+1, b @3+2, end @5");
  EXPECT_EQ(walked(layout, "01 01 00 02 03", 2), "a @2+1, end @3");
}

TEST(PayloadWalk, EndsBehindAFieldThatDoesNotFit) {
  const CommandLayout layout{"", {{{"a", FieldKind::U8}, {"b", FieldKind::U32}, {"c", FieldKind::U8}}}};
  EXPECT_EQ(walked(layout, "01 02 03 04"), "a @0+1, b @1+4! end @1");
  EXPECT_EQ(walked(layout, "01"), "a @0+1, b @1+4! end @1");
  EXPECT_EQ(walked(layout, ""), "a @0+1! end @0");
}

TEST(PayloadWalk, StaysAtItsEnd) {
  const CommandLayout layout{"", {{{"a", FieldKind::U8}, {"b", FieldKind::U32}}}};
  for (const char* const hex : {"01 02 03 04 05 06", "01 02"}) {
    const U255Buff<unsigned char> frame = bytesOf(hex);
    PayloadWalk walk(layout, FrameReader(frame));
    while (walk.next()) {
    }
    const unsigned int end = walk.value().at();
    EXPECT_FALSE(walk.next());
    EXPECT_EQ(walk.value().at(), end);
  }
}

TEST(PayloadWalk, TellsRowsOfListsAlone) {
  const U255Buff<unsigned char> frame = bytesOf("02 01 00 02 00 05");
  const CommandLayout layout{"", {{{"n", FieldKind::U8}, {"list", FieldKind::ID16_LIST}, {"last", FieldKind::U8}}}};
  PayloadWalk walk(layout, FrameReader(frame));
  const struct { unsigned int rows, rowSize; } expected[] = {{0, 0}, {2, 2}, {0, 0}};
  for (const auto& field : expected) {
    ASSERT_TRUE(walk.next());
    EXPECT_EQ(walk.rows(), field.rows);
    EXPECT_EQ(walk.rowSize(), field.rowSize);
  }
  EXPECT_FALSE(walk.next());
  EXPECT_EQ(walk.rows(), 0u);
  EXPECT_EQ(walk.rowSize(), 0u);
}

TEST(PayloadWalk, HasNoRowsBehindAListAtTheEnd) {
  const U255Buff<unsigned char> frame = bytesOf("01 aa");
  const CommandLayout layout{"", {{{"n", FieldKind::U8}, {"list", FieldKind::U8_LIST}}}};
  PayloadWalk walk(layout, FrameReader(frame));
  while (walk.next()) {
  }
  EXPECT_EQ(walk.size(), 0u);
  EXPECT_EQ(walk.rows(), 0u);
  EXPECT_EQ(walk.rowSize(), 0u);
}

TEST(PayloadWalk, TakesTheCountOfAListFromTheByteInFrontOfIt) {
  const auto counted = [](FieldKind kind, const std::string& hex) {
    return walked({"", {{{"n", FieldKind::U8}, {"list", kind}}}}, hex);
  };
  EXPECT_EQ(counted(FieldKind::U8_LIST, "02 aa bb cc"), "n @0+1, list @1+2=2x1, end @3");
  EXPECT_EQ(counted(FieldKind::OCTETS, "02 aa bb cc"), "n @0+1, list @1+2=2x1, end @3");
  EXPECT_EQ(counted(FieldKind::ID16_LIST, "02 aa bb cc"), "n @0+1, list @1+4=2x2! end @1");
  EXPECT_EQ(counted(FieldKind::NEIGHBOURS, "19 aa"), "n @0+1, list @1+550=25x22! end @1");
  EXPECT_EQ(counted(FieldKind::ROUTES, "ff"), "n @0+1, list @1+1275=255x5! end @1");
  EXPECT_EQ(counted(FieldKind::ROUTES, "00"), "n @0+1, list @1+0=0x5, end @1");
}

TEST(PayloadWalk, CountsTheEnergyValuesByTheMask) {
  const auto scanned = [](const std::string& mask) {
    return walked({"",
                   {{{"status", FieldKind::ZDO_STATUS},
                     {"mask", FieldKind::ID32},
                     {"count", FieldKind::U8},
                     {"values", FieldKind::ENERGY_VALUES}}}},
                  "00" + mask + "07 01");
  };
  EXPECT_EQ(scanned("00000000"), "status @0+1, mask @1+4, count @5+1, values @6+0=0x1, end @6");
  EXPECT_EQ(scanned("00080000"), "status @0+1, mask @1+4, count @5+1, values @6+1=1x1, end @7");
  EXPECT_EQ(scanned("00000004"), "status @0+1, mask @1+4, count @5+1, values @6+1=1x1, end @7");
  EXPECT_EQ(scanned("ff0700f8"), "status @0+1, mask @1+4, count @5+1, values @6+0=0x1, end @6");
  EXPECT_EQ(scanned("ffffffff"), "status @0+1, mask @1+4, count @5+1, values @6+16=16x1! end @6");
}

TEST(PayloadWalk, TakesATextWithItsLength) {
  const CommandLayout layout{"", {{{"text", FieldKind::TEXT}, {"last", FieldKind::U8}}}};
  EXPECT_EQ(walked(layout, "02 61 62 05"), "text @0+3, last @3+1, end @4");
  EXPECT_EQ(walked(layout, "00 05"), "text @0+1, last @1+1, end @2");
  EXPECT_EQ(walked(layout, "ff 61"), "text @0+256! end @0");
}

TEST(PayloadWalk, TakesARateOfTwoBytesInFrontOfAnEvenNumber) {
  const CommandLayout layout{
      "", {{{"rate", FieldKind::RATE}, {"mask", FieldKind::U8, FieldPresence::MAY_END}, {"bits", FieldKind::U8}}}};
  EXPECT_EQ(walked(layout, "01"), "rate @0+1, end @1");
  EXPECT_EQ(walked(layout, "01 02"), "rate @0+2, end @2");
  EXPECT_EQ(walked(layout, "01 02 03"), "rate @0+1, mask @1+1, bits @2+1, end @3");
  EXPECT_EQ(walked(layout, "01 02 03 04"), "rate @0+2, mask @2+1, bits @3+1, end @4");
}

TEST(PayloadWalk, PassesOverFieldsWhoseConditionDoesNotHold) {
  const CommandLayout layout{"",
                             {{{"control", FieldKind::U8},
                               {"a", FieldKind::U8, FieldPresence::IF, {0, 0x02, 0x02, 0x02}},
                               {"b", FieldKind::U8, FieldPresence::IF, {0, 0xF0, 0x20, 0x30}},
                               {"c", FieldKind::U8}}}};
  EXPECT_EQ(walked(layout, "00 0a"), "control @0+1, c @1+1, end @2");
  EXPECT_EQ(walked(layout, "02 0a 0b"), "control @0+1, a @1+1, c @2+1, end @3");
  EXPECT_EQ(walked(layout, "10 0a 0b"), "control @0+1, c @1+1, end @2");
  EXPECT_EQ(walked(layout, "20 0a 0b"), "control @0+1, b @1+1, c @2+1, end @3");
  EXPECT_EQ(walked(layout, "3f 0a 0b 0c"), "control @0+1, a @1+1, b @2+1, c @3+1, end @4");
  EXPECT_EQ(walked(layout, "40 0a 0b"), "control @0+1, c @1+1, end @2");
}

TEST(PayloadWalk, EndsWhereAFieldMayBeMissing) {
  const CommandLayout may{"", {{{"a", FieldKind::U8}, {"b", FieldKind::U16, FieldPresence::MAY_END}}}};
  EXPECT_EQ(walked(may, "01"), "a @0+1, end @1");
  EXPECT_EQ(walked(may, "01 02"), "a @0+1, b @1+2! end @1");
  EXPECT_EQ(walked(may, "01 02 03"), "a @0+1, b @1+2, end @3");

  const CommandLayout unless{"", {{{"a", FieldKind::U8}, {"b", FieldKind::U8, FieldPresence::MAY_END_UNLESS, BIT_0}}}};
  EXPECT_EQ(walked(unless, "01"), "a @0+1, b @1+1! end @1");
  EXPECT_EQ(walked(unless, "02"), "a @0+1, end @1");
  EXPECT_EQ(walked(unless, "02 03"), "a @0+1, b @1+1, end @2");
}

TEST(PayloadWalk, TakesAllThatIsLeftForAListUpToTheEnd) {
  for (const FieldKind kind : {FieldKind::SCENE_EXTENSIONS, FieldKind::ATTRIBUTE_IDS, FieldKind::ATTRIBUTE_VALUES,
                               FieldKind::ATTRIBUTE_ANSWERS, FieldKind::ATTRIBUTE_STATUSES, FieldKind::OPAQUE}) {
    EXPECT_EQ(walked({"", {{{"a", FieldKind::U8}, {"rest", kind}}}}, "01 02 03"), "a @0+1, rest @1+2, end @3");
    EXPECT_EQ(walked({"", {{{"rest", kind}}}}, ""), "rest @0+0, end @0");
  }
}

TEST(PayloadWalk, GoesUpToTheLastPlaceOfALayout) {
  CommandLayout layout{"", {}};
  for (FieldLayout& field : layout.fields) field = {"f", FieldKind::U8};
  EXPECT_EQ(walked(layout, "00 01 02 03 04 05 06 07 08 09 0a"),
            "f @0+1, f @1+1, f @2+1, f @3+1, f @4+1, f @5+1, f @6+1, f @7+1, f @8+1, f @9+1, end @10");
}

TEST(PayloadWalk, StaysInsideTheStorageWhateverTheLength) {
  U255Buff<unsigned char> frame;
  frame.length_ = 0xFFFFFFFF;
  const CommandLayout layout{"", {{{"n", FieldKind::U8}, {"rest", FieldKind::OPAQUE}, {"last", FieldKind::U8}}}};
  PayloadWalk walk(layout, FrameReader(frame));
  ASSERT_TRUE(walk.next());
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.size(), 254u);
  ASSERT_TRUE(walk.next());
  EXPECT_FALSE(walk.isWhole());
  EXPECT_EQ(walk.value().at(), 255u);
}

}  // namespace
}  // namespace qx

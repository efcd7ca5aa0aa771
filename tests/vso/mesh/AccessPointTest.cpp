#include "vso/mesh/AccessPoint.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <type_traits>

#include "Records.h"
#include "vso/proto/AccessPointPBuf.pb.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::messageOf;
using test::printed;
using test::sameMessage;
using test::stateOf;
using test::xmlOf;

TEST(AccessPoint, IsAPlainValueWithoutDefault) {
  static_assert(!std::is_polymorphic_v<AccessPoint>);
  static_assert(!std::is_default_constructible_v<AccessPoint>);
  const AccessPoint point(0x1A2B, 0x0C);
  EXPECT_EQ(point.destination_, 0x1A2B);
  EXPECT_EQ(point.table_index_, 0x0C);
}

TEST(AccessPoint, CopiesBothFields) {
  const AccessPoint original(0x1A2B, 0x0C);
  const AccessPoint constructed(original);
  AccessPoint assigned(1, 2);
  assigned = original;
  EXPECT_EQ(constructed.destination_, 0x1A2B);
  EXPECT_EQ(constructed.table_index_, 0x0C);
  EXPECT_EQ(assigned.destination_, 0x1A2B);
  EXPECT_EQ(assigned.table_index_, 0x0C);
}

TEST(AccessPoint, InvalidIsAllOnes) {
  EXPECT_EQ(AccessPoint::INVALID.destination_, 0xFFFF);
  EXPECT_EQ(AccessPoint::INVALID.table_index_, 0xFF);
}

TEST(AccessPoint, PrintsTheIndexWithoutAWidth) {
  EXPECT_EQ(printed(AccessPoint(0x1A2B, 0x0C)), "Destination: 0x1a2b Index: 0xc");
  EXPECT_EQ(printed(AccessPoint(0x000A, 0xFE)), "Destination: 0x000a Index: 0xfe");
  EXPECT_EQ(printed(AccessPoint(0, 0)), "Destination: 0x0000 Index: 0x0");
}

TEST(AccessPoint, PrintsHexadecimalWhateverBaseAndFillAStreamHas) {
  std::ostringstream out;
  out << std::dec;
  out.fill('*');
  EXPECT_EQ(&(out << AccessPoint(0xAB, 0xCD)), &out);
  EXPECT_EQ(out.str(), "Destination: 0x00ab Index: 0xcd");
}

TEST(AccessPoint, LeavesTheStreamInHexadecimalFilledWithZeros) {
  std::ostringstream out;
  out << AccessPoint(1, 2);
  EXPECT_EQ(stateOf(out), "00ab 1");
}

TEST(AccessPoint, WritesEachFieldOfItsMessage) {
  pb::AccessPointPBuf expected;
  expected.set_destination(0x1A2B);
  expected.set_tableindex(0x0C);
  EXPECT_TRUE(sameMessage(*messageOf(AccessPoint(0x1A2B, 0x0C)), expected));
}

TEST(AccessPoint, ReadsEachFieldOfItsMessage) {
  pb::AccessPointPBuf message;
  message.set_destination(0x1A2B);
  message.set_tableindex(0x0C);
  AccessPoint point(1, 2);
  EXPECT_FALSE(point.fromProtobuf(message));
  EXPECT_EQ(point.destination_, 0x1A2B);
  EXPECT_EQ(point.table_index_, 0x0C);
}

TEST(AccessPoint, KeepsTheLowBitsOfWiderNumbers) {
  pb::AccessPointPBuf message;
  message.set_destination(0x12345);
  message.set_tableindex(0x2AB);
  AccessPoint point(1, 2);
  EXPECT_FALSE(point.fromProtobuf(message));
  EXPECT_EQ(point.destination_, 0x2345);
  EXPECT_EQ(point.table_index_, 0xAB);
}

TEST(AccessPoint, ReadsADefaultMessageAsZeros) {
  AccessPoint point(1, 2);
  EXPECT_FALSE(point.fromProtobuf(pb::AccessPointPBuf()));
  EXPECT_EQ(point.destination_, 0);
  EXPECT_EQ(point.table_index_, 0);
}

TEST(AccessPoint, WritesXmlInDecimal) {
  EXPECT_EQ(xmlOf(AccessPoint(0x1A2B, 65), "point"),
            "<point" + ARCHIVE + "><destination_>6699</destination_><table_index_>65</table_index_></point>");
}

}  // namespace
}  // namespace qx

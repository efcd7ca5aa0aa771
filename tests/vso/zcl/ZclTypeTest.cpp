#include "vso/zcl/ZclType.h"

#include <gtest/gtest.h>

#include <map>

#include "vso/zcl/TypeTable.h"

namespace qx {
namespace {

using detail::zclType;
using Kind = detail::ZclValueKind;

TEST(ZclType, HasTheSizeOfEachFixedValue) {
  for (const test::TypeSample& sample : test::TYPE_SAMPLES) {
    if (isString(sample)) continue;
    EXPECT_EQ(zclType(sample.code).size, sample.bytes) << sample;
    EXPECT_FALSE(zclType(sample.code).isString()) << sample;
  }
}

TEST(ZclType, HasTheSizeOfTheLengthByteOfEachString) {
  for (const unsigned char code : {0x40, 0x41, 0x42}) {
    EXPECT_EQ(zclType(code).size, 1) << int{code};
    EXPECT_TRUE(zclType(code).isString()) << int{code};
  }
}

TEST(ZclType, SaysHowEachValueIsShown) {
  const std::map<unsigned int, Kind> expected = {
      {0x08, Kind::DECIMAL}, {0x09, Kind::DECIMAL}, {0x0A, Kind::HEX},     {0x0B, Kind::DECIMAL}, {0x10, Kind::BOOLEAN},
      {0x18, Kind::HEX},     {0x19, Kind::HEX},     {0x1A, Kind::HEX},     {0x1B, Kind::HEX},     {0x20, Kind::DECIMAL},
      {0x21, Kind::DECIMAL}, {0x22, Kind::HEX},     {0x23, Kind::DECIMAL}, {0x28, Kind::HEX},     {0x29, Kind::HEX},
      {0x2A, Kind::HEX},     {0x2B, Kind::HEX},     {0x30, Kind::DECIMAL}, {0x31, Kind::DECIMAL}, {0x38, Kind::HEX},
      {0x39, Kind::HEX},     {0x3A, Kind::HEX},     {0x40, Kind::TEXT},    {0x41, Kind::OCTETS},  {0x42, Kind::TEXT},
      {0xE0, Kind::HEX},     {0xE1, Kind::HEX},     {0xE8, Kind::HEX},     {0xE9, Kind::HEX},     {0xEA, Kind::HEX},
      {0xF0, Kind::HEX},
  };
  for (unsigned int code = 0; code < 256; ++code) {
    const auto row = expected.find(code);
    const Kind kind = row == expected.end() ? Kind::UNKNOWN : row->second;
    EXPECT_EQ(zclType(static_cast<unsigned char>(code)).kind, kind) << code;
  }
}

TEST(ZclType, HasNoSizeForATypeThatIsNotKnown) {
  unsigned int unknown = 0;
  for (unsigned int code = 0; code < 256; ++code) {
    if (test::isKnownType(code)) continue;
    ++unknown;
    EXPECT_EQ(zclType(static_cast<unsigned char>(code)).size, 0) << code;
    EXPECT_FALSE(zclType(static_cast<unsigned char>(code)).isString()) << code;
  }
  EXPECT_EQ(unknown, 225U);
}

TEST(ZclType, NamesEachCode) {
  EXPECT_EQ(ZclType::DATA8, 0x08);
  EXPECT_EQ(ZclType::DATA16, 0x09);
  EXPECT_EQ(ZclType::DATA24, 0x0A);
  EXPECT_EQ(ZclType::DATA32, 0x0B);
  EXPECT_EQ(ZclType::BOOLEAN, 0x10);
  EXPECT_EQ(ZclType::BITMAP8, 0x18);
  EXPECT_EQ(ZclType::BITMAP16, 0x19);
  EXPECT_EQ(ZclType::BITMAP24, 0x1A);
  EXPECT_EQ(ZclType::BITMAP32, 0x1B);
  EXPECT_EQ(ZclType::UINT8, 0x20);
  EXPECT_EQ(ZclType::UINT16, 0x21);
  EXPECT_EQ(ZclType::UINT24, 0x22);
  EXPECT_EQ(ZclType::UINT32, 0x23);
  EXPECT_EQ(ZclType::INT8, 0x28);
  EXPECT_EQ(ZclType::INT16, 0x29);
  EXPECT_EQ(ZclType::INT24, 0x2A);
  EXPECT_EQ(ZclType::INT32, 0x2B);
  EXPECT_EQ(ZclType::ENUM8, 0x30);
  EXPECT_EQ(ZclType::ENUM16, 0x31);
  EXPECT_EQ(ZclType::SEMI_FLOAT, 0x38);
  EXPECT_EQ(ZclType::SINGLE_FLOAT, 0x39);
  EXPECT_EQ(ZclType::DOUBLE_FLOAT, 0x3A);
  EXPECT_EQ(ZclType::TEXT, 0x40);
  EXPECT_EQ(ZclType::OCTET_STRING, 0x41);
  EXPECT_EQ(ZclType::CHARACTER_STRING, 0x42);
  EXPECT_EQ(ZclType::TIME_OF_DAY, 0xE0);
  EXPECT_EQ(ZclType::DATE, 0xE1);
  EXPECT_EQ(ZclType::CLUSTER_ID, 0xE8);
  EXPECT_EQ(ZclType::ATTRIBUTE_ID, 0xE9);
  EXPECT_EQ(ZclType::BACNET_OID, 0xEA);
  EXPECT_EQ(ZclType::IEEE_ADDRESS, 0xF0);
}

}  // namespace
}  // namespace qx

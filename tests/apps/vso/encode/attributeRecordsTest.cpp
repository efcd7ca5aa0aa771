#include "apps/vso/encode/attributeRecords.h"

#include <gtest/gtest.h>

#include <string>

#include "apps/vso/encode/argumentValues.h"
#include "vso/identifiers/hexify.h"

namespace qx::app {
namespace {

TEST(AttributeRecords, TakeAValueOfEachType) {
  const struct {
    const char* text;
    unsigned int type;
    const char* wire;
  } values[] = {
      {"data8:255", 0x08, "ff"},
      {"data16:0x0102", 0x09, "02 01"},
      {"data24:0x010203", 0x0A, "03 02 01"},
      {"data32:0x01020304", 0x0B, "04 03 02 01"},
      {"boolean:true", 0x10, "01"},
      {"boolean:false", 0x10, "00"},
      {"boolean:255", 0x10, "ff"},
      {"bitmap8:0x81", 0x18, "81"},
      {"bitmap16:0x0102", 0x19, "02 01"},
      {"bitmap24:0x010203", 0x1A, "03 02 01"},
      {"bitmap32:0xffffffff", 0x1B, "ff ff ff ff"},
      {"uint8:0", 0x20, "00"},
      {"uint16:65535", 0x21, "ff ff"},
      {"uint24:70000", 0x22, "70 11 01"},
      {"uint32:70000", 0x23, "70 11 01 00"},
      {"int8:-128", 0x28, "80"},
      {"int16:-2", 0x29, "fe ff"},
      {"int24:-8388608", 0x2A, "00 00 80"},
      {"int32:-2147483648", 0x2B, "00 00 00 80"},
      {"enum8:3", 0x30, "03"},
      {"enum16:0x0102", 0x31, "02 01"},
      {"semi-float:0x3e00", 0x38, "00 3e"},
      {"single-float:1.5", 0x39, "00 00 c0 3f"},
      {"single-float:1e300", 0x39, "00 00 80 7f"},
      {"double-float:-2", 0x3A, "00 00 00 00 00 00 00 c0"},
      {"text:a:b", 0x40, "03 61 3a 62"},
      {"octet-string:0AfF", 0x41, "02 0a ff"},
      {"octet-string:", 0x41, "00"},
      {"character-string:", 0x42, "00"},
      {"character-string:Lamp", 0x42, "04 4c 61 6d 70"},
      {"time-of-day:0x01020304", 0xE0, "04 03 02 01"},
      {"date:0x01020304", 0xE1, "04 03 02 01"},
      {"cluster-id:0x0102", 0xE8, "02 01"},
      {"attribute-id:0x0102", 0xE9, "02 01"},
      {"bacnet-oid:0x01020304", 0xEA, "04 03 02 01"},
      {"ieee-address:0011223344556677", 0xF0, "77 66 55 44 33 22 11 00"},
      {"0x21:5", 0x21, "05 00"},
  };
  for (const auto& value : values) {
    const AttributeRecordData record = parseAttributeValue(std::string("0x1234:") + value.text);
    std::string wire;
    hexify(record.data_.data(), sizeOfValue(record), wire, true);
    EXPECT_EQ(record.id_, 0x1234) << value.text;
    EXPECT_EQ(record.type_, value.type) << value.text;
    EXPECT_EQ(wire, value.wire) << value.text;
  }
}

TEST(AttributeRecords, TakeAValueOrARefusalForAnAnswer) {
  const ReadAttributeStatusRecord value = parseAttributeAnswer("4:uint8:7");
  EXPECT_EQ(value.id_, 4);
  EXPECT_EQ(value.status_, 0);
  EXPECT_EQ(value.type_, 0x20);
  EXPECT_EQ(value.data_[0], 7);
  const ReadAttributeStatusRecord refusal = parseAttributeAnswer("4:unsupported-attribute");
  EXPECT_EQ(refusal.id_, 4);
  EXPECT_EQ(refusal.status_, 0x86);
}

TEST(AttributeRecords, TakeAStatusByNumberOrByName) {
  const struct {
    const char* text;
    unsigned int status;
  } statuses[] = {{"1:0", 0x00},         {"1:success", 0x00},          {"1:failure", 0x01},
                  {"1:0x87", 0x87},      {"1:invalid-value", 0x87},    {"1:read-only", 0x88},
                  {"1:not-found", 0x8B}, {"1:hardware-failure", 0xC0}, {"1:255", 0xFF}};
  for (const auto& row : statuses) EXPECT_EQ(parseAttributeStatus(row.text).status_, row.status) << row.text;
}

TEST(AttributeRecords, RefuseTheNameThatStandsForAllOtherStatuses) {
  EXPECT_THROW(parseAttributeStatus("1:uknown-status"), BadArgument);
  EXPECT_THROW(parseAttributeStatus("1:"), BadArgument);
}

}  // namespace
}  // namespace qx::app

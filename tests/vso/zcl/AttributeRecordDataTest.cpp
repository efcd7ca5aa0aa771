#include "vso/zcl/AttributeRecordData.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "support/LogCapture.h"
#include "vso/zcl/Records.h"
#include "vso/zcl/TypeTable.h"

namespace qx {
namespace {

using test::Data;
using test::dataOf;
using testing::IsEmpty;

std::string printed(const AttributeRecordData& record) {
  std::ostringstream out;
  record.print(out);
  return out.str();
}

/// The digits of `count` equal bytes.
std::string digits(unsigned int count, const std::string& byte) {
  std::string text;
  for (unsigned int i = 0; i < count; ++i) text += byte;
  return text;
}

TEST(AttributeRecordData, HasItsFieldsInOrderWithoutVirtualOperations) {
  static_assert(!std::is_polymorphic_v<AttributeRecordData>);
  static_assert(std::is_same_v<decltype(AttributeRecordData::id_), unsigned short>);
  static_assert(std::is_same_v<decltype(AttributeRecordData::type_), unsigned char>);
  static_assert(std::is_same_v<decltype(AttributeRecordData::data_), boost::array<unsigned char, 200>>);
  EXPECT_EQ(offsetof(AttributeRecordData, id_), 0U);
  EXPECT_LT(offsetof(AttributeRecordData, id_), offsetof(AttributeRecordData, type_));
  EXPECT_LT(offsetof(AttributeRecordData, type_), offsetof(AttributeRecordData, data_));
}

TEST(AttributeRecordData, IsTheBaseOfTheRecordsOfTheCommands) {
  static_assert(std::is_base_of_v<AttributeRecordData, ReportAttributeRecord>);
  static_assert(std::is_base_of_v<AttributeRecordData, WriteAttributeRecord>);
  static_assert(std::is_base_of_v<AttributeRecordData, ReadAttributeStatusRecord>);
  static_assert(std::is_base_of_v<AttributeRecordData, WriteAttributeReportRecord>);
  static_assert(std::is_same_v<decltype(ReadAttributeStatusRecord::status_), unsigned char>);
  static_assert(std::is_same_v<decltype(WriteAttributeReportRecord::status_), unsigned char>);
  EXPECT_EQ(sizeof(ReportAttributeRecord), sizeof(AttributeRecordData));
  EXPECT_EQ(sizeof(WriteAttributeRecord), sizeof(AttributeRecordData));
}

TEST(AttributeRecordData, IsZeroByDefault) {
  EXPECT_EQ(test::show(AttributeRecordData()), "0000 00: ");
  EXPECT_EQ(test::show(ReportAttributeRecord()), "0000 00: ");
  EXPECT_EQ(test::show(WriteAttributeRecord()), "0000 00: ");
  EXPECT_EQ(test::show(static_cast<const AttributeRecordData&>(ReadAttributeStatusRecord())), "0000 00: ");
  EXPECT_EQ(test::show(static_cast<const AttributeRecordData&>(WriteAttributeReportRecord())), "0000 00: ");
}

TEST(AttributeRecordData, CopiesWhatItIsMadeOf) {
  Data data;
  data.fill(0xC3);
  const AttributeRecordData record(0x1234, 0x42, data);
  EXPECT_EQ(record.id_, 0x1234);
  EXPECT_EQ(record.type_, 0x42);
  EXPECT_TRUE(record.data_ == data);
}

TEST(AttributeRecordData, ReadsNumbersLittleEndian) {
  const AttributeRecordData record(0, 0, dataOf("01 02 03 04 05 06 07 08 09"));
  EXPECT_EQ(record.getUInt16(), 0x0201);
  EXPECT_EQ(record.getUInt32(), 0x04030201U);
  EXPECT_EQ(record.getUInt64(), 0x0807060504030201ULL);
}

TEST(AttributeRecordData, ReadsAnAddressLeastSignificantByteFirst) {
  EXPECT_EQ(AttributeRecordData(0, 0xF0, dataOf("77 66 55 44 33 22 11 00")).getEuid().toString(), "0011223344556677");
}

TEST(AttributeRecordData, GivesItsBytesAsDigits) {
  const AttributeRecordData record(0, 0, dataOf("01 ab 00 ff"));
  EXPECT_EQ(record.getBytesAsHex(0), "");
  EXPECT_EQ(record.getBytesAsHex(1), "01");
  EXPECT_EQ(record.getBytesAsHex(4), "01ab00ff");
  EXPECT_EQ(record.getBytesAsHex(6), "01ab00ff0000");
}

TEST(AttributeRecordData, GivesAtMost200BytesAsDigits) {
  Data data;
  data.fill(0xC3);
  const AttributeRecordData record(0, 0, data);
  EXPECT_EQ(record.getBytesAsHex(199), digits(199, "c3"));
  for (const unsigned int count : {200U, 201U, 300U, 0xFFFFFFFFU}) {
    EXPECT_EQ(record.getBytesAsHex(count), digits(200, "c3")) << count;
  }
}

TEST(AttributeRecordData, ShowsIdAndTypeWithPrefix) {
  const AttributeRecordData record(0x0A0B, 0x0C, Data{});
  EXPECT_EQ(record.hexId(), "0x0a0b");
  EXPECT_EQ(record.hexType(), "0x0c");
}

class AttributeRecordDataOfType : public testing::TestWithParam<test::TypeSample> {
 protected:
  /// The sample in the form that `valueToString` takes it in: an octet string as in a frame, all else as the parsers
  /// leave it.
  static AttributeRecordData sample() {
    const test::TypeSample& type = GetParam();
    return {0x0102, type.code, dataOf(type.code == 0x41 ? type.wire : type.readable)};
  }
};

INSTANTIATE_TEST_SUITE_P(Types, AttributeRecordDataOfType, testing::ValuesIn(test::TYPE_SAMPLES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(AttributeRecordDataOfType, PrintsItsValue) {
  std::string text;
  EXPECT_FALSE(sample().valueToString(text));
  EXPECT_EQ(text, GetParam().printed);
}

TEST_P(AttributeRecordDataOfType, PrintsNoMoreThanItsValue) {
  AttributeRecordData record = sample();
  // Of a text in readable form this leaves the zero that ends it.
  std::fill(record.data_.begin() + GetParam().bytes, record.data_.end(), 0x5A);
  std::string text;
  EXPECT_FALSE(record.valueToString(text));
  EXPECT_EQ(text, GetParam().printed);
}

TEST_P(AttributeRecordDataOfType, ReplacesTheOutputUnlessAnOctetString) {
  std::string text = "before ";
  EXPECT_FALSE(sample().valueToString(text));
  EXPECT_EQ(text, GetParam().code == 0x41 ? std::string("before ") + GetParam().printed : GetParam().printed);
}

TEST_P(AttributeRecordDataOfType, PrintsTheRecord) {
  std::string type;
  hexify(&GetParam().code, 1, type, false);
  EXPECT_EQ(printed(sample()),
            "<AttributeRecordData id_: 0x0102, type_: 0x" + type + ", data_: " + GetParam().printed + ">");
}

TEST(AttributeRecordData, PrintsABooleanAsOneUnlessZero) {
  for (const auto& [data, expected] : {std::pair("00", "0"), {"01", "1"}, {"80", "1"}, {"ff", "1"}, {"00 01", "0"}}) {
    std::string text;
    EXPECT_FALSE(AttributeRecordData(0, 0x10, dataOf(data)).valueToString(text));
    EXPECT_EQ(text, expected) << data;
  }
}

TEST(AttributeRecordData, PrintsZeros) {
  const std::pair<unsigned char, const char*> expected[] = {
      {0x20, "0"},
      {0x21, "0"},
      {0x23, "0"},
      {0x22, "000000"},
      {0x29, "0000"},
      {0x3A, "0000000000000000"},
      {0xE0, "00000000"},
      {0x42, ""},
      {0x40, ""},
      {0x18, "00"},
      {0xF0, "0000000000000000"},
  };
  for (const auto& [type, zero] : expected) {
    std::string text = "before";
    EXPECT_FALSE(AttributeRecordData(0, type, Data{}).valueToString(text));
    EXPECT_EQ(text, zero) << int{type};
  }
}

TEST(AttributeRecordData, PrintsTextUpToTheFirstZero) {
  for (const unsigned char type : {0x40, 0x42}) {
    std::string text;
    EXPECT_FALSE(AttributeRecordData(0, type, dataOf("61 62 00 63")).valueToString(text));
    EXPECT_EQ(text, "ab");
  }
}

TEST(AttributeRecordData, PrintsTextWithoutAZeroUpToTheEndOfTheData) {
  for (const unsigned char type : {0x40, 0x42}) {
    Data data;
    data.fill('x');
    std::string text;
    EXPECT_FALSE(AttributeRecordData(0, type, data).valueToString(text));
    EXPECT_EQ(text, std::string(200, 'x'));
  }
}

TEST(AttributeRecordData, PrintsTheLengthByteOfTextInWireForm) {
  std::string text;
  EXPECT_FALSE(AttributeRecordData(0, 0x42, dataOf("02 68 69")).valueToString(text));
  EXPECT_EQ(text, "\x02hi");
}

TEST(AttributeRecordData, WritesNothingForAnEmptyOctetString) {
  std::string text = "before";
  EXPECT_FALSE(AttributeRecordData(0, 0x41, dataOf("00 ab")).valueToString(text));
  EXPECT_EQ(text, "before");
}

TEST(AttributeRecordData, PrintsAnOctetStringInReadableFormAsIfInWireForm) {
  // The digits "abcd": the first one, 0x61, is taken for a length of 97.
  std::string text;
  EXPECT_FALSE(AttributeRecordData(0, 0x41, dataOf("61 62 63 64")).valueToString(text));
  EXPECT_EQ(text, "626364" + digits(94, "00"));
}

TEST(AttributeRecordData, PrintsAnOctetStringUpToTheLastByteOfTheData) {
  Data data;
  data.fill(0xC3);
  data[0] = 199;
  std::string text;
  EXPECT_FALSE(AttributeRecordData(0, 0x41, data).valueToString(text));
  EXPECT_EQ(text, digits(199, "c3"));
}

TEST(AttributeRecordData, ThrowsForAnOctetStringPastTheEndOfTheData) {
  for (const unsigned char length : {200, 201, 255}) {
    const AttributeRecordData record(0, 0x41, test::Data{{length}});
    std::string text;
    try {
      record.valueToString(text);
      ADD_FAILURE() << "no exception for length " << int{length};
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "array<>: index out of range");
    }
    std::ostringstream out;
    EXPECT_THROW(record.print(out), std::out_of_range) << int{length};
  }
}

TEST(AttributeRecordData, RefusesEachTypeOutsideTheTable) {
  const test::LogCapture log;
  std::size_t refused = 0;
  for (unsigned int code = 0; code < 256; ++code) {
    if (test::isKnownType(code)) continue;
    std::string text = "before";
    EXPECT_TRUE(AttributeRecordData(0, static_cast<unsigned char>(code), dataOf("01 02 03 04")).valueToString(text));
    EXPECT_EQ(text, "before") << code;
    EXPECT_EQ(log.count(40000), ++refused) << code;
  }
}

TEST(AttributeRecordData, LogsATypeThatItCannotPrintAsAnError) {
  const test::LogCapture log;
  std::string text;
  EXPECT_TRUE(AttributeRecordData(0x0102, 0xFF, dataOf("01 ab 03 04 05")).valueToString(text));
  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, 40000);
  EXPECT_EQ(lines[0].logger, "root");
  EXPECT_EQ(lines[0].text,
            "AttributeRecordData::valueToString: diagnostics metric value unsupported type: 0xff, data: 01ab0304");
  EXPECT_THAT(lines[0].file, testing::EndsWith("AttributeRecordData.cpp"));
  EXPECT_THAT(lines[0].function, testing::HasSubstr("valueToString(std::"));
}

TEST(AttributeRecordData, LogsNothingBelowTheLevel) {
  const test::LogCapture log(50000);
  std::string text;
  EXPECT_TRUE(AttributeRecordData(0, 0xFF, Data{}).valueToString(text));
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(AttributeRecordData, PrintsFourBytesOfATypeOutsideTheTable) {
  const test::LogCapture log;
  EXPECT_EQ(printed(AttributeRecordData(0x0102, 0xFF, dataOf("01 02 03 04 05"))),
            "<AttributeRecordData id_: 0x0102, type_: 0xff, data_: 01020304 (error)>");
  EXPECT_EQ(log.count(40000), 1U);
}

TEST(AttributeRecordData, PrintsTheSameWhateverTheStreamWasSetTo) {
  std::ostringstream out;
  out << std::hex << std::uppercase << std::showbase << std::setfill('*');
  AttributeRecordData(0x0A0B, 0x20, dataOf("ff")).print(out);
  EXPECT_EQ(out.str(), "<AttributeRecordData id_: 0x0a0b, type_: 0x20, data_: 255>");
}

TEST(AttributeRecordData, ReturnsTheStreamItPrintsTo) {
  std::ostringstream out;
  EXPECT_EQ(&AttributeRecordData(0, 0x20, Data{}).print(out), &out);
}

TEST(AttributeRecordData, IsLeftAloneByPrinting) {
  const AttributeRecordData record(0x0102, 0x41, dataOf("02 ab cd"));
  const std::string before = test::show(record);
  EXPECT_EQ(printed(record), printed(record));
  EXPECT_EQ(test::show(record), before);
}

}  // namespace
}  // namespace qx

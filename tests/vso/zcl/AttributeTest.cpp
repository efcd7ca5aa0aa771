#include "vso/zcl/Attribute.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/Records.h"
#include "vso/zcl/TracedMessage.h"
#include "vso/zcl/TypeTable.h"

namespace qx {
namespace {

using detail::Attribute;
using detail::readFirst;
using detail::RecordLayout;
using detail::recordOf;
using detail::textOf;
using test::bytesOf;
using test::hex;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr Attribute<unsigned char> BYTE{0x0102, 0x20};
constexpr Attribute<signed char> SIGNED{0x0102, 0x28};
constexpr Attribute<unsigned short> SHORT{0x0102, 0x21};
constexpr Attribute<Euid> ADDRESS{0x0102, 0xF0};
constexpr Attribute<std::string> TEXT{0x0102, 0x42};

ZclMessage frameOf(const std::string& text) { return ZclMessage(bytesOf(text)); }
std::string hexByte(unsigned char byte) { return hex(test::bytes({byte})); }

/// The first attribute 0x0102 as byte, signed byte, 16-bit number, address and text.
std::string readAll(const ZclMessage& frame, RecordLayout layout) {
  return std::to_string(readFirst(frame, layout, BYTE)) + ' ' + std::to_string(readFirst(frame, layout, SIGNED)) + ' ' +
         std::to_string(readFirst(frame, layout, SHORT)) + ' ' + readFirst(frame, layout, ADDRESS).toString() + " '" +
         readFirst(frame, layout, TEXT) + '\'';
}

constexpr char NOTHING[] = "0 0 0 0000000000000000 ''";

TEST(Attribute, IsReadFromEachLayoutOfValues) {
  const std::string expected = "254 -2 33278 61000000000081fe '\xFE\x81'";
  EXPECT_EQ(readAll(frameOf("08 07 0a 02 01 f0 fe 81 00 00 00 00 00 61"), RecordLayout::VALUE), expected);
  EXPECT_EQ(readAll(frameOf("08 07 01 02 01 00 f0 fe 81 00 00 00 00 00 61"), RecordLayout::STATUS_VALUE), expected);
  EXPECT_EQ(readAll(frameOf("0c 40 10 07 0a 02 01 f0 fe 81 00 00 00 00 00 61"), RecordLayout::VALUE), expected);
}

TEST(Attribute, IsReadFromAValueOfAnyType) {
  for (const test::TypeSample& sample : test::TYPE_SAMPLES) {
    SCOPED_TRACE(sample);
    const AttributeRecordData::Data data = test::dataOf(sample.readable);
    std::string address;
    std::string text;
    for (int i = 7; i >= 0; --i) address += hexByte(data[static_cast<unsigned int>(i)]);
    for (unsigned int i = 0; data[i] != 0; ++i) text += static_cast<char>(data[i]);
    const std::string expected = std::to_string(data[0]) + ' ' + std::to_string(static_cast<signed char>(data[0])) +
                                 ' ' + std::to_string(data[1] << 8 | data[0]) + ' ' + address + " '" + text + '\'';
    const std::string value = hexByte(sample.code) + ' ' + sample.wire + " ee ee ee ee ee ee ee ee";
    EXPECT_EQ(readAll(frameOf("08 07 0a 02 01 " + value), RecordLayout::VALUE), expected);
    EXPECT_EQ(readAll(frameOf("08 07 01 02 01 00 " + value), RecordLayout::STATUS_VALUE), expected);
  }
}

TEST(Attribute, IsZeroOrEmptyWhereThereIsNone) {
  for (const char* const text : {"08 07 0a", "08 07 0a 02 02 21 01 02", "08 07 0a 01 02 21 01 02"}) {
    EXPECT_EQ(readAll(frameOf(text), RecordLayout::VALUE), NOTHING) << text;
  }
  EXPECT_EQ(readAll(frameOf("08 07 01 02 02 00 21 01 02"), RecordLayout::STATUS_VALUE), NOTHING);
}

TEST(Attribute, IsZeroOrEmptyInEveryTypeOutsideTheTable) {
  for (unsigned int code = 0; code < 256; ++code) {
    if (test::isKnownType(code)) continue;
    const std::string type = hexByte(static_cast<unsigned char>(code));
    EXPECT_EQ(readAll(frameOf("08 07 0a 02 01 " + type + " 61 62 63 64"), RecordLayout::VALUE), NOTHING) << code;
  }
}

TEST(Attribute, IsTheFirstOfItsId) {
  const ZclMessage frame = frameOf("08 07 0a 03 00 42 01 78 02 01 20 61 02 01 21 01 02");
  EXPECT_EQ(readAll(frame, RecordLayout::VALUE), "97 97 97 0000000000000061 'a'");
}

TEST(Attribute, IsReadWithoutALookAtItsStatus) {
  EXPECT_EQ(readAll(frameOf("08 07 01 02 01 86 02 01 00 20 61"), RecordLayout::STATUS_VALUE), NOTHING);
  EXPECT_EQ(readAll(frameOf("08 07 01 01 00 00 20 61 02 01 86 02 01 00 20 62"), RecordLayout::STATUS_VALUE),
            "97 97 97 0000000000000061 'a'");
}

TEST(Attribute, IsReadFromBehindTheEndAsFarAsTheStorageGoes) {
  ZclMessage frame = frameOf("08 07 0a 02 01 f0 61 62 63 64 65 66 67 68");
  frame.length_ = 4;
  EXPECT_EQ(readFirst(frame, RecordLayout::VALUE, ADDRESS).toString(), "6867666564636261");
  EXPECT_EQ(readFirst(frame, RecordLayout::VALUE, TEXT), "abcdefgh");

  // Behind the storage there are zeros.
  U255Buff<unsigned char> full(0x0C);  // records of id 0x0C0C and a type without bytes
  full.length_ = 255;
  full.contents[0] = 0x08;
  full.contents[252] = 0x02;
  full.contents[253] = 0x01;
  full.contents[254] = 0x21;
  EXPECT_EQ(readAll(ZclMessage(full), RecordLayout::VALUE), NOTHING);
  full.contents[249] = 0x02;
  full.contents[250] = 0x01;
  full.contents[251] = 0xF0;
  EXPECT_EQ(readFirst(ZclMessage(full), RecordLayout::VALUE, ADDRESS).toString(), "0000000000210102");
}

TEST(Attribute, IsReadAsTextUpToTheEndOfARecordsData) {
  std::string text = "08 07 0a 02 01 42 ff";
  for (unsigned int i = 0; i < 248; ++i) text += " 61";
  EXPECT_EQ(readFirst(frameOf(text), RecordLayout::VALUE, TEXT), std::string(200, 'a'));
}

TEST(Attribute, LooksAtTheLengthOnceAndReadsWhateverItIs) {
  const test::TracedMessage<> frame(bytesOf("08 07 0a 02 01 20 05"));
  EXPECT_EQ(readFirst(frame, RecordLayout::VALUE, BYTE), 5);
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
}

TEST(Attribute, HasNoMoreThanTheWarningInAFrameShorterThanItsHeader) {
  for (const char* const text : {"", "08", "08 07", "0c 40 10 07"}) {
    const ZclMessage frame = frameOf(text);
    const test::LogCapture log;
    EXPECT_EQ(readAll(frame, RecordLayout::VALUE), NOTHING);
    EXPECT_THAT(log.texts(), testing::AllOf(SizeIs(5), testing::Each("ZclMessage::isValidLength: Invalid ZCL packet "
                                                                     "length: " +
                                                                     std::to_string(frame.length_))));
  }
}

TEST(Attribute, BecomesARecordInWireForm) {
  EXPECT_EQ(test::show(recordOf<unsigned char>(BYTE, 0xFE)), "0102 20: fe");
  EXPECT_EQ(test::show(recordOf<signed char>(SIGNED, -59)), "0102 28: c5");
  EXPECT_EQ(test::show(recordOf<unsigned short>(SHORT, 0x0304)), "0102 21: 04 03");
  Euid euid;
  euid = std::string("0011223344556677");
  EXPECT_EQ(test::show(recordOf(ADDRESS, euid)), "0102 f0: 77 66 55 44 33 22 11");
  EXPECT_EQ(test::show(recordOf(TEXT, std::string("1.0"))), "0102 42: 03 31 2e 30");
  EXPECT_EQ(test::show(recordOf(TEXT, std::string())), "0102 42: ");
  EXPECT_EQ(test::show(recordOf(TEXT, std::string("\0a", 2))), "0102 42: 02 00 61");
}

TEST(Attribute, IsCutTo199CharactersInARecord) {
  for (const std::size_t length : {198U, 199U, 200U, 300U}) {
    const AttributeRecordData record = recordOf(TEXT, std::string(length, 'x'));
    const std::size_t kept = length < 199 ? length : 199;
    EXPECT_EQ(record.data_[0], kept);
    EXPECT_EQ(std::string(record.data_.begin() + 1, record.data_.begin() + 1 + kept), std::string(kept, 'x'));
    EXPECT_THAT(std::vector<unsigned char>(record.data_.begin() + 1 + kept, record.data_.end()), testing::Each(0));
  }
}

TEST(Attribute, TextEndsAtTheFirstZeroOrTheEnd) {
  AttributeRecordData::Data data = test::dataOf("61 62 00 63 64");
  EXPECT_EQ(textOf(data), "ab");
  EXPECT_EQ(textOf(data, 1), "b");
  EXPECT_EQ(textOf(data, 2), "");
  EXPECT_EQ(textOf(data, 3), "cd");
  EXPECT_EQ(textOf(data, 200), "");
  data.fill('x');
  EXPECT_EQ(textOf(data), std::string(200, 'x'));
  EXPECT_EQ(textOf(data, 199), "x");
  EXPECT_EQ(textOf(data, 200), "");
}

/// A message whose attributes anybody may add.
class OpenMessage : public ZclMessage {
 public:
  using ZclMessage::addAttribute;
  using ZclMessage::ZclMessage;
};

AttributeRecordData numberRecord() { return recordOf<unsigned short>(SHORT, 0x0304); }

TEST(ZclMessageAddAttribute, WritesARecordInEachLayout) {
  OpenMessage report(bytesOf("08 07 0a"));
  report.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(report), "08 07 0a 02 01 21 04 03");
  OpenMessage response(bytesOf("0c 40 10 07 01"));
  response.addAttribute(RecordLayout::STATUS_VALUE, numberRecord());
  EXPECT_EQ(hex(response), "0c 40 10 07 01 02 01 00 21 04 03");
}

TEST(ZclMessageAddAttribute, KeepsNumbersAndFailuresAheadOfIt) {
  OpenMessage report(bytesOf("08 07 0a 01 00 f0 01 02 03 04 05 06 07 08 03 00 2a 01 02 83 04 00 0c"));
  report.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(report), "08 07 0a 01 00 f0 01 02 03 04 05 06 07 08 03 00 2a 01 02 83 04 00 0c 02 01 21 04 03");
  OpenMessage response(bytesOf("08 07 01 01 00 86 03 00 00 20 05 04 00 c1"));
  response.addAttribute(RecordLayout::STATUS_VALUE, numberRecord());
  EXPECT_EQ(hex(response), "08 07 01 01 00 86 03 00 00 20 05 04 00 c1 02 01 00 21 04 03");
}

TEST(ZclMessageAddAttribute, WritesStringsAheadOfItWithTheirFirstCharacterAsTheirLength) {
  OpenMessage report(bytesOf("08 07 0a 01 00 42 03 02 61 62 03 00 40 02 01 63"));
  report.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(report), "08 07 0a 01 00 42 02 61 62 03 00 40 01 63 02 01 21 04 03");
}

TEST(ZclMessageAddAttribute, CompletesACutRecordAheadOfIt) {
  OpenMessage report(bytesOf("08 07 0a 01 00 23 05"));
  report.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(report), "08 07 0a 01 00 23 05 00 00 00 02 01 21 04 03");
}

TEST(ZclMessageAddAttribute, CompletesACutRecordFromWhatLiesBehindTheEnd) {
  OpenMessage report(bytesOf("08 07 0a 01 00 23 05 06 07 08"));
  report.length_ = 7;
  report.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(report), "08 07 0a 01 00 23 05 06 07 08 02 01 21 04 03");
}

TEST(ZclMessageAddAttribute, WritesTheRecordsOfAFrameWhoseLengthIsBeyondItsStorage) {
  OpenMessage report(bytesOf("08 07 0a 01 00 23 05 06 07 08"));
  report.length_ = 300;
  // Up to the end there are records of id 0 and type 0, behind which none has a place.
  std::string expected = "08 07 0a 01 00 23 05 06 07 08";
  for (unsigned int i = 10; i < 255; ++i) expected += " 00";
  const test::LogCapture log;
  report.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(report), expected);
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
}

TEST(ZclMessageAddAttribute, ChangesNothingIfTheIdIsThere) {
  for (const std::string& text :
       {std::string("08 07 0a 02 01 42 01 61"), std::string("08 07 0a 03 00 42 01 61 02 01 0c 04 00 42 09 61")}) {
    OpenMessage frame(bytesOf(text));
    frame.addAttribute(RecordLayout::VALUE, numberRecord());
    EXPECT_EQ(hex(frame), text);
  }
  OpenMessage refused(bytesOf("08 07 01 02 01 86"));
  refused.addAttribute(RecordLayout::STATUS_VALUE, numberRecord());
  EXPECT_EQ(hex(refused), "08 07 01 02 01 86");
}

TEST(ZclMessageAddAttribute, LooksAtTheLengthOnce) {
  test::TracedMessage<OpenMessage> frame(bytesOf("08 07 0a"));
  frame.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
}

TEST(ZclMessageAddAttribute, FillsAFrameToItsLastByteWithoutAWarning) {
  std::string text = "08 07 0a";
  for (unsigned int i = 0; i < 61; ++i) text += " 30 00 20 07";
  text += " 31 00 0c";  // 250 bytes
  OpenMessage frame(bytesOf(text));
  const test::LogCapture log;
  frame.addAttribute(RecordLayout::VALUE, numberRecord());
  EXPECT_EQ(hex(frame), text + " 02 01 21 04 03");
  EXPECT_EQ(frame.length_, 255U);
  EXPECT_THAT(log.texts(), IsEmpty());
}

}  // namespace
}  // namespace qx

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/Records.h"
#include "vso/zcl/TracedMessage.h"
#include "vso/zcl/TypeTable.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

using test::bytesOf;
using test::confirmed;
using test::hex;
using test::record;
using test::reported;
using test::requested;
using test::responded;
using test::respondedInForm;
using test::TracedMessage;
using test::written;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int WARN = 30000;

using Ids = std::vector<unsigned short>;
using Texts = std::vector<std::string>;

/// A frame from its parts, each in hexadecimal.
ZclMessage frameOf(const std::string& parts) { return ZclMessage(bytesOf(parts)); }

std::string digitsOf(unsigned char byte) {
  std::string text;
  hexify(&byte, 1, text, false);
  return text;
}

/// `count` times the same bytes.
std::string repeated(unsigned int count, const std::string& part) {
  std::string text;
  for (unsigned int i = 0; i < count; ++i) text += part + ' ';
  return text;
}

/// The digits of `count` bytes, each followed by a blank but the last: as records show them.
std::string shown(unsigned int count, const std::string& part) {
  std::string text = repeated(count, part);
  if (!text.empty()) text.pop_back();
  return text;
}

/// A report whose next record starts at `offset`, behind one string record that fills the space: at least 7 bytes.
std::string reportUpTo(unsigned int offset) {
  return "18 07 0a ff ff 42 " + digitsOf(static_cast<unsigned char>(offset - 7)) + ' ' + repeated(offset - 7, "2e");
}

// Golden bytes.

TEST(ZclMessageAttributes, NameTheCommandsOfTheStandard) {
  EXPECT_EQ(ZclGeneralCommand::READ_ATTRIBUTES, 0);
  EXPECT_EQ(ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE, 1);
  EXPECT_EQ(ZclGeneralCommand::WRITE_ATTRIBUTES, 2);
  EXPECT_EQ(ZclGeneralCommand::WRITE_ATTRIBUTES_RESPONSE, 4);
  EXPECT_EQ(ZclGeneralCommand::REPORT_ATTRIBUTES, 10);
}

TEST(ZclMessageAttributes, AskForIds) {
  ZclMessage frame = frameOf("00 07 00");
  frame.setReadAttributes({0x0000, 0x0102, 0xFFFE});
  EXPECT_EQ(hex(frame), "00 07 00 00 00 02 01 fe ff");
  EXPECT_EQ(requested(frame), (Ids{0x0000, 0x0102, 0xFFFE}));
}

TEST(ZclMessageAttributes, WriteRecords) {
  ZclMessage frame = frameOf("00 07 02");
  frame.setWriteAttributes({record<WriteAttributeRecord>(0x0102, 0x21, "04 03"),
                            record<WriteAttributeRecord>(0x0003, 0x42, "02 68 69"),
                            record<WriteAttributeRecord>(0x0004, 0x10, "01")});
  EXPECT_EQ(hex(frame),
            "00 07 02 "
            "02 01 21 04 03 "     // 0x0102, unsigned 16-bit
            "03 00 42 02 68 69 "  // 3, character string
            "04 00 10 01");       // 4, boolean
  EXPECT_THAT(written(frame), ElementsAre("0102 21: 04 03", "0003 42: 68 69", "0004 10: 01"));
}

TEST(ZclMessageAttributes, ReportRecords) {
  ZclMessage frame = frameOf("18 07 0a");
  frame.setReportAttributes({record<ReportAttributeRecord>(0x0102, 0x21, "04 03"),
                             record<ReportAttributeRecord>(0x0003, 0x41, "02 ab cd"),
                             record<ReportAttributeRecord>(0x0004, 0x10, "01")});
  EXPECT_EQ(hex(frame),
            "18 07 0a "
            "02 01 21 04 03 "     // 0x0102, unsigned 16-bit
            "03 00 41 02 ab cd "  // 3, octet string
            "04 00 10 01");       // 4, boolean
  EXPECT_THAT(reported(frame), ElementsAre("0102 21: 04 03", "0003 41: 61 62 63 64", "0004 10: 01"));
}

TEST(ZclMessageAttributes, ReportANumber) {
  std::vector<ReportAttributeRecord> records;
  frameOf("18 07 0a 02 01 21 04 03").getReportAttributes(records);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].getUInt16(), 0x0304);
  std::string text;
  EXPECT_FALSE(records[0].valueToString(text));
  EXPECT_EQ(text, "772");
}

TEST(ZclMessageAttributes, RespondWithTypeAndValueOnlyOnSuccess) {
  ZclMessage frame = frameOf("18 07 01");
  frame.setReadAttributesResponse({record<ReadAttributeStatusRecord>(0x00, 0x0102, 0x21, "04 03"),
                                   record<ReadAttributeStatusRecord>(0x86, 0x0003, 0x21, "04 03"),
                                   record<ReadAttributeStatusRecord>(0x00, 0x0004, 0x42, "02 68 69")});
  EXPECT_EQ(hex(frame),
            "18 07 01 "
            "02 01 00 21 04 03 "      // 0x0102, success, unsigned 16-bit
            "03 00 86 "               // 3, unsupported
            "04 00 00 42 02 68 69");  // 4, success, character string
  EXPECT_THAT(responded(frame), ElementsAre("00 0102 21: 04 03", "86 0003 21: 04 03", "00 0004 42: 68 69"));
}

TEST(ZclMessageAttributes, RespondWithEveryFailureStatusAlone) {
  for (unsigned int status = 1; status < 256; ++status) {
    const auto byte = static_cast<unsigned char>(status);
    ZclMessage frame = frameOf("18 07 01");
    frame.setReadAttributesResponse({record<ReadAttributeStatusRecord>(byte, 0x0102, 0x21, "04 03")});
    EXPECT_EQ(hex(frame), "18 07 01 02 01 " + digitsOf(byte));
  }
}

TEST(ZclMessageAttributes, RefuseIdsAsUnsupported) {
  ZclMessage frame = frameOf("18 07 01");
  frame.setNoReadAttributeResponse({1, 2});
  EXPECT_EQ(hex(frame),
            "18 07 01 "
            "01 00 86 "   // 1, unsupported
            "02 00 86");  // 2, unsupported
  EXPECT_THAT(responded(frame), ElementsAre("86 0001 00: ", "86 0002 00: "));
}

TEST(ZclMessageAttributes, ConfirmWithTheStatusInFront) {
  ZclMessage frame = frameOf("18 07 04");
  frame.setWriteAttributeResponses({record<WriteAttributeReportRecord>(0x00, 0x0102, 0x21, "04 03"),
                                    record<WriteAttributeReportRecord>(0x88, 0x0003, 0, "")});
  EXPECT_EQ(hex(frame),
            "18 07 04 "
            "00 02 01 "   // success, 0x0102
            "88 03 00");  // read only, 3
  EXPECT_THAT(confirmed(frame), ElementsAre("00 0102 00: ", "88 0003 00: "));
}

TEST(ZclMessageAttributes, StartBehindAManufacturerCode) {
  const std::string header = "04 40 10 07 00";
  ZclMessage frame = frameOf(header);
  frame.setReadAttributes({0x0102});
  EXPECT_EQ(hex(frame), header + " 02 01");
  EXPECT_EQ(requested(frame), Ids{0x0102});
  EXPECT_TRUE(frame.hasReadAttributeId(0x0102));
  EXPECT_FALSE(frame.hasReadAttributeId(0x0700));

  frame.setWriteAttributes({record<WriteAttributeRecord>(0x0102, 0x20, "05")});
  EXPECT_EQ(hex(frame), header + " 02 01 20 05");
  EXPECT_THAT(written(frame), ElementsAre("0102 20: 05"));

  frame.setReportAttributes({record<ReportAttributeRecord>(0x0102, 0x20, "05")});
  EXPECT_EQ(hex(frame), header + " 02 01 20 05");
  EXPECT_THAT(reported(frame), ElementsAre("0102 20: 05"));

  frame.setReadAttributesResponse({record<ReadAttributeStatusRecord>(0, 0x0102, 0x20, "05")});
  EXPECT_EQ(hex(frame), header + " 02 01 00 20 05");
  EXPECT_THAT(responded(frame), ElementsAre("00 0102 20: 05"));

  frame.setNoReadAttributeResponse({0x0102});
  EXPECT_EQ(hex(frame), header + " 02 01 86");

  frame.setWriteAttributeResponses({record<WriteAttributeReportRecord>(0x87, 0x0102, 0, "")});
  EXPECT_EQ(hex(frame), header + " 87 02 01");
  EXPECT_THAT(confirmed(frame), ElementsAre("87 0102 00: "));
}

TEST(ZclMessageAttributes, ReplaceThePayloadAndKeepTheHeader) {
  ZclMessage frame = frameOf("1b 07 33 01 02 03 04 05 06 07 08");
  frame.setReadAttributes({0x0102});
  EXPECT_EQ(hex(frame), "1b 07 33 02 01");
  frame.length_ = 255;
  frame.setReadAttributes({});
  EXPECT_EQ(hex(frame), "1b 07 33");
  frame.length_ = 4000000000;
  frame.setWriteAttributes({});
  EXPECT_EQ(hex(frame), "1b 07 33");
  frame.addByte(1);
  frame.setReportAttributes({});
  EXPECT_EQ(hex(frame), "1b 07 33");
  frame.addByte(1);
  frame.setReadAttributesResponse({});
  EXPECT_EQ(hex(frame), "1b 07 33");
  frame.addByte(1);
  frame.setNoReadAttributeResponse({});
  EXPECT_EQ(hex(frame), "1b 07 33");
  frame.addByte(1);
  frame.setWriteAttributeResponses({});
  EXPECT_EQ(hex(frame), "1b 07 33");
}

// Ids.

TEST(ZclMessageAttributes, FindAnIdInTheList) {
  const ZclMessage frame = frameOf("00 07 00 01 00 02 01");
  EXPECT_TRUE(frame.hasReadAttributeId(0x0001));
  EXPECT_TRUE(frame.hasReadAttributeId(0x0102));
  EXPECT_FALSE(frame.hasReadAttributeId(0x0201));
  EXPECT_FALSE(frame.hasReadAttributeId(0x0200));
  EXPECT_FALSE(frame.hasReadAttributeId(0x0000));
}

TEST(ZclMessageAttributes, FindNoIdInAnEmptyList) {
  EXPECT_FALSE(frameOf("00 07 00").hasReadAttributeId(0));
  EXPECT_THAT(requested(frameOf("00 07 00")), IsEmpty());
}

TEST(ZclMessageAttributes, CompleteHalfAnIdFromBehindTheEnd) {
  EXPECT_EQ(requested(frameOf("00 07 00 01 00 02")), (Ids{0x0001, 0x0002}));
  EXPECT_TRUE(frameOf("00 07 00 01 00 02").hasReadAttributeId(0x0002));
  ZclMessage frame = frameOf("00 07 00 01 00 02 01");
  frame.length_ = 6;
  EXPECT_EQ(requested(frame), (Ids{0x0001, 0x0102}));
}

// Values of every type, in both forms.

class ZclMessageAttributesOfType : public testing::TestWithParam<test::TypeSample> {
 protected:
  static std::string type() { return digitsOf(GetParam().code); }
  static std::string wire() { return GetParam().wire; }
  /// The records of the value and of one behind it, which shows that the value was passed over.
  static std::string valueRecords() { return "02 01 " + type() + ' ' + wire() + " 34 12 20 07"; }
  static std::string responseRecords() { return "02 01 00 " + type() + ' ' + wire() + " 34 12 00 20 07"; }
};

INSTANTIATE_TEST_SUITE_P(Types, ZclMessageAttributesOfType, testing::ValuesIn(test::TYPE_SAMPLES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclMessageAttributesOfType, AreReadInReadableForm) {
  const std::string value = "0102 " + type() + ": " + GetParam().readable;
  EXPECT_THAT(reported(frameOf("18 07 0a " + valueRecords())), ElementsAre(value, "1234 20: 07"));
  EXPECT_THAT(written(frameOf("00 07 02 " + valueRecords())), ElementsAre(value, "1234 20: 07"));
  EXPECT_THAT(responded(frameOf("18 07 01 " + responseRecords())), ElementsAre("00 " + value, "00 1234 20: 07"));
  EXPECT_THAT(respondedInForm(frameOf("18 07 01 " + responseRecords()), false),
              ElementsAre("00 " + value, "00 1234 20: 07"));
}

TEST_P(ZclMessageAttributesOfType, AreReadInWireFormWhenAsked) {
  EXPECT_THAT(respondedInForm(frameOf("18 07 01 " + responseRecords()), true),
              ElementsAre("00 0102 " + type() + ": " + wire(), "00 1234 20: 07"));
}

TEST_P(ZclMessageAttributesOfType, AreBuiltFromWireForm) {
  ZclMessage frame = frameOf("18 07 0a");
  frame.setReportAttributes({record<ReportAttributeRecord>(0x0102, GetParam().code, wire()),
                             record<ReportAttributeRecord>(0x1234, 0x20, "07")});
  EXPECT_EQ(hex(frame), "18 07 0a " + valueRecords());
  frame.setWriteAttributes({record<WriteAttributeRecord>(0x0102, GetParam().code, wire()),
                            record<WriteAttributeRecord>(0x1234, 0x20, "07")});
  EXPECT_EQ(hex(frame), "18 07 0a " + valueRecords());
  frame.setReadAttributesResponse({record<ReadAttributeStatusRecord>(0, 0x0102, GetParam().code, wire()),
                                   record<ReadAttributeStatusRecord>(0, 0x1234, 0x20, "07")});
  EXPECT_EQ(hex(frame), "18 07 0a " + responseRecords());
}

TEST_P(ZclMessageAttributesOfType, RoundTripInWireForm) {
  const ZclMessage original = frameOf("18 07 01 " + responseRecords());
  std::vector<ReadAttributeStatusRecord> records;
  original.getReadAttributesResponse(records, true);
  ZclMessage copy = frameOf("18 07 01");
  copy.setReadAttributesResponse(records);
  EXPECT_EQ(hex(copy), hex(original));
}

TEST_P(ZclMessageAttributesOfType, AreBuiltWithoutTheBytesBehindThem) {
  AttributeRecordData::Data data = test::dataOf(wire());
  std::fill(data.begin() + GetParam().bytes, data.end(), 0xEE);
  ZclMessage frame = frameOf("18 07 0a");
  frame.setReportAttributes({ReportAttributeRecord(0x0102, GetParam().code, data)});
  EXPECT_EQ(hex(frame), "18 07 0a 02 01 " + type() + ' ' + wire());
}

TEST_P(ZclMessageAttributesOfType, LeaveNothingOfTheRecordBeforeThem) {
  const std::string before = "ff ff 42 0c " + repeated(12, "2e");
  EXPECT_EQ(reported(frameOf("18 07 0a " + before + valueRecords())).at(1),
            "0102 " + type() + ": " + GetParam().readable);
  EXPECT_EQ(respondedInForm(frameOf("18 07 01 ff ff 00 42 0c " + repeated(12, "2e") + responseRecords()), true).at(1),
            "00 0102 " + type() + ": " + wire());
}

TEST_P(ZclMessageAttributesOfType, AreCompletedFromBehindTheEndOfTheFrame) {
  // Zeros in a frame that came through the constructors.
  const auto value = bytesOf(wire());
  const std::string header = "18 07 01 02 01 00 " + type();
  for (unsigned int kept = 0; kept < value.length_; ++kept) {
    const std::string part = hex(U255Buff<unsigned char>(value.contents, kept));
    const AttributeRecordData::Data expected = test::dataOf(part);
    EXPECT_THAT(respondedInForm(frameOf(header + ' ' + part), true),
                ElementsAre("00 0102 " + type() + ": " + hex(expected)))
        << kept;
  }
  // What the buffer holds in another one.
  ZclMessage frame = frameOf(header + ' ' + wire());
  frame.length_ = 7;
  EXPECT_THAT(respondedInForm(frame, true), ElementsAre("00 0102 " + type() + ": " + wire()));
  EXPECT_THAT(responded(frame), ElementsAre("00 0102 " + type() + ": " + GetParam().readable));
}

TEST_P(ZclMessageAttributesOfType, AreCutWithOneWarningWhereTheFrameEnds) {
  for (unsigned int fitting = 0; fitting <= GetParam().bytes; ++fitting) {
    const test::LogCapture log;
    // The header, two records of text, and the id, status and type of the third one leave room for `fitting` bytes.
    const auto filler = static_cast<unsigned char>(255 - 3 - (5 + 199) - 5 - 4 - fitting);
    std::vector<ReadAttributeStatusRecord> records = {
        record<ReadAttributeStatusRecord>(0, 0xFFFF, 0x42, digitsOf(199) + repeated(199, "2e")),
        record<ReadAttributeStatusRecord>(0, 0xFFFF, 0x42, digitsOf(filler) + repeated(filler, "2e")),
        record<ReadAttributeStatusRecord>(0, 0x0102, GetParam().code, wire())};
    ZclMessage frame = frameOf("18 07 01");
    frame.setReadAttributesResponse(records);
    EXPECT_EQ(frame.length_, 255U) << fitting;
    EXPECT_EQ(hex(U255Buff<unsigned char>(frame.contents + 255 - fitting - 4, fitting + 4)),
              ("02 01 00 " + type() + ' ' + wire()).substr(0, 11 + 3 * fitting))
        << fitting;
    EXPECT_EQ(log.count(WARN), fitting < GetParam().bytes ? 1U : 0U) << fitting;
  }
}

TEST(ZclMessageAttributes, ReadCharactersWithoutTheirLengthByDefault) {
  const ZclMessage frame = frameOf("18 07 01 00 00 00 42 03 61 62 63");
  std::vector<ReadAttributeStatusRecord> records;
  frame.getReadAttributesResponse(records);
  EXPECT_EQ(records.at(0).data_[0], 'a');
  frame.getReadAttributesResponse(records, true);
  EXPECT_EQ(records.at(0).data_[0], 3);
  EXPECT_EQ(records.at(0).data_[1], 'a');
}

TEST(ZclMessageAttributes, ReadEmptyStrings) {
  for (const std::string type : {"40", "41", "42"}) {
    const std::string records = "01 00 " + type + " 00 02 00 20 07";
    EXPECT_THAT(reported(frameOf("18 07 0a " + records)), ElementsAre("0001 " + type + ": ", "0002 20: 07"));
    ZclMessage frame = frameOf("18 07 0a");
    frame.setReportAttributes(
        {ReportAttributeRecord(1, bytesOf(type).contents[0], {}), record<ReportAttributeRecord>(2, 0x20, "07")});
    EXPECT_EQ(hex(frame), "18 07 0a " + records);
  }
}

TEST(ZclMessageAttributes, ReadZerosWithinText) {
  EXPECT_THAT(reported(frameOf("18 07 0a 01 00 42 03 61 00 62 02 00 41 02 00 ff")),
              ElementsAre("0001 42: 61 00 62", "0002 41: 30 30 66 66"));
}

TEST(ZclMessageAttributes, PassOverTypesOutsideTheTable) {
  for (unsigned int code = 0; code < 256; ++code) {
    if (test::isKnownType(code)) continue;
    const std::string type = digitsOf(static_cast<unsigned char>(code));
    const std::string known = "09 00 21 04 03 ";
    EXPECT_THAT(reported(frameOf("18 07 0a " + known + "01 00 " + type + " 02 00 20 05")),
                ElementsAre("0009 21: 04 03", "0001 " + type + ": ", "0002 20: 05"));
    EXPECT_THAT(written(frameOf("00 07 02 " + known + "01 00 " + type + " 02 00 20 05")),
                ElementsAre("0009 21: 04 03", "0001 " + type + ": ", "0002 20: 05"));
    for (const bool wireForm : {false, true}) {
      EXPECT_THAT(respondedInForm(frameOf("18 07 01 09 00 00 21 04 03 01 00 00 " + type + " 02 00 00 20 05"), wireForm),
                  ElementsAre("00 0009 21: 04 03", "00 0001 " + type + ": ", "00 0002 20: 05"));
    }
  }
}

TEST(ZclMessageAttributes, TakeTheByteBehindAnUnknownTypeForTheNextRecord) {
  EXPECT_THAT(reported(frameOf("18 07 0a 01 00 0c 02 00 21 04 03")), ElementsAre("0001 0c: ", "0002 21: 04 03"));
}

TEST(ZclMessageAttributes, BuildTypesOutsideTheTableWithoutAValue) {
  for (unsigned int code = 0; code < 256; ++code) {
    if (test::isKnownType(code)) continue;
    const auto type = static_cast<unsigned char>(code);
    ZclMessage frame = frameOf("18 07 0a");
    frame.setReportAttributes({record<ReportAttributeRecord>(1, type, "ee ee ee ee")});
    EXPECT_EQ(hex(frame), "18 07 0a 01 00 " + digitsOf(type));
    frame.setReadAttributesResponse({record<ReadAttributeStatusRecord>(0, 1, type, "ee ee ee ee")});
    EXPECT_EQ(hex(frame), "18 07 0a 01 00 00 " + digitsOf(type));
  }
}

// Failed attributes of a read response.

TEST(ZclMessageAttributes, ShowTheRecordBeforeAFailedOne) {
  const ZclMessage frame = frameOf("18 07 01 01 00 00 42 02 68 69 02 00 86 03 00 00 20 05");
  EXPECT_THAT(responded(frame), ElementsAre("00 0001 42: 68 69", "86 0002 42: 68 69", "00 0003 20: 05"));
  EXPECT_THAT(respondedInForm(frame, true),
              ElementsAre("00 0001 42: 02 68 69", "86 0002 42: 02 68 69", "00 0003 20: 05"));
}

TEST(ZclMessageAttributes, ShowTheSameRecordBeforeSeveralFailedOnes) {
  EXPECT_THAT(responded(frameOf("18 07 01 01 00 00 21 04 03 02 00 86 03 00 01 04 00 c1")),
              ElementsAre("00 0001 21: 04 03", "86 0002 21: 04 03", "01 0003 21: 04 03", "c1 0004 21: 04 03"));
}

TEST(ZclMessageAttributes, ShowZerosInAFailedRecordThatIsTheFirst) {
  for (const bool wireForm : {false, true}) {
    EXPECT_THAT(respondedInForm(frameOf("18 07 01 02 00 86 03 00 00 20 05"), wireForm),
                ElementsAre("86 0002 00: ", "00 0003 20: 05"));
  }
}

TEST(ZclMessageAttributes, ShowTheTypeOfAnUnknownRecordBeforeAFailedOne) {
  EXPECT_THAT(responded(frameOf("18 07 01 01 00 00 20 05 02 00 00 0c 03 00 86")),
              ElementsAre("00 0001 20: 05", "00 0002 0c: ", "86 0003 0c: "));
}

TEST(ZclMessageAttributes, ReadEveryStatusButZeroAsFailed) {
  for (unsigned int status = 1; status < 256; ++status) {
    const std::string byte = digitsOf(static_cast<unsigned char>(status));
    EXPECT_THAT(responded(frameOf("18 07 01 01 00 " + byte + " 02 00 00 20 05")),
                ElementsAre(byte + " 0001 00: ", "00 0002 20: 05"));
  }
}

// Write responses.

TEST(ZclMessageAttributes, ConfirmAttributeZeroBySingleStatusByte) {
  EXPECT_THAT(confirmed(frameOf("18 07 04 00")), ElementsAre("00 0000 00: "));
  EXPECT_THAT(confirmed(frameOf("18 07 04 87")), ElementsAre("87 0000 00: "));
  EXPECT_THAT(confirmed(ZclMessage(std::string("18070400"))), ElementsAre("00 0000 00: "));
  EXPECT_THAT(confirmed(frameOf("1c 40 10 07 04 00")), ElementsAre("00 0000 00: "));
}

TEST(ZclMessageAttributes, CompleteAConfirmationFromBehindTheEnd) {
  ZclMessage frame = frameOf("18 07 04 00 02 01");
  frame.length_ = 4;
  EXPECT_THAT(confirmed(frame), ElementsAre("00 0102 00: "));
  frame.length_ = 5;
  EXPECT_THAT(confirmed(frame), ElementsAre("00 0102 00: "));
  EXPECT_THAT(confirmed(frameOf("18 07 04 00 02")), ElementsAre("00 0002 00: "));
}

// Truncation.

struct List {
  const char* name;
  std::string whole;
  std::vector<unsigned int> starts;  ///< Offsets of the records in `whole`.
  Texts (*read)(const ZclMessage&);
};

std::ostream& operator<<(std::ostream& out, const List& row) { return out << row.name; }

std::string number(unsigned short value) {
  std::string text;
  hexify(&value, 1, text, false);
  return text;
}

Texts requestedTexts(const ZclMessage& frame) {
  Texts texts;
  for (const unsigned short id : requested(frame)) texts.push_back(number(id));
  return texts;
}

const char* const VALUES =
    "02 01 21 04 03 "                    // 0x0102, unsigned 16-bit
    "03 00 42 03 61 62 63 "              // 3, character string
    "04 00 0c "                          // 4, a type that is not known
    "05 00 41 02 ab cd "                 // 5, octet string
    "06 00 f0 88 77 66 55 44 33 22 11";  // 6, address

const char* const STATUS_VALUES =
    "02 01 00 21 04 03 "        // 0x0102, success, unsigned 16-bit
    "03 00 86 "                 // 3, unsupported
    "04 00 00 42 03 61 62 63 "  // 4, success, character string
    "05 00 00 41 02 ab cd "     // 5, success, octet string
    "06 00 01";                 // 6, failure

const List LISTS[] = {
    {"getReadAttributes", "00 07 00 02 01 03 00 ff fe", {3, 5, 7}, requestedTexts},
    {"getWriteAttributes", std::string("00 07 02 ") + VALUES, {3, 8, 15, 18, 24}, written},
    {"getReportAttributes", std::string("18 07 0a ") + VALUES, {3, 8, 15, 18, 24}, reported},
    {"getReadAttributesResponse", std::string("18 07 01 ") + STATUS_VALUES, {3, 9, 12, 20, 27}, responded},
    {"getReadAttributesResponseInWireForm",
     std::string("18 07 01 ") + STATUS_VALUES,
     {3, 9, 12, 20, 27},
     [](const ZclMessage& frame) { return respondedInForm(frame, true); }},
    {"getWriteAttributeResponses", "18 07 04 00 02 01 88 03 00 00 ff fe", {3, 6, 9}, confirmed},
    {"getReportAttributesBehindManufacturerCode",
     std::string("1c 40 10 07 0a ") + VALUES,
     {5, 10, 17, 20, 26},
     reported},
};

class ZclMessageAttributesList : public testing::TestWithParam<List> {};

INSTANTIATE_TEST_SUITE_P(Readers, ZclMessageAttributesList, testing::ValuesIn(LISTS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclMessageAttributesList, HasEachRecordThatStartsBeforeTheEnd) {
  const test::LogCapture log;
  const auto whole = bytesOf(GetParam().whole);
  const Texts all = GetParam().read(ZclMessage(whole));
  ASSERT_EQ(all.size(), GetParam().starts.size());
  for (unsigned int length = 0; length <= whole.length_; ++length) {
    const U255Buff<unsigned char> truncated(whole.contents, length);
    U255Buff<unsigned char> padded(truncated);
    padded.length_ = whole.length_;
    const auto records = static_cast<std::ptrdiff_t>(std::count_if(
        GetParam().starts.begin(), GetParam().starts.end(), [length](unsigned int start) { return start < length; }));

    // A record that is cut reads as if zeros followed.
    Texts expected = GetParam().read(ZclMessage(padded));
    ASSERT_GE(expected.size(), static_cast<std::size_t>(records)) << length;
    expected.resize(records);
    EXPECT_EQ(GetParam().read(ZclMessage(truncated)), expected) << length;
    // A record that is whole reads as in the whole frame.
    for (std::ptrdiff_t i = 0; i + 1 < records; ++i) EXPECT_EQ(expected[i], all[i]) << length;

    // With the bytes still there, the length alone decides how many records there are.
    ZclMessage shortened(whole);
    shortened.length_ = length;
    EXPECT_EQ(GetParam().read(shortened), Texts(all.begin(), all.begin() + records)) << length;
  }
}

TEST_P(ZclMessageAttributesList, IsEmptyWithOneWarningInAFrameShorterThanItsHeader) {
  const auto whole = bytesOf(GetParam().whole);
  for (unsigned int length = 0; length < GetParam().starts[0]; ++length) {
    const test::LogCapture log;
    ZclMessage frame(whole);
    frame.length_ = length;
    EXPECT_THAT(GetParam().read(frame), IsEmpty());
    EXPECT_THAT(log.texts(),
                ElementsAre("ZclMessage::isValidLength: Invalid ZCL packet length: " + std::to_string(length)));
  }
}

TEST_P(ZclMessageAttributesList, ChecksTheLengthOnceAndReadsWhateverItIs) {
  const ZclMessage plain(bytesOf(GetParam().whole));
  const TracedMessage<> traced(bytesOf(GetParam().whole));
  EXPECT_EQ(GetParam().read(traced), GetParam().read(plain));
  EXPECT_THAT(traced.calls, ElementsAre("isValidLength()"));
}

TEST_P(ZclMessageAttributesList, LeavesTheFrameAlone) {
  const ZclMessage frame(bytesOf(GetParam().whole));
  const Texts first = GetParam().read(frame);
  EXPECT_EQ(GetParam().read(frame), first);
  EXPECT_EQ(hex(frame), hex(bytesOf(GetParam().whole)));
}

TEST_P(ZclMessageAttributesList, EndsWithTheStorageBehindALengthAbove255) {
  const auto read = [](unsigned int length) {
    ZclMessage frame(bytesOf(GetParam().whole));
    frame.length_ = length;
    return GetParam().read(frame);
  };
  const Texts full = read(255);
  EXPECT_GT(full.size(), GetParam().starts.size());
  EXPECT_EQ(read(256), full);
  EXPECT_EQ(read(0xFFFFFFFF), full);
}

TEST(ZclMessageAttributes, CheckTheLengthForASingleId) {
  const TracedMessage<> frame(bytesOf("00 07 00 02 01"));
  EXPECT_TRUE(frame.hasReadAttributeId(0x0102));
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
  EXPECT_FALSE(frame.hasReadAttributeId(0x0103));
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()", "isValidLength()"));
}

// The end of a record's 200 bytes.

TEST(ZclMessageAttributes, CutTextAt200CharactersAndGoOnBehindIt) {
  for (const unsigned int length : {199U, 200U, 201U, 230U}) {
    const std::string text = digitsOf(static_cast<unsigned char>(length)) + ' ' + repeated(length - 1, "78") + "79 ";
    const unsigned int kept = std::min(length, 200U);
    const std::string expected = length <= 200 ? shown(kept - 1, "78") + " 79" : shown(kept, "78");
    EXPECT_THAT(reported(frameOf("18 07 0a 01 00 42 " + text + "02 00 20 05")),
                ElementsAre("0001 42: " + expected, "0002 20: 05"))
        << length;
    EXPECT_THAT(reported(frameOf("18 07 0a 01 00 40 " + text + "02 00 20 05")),
                ElementsAre("0001 40: " + expected, "0002 20: 05"))
        << length;
  }
}

TEST(ZclMessageAttributes, CutStringsInWireFormAt200BytesAndGoOnBehindThem) {
  for (const std::string type : {"40", "41", "42"}) {
    for (const unsigned int length : {198U, 199U, 200U, 230U}) {
      const std::string size = digitsOf(static_cast<unsigned char>(length));
      EXPECT_THAT(
          respondedInForm(
              frameOf("18 07 01 01 00 00 " + type + ' ' + size + ' ' + repeated(length, "78") + "02 00 00 20 05"),
              true),
          ElementsAre("00 0001 " + type + ": " + size + ' ' + shown(std::min(length, 199U), "78"), "00 0002 20: 05"))
          << length;
    }
  }
}

TEST(ZclMessageAttributes, CutOctetsAt200DigitsAndGoOnBehindThem) {
  for (const unsigned int length : {99U, 100U, 101U, 150U, 230U}) {
    const std::string octets = digitsOf(static_cast<unsigned char>(length)) + ' ' + repeated(length, "ab");
    EXPECT_THAT(reported(frameOf("18 07 0a 01 00 41 " + octets + "02 00 20 05")),
                ElementsAre("0001 41: " + shown(std::min(length, 100U), "61 62"), "0002 20: 05"))
        << length;
  }
}

TEST(ZclMessageAttributes, WriteZerosForWhatAStringClaimsBehindItsRecord) {
  for (const unsigned char type : {0x40, 0x41, 0x42}) {
    AttributeRecordData::Data data;
    data.fill('x');
    data[0] = 210;
    ZclMessage frame = frameOf("18 07 0a");
    frame.setReportAttributes({ReportAttributeRecord(1, type, data), record<ReportAttributeRecord>(2, 0x20, "05")});
    EXPECT_EQ(hex(frame),
              "18 07 0a 01 00 " + digitsOf(type) + " d2 " + repeated(199, "78") + repeated(11, "00") + "02 00 20 05");
  }
}

TEST(ZclMessageAttributes, CutAStringThatClaimsMoreThanTheFrameHolds) {
  const test::LogCapture log;
  AttributeRecordData::Data data;
  data.fill('x');
  data[0] = 255;
  ZclMessage frame = frameOf("18 07 0a");
  frame.setReportAttributes({ReportAttributeRecord(1, 0x42, data), record<ReportAttributeRecord>(2, 0x20, "05")});
  EXPECT_EQ(hex(frame), "18 07 0a 01 00 42 ff " + repeated(199, "78") + shown(49, "00"));
  EXPECT_EQ(log.count(WARN), 1U);
}

// The end of the frame and of its storage.

TEST(ZclMessageAttributes, ReadTextThatRunsPastTheFrame) {
  for (const std::string type : {"40", "42"}) {
    EXPECT_THAT(reported(frameOf("18 07 0a 01 00 " + type + " 09 61 62")), ElementsAre("0001 " + type + ": 61 62"));
    ZclMessage frame = frameOf("18 07 0a 01 00 " + type + " 09 61 62 63 64");
    frame.length_ = 9;
    EXPECT_THAT(reported(frame), ElementsAre("0001 " + type + ": 61 62 63 64"));
  }
}

TEST(ZclMessageAttributes, ReadOctetsThatRunPastTheFrame) {
  ZclMessage frame = frameOf("18 07 0a 01 00 41 03 ab");
  EXPECT_THAT(reported(frame), ElementsAre("0001 41: 61 62 30 30 30 30"));
  frame.contents[8] = 0xCD;
  frame.contents[9] = 0xEF;
  EXPECT_THAT(reported(frame), ElementsAre("0001 41: 61 62 63 64 65 66"));
}

TEST(ZclMessageAttributes, ReadTextThatRunsPastTheStorage) {
  for (const std::string length : {"03", "c8", "ff"}) {
    const ZclMessage frame = frameOf(reportUpTo(249) + "01 00 42 " + length + " 61 62");
    ASSERT_EQ(frame.length_, 255U);
    const Texts records = reported(frame);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1], "0001 42: 61 62");
  }
}

TEST(ZclMessageAttributes, ReadOctetsThatRunPastTheStorage) {
  for (const std::string length : {"03", "c8", "ff"}) {
    const ZclMessage frame = frameOf(reportUpTo(249) + "01 00 41 " + length + " ab cd");
    ASSERT_EQ(frame.length_, 255U);
    const Texts records = reported(frame);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1].substr(0, 20), "0001 41: 61 62 63 64");
  }
}

TEST(ZclMessageAttributes, ReadNumbersThatRunPastTheStorage) {
  EXPECT_EQ(reported(frameOf(reportUpTo(249) + "01 00 3a 11 22 33")).at(1), "0001 3a: 11 22 33");
  EXPECT_EQ(reported(frameOf(reportUpTo(251) + "01 00 21 11")).at(1), "0001 21: 11");
  EXPECT_EQ(reported(frameOf(reportUpTo(252) + "01 00 21")).at(1), "0001 21: ");
  EXPECT_EQ(reported(frameOf(reportUpTo(252) + "01 00 42")).at(1), "0001 42: ");
}

TEST(ZclMessageAttributes, ReadARecordOfWhichOnlyTheFirstByteIsStored) {
  EXPECT_EQ(reported(frameOf(reportUpTo(254) + "01")).at(1), "0001 00: ");
  EXPECT_EQ(reported(frameOf(reportUpTo(253) + "01 02")).at(1), "0201 00: ");
  EXPECT_EQ(reported(frameOf(reportUpTo(255))).size(), 1U);
}

TEST(ZclMessageAttributes, EndAWalkOfZerosBehindALengthAbove255) {
  ZclMessage frame = frameOf("18 07 0a");
  frame.length_ = 0xFFFFFFFF;
  EXPECT_EQ(reported(frame).size(), 84U);   // 252 bytes, 3 a record
  EXPECT_EQ(responded(frame).size(), 63U);  // 4 a record
  EXPECT_EQ(confirmed(frame).size(), 84U);
  EXPECT_EQ(requested(frame).size(), 126U);
}

// The limit of 255 bytes for builders.

struct Builder {
  const char* name;
  unsigned int size;  ///< Bytes of a record.
  std::string record;
  void (*build)(ZclMessage&, unsigned int count);
};

std::ostream& operator<<(std::ostream& out, const Builder& row) { return out << row.name; }

const Builder BUILDERS[] = {
    {"setReadAttributes", 2, "02 01",
     [](ZclMessage& frame, unsigned int count) { frame.setReadAttributes(Ids(count, 0x0102)); }},
    {"setNoReadAttributeResponse", 3, "02 01 86",
     [](ZclMessage& frame, unsigned int count) { frame.setNoReadAttributeResponse(Ids(count, 0x0102)); }},
    {"setReportAttributes", 5, "02 01 21 04 03",
     [](ZclMessage& frame, unsigned int count) {
       frame.setReportAttributes({count, record<ReportAttributeRecord>(0x0102, 0x21, "04 03")});
     }},
    {"setWriteAttributes", 5, "02 01 21 04 03",
     [](ZclMessage& frame, unsigned int count) {
       frame.setWriteAttributes({count, record<WriteAttributeRecord>(0x0102, 0x21, "04 03")});
     }},
    {"setReadAttributesResponse", 6, "02 01 00 21 04 03",
     [](ZclMessage& frame, unsigned int count) {
       frame.setReadAttributesResponse({count, record<ReadAttributeStatusRecord>(0, 0x0102, 0x21, "04 03")});
     }},
    {"setWriteAttributeResponses", 3, "87 02 01",
     [](ZclMessage& frame, unsigned int count) {
       frame.setWriteAttributeResponses({count, record<WriteAttributeReportRecord>(0x87, 0x0102, 0, "")});
     }},
};

class ZclMessageAttributesBuilder : public testing::TestWithParam<Builder> {};

INSTANTIATE_TEST_SUITE_P(Builders, ZclMessageAttributesBuilder, testing::ValuesIn(BUILDERS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclMessageAttributesBuilder, FillsAFrameWithoutAWarning) {
  for (const std::string header : {"18 07 33", "1c 40 10 07 33"}) {
    const test::LogCapture log;
    ZclMessage frame = frameOf(header);
    const unsigned int count = (255 - frame.length_) / GetParam().size;
    GetParam().build(frame, count);
    EXPECT_EQ(hex(frame), header + ' ' + shown(count, GetParam().record));
    EXPECT_THAT(log.texts(), IsEmpty());
  }
}

TEST_P(ZclMessageAttributesBuilder, CutsTheFirstFrameThatIsTooLongWithOneWarning) {
  for (const std::string header : {"18 07 33", "1c 40 10 07 33"}) {
    for (const unsigned int more : {1U, 2U, 100U}) {
      const test::LogCapture log;
      ZclMessage frame = frameOf(header);
      const unsigned int count = (255 - frame.length_) / GetParam().size + more;
      GetParam().build(frame, count);
      EXPECT_EQ(frame.length_, 255U);
      EXPECT_EQ(hex(frame), (header + ' ' + repeated(count, GetParam().record)).substr(0, 255 * 3 - 1));
      EXPECT_EQ(log.count(WARN), 1U) << more;
      EXPECT_EQ(log.lines().size(), 1U) << more;
    }
  }
}

TEST_P(ZclMessageAttributesBuilder, WritesNeitherControlNorCommandNorSequence) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  TracedMessage<> frame(bytesOf("1b 07 33"));
  GetParam().build(frame, 1);
  EXPECT_EQ(hex(frame), "1b 07 33 " + GetParam().record);
  EXPECT_THAT(frame.calls, testing::Each("isValidLength()"));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclMessageAttributes, ReadsAResponseInReadableFormThroughTheFormThatIsAskedFor) {
  class Asked : public ZclMessage {
   public:
    using ZclMessage::getReadAttributesResponse;
    void getReadAttributesResponse(std::vector<ReadAttributeStatusRecord>& /*records*/, bool wireForm) const override {
      forms.push_back(wireForm);
    }
    mutable std::vector<bool> forms;
  };
  const Asked frame;
  std::vector<ReadAttributeStatusRecord> records;
  frame.getReadAttributesResponse(records);
  EXPECT_EQ(frame.forms, std::vector<bool>{false});
}

}  // namespace
}  // namespace qx

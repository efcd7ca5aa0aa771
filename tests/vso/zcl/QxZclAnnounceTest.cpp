#include "vso/zcl/QxZclAnnounce.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <list>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/zcl/ListOperations.h"
#include "tests/vso/zcl/QxRows.h"
#include "tests/vso/zcl/RandomFrame.h"
#include "tests/vso/zcl/TypeTable.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/zcl/Records.h"
#include "vso/zcl/TracedMessage.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Row = test::AttributeRow<QxZclAnnounce>;

constexpr char FIRMWARE_LINE[] = "QxZclAnnounce::firmwareVersion: Firmware version pre-pended NULL to string";

QxZclAnnounce frameOf(const std::string& text) { return QxZclAnnounce(bytesOf(text)); }

std::string hexByte(unsigned char byte) { return hex(bytes({byte})); }
std::string repeated(unsigned int count, const std::string& text) {
  std::string all;
  for (unsigned int i = 0; i < count; ++i) all += ' ' + text;
  return all;
}

TEST(QxZclAnnounce, BelongsToTheAnnounceProfile) {
  const QxZclAnnounce frame = frameOf("08 05 0a");
  EXPECT_EQ(frame.getProfileId() & 0xFFFF, 0xC25F);
  EXPECT_LT(frame.getProfileId(), 0);
  EXPECT_EQ(frame.getClusterId(), 0x0001);
}

TEST(QxZclAnnounce, ParsesBytesAndText) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const QxZclAnnounce fromBytes(bytesOf("0c 40 10 05 0a 00 00 20 02"));
  const QxZclAnnounce fromText(std::string("0C4010050a00002002"));
  for (const QxZclAnnounce* frame : {&fromBytes, &fromText}) {
    EXPECT_EQ(hex(*frame), "0c 40 10 05 0a 00 00 20 02");
    EXPECT_TRUE(frame->isManufacturerSpecific());
    EXPECT_EQ(frame->deviceType(), 2);
  }
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

struct BuiltFrame {
  std::string firmware;
  std::string record;  ///< Behind id and type.
  std::string reading;
};

// The firmware text passes once through the list on its way, so that its first character becomes its length.
TEST(QxZclAnnounce, IsBuiltWithTheFirmwareTextsFirstCharacterAsItsLength) {
  const BuiltFrame rows[] = {
      {"", "00", ""},
      {"1", "31" + repeated(0x31, "00"), ""},
      {"1.2.3", "31 2e 32 2e 33" + repeated(0x31 - 4, "00"), ".2.3"},
      {"1.0", "31 2e 30" + repeated(0x31 - 2, "00"), ".0"},
      {"ABCDEFGHIJKLMNOP", "41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50" + repeated(0x41 - 15, "00"),
       "BCDEFGHIJKLMNOP"},
      {"\x05hello", "05 68 65 6c 6c 6f", "hello"},
      {"\x02hello", "02 68 65", "he"},
      {std::string("\0abc", 4), "00", ""},
      {std::string(150, '2'), "32" + repeated(0x32, "32"), std::string(0x32, '2')},
      {std::string(199, 'x'), "78" + repeated(0x78, "78"), std::string(0x78, 'x')},
      {std::string(250, 'x'), "78" + repeated(0x78, "78"), std::string(0x78, 'x')},
  };
  for (const BuiltFrame& row : rows) {
    SCOPED_TRACE(row.firmware);
    const test::LogCapture log(log4cplus::WARN_LOG_LEVEL);
    const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
    const QxZclAnnounce frame(0x0102, 0x0304, 5, row.firmware, "ZB-1");
    EXPECT_EQ(hex(frame), "00 " + hexByte(sequence) + " 0a"   // a general report
                              + " 01 00 21 02 01"             // announce window
                              + " 06 00 21 04 03"             // boot count
                              + " 05 00 20 05"                // reflash version
                              + " 04 00 42 " + row.record     // firmware version
                              + " 07 00 42 04 5a 42 2d 31");  // product string
    EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
    EXPECT_EQ(frame.announceWindow(), 0x0102);
    EXPECT_EQ(frame.bootCount(), 0x0304);
    EXPECT_EQ(frame.reflashVersion(), 5);
    EXPECT_EQ(frame.firmwareVersion(), row.reading);
    EXPECT_EQ(frame.productString(), "ZB-1");
    EXPECT_TRUE(frame.hasFirmwareVersion());
    EXPECT_TRUE(frame.hasProductString());
    EXPECT_FALSE(frame.hasDeviceType());
    EXPECT_THAT(log.texts(), IsEmpty());
  }
}

TEST(QxZclAnnounce, IsBuiltAsAFullFrameIfTheFirmwareTextClaimsTooMuch) {
  const test::LogCapture log;
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const QxZclAnnounce frame(1, 2, 3, std::string(200, '\xFF'), "ZB-1");
  EXPECT_EQ(hex(frame), "00 " + hexByte(sequence) + " 0a"                                  //
                            + " 01 00 21 01 00 06 00 21 02 00 05 00 20 03"                 //
                            + " 04 00 42 ff" + repeated(198, "ff") + repeated(36, "00"));  // no byte behind the data
  EXPECT_EQ(frame.length_, 255U);
  EXPECT_FALSE(frame.hasProductString());
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
  EXPECT_THAT(log.texts(), SizeIs(1));
}

TEST(QxZclAnnounce, IsBuiltWithAnyProductString) {
  for (const std::string& product : {std::string(), std::string("a"), std::string(150, 'p')}) {
    const QxZclAnnounce frame(1, 2, 3, "\x01v", product);
    EXPECT_EQ(frame.productString(), product);
    EXPECT_EQ(frame.firmwareVersion(), "v");
    EXPECT_TRUE(frame.hasProductString());
  }
}

class QxZclAnnounceAttribute : public testing::TestWithParam<Row> {
 protected:
  const Row& row() const { return GetParam(); }
  std::string id() const { return hexByte(static_cast<unsigned char>(row().id)) + " 00"; }
  std::string type() const { return hexByte(row().type); }
  /// A value of the row's own type, and what it reads as.
  std::string wire() const {
    switch (row().type) {
      case 0x20:
        return "fe";
      case 0x21:
        return "fe 81";
      case 0x28:
        return "c5";
      case 0x41:
        return "04 ab cd 12 34";
      default:
        return "03 31 2e 30";
    }
  }
  std::string value() const {
    switch (row().type) {
      case 0x20:
        return "254";
      case 0x21:
        return "33278";
      case 0x28:
        return "-59";
      case 0x41:
        return "abcd:0 1234:1";
      default:
        return "1.0";
    }
  }
  std::string record() const { return id() + ' ' + type() + ' ' + wire(); }
  void expectMissing(const QxZclAnnounce& frame) const {
    EXPECT_EQ(row().read(frame), row().missing) << hex(frame);
    EXPECT_FALSE(row().has(frame)) << hex(frame);
  }
  void expectValue(const QxZclAnnounce& frame) const {
    EXPECT_EQ(row().read(frame), value()) << hex(frame);
    EXPECT_TRUE(row().has(frame)) << hex(frame);
  }
};

INSTANTIATE_TEST_SUITE_P(Attributes, QxZclAnnounceAttribute, testing::ValuesIn(test::attributeRows<QxZclAnnounce>()),
                         [](const auto& row) { return row.param.name; });

TEST_P(QxZclAnnounceAttribute, IsReadFromAReport) {
  expectValue(frameOf("08 05 0a " + record()));
  expectValue(frameOf("0c 40 10 05 0a " + record()));
}

TEST_P(QxZclAnnounceAttribute, IsReadInAnyPlace) {
  const std::string others = "30 00 41 02 01 02 ff 00 42 01 61 " + id().substr(0, 3) + "01 21 01 02 40 00 0c ";
  expectValue(frameOf("08 05 0a " + others + record()));
  expectValue(frameOf("08 05 0a " + record() + ' ' + others));
}

TEST_P(QxZclAnnounceAttribute, IsReadWhateverTheCommandAndTheFrameControl) {
  QxZclAnnounce frame = frameOf("08 05 0a " + record());
  for (unsigned int byte = 0; byte < 256; ++byte) {
    frame.setCid(static_cast<unsigned char>(byte));
    frame.setFcf(static_cast<unsigned char>(byte));
    expectValue(frame);
  }
}

TEST_P(QxZclAnnounceAttribute, IsZeroOrEmptyIfItIsMissing) {
  for (const std::string& text : {std::string("08 05 0a"), std::string("0c 40 10 05 0a"),
                                  "08 05 0a " + id().substr(0, 3) + "01 " + type() + ' ' + wire(),
                                  std::string("08 05 0a 30 00 21 01 02 31 00 20 05")}) {
    expectMissing(frameOf(text));
  }
}

TEST_P(QxZclAnnounceAttribute, IsReadFromAValueOfAnyTypeButHasItsOwn) {
  for (const test::TypeSample& sample : test::TYPE_SAMPLES) {
    SCOPED_TRACE(sample);
    const QxZclAnnounce frame =
        frameOf("08 05 0a " + id() + ' ' + hexByte(sample.code) + ' ' + sample.wire + " 30 00 20 77");
    EXPECT_EQ(row().read(frame), row().reading(test::dataOf(sample.readable)));
    EXPECT_EQ(row().has(frame), sample.code == row().type);
  }
}

TEST_P(QxZclAnnounceAttribute, IsZeroOrEmptyInATypeWithoutBytes) {
  expectMissing(frameOf("08 05 0a " + id() + " 0c"));
  expectMissing(frameOf("08 05 0a " + id() + " ff 30 00 20 77"));
}

TEST_P(QxZclAnnounceAttribute, IsThereIfAnyRecordHasTheType) {
  const QxZclAnnounce frame = frameOf("08 05 0a " + id() + " 18 41 " + record());
  EXPECT_TRUE(row().has(frame));
  EXPECT_EQ(row().read(frame), row().reading(test::dataOf("41")) + (row().takesAll ? ' ' + value() : ""));
}

TEST_P(QxZclAnnounceAttribute, IsNotThereIfIdAndTypeComeInTwoRecords) {
  EXPECT_FALSE(row().has(frameOf("08 05 0a " + id() + " 18 41 30 00 " + type() + ' ' + wire())));
}

TEST_P(QxZclAnnounceAttribute, IsReadFromBehindTheEndOfACutRecord) {
  QxZclAnnounce frame = frameOf("08 05 0a " + record());
  frame.length_ = 4;
  expectValue(frame);
  frame.length_ = 3;
  expectMissing(frame);
  expectMissing(frameOf("08 05 0a " + id()));
}

TEST_P(QxZclAnnounceAttribute, IsMissingInAFrameShorterThanItsHeaderAndEachCallWarnsOnce) {
  for (const char* const text : {"", "08", "08 05", "0c 40 10 05"}) {
    const QxZclAnnounce frame = frameOf(text);
    const std::string line = "ZclMessage::isValidLength: Invalid ZCL packet length: " + std::to_string(frame.length_);
    const test::LogCapture log;
    EXPECT_EQ(row().read(frame), row().missing);
    EXPECT_THAT(log.texts(), ElementsAre(line));
    EXPECT_FALSE(row().has(frame));
    EXPECT_THAT(log.texts(), ElementsAre(line, line));
    EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 2U);
  }
}

TEST_P(QxZclAnnounceAttribute, IsReadWithoutAnyOtherLogLine) {
  const test::LogCapture log;
  expectValue(frameOf("08 05 0a " + record()));
  if (row().name != "firmwareVersion") expectMissing(frameOf("08 05 0a " + id() + " 0c"));
  expectMissing(frameOf("08 05 0a"));
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(QxZclAnnounceAttribute, LooksAtTheLengthOncePerCallAndReadsWhateverItIs) {
  const test::TracedMessage<QxZclAnnounce> frame(bytesOf("08 05 0a " + record()));
  EXPECT_EQ(row().read(frame), value());
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
  EXPECT_TRUE(row().has(frame));
  EXPECT_THAT(frame.calls, SizeIs(2));
}

const test::AttributeSample FIRST{0x81FE, "ab"};
const test::AttributeSample SECOND{0x0706, "c"};

class QxZclAnnounceWriter : public QxZclAnnounceAttribute {
 protected:
  std::string firstRecord() const {
    const bool isText = row().type == 0x42;
    return id() + ' ' + type() + (isText ? " 02 61 62" : row().type == 0x21 ? " fe 81" : " fe");
  }
};

INSTANTIATE_TEST_SUITE_P(Attributes, QxZclAnnounceWriter, testing::ValuesIn(test::rowsWith(&Row::write)),
                         [](const auto& row) { return row.param.name; });

TEST(QxZclAnnounce, WritesAllAttributesButTheTable) {
  EXPECT_THAT(test::attributeRows<QxZclAnnounce>(), SizeIs(16));
  EXPECT_THAT(test::rowsWith(&Row::write), SizeIs(15));
}

TEST_P(QxZclAnnounceWriter, AddsARecord) {
  for (const std::string header : {"08 05 0a", "00 06 33", "0c 40 10 05 0a"}) {
    QxZclAnnounce frame = frameOf(header);
    row().write(frame, FIRST);
    EXPECT_EQ(hex(frame), header + ' ' + firstRecord());
    EXPECT_TRUE(row().has(frame));
    EXPECT_EQ(row().read(frame), row().type == 0x42   ? "ab"
                                 : row().type == 0x21 ? "33278"
                                 : row().type == 0x28 ? "-2"
                                                      : "254");
  }
}

TEST_P(QxZclAnnounceWriter, AddsBehindTheOthers) {
  const std::string others = "08 05 0a 31 00 f0 01 02 03 04 05 06 07 08 30 00 21 02 01 32 00 0c ";
  QxZclAnnounce frame = frameOf(others);
  row().write(frame, FIRST);
  EXPECT_EQ(hex(frame), others + firstRecord());
}

TEST_P(QxZclAnnounceWriter, LeavesAnAttributeThatIsThereAlone) {
  QxZclAnnounce frame = frameOf("08 05 0a");
  row().write(frame, FIRST);
  const QxZclAnnounce first = frame;
  row().write(frame, SECOND);
  EXPECT_EQ(hex(frame), "08 05 0a " + firstRecord());
  EXPECT_TRUE(test::sameStorage(frame, first));
}

TEST_P(QxZclAnnounceWriter, LeavesTheWholeFrameAloneIfARecordOfAnyTypeHasTheId) {
  // Nothing is written anew, neither the texts nor the cut record.
  const std::string text = "08 05 0a 30 00 42 02 68 69 " + id() + " 41 02 ab cd 31 00 42 07 61";
  QxZclAnnounce frame = frameOf(text);
  row().write(frame, FIRST);
  EXPECT_EQ(hex(frame), text);
}

TEST_P(QxZclAnnounceWriter, WritesATextAheadOfItAnew) {
  QxZclAnnounce frame = frameOf("08 05 0a 30 00 42 03 02 68 69 31 00 41 01 03");
  row().write(frame, FIRST);
  // The text's first character is its length now. So is the octets' first digit, 0x30, of which 0x33 and zeros follow.
  EXPECT_EQ(hex(frame), "08 05 0a 30 00 42 02 68 69 31 00 41 30 33" + repeated(0x2F, "00") + ' ' + firstRecord());
}

TEST_P(QxZclAnnounceWriter, CompletesAFrameShorterThanItsHeaderAndWarnsOnce) {
  const test::LogCapture log;
  QxZclAnnounce frame = frameOf("08 05");
  row().write(frame, FIRST);
  EXPECT_EQ(hex(frame), "08 05 00 " + firstRecord());
  EXPECT_THAT(log.texts(), ElementsAre("ZclMessage::isValidLength: Invalid ZCL packet length: 2"));
}

TEST_P(QxZclAnnounceWriter, LooksAtTheLengthOnce) {
  test::TracedMessage<QxZclAnnounce> frame(bytesOf("08 05 0a"));
  row().write(frame, FIRST);
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
}

TEST_P(QxZclAnnounceWriter, DropsWhatDoesNotFitWithOneWarning) {
  std::string text = "08 05 0a";
  for (unsigned int i = 0; i < 62; ++i) text += " 30 00 20 07";
  text += " 31 00 0c";
  QxZclAnnounce frame = frameOf(text);  // 254 bytes
  const test::LogCapture log;
  row().write(frame, FIRST);
  EXPECT_EQ(hex(frame), text + ' ' + id().substr(0, 2));
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
  EXPECT_THAT(log.texts(), SizeIs(1));
}

TEST_P(QxZclAnnounceWriter, TakesNoSequenceNumberAndLogsNothing) {
  const test::LogCapture log;
  QxZclAnnounce frame = frameOf("08 05 0a");
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  row().write(frame, FIRST);
  row().write(frame, SECOND);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclAnnounce, KeepsTheFirstDeviceTypeOfABuiltFrame) {
  QxZclAnnounce frame(1, 2, 3, "1.2.3", "ZB-1");
  frame.deviceType(5);
  const std::string first = hex(frame);
  frame.deviceType(6);
  EXPECT_EQ(frame.deviceType(), 5);
  EXPECT_EQ(hex(frame), first);
}

TEST(QxZclAnnounce, WritesTheExtremesOfNumbers) {
  QxZclAnnounce frame = frameOf("08 05 0a");
  frame.nodeRssi(-128);
  frame.batteryLevel(-1);
  frame.deviceType(255);
  frame.bootCount(0xFFFF);
  frame.channel(0);
  EXPECT_EQ(hex(frame), "08 05 0a 13 00 28 80 15 00 28 ff 00 00 20 ff 06 00 21 ff ff 0c 00 20 00");
  EXPECT_EQ(frame.nodeRssi(), -128);
  EXPECT_EQ(frame.batteryLevel(), -1);
  EXPECT_EQ(frame.deviceType(), 255);
  EXPECT_EQ(frame.bootCount(), 0xFFFF);
}

TEST(QxZclAnnounce, ReadsSignedNumbers) {
  EXPECT_EQ(frameOf("08 05 0a 13 00 28 c5").nodeRssi(), -59);
  EXPECT_EQ(frameOf("08 05 0a 15 00 28 80").batteryLevel(), -128);
  EXPECT_EQ(frameOf("08 05 0a 15 00 28 7f").batteryLevel(), 127);
}

TEST(QxZclAnnounce, ReadsANumberShorterThanItsReader) {
  EXPECT_EQ(frameOf("08 05 0a 06 00 20 05 01 00 20 07").bootCount(), 5);
  EXPECT_EQ(frameOf("08 05 0a 06 00 21 05").bootCount(), 5);
  EXPECT_EQ(frameOf("08 05 0a 06 00 42 01 61 62").bootCount(), 0x61);
}

TEST(QxZclAnnounce, ReadsAFirmwareVersion) {
  const test::LogCapture log;
  const QxZclAnnounce frame = frameOf("08 05 0a 04 00 42 03 31 2e 30");
  EXPECT_EQ(frame.firmwareVersion(), "1.0");
  EXPECT_TRUE(frame.hasFirmwareVersion());
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclAnnounce, ReadsAFirmwareVersionBehindAZeroByteAndSaysSo) {
  const test::LogCapture log;
  EXPECT_EQ(frameOf("08 05 0a 04 00 42 04 00 31 2e 30").firmwareVersion(), "1.0");
  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(lines[0].text, FIRMWARE_LINE);
  EXPECT_EQ(lines[0].level, log4cplus::INFO_LOG_LEVEL);
  EXPECT_EQ(lines[0].logger, "root");
}

TEST(QxZclAnnounce, ReadsNothingBehindTwoZeroBytesOfAFirmwareVersion) {
  const test::LogCapture log;
  EXPECT_EQ(frameOf("08 05 0a 04 00 42 04 00 00 31 2e").firmwareVersion(), "");
  EXPECT_THAT(log.texts(), ElementsAre(FIRMWARE_LINE));
}

TEST(QxZclAnnounce, TakesAnEmptyFirmwareVersionForOneWithAZeroByte) {
  const test::LogCapture log;
  EXPECT_EQ(frameOf("08 05 0a 04 00 42 00").firmwareVersion(), "");
  EXPECT_THAT(log.texts(), ElementsAre(FIRMWARE_LINE));
}

TEST(QxZclAnnounce, LogsNothingForAMissingFirmwareVersion) {
  const test::LogCapture log;
  EXPECT_EQ(frameOf("08 05 0a 07 00 42 01 00").firmwareVersion(), "");
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclAnnounce, LogsNoFirmwareLineAboveInformation) {
  const test::LogCapture log(log4cplus::WARN_LOG_LEVEL);
  EXPECT_EQ(frameOf("08 05 0a 04 00 42 04 00 31 2e 30").firmwareVersion(), "1.0");
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclAnnounce, ReadsAProductStringUpToItsFirstZeroAndLogsNothing) {
  const test::LogCapture log;
  EXPECT_EQ(frameOf("08 05 0a 07 00 42 04 61 62 00 63").productString(), "ab");
  EXPECT_EQ(frameOf("08 05 0a 07 00 42 04 00 61 62 63").productString(), "");
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclAnnounce, ReadsTextsUpToTheEndOfARecordsData) {
  for (const std::string id : {"04 00", "07 00"}) {
    const QxZclAnnounce frame = frameOf("08 05 0a " + id + " 42 ff" + repeated(248, "61"));
    const std::string text = id == "04 00" ? frame.firmwareVersion() : frame.productString();
    EXPECT_EQ(text, std::string(200, 'a'));
  }
  const QxZclAnnounce behindZero = frameOf("08 05 0a 04 00 42 ff 00" + repeated(247, "61"));
  EXPECT_EQ(behindZero.firmwareVersion(), std::string(199, 'a'));
}

struct Table {
  const char* name;
  std::string payload;
  std::string entries;
};

std::ostream& operator<<(std::ostream& out, const Table& row) { return out << row.name; }

const Table TABLES[] = {
    {"NoAttribute", "", ""},
    {"OtherAttributes", "11 00 41 02 ab cd 12 01 41 02 ab cd", ""},
    {"TwoEntries", "12 00 41 04 ab cd 12 34", "abcd:0 1234:1"},
    {"NoEntry", "12 00 41 00", ""},
    {"ZeroAddress", "12 00 41 02 00 00", "0000:0"},
    {"HalfAnEntry", "12 00 41 01 ab", "ab00:0"},
    {"AnEntryAndAHalf", "12 00 41 03 ab cd 12", "abcd:0 1200:1"},
    {"TwoRecords", "12 00 41 04 ab cd 12 34 30 00 20 05 12 00 41 02 56 78", "abcd:0 1234:1 5678:0"},
    {"AnEmptyRecordBetween", "12 00 41 02 ab cd 12 00 41 00 12 00 41 02 56 78", "abcd:0 5678:0"},
    {"DigitsAsText", "12 00 42 08 61 42 63 44 31 32 33 34", "abcd:0 1234:1"},
    {"DigitsAsOtherText", "12 00 40 04 61 42 63 44", "abcd:0"},
    {"OddText", "12 00 42 05 61 62 63 64 65", "abcd:0 e000:1"},
    {"OneDigit", "12 00 42 01 37", "7000:0"},
    {"TwoDigitsMoreThanAnEntry", "12 00 42 06 31 32 33 34 35 36", "1234:0 5600:1"},
    {"ThreeDigits", "12 00 42 03 31 32 33", "1230:0"},
    // The zero ends the text, yet the entry that it stands in is decoded from what follows.
    {"ZeroWithinAnEntry", "12 00 42 08 31 32 00 34 35 36 37 38", "1204:0"},
    {"ZeroBehindAnEntry", "12 00 42 08 31 32 33 34 00 36 37 38", "1234:0"},
    {"ZeroFirst", "12 00 42 04 00 31 32 33", ""},
    // '*' to '?' count as their low four bits, blanks, 'g' and bytes above 0x7F as 0.
    {"NoDigits", "12 00 42 08 2a 3f 2f 3a 20 67 47 ff", "affa:0 0000:1"},
    {"Number", "12 00 21 31 32", "1200:0"},
    {"Address", "12 00 f0 31 32 33 34 61 62 63 64", "1234:0 abcd:1"},
    {"NumberZero", "12 00 23 00 31 32 33", ""},
    {"TypeWithoutBytes", "12 00 0c", ""},
    {"HundredOctets", "12 00 41 64" + repeated(100, "5a"), "all"},
    {"MoreOctetsThanDataHolds", "12 00 41 ff" + repeated(248, "5a"), "all"},
};

class QxZclAnnounceTable : public testing::TestWithParam<Table> {};

INSTANTIATE_TEST_SUITE_P(Tables, QxZclAnnounceTable, testing::ValuesIn(TABLES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(QxZclAnnounceTable, IsReadEntryByEntry) {
  std::string expected = GetParam().entries;
  if (expected == "all") {
    expected = "5a5a:0";
    for (unsigned int i = 1; i < 50; ++i) expected += " 5a5a:" + std::to_string(i);
  }
  const test::LogCapture log;
  EXPECT_EQ(test::routeTable(frameOf("08 05 0a " + GetParam().payload)), expected);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclAnnounce, EmptiesTheListOfARouteTable) {
  std::list<AccessPoint> list{AccessPoint(1, 2), AccessPoint(3, 4)};
  frameOf("08 05 0a").apRouteTable(list);
  EXPECT_THAT(list, IsEmpty());
  const QxZclAnnounce frame = frameOf("08 05 0a 12 00 41 02 ab cd");
  frame.apRouteTable(list);
  frame.apRouteTable(list);
  ASSERT_THAT(list, SizeIs(1));
  EXPECT_EQ(list.front().destination_, 0xABCD);
  EXPECT_EQ(list.front().table_index_, 0);
}

TEST(QxZclAnnounce, HasAnAttributeOfAnyIdAndType) {
  const QxZclAnnounce frame = frameOf("08 05 0a 34 12 0c 34 12 21 01 02 00 00 42 01 61");
  EXPECT_TRUE(frame.hasAttributeId(0x1234, 0x0C));
  EXPECT_TRUE(frame.hasAttributeId(0x1234, 0x21));
  EXPECT_TRUE(frame.hasAttributeId(0x0000, 0x42));
  EXPECT_FALSE(frame.hasAttributeId(0x1234, 0x42));
  EXPECT_FALSE(frame.hasAttributeId(0x3412, 0x21));
  EXPECT_FALSE(frame.hasAttributeId(0x0000, 0x00));
}

// Readers and writers against the public lists, over frames made by chance.

class QxZclAnnounceByChance : public testing::Test {
 protected:
  /// All readers and tests of a frame with this storage, and each writer on a copy of its own.
  void expectLists(const U255Buff<unsigned char>& bytes, const U255Buff<unsigned char>& storage) {
    QxZclAnnounce frame(bytes);
    test::setStorage(frame, storage);
    const test::AttributeSample sample{random_(), test::randomText(random_)};
    for (const Row& row : test::attributeRows<QxZclAnnounce>()) {
      ASSERT_EQ(row.read(frame), test::readThroughList<ReportAttributeRecord>(frame, row))
          << row << ": " << test::stored(frame);
      const auto list = test::listOf<ReportAttributeRecord>(frame);
      const bool has = std::any_of(list.begin(), list.end(), [&row](const ReportAttributeRecord& record) {
        return record.id_ == row.id && record.type_ == row.type;
      });
      ASSERT_EQ(row.has(frame), has) << row << ": " << test::stored(frame);
      if (!row.write) continue;
      QxZclAnnounce byWriter(bytes);
      QxZclAnnounce byList(bytes);
      test::setStorage(byWriter, storage);
      test::setStorage(byList, storage);
      row.write(byWriter, sample);
      test::addThroughList<ReportAttributeRecord>(byList, row.id, row.type, row.wire(sample));
      ASSERT_EQ(test::stored(byWriter), test::stored(byList)) << row << ": " << test::stored(frame);
    }
  }

  const test::LogCapture quiet_{log4cplus::OFF_LOG_LEVEL};
  std::mt19937 random_{20260105};
};

TEST_F(QxZclAnnounceByChance, AgreesWithTheLists) {
  for (unsigned int i = 0; i < 1500 && !HasFatalFailure(); ++i) {
    const auto bytes = test::randomFrame(random_, false);
    expectLists(bytes, bytes);
  }
}

TEST_F(QxZclAnnounceByChance, AgreesWithTheListsWhateverLiesBehindTheEnd) {
  for (unsigned int i = 0; i < 500 && !HasFatalFailure(); ++i) {
    const auto bytes = test::randomFrame(random_, false);
    auto storage = bytes;
    for (unsigned int at = bytes.length_; at < 255; ++at) storage.contents[at] = static_cast<unsigned char>(random_());
    expectLists(bytes, storage);
  }
}

TEST_F(QxZclAnnounceByChance, AgreesWithTheListsIfTheLengthIsBeyondTheStorage) {
  for (unsigned int i = 0; i < 300 && !HasFatalFailure(); ++i) {
    const auto bytes = test::randomFrame(random_, false);
    auto storage = bytes;
    storage.length_ = 256 + random_() % 1000;
    expectLists(bytes, storage);
  }
}

TEST_F(QxZclAnnounceByChance, BuildsWhatTheListsBuild) {
  for (unsigned int i = 0; i < 300; ++i) {
    const auto window = static_cast<unsigned short>(random_());
    const auto boots = static_cast<unsigned short>(random_());
    const auto reflash = static_cast<unsigned char>(random_());
    const std::string firmware = test::randomText(random_);
    const std::string product = test::randomText(random_);
    const QxZclAnnounce built(window, boots, reflash, firmware, product);
    ZclMessage byList(10, false, false);
    byList.setTsn(built.transactionSequenceNumber());
    const auto add = [&byList](unsigned short id, unsigned char type, const AttributeRecordData::Data& data) {
      test::addThroughList<ReportAttributeRecord>(byList, id, type, data);
    };
    add(0x0001, 0x21, test::AttributeForm<unsigned short>::wire(window));
    add(0x0006, 0x21, test::AttributeForm<unsigned short>::wire(boots));
    add(0x0005, 0x20, test::AttributeForm<unsigned char>::wire(reflash));
    add(0x0004, 0x42, test::AttributeForm<std::string>::wire(firmware));
    add(0x0007, 0x42, test::AttributeForm<std::string>::wire(product));
    ASSERT_EQ(hex(built), hex(byList));
  }
}

}  // namespace
}  // namespace qx

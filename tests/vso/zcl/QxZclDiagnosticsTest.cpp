#include "vso/zcl/QxZclDiagnostics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/TracedMessage.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using testing::ElementsAre;
using testing::IsEmpty;
using Counters = QxdiagnosticsNodeCounters;

const std::string HEADER = "18 05 01 ";
/// Fields 1 to 15.
const std::string BLOCK = "00 01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 00 09 00 0a 00 0b 00 0c 00 0d 00 0e 00 0f ";
const Counters COUNTERS{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
/// Something else, to be left alone.
const Counters BEFORE{9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};

QxZclDiagnostics frameOf(const std::string& hexText) { return QxZclDiagnostics(bytesOf(hexText)); }

/// A record with a block of this many bytes: 01, 02, ...
std::string blockOf(unsigned int size) {
  std::string text = "02 00  00  41 " + hex(bytes({static_cast<unsigned char>(size)})) + " ";
  for (unsigned int i = 1; i <= size; ++i) text += hex(bytes({static_cast<unsigned char>(i)})) + " ";
  return text;
}

/// The type under test, with what only classes of its own see.
class OpenDiagnostics : public QxZclDiagnostics {
 public:
  using QxZclDiagnostics::counters_;
  using QxZclDiagnostics::QxZclDiagnostics;
};

TEST(QxZclDiagnostics, BelongsToThePrivateProfile) {
  EXPECT_EQ(QxZclDiagnostics().getProfileId() & 0xFFFF, 0xC25D);
  EXPECT_LT(QxZclDiagnostics().getProfileId(), 0);
  EXPECT_EQ(QxZclDiagnostics().getClusterId(), 0x0002);
  const std::unique_ptr<ZclMessage> message = std::make_unique<QxZclDiagnostics>();
  EXPECT_EQ(message->getProfileId() & 0xFFFF, 0xC25D);
  EXPECT_EQ(message->getClusterId(), 0x0002);
}

// Built frames

TEST(QxZclDiagnostics, StartsWithoutACommand) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(QxZclDiagnostics()), hex(bytes({0x01, sequence, 0xFF})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(QxZclDiagnostics, ReadsAttributes) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(QxZclDiagnostics(std::vector<unsigned short>{0x0003, 0x0102})), hex(bytes({
                                                                                    0x00, sequence, 0x00,  // header
                                                                                    0x03, 0x00,            // first id
                                                                                    0x02, 0x01             // second id
                                                                                })));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
  EXPECT_EQ(hex(QxZclDiagnostics(std::vector<unsigned short>())),
            hex(bytes({0x00, static_cast<unsigned char>(sequence + 1), 0x00})));
}

struct CommandRow {
  const char* name;
  void (QxZclDiagnostics::*build)(bool);
  unsigned char command;
};

void PrintTo(const CommandRow& row, std::ostream* out) { *out << row.name; }

class DiagnosticsCommand : public testing::TestWithParam<CommandRow> {};

TEST_P(DiagnosticsCommand, CarriesItsArgument) {
  for (const bool argument : {false, true}) {
    QxZclDiagnostics frame;
    const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
    (frame.*GetParam().build)(argument);
    EXPECT_EQ(hex(frame),
              hex(bytes({0x01, sequence, GetParam().command, static_cast<unsigned char>(argument ? 1 : 0)})));
  }
}

TEST_P(DiagnosticsCommand, TakesASequenceNumberOfItsOwn) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  QxZclDiagnostics frame;
  (frame.*GetParam().build)(true);
  EXPECT_EQ(frame.transactionSequenceNumber(), static_cast<unsigned char>(before + 1));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(before + 2));
}

TEST_P(DiagnosticsCommand, ReplacesAWholeFrame) {
  // A manufacturer's general frame from a server.
  QxZclDiagnostics frame(bytesOf("1c 40 10 05 01  03 00 00 23 01 00 00 00"));
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  (frame.*GetParam().build)(true);
  EXPECT_EQ(hex(frame), hex(bytes({0x01, sequence, GetParam().command, 0x01})));
  EXPECT_FALSE(frame.isManufacturerSpecific());
}

TEST_P(DiagnosticsCommand, SetsTheFrameControlThroughTheVirtualOperation) {
  test::TracedMessage<QxZclDiagnostics> frame;
  frame.calls.clear();
  (frame.*GetParam().build)(true);
  ASSERT_FALSE(frame.calls.empty());
  EXPECT_EQ(std::count(frame.calls.begin(), frame.calls.end(), "setFcf(01)"), 2) << "by the header, and once more";
}

INSTANTIATE_TEST_SUITE_P(QxZclDiagnostics, DiagnosticsCommand,
                         testing::Values(CommandRow{"ResetCounters", &QxZclDiagnostics::resetCounters, 0x01},
                                         CommandRow{"DisplaySignalStrength", &QxZclDiagnostics::displaySignalStrength,
                                                    0x02}),
                         [](const auto& row) { return row.param.name; });

// Received frames

TEST(QxZclDiagnostics, TakesReceivedFramesAsTheyAre) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(frameOf("18 05 01 03 00 86")), hex(bytesOf("18 05 01 03 00 86")));
  EXPECT_EQ(hex(QxZclDiagnostics(std::string("180501030086"))), hex(bytesOf("18 05 01 03 00 86")));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, sequence);
}

TEST(QxZclDiagnostics, KeepsItsOwnRecordClear) {
  const std::string answer = HEADER + "02 00  00  41 1e " + BLOCK;
  OpenDiagnostics fromBytes(bytesOf(answer));
  Counters counters;
  ASSERT_TRUE(fromBytes.parseReadAttributesResponse(counters));
  EXPECT_TRUE(fromBytes.counters_ == Counters());
  EXPECT_TRUE(OpenDiagnostics().counters_ == Counters());
  EXPECT_TRUE(OpenDiagnostics(std::string("180501")).counters_ == Counters());
  EXPECT_TRUE(OpenDiagnostics(std::vector<unsigned short>{2}).counters_ == Counters());
}

// Counters

TEST(QxZclDiagnostics, FillsTheCountersMostSignificantByteFirst) {
  Counters counters;
  EXPECT_TRUE(frameOf(HEADER + "02 00  00  41 1e " + BLOCK).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == COUNTERS);
  EXPECT_EQ(counters.version_, 1);
  EXPECT_EQ(counters.mac_rx_unicasts_, 2);
  EXPECT_EQ(counters.aps_frame_counter_failures_, 15);

  EXPECT_TRUE(frameOf(HEADER + blockOf(30)).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == Counters({0x0102, 0x0304, 0x0506, 0x0708, 0x090A, 0x0B0C, 0x0D0E, 0x0F10, 0x1112, 0x1314,
                                    0x1516, 0x1718, 0x191A, 0x1B1C, 0x1D1E}));
}

TEST(QxZclDiagnostics, ReadsCountersBehindTheHeaderOfAManufacturer) {
  Counters counters;
  EXPECT_TRUE(frameOf("1c 40 10 05 01  02 00  00  41 1e " + BLOCK).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == COUNTERS);
}

TEST(QxZclDiagnostics, TakesNoCountersFromABlockOfAnotherSize) {
  for (const unsigned int size : {0U, 1U, 28U, 29U, 31U, 32U, 60U, 200U}) {
    Counters counters = BEFORE;
    EXPECT_FALSE(frameOf(HEADER + blockOf(size)).parseReadAttributesResponse(counters)) << size;
    EXPECT_TRUE(counters == BEFORE) << size;
    EXPECT_TRUE(frameOf(HEADER + blockOf(size)).hasCounters()) << size;
  }
}

TEST(QxZclDiagnostics, TakesNoCountersFromABlockThatClaimsMoreThanTheFrame) {
  Counters counters = BEFORE;
  EXPECT_FALSE(frameOf(HEADER + "02 00  00  41 ff " + BLOCK).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == BEFORE);
}

TEST(QxZclDiagnostics, ReadsZerosForCountersThatWereCutOff) {
  Counters counters = BEFORE;
  EXPECT_TRUE(frameOf(HEADER + "02 00  00  41 1e  00 01 02").parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == Counters({1, 0x0200, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  counters = BEFORE;
  EXPECT_TRUE(frameOf(HEADER + "02 00  00  41 1e").parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == Counters());
}

struct NoValueRow {
  const char* name;
  std::string records;
};

void PrintTo(const NoValueRow& row, std::ostream* out) { *out << row.name; }

class NoCounters : public testing::TestWithParam<NoValueRow> {};

TEST_P(NoCounters, LeavesTheRecordAlone) {
  Counters counters = BEFORE;
  EXPECT_FALSE(frameOf(HEADER + GetParam().records).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == BEFORE);
  EXPECT_FALSE(frameOf(HEADER + GetParam().records).hasCounters());
}

INSTANTIATE_TEST_SUITE_P(QxZclDiagnostics, NoCounters,
                         testing::Values(NoValueRow{"NoRecord", ""},                                //
                                         NoValueRow{"CutBeforeTheType", "02 00 00"},                //
                                         NoValueRow{"CutIntoTheId", "02"},                          //
                                         NoValueRow{"CharacterString", "02 00 00 42 1e " + BLOCK},  //
                                         NoValueRow{"Text", "02 00 00 40 1e " + BLOCK},             //
                                         NoValueRow{"AnotherId", "03 00 00 41 1e " + BLOCK},        //
                                         NoValueRow{"IdOfMoreBits", "02 01 00 41 1e " + BLOCK},     //
                                         NoValueRow{"Failed", "02 00 86"},                          //
                                         NoValueRow{"FailedAfterUptime", "03 00 00 23 01 00 00 00 02 00 86"}),
                         [](const auto& row) { return row.param.name; });

TEST(QxZclDiagnostics, TakesTheFirstRecordOfIdAndType) {
  const std::string wrongType = "02 00 00 42 02 61 62 ";
  const std::string right = "02 00 00 41 1e " + BLOCK;
  const std::string tooShort = "02 00 00 41 02 61 62 ";
  Counters counters = BEFORE;
  EXPECT_TRUE(frameOf(HEADER + "01 00 00 20 07 " + wrongType + right).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == COUNTERS);
  counters = BEFORE;
  EXPECT_TRUE(frameOf(HEADER + right + blockOf(30)).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == COUNTERS);
  counters = BEFORE;
  EXPECT_TRUE(frameOf(HEADER + right + tooShort).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == COUNTERS);
  counters = BEFORE;
  EXPECT_FALSE(frameOf(HEADER + tooShort + right).parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == BEFORE);
}

TEST(QxZclDiagnostics, ShowsTheValueOfTheRecordBeforeInAFailedOne) {
  const QxZclDiagnostics counted = frameOf(HEADER + "09 00 00 41 1e " + BLOCK + "02 00 86");
  Counters counters = BEFORE;
  EXPECT_TRUE(counted.parseReadAttributesResponse(counters));
  EXPECT_TRUE(counters == COUNTERS);
  EXPECT_TRUE(counted.hasCounters());

  const QxZclDiagnostics up = frameOf(HEADER + "09 00 00 23 04 03 02 01  03 00 86");
  unsigned int uptime = 9;
  EXPECT_TRUE(up.parseReadAttributesResponse(uptime));
  EXPECT_EQ(uptime, 0x01020304u);
  EXPECT_TRUE(up.hasUptime());

  EXPECT_TRUE(frameOf(HEADER + "09 00 00 40 01 61  00 00 86").hasLogMessage());
}

// Uptime

TEST(QxZclDiagnostics, ReadsTheUptimeLittleEndian) {
  unsigned int uptime = 9;
  EXPECT_TRUE(frameOf(HEADER + "03 00  00  23  01 00 00 00").parseReadAttributesResponse(uptime));
  EXPECT_EQ(uptime, 1u);
  EXPECT_TRUE(frameOf(HEADER + "03 00  00  23  04 03 02 ff").parseReadAttributesResponse(uptime));
  EXPECT_EQ(uptime, 0xFF020304u);
}

TEST(QxZclDiagnostics, ReadsZerosForAnUptimeThatWasCutOff) {
  unsigned int uptime = 9;
  EXPECT_TRUE(frameOf(HEADER + "03 00  00  23  04 03").parseReadAttributesResponse(uptime));
  EXPECT_EQ(uptime, 0x0304u);
}

TEST(QxZclDiagnostics, TakesTheFirstUptimeOfItsType) {
  unsigned int uptime = 9;
  EXPECT_TRUE(frameOf(HEADER + "03 00 00 21 07 00  03 00 00 23 05 00 00 00  03 00 00 23 06 00 00 00")
                  .parseReadAttributesResponse(uptime));
  EXPECT_EQ(uptime, 5u);
}

class NoUptime : public testing::TestWithParam<NoValueRow> {};

TEST_P(NoUptime, LeavesTheNumberAlone) {
  unsigned int uptime = 9;
  EXPECT_FALSE(frameOf(HEADER + GetParam().records).parseReadAttributesResponse(uptime));
  EXPECT_EQ(uptime, 9u);
  EXPECT_FALSE(frameOf(HEADER + GetParam().records).hasUptime());
}

INSTANTIATE_TEST_SUITE_P(QxZclDiagnostics, NoUptime,
                         testing::Values(NoValueRow{"NoRecord", ""},                          //
                                         NoValueRow{"Signed", "03 00 00 2b 01 00 00 00"},     //
                                         NoValueRow{"SixteenBits", "03 00 00 21 01 00"},      //
                                         NoValueRow{"AnotherId", "02 00 00 23 01 00 00 00"},  //
                                         NoValueRow{"Failed", "03 00 86"},                    //
                                         NoValueRow{"FailedAfterText", "00 00 00 40 01 61 03 00 86"}),
                         [](const auto& row) { return row.param.name; });

// What an answer holds

struct HasRow {
  const char* name;
  std::string records;
  bool logMessage;
  bool counters;
  bool uptime;
};

void PrintTo(const HasRow& row, std::ostream* out) { *out << row.name; }

class DiagnosticsAnswer : public testing::TestWithParam<HasRow> {};

TEST_P(DiagnosticsAnswer, IsToldByIdAndType) {
  const QxZclDiagnostics frame = frameOf(HEADER + GetParam().records);
  EXPECT_EQ(frame.hasLogMessage(), GetParam().logMessage);
  EXPECT_EQ(frame.hasCounters(), GetParam().counters);
  EXPECT_EQ(frame.hasUptime(), GetParam().uptime);
  EXPECT_EQ(frame.hasAttributeId(0x0000, 0x40), GetParam().logMessage);
  EXPECT_EQ(frame.hasAttributeId(0x0002, 0x41), GetParam().counters);
  EXPECT_EQ(frame.hasAttributeId(0x0003, 0x23), GetParam().uptime);
}

INSTANTIATE_TEST_SUITE_P(
    QxZclDiagnostics, DiagnosticsAnswer,
    testing::Values(
        HasRow{"Empty", "", false, false, false}, HasRow{"LogMessage", "00 00 00 40 02 68 69", true, false, false},
        HasRow{"EmptyLogMessage", "00 00 00 40 00", true, false, false},
        HasRow{"LogMessageOfAnotherType", "00 00 00 42 02 68 69", false, false, false},
        HasRow{"Counters", "02 00 00 41 02 61 62", false, true, false},
        HasRow{"CountersOfAnotherType", "02 00 00 42 02 61 62", false, false, false},
        HasRow{"Uptime", "03 00 00 23 01 00 00 00", false, false, true},
        HasRow{"UptimeOfAnotherType", "03 00 00 1b 01 00 00 00", false, false, false},
        HasRow{"All", "00 00 00 40 01 61  02 00 00 41 01 61  03 00 00 23 01 00 00 00", true, true, true},
        HasRow{"AllInReverse", "03 00 00 23 01 00 00 00  02 00 00 41 01 61  00 00 00 40 01 61", true, true, true},
        HasRow{"SecondOfTheId", "00 00 00 20 05  00 00 00 40 01 61", true, false, false},
        HasRow{"TypesOfOthers", "00 00 00 41 01 61  02 00 00 23 01 00 00 00  03 00 00 40 01 61", false, false, false},
        HasRow{"Failed", "00 00 86  02 00 86  03 00 86", false, false, false}),
    [](const auto& row) { return row.param.name; });

TEST(QxZclDiagnostics, HasAnyIdWithItsType) {
  const QxZclDiagnostics frame = frameOf(HEADER + "34 12 00 20 05  35 12 86  36 12 00 0c");
  EXPECT_TRUE(frame.hasAttributeId(0x1234, 0x20));
  EXPECT_FALSE(frame.hasAttributeId(0x1234, 0x21));
  EXPECT_FALSE(frame.hasAttributeId(0x0034, 0x20));
  EXPECT_TRUE(frame.hasAttributeId(0x1235, 0x20)) << "shows the type of the record before";
  EXPECT_TRUE(frame.hasAttributeId(0x1236, 0x0C)) << "a type that nobody knows is a type";
}

TEST(QxZclDiagnostics, WarnsOfAFrameWithoutAWholeHeader) {
  const QxZclDiagnostics frame = frameOf("18 05");
  const test::LogCapture capture;
  Counters counters = BEFORE;
  unsigned int uptime = 9;
  EXPECT_FALSE(frame.parseReadAttributesResponse(counters));
  EXPECT_FALSE(frame.parseReadAttributesResponse(uptime));
  EXPECT_FALSE(frame.hasLogMessage());
  EXPECT_TRUE(counters == BEFORE);
  EXPECT_EQ(uptime, 9u);
  const std::string warning = "ZclMessage::isValidLength: Invalid ZCL packet length: 2";
  EXPECT_THAT(capture.texts(), ElementsAre(warning, warning, warning));
  EXPECT_EQ(capture.count(log4cplus::WARN_LOG_LEVEL), 3u);
}

TEST(QxZclDiagnostics, SaysNothingOfAWholeFrame) {
  const test::LogCapture capture;
  Counters counters;
  EXPECT_TRUE(frameOf(HEADER + "02 00 00 41 1e " + BLOCK).parseReadAttributesResponse(counters));
  EXPECT_FALSE(frameOf(HEADER).hasUptime());
  EXPECT_THAT(capture.texts(), IsEmpty());
}

}  // namespace
}  // namespace qx

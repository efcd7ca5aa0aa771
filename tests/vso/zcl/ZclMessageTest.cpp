#include "vso/zcl/ZclMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/Records.h"
#include "vso/zcl/TracedMessage.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using test::TracedMessage;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int WARN = 30000;
constexpr int FATAL = 50000;

/// The counter as the file's objects are made, before any test has run.
const unsigned char COUNTER_AT_LOAD = ZclMessage::transactionSequenceNumber_;

std::vector<unsigned char> storage(const ZclMessage& frame) { return {frame.contents, frame.contents + 255}; }

/// Two lowercase digits.
std::string digits(unsigned char byte) {
  std::string text;
  hexify(&byte, 1, text, false);
  return text;
}

/// How far the counter has moved since `before`.
unsigned char taken(unsigned char before) {
  return static_cast<unsigned char>(ZclMessage::transactionSequenceNumber_ - before);
}

/// The bits that the flags of a frame add to its control byte.
unsigned char flagsOf(ZclMessage frame) {
  frame.setFcf(0);
  return frame.contents[0];
}

// Construction.

TEST(ZclMessage, IsEmptyByDefault) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const ZclMessage frame;
  EXPECT_EQ(frame.length_, 0U);
  EXPECT_THAT(storage(frame), Each(0));
  EXPECT_EQ(flagsOf(frame), 0);
  EXPECT_FALSE(frame.isManufacturerSpecific());
  EXPECT_EQ(taken(before), 0);
}

TEST(ZclMessage, MakesItsHeader) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const std::string first = digits(before);
  const std::string second = digits(static_cast<unsigned char>(before + 1));
  const std::string third = digits(static_cast<unsigned char>(before + 2));
  const std::string fourth = digits(static_cast<unsigned char>(before + 3));
  EXPECT_EQ(hex(ZclMessage(0x0A, false, false)), "00 " + first + " 0a");
  EXPECT_EQ(hex(ZclMessage(0x0A, false, true)), "01 " + second + " 0a");
  EXPECT_EQ(hex(ZclMessage(0x0A, true, false)), "04 00 00 " + third + " 0a");
  EXPECT_EQ(hex(ZclMessage(0x0A, true, true)), "05 00 00 " + fourth + " 0a");
  EXPECT_EQ(taken(before), 4);
}

TEST(ZclMessage, IsZeroBehindANewHeader) {
  const ZclMessage frame(0xFF, true, true);
  const std::vector<unsigned char> all = storage(frame);
  EXPECT_THAT(std::vector<unsigned char>(all.begin() + 5, all.end()), Each(0));
}

TEST(ZclMessage, CountsFromZeroAtLoad) { EXPECT_EQ(COUNTER_AT_LOAD, 0); }

TEST(ZclMessage, NumbersFramesInARow) {
  unsigned char last = ZclMessage(0, false, false).transactionSequenceNumber();
  bool wrapped = false;
  for (int frame = 0; frame < 256; ++frame) {
    const unsigned char next = ZclMessage(0, frame % 2 == 0, frame % 3 == 0).transactionSequenceNumber();
    EXPECT_EQ(next, static_cast<unsigned char>(last + 1));
    wrapped = wrapped || (last == 255 && next == 0);
    last = next;
  }
  EXPECT_TRUE(wrapped);
}

TEST(ZclMessage, RepeatsANumberAfter256Frames) {
  const unsigned char first = ZclMessage(0, false, false).transactionSequenceNumber();
  for (int frame = 1; frame < 256; ++frame) ZclMessage(0, false, false);
  EXPECT_EQ(ZclMessage(0, false, false).transactionSequenceNumber(), first);
}

TEST(ZclMessage, TakesNoNumberForAParsedOrCopiedFrame) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const ZclMessage parsed(bytesOf("18 07 0a"));
  const ZclMessage fromText(std::string("18070a"));
  ZclMessage copy(parsed);
  copy = fromText;
  EXPECT_EQ(copy.transactionSequenceNumber(), 7);
  EXPECT_EQ(taken(before), 0);
}

TEST(ZclMessage, CopiesBytesAndFlags) {
  const ZclMessage original(bytesOf("05 40 10 07 0a 01"));
  ZclMessage copy(original);
  EXPECT_EQ(hex(copy), "05 40 10 07 0a 01");
  EXPECT_EQ(flagsOf(copy), 0x05);
  copy.addByte(0x02);
  EXPECT_EQ(hex(original), "05 40 10 07 0a 01");
  copy = ZclMessage(bytesOf("18 07 0a"));
  EXPECT_EQ(hex(copy), "18 07 0a");
  EXPECT_EQ(flagsOf(copy), 0);
}

TEST(ZclMessage, TakesFramesOfEveryLength) {
  for (unsigned int length = 0; length <= 255; ++length) {
    const U255Buff<unsigned char> source(std::vector<unsigned char>(255, 0xC3).data(), length);
    const ZclMessage frame(source);
    EXPECT_EQ(hex(frame), hex(source)) << length;
    EXPECT_EQ(frame.length_, length);
  }
}

TEST(ZclMessage, TakesNothingOfAFrameOfMoreThan255Bytes) {
  for (const unsigned int length : {256U, 300U, 0xFFFFFFFFU}) {
    U255Buff<unsigned char> source(0xFF);
    source.length_ = length;
    const ZclMessage frame(source);
    EXPECT_EQ(frame.length_, 0U) << length;
    EXPECT_THAT(storage(frame), Each(0)) << length;
    EXPECT_EQ(flagsOf(frame), 0) << length;
  }
}

TEST(ZclMessage, TakesItsFlagsFromBits2And0OfAParsedControlByte) {
  for (unsigned int control = 0; control < 256; ++control) {
    const auto byte = static_cast<unsigned char>(control);
    const unsigned int flags = control & 0x05;
    EXPECT_EQ(flagsOf(ZclMessage(bytes({byte, 0, 0, 0, 0}))), flags) << control;
    EXPECT_EQ(flagsOf(ZclMessage(digits(byte) + "00000000")), flags) << control;
  }
}

// Hexadecimal text.

TEST(ZclMessage, ReadsHexadecimalText) {
  const ZclMessage frame(std::string("05401007FFaB"));
  EXPECT_EQ(hex(frame), "05 40 10 07 ff ab");
  EXPECT_EQ(flagsOf(frame), 0x05);
  EXPECT_EQ(frame.contents[6], 0);
}

TEST(ZclMessage, TakesCharactersOutsideTheDigitsAsTheyCome) {
  EXPECT_EQ(hex(ZclMessage(std::string("G0:0zz"))), "00 a0 00");
}

TEST(ZclMessage, IsEmptyFromAnEmptyText) {
  const ZclMessage frame{std::string()};
  EXPECT_EQ(frame.length_, 0U);
  EXPECT_THAT(storage(frame), Each(0));
}

TEST(ZclMessage, IsZerosOfHalfTheLengthFromTextOfOddLength) {
  for (const std::size_t length : {1, 3, 7, 255, 257, 509, 511}) {
    const ZclMessage frame(std::string(length, 'f'));
    EXPECT_EQ(frame.length_, length / 2) << length;
    EXPECT_THAT(storage(frame), Each(0)) << length;
    EXPECT_EQ(flagsOf(frame), 0) << length;
  }
}

TEST(ZclMessage, ReadsTextOfUpTo510Characters) {
  for (const std::size_t length : {2, 254, 256, 258, 508, 510}) {
    const ZclMessage frame(std::string(length, 'f'));
    EXPECT_EQ(frame.length_, length / 2) << length;
    EXPECT_EQ(std::count(frame.contents, frame.contents + 255, 0xFF), static_cast<long>(length / 2)) << length;
    EXPECT_EQ(flagsOf(frame), 0x05) << length;
  }
}

TEST(ZclMessage, IsEmptyFromTextOf512CharactersOrMore) {
  for (const std::size_t length : {512, 513, 514, 768, 1024, 65536, 65538}) {
    const ZclMessage frame(std::string(length, 'f'));
    EXPECT_EQ(frame.length_, 0U) << length;
    EXPECT_THAT(storage(frame), Each(0)) << length;
    EXPECT_EQ(flagsOf(frame), 0) << length;
  }
}

// Readers of the header.

TEST(ZclMessage, BelongsToNoCluster) {
  static_assert(std::is_same_v<decltype(ZclMessage().getProfileId()), short>);
  static_assert(std::is_same_v<decltype(ZclMessage().getClusterId()), short>);
  EXPECT_EQ(ZclMessage().getProfileId(), 0xFF);
  EXPECT_EQ(ZclMessage().getClusterId(), -1);
}

TEST(ZclMessage, ReadsAHeaderWithoutManufacturerCode) {
  const ZclMessage frame(bytes({0x19,           // cluster specific, from the server, no default response
                                0x07,           // sequence
                                0x02,           // command
                                0x40, 0x10}));  // payload
  EXPECT_EQ(frame.transactionSequenceNumber(), 0x07);
  EXPECT_EQ(frame.commandIdentifier(), 0x02);
  EXPECT_EQ(frame.headerLength(), 3U);
  EXPECT_FALSE(frame.isManufacturerSpecific());
}

TEST(ZclMessage, ReadsAHeaderWithManufacturerCode) {
  const ZclMessage frame(bytes({0x1D,        // with manufacturer code
                                0x40, 0x10,  // manufacturer code
                                0x07,        // sequence
                                0x02}));     // command
  EXPECT_EQ(frame.manufacturerCode(), 0x1040);
  EXPECT_EQ(frame.transactionSequenceNumber(), 0x07);
  EXPECT_EQ(frame.commandIdentifier(), 0x02);
  EXPECT_EQ(frame.headerLength(), 5U);
  EXPECT_TRUE(frame.isManufacturerSpecific());
}

TEST(ZclMessage, KeepsItsFlagsWhenTheControlByteIsChangedByHand) {
  ZclMessage frame(bytesOf("01 07 0a 0b 0c"));
  frame.contents[0] = 0x04;
  EXPECT_FALSE(frame.isManufacturerSpecific());
  EXPECT_EQ(frame.transactionSequenceNumber(), 0x07);
  EXPECT_EQ(frame.commandIdentifier(), 0x0A);
  EXPECT_EQ(frame.manufacturerCode(), 0);
  EXPECT_EQ(flagsOf(frame), 0x01);
}

TEST(ZclMessage, HasNoManufacturerCodeWithoutTheBit) {
  EXPECT_EQ(ZclMessage(bytesOf("01 40 10")).manufacturerCode(), 0);
}

TEST(ZclMessage, ReadsTheBitsOfTheControlByte) {
  for (unsigned int control = 0; control < 256; ++control) {
    const ZclMessage frame(bytes({static_cast<unsigned char>(control), 0, 0, 0, 0}));
    const unsigned int type = control % 4;
    EXPECT_EQ(frame.affectsEntireProfile(), type == 0) << control;
    EXPECT_EQ(frame.affectsSpecificCluster(), type == 1) << control;
    EXPECT_EQ(frame.isManufacturerSpecific(), control / 4 % 2 == 1) << control;
    EXPECT_EQ(frame.isCommandFromServer(), control / 8 % 2 == 1) << control;
    EXPECT_EQ(frame.isCommandFromClient(), control / 8 % 2 == 0) << control;
    EXPECT_EQ(frame.defaultResponseDisabled(), control / 16 % 2 == 1) << control;
  }
}

TEST(ZclMessage, KnowsThreeCommandsByName) {
  for (unsigned int command = 0; command < 256; ++command) {
    const auto id = static_cast<unsigned char>(command);
    for (const auto& source : {bytes({0x18, 0x07, id}), bytes({0x1C, 0x40, 0x10, 0x07, id})}) {
      const ZclMessage frame(source);
      EXPECT_EQ(frame.isReadAttributesResponse(), command == 1) << command;
      EXPECT_EQ(frame.isWriteAttributesResponse(), command == 4) << command;
      EXPECT_EQ(frame.isReportAttributes(), command == 10) << command;
    }
  }
}

TEST(ZclMessage, AsksItsVirtualReadersForCommandAndDirection) {
  class Overridden : public ZclMessage {
   public:
    explicit Overridden(unsigned char commandId) : commandId_(commandId) {}
    unsigned char commandIdentifier() const override { return commandId_; }
    bool isCommandFromServer() const override { return true; }

   private:
    unsigned char commandId_;
  };
  EXPECT_TRUE(Overridden(1).isReadAttributesResponse());
  EXPECT_TRUE(Overridden(4).isWriteAttributesResponse());
  EXPECT_TRUE(Overridden(10).isReportAttributes());
  EXPECT_FALSE(Overridden(1).isCommandFromClient());
}

struct HeaderReader {
  const char* name;
  int (*read)(const ZclMessage&);
  int value;  ///< Of the frame below.
};

std::ostream& operator<<(std::ostream& out, const HeaderReader& row) { return out << row.name; }

constexpr HeaderReader HEADER_READERS[] = {
    {"affectsEntireProfile", [](const ZclMessage& frame) -> int { return frame.affectsEntireProfile(); }, 0},
    {"affectsSpecificCluster", [](const ZclMessage& frame) -> int { return frame.affectsSpecificCluster(); }, 1},
    {"isCommandFromClient", [](const ZclMessage& frame) -> int { return frame.isCommandFromClient(); }, 0},
    {"isCommandFromServer", [](const ZclMessage& frame) -> int { return frame.isCommandFromServer(); }, 1},
    {"isReadAttributesResponse", [](const ZclMessage& frame) -> int { return frame.isReadAttributesResponse(); }, 0},
    {"isWriteAttributesResponse", [](const ZclMessage& frame) -> int { return frame.isWriteAttributesResponse(); }, 0},
    {"isReportAttributes", [](const ZclMessage& frame) -> int { return frame.isReportAttributes(); }, 1},
    {"defaultResponseDisabled", [](const ZclMessage& frame) -> int { return frame.defaultResponseDisabled(); }, 1},
    {"transactionSequenceNumber", [](const ZclMessage& frame) -> int { return frame.transactionSequenceNumber(); }, 7},
    {"commandIdentifier", [](const ZclMessage& frame) -> int { return frame.commandIdentifier(); }, 10},
};

class ZclMessageHeaderReader : public testing::TestWithParam<HeaderReader> {};

INSTANTIATE_TEST_SUITE_P(Readers, ZclMessageHeaderReader, testing::ValuesIn(HEADER_READERS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclMessageHeaderReader, ChecksTheLengthAndReadsWhateverItIs) {
  const TracedMessage<> frame(bytesOf("19 07 0a"));
  EXPECT_EQ(GetParam().read(frame), GetParam().value);
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
}

TEST_P(ZclMessageHeaderReader, ReadsBytesBehindABadLength) {
  const test::LogCapture log;
  ZclMessage frame(bytesOf("19 07 0a"));
  frame.length_ = 0;
  EXPECT_EQ(GetParam().read(frame), GetParam().value);
  EXPECT_EQ(log.count(WARN), 1U);
}

TEST(ZclMessage, ReadsTheManufacturersFieldsWithoutACheck) {
  const TracedMessage<> frame(bytesOf("05 40 10"));
  EXPECT_TRUE(frame.isManufacturerSpecific());
  EXPECT_EQ(frame.manufacturerCode(), 0x1040);
  EXPECT_THAT(frame.calls, IsEmpty());
}

TEST(ZclMessage, ReadsZerosInATruncatedHeader) {
  const test::LogCapture log;
  const auto whole = bytesOf("19 07 0a");
  for (unsigned int length = 0; length <= 3; ++length) {
    const ZclMessage frame(U255Buff<unsigned char>(whole.contents, length));
    EXPECT_EQ(frame.isValidLength(), length == 3) << length;
    EXPECT_EQ(frame.affectsSpecificCluster(), length >= 1) << length;
    EXPECT_EQ(frame.transactionSequenceNumber(), length >= 2 ? 0x07 : 0) << length;
    EXPECT_EQ(frame.commandIdentifier(), length >= 3 ? 0x0A : 0) << length;
    EXPECT_EQ(frame.manufacturerCode(), 0) << length;
  }
}

TEST(ZclMessage, ReadsZerosInATruncatedHeaderWithManufacturerCode) {
  const test::LogCapture log;
  const auto whole = bytesOf("1d 40 10 07 0a");
  for (unsigned int length = 0; length <= 5; ++length) {
    const ZclMessage frame(U255Buff<unsigned char>(whole.contents, length));
    EXPECT_EQ(frame.isValidLength(), length == 5) << length;
    EXPECT_EQ(frame.isManufacturerSpecific(), length >= 1) << length;
    EXPECT_EQ(frame.manufacturerCode(), length >= 3 ? 0x1040 : length >= 2 ? 0x0040 : 0) << length;
    EXPECT_EQ(frame.transactionSequenceNumber(), length >= 4 ? 0x07 : 0) << length;
    EXPECT_EQ(frame.commandIdentifier(), length >= 5 ? 0x0A : 0) << length;
  }
}

// Length.

TEST(ZclMessage, IsValidFromTheHeaderLengthOn) {
  const test::LogCapture log;
  ZclMessage plain(bytesOf("01"));
  ZclMessage manufacturer(bytesOf("05"));
  for (const unsigned int length : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 255U, 256U, 0xFFFFFFFFU}) {
    plain.length_ = manufacturer.length_ = length;
    EXPECT_EQ(plain.isValidLength(), length >= 3) << length;
    EXPECT_EQ(manufacturer.isValidLength(), length >= 5) << length;
  }
  EXPECT_EQ(log.count(WARN), 3U + 5U);
}

TEST(ZclMessage, WarnsOfABadLength) {
  const test::LogCapture log;
  EXPECT_FALSE(ZclMessage(bytesOf("05 40 10 07")).isValidLength());
  EXPECT_FALSE(ZclMessage(bytesOf("01 07")).isValidLength());
  EXPECT_FALSE(ZclMessage().isValidLength());
  EXPECT_TRUE(ZclMessage(bytesOf("01 07 0a 00")).isValidLength());
  EXPECT_THAT(log.texts(), ElementsAre("ZclMessage::isValidLength: Invalid ZCL packet length: 4",
                                       "ZclMessage::isValidLength: Invalid ZCL packet length: 2",
                                       "ZclMessage::isValidLength: Invalid ZCL packet length: 0"));
  for (const test::LogLine& line : log.lines()) {
    EXPECT_EQ(line.level, WARN);
    EXPECT_EQ(line.logger, "root");
    EXPECT_THAT(line.file, EndsWith("ZclMessage.cpp"));
    EXPECT_THAT(line.function, HasSubstr("ZclMessage::"));
    EXPECT_GT(line.line, 0);
  }
}

TEST(ZclMessage, WarnsOnlyWhereTheLevelLetsItThrough) {
  const test::LogCapture log(WARN + 1);
  EXPECT_FALSE(ZclMessage().isValidLength());
  EXPECT_THAT(log.texts(), IsEmpty());
}

// Writers of the header.

TEST(ZclMessage, InitialisesThroughItsVirtualOperations) {
  TracedMessage<> frame;
  const std::string sequence = digits(ZclMessage::transactionSequenceNumber_);
  frame.initMessage(0x0A, true, true);
  EXPECT_THAT(frame.calls, ElementsAre("setFcf(04)", "setFcf(01)", "setTsn(" + sequence + ")", "setCid(0a)"));
  EXPECT_EQ(hex(frame), "05 00 00 " + sequence + " 0a");
}

TEST(ZclMessage, InitialisesTheControlByteOnlyForAFlag) {
  struct Row {
    bool manufacturerSpecific;
    bool clusterSpecific;
    std::vector<std::string> calls;
  };
  const Row rows[] = {{false, false, {}}, {true, false, {"setFcf(04)"}}, {false, true, {"setFcf(01)"}}};
  for (const Row& row : rows) {
    TracedMessage<> frame;
    std::vector<std::string> expected = row.calls;
    expected.push_back("setTsn(" + digits(ZclMessage::transactionSequenceNumber_) + ")");
    expected.push_back("setCid(33)");
    frame.initMessage(0x33, row.manufacturerSpecific, row.clusterSpecific);
    EXPECT_EQ(frame.calls, expected);
  }
}

TEST(ZclMessage, InitialisesInTheStatedOrder) {
  class Watching : public ZclMessage {
   public:
    void setCid(unsigned char commandId) override {
      lengthThen = length_;
      counterThen = transactionSequenceNumber_;
      manufacturerSpecificThen = isManufacturerSpecific();
      ZclMessage::setCid(commandId);
    }
    unsigned int lengthThen = 0;
    unsigned char counterThen = 0;
    bool manufacturerSpecificThen = false;
  };
  Watching frame;
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.initMessage(0x0A, true, false);
  EXPECT_EQ(frame.lengthThen, 5U);
  EXPECT_EQ(frame.counterThen, before);
  EXPECT_TRUE(frame.manufacturerSpecificThen);
  EXPECT_EQ(taken(before), 1);
}

TEST(ZclMessage, KeepsTheControlByteWhenInitialisedWithoutFlags) {
  ZclMessage frame(bytesOf("18 07 0a 01 02"));
  const std::string sequence = digits(ZclMessage::transactionSequenceNumber_);
  frame.initMessage(0x01, false, false);
  EXPECT_EQ(hex(frame), "18 " + sequence + " 01");
}

TEST(ZclMessage, KeepsTheBitsOfTheFlagsItLoses) {
  ZclMessage frame(0x0A, true, true);
  const std::string sequence = digits(ZclMessage::transactionSequenceNumber_);
  frame.initMessage(0x01, false, false);
  EXPECT_EQ(hex(frame), "05 " + sequence + " 01");
  EXPECT_FALSE(frame.isManufacturerSpecific());
  EXPECT_EQ(flagsOf(frame), 0);
}

TEST(ZclMessage, IsReadyAfterInitialisation) {
  ZclMessage frame;
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.initMessage(0x0A, false, true);
  EXPECT_EQ(hex(frame), "01 " + digits(before) + " 0a");
  EXPECT_EQ(taken(before), 1);
}

TEST(ZclMessage, AddsTheFlagsToTheControlByte) {
  const auto control = [](const std::string& frame, unsigned char value) {
    ZclMessage message(bytesOf(frame));
    message.setFcf(value);
    return message.contents[0];
  };
  for (unsigned int value = 0; value < 256; ++value) {
    const auto byte = static_cast<unsigned char>(value);
    EXPECT_EQ(control("00 07 0a", byte), value) << value;
    EXPECT_EQ(control("01 07 0a", byte), value | 0x01) << value;
    EXPECT_EQ(control("04 40 10 07 0a", byte), value | 0x04) << value;
    EXPECT_EQ(control("05 40 10 07 0a", byte), value | 0x05) << value;
  }
  EXPECT_EQ(control("01 07 0a", 0x10), 0x11);
}

TEST(ZclMessage, LosesTheBitsThatAreNotPassedOn) {
  ZclMessage frame(bytesOf("19 07 0a"));
  frame.setFcf(0);
  EXPECT_EQ(hex(frame), "01 07 0a");
  frame.disableDefaultResponse();
  EXPECT_EQ(hex(frame), "11 07 0a");
  frame.setFcf(0x08);
  EXPECT_EQ(hex(frame), "09 07 0a");
}

TEST(ZclMessage, DisablesTheDefaultResponseOnce) {
  TracedMessage<> frame(bytesOf("09 07 0a"));
  frame.disableDefaultResponse();
  EXPECT_EQ(hex(frame), "19 07 0a");
  EXPECT_TRUE(frame.defaultResponseDisabled());
  frame.disableDefaultResponse();
  EXPECT_EQ(hex(frame), "19 07 0a");
  EXPECT_EQ(std::count(frame.calls.begin(), frame.calls.end(), "setFcf(19)"), 1);
  EXPECT_EQ(std::count_if(frame.calls.begin(), frame.calls.end(),
                          [](const std::string& call) { return call.find("setFcf") == 0; }),
            1);
}

TEST(ZclMessage, WritesSequenceAndCommandAtTheirPlaces) {
  ZclMessage plain(bytesOf("01 00 00 ee ee"));
  plain.setTsn(0x07);
  plain.setCid(0x0A);
  EXPECT_EQ(hex(plain), "01 07 0a ee ee");
  ZclMessage manufacturer(bytesOf("05 40 10 00 00 ee"));
  manufacturer.setTsn(0x07);
  manufacturer.setCid(0x0A);
  EXPECT_EQ(hex(manufacturer), "05 40 10 07 0a ee");
}

TEST(ZclMessage, WritesTheManufacturerCodeLittleEndian) {
  const test::LogCapture log;
  ZclMessage frame(bytesOf("05 00 00 07 0a"));
  frame.setMc(0x1234);
  EXPECT_EQ(hex(frame), "05 34 12 07 0a");
  EXPECT_EQ(frame.manufacturerCode(), 0x1234);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclMessage, AssertsThatAManufacturerCodeIsExpectedAndWritesItAnyway) {
  const test::LogCapture log;
  ZclMessage frame(bytesOf("01 07 0a 0b"));
  frame.setMc(0x1234);
  EXPECT_EQ(hex(frame), "01 34 12 0b");
  const std::vector<test::LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, FATAL);
  EXPECT_EQ(lines[0].file, "ZclMessage");
}

TEST(ZclMessage, PreparesTheMakersFrame) {
  const test::LogCapture log;
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  ZclMessage frame;
  frame.prepareQxCustomMessage(0, 7, false);
  EXPECT_EQ(hex(frame), "04 40 10 00 07");
  EXPECT_TRUE(frame.isManufacturerSpecific());
  EXPECT_EQ(taken(before), 0);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclMessage, PreparesTheMakersFrameWithControlBitsAndCluster) {
  ZclMessage frame;
  frame.prepareQxCustomMessage(0x18, 0xFE, true);
  EXPECT_EQ(hex(frame), "1d 40 10 00 fe");
  EXPECT_EQ(flagsOf(frame), 0x05);
  frame.prepareQxCustomMessage(0x10, 0x01, false);
  EXPECT_EQ(hex(frame), "14 40 10 00 01");
  EXPECT_EQ(flagsOf(frame), 0x04);
}

TEST(ZclMessage, PreparingDropsThePayloadAndKeepsTheByteOfTheSequence) {
  ZclMessage frame(bytesOf("01 07 0a b1 b2 b3"));
  frame.prepareQxCustomMessage(0, 7, true);
  EXPECT_EQ(hex(frame), "05 40 10 b1 07");
}

TEST(ZclMessage, PreparesThroughItsVirtualOperations) {
  TracedMessage<> frame;
  frame.prepareQxCustomMessage(0x12, 7, true);
  EXPECT_THAT(frame.calls, ElementsAre("setFcf(12)", "setMc(1040)", "setCid(07)"));
}

TEST(ZclMessage, PreparingSetsTheLengthLast) {
  class Lengthening : public ZclMessage {
   public:
    void setCid(unsigned char commandId) override {
      ZclMessage::setCid(commandId);
      length_ = 9;
    }
  };
  Lengthening frame;
  frame.prepareQxCustomMessage(0, 7, false);
  EXPECT_EQ(frame.length_, 5U);
}

// Appending.

TEST(ZclMessage, AppendsNumbersLittleEndian) {
  ZclMessage frame(bytesOf("01 07 0a"));
  frame.addByte(0xF1);
  frame.addUint16(0x0203);
  frame.addUint32(0x04050607);
  EXPECT_EQ(hex(frame), "01 07 0a f1 03 02 07 06 05 04");
  EXPECT_EQ(frame.length_, 10U);
}

TEST(ZclMessage, AppendsTextBehindItsLength) {
  ZclMessage frame(bytesOf("01 07 0a"));
  frame.addString("abc");
  frame.addString("");
  frame.addString(std::string("x\0y", 3));
  EXPECT_EQ(hex(frame), "01 07 0a 03 61 62 63 00 03 78 00 79");
}

TEST(ZclMessage, AppendsToAFrameWithoutHeader) {
  ZclMessage frame;
  frame.addByte(0x01);
  EXPECT_EQ(hex(frame), "01");
}

struct Appending {
  const char* name;
  void (*append)(ZclMessage&);
  std::vector<unsigned char> appended;
};

std::ostream& operator<<(std::ostream& out, const Appending& row) { return out << row.name; }

const Appending APPENDINGS[] = {
    {"addByte", [](ZclMessage& frame) { frame.addByte(0xF1); }, {0xF1}},
    {"addUint16", [](ZclMessage& frame) { frame.addUint16(0x0102); }, {0x02, 0x01}},
    {"addUint32", [](ZclMessage& frame) { frame.addUint32(0x01020304); }, {0x04, 0x03, 0x02, 0x01}},
    {"addString", [](ZclMessage& frame) { frame.addString("abcd"); }, {4, 'a', 'b', 'c', 'd'}},
};

class ZclMessageAppending : public testing::TestWithParam<Appending> {};

INSTANTIATE_TEST_SUITE_P(Operations, ZclMessageAppending, testing::ValuesIn(APPENDINGS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclMessageAppending, KeepsWhatFitsInto255BytesAndWarnsOnceOfTheRest) {
  const auto size = static_cast<unsigned int>(GetParam().appended.size());
  for (unsigned int length = 255 - size - 1; length <= 255; ++length) {
    const test::LogCapture log;
    ZclMessage frame;
    std::fill(frame.contents, frame.contents + 255, 0x5A);
    frame.length_ = length;
    GetParam().append(frame);

    std::vector<unsigned char> expected(length, 0x5A);
    expected.insert(expected.end(), GetParam().appended.begin(), GetParam().appended.end());
    expected.resize(std::max(255U, length + size), 0x5A);
    expected.resize(255);
    EXPECT_EQ(storage(frame), expected) << length;
    EXPECT_EQ(frame.length_, std::min(255U, length + size)) << length;
    EXPECT_EQ(log.count(WARN), length + size > 255 ? 1U : 0U) << length;
    EXPECT_THAT(log.texts(), Each(StartsWith("ZclMessage::")));
  }
}

TEST_P(ZclMessageAppending, WarnsAtEachCall) {
  const test::LogCapture log;
  ZclMessage frame;
  frame.length_ = 255;
  for (unsigned int call = 1; call <= 3; ++call) {
    GetParam().append(frame);
    EXPECT_EQ(log.count(WARN), call);
    EXPECT_EQ(frame.length_, 255U);
  }
}

TEST_P(ZclMessageAppending, StaysInsideTheStorageBehindALengthAbove255) {
  for (const unsigned int length : {256U, 300U, 0xFFFFFFFFU}) {
    const test::LogCapture log;
    ZclMessage frame;
    frame.length_ = length;
    GetParam().append(frame);
    EXPECT_THAT(storage(frame), Each(0)) << length;
    EXPECT_EQ(frame.length_, length);
    EXPECT_EQ(flagsOf(frame), 0) << length;
    EXPECT_EQ(log.count(WARN), 1U) << length;
  }
}

TEST(ZclMessage, AppendsTextThatFillsTheFrame) {
  const test::LogCapture log;
  ZclMessage frame(bytesOf("01 07 0a"));
  frame.addString(std::string(251, 'x'));
  EXPECT_EQ(frame.length_, 255U);
  EXPECT_EQ(frame.contents[3], 251);
  EXPECT_EQ(frame.contents[254], 'x');
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclMessage, AppendsTheLowBitsOfALongTextsLength) {
  for (const std::size_t length : {252, 255, 256, 300, 65536, 100000}) {
    const test::LogCapture log;
    ZclMessage frame(bytesOf("01 07 0a"));
    frame.addString(std::string(length, 'x'));
    EXPECT_EQ(frame.length_, 255U) << length;
    EXPECT_EQ(frame.contents[3], length % 256) << length;
    EXPECT_EQ(std::count(frame.contents, frame.contents + 255, 'x'), 251) << length;
    EXPECT_EQ(log.count(WARN), 1U) << length;
  }
}

TEST(ZclMessage, ReadsAndWritesAHeaderBehindALengthAbove255) {
  ZclMessage frame(bytesOf("05 40 10 07 0a"));
  frame.length_ = 300;
  EXPECT_TRUE(frame.isValidLength());
  EXPECT_EQ(frame.commandIdentifier(), 0x0A);
  frame.setTsn(0x08);
  EXPECT_EQ(frame.transactionSequenceNumber(), 0x08);
  EXPECT_EQ(frame.length_, 300U);
  frame.prepareQxCustomMessage(0, 7, false);
  EXPECT_EQ(hex(frame), "04 40 10 08 07");
}

/// A caller one level further down the stack than its own.
[[gnu::noinline]] void setMcFromFurtherDown(ZclMessage& frame) {
  frame.setMc(0x1234);
  asm volatile("" : : "r"(&frame) : "memory");  // not the last thing done, so that the call keeps its stack frame
}

TEST(ZclMessage, ShowsTheStackOfEachAssertionThatFails) {
  const test::LogCapture log;
  ZclMessage frame(bytesOf("01 07 0a"));
  frame.setMc(0x1234);
  setMcFromFurtherDown(frame);
  ASSERT_EQ(log.texts().size(), 2U);
  EXPECT_NE(log.texts()[0], log.texts()[1]);
}

// Virtual operations.

/// The slot of a virtual operation. In the C++ ABI of Linux a pointer to a virtual member holds the slot's offset in
/// bytes, with the lowest bit set on some machines.
template <typename Member>
std::ptrdiff_t slotOf(Member member) {
  std::ptrdiff_t entry = 0;
  std::memcpy(&entry, &member, sizeof entry);
  return (entry & ~std::ptrdiff_t{1}) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(ZclMessage, HasItsVirtualOperationsInOrder) {
  using Responses = std::vector<ReadAttributeStatusRecord>;
  const std::pair<const char*, std::ptrdiff_t> slots[] = {
      {"initMessage", slotOf(&ZclMessage::initMessage)},
      {"prepareQxCustomMessage", slotOf(&ZclMessage::prepareQxCustomMessage)},
      {"getProfileId", slotOf(&ZclMessage::getProfileId)},
      {"getClusterId", slotOf(&ZclMessage::getClusterId)},
      {"affectsEntireProfile", slotOf(&ZclMessage::affectsEntireProfile)},
      {"affectsSpecificCluster", slotOf(&ZclMessage::affectsSpecificCluster)},
      {"isManufacturerSpecific", slotOf(&ZclMessage::isManufacturerSpecific)},
      {"isCommandFromClient", slotOf(&ZclMessage::isCommandFromClient)},
      {"isCommandFromServer", slotOf(&ZclMessage::isCommandFromServer)},
      {"isReadAttributesResponse", slotOf(&ZclMessage::isReadAttributesResponse)},
      {"isWriteAttributesResponse", slotOf(&ZclMessage::isWriteAttributesResponse)},
      {"isReportAttributes", slotOf(&ZclMessage::isReportAttributes)},
      {"defaultResponseDisabled", slotOf(&ZclMessage::defaultResponseDisabled)},
      {"disableDefaultResponse", slotOf(&ZclMessage::disableDefaultResponse)},
      {"transactionSequenceNumber", slotOf(&ZclMessage::transactionSequenceNumber)},
      {"commandIdentifier", slotOf(&ZclMessage::commandIdentifier)},
      {"manufacturerCode", slotOf(&ZclMessage::manufacturerCode)},
      {"hasReadAttributeId", slotOf(&ZclMessage::hasReadAttributeId)},
      {"getReadAttributes", slotOf(&ZclMessage::getReadAttributes)},
      {"setNoReadAttributeResponse", slotOf(&ZclMessage::setNoReadAttributeResponse)},
      {"setReportAttributes", slotOf(&ZclMessage::setReportAttributes)},
      {"getReportAttributes", slotOf(&ZclMessage::getReportAttributes)},
      {"getWriteAttributeResponses", slotOf(&ZclMessage::getWriteAttributeResponses)},
      {"setWriteAttributeResponses", slotOf(&ZclMessage::setWriteAttributeResponses)},
      {"setReadAttributesResponse", slotOf(&ZclMessage::setReadAttributesResponse)},
      {"getReadAttributesResponse(records)",
       slotOf(static_cast<void (ZclMessage::*)(Responses&) const>(&ZclMessage::getReadAttributesResponse))},
      {"getReadAttributesResponse(records, bool)",
       slotOf(static_cast<void (ZclMessage::*)(Responses&, bool) const>(&ZclMessage::getReadAttributesResponse))},
      {"isValidLength", slotOf(&ZclMessage::isValidLength)},
      {"setReadAttributes", slotOf(&ZclMessage::setReadAttributes)},
      {"setWriteAttributes", slotOf(&ZclMessage::setWriteAttributes)},
      {"getWriteAttributes", slotOf(&ZclMessage::getWriteAttributes)},
      {"setFcf", slotOf(&ZclMessage::setFcf)},
      {"setMc", slotOf(&ZclMessage::setMc)},
      {"setTsn", slotOf(&ZclMessage::setTsn)},
      {"setCid", slotOf(&ZclMessage::setCid)},
      {"addByte", slotOf(&ZclMessage::addByte)},
      {"addUint16", slotOf(&ZclMessage::addUint16)},
      {"addUint32", slotOf(&ZclMessage::addUint32)},
      {"addString", slotOf(&ZclMessage::addString)},
  };
  // The destructor comes first, and takes two slots: with and without release of the memory.
  std::ptrdiff_t expected = 2;
  for (const auto& [name, slot] : slots) EXPECT_EQ(slot, expected++) << name;
}

}  // namespace
}  // namespace qx

#include "vso/zcl/QxZclSscp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <random>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/zcl/ListOperations.h"
#include "tests/vso/zcl/QxRows.h"
#include "tests/vso/zcl/RandomFrame.h"
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
using Row = test::AttributeRow<QxZclSscp>;

QxZclSscp fromText(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (c != ' ') digits += c;
  }
  return QxZclSscp(digits);
}
QxZclSscp fromBytes(const std::string& text) { return QxZclSscp(bytesOf(text)); }
std::string hexByte(unsigned char byte) { return hex(bytes({byte})); }
/// The payload alone.
std::string payloadOf(const QxZclSscp& frame) {
  const std::string text = hex(frame);
  return text.size() < 9 ? "" : text.substr(9);
}

TEST(QxZclSscp, BelongsToThePrivateProfile) {
  const QxZclSscp frame(false, true);
  EXPECT_EQ(frame.getProfileId() & 0xFFFF, 0xC25D);
  EXPECT_LT(frame.getProfileId(), 0);
  EXPECT_EQ(frame.getClusterId(), 0x0001);
}

TEST(QxZclSscp, IsAnEmptyAnswerOrWriteWithoutADefaultResponse) {
  struct {
    bool isResponse;
    bool general;
    unsigned char control;
    unsigned char command;
  } const rows[] = {
      {true, true, 0x10, 1},
      {true, false, 0x11, 1},
      {false, true, 0x10, 5},
      {false, false, 0x11, 5},
  };
  for (const auto& row : rows) {
    const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
    const QxZclSscp frame(row.isResponse, row.general);
    EXPECT_EQ(hex(frame), hex(bytes({row.control, sequence, row.command})));
    EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
    EXPECT_EQ(frame.affectsEntireProfile(), row.general);
    EXPECT_EQ(frame.affectsSpecificCluster(), !row.general);
    EXPECT_TRUE(frame.defaultResponseDisabled());
  }
}

// The frame type is picked by the control byte, the flag behind `setFcf` stays that of a general frame.
TEST(QxZclSscp, LosesItsFrameTypeToALaterFrameControl) {
  QxZclSscp frame(false, false);
  frame.setFcf(0);
  EXPECT_TRUE(frame.affectsEntireProfile());
}

TEST(QxZclSscp, KeepsAFrameThatComesAsText) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  for (const char* const text : {"08 05 0a 01 00 21 02 01", "1c 40 10 05 01 01 00 00 21 02 01", "", "01", "01 02"}) {
    EXPECT_EQ(hex(fromText(text)), text);
  }
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(QxZclSscp, MakesAWriteOfAFrameThatComesAsBytes) {
  struct {
    const char* received;
    const char* held;
  } const rows[] = {
      {"00 07 0a 01 00 21 02 01", "10 07 05 01 00 21 02 01"},
      {"08 07 01 01 00 21 02 01", "10 07 05 01 00 21 02 01"},
      {"10 07 05 01 00 21 02 01", "10 07 05 01 00 21 02 01"},
      {"e8 07 33", "10 07 05"},
      {"02 07 33", "10 07 05"},
      // A frame keeps what its own flags stand for, and the command has its place behind a code.
      {"01 07 33 01 00 21 02 01", "11 07 05 01 00 21 02 01"},
      {"03 07 33", "11 07 05"},
      {"19 07 01", "11 07 05"},
      {"04 40 10 07 33 01 00 21 02 01", "14 40 10 07 05 01 00 21 02 01"},
      {"05 40 10 07 33 01 00 21 02 01", "15 40 10 07 05 01 00 21 02 01"},
      {"ff 40 10 07 33", "15 40 10 07 05"},
      {"08 07", "10 07"},
      {"08", "10"},
      {"", ""},
  };
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const test::LogCapture log;
  for (const auto& row : rows) EXPECT_EQ(hex(fromBytes(row.received)), row.held) << row.received;
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(QxZclSscp, SetsControlByteAndCommandOfAFrameWhateverItsControlByte) {
  for (unsigned int control = 0; control < 256; ++control) {
    const bool coded = (control & 4) != 0;
    const std::string tail = coded ? " 40 10 07 " : " 07 ";
    const QxZclSscp frame = fromBytes(hexByte(static_cast<unsigned char>(control)) + tail + "33 01 00 21 02 01");
    EXPECT_EQ(hex(frame), hexByte(static_cast<unsigned char>(0x10 | (control & 5))) + tail + "05 01 00 21 02 01");
    EXPECT_EQ(frame.isManufacturerSpecific(), coded);
    EXPECT_EQ(frame.commandIdentifier(), 5);
    EXPECT_EQ(frame.announceWindow(), 0x0102);
  }
}

TEST(QxZclSscp, TakesNoFrameOfMoreBytesThanAFrameHas) {
  const std::vector<unsigned char> bytes(300, 0x5A);
  const QxZclSscp frame(U255Buff<unsigned char>(bytes.data(), 300));
  EXPECT_EQ(frame.length_, 0U);
}

TEST(QxZclSscp, WritesTheLayoutOfAWriteIntoAReceivedFrame) {
  for (QxZclSscp frame : {fromText("08 05 01"), fromBytes("08 05 01")}) {
    frame.channel(15);
    EXPECT_EQ(payloadOf(frame), "0c 00 20 0f");
    EXPECT_EQ(frame.channel(), 15);
  }
}

TEST(QxZclSscp, StaysAnAnswerInACopy) {
  const QxZclSscp answer(true, true);
  QxZclSscp copy(answer);
  EXPECT_EQ(hex(copy), hex(answer));
  copy.channel(15);
  EXPECT_EQ(payloadOf(copy), "0c 00 00 20 0f");
}

class QxZclSscpAttribute : public testing::TestWithParam<Row> {
 protected:
  const Row& row() const { return GetParam(); }
  std::string id() const { return hexByte(static_cast<unsigned char>(row().id)) + " 00"; }
  bool isShort() const { return row().type == 0x21; }
  /// Behind the id, or the status.
  std::string value() const { return hexByte(row().type) + (isShort() ? " fe 81" : " fe"); }
  std::string reading() const { return isShort() ? "33278" : "254"; }

  const test::AttributeSample first_{0x81FE, ""};
  const test::AttributeSample second_{0x0706, ""};
};

INSTANTIATE_TEST_SUITE_P(Attributes, QxZclSscpAttribute, testing::ValuesIn(test::attributeRows<QxZclSscp>()),
                         [](const auto& row) { return row.param.name; });

TEST_P(QxZclSscpAttribute, IsReadFromAWrite) {
  const std::string payload = " 30 00 42 01 61 " + id() + ' ' + value() + ' ' + id() + " 20 07";
  EXPECT_EQ(row().read(fromText("10 05 05" + payload)), reading());
  EXPECT_EQ(row().read(fromText("14 40 10 05 05" + payload)), reading());
  EXPECT_EQ(row().read(fromBytes("14 40 10 05 05" + payload)), reading());
}

TEST_P(QxZclSscpAttribute, IsReadWhateverTheCommand) {
  QxZclSscp frame = fromText("10 05 05 " + id() + ' ' + value());
  for (unsigned int command = 0; command < 256; ++command) {
    frame.setCid(static_cast<unsigned char>(command));
    EXPECT_EQ(row().read(frame), reading()) << command;
  }
}

TEST_P(QxZclSscpAttribute, IsReadFromAnyType) {
  EXPECT_EQ(row().read(fromText("10 05 05 " + id() + " 42 02 61 62")), isShort() ? "25185" : "97");
  EXPECT_EQ(row().read(fromText("10 05 05 " + id() + " 41 01 ab")), isShort() ? "25185" : "97");
  EXPECT_EQ(row().read(fromText("10 05 05 " + id() + " 20 05 30 00 20 06")), "5");
  EXPECT_EQ(row().read(fromText("10 05 05 " + id() + " 0c 31 00 20 06")), "0");
}

TEST_P(QxZclSscpAttribute, IsZeroIfItIsMissing) {
  for (const std::string& text : {std::string("10 05 05"), "10 05 05 " + id().substr(0, 3) + "01 " + value()}) {
    EXPECT_EQ(row().read(fromText(text)), "0") << text;
  }
}

TEST_P(QxZclSscpAttribute, IsWrittenAndReadBack) {
  for (const bool general : {false, true}) {
    QxZclSscp frame(false, general);
    const std::string header = hex(frame);
    row().write(frame, first_);
    EXPECT_EQ(hex(frame), header + ' ' + id() + ' ' + value());
    EXPECT_EQ(row().read(frame), reading());
  }
}

TEST_P(QxZclSscpAttribute, IsAnsweredWithAStatus) {
  for (const bool general : {false, true}) {
    QxZclSscp frame(true, general);
    const std::string header = hex(frame);
    row().write(frame, first_);
    EXPECT_EQ(hex(frame), header + ' ' + id() + " 00 " + value());
  }
}

TEST_P(QxZclSscpAttribute, DoesNotReadBackFromAnAnswer) {
  QxZclSscp frame(true, true);
  row().write(frame, first_);
  // In the layout of a write the status is the type of a record without bytes.
  EXPECT_EQ(row().read(frame), "0");
}

TEST_P(QxZclSscpAttribute, KeepsItsFirstValue) {
  for (const bool isResponse : {false, true}) {
    QxZclSscp frame(isResponse, false);
    row().write(frame, first_);
    const QxZclSscp before = frame;
    row().write(frame, second_);
    EXPECT_EQ(hex(frame), hex(before));
    EXPECT_TRUE(test::sameStorage(frame, before));
  }
}

TEST_P(QxZclSscpAttribute, IsNotWrittenBesideAnotherTypeOrAFailure) {
  const std::string write = "10 05 05 " + id() + " 42 01 61";
  QxZclSscp frame = fromText(write);
  row().write(frame, first_);
  EXPECT_EQ(hex(frame), write);
  QxZclSscp answer(true, true);
  answer.setNoReadAttributeResponse({row().id});
  row().write(answer, first_);
  EXPECT_EQ(payloadOf(answer), id() + " 86");
}

TEST_P(QxZclSscpAttribute, IsWrittenBehindTheOthers) {
  QxZclSscp frame = fromText("10 05 05 30 00 42 02 01 61 31 00 0c");
  row().write(frame, first_);
  EXPECT_EQ(payloadOf(frame), "30 00 42 01 61 31 00 0c " + id() + ' ' + value());  // the text lost its length byte
  QxZclSscp answer(true, true);
  answer.setNoReadAttributeResponse({0x0030, 0x0131});
  row().write(answer, first_);
  EXPECT_EQ(payloadOf(answer), "30 00 86 31 01 86 " + id() + " 00 " + value());
}

TEST_P(QxZclSscpAttribute, WarnsOnceOfAFrameShorterThanItsHeader) {
  for (const char* const text : {"", "10", "10 05", "14 40 10 05"}) {
    QxZclSscp frame = fromText(text);
    const std::string line = "ZclMessage::isValidLength: Invalid ZCL packet length: " + std::to_string(frame.length_);
    const test::LogCapture log;
    EXPECT_EQ(row().read(frame), "0");
    EXPECT_THAT(log.texts(), ElementsAre(line));
    row().write(frame, first_);
    EXPECT_THAT(log.texts(), ElementsAre(line, line));
    EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 2U);
    EXPECT_EQ(row().read(frame), reading());
  }
}

TEST_P(QxZclSscpAttribute, LooksAtTheLengthOncePerCall) {
  for (const bool isResponse : {false, true}) {
    test::TracedMessage<QxZclSscp> frame(isResponse, true);
    frame.calls.clear();
    row().read(frame);
    EXPECT_THAT(frame.calls, ElementsAre("isValidLength()"));
    row().write(frame, first_);
    EXPECT_THAT(frame.calls, ElementsAre("isValidLength()", "isValidLength()"));
  }
}

TEST(QxZclSscp, HoldsItsFirstAnnounceWindow) {
  QxZclSscp frame(false, false);
  frame.announceWindow(0x0102);
  EXPECT_EQ(payloadOf(frame), "01 00 21 02 01");
  EXPECT_EQ(frame.announceWindow(), 0x0102);
  frame.announceWindow(3);
  EXPECT_EQ(payloadOf(frame), "01 00 21 02 01");
}

TEST(QxZclSscp, HoldsAllItsAttributes) {
  QxZclSscp write(false, true);
  QxZclSscp answer(true, true);
  for (QxZclSscp* frame : {&write, &answer}) {
    frame->announceWindow(0x0102);
    frame->mtorrPeriod(0xFEDC);
    frame->apCount(0xFF);
    frame->channel(26);
  }
  EXPECT_EQ(payloadOf(write), "01 00 21 02 01 02 00 21 dc fe 03 00 20 ff 0c 00 20 1a");
  EXPECT_EQ(payloadOf(answer), "01 00 00 21 02 01 02 00 00 21 dc fe 03 00 00 20 ff 0c 00 00 20 1a");
  EXPECT_EQ(write.announceWindow(), 0x0102);
  EXPECT_EQ(write.mtorrPeriod(), 0xFEDC);
  EXPECT_EQ(write.apCount(), 0xFF);
  EXPECT_EQ(write.channel(), 26);
}

TEST(QxZclSscp, ReadsAnAnswerInTheLayoutOfAWrite) {
  // 0x0001 of type 0 without bytes, then 0x0221 of type 0x01 without bytes, then 0x0002 of type 0x20.
  const QxZclSscp frame = fromText("10 05 01 01 00 00 21 02 01 02 00 20 07");
  EXPECT_EQ(frame.announceWindow(), 0);
  EXPECT_EQ(frame.mtorrPeriod(), 7);
}

class QxZclSscpByChance : public testing::TestWithParam<bool> {
 protected:
  bool isResponse() const { return GetParam(); }

  template <typename Record>
  void expectList(const U255Buff<unsigned char>& storage) {
    const test::AttributeSample sample{random_(), ""};
    for (const Row& row : test::attributeRows<QxZclSscp>()) {
      QxZclSscp byWriter(isResponse(), true);
      test::setStorage(byWriter, storage);
      ASSERT_EQ(row.read(byWriter), test::readThroughList<WriteAttributeRecord>(byWriter, row)) << row;
      QxZclSscp byList(byWriter);
      test::setStorage(byList, storage);
      row.write(byWriter, sample);
      test::addThroughList<Record>(byList, row.id, row.type, row.wire(sample));
      ASSERT_EQ(test::stored(byWriter), test::stored(byList)) << row << ": " << test::stored(storage);
    }
  }
  void expectList(const U255Buff<unsigned char>& storage) {
    if (isResponse()) {
      expectList<ReadAttributeStatusRecord>(storage);
    } else {
      expectList<WriteAttributeRecord>(storage);
    }
  }

  const test::LogCapture quiet_{log4cplus::OFF_LOG_LEVEL};
  std::mt19937 random_{20260106};
};

INSTANTIATE_TEST_SUITE_P(Layouts, QxZclSscpByChance, testing::Bool(),
                         [](const auto& row) { return row.param ? "Answer" : "Write"; });

TEST_P(QxZclSscpByChance, AgreesWithTheLists) {
  for (unsigned int i = 0; i < 3000 && !HasFatalFailure(); ++i) expectList(test::randomFrame(random_, isResponse()));
}

TEST_P(QxZclSscpByChance, AgreesWithTheListsWhateverLiesBehindTheEnd) {
  for (unsigned int i = 0; i < 1000 && !HasFatalFailure(); ++i) {
    auto storage = test::randomFrame(random_, isResponse());
    for (unsigned int at = storage.length_; at < 255; ++at) {
      storage.contents[at] = static_cast<unsigned char>(random_());
    }
    expectList(storage);
  }
}

TEST_P(QxZclSscpByChance, AgreesWithTheListsIfTheLengthIsBeyondTheStorage) {
  for (unsigned int i = 0; i < 300 && !HasFatalFailure(); ++i) {
    auto storage = test::randomFrame(random_, isResponse());
    storage.length_ = 256 + random_() % 1000;
    expectList(storage);
  }
}

TEST(QxZclSscp, AgreesWithTheListsInAReceivedFrame) {
  const test::LogCapture quiet(log4cplus::OFF_LOG_LEVEL);
  std::mt19937 random(20260107);
  for (unsigned int i = 0; i < 2000; ++i) {
    const auto received = test::randomFrame(random, i % 2 != 0);
    std::string digits;
    hexify(received.contents, received.length_, digits, false);
    for (const QxZclSscp& frame : {QxZclSscp(received), QxZclSscp(digits)}) {
      for (const Row& row : test::attributeRows<QxZclSscp>()) {
        ASSERT_EQ(row.read(frame), test::readThroughList<WriteAttributeRecord>(frame, row)) << row << ": " << digits;
        QxZclSscp byWriter(frame);
        QxZclSscp byList(frame);
        row.write(byWriter, {i, ""});
        test::addThroughList<WriteAttributeRecord>(byList, row.id, row.type, row.wire({i, ""}));
        ASSERT_EQ(hex(byWriter), hex(byList)) << row << ": " << digits;
      }
    }
  }
}

}  // namespace
}  // namespace qx

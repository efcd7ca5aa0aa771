#include "vso/zcl/ZclSetZap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <random>
#include <string>
#include <type_traits>
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
using Row = test::AttributeRow<ZclSetZap>;

static_assert(!std::is_constructible_v<ZclSetZap, const std::string&>, "nobody receives one");
static_assert(!std::is_constructible_v<ZclSetZap, const U255Buff<unsigned char>&>, "nobody receives one");

Euid euidOf(const std::string& digits) {
  Euid euid;
  euid = digits;
  return euid;
}
std::string hexByte(unsigned char byte) { return hex(bytes({byte})); }
std::string payloadOf(const ZclSetZap& frame) {
  const std::string text = hex(frame);
  return text.size() < 9 ? "" : text.substr(9);
}
/// A frame with this payload.
ZclSetZap frameOf(const std::string& payload) {
  ZclSetZap frame;
  test::setStorage(frame, bytesOf(hex(frame) + payload));
  return frame;
}

TEST(ZclSetZap, BelongsToThePrivateProfile) {
  EXPECT_EQ(ZclSetZap().getProfileId() & 0xFFFF, 0xC25D);
  EXPECT_LT(ZclSetZap().getProfileId(), 0);
  EXPECT_EQ(ZclSetZap().getClusterId(), 0x0001);
}

TEST(ZclSetZap, IsAnEmptyAnswerFromTheServer) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const ZclSetZap frame;
  EXPECT_EQ(hex(frame), hex(bytes({0x08, sequence, 0x01})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
  EXPECT_TRUE(frame.isCommandFromServer());
  EXPECT_TRUE(frame.isReadAttributesResponse());
  EXPECT_TRUE(frame.affectsEntireProfile());
  EXPECT_FALSE(frame.defaultResponseDisabled());
}

TEST(ZclSetZap, HasNothingAtFirst) {
  const ZclSetZap frame;
  EXPECT_FALSE(frame.hasSid());
  EXPECT_FALSE(frame.hasLid());
  EXPECT_FALSE(frame.hasCost());
  EXPECT_EQ(frame.sid(), 0);
  EXPECT_EQ(frame.lid(), Euid());
  EXPECT_EQ(frame.lid().toString(), "0000000000000000");
  EXPECT_EQ(frame.cost(), 0);
}

TEST(ZclSetZap, HoldsShortIdAndCost) {
  ZclSetZap frame;
  frame.sid(0x1234);
  frame.cost(2);
  EXPECT_EQ(payloadOf(frame), "08 00 00 21 34 12 0a 00 00 20 02");
  EXPECT_EQ(frame.sid(), 0x1234);
  EXPECT_EQ(frame.cost(), 2);
}

TEST(ZclSetZap, HoldsTheLongIdLeastSignificantByteFirst) {
  ZclSetZap frame;
  frame.lid(euidOf("0011223344556677"));
  EXPECT_EQ(payloadOf(frame), "09 00 00 f0 77 66 55 44 33 22 11 00");
  EXPECT_EQ(frame.lid().toString(), "0011223344556677");
  EXPECT_TRUE(frame.hasLid());
}

TEST(ZclSetZap, HoldsAllItsAttributesInTheOrderOfTheirWrites) {
  ZclSetZap frame;
  frame.endNodeParentPeriod(0x0102);
  frame.lid(euidOf("8899aabbccddeeff"));
  frame.endNodeApPeriod(0xFFFE);
  frame.cost(0xFF);
  frame.sid(0xFFFE);
  EXPECT_EQ(payloadOf(frame),
            "0f 00 00 21 02 01 "
            "09 00 00 f0 ff ee dd cc bb aa 99 88 "
            "0b 00 00 21 fe ff "
            "0a 00 00 20 ff "
            "08 00 00 21 fe ff");
  EXPECT_EQ(frame.lid().toString(), "8899aabbccddeeff");
  EXPECT_EQ(frame.cost(), 0xFF);
  EXPECT_EQ(frame.sid(), 0xFFFE);
}

class ZclSetZapAttribute : public testing::TestWithParam<Row> {
 protected:
  const Row& row() const { return GetParam(); }
  std::string id() const { return hexByte(static_cast<unsigned char>(row().id)) + " 00"; }
  std::string value() const {
    switch (row().type) {
      case 0x20:
        return "20 fe";
      case 0x21:
        return "21 fe 81";
      default:
        return "f0 fe 81 07 06 05 04 03 02";
    }
  }

  const test::AttributeSample first_{0x02030405060781FE, ""};
  const test::AttributeSample second_{0x1112131415161718, ""};
};

INSTANTIATE_TEST_SUITE_P(Attributes, ZclSetZapAttribute, testing::ValuesIn(test::attributeRows<ZclSetZap>()),
                         [](const auto& row) { return row.param.name; });

TEST_P(ZclSetZapAttribute, IsWrittenWithSuccess) {
  ZclSetZap frame;
  const std::string header = hex(frame);
  row().write(frame, first_);
  EXPECT_EQ(hex(frame), header + ' ' + id() + " 00 " + value());
}

TEST_P(ZclSetZapAttribute, KeepsItsFirstValue) {
  ZclSetZap frame;
  row().write(frame, first_);
  const ZclSetZap before = frame;
  row().write(frame, second_);
  EXPECT_EQ(hex(frame), hex(before));
  EXPECT_TRUE(test::sameStorage(frame, before));
}

TEST_P(ZclSetZapAttribute, IsNotWrittenIfTheFrameRefusesItOrHasItInAnotherType) {
  for (const std::string& payload : {' ' + id() + " 86", ' ' + id() + " 00 42 02 61 62"}) {
    ZclSetZap frame = frameOf(payload);
    const std::string before = hex(frame);
    row().write(frame, first_);
    EXPECT_EQ(hex(frame), before);
  }
}

TEST_P(ZclSetZapAttribute, IsWrittenBehindFailures) {
  ZclSetZap frame;
  frame.setNoReadAttributeResponse({0x0030, static_cast<unsigned short>(0x0100 | row().id)});
  const std::string before = hex(frame);
  row().write(frame, first_);
  EXPECT_EQ(hex(frame), before + ' ' + id() + " 00 " + value());
}

TEST_P(ZclSetZapAttribute, TakesNoSequenceNumberAndLogsNothing) {
  const test::LogCapture log;
  ZclSetZap frame;
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  row().write(frame, first_);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclSetZapAttribute, IsCutByTheEndOfAFullFrameWithOneWarning) {
  std::string others;
  for (unsigned int i = 0; i < 50; ++i) others += " 30 00 00 20 07";
  ZclSetZap frame = frameOf(others);  // 253 bytes
  const std::string before = hex(frame);
  const test::LogCapture log;
  row().write(frame, first_);
  EXPECT_EQ(hex(frame), before + ' ' + id());
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
  EXPECT_THAT(log.texts(), SizeIs(1));
}

class ZclSetZapReader : public ZclSetZapAttribute {};

INSTANTIATE_TEST_SUITE_P(Attributes, ZclSetZapReader, testing::ValuesIn(test::rowsWith(&Row::read)),
                         [](const auto& row) { return row.param.name; });

TEST_P(ZclSetZapReader, GivesTheFirstRecordBack) {
  const ZclSetZap frame = frameOf(" 30 00 00 42 01 61 31 00 86 " + id() + " 00 " + value() + ' ' + id() + " 00 20 07");
  EXPECT_EQ(row().read(frame), row().type == 0x20 ? "254" : row().type == 0x21 ? "33278" : "02030405060781fe");
  EXPECT_TRUE(row().has(frame));
}

TEST_P(ZclSetZapReader, ReadsAnyType) {
  const ZclSetZap frame = frameOf(' ' + id() + " 00 42 03 61 62 63 30 00 00 20 07");
  EXPECT_EQ(row().read(frame), row().type == 0x20 ? "97" : row().type == 0x21 ? "25185" : "0000000000636261");
  EXPECT_TRUE(row().has(frame));
  const ZclSetZap without = frameOf(' ' + id() + " 00 0c 30 00 00 20 07");
  EXPECT_EQ(row().read(without), row().missing);
  EXPECT_TRUE(row().has(without));
}

TEST_P(ZclSetZapReader, ReadsAFailedRecordAsZeroIfItIsTheFirst) {
  for (const std::string status : {"01", "86", "c0", "ff"}) {
    const ZclSetZap frame = frameOf(' ' + id() + ' ' + status + ' ' + id() + " 00 " + value());
    EXPECT_EQ(row().read(frame), row().missing);
    EXPECT_TRUE(row().has(frame));
  }
}

TEST_P(ZclSetZapReader, ReadsAFailedRecordAsTheOneBeforeIt) {
  const ZclSetZap frame = frameOf(" 30 00 00 f0 08 07 06 05 04 03 02 01 " + id() + " 86");
  EXPECT_EQ(row().read(frame), row().type == 0x20 ? "8" : row().type == 0x21 ? "1800" : "0102030405060708");
  EXPECT_TRUE(row().has(frame));
}

TEST_P(ZclSetZapReader, LooksAtTheWholeId) {
  const ZclSetZap frame = frameOf(' ' + id().substr(0, 3) + "01 00 " + value());
  EXPECT_EQ(row().read(frame), row().missing);
  EXPECT_FALSE(row().has(frame));
}

TEST_P(ZclSetZapReader, LooksNotAtTheCommand) {
  ZclSetZap frame;
  row().write(frame, first_);
  const std::string value = row().read(frame);
  for (unsigned int command = 0; command < 256; ++command) {
    frame.setCid(static_cast<unsigned char>(command));
    EXPECT_EQ(row().read(frame), value) << command;
    EXPECT_TRUE(row().has(frame)) << command;
  }
}

TEST_P(ZclSetZapReader, WarnsOncePerCallOfAFrameShorterThanItsHeader) {
  ZclSetZap frame;
  frame.length_ = 2;
  const std::string line = "ZclMessage::isValidLength: Invalid ZCL packet length: 2";
  const test::LogCapture log;
  EXPECT_EQ(row().read(frame), row().missing);
  EXPECT_THAT(log.texts(), ElementsAre(line));
  EXPECT_FALSE(row().has(frame));
  EXPECT_THAT(log.texts(), ElementsAre(line, line));
  row().write(frame, first_);
  EXPECT_THAT(log.texts(), ElementsAre(line, line, line));
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 3U);
  EXPECT_TRUE(row().has(frame));
}

TEST_P(ZclSetZapReader, LooksAtTheLengthOncePerCall) {
  test::TracedMessage<ZclSetZap> frame;
  frame.calls.clear();
  row().read(frame);
  EXPECT_THAT(frame.calls, SizeIs(1));
  row().has(frame);
  EXPECT_THAT(frame.calls, SizeIs(2));
  row().write(frame, first_);
  EXPECT_THAT(frame.calls, ElementsAre("isValidLength()", "isValidLength()", "isValidLength()"));
}

class ZclSetZapByChance : public testing::Test {
 protected:
  void expectList(const U255Buff<unsigned char>& storage) {
    const test::AttributeSample sample{static_cast<unsigned long long>(random_()) << 32 | random_(), ""};
    for (const Row& row : test::attributeRows<ZclSetZap>()) {
      ZclSetZap byWriter;
      test::setStorage(byWriter, storage);
      if (row.read) {
        ASSERT_EQ(row.read(byWriter), test::readThroughList<ReadAttributeStatusRecord>(byWriter, row))
            << row << ": " << test::stored(storage);
        const auto list = test::listOf<ReadAttributeStatusRecord>(byWriter);
        const bool has =
            std::any_of(list.begin(), list.end(), [&row](const auto& record) { return record.id_ == row.id; });
        ASSERT_EQ(row.has(byWriter), has) << row << ": " << test::stored(storage);
      }
      ZclSetZap byList;
      test::setStorage(byList, storage);
      row.write(byWriter, sample);
      test::addThroughList<ReadAttributeStatusRecord>(byList, row.id, row.type, row.wire(sample));
      ASSERT_EQ(test::stored(byWriter), test::stored(byList)) << row << ": " << test::stored(storage);
    }
  }

  const test::LogCapture quiet_{log4cplus::OFF_LOG_LEVEL};
  std::mt19937 random_{20260108};
};

TEST_F(ZclSetZapByChance, AgreesWithTheLists) {
  for (unsigned int i = 0; i < 3000 && !HasFatalFailure(); ++i) expectList(test::randomFrame(random_, true));
}

TEST_F(ZclSetZapByChance, AgreesWithTheListsWhateverLiesBehindTheEnd) {
  for (unsigned int i = 0; i < 1000 && !HasFatalFailure(); ++i) {
    auto storage = test::randomFrame(random_, true);
    for (unsigned int at = storage.length_; at < 255; ++at) {
      storage.contents[at] = static_cast<unsigned char>(random_());
    }
    expectList(storage);
  }
}

TEST_F(ZclSetZapByChance, AgreesWithTheListsIfTheLengthIsBeyondTheStorage) {
  for (unsigned int i = 0; i < 300 && !HasFatalFailure(); ++i) {
    auto storage = test::randomFrame(random_, true);
    storage.length_ = 256 + random_() % 1000;
    expectList(storage);
  }
}

}  // namespace
}  // namespace qx

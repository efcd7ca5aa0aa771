#include "vso/zcl/ZclOnOff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/TracedMessage.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using testing::ElementsAre;

/// "value/state".
std::string show(const ZclReading<bool>& reading) {
  return std::to_string(reading.value) + '/' + std::to_string(reading.state);
}

std::string sequenceOf(const ZclMessage& frame) {
  std::string text;
  hexify(&frame.contents[1], 1, text, false);
  return text;
}

TEST(ZclOnOff, BelongsToItsCluster) {
  EXPECT_EQ(ZclOnOff().getProfileId(), 0x0104);
  EXPECT_EQ(ZclOnOff().getClusterId(), 0x0006);
}

TEST(ZclOnOff, IsAClusterFrameWithoutACommandByDefault) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const ZclOnOff frame;
  EXPECT_EQ(hex(frame), "01 " + sequenceOf(frame) + " ff");
  EXPECT_EQ(frame.transactionSequenceNumber(), before);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(before + 1));
}

TEST(ZclOnOff, TakesACommand) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const ZclOnOff frame(static_cast<unsigned char>(0x40));
  EXPECT_EQ(hex(frame), "01 " + sequenceOf(frame) + " 40");
  EXPECT_EQ(frame.transactionSequenceNumber(), before);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(before + 1));
}

TEST(ZclOnOff, ParsesBytesAndText) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const ZclOnOff fromBytes(bytesOf("05 40 10 07 02"));
  const ZclOnOff fromText(std::string("0540100702"));
  EXPECT_EQ(hex(fromBytes), "05 40 10 07 02");
  EXPECT_EQ(hex(fromText), "05 40 10 07 02");
  EXPECT_TRUE(fromBytes.isManufacturerSpecific());
  EXPECT_TRUE(fromText.isManufacturerSpecific());
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclOnOff, BuildsItsCommands) {
  ZclOnOff frame;
  const std::string start = "01 " + sequenceOf(frame);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.setOn();
  EXPECT_EQ(hex(frame), start + " 01");
  frame.setOff();
  EXPECT_EQ(hex(frame), start + " 00");
  frame.setToggle();
  EXPECT_EQ(hex(frame), start + " 02");
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclOnOff, BuildsThroughItsVirtualOperations) {
  test::TracedMessage<ZclOnOff> frame;
  frame.setOff();
  frame.setOn();
  frame.setToggle();
  EXPECT_THAT(frame.calls,
              ElementsAre("setFcf(01)", "setCid(00)", "setFcf(01)", "setCid(01)", "setFcf(01)", "setCid(02)"));
}

TEST(ZclOnOff, BuildingLosesControlBitsAndKeepsTheLength) {
  ZclOnOff frame(bytesOf("19 07 33 0a 0b"));
  frame.setOn();
  EXPECT_EQ(hex(frame), "01 07 01 0a 0b");
  ZclOnOff manufacturer(bytesOf("1d 40 10 07 33 0a"));
  manufacturer.setToggle();
  EXPECT_EQ(hex(manufacturer), "05 40 10 07 02 0a");
}

TEST(ZclOnOff, OnReadsAttributeZeroOfAResponse) {
  const ZclOnOff frame(bytes({0x18, 0x05, 0x01,        // header: control, sequence, read attributes response
                              0x00, 0x00, 0x00, 0x10,  // attribute 0, success, boolean
                              0x01}));                 // on
  EXPECT_EQ(show(frame.on()), "1/1");
  EXPECT_EQ(show(frame.off()), "0/1");
}

TEST(ZclOnOff, OnReadsOnlyTheValueOneAsOn) {
  for (const auto& [value, on] : {std::pair("00", false), {"01", true}, {"02", false}, {"ff", false}}) {
    const ZclOnOff frame(bytesOf(std::string("18 05 0a 00 00 10 ") + value));
    EXPECT_EQ(show(frame.on()), on ? "1/1" : "0/1") << value;
    EXPECT_EQ(show(frame.off()), on ? "0/1" : "1/1") << value;
  }
}

TEST(ZclOnOff, OffIsTrueButNotAnsweredWhereNothingIsFound) {
  for (const char* const frame : {"18 05 01 00 00 86",        // unsupported
                                  "18 05 01",                 // no attribute
                                  "18 05 01 01 00 00 10 01",  // another attribute of a response
                                  "18 05 0a 00 01 10 01",     // another attribute of a report
                                  "18 05 0b 00 00 00 10 01",  // a default response
                                  "18 05 04 00",              // a write response
                                  "01 05 02"}) {              // a command of the cluster
    const ZclOnOff message(bytesOf(frame));
    EXPECT_EQ(show(message.on()), "0/2") << frame;
    EXPECT_EQ(show(message.off()), "1/2") << frame;
  }
}

TEST(ZclOnOff, ReadsAClusterCommandOneAsAResponse) {
  EXPECT_EQ(show(ZclOnOff(bytesOf("01 05 01 00 00 00 10 01")).on()), "1/1");
}

TEST(ZclOnOff, SucceedsForAttributeZeroWhateverTheCommandWas) {
  for (const char* const frame : {"18 05 04 00", "18 05 04 00 00 00", "18 05 04 88 01 00 00 00 00"}) {
    const ZclOnOff message(bytesOf(frame));
    EXPECT_EQ(show(message.onSuccess()), "1/1") << frame;
    EXPECT_EQ(show(message.offSuccess()), "1/1") << frame;
    EXPECT_EQ(show(message.toggleSuccess()), "1/1") << frame;
  }
}

TEST(ZclOnOff, DoesNotSucceedOtherwise) {
  for (const char* const frame : {"18 05 04", "18 05 04 86", "18 05 04 86 00 00", "18 05 04 00 01 00",
                                  "18 05 01 00 00 00 10 01", "18 05 0a 00 00 10 01"}) {
    const ZclOnOff message(bytesOf(frame));
    EXPECT_EQ(show(message.onSuccess()), "0/2") << frame;
    EXPECT_EQ(show(message.offSuccess()), "0/2") << frame;
    EXPECT_EQ(show(message.toggleSuccess()), "0/2") << frame;
  }
}

TEST(ZclOnOff, ReadsATruncatedResponseWithZerosBehindIt) {
  const test::LogCapture log;
  const auto whole = bytesOf("18 05 01 00 00 00 10 01");
  for (unsigned int length = 0; length <= whole.length_; ++length) {
    const ZclOnOff frame(U255Buff<unsigned char>(whole.contents, length));
    const std::string expected = length <= 3 ? "0/2" : length < 8 ? "0/1" : "1/1";
    EXPECT_EQ(show(frame.on()), expected) << length;
  }
}

TEST(ZclOnOff, WarnsOfAFrameShorterThanItsHeader) {
  const test::LogCapture log;
  const ZclOnOff frame(bytesOf("18 05"));
  EXPECT_EQ(show(frame.on()), "0/2");
  EXPECT_EQ(show(frame.onSuccess()), "0/2");
  EXPECT_THAT(log.texts(), testing::Each("ZclMessage::isValidLength: Invalid ZCL packet length: 2"));
  EXPECT_GE(log.count(30000), 2U);
}

}  // namespace
}  // namespace qx

#include "vso/zcl/AttributeReading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/TracedMessage.h"
#include "vso/zcl/TypeTable.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

using detail::readAttribute;
using detail::wroteAttribute;

constexpr unsigned int ANSWERED = 1;
constexpr unsigned int NOT_ANSWERED = 2;

ZclMessage frameOf(const std::string& text) { return ZclMessage(test::bytesOf(text)); }

/// "value/state".
template <typename T>
std::string show(const ZclReading<T>& reading) {
  return std::to_string(static_cast<unsigned int>(reading.value)) + '/' + std::to_string(reading.state);
}
std::string asBool(const std::string& frame, unsigned short id = 1) {
  return show(readAttribute<bool>(frameOf(frame), id));
}
std::string asByte(const std::string& frame, unsigned short id = 1) {
  return show(readAttribute<unsigned char>(frameOf(frame), id));
}
std::string asShort(const std::string& frame, unsigned short id = 1) {
  return show(readAttribute<unsigned short>(frameOf(frame), id));
}

TEST(ZclReading, IsZeroAndNotAnsweredByDefault) {
  static_assert(std::is_same_v<decltype(ZclReading<bool>::state), unsigned int>);
  EXPECT_EQ(ZclReading<unsigned short>().value, 0);
  EXPECT_FALSE(ZclReading<bool>().value);
  EXPECT_EQ(ZclReading<bool>().state, NOT_ANSWERED);
  EXPECT_EQ(ZclReading<bool>::ANSWERED, ANSWERED);
}

TEST(AttributeReading, ReadsAResponse) {
  const std::string frame = "18 07 01 01 00 00 21 01 02";
  EXPECT_EQ(asBool(frame), "1/1");
  EXPECT_EQ(asByte(frame), "1/1");
  EXPECT_EQ(asShort(frame), "513/1");
}

TEST(AttributeReading, ReadsAReport) {
  const std::string frame = "18 07 0a 01 00 21 01 02";
  EXPECT_EQ(asBool(frame), "1/1");
  EXPECT_EQ(asByte(frame), "1/1");
  EXPECT_EQ(asShort(frame), "513/1");
}

TEST(AttributeReading, ReadsBehindAManufacturerCode) {
  EXPECT_EQ(asShort("1c 40 10 07 01 01 00 00 21 01 02"), "513/1");
  EXPECT_EQ(asShort("1c 40 10 07 0a 01 00 21 01 02"), "513/1");
}

TEST(AttributeReading, TakesOnlyTheValueOneForTrue) {
  for (const auto& [data, expected] :
       {std::pair("00", "0/1"), {"01", "1/1"}, {"02", "0/1"}, {"81", "0/1"}, {"ff", "0/1"}}) {
    EXPECT_EQ(asBool(std::string("18 07 0a 01 00 10 ") + data), expected) << data;
  }
}

TEST(AttributeReading, ReadsTheDataOfTheRecordWhateverItsType) {
  for (const test::TypeSample& sample : test::TYPE_SAMPLES) {
    std::string type;
    hexify(&sample.code, 1, type, false);
    const auto data = test::bytesOf(sample.readable);
    const unsigned int second = data.length_ > 1 ? data.contents[1] : 0;
    for (const std::string& frame : {"18 07 0a 01 00 " + type + ' ' + sample.wire + " ee ee",
                                     "18 07 01 01 00 00 " + type + ' ' + sample.wire + " ee ee"}) {
      EXPECT_EQ(asByte(frame), std::to_string(data.contents[0]) + "/1") << sample;
      EXPECT_EQ(asShort(frame), std::to_string(second << 8 | data.contents[0]) + "/1") << sample;
      EXPECT_EQ(asBool(frame), data.contents[0] == 1 ? "1/1" : "0/1") << sample;
    }
  }
}

TEST(AttributeReading, ReadsZeroOfATypeOutsideTheTable) {
  for (const char* const frame :
       {"18 07 0a 02 00 21 01 02 01 00 0c 01 01", "18 07 01 02 00 00 21 01 02 01 00 00 0c 01 01"}) {
    EXPECT_EQ(asBool(frame), "0/1");
    EXPECT_EQ(asByte(frame), "0/1");
    EXPECT_EQ(asShort(frame), "0/1");
  }
}

TEST(AttributeReading, ReadsTextAndOctetsInReadableForm) {
  EXPECT_EQ(asBool("18 07 0a 01 00 42 01 01"), "1/1");
  EXPECT_EQ(asByte("18 07 0a 01 00 42 02 68 69"), "104/1");
  EXPECT_EQ(asShort("18 07 0a 01 00 42 02 68 69"), "26984/1");
  EXPECT_EQ(asBool("18 07 0a 01 00 41 01 01"), "0/1");
  EXPECT_EQ(asByte("18 07 0a 01 00 41 01 01"), "48/1");
}

TEST(AttributeReading, CompletesAValueFromBehindTheEnd) {
  EXPECT_EQ(asShort("18 07 0a 01 00 21 07"), "7/1");
  EXPECT_EQ(asShort("18 07 0a 01 00 21"), "0/1");
  ZclMessage frame = frameOf("18 07 0a 01 00 21 01 02");
  frame.length_ = 6;
  EXPECT_EQ(show(readAttribute<unsigned short>(frame, 1)), "513/1");
}

TEST(AttributeReading, TakesTheFirstRecordOfAReport) {
  EXPECT_EQ(asByte("18 07 0a 02 00 20 07 01 00 20 05 01 00 20 06"), "5/1");
}

TEST(AttributeReading, PassesOverFailedRecordsOfAResponse) {
  EXPECT_EQ(asByte("18 07 01 01 00 86 01 00 00 20 05 01 00 00 20 06"), "5/1");
  EXPECT_EQ(asByte("18 07 01 02 00 00 20 07 01 00 86 01 00 00 20 06"), "6/1");
}

TEST(AttributeReading, IsNotAnsweredByFailedRecordsAlone) {
  EXPECT_EQ(asBool("18 07 01 01 00 86"), "0/2");
  // The failed record shows the value before it, which is not its own.
  EXPECT_EQ(asByte("18 07 01 02 00 00 20 07 01 00 86"), "0/2");
}

TEST(AttributeReading, IsNotAnsweredWithoutTheId) {
  for (const char* const frame : {"18 07 01", "18 07 0a", "18 07 01 01 01 00 20 05", "18 07 0a 00 01 20 05"}) {
    EXPECT_EQ(asBool(frame), "0/2") << frame;
    EXPECT_EQ(asByte(frame), "0/2") << frame;
    EXPECT_EQ(asShort(frame), "0/2") << frame;
  }
}

TEST(AttributeReading, IsAnsweredByTwoCommandsOnly) {
  ZclMessage response = frameOf("18 07 01 01 00 00 20 05");
  ZclMessage report = frameOf("18 07 0a 01 00 20 05");
  EXPECT_EQ(show(readAttribute<unsigned char>(response, 1)), "5/1");
  EXPECT_EQ(show(readAttribute<unsigned char>(report, 1)), "5/1");
  for (unsigned int command = 0; command < 256; ++command) {
    if (command == 1 || command == 10) continue;
    response.setCid(static_cast<unsigned char>(command));
    report.setCid(static_cast<unsigned char>(command));
    EXPECT_EQ(show(readAttribute<unsigned char>(response, 1)), "0/2") << command;
    EXPECT_EQ(show(readAttribute<unsigned char>(report, 1)), "0/2") << command;
  }
}

TEST(AttributeReading, LooksNotAtTheControlByte) {
  for (const std::string control : {"00", "01", "02", "03", "08", "11", "19", "fb"}) {
    EXPECT_EQ(asByte(control + " 07 01 01 00 00 20 05"), "5/1") << control;
    EXPECT_EQ(asByte(control + " 07 0a 01 00 20 05"), "5/1") << control;
    EXPECT_EQ(show(wroteAttribute(frameOf(control + " 07 04 00 01 00"), 1)), "1/1") << control;
  }
}

TEST(AttributeReading, AsksTheFrameForItsCommand) {
  class Report : public ZclMessage {
   public:
    using ZclMessage::ZclMessage;
    unsigned char commandIdentifier() const override { return 10; }
  };
  EXPECT_EQ(show(readAttribute<unsigned char>(Report(test::bytesOf("01 07 33 01 00 20 05")), 1)), "5/1");
}

TEST(AttributeReading, ChecksTheLengthAndReadsWhateverItIs) {
  for (const char* const text : {"18 07 01 01 00 00 20 05", "18 07 0a 01 00 20 05"}) {
    const test::TracedMessage<> frame(test::bytesOf(text));
    EXPECT_EQ(show(readAttribute<unsigned char>(frame, 1)), "5/1");
    // For the command, and for the list.
    EXPECT_THAT(frame.calls, testing::ElementsAre("isValidLength()", "isValidLength()"));
  }
  const test::TracedMessage<> frame(test::bytesOf("18 07 04 00 01 00"));
  EXPECT_EQ(show(wroteAttribute(frame, 1)), "1/1");
  EXPECT_THAT(frame.calls, testing::ElementsAre("isValidLength()", "isValidLength()"));
}

TEST(AttributeReading, IsNotAnsweredByAFrameShorterThanItsHeader) {
  const test::LogCapture log;
  for (const char* const frame : {"", "18", "18 07", "1c 40 10 07"}) {
    EXPECT_EQ(asByte(frame), "0/2") << frame;
    EXPECT_EQ(show(wroteAttribute(frameOf(frame), 0)), "0/2") << frame;
  }
  EXPECT_GE(log.count(30000), 8U);
}

TEST(AttributeWriting, SucceedsForARecordWithSuccess) {
  const ZclMessage frame = frameOf("18 07 04 00 01 00 88 02 00 00 02 01");
  EXPECT_EQ(show(wroteAttribute(frame, 1)), "1/1");
  EXPECT_EQ(show(wroteAttribute(frame, 0x0102)), "1/1");
}

TEST(AttributeWriting, TellsNotAFailureFromAMissingRecord) {
  const ZclMessage frame = frameOf("18 07 04 00 01 00 88 02 00");
  EXPECT_EQ(show(wroteAttribute(frame, 2)), "0/2");
  EXPECT_EQ(show(wroteAttribute(frame, 3)), "0/2");
  EXPECT_EQ(show(wroteAttribute(frameOf("18 07 04"), 0)), "0/2");
}

TEST(AttributeWriting, LooksOnBehindAFailure) {
  EXPECT_EQ(show(wroteAttribute(frameOf("18 07 04 88 01 00 00 01 00"), 1)), "1/1");
  EXPECT_EQ(show(wroteAttribute(frameOf("18 07 04 00 01 00 88 01 00"), 1)), "1/1");
}

TEST(AttributeWriting, CountsASingleSuccessForAttributeZeroOnly) {
  EXPECT_EQ(show(wroteAttribute(frameOf("18 07 04 00"), 0)), "1/1");
  EXPECT_EQ(show(wroteAttribute(frameOf("18 07 04 00"), 1)), "0/2");
  EXPECT_EQ(show(wroteAttribute(frameOf("18 07 04 86"), 0)), "0/2");
  EXPECT_EQ(show(wroteAttribute(frameOf("1c 40 10 07 04 00"), 0)), "1/1");
}

TEST(AttributeWriting, IsAnsweredByOneCommandOnly) {
  for (unsigned int command = 0; command < 256; ++command) {
    ZclMessage frame = frameOf("18 07 04 00 01 00");
    frame.setCid(static_cast<unsigned char>(command));
    EXPECT_EQ(show(wroteAttribute(frame, 1)), command == 4 ? "1/1" : "0/2") << command;
  }
}

TEST(AttributeWriting, AsksTheFrameWhetherItIsAWriteResponse) {
  class WriteResponse : public ZclMessage {
   public:
    using ZclMessage::ZclMessage;
    bool isWriteAttributesResponse() const override { return true; }
  };
  EXPECT_EQ(show(wroteAttribute(WriteResponse(test::bytesOf("18 07 33 00 01 00")), 1)), "1/1");
}

}  // namespace
}  // namespace qx

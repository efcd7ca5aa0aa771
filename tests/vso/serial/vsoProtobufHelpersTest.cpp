#include "vso/serial/vsoProtobufHelpers.h"

#include <gmock/gmock.h>
#include <google/protobuf/any.pb.h>
#include <google/protobuf/timestamp.pb.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/LogCapture.h"
#include "vso/identifiers/PanId.h"
#include "vso/proto/PanIdPBuf.pb.h"
#include "vso/proto/TriboolPEnum.pb.h"
#include "vso/proto/U255BuffPBuf.pb.h"
#include "vso/serial/Forms.h"

namespace qx {

/// Stands for the server process's class.
class VessoriParams {
 public:
  explicit VessoriParams(int number) : number_(number) {}
  int number() const { return number_; }

 private:
  int number_;
};

namespace {

using boost::logic::indeterminate;
using google::protobuf::Any;
using google::protobuf::Timestamp;
using test::hexText;
using test::serialized;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int WARN = 30000;

/// What of a number's 32 low bits a signed number makes.
struct Cut {
  long long whole;
  long low;
};

const Cut CUTS[] = {
    {0, 0},
    {1, 1},
    {-1, -1},
    {2147483647, 2147483647},
    {2147483648, -2147483648},
    {-2147483648, -2147483648},
    {-2147483649, 2147483647},
    {4294967295, -1},
    {4294967296, 0},
    {4294967297, 1},
    {-4294967296, 0},
    {-4294967297, -1},
    {0x1234567800000005, 5},
    {LLONG_MAX, -1},
    {LLONG_MIN, 0},
};

Timestamp timestamp(long long seconds, int nanos = 0) {
  Timestamp message;
  message.set_seconds(seconds);
  message.set_nanos(nanos);
  return message;
}

BPosixTime timeOf(const std::string& text) { return boost::posix_time::time_from_string(text); }

TEST(Tribool, HasANumberForEachState) {
  EXPECT_EQ(triboolToProtobuf(false), 0);
  EXPECT_EQ(triboolToProtobuf(true), 1);
  EXPECT_EQ(triboolToProtobuf(indeterminate), 2);
}

TEST(Tribool, ComesBackFromItsThreeNumbers) {
  EXPECT_TRUE(static_cast<bool>(!triboolFromProtobuf(static_cast<pb::TriboolPEnum>(0))));
  EXPECT_TRUE(static_cast<bool>(triboolFromProtobuf(static_cast<pb::TriboolPEnum>(1))));
  EXPECT_TRUE(indeterminate(triboolFromProtobuf(static_cast<pb::TriboolPEnum>(2))));
}

TEST(Tribool, ThrowsForAnyOtherNumber) {
  for (const int number : {3, -1, 4, 255, 256, INT_MAX, INT_MIN}) {
    try {
      triboolFromProtobuf(static_cast<pb::TriboolPEnum>(number));
      FAIL() << number << " was taken";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "triboolFromProtobuf: invalid tribool") << number;
    }
  }
}

TEST(Timet, GoesOutWholeWithoutNanos) {
  for (const long seconds : {0L, 1L, -1L, 1706706309L, 2147483648L, -2147483649L, 4294967296L, LONG_MAX, LONG_MIN}) {
    const std::unique_ptr<Timestamp> message(timetToProtobuf(seconds));
    EXPECT_EQ(message->seconds(), seconds);
    EXPECT_EQ(message->nanos(), 0) << seconds;
    EXPECT_EQ(message->GetArena(), nullptr) << seconds;
  }
}

TEST(Timet, HasTheWireFormOfItsSeconds) {
  EXPECT_EQ(serialized(timetToProtobuf(300)),
            "08"        // field 1, varint
            " ac 02");  // 300
  EXPECT_EQ(serialized(timetToProtobuf(-1)),
            "08"                                // field 1, varint
            " ff ff ff ff ff ff ff ff ff 01");  // -1
  EXPECT_EQ(serialized(timetToProtobuf(0)), "");
}

TEST(Timet, ComesBackAsTheLow32BitsSigned) {
  for (const Cut& cut : CUTS) {
    EXPECT_EQ(timetFromProtobuf(timestamp(cut.whole)), cut.low) << cut.whole;
    EXPECT_EQ(timetFromProtobuf(timestamp(cut.whole, 999999999)), cut.low) << cut.whole;
  }
}

TEST(Timet, SurvivesBothWaysIn32Bits) {
  for (const long seconds : {-2147483648L, -1L, 0L, 1706706309L, 2147483647L}) {
    const std::unique_ptr<Timestamp> message(timetToProtobuf(seconds));
    EXPECT_EQ(timetFromProtobuf(*message), seconds);
  }
}

/// A time and its seconds since 1970, cut to 32 bits.
struct TimeForm {
  const char* time;
  long long seconds;
};

TEST(PosixTime, GoesOutAsWholeSecondsCutTo32Bits) {
  const TimeForm forms[] = {
      {"1970-01-01 00:00:00", 0},           {"1970-01-01 00:00:01", 1},          {"2024-01-31 13:05:09", 1706706309},
      {"1969-12-31 23:59:59", -1},          {"2038-01-19 03:14:07", 2147483647}, {"2038-01-19 03:14:08", -2147483648},
      {"2040-01-01 00:00:00", -2085978496}, {"9999-12-31 23:59:59", -769665},    {"1901-12-13 20:45:52", -2147483648},
      {"1901-12-13 20:45:51", 2147483647},  {"1900-01-01 00:00:00", 2085978496}, {"1400-01-01 00:00:00", -807574016},
  };
  for (const TimeForm& form : forms) {
    const std::unique_ptr<Timestamp> message(posixTimeToProtobuf(timeOf(form.time)));
    EXPECT_EQ(message->seconds(), form.seconds) << form.time;
    EXPECT_EQ(message->nanos(), 0) << form.time;
    EXPECT_EQ(message->GetArena(), nullptr) << form.time;
  }
}

TEST(PosixTime, LosesTheFractionTowardsZero) {
  const TimeForm forms[] = {
      {"1970-01-01 00:00:00.500000", 0},  {"1970-01-01 00:00:00.999999", 0},  {"1970-01-01 00:00:01.999999", 1},
      {"1969-12-31 23:59:59.500000", 0},  {"1969-12-31 23:59:59.000001", 0},  {"1969-12-31 23:59:58.999999", -1},
      {"1969-12-31 23:59:58.000001", -1}, {"1969-12-31 23:59:57.999999", -2},
  };
  for (const TimeForm& form : forms) {
    const std::unique_ptr<Timestamp> message(posixTimeToProtobuf(timeOf(form.time)));
    EXPECT_EQ(message->seconds(), form.seconds) << form.time;
    EXPECT_EQ(message->nanos(), 0) << form.time;
  }
}

TEST(PosixTime, HasSecondsForItsSpecialValues) {
  const std::pair<BPosixTime, long long> forms[] = {
      {BPosixTime(boost::date_time::neg_infin), -2077252342},
      {BPosixTime(boost::date_time::pos_infin), 2077252342},
      {BPosixTime(boost::date_time::not_a_date_time), 2077252342},
      {BPosixTime(), 2077252342},
  };
  for (const auto& [time, seconds] : forms) {
    const std::unique_ptr<Timestamp> message(posixTimeToProtobuf(time));
    EXPECT_EQ(message->seconds(), seconds) << time;
    EXPECT_EQ(message->nanos(), 0) << time;
  }
}

TEST(PosixTime, ComesBackFromSpecialSecondsAsADate) {
  const BPosixTime late = posixTimeFromProtobuf(timestamp(2077252342));
  const BPosixTime early = posixTimeFromProtobuf(timestamp(-2077252342));
  EXPECT_EQ(late, timeOf("2035-10-29 06:32:22"));
  EXPECT_EQ(early, timeOf("1904-03-05 17:27:38"));
  EXPECT_FALSE(late.is_special());
  EXPECT_FALSE(early.is_special());
}

TEST(PosixTime, ComesBackFromTheLow32BitsOfTheSeconds) {
  for (const Cut& cut : CUTS) {
    const BPosixTime expected = timeOf("1970-01-01 00:00:00") + boost::posix_time::seconds(cut.low);
    EXPECT_EQ(posixTimeFromProtobuf(timestamp(cut.whole)), expected) << cut.whole;
    EXPECT_EQ(posixTimeFromProtobuf(timestamp(cut.whole, 999999999)), expected) << cut.whole;
  }
  EXPECT_EQ(posixTimeFromProtobuf(timestamp(2147483648)), timeOf("1901-12-13 20:45:52"));
  EXPECT_EQ(posixTimeFromProtobuf(timestamp(1706706309)), timeOf("2024-01-31 13:05:09"));
  EXPECT_EQ(posixTimeFromProtobuf(timestamp(4294967296)), timeOf("1970-01-01 00:00:00"));
}

TEST(PosixTime, SurvivesBothWaysInWholeSecondsFrom1901To2038) {
  for (const char* const text : {"1901-12-13 20:45:52", "1950-06-15 12:00:00", "1969-12-31 23:59:59",
                                 "1970-01-01 00:00:00", "2024-02-29 23:59:59", "2038-01-19 03:14:07"}) {
    const std::unique_ptr<Timestamp> message(posixTimeToProtobuf(timeOf(text)));
    EXPECT_EQ(posixTimeFromProtobuf(*message), timeOf(text));
  }
}

TEST(PosixTimeNow, IsTheLocalTimeInWholeSeconds) {
  const std::time_t before = std::time(nullptr);
  const BPosixTime now = posixTimeNow();
  const std::time_t after = std::time(nullptr);

  std::vector<std::string> expected;
  for (std::time_t seconds = before; seconds <= after; ++seconds) {
    std::tm local{};
    ASSERT_NE(localtime_r(&seconds, &local), nullptr);
    char text[32];
    ASSERT_NE(std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local), 0U);
    expected.emplace_back(text);
  }
  EXPECT_THAT(expected, testing::Contains(boost::posix_time::to_iso_extended_string(now)));
}

/// Another time zone while it lives.
class TimeZone {
 public:
  explicit TimeZone(const char* name) {
    if (const char* const before = std::getenv("TZ")) before_ = before;
    setenv("TZ", name, 1);
    tzset();
  }
  ~TimeZone() {
    if (before_) {
      setenv("TZ", before_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  std::optional<std::string> before_;
};

TEST(PosixTimeNow, GoesByTheTimeZone) {
  const TimeZone zone("AHEAD-05:30");
  EXPECT_EQ(posixTimeOf(0), timeOf("1970-01-01 05:30:00"));
  EXPECT_EQ(posixTimeOf(1706706309), timeOf("2024-01-31 18:35:09"));
  EXPECT_EQ(posixTimeOf(1709164800), timeOf("2024-02-29 05:30:00"));
  EXPECT_EQ(posixTimeOf(-1), timeOf("1970-01-01 05:29:59"));
}

TEST(PosixTimeNow, ThrowsWhenTheCalendarHasNoSuchTime) {
  const TimeZone zone("AHEAD-05:30");
  // The last second of the year 9999 in this zone has a date, the next one has none.
  EXPECT_EQ(posixTimeOf(253402280999), timeOf("9999-12-31 23:59:59"));
  for (const long seconds : {LONG_MAX, LONG_MIN, 253402281000L, 2200000000000L}) {
    try {
      posixTimeOf(seconds);
      FAIL() << seconds << " was taken";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "could not convert calendar time to local time") << seconds;
    }
  }
}

/// `count` elements that count up from `first`, in a buffer.
template <typename T>
U255Buff<T> counted(unsigned int count, unsigned int first) {
  U255Buff<T> buffer;
  for (unsigned int i = 0; i < count; ++i) buffer.contents[i] = static_cast<T>(first + i);
  buffer.length_ = count;
  return buffer;
}

template <typename T>
std::vector<T> storageOf(const U255Buff<T>& buffer) {
  return {buffer.contents, buffer.contents + U255Buff<T>::CAPACITY};
}

std::string countedBytes(unsigned int count, unsigned int first) {
  std::string bytes;
  for (unsigned int i = 0; i < count; ++i) bytes += static_cast<char>(first + i);
  return bytes;
}

pb::U255U16BuffPBuf countedEntries(unsigned int count, unsigned int first) {
  pb::U255U16BuffPBuf message;
  for (unsigned int i = 0; i < count; ++i) message.add_contents(first + i);
  return message;
}

TEST(ByteBuffer, GoesOutAsItsBytesInUse) {
  EXPECT_EQ(serialized(u255BuffToProtobuf(counted<unsigned char>(3, 0xFE))),
            "0a 03"        // field 1, 3 bytes
            " fe ff 00");  // contents
  EXPECT_EQ(serialized(u255BuffToProtobuf(U255Buff<unsigned char>(0x77))), "");
  EXPECT_EQ(serialized(u255BuffToProtobuf(counted<unsigned char>(255, 7))),
            "0a ff 01 "                            // field 1, 255 bytes
                + hexText(countedBytes(255, 7)));  // contents
}

TEST(ByteBuffer, GoesOutAsAMessageOnTheHeap) {
  const std::unique_ptr<pb::U255BuffPBuf> message(u255BuffToProtobuf(counted<unsigned char>(1, 1)));
  EXPECT_EQ(message->GetArena(), nullptr);
}

TEST(ByteBuffer, GoesOutAsItsStorageWhenItsLengthIsBeyondIt) {
  for (const unsigned int length : {256U, 511U, UINT_MAX}) {
    U255Buff<unsigned char> buffer = counted<unsigned char>(255, 7);
    buffer.length_ = length;
    const std::unique_ptr<pb::U255BuffPBuf> message(u255BuffToProtobuf(buffer));
    EXPECT_EQ(hexText(message->contents()), hexText(countedBytes(255, 7))) << length;
  }
}

TEST(ByteBuffer, TakesUpTo255Bytes) {
  for (const unsigned int count : {0U, 1U, 254U, 255U}) {
    U255Buff<unsigned char> buffer = counted<unsigned char>(9, 0x90);
    pb::U255BuffPBuf message;
    message.set_contents(countedBytes(count, 7));
    EXPECT_FALSE(u255BuffFromProtobuf(buffer, message)) << count;
    ASSERT_EQ(buffer.length_, count);
    EXPECT_EQ(hexText(std::string(buffer.contents, buffer.contents + count)), hexText(countedBytes(count, 7)));
  }
}

TEST(ByteBuffer, TakesTheBytesOverAnEarlierLengthBeyondTheStorage) {
  U255Buff<unsigned char> buffer(nullptr, 300);
  pb::U255BuffPBuf message;
  message.set_contents("ab");
  EXPECT_FALSE(u255BuffFromProtobuf(buffer, message));
  EXPECT_EQ(buffer.length_, 2U);
  EXPECT_THAT(std::vector<unsigned char>(buffer.contents, buffer.contents + 2), ElementsAre('a', 'b'));
}

TEST(ByteBuffer, DropsMoreThan255BytesSilently) {
  for (const unsigned int count : {256U, 257U, 511U, 512U, 65536U}) {
    const U255Buff<unsigned char> before = counted<unsigned char>(9, 0x90);
    U255Buff<unsigned char> buffer(before);
    pb::U255BuffPBuf message;
    message.set_contents(countedBytes(count, 7));
    const test::LogCapture log;
    EXPECT_FALSE(u255BuffFromProtobuf(buffer, message)) << count;
    EXPECT_EQ(buffer.length_, 9U) << count;
    EXPECT_EQ(storageOf(buffer), storageOf(before)) << count;
    EXPECT_THAT(log.texts(), IsEmpty()) << count;
  }
}

TEST(WordBuffer, GoesOutAsOneEntryPerElementWithoutSign) {
  const unsigned short elements[] = {0x0001, 0xABCD, 0xFFFF};
  EXPECT_EQ(serialized(u255U16BuffToProtobuf(U255Buff<unsigned short>(elements, 3))),
            "0a 07"        // field 1, 7 bytes of packed entries
            " 01"          // 0x0001
            " cd d7 02"    // 0xABCD
            " ff ff 03");  // 0xFFFF
  EXPECT_EQ(serialized(u255U16BuffToProtobuf(U255Buff<unsigned short>(0x77))), "");
}

TEST(WordBuffer, GoesOutAsAMessageOnTheHeap) {
  const std::unique_ptr<pb::U255U16BuffPBuf> message(u255U16BuffToProtobuf(counted<unsigned short>(255, 65000)));
  EXPECT_EQ(message->GetArena(), nullptr);
  EXPECT_EQ(hexText(message->SerializeAsString()), hexText(countedEntries(255, 65000).SerializeAsString()));
}

TEST(WordBuffer, GoesOutAsItsStorageWhenItsLengthIsBeyondIt) {
  for (const unsigned int length : {256U, 511U, UINT_MAX}) {
    U255Buff<unsigned short> buffer = counted<unsigned short>(255, 65000);
    buffer.length_ = length;
    EXPECT_EQ(serialized(u255U16BuffToProtobuf(buffer)), hexText(countedEntries(255, 65000).SerializeAsString()))
        << length;
  }
}

TEST(WordBuffer, TakesUpTo255EntriesIntoAClearedStorage) {
  for (const unsigned int count : {0U, 1U, 254U, 255U}) {
    U255Buff<unsigned short> buffer(0x77);
    buffer.length_ = 9;
    EXPECT_FALSE(u255U16BuffFromProtobuf(buffer, countedEntries(count, 65000))) << count;
    EXPECT_EQ(buffer.length_, count);
    EXPECT_EQ(storageOf(buffer), storageOf(counted<unsigned short>(count, 65000))) << count;
  }
}

TEST(WordBuffer, TakesEntriesOverAnEarlierLengthBeyondTheStorage) {
  U255Buff<unsigned short> buffer(nullptr, 300);
  EXPECT_FALSE(u255U16BuffFromProtobuf(buffer, countedEntries(2, 0x1111)));
  EXPECT_EQ(buffer.length_, 2U);
  EXPECT_EQ(storageOf(buffer), storageOf(counted<unsigned short>(2, 0x1111)));
}

TEST(WordBuffer, KeepsTheLow16BitsOfAnEntry) {
  pb::U255U16BuffPBuf message;
  for (const unsigned int entry : {0x12345U, 0x10000U, 0xFFFFU, 0xFFFFFFFFU, 0x80000001U}) message.add_contents(entry);
  U255Buff<unsigned short> buffer;
  EXPECT_FALSE(u255U16BuffFromProtobuf(buffer, message));
  ASSERT_EQ(buffer.length_, 5U);
  EXPECT_THAT(std::vector<unsigned short>(buffer.contents, buffer.contents + 5),
              ElementsAre(0x2345, 0x0000, 0xFFFF, 0xFFFF, 0x0001));
}

TEST(WordBuffer, RefusesMoreThan255EntriesAndStaysAsItWas) {
  for (const unsigned int count : {256U, 257U, 511U, 512U, 65536U}) {
    const U255Buff<unsigned short> before = counted<unsigned short>(9, 0x9000);
    U255Buff<unsigned short> buffer(before);
    EXPECT_TRUE(u255U16BuffFromProtobuf(buffer, countedEntries(count, 7))) << count;
    EXPECT_EQ(buffer.length_, 9U) << count;
    EXPECT_EQ(storageOf(buffer), storageOf(before)) << count;
  }
}

TEST(Buffers, ClearTheRestOfTheStorageOnlyForWords) {
  U255Buff<unsigned char> byteBuffer(0x77);
  pb::U255BuffPBuf byteMessage;
  byteMessage.set_contents("ab");
  EXPECT_FALSE(u255BuffFromProtobuf(byteBuffer, byteMessage));
  const std::vector<unsigned char> bytes = storageOf(byteBuffer);
  EXPECT_THAT(std::vector<unsigned char>(bytes.begin() + 2, bytes.end()), Each(0x77));

  U255Buff<unsigned short> wordBuffer(0x77);
  EXPECT_FALSE(u255U16BuffFromProtobuf(wordBuffer, countedEntries(2, 'a')));
  const std::vector<unsigned short> words = storageOf(wordBuffer);
  EXPECT_THAT(std::vector<unsigned short>(words.begin() + 2, words.end()), Each(0));
}

/// The bytes of a base64 text with the standard alphabet and padding, and nothing else in it.
std::optional<std::string> base64Decoded(const std::string& text) {
  static const std::string ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t digits = std::min(text.find('='), text.size());
  if (text.size() - digits > 2 || text.find_first_not_of('=', digits) != std::string::npos) return std::nullopt;
  std::string bytes;
  std::uint32_t bits = 0;
  unsigned int held = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    const std::size_t value = ALPHABET.find(text[i]);
    if (value == std::string::npos) return std::nullopt;
    bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFU;
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes += static_cast<char>(bits >> held);
  }
  return bytes;
}

TEST(SerializeWithAny, IsTheEnvelopeInBase64) {
  const std::unique_ptr<pb::PanIdPBuf> message(PanId(std::string("0011223344556677")).toProtobuf());
  const std::optional<std::string> bytes = base64Decoded(serializeWithAny(*message));
  ASSERT_TRUE(bytes.has_value());
  EXPECT_EQ(hexText(*bytes),
            "0a 23"                                                         // field 1, 35 bytes
            " 74 79 70 65 2e 67 6f 6f 67 6c 65 61 70 69 73 2e 63 6f 6d 2f"  // "type.googleapis.com/"
            " 71 78 2e 70 62 2e 50 61 6e 49 64 50 42 75 66"                 // "qx.pb.PanIdPBuf"
            " 12 0a"                                                        // field 2, 10 bytes
            " 0a 08 00 11 22 33 44 55 66 77");                              // the message
}

TEST(SerializeWithAny, UnpacksToTheMessage) {
  const std::unique_ptr<pb::PanIdPBuf> message(PanId(std::string("0011223344556677")).toProtobuf());
  const std::optional<std::string> bytes = base64Decoded(serializeWithAny(*message));
  ASSERT_TRUE(bytes.has_value());
  Any any;
  ASSERT_TRUE(any.ParseFromString(*bytes));
  EXPECT_EQ(any.type_url(), "type.googleapis.com/qx.pb.PanIdPBuf");
  pb::PanIdPBuf unpacked;
  ASSERT_TRUE(any.UnpackTo(&unpacked));
  EXPECT_EQ(hexText(unpacked.addr()), "00 11 22 33 44 55 66 77");
  pb::U255BuffPBuf other;
  EXPECT_FALSE(any.UnpackTo(&other));
}

TEST(SerializeWithAny, PacksMessagesOfAllSizes) {
  for (const unsigned int count : {0U, 1U, 2U, 3U, 4U, 255U, 256U, 5000U}) {
    pb::U255BuffPBuf message;
    message.set_contents(countedBytes(count, 0x80));
    const std::optional<std::string> bytes = base64Decoded(serializeWithAny(message));
    ASSERT_TRUE(bytes.has_value()) << count;
    Any any;
    ASSERT_TRUE(any.ParseFromString(*bytes)) << count;
    EXPECT_EQ(any.type_url(), "type.googleapis.com/qx.pb.U255BuffPBuf");
    pb::U255BuffPBuf unpacked;
    ASSERT_TRUE(any.UnpackTo(&unpacked)) << count;
    EXPECT_EQ(hexText(unpacked.contents()), hexText(countedBytes(count, 0x80)));
    EXPECT_EQ(hexText(message.contents()), hexText(countedBytes(count, 0x80)));
  }
}

class VessoriParamsProtobufCreator : public testing::Test {
 protected:
  ~VessoriParamsProtobufCreator() override { vessoriParamsProtobufCreatorMap = before_; }

  static Any any(const std::string& typeUrl, const std::string& value = "") {
    Any made;
    made.set_type_url(typeUrl);
    made.set_value(value);
    return made;
  }

  const test::LogCapture log_;

 private:
  const boost::unordered_map<std::string, std::function<VessoriParams*()>> before_ = vessoriParamsProtobufCreatorMap;
};

TEST_F(VessoriParamsProtobufCreator, KnowsNoTypeByItself) { EXPECT_THAT(vessoriParamsProtobufCreatorMap, IsEmpty()); }

TEST_F(VessoriParamsProtobufCreator, CallsTheFunctionOfTheTypeUrl) {
  vessoriParamsProtobufCreatorMap["type.googleapis.com/a.First"] = [] { return new VessoriParams(1); };
  vessoriParamsProtobufCreatorMap["type.googleapis.com/a.Second"] = [] { return new VessoriParams(2); };
  const std::unique_ptr<VessoriParams> first(vessoriParamsProtobufCreator(any("type.googleapis.com/a.First")));
  const std::unique_ptr<VessoriParams> second(vessoriParamsProtobufCreator(any("type.googleapis.com/a.Second")));
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->number(), 1);
  EXPECT_EQ(second->number(), 2);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(VessoriParamsProtobufCreator, GivesWhatTheFunctionReturns) {
  VessoriParams params(3);
  VessoriParams* result = &params;
  int calls = 0;
  vessoriParamsProtobufCreatorMap["a/b"] = [&] {
    ++calls;
    return result;
  };
  EXPECT_EQ(vessoriParamsProtobufCreator(any("a/b")), &params);
  EXPECT_EQ(calls, 1);
  result = nullptr;
  EXPECT_EQ(vessoriParamsProtobufCreator(any("a/b")), nullptr);
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(VessoriParamsProtobufCreator, DoesNotReadThePayload) {
  VessoriParams params(4);
  vessoriParamsProtobufCreatorMap["type.googleapis.com/qx.pb.PanIdPBuf"] = [&] { return &params; };
  const Any received = any("type.googleapis.com/qx.pb.PanIdPBuf", "\xFF\xFF no message");
  EXPECT_EQ(vessoriParamsProtobufCreator(received), &params);
  EXPECT_EQ(received.value(), "\xFF\xFF no message");
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(VessoriParamsProtobufCreator, WarnsOfAnUnknownType) {
  EXPECT_EQ(vessoriParamsProtobufCreator(any("type.googleapis.com/qx.pb.ZapPBuf")), nullptr);
  ASSERT_THAT(log_.texts(), ElementsAre("vessoriParamsProtobufCreator: cannot find type "
                                        "'type.googleapis.com/qx.pb.ZapPBuf'"));
  EXPECT_EQ(log_.lines().front().level, WARN);
}

TEST_F(VessoriParamsProtobufCreator, ComparesTheWholeTypeUrl) {
  VessoriParams params(5);
  vessoriParamsProtobufCreatorMap["type.googleapis.com/a.B"] = [&] { return &params; };
  for (const char* const url : {"a.B", "type.googleapis.com/a.b", "type.googleapis.com/a.B ", "/a.B"}) {
    EXPECT_EQ(vessoriParamsProtobufCreator(any(url)), nullptr) << url;
  }
  EXPECT_THAT(log_.texts(), ElementsAre("vessoriParamsProtobufCreator: cannot find type 'a.B'",
                                        "vessoriParamsProtobufCreator: cannot find type 'type.googleapis.com/a.b'",
                                        "vessoriParamsProtobufCreator: cannot find type 'type.googleapis.com/a.B '",
                                        "vessoriParamsProtobufCreator: cannot find type '/a.B'"));
}

TEST_F(VessoriParamsProtobufCreator, AddsNoEntryForAnUnknownType) {
  vessoriParamsProtobufCreator(any("a.B"));
  EXPECT_THAT(vessoriParamsProtobufCreatorMap, IsEmpty());
}

TEST_F(VessoriParamsProtobufCreator, GivesNullWithoutAWordForNoType) {
  EXPECT_EQ(vessoriParamsProtobufCreator(Any()), nullptr);
  EXPECT_EQ(vessoriParamsProtobufCreator(any("", "payload")), nullptr);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(VessoriParamsProtobufCreator, LooksUpAnEmptyTypeUrlToo) {
  VessoriParams params(6);
  vessoriParamsProtobufCreatorMap[""] = [&] { return &params; };
  EXPECT_EQ(vessoriParamsProtobufCreator(Any()), &params);
}

TEST_F(VessoriParamsProtobufCreator, ThrowsForAnEmptyFunction) {
  vessoriParamsProtobufCreatorMap["a/b"] = nullptr;
  EXPECT_THROW(vessoriParamsProtobufCreator(any("a/b")), std::bad_function_call);
}

TEST_F(VessoriParamsProtobufCreator, PassesOnWhatTheFunctionThrows) {
  vessoriParamsProtobufCreatorMap["a/b"] = []() -> VessoriParams* { throw std::out_of_range("no parameters"); };
  EXPECT_THROW(vessoriParamsProtobufCreator(any("a/b")), std::out_of_range);
}

}  // namespace
}  // namespace qx

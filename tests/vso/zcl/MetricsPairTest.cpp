#include "vso/zcl/MetricsPair.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/LogCapture.h"
#include "tests/vso/zcl/MetricsGateway.h"
#include "vso/zcl/Records.h"

namespace qx {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_polymorphic_v<MetricsPair>, "a plain value");

ReportAttributeRecord recordOf(unsigned short id, unsigned char type, const std::string& data) {
  return test::record<ReportAttributeRecord>(id, type, data);
}

/// "name 'temp', no value ''"
std::string show(const MetricsPair& pair) {
  return (pair.hasName_ ? "name '" : "no name '") + pair.name_ + (pair.hasValue_ ? "', value '" : "', no value '") +
         pair.value_ + "'";
}

/// A pair that holds both.
MetricsPair fullPair() {
  MetricsPair pair;
  pair.name_ = "temp";
  pair.value_ = "21";
  pair.hasName_ = true;
  pair.hasValue_ = true;
  return pair;
}

TEST(MetricsPair, StartsEmpty) {
  const MetricsPair pair;
  EXPECT_EQ(show(pair), "no name '', no value ''");
  EXPECT_FALSE(pair.complete());
}

TEST(MetricsPair, ResetsToEmpty) {
  MetricsPair pair = fullPair();
  pair.reset();
  EXPECT_EQ(show(pair), "no name '', no value ''");
}

TEST(MetricsPair, IsCompleteWithBoth) {
  MetricsPair pair = fullPair();
  EXPECT_TRUE(pair.complete());
  pair.hasName_ = false;
  EXPECT_FALSE(pair.complete());
  pair.hasValue_ = false;
  EXPECT_FALSE(pair.complete());
  pair.hasName_ = true;
  EXPECT_FALSE(pair.complete());
}

struct RecordRow {
  const char* name;
  unsigned short id;
  unsigned char type;
  const char* data;
  /// Of an empty pair, and of one that is complete.
  std::string fromEmpty;
  std::string fromFull;
  std::vector<std::string> log = {};
};

void PrintTo(const RecordRow& row, std::ostream* out) { *out << row.name; }

class MetricsPairRecord : public testing::TestWithParam<RecordRow> {};

TEST_P(MetricsPairRecord, IsTakenByIdAndType) {
  const RecordRow& row = GetParam();
  const test::LogCapture capture;
  MetricsPair pair;
  pair.getPair(recordOf(row.id, row.type, row.data));
  EXPECT_EQ(show(pair), row.fromEmpty);
  EXPECT_EQ(capture.texts(), row.log);

  MetricsPair full = fullPair();
  full.getPair(recordOf(row.id, row.type, row.data));
  EXPECT_EQ(show(full), row.fromFull);
}

const std::string WRONG_TYPE = "QxZclHaDiagnostics::getPair: diagnostics metric name has wrong type: ";
const std::string UNKNOWN_ID = "QxZclHaDiagnostics::getPair: unknown attribute id: ";
const std::string UNKNOWN_TYPE = "AttributeRecordData::valueToString: diagnostics metric value unsupported type: ";

INSTANTIATE_TEST_SUITE_P(
    MetricsPair, MetricsPairRecord,
    testing::Values(
        RecordRow{"Name", 0x011E, 0x42, "6c 6f 61 64", "name 'load', no value ''", "name 'load', value '21'"},
        RecordRow{"NameOfTheOtherText", 0x011E, 0x40, "6c 6f 61 64", "name 'load', no value ''",
                  "name 'load', value '21'"},
        RecordRow{"EmptyName", 0x011E, 0x42, "", "name '', no value ''", "name '', value '21'"},
        RecordRow{"NameThatIsANumber",
                  0x011E,
                  0x20,
                  "05",
                  "no name '5', no value ''",
                  "no name '5', value '21'",
                  {WRONG_TYPE + "<AttributeRecordData id_: 0x011e, type_: 0x20, data_: 5>"}},
        RecordRow{"NameOfOctetsInWireForm",
                  0x011E,
                  0x41,
                  "02 ab cd",
                  "no name 'abcd', no value ''",
                  "no name 'tempabcd', value '21'",
                  {WRONG_TYPE + "<AttributeRecordData id_: 0x011e, type_: 0x41, data_: abcd>"}},
        RecordRow{"NameOfAnUnknownType",
                  0x011E,
                  0x0C,
                  "01 02 03 04 05",
                  "no name '', no value ''",
                  "no name 'temp', value '21'",
                  {UNKNOWN_TYPE + "0x0c, data: 01020304", UNKNOWN_TYPE + "0x0c, data: 01020304",
                   WRONG_TYPE + "<AttributeRecordData id_: 0x011e, type_: 0x0c, data_: 01020304 (error)>"}},
        RecordRow{"Value", 0x011F, 0x20, "05", "no name '', value '5'", "name 'temp', value '5'"},
        RecordRow{"ValueOfText", 0x011F, 0x42, "68 69", "no name '', value 'hi'", "name 'temp', value 'hi'"},
        RecordRow{"EmptyValue", 0x011F, 0x40, "", "no name '', value ''", "name 'temp', value ''"},
        RecordRow{"ValueOfOctetsInWireForm", 0x011F, 0x41, "02 ab cd", "no name '', value 'abcd'",
                  "name 'temp', value '21abcd'"},
        RecordRow{"ValueOfAnUnknownType",
                  0x011F,
                  0xFF,
                  "01 02 03 04 05",
                  "no name '', no value ''",
                  "name 'temp', value '21'",
                  {UNKNOWN_TYPE + "0xff, data: 01020304"}},
        RecordRow{"AnotherId",
                  0x011D,
                  0x42,
                  "68 69",
                  "no name '', no value ''",
                  "name 'temp', value '21'",
                  {UNKNOWN_ID + "<AttributeRecordData id_: 0x011d, type_: 0x42, data_: hi>"}},
        RecordRow{"IdZero",
                  0x0000,
                  0x20,
                  "05",
                  "no name '', no value ''",
                  "name 'temp', value '21'",
                  {UNKNOWN_ID + "<AttributeRecordData id_: 0x0000, type_: 0x20, data_: 5>"}}),
    [](const auto& row) { return row.param.name; });

TEST(MetricsPair, LogsWhatItCannotTakeAtItsLevel) {
  const test::LogCapture capture;
  MetricsPair pair;
  pair.getPair(recordOf(0x011E, 0x20, "05"));
  pair.getPair(recordOf(0x0120, 0x20, "05"));
  ASSERT_EQ(capture.lines().size(), 2u);
  EXPECT_EQ(capture.lines()[0].level, log4cplus::ERROR_LOG_LEVEL);
  EXPECT_EQ(capture.lines()[1].level, log4cplus::WARN_LOG_LEVEL);
}

TEST(MetricsPair, IsSentAsAMetricOfTheName) {
  test::MetricsGateway gateway;
  const test::LogCapture capture;
  fullPair().send("here");
  EXPECT_THAT(gateway.datagrams(), ElementsAre("vessori2.v2.here.temp:21|g"));
  EXPECT_THAT(capture.texts(), ElementsAre("QxZclHaDiagnostics::send: Send metric (here, temp, 21)"));
  EXPECT_EQ(capture.count(log4cplus::DEBUG_LOG_LEVEL), 1u);
}

TEST(MetricsPair, IsLoggedAndDroppedWithoutAConnection) {
  test::MetricsGateway gateway;
  gateway.disconnect();
  const test::LogCapture capture;
  fullPair().send("here");
  EXPECT_THAT(gateway.datagrams(), IsEmpty());
  EXPECT_THAT(capture.texts(), ElementsAre("QxZclHaDiagnostics::send: Send metric (here, temp, 21)",
                                           "QxMetricsClient::sendImpl: StatsdClient connection not initialized"));
}

TEST(MetricsPair, IsSentAsItStandsCompleteOrNot) {
  test::MetricsGateway gateway;
  MetricsPair pair = fullPair();
  pair.hasName_ = false;
  pair.hasValue_ = false;
  pair.value_ = "warm";
  pair.send("");
  EXPECT_THAT(gateway.datagrams(), ElementsAre("vessori2.v2..temp:warm|s"));
}

}  // namespace
}  // namespace qx

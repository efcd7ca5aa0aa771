#include "vso/zcl/QxZclHaDiagnostics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/zcl/MetricsGateway.h"
#include "vso/zcl/getHostName.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<QxZclHaDiagnostics>, "nobody builds one");

const std::string HEADER = "18 05 0a ";
const std::string NAME = "1e 01 42 04 74 65 6d 70 ";     // temp
const std::string OTHER_NAME = "1e 01 40 03 66 61 6e ";  // fan
const std::string VALUE = "1f 01 20 15 ";                // 21
const std::string OTHER_VALUE = "1f 01 21 2c 01 ";       // 300
const std::string UNKNOWN_TYPE_VALUE = "1f 01 0c ";

Euid node() {
  Euid euid;
  euid = "0011223344556677";
  return euid;
}

std::string fullName() { return "vessori2." + getHostName() + ".node1.0011223344556677.zcl_diag"; }
/// A line of a datagram behind the name of the metric: "temp:21|g".
std::string line(const std::string& rest) { return "vessori2.v2." + fullName() + "." + rest; }

QxZclHaDiagnostics frameOf(const std::string& hexText) { return QxZclHaDiagnostics(bytesOf(hexText)); }

bool sendMetrics(const std::string& records) { return frameOf(HEADER + records).sendMetrics("node1", node()); }

/// A text of type 0x42 behind an id.
std::string textRecord(const std::string& id, const std::string& text) {
  std::string record = id + " 42 " + hex(bytes({static_cast<unsigned char>(text.size())})) + " ";
  for (const char c : text) record += hex(bytes({static_cast<unsigned char>(c)})) + " ";
  return record;
}

TEST(QxZclHaDiagnostics, BelongsToThePublicDiagnostics) {
  const std::unique_ptr<ZclMessage> message = std::make_unique<QxZclHaDiagnostics>(bytesOf(HEADER));
  EXPECT_EQ(message->getProfileId(), 0x0104);
  EXPECT_EQ(message->getClusterId(), 0x0B05);
}

TEST(QxZclHaDiagnostics, TakesReceivedFramesAsTheyAre) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(frameOf(HEADER + NAME)), hex(bytesOf(HEADER + NAME)));
  EXPECT_EQ(hex(QxZclHaDiagnostics(std::string("18050a1f012015"))), hex(bytesOf(HEADER + VALUE)));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, sequence);
}

// Reports

struct ReportRow {
  const char* name;
  std::string records;
  bool failure;
  /// Behind the name of the metric.
  std::vector<std::string> metrics;
  /// At warn level and above.
  std::vector<std::string> log = {};
};

void PrintTo(const ReportRow& row, std::ostream* out) { *out << row.name; }

class MetricsReport : public testing::TestWithParam<ReportRow> {
 protected:
  static std::vector<std::string> expectedDatagrams() {
    std::vector<std::string> datagrams;
    for (const std::string& metric : GetParam().metrics) datagrams.push_back(line(metric));
    return datagrams;
  }
};

TEST_P(MetricsReport, IsSentPairByPair) {
  test::MetricsGateway gateway;
  const test::LogCapture capture(log4cplus::WARN_LOG_LEVEL);
  EXPECT_EQ(sendMetrics(GetParam().records), GetParam().failure);
  EXPECT_EQ(gateway.datagrams(), expectedDatagrams());
  EXPECT_EQ(capture.texts(), GetParam().log);
}

TEST_P(MetricsReport, HasTheSameResultWithoutAConnection) {
  const test::LogCapture capture(log4cplus::WARN_LOG_LEVEL);
  EXPECT_EQ(sendMetrics(GetParam().records), GetParam().failure);
  EXPECT_EQ(capture.texts(), GetParam().log);
}

std::string broken(const std::string& name, const std::string& value) {
  return "QxZclHaDiagnostics::sendMetrics: attribute record pair did not yield a valid name,value: {'" + name + "': '" +
         value + "'}";
}
const std::string WRONG_TYPE = "QxZclHaDiagnostics::getPair: diagnostics metric name has wrong type: ";
const std::string UNKNOWN_ID = "QxZclHaDiagnostics::getPair: unknown attribute id: ";
const std::string UNKNOWN_TYPE = "AttributeRecordData::valueToString: diagnostics metric value unsupported type: ";

/// What an octet string of AB CD comes out as: its hexadecimal text "abcd" taken as a length ('a') and so many bytes.
std::string misreadOctets() {
  std::string text = "626364";
  for (int i = 4; i <= 'a'; ++i) text += "00";
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    QxZclHaDiagnostics, MetricsReport,
    testing::Values(
        ReportRow{"Empty", "", false, {}}, ReportRow{"OnePair", NAME + VALUE, false, {"temp:21|g"}},
        ReportRow{"ValueBeforeName", VALUE + NAME, false, {"temp:21|g"}},
        ReportRow{"NameOfTheOtherText", OTHER_NAME + VALUE, false, {"fan:21|g"}},
        ReportRow{"TwoPairs", NAME + VALUE + OTHER_VALUE + OTHER_NAME, false, {"temp:21|g", "fan:300|g"}},
        ReportRow{"NameAlone", NAME, true, {}, {broken("temp", "")}},
        ReportRow{"ValueAlone", VALUE, true, {}, {broken("", "21")}},
        ReportRow{"ThreeRecords", NAME + VALUE + OTHER_NAME, true, {"temp:21|g"}, {broken("fan", "")}},
        ReportRow{"ThreeRecordsWithAValueLast", NAME + VALUE + VALUE, true, {"temp:21|g"}, {broken("", "21")}},
        ReportRow{"TwoNames", NAME + OTHER_NAME + VALUE + VALUE, true, {}, {broken("fan", "")}},
        ReportRow{"TwoValues", VALUE + OTHER_VALUE, true, {}, {broken("", "300")}},
        ReportRow{"BrokenSecondPair",
                  NAME + VALUE + OTHER_NAME + OTHER_NAME + NAME + VALUE,
                  true,
                  {"temp:21|g"},
                  {broken("fan", "")}},
        ReportRow{"NameThatIsANumber",
                  "1e 01 20 05" + VALUE,
                  true,
                  {},
                  {WRONG_TYPE + "<AttributeRecordData id_: 0x011e, type_: 0x20, data_: 5>", broken("5", "21")}},
        ReportRow{"NameOfOctets",
                  "1e 01 41 02 ab cd" + VALUE,
                  true,
                  {},
                  {WRONG_TYPE + "<AttributeRecordData id_: 0x011e, type_: 0x41, data_: " + misreadOctets() + ">",
                   broken(misreadOctets(), "21")}},
        ReportRow{"UnknownId",
                  "1d 01 20 05" + NAME + VALUE + VALUE,
                  true,
                  {},
                  {UNKNOWN_ID + "<AttributeRecordData id_: 0x011d, type_: 0x20, data_: 5>", broken("temp", "")}},
        ReportRow{"ValueOfAnUnknownType",
                  NAME + UNKNOWN_TYPE_VALUE,
                  true,
                  {},
                  {UNKNOWN_TYPE + "0x0c, data: 00000000", broken("temp", "")}},
        ReportRow{"NothingBehindAnUnknownTypeIsRead",
                  UNKNOWN_TYPE_VALUE + NAME + OTHER_NAME + VALUE,
                  true,
                  {},
                  {UNKNOWN_TYPE + "0x0c, data: 00000000", broken("temp", "")}},
        ReportRow{"ValueOfOctets", NAME + "1f 01 41 02 ab cd", false, {"temp:" + misreadOctets() + "|g"}},
        ReportRow{"OctetsBehindAnotherValue",
                  "1f 01 42 01 78  1f 01 41 02 ab cd",
                  true,
                  {},
                  {broken("", "x" + misreadOctets())}},
        ReportRow{"OctetsOfTheNextPair",
                  NAME + VALUE + OTHER_NAME + "1f 01 41 02 ab cd",
                  false,
                  {"temp:21|g", "fan:" + misreadOctets() + "|g"}},
        // An empty value is no metric, yet the pair has one.
        ReportRow{"EmptyOctets", NAME + "1f 01 41 00" + OTHER_NAME + VALUE, false, {"fan:21|g"}},
        ReportRow{"EmptyText", NAME + "1f 01 42 00", false, {}},
        ReportRow{"EmptyName", "1e 01 42 00" + VALUE, false, {":21|g"}},
        ReportRow{"NameThatWasCutOff", "1f 01 20 15  1e 01 42 04 74 65", false, {"te:21|g"}},
        ReportRow{"ValueThatWasCutOff", NAME + "1f 01 21 15", false, {"temp:21|g"}},
        ReportRow{"RecordThatWasCutIntoItsId",
                  NAME + "1f",
                  true,
                  {},
                  {UNKNOWN_TYPE + "0x00, data: 00000000",
                   UNKNOWN_ID + "<AttributeRecordData id_: 0x001f, type_: 0x00, data_: 00000000 (error)>",
                   broken("temp", "")}}),
    [](const auto& row) { return row.param.name; });

// Values

struct ValueRow {
  const char* name;
  const char* wire;
  const char* sent;
};

void PrintTo(const ValueRow& row, std::ostream* out) { *out << row.name; }

class MetricsValue : public testing::TestWithParam<ValueRow> {};

TEST_P(MetricsValue, IsSentAsItPrints) {
  test::MetricsGateway gateway;
  const test::LogCapture capture(log4cplus::WARN_LOG_LEVEL);
  EXPECT_FALSE(sendMetrics(NAME + "1f 01 " + GetParam().wire));
  EXPECT_THAT(gateway.datagrams(), ElementsAre(line("temp:" + std::string(GetParam().sent))));
  EXPECT_THAT(capture.texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    QxZclHaDiagnostics, MetricsValue,
    testing::Values(ValueRow{"Data8", "08 ff", "255|g"}, ValueRow{"Data16", "09 02 01", "258|g"},
                    ValueRow{"Data24", "0a 03 02 a1", "a10203|s"}, ValueRow{"Data32", "0b ff ff ff ff", "4294967295|g"},
                    ValueRow{"True", "10 02", "1|g"}, ValueRow{"False", "10 00", "0|g"},
                    ValueRow{"Bitmap8", "18 a5", "a5|s"}, ValueRow{"Bitmap16", "19 02 a1", "a102|s"},
                    ValueRow{"Bitmap24", "1a 03 02 a1", "a10203|s"},
                    ValueRow{"Bitmap32", "1b 04 03 02 a1", "a1020304|s"}, ValueRow{"Unsigned8", "20 ff", "255|g"},
                    ValueRow{"Unsigned16", "21 ff ff", "65535|g"}, ValueRow{"Unsigned24", "22 03 02 01", "010203|g"},
                    ValueRow{"Unsigned32", "23 ff ff ff ff", "4294967295|g"}, ValueRow{"Signed8", "28 ff", "ff|s"},
                    ValueRow{"Signed16", "29 fe ff", "fffe|s"}, ValueRow{"Signed24", "2a fe ff ff", "fffffe|s"},
                    ValueRow{"Signed32", "2b fe ff ff ff", "fffffffe|s"}, ValueRow{"Enumeration8", "30 07", "7|g"},
                    ValueRow{"Enumeration16", "31 07 01", "263|g"}, ValueRow{"HalfFloat", "38 00 3c", "3c00|s"},
                    ValueRow{"Float", "39 00 00 80 3f", "3f800000|s"},
                    ValueRow{"Double", "3a 00 00 00 00 00 00 f0 3f", "3ff0000000000000|s"},
                    ValueRow{"Text", "40 02 68 69", "hi|s"}, ValueRow{"CharacterString", "42 02 68 69", "hi|s"},
                    ValueRow{"TimeOfDay", "e0 01 02 03 a4", "a4030201|s"},
                    ValueRow{"Date", "e1 01 02 03 a4", "a4030201|s"}, ValueRow{"ClusterId", "e8 05 0b", "0b05|s"},
                    ValueRow{"AttributeId", "e9 05 0b", "0b05|s"}, ValueRow{"Bacnet", "ea 01 02 03 a4", "a4030201|s"},
                    ValueRow{"Address", "f0 a7 66 55 44 33 22 11 00", "00112233445566a7|s"},
                    ValueRow{"TextOfANumber", "42 04 32 31 2e 35", "21.5|g"}),
    [](const auto& row) { return row.param.name; });

TEST(QxZclHaDiagnostics, SendsANegativeNumberBehindAZero) {
  test::MetricsGateway gateway;
  EXPECT_FALSE(sendMetrics(NAME + textRecord("1f 01", "-5")));
  EXPECT_THAT(gateway.datagrams(), ElementsAre(line("temp:0|g") + "\n" + line("temp:-5|g")));
}

TEST(QxZclHaDiagnostics, KeepsOneMetricOneWhateverItsBytes) {
  test::MetricsGateway gateway;
  EXPECT_FALSE(sendMetrics(textRecord("1e 01", "a:1|c\nb") + textRecord("1f 01", "5|g\nx:1|c@0#t")));
  EXPECT_FALSE(sendMetrics(textRecord("1e 01", "\x01\x7f\xff %s") + textRecord("1f 01", "\x1b[2J\r\n")));
  EXPECT_THAT(gateway.datagrams(), ElementsAre(line("a_1_c_b:5_g_x_1_c_0_t|s"), line("__\xff %s:_[2J__|s")));
}

TEST(QxZclHaDiagnostics, EndsATextAtItsFirstZero) {
  test::MetricsGateway gateway;
  EXPECT_FALSE(sendMetrics("1e 01 42 04 61 62 00 63  1f 01 42 03 31 00 32"));
  EXPECT_THAT(gateway.datagrams(), ElementsAre(line("ab:1|g")));
}

TEST(QxZclHaDiagnostics, CutsATextThatARecordCannotHold) {
  test::MetricsGateway gateway;
  EXPECT_FALSE(sendMetrics(textRecord("1e 01", std::string(230, 'n')) + VALUE));
  EXPECT_THAT(gateway.datagrams(), ElementsAre(line(std::string(200, 'n') + ":21|g")));
}

TEST(QxZclHaDiagnostics, FillsAFrameWithPairs) {
  test::MetricsGateway gateway;
  std::string records;
  std::vector<std::string> expected;
  // Nine bytes each, behind a header of three.
  for (char c = 'A'; c < 'A' + 28; ++c) {
    records += textRecord("1e 01", std::string(1, c)) + VALUE;
    expected.push_back(line(std::string(1, c) + ":21|g"));
  }
  ASSERT_EQ(frameOf(HEADER + records).length_, 255u);
  EXPECT_FALSE(sendMetrics(records));
  EXPECT_THAT(gateway.datagrams(), ElementsAreArray(expected));
}

TEST(QxZclHaDiagnostics, NamesHostNameAndNode) {
  test::MetricsGateway gateway;
  const QxZclHaDiagnostics frame = frameOf(HEADER + NAME + VALUE);
  Euid other;
  other = "ff0b57fffe123456";
  EXPECT_FALSE(frame.sendMetrics("a.b", other));
  EXPECT_FALSE(frame.sendMetrics("", Euid()));
  const std::string start = "vessori2.v2.vessori2." + getHostName();
  EXPECT_THAT(gateway.datagrams(), ElementsAre(start + ".a.b.ff0b57fffe123456.zcl_diag.temp:21|g",
                                               start + "..0000000000000000.zcl_diag.temp:21|g"));
}

TEST(QxZclHaDiagnostics, ReadsAReportBehindTheHeaderOfAManufacturer) {
  test::MetricsGateway gateway;
  EXPECT_FALSE(frameOf("1c 40 10 05 0a " + NAME + VALUE).sendMetrics("node1", node()));
  EXPECT_THAT(gateway.datagrams(), ElementsAre(line("temp:21|g")));
}

// Log lines

TEST(QxZclHaDiagnostics, LogsEachRecordAndEachMetric) {
  const test::LogCapture capture;
  EXPECT_FALSE(sendMetrics(NAME + VALUE + OTHER_VALUE + OTHER_NAME));
  const std::string dropped = "QxMetricsClient::sendImpl: StatsdClient connection not initialized";
  EXPECT_THAT(
      capture.texts(),
      ElementsAre("QxZclHaDiagnostics::sendMetrics: <AttributeRecordData id_: 0x011e, type_: 0x42, data_: temp>, "
                  "name: 'temp' , value: '' ",
                  "QxZclHaDiagnostics::sendMetrics: <AttributeRecordData id_: 0x011f, type_: 0x20, data_: 21>, "
                  "name: 'temp' , value: '21' ",
                  "QxZclHaDiagnostics::send: Send metric (" + fullName() + ", temp, 21)", dropped,
                  "QxZclHaDiagnostics::sendMetrics: <AttributeRecordData id_: 0x011f, type_: 0x21, data_: 300>, "
                  "name: '' , value: '300' ",
                  "QxZclHaDiagnostics::sendMetrics: <AttributeRecordData id_: 0x011e, type_: 0x40, data_: fan>, "
                  "name: 'fan' , value: '300' ",
                  "QxZclHaDiagnostics::send: Send metric (" + fullName() + ", fan, 300)", dropped));
  EXPECT_EQ(capture.count(log4cplus::DEBUG_LOG_LEVEL), 8u);
}

TEST(QxZclHaDiagnostics, LogsAPairThatIsNoneAsAnError) {
  const test::LogCapture capture;
  EXPECT_TRUE(sendMetrics(NAME + UNKNOWN_TYPE_VALUE));
  const std::string unknown = UNKNOWN_TYPE + "0x0c, data: 00000000";
  EXPECT_THAT(
      capture.texts(),
      ElementsAre("QxZclHaDiagnostics::sendMetrics: <AttributeRecordData id_: 0x011e, type_: 0x42, data_: temp>, "
                  "name: 'temp' , value: '' ",
                  unknown, unknown,  // once for the pair, once for the line that shows the record
                  "QxZclHaDiagnostics::sendMetrics: <AttributeRecordData id_: 0x011f, type_: 0x0c, data_: 00000000 "
                  "(error)>, name: 'temp' , value: '' ",
                  broken("temp", "")));
  EXPECT_EQ(capture.count(log4cplus::ERROR_LOG_LEVEL), 3u);
  EXPECT_EQ(capture.lines().back().level, log4cplus::ERROR_LOG_LEVEL);
}

TEST(QxZclHaDiagnostics, WarnsOfAFrameWithoutAWholeHeader) {
  test::MetricsGateway gateway;
  const test::LogCapture capture;
  EXPECT_FALSE(frameOf("18 05").sendMetrics("node1", node()));
  EXPECT_THAT(capture.texts(), ElementsAre("ZclMessage::isValidLength: Invalid ZCL packet length: 2"));
  EXPECT_THAT(gateway.datagrams(), IsEmpty());
}

}  // namespace
}  // namespace qx

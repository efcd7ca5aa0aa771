// What the program shows of the two diagnostics clusters.
#include <gtest/gtest.h>

#include <string>

#include "apps/vso/decode/Decoded.h"
#include "apps/vso/decode/JsonPrinter.h"
#include "apps/vso/decode/TextPrinter.h"
#include "support/LogCapture.h"

namespace qx::app {
namespace {

using test::decoded;
using test::HOME;
using test::QX_PRIVATE;

constexpr unsigned short NODE_DIAGNOSTICS = 0x0002;
constexpr unsigned short DIAGNOSTICS = 0x0B05;

/// Fields 1 to 15.
const std::string BLOCK = "00 01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 00 09 00 0a 00 0b 00 0c 00 0d 00 0e ff ff";

const std::string NAME = "1e 01 42 04 74 65 6d 70 ";     // temp
const std::string OTHER_NAME = "1e 01 40 03 66 61 6e ";  // fan
const std::string VALUE = "1f 01 20 15 ";                // 21
const std::string TEXT_VALUE = "1f 01 42 02 2d 35 ";     // -5

std::string text(unsigned short profile, unsigned short cluster, const std::string& hex) {
  const test::LogCapture capture;
  return TextPrinter(TextPrinter::Colour::NONE).print(decoded(profile, cluster, hex));
}

std::string json(unsigned short profile, unsigned short cluster, const std::string& hex) {
  const test::LogCapture capture;
  return JsonPrinter().print(decoded(profile, cluster, hex));
}

/// The table of a frame as "name: temp=21, fan=-5".
std::string table(unsigned short profile, unsigned short cluster, const std::string& hex) {
  const test::LogCapture capture;
  const DecodedFrame frame = decoded(profile, cluster, hex);
  if (!frame.table) return "no table";
  std::string list;
  for (const auto& row : frame.table->rows) {
    list += (list.empty() ? " " : ", ") + std::get<std::string>(row.at(0).value) + "=";
    const Value& value = row.at(1).value;
    const auto* const number = std::get_if<long long>(&value);
    list += number != nullptr ? std::to_string(*number) : std::get<std::string>(value);
  }
  return std::string(frame.table->name) + ":" + list;
}

std::string metrics(const std::string& records) { return table(HOME, DIAGNOSTICS, "18 05 0a " + records); }

/// The readings of a frame as "logMessage=hi uptime=1".
std::string readings(const std::string& hex) {
  const test::LogCapture capture;
  std::string list;
  for (const NamedValue& reading : decoded(QX_PRIVATE, NODE_DIAGNOSTICS, hex).readings) {
    const auto* const number = std::get_if<long long>(&reading.value);
    list += (list.empty() ? "" : " ") + std::string(reading.name) + "=";
    list += number != nullptr ? std::to_string(*number) : std::get<std::string>(reading.value);
  }
  return list;
}

// The maker's cluster

TEST(NodeDiagnosticsReadings, ShowLogMessageUptimeAndCounters) {
  EXPECT_EQ(text(QX_PRIVATE, NODE_DIAGNOSTICS,
                 "18 05 01 00 00 00 40 02 68 69 03 00 00 23 01 02 00 00 02 00 00 41 1e " + BLOCK),
            "ZCL frame of 53 bytes: 18 05 01 00 00 00 40 02 68 69 03 00 00 23 01 02 00 00 02 00 00 41 1e " + BLOCK +
                R"(
  profile                     0xc25d
  cluster                     0x0002 node diagnostics
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x01 read attributes response
  attributes
    <AttributeRecordData id_: 0x0000, type_: 0x40, data_: hi>, status 0x00 ZCL_SUCCESS
    <AttributeRecordData id_: 0x0003, type_: 0x23, data_: 513>, status 0x00 ZCL_SUCCESS
    <AttributeRecordData id_: 0x0002, type_: 0x41, data_: 000100020003000400050006000700080009000a000b000c000d000effff>, status 0x00 ZCL_SUCCESS
  readings
    logMessage                hi
    uptime                    513
  counters
    counter                  value
    version                  1
    macRxUnicasts            2
    macTxUnicasts            3
    macTxUnicastRetries      4
    macTxUnicastFailures     5
    macRxBroadcasts          6
    macTxBroadcasts          7
    apsRxUnicasts            8
    apsTxUnicasts            9
    apsTxUnicastRetries      10
    apsTxUnicastFailures     11
    apsRxBroadcasts          12
    apsTxBroadcasts          13
    nwkFrameCounterFailures  14
    apsFrameCounterFailures  65535
  verdict                     whole
)");
}

TEST(NodeDiagnosticsReadings, AreNumbersAndRowsInJson) {
  const std::string frame =
      json(QX_PRIVATE, NODE_DIAGNOSTICS, "18 05 01 03 00 00 23 01 02 00 00 02 00 00 41 1e " + BLOCK);
  EXPECT_EQ(
      frame,
      R"({"layer":"zcl","profile":49757,"cluster":2,"hex":"180501030000230102000002000041)"
      R"(1e000100020003000400050006000700080009000a000b000c000d000effff",)"
      R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":1,"name":"read attributes response"},)"
      R"("attributes":[{"id":3,"status":0,"type":35,"value":"513"},{"id":2,"status":0,"type":65,)"
      R"("value":"000100020003000400050006000700080009000a000b000c000d000effff"}],"readings":{"uptime":513},)"
      R"("rows":[{"counter":"version","value":1},{"counter":"macRxUnicasts","value":2},)"
      R"({"counter":"macTxUnicasts","value":3},{"counter":"macTxUnicastRetries","value":4},)"
      R"({"counter":"macTxUnicastFailures","value":5},{"counter":"macRxBroadcasts","value":6},)"
      R"({"counter":"macTxBroadcasts","value":7},{"counter":"apsRxUnicasts","value":8},)"
      R"({"counter":"apsTxUnicasts","value":9},{"counter":"apsTxUnicastRetries","value":10},)"
      R"({"counter":"apsTxUnicastFailures","value":11},{"counter":"apsRxBroadcasts","value":12},)"
      R"({"counter":"apsTxBroadcasts","value":13},{"counter":"nwkFrameCounterFailures","value":14},)"
      R"({"counter":"apsFrameCounterFailures","value":65535}],"verdict":{"whole":true}})"
      "\n");
}

TEST(NodeDiagnosticsReadings, AreThoseThatTheFrameHas) {
  EXPECT_EQ(readings("18 05 01 03 00 00 23 01 00 00 00"), "uptime=1");
  EXPECT_EQ(readings("18 05 01 00 00 00 40 00"), "logMessage=");
  EXPECT_EQ(readings("18 05 01 00 00 00 42 02 68 69 03 00 00 21 01 00"), "");
  EXPECT_EQ(readings("18 05 01 00 00 86 03 00 86"), "");
  EXPECT_EQ(table(QX_PRIVATE, NODE_DIAGNOSTICS, "18 05 01 02 00 00 41 02 00 01"), "no table");
  EXPECT_EQ(table(QX_PRIVATE, NODE_DIAGNOSTICS, "18 05 01 02 00 86"), "no table");
}

TEST(NodeDiagnosticsReadings, TakeNoMessageFromAnAnswerThatRefusesIt) {
  EXPECT_EQ(readings("18 05 01 09 00 00 40 01 61 00 00 86"), "");
}

TEST(NodeDiagnosticsReadings, AreOfAnswersAlone) {
  const std::string uptime = " 03 00 23 01 00 00 00";
  EXPECT_EQ(readings("18 05 0a" + uptime), "");
  EXPECT_EQ(readings("00 05 02" + uptime), "");
  // The same number as a command of the cluster's own, and behind a manufacturer's code.
  EXPECT_EQ(readings("01 05 01 03 00 00 23 01 00 00 00"), "");
  EXPECT_EQ(readings("1c 40 10 05 01 03 00 00 23 01 00 00 00"), "");
}

TEST(NodeDiagnosticsReadings, KeepHostileLogMessagesFromTheTerminal) {
  const std::string shown = text(QX_PRIVATE, NODE_DIAGNOSTICS, "18 05 01 00 00 00 40 05 1b 5b 32 4a ff");
  EXPECT_EQ(shown.find('\x1b'), std::string::npos);
  EXPECT_EQ(shown.find('\xff'), std::string::npos);
  EXPECT_NE(shown.find("logMessage"), std::string::npos);
}

TEST(NodeDiagnosticsReadings, LeaveTheCommandsToTheirFields) {
  EXPECT_EQ(json(QX_PRIVATE, NODE_DIAGNOSTICS, "01 05 01 01"),
            R"({"layer":"zcl","profile":49757,"cluster":2,"hex":"01050101",)"
            R"("header":{"frameControl":1,"manufacturerCode":null,"sequence":5,"command":1,"name":"reset counters"},)"
            R"("fields":{"reset":1},"verdict":{"whole":true}})"
            "\n");
  EXPECT_EQ(text(QX_PRIVATE, NODE_DIAGNOSTICS, "01 05 02 00"), R"(ZCL frame of 4 bytes: 01 05 02 00
  profile                     0xc25d
  cluster                     0x0002 node diagnostics
  frame control               0x01
  frame type                  cluster specific
  manufacturer code           none
  direction                   client to server
  default response disabled   no
  sequence                    5
  command                     0x02 display signal strength
  fields
    display                   0
  verdict                     whole
)");
}

// The public cluster

TEST(MetricsReadings, ShowThePairsOfAReport) {
  EXPECT_EQ(
      text(HOME, DIAGNOSTICS, "18 05 0a " + NAME + VALUE + TEXT_VALUE + OTHER_NAME),
      R"(ZCL frame of 28 bytes: 18 05 0a 1e 01 42 04 74 65 6d 70 1f 01 20 15 1f 01 42 02 2d 35 1e 01 40 03 66 61 6e
  profile                     0x0104
  cluster                     0x0b05 Diagnostics
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x0a report attributes
  attributes
    <AttributeRecordData id_: 0x011e, type_: 0x42, data_: temp>
    <AttributeRecordData id_: 0x011f, type_: 0x20, data_: 21>
    <AttributeRecordData id_: 0x011f, type_: 0x42, data_: -5>
    <AttributeRecordData id_: 0x011e, type_: 0x40, data_: fan>
  metrics
    name  value
    temp  21
    fan   -5
  verdict                     whole
)");
}

TEST(MetricsReadings, AreRowsInJson) {
  EXPECT_EQ(
      json(HOME, DIAGNOSTICS, "18 05 0a " + NAME + VALUE),
      R"({"layer":"zcl","profile":260,"cluster":2821,"hex":"18050a1e01420474656d701f012015",)"
      R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":10,"name":"report attributes"},)"
      R"("attributes":[{"id":286,"type":66,"value":"temp"},{"id":287,"type":32,"value":"21"}],)"
      R"("rows":[{"name":"temp","value":"21"}],"verdict":{"whole":true}})"
      "\n");
}

TEST(MetricsReadings, AreThePairsInFrontOfWhatIsNone) {
  EXPECT_EQ(metrics(NAME + VALUE + OTHER_NAME), "metrics: temp=21");
  EXPECT_EQ(metrics(NAME + VALUE + OTHER_NAME + NAME + NAME + VALUE), "metrics: temp=21");
  EXPECT_EQ(metrics(NAME + NAME + NAME + VALUE), "no table");
  EXPECT_EQ(metrics("1e 01 20 05 " + VALUE), "no table");
  EXPECT_EQ(metrics(NAME), "no table");
  EXPECT_EQ(metrics(""), "no table");
}

TEST(MetricsReadings, AreOfReportsAlone) {
  EXPECT_EQ(table(HOME, DIAGNOSTICS, "18 05 02 " + NAME + VALUE), "no table");
  EXPECT_EQ(table(HOME, DIAGNOSTICS, "19 05 0a " + NAME + VALUE), "no table");
  EXPECT_EQ(table(HOME, DIAGNOSTICS, "1c 40 10 05 0a " + NAME + VALUE), "no table");
}

TEST(MetricsReadings, KeepHostileTextsFromTheTerminal) {
  const std::string shown = text(HOME, DIAGNOSTICS, "18 05 0a 1e 01 42 03 1b 5b 4a 1f 01 42 02 0a ff");
  EXPECT_EQ(shown.find('\x1b'), std::string::npos);
  EXPECT_EQ(shown.find('\xff'), std::string::npos);
  EXPECT_NE(shown.find("\n  metrics\n"), std::string::npos);
}

}  // namespace
}  // namespace qx::app

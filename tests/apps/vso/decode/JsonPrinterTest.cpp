#include "apps/vso/decode/JsonPrinter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "apps/vso/decode/Decoded.h"
#include "support/LogCapture.h"

namespace qx::app {
namespace {

using test::BASIC;
using test::decoded;
using test::HOME;
using test::LEVEL_CONTROL;
using test::ON_OFF;

std::string json(unsigned short profile, unsigned short cluster, const std::string& hex) {
  const test::LogCapture capture;
  return JsonPrinter().print(decoded(profile, cluster, hex));
}

TEST(JsonPrinter, PrintsAReadResponseWithItsReadings) {
  EXPECT_EQ(json(HOME, ON_OFF, "18 05 01 00 00 00 10 01"),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"1805010000001001",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":1,)"
            R"("name":"read attributes response"},)"
            R"("attributes":[{"id":0,"status":0,"type":16,"value":"1"}],)"
            R"("readings":{"on":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsRecordsWithWhatTheyCarry) {
  EXPECT_EQ(json(HOME, BASIC, "00 05 00 04 00 05 00"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"00050004000500",)"
            R"("header":{"frameControl":0,"manufacturerCode":null,"sequence":5,"command":0,"name":"read attributes"},)"
            R"("attributes":[{"id":4},{"id":5}]})"
            "\n");
  EXPECT_EQ(json(HOME, BASIC, "18 05 01 00 00 00 0c 04 00 86"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"1805010000000c040086",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":1,)"
            R"("name":"read attributes response"},)"
            R"("attributes":[{"id":0,"status":0,"type":12},{"id":4,"status":134}]})"
            "\n");
  EXPECT_EQ(json(HOME, BASIC, "18 05 04 88 04 00"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"180504880400",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":4,)"
            R"("name":"write attributes response"},)"
            R"("attributes":[{"id":4,"status":136}]})"
            "\n");
}

TEST(JsonPrinter, PrintsAnEmptyListForAListCommandWithoutRecords) {
  EXPECT_EQ(json(HOME, BASIC, "18 05 0a"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"18050a",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":10,)"
            R"("name":"report attributes"},"attributes":[]})"
            "\n");
}

TEST(JsonPrinter, PrintsTheFieldsOfACommand) {
  EXPECT_EQ(json(HOME, LEVEL_CONTROL, "11 05 02 00 10 0a 00"),
            R"({"layer":"zcl","profile":260,"cluster":8,"hex":"11050200100a00",)"
            R"("header":{"frameControl":17,"manufacturerCode":null,"sequence":5,"command":2,"name":"step"},)"
            R"("fields":{"mode":0,"stepSize":16,"transitionTime":10}})"
            "\n");
}

TEST(JsonPrinter, PrintsAManufacturerCodeAndNoNameForAnUnknownCommand) {
  EXPECT_EQ(json(HOME, ON_OFF, "05 40 10 05 07 ff"),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"0540100507ff",)"
            R"("header":{"frameControl":5,"manufacturerCode":4160,"sequence":5,"command":7,"name":null}})"
            "\n");
}

TEST(JsonPrinter, PrintsNullForHeaderFieldsThatAreMissing) {
  EXPECT_EQ(json(HOME, ON_OFF, "18 05"),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"1805",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":null,"name":null}})"
            "\n");
  EXPECT_EQ(json(HOME, ON_OFF, ""),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"",)"
            R"("header":{"frameControl":null,"manufacturerCode":null,"sequence":null,"command":null,"name":null}})"
            "\n");
}

TEST(JsonPrinter, PrintsTheHeaderOfAZdoFrame) {
  EXPECT_EQ(json(0x0000, 0x8031, "07 84"),
            R"({"layer":"zdo","profile":0,"cluster":32817,"hex":"0784","header":{"sequence":7}})"
            "\n");
  EXPECT_EQ(json(0x0000, 0x8031, ""),
            R"({"layer":"zdo","profile":0,"cluster":32817,"hex":"","header":{"sequence":null}})"
            "\n");
}

TEST(JsonPrinter, ReplacesBytesThatAreNoUtf8) {
  const std::string line = json(HOME, BASIC, "18 05 0a 05 00 42 04 61 ff c3 62");
  EXPECT_EQ(nlohmann::json::parse(line)["attributes"][0]["value"],
            "a\xEF\xBF\xBD\xEF\xBF\xBD"
            "b");
}

TEST(JsonPrinter, EscapesWhatATerminalWouldObey) {
  const std::string line = json(HOME, BASIC,
                                "18 05 0a 05 00 42 06 "  // report, attribute 5, character string
                                "1b 0a 7f c2 9b 22");    // escape, newline, delete, control sequence introducer, quote
  EXPECT_EQ(nlohmann::json::parse(line)["attributes"][0]["value"], "\x1b\n\x7f\xc2\x9b\"");
  EXPECT_NE(line.find(R"("value":"\u001b\n\u007f\u009b\"")"), std::string::npos) << line;
}

TEST(JsonPrinter, PrintsTheReasonForALineThatCannotBeRead) {
  EXPECT_EQ(JsonPrinter().print(UnreadableLine{"hex: missing", std::nullopt}),
            "{\"hex\":null,\"error\":\"hex: missing\"}\n");
  EXPECT_EQ(JsonPrinter().print(UnreadableLine{"an odd number", "18\xff"}),
            "{\"hex\":\"18\\ufffd\",\"error\":\"an odd number\"}\n");
}

}  // namespace
}  // namespace qx::app

#include "apps/vso/decode/JsonPrinter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "apps/vso/decode/Decoded.h"
#include "support/LogCapture.h"

namespace qx::app {
namespace {

using test::ANNOUNCE;
using test::BASIC;
using test::decoded;
using test::GROUPS;
using test::HOME;
using test::LEVEL_CONTROL;
using test::ON_OFF;
using test::OTA_UPGRADE;
using test::QX_ANNOUNCE;
using test::SCENES;
using test::ZDO;

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
            R"("readings":{"on":true},)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsRecordsWithWhatTheyCarry) {
  EXPECT_EQ(json(HOME, BASIC, "00 05 00 04 00 05 00"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"00050004000500",)"
            R"("header":{"frameControl":0,"manufacturerCode":null,"sequence":5,"command":0,"name":"read attributes"},)"
            R"("attributes":[{"id":4},{"id":5}],)"
            R"("verdict":{"whole":true}})"
            "\n");
  EXPECT_EQ(json(HOME, BASIC, "18 05 01 00 00 00 0c 04 00 86"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"1805010000000c040086",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":1,)"
            R"("name":"read attributes response"},)"
            R"("attributes":[{"id":0,"status":0,"type":12},{"id":4,"status":134}],)"
            R"("verdict":{"whole":false,"byte":7,)"
            R"("what":"type 0x0C of attribute 0x0000 is unknown, the walk goes on"}})"
            "\n");
  EXPECT_EQ(json(HOME, BASIC, "18 05 04 88 04 00"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"180504880400",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":4,)"
            R"("name":"write attributes response"},)"
            R"("attributes":[{"id":4,"status":136}],)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsAnEmptyListForAListCommandWithoutRecords) {
  EXPECT_EQ(json(HOME, BASIC, "18 05 0a"),
            R"({"layer":"zcl","profile":260,"cluster":0,"hex":"18050a",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":10,)"
            R"("name":"report attributes"},"attributes":[],)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsTheFieldsOfACommand) {
  EXPECT_EQ(json(HOME, LEVEL_CONTROL, "11 05 02 00 10 0a 00"),
            R"({"layer":"zcl","profile":260,"cluster":8,"hex":"11050200100a00",)"
            R"("header":{"frameControl":17,"manufacturerCode":null,"sequence":5,"command":2,"name":"step"},)"
            R"("fields":{"mode":0,"stepSize":16,"transitionTime":10},)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsAManufacturerCodeAndNoNameForAnUnknownCommand) {
  EXPECT_EQ(json(HOME, ON_OFF, "05 40 10 05 07 ff"),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"0540100507ff",)"
            R"("header":{"frameControl":5,"manufacturerCode":4160,"sequence":5,"command":7,"name":null},)"
            R"("verdict":{"whole":null,"byte":5,"what":"payload of this command is not known"}})"
            "\n");
}

TEST(JsonPrinter, PrintsNullForHeaderFieldsThatAreMissing) {
  EXPECT_EQ(json(HOME, ON_OFF, "18 05"),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"1805",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":null,"name":null},)"
            R"("verdict":{"whole":false,"byte":2,"what":"command is missing"}})"
            "\n");
  EXPECT_EQ(json(HOME, ON_OFF, ""),
            R"({"layer":"zcl","profile":260,"cluster":6,"hex":"",)"
            R"("header":{"frameControl":null,"manufacturerCode":null,"sequence":null,"command":null,"name":null},)"
            R"("verdict":{"whole":false,"byte":0,"what":"frame control is missing"}})"
            "\n");
}

TEST(JsonPrinter, PrintsTheHeaderOfAZdoFrame) {
  EXPECT_EQ(json(ZDO, 0x8031, "07 84"), R"({"layer":"zdo","profile":0,"cluster":32817,"hex":"0784",)"
                                        R"("header":{"sequence":7,"status":132,"statusText":"QX_ZDP_NOT_SUPPORTED"},)"
                                        R"("verdict":{"whole":true}})"
                                        "\n");
  EXPECT_EQ(json(ZDO, 0x8031, "07"),
            R"({"layer":"zdo","profile":0,"cluster":32817,"hex":"07","header":{"sequence":7,"status":null},)"
            R"("verdict":{"whole":false,"byte":1,"what":"status is missing"}})"
            "\n");
  EXPECT_EQ(json(ZDO, 0x8031, ""),
            R"({"layer":"zdo","profile":0,"cluster":32817,"hex":"","header":{"sequence":null,"status":null},)"
            R"("verdict":{"whole":false,"byte":0,"what":"sequence number is missing"}})"
            "\n");
  EXPECT_EQ(json(ZDO, 0x0031, "07 09"),
            R"({"layer":"zdo","profile":0,"cluster":49,"hex":"0709","header":{"sequence":7},)"
            R"("fields":{"startIndex":9},"verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsTheNeighboursThatAreWholeAndWhereTheyEnd) {
  EXPECT_EQ(json(ZDO, 0x8031,
                 "07 00 02 00 02 "           // sequence, status, total, start index, entries
                 "11 22 33 44 55 66 77 88 "  // extended PAN id
                 "77 66 55 44 33 22 11 00 "  // long address
                 "34 12 11 02 02 ff"),       // short address, flags, joining, depth, LQI
            R"({"layer":"zdo","profile":0,"cluster":32817,)"
            R"("hex":"0700020002112233445566778877665544332211003412110202ff",)"
            R"("header":{"sequence":7,"status":0,"statusText":"QX_ZDP_SUCCESS"},)"
            R"("fields":{"totalNeighborTableEntriesOnDevice":2,"startIndex":0,"entries":2},)"
            R"("rows":[{"neighbor":4660,"lqi":255,"neighborLid":"0011223344556677","type":2,"rxOnWhenIdle":true,)"
            R"("relationship":1,"permitJoining":null,"treeDepth":2,"neighborPanId":"8877665544332211"}],)"
            R"("verdict":{"whole":false,"byte":27,"what":"neighbour 2 of 2 runs past the end"}})"
            "\n");
}

TEST(JsonPrinter, PrintsRoutes) {
  EXPECT_EQ(json(ZDO, 0x8032, "07 00 01 00 01  01 02 3b 03 04"),
            R"({"layer":"zdo","profile":0,"cluster":32818,"hex":"070001000101023b0304",)"
            R"("header":{"sequence":7,"status":0,"statusText":"QX_ZDP_SUCCESS"},)"
            R"("fields":{"totalRoutingTableEntriesOnDevice":1,"startIndex":0,"entries":1},)"
            R"("rows":[{"destination":513,"routeStatus":3,"memConstrained":true,"manyToOne":true,)"
            R"("routeRecordRequired":true,"nextHop":1027}],)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsEnergyLevels) {
  EXPECT_EQ(json(ZDO, 0x8038, "07 00  00 28 00 00  05 00  01 00  02  00 ff"),
            R"({"layer":"zdo","profile":0,"cluster":32824,"hex":"070000280000050001000200ff",)"
            R"("header":{"sequence":7,"status":0,"statusText":"QX_ZDP_SUCCESS"},)"
            R"("fields":{"scannedChannels":10240,"transmissions":5,"failures":1,"energyCount":2},)"
            R"("rows":[{"channel":11,"rssi":-100},{"channel":13,"rssi":-37}],)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsAnEmptyTableAsSuch) {
  EXPECT_EQ(nlohmann::json::parse(json(ZDO, 0x8031, "07 00 00 00 00"))["rows"], nlohmann::json::array());
}

TEST(JsonPrinter, PrintsTextsAddressesAndLists) {
  const auto fields = [](unsigned short cluster, const std::string& hex) {
    return nlohmann::json::parse(json(HOME, cluster, hex))["fields"].dump();
  };
  EXPECT_EQ(fields(GROUPS, "01 05 00  02 01 03 61 22 63"), R"({"groupId":258,"groupName":"a\"c"})");
  EXPECT_EQ(fields(GROUPS, "01 05 02  02 02 01 04 03"), R"({"groupCount":2,"groupIds":[258,772]})");
  EXPECT_EQ(fields(GROUPS, "01 05 02  00"), R"({"groupCount":0,"groupIds":[]})");
  EXPECT_EQ(nlohmann::json::parse(json(HOME, OTA_UPGRADE,
                                       "01 05 03  01 40 10 34 12 04 03 02 01 00 01 00 00 40 "
                                       "77 66 55 44 33 22 11 00"))["fields"]["requestNodeAddress"],
            "0011223344556677");
}

TEST(JsonPrinter, PrintsTheExtensionsOfAScene) {
  EXPECT_EQ(json(HOME, SCENES, "09 05 01  00 02 01 03 0a 00 01 61  06 00 01 01  00 03 02 fe 01"),
            R"({"layer":"zcl","profile":260,"cluster":5,"hex":"090501000201030a00016106000101000302fe01",)"
            R"("header":{"frameControl":9,"manufacturerCode":null,"sequence":5,"command":1,)"
            R"("name":"view scene response"},)"
            R"("fields":{"status":0,"groupId":258,"sceneId":3,"transitionTime":10,"sceneName":"a"},)"
            R"("rows":[{"clusterId":6,"length":1,"value":"01"},{"clusterId":768,"length":2,"value":"fe01"}],)"
            R"("verdict":{"whole":true}})"
            "\n");
}

TEST(JsonPrinter, PrintsAnAnnounceWithSignedReadingsAndItsTable) {
  EXPECT_EQ(json(QX_ANNOUNCE, ANNOUNCE,
                 "18 05 0a "
                 "00 00 20 02 "              // device type
                 "07 00 42 02 41 1b "        // product string
                 "12 00 41 04 ab cd 12 34 "  // access points
                 "13 00 28 c5"),             // RSSI
            R"({"layer":"zcl","profile":49759,"cluster":1,"hex":"18050a0000200207004202411b12004104abcd1234130028c5",)"
            R"("header":{"frameControl":24,"manufacturerCode":null,"sequence":5,"command":10,)"
            R"("name":"report attributes"},)"
            R"("attributes":[{"id":0,"type":32,"value":"2"},{"id":7,"type":66,"value":"A\u001b"},)"
            R"({"id":18,"type":65,"value":"abcd1234"},{"id":19,"type":40,"value":"c5"}],)"
            R"("readings":{"deviceType":2,"productString":"A\u001b","nodeRssi":-59},)"
            R"("rows":[{"destination":43981,"tableIndex":0},{"destination":4660,"tableIndex":1}],)"
            R"("verdict":{"whole":true}})"
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

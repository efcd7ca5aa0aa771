#include "apps/vso/decode/TextPrinter.h"

#include <gtest/gtest.h>

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
using test::QX_ANNOUNCE;
using test::SCENES;
using test::ZDO;

std::string text(unsigned short profile, unsigned short cluster, const std::string& hex,
                 TextPrinter::Colour colour = TextPrinter::Colour::NONE) {
  const test::LogCapture capture;
  return TextPrinter(colour).print(decoded(profile, cluster, hex));
}

TEST(TextPrinter, PrintsAReadResponseWithItsReadings) {
  EXPECT_EQ(text(HOME, ON_OFF, "18 05 01 00 00 00 10 01 01 40 86"),
            R"(ZCL frame of 11 bytes: 18 05 01 00 00 00 10 01 01 40 86
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x01 read attributes response
  attributes
    <AttributeRecordData id_: 0x0000, type_: 0x10, data_: 1>, status 0x00 ZCL_SUCCESS
    0x4001, status 0x86 ZCL_UNSUPPORTED_ATTRIBUTE
  readings
    on                        true
  verdict                     whole
)");
}

TEST(TextPrinter, PrintsTheIdsOfARead) {
  EXPECT_EQ(text(HOME, BASIC, "00 05 00 04 00 05 00"), R"(ZCL frame of 7 bytes: 00 05 00 04 00 05 00
  profile                     0x0104
  cluster                     0x0000 Basic
  frame control               0x00
  frame type                  general
  manufacturer code           none
  direction                   client to server
  default response disabled   no
  sequence                    5
  command                     0x00 read attributes
  attributes
    0x0004
    0x0005
  verdict                     whole
)");
}

TEST(TextPrinter, PrintsTheFieldsOfACommandAndTheBytesBehindThem) {
  EXPECT_EQ(text(HOME, ON_OFF, "18 05 0b 42 c3 ab cd"), R"(ZCL frame of 7 bytes: 18 05 0b 42 c3 ab cd
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x0b default response
  fields
    commandId                 66
    status                    195 ZCL_UKNOWN_STATUS
  not decoded                 ab cd
  verdict                     2 bytes behind the last field at byte 5
)");
}

TEST(TextPrinter, PrintsAManufacturersFrame) {
  EXPECT_EQ(text(HOME, ON_OFF, "05 40 10 05 07 01"), R"(ZCL frame of 6 bytes: 05 40 10 05 07 01
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x05
  frame type                  cluster specific
  manufacturer code           0x1040
  direction                   client to server
  default response disabled   no
  sequence                    5
  command                     0x07
  not decoded                 01
  verdict                     payload of this command is not known at byte 5
)");
}

TEST(TextPrinter, SaysThatAFrameIsShorterThanItsHeader) {
  EXPECT_EQ(text(HOME, 0xFC00, "06 40"), R"(ZCL frame of 2 bytes: 06 40
  profile                     0x0104
  cluster                     0xfc00
  frame control               0x06
  frame type                  reserved
  direction                   client to server
  default response disabled   no
  verdict                     manufacturer code takes 2 bytes, 1 follows at byte 1
)");
  EXPECT_EQ(text(HOME, LEVEL_CONTROL, ""), R"(ZCL frame of 0 bytes
  profile                     0x0104
  cluster                     0x0008 Level Control
  verdict                     frame control is missing at byte 0
)");
}

TEST(TextPrinter, PrintsAZdoFrame) {
  EXPECT_EQ(text(ZDO, 0x0034, "07 77 66 55 44 33 22 11 00 40"),
            R"(ZDO frame of 10 bytes: 07 77 66 55 44 33 22 11 00 40
  profile                     0x0000
  cluster                     0x0034 leave request
  sequence                    7
  fields
    device                    0011223344556677
    options                   64
  verdict                     whole
)");
  EXPECT_EQ(text(ZDO, 0x0031, "07"), R"(ZDO frame of 1 byte: 07
  profile                     0x0000
  cluster                     0x0031 network LQI request
  sequence                    7
  verdict                     startIndex is missing at byte 1
)");
  EXPECT_EQ(text(ZDO, 0x0033, "07 00"), R"(ZDO frame of 2 bytes: 07 00
  profile                     0x0000
  cluster                     0x0033
  sequence                    7
  not decoded                 00
  verdict                     payload of this command is not known at byte 1
)");
}

TEST(TextPrinter, PrintsNeighboursInColumns) {
  EXPECT_EQ(
      text(ZDO, 0x8031,
           "07 00 03 00 03 "
           "11 22 33 44 55 66 77 88  77 66 55 44 33 22 11 00  34 12  11 02 02 ff "
           "18 27 36 45 54 63 72 81  ef cd ab 89 67 45 23 01  cd ab  7f 01 0f 01 "
           "aa bb"),
      R"(ZDO frame of 51 bytes: 07 00 03 00 03 11 22 33 44 55 66 77 88 77 66 55 44 33 22 11 00 34 12 11 02 02 ff 18 27 36 45 54 63 72 81 ef cd ab 89 67 45 23 01 cd ab 7f 01 0f 01 aa bb
  profile                     0x0000
  cluster                     0x8031 network LQI response
  sequence                    7
  status                      0x00 QX_ZDP_SUCCESS
  fields
    totalNeighborTableEntriesOnDevice 3
    startIndex                0
    entries                   3
  hops
    neighbor  lqi  neighborLid       type                 rxOnWhenIdle  relationship         permitJoining  treeDepth  neighborPanId
    0x1234    255  0011223344556677  2 QX_ROUTER          true          1 NEIGHBOR_IS_CHILD  -              2          8877665544332211
    0xabcd    1    0123456789abcdef  0 QX_UNKNOWN_DEVICE  -             3 NONE_OF_THE_ABOVE  true           15         8172635445362718
  not decoded                 aa bb
  verdict                     neighbour 3 of 3 runs past the end at byte 49
)");
}

TEST(TextPrinter, PrintsRoutesInColumns) {
  EXPECT_EQ(text(ZDO, 0x8032, "07 00 02 00 02  01 02 38 03 04  11 12 03 13 14"),
            R"(ZDO frame of 15 bytes: 07 00 02 00 02 01 02 38 03 04 11 12 03 13 14
  profile                     0x0000
  cluster                     0x8032 network routing response
  sequence                    7
  status                      0x00 QX_ZDP_SUCCESS
  fields
    totalRoutingTableEntriesOnDevice 2
    startIndex                0
    entries                   2
  routes
    destination  routeStatus       memConstrained  manyToOne  routeRecordRequired  nextHop
    0x0201       0 ROUTE_ACTIVE    true            true       true                 0x0403
    0x1211       3 ROUTE_INACTIVE  false           false      false                0x1413
  verdict                     whole
)");
}

TEST(TextPrinter, PrintsEnergyLevelsInColumns) {
  EXPECT_EQ(text(ZDO, 0x8038, "07 00  00 28 00 00  05 00  01 00  02  00 ff"),
            R"(ZDO frame of 13 bytes: 07 00 00 28 00 00 05 00 01 00 02 00 ff
  profile                     0x0000
  cluster                     0x8038 network update response
  sequence                    7
  status                      0x00 QX_ZDP_SUCCESS
  fields
    scannedChannels           0x00002800
    transmissions             5
    failures                  1
    energyCount               2
  energyLevels
    channel  rssi
    11       -100
    13       -37
  verdict                     whole
)");
}

TEST(TextPrinter, PrintsNoColumnsForATableWithoutRows) {
  const std::string block = text(ZDO, 0x8031, "07 00 00 00 00");
  EXPECT_NE(block.find("  hops\n  verdict                     whole\n"), std::string::npos) << block;
}

TEST(TextPrinter, PrintsAnAnnounceWithItsTable) {
  EXPECT_EQ(text(QX_ANNOUNCE, ANNOUNCE, "18 05 0a 00 00 20 02 12 00 41 04 ab cd 12 34 13 00 28 c5"),
            R"(ZCL frame of 19 bytes: 18 05 0a 00 00 20 02 12 00 41 04 ab cd 12 34 13 00 28 c5
  profile                     0xc25f
  cluster                     0x0001 announce
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x0a report attributes
  attributes
    <AttributeRecordData id_: 0x0000, type_: 0x20, data_: 2>
    <AttributeRecordData id_: 0x0012, type_: 0x41, data_: abcd1234>
    <AttributeRecordData id_: 0x0013, type_: 0x28, data_: c5>
  readings
    deviceType                2 QX_ROUTER
    nodeRssi                  -59
  apRouteTable
    destination  tableIndex
    0xabcd       0
    0x1234       1
  verdict                     whole
)");
}

TEST(TextPrinter, PrintsASceneWithItsExtensions) {
  EXPECT_EQ(text(HOME, SCENES, "01 05 00 02 01 03 0a 00 01 61 06 00 01 01 00 03 02 fe 01"),
            R"(ZCL frame of 19 bytes: 01 05 00 02 01 03 0a 00 01 61 06 00 01 01 00 03 02 fe 01
  profile                     0x0104
  cluster                     0x0005 Scenes
  frame control               0x01
  frame type                  cluster specific
  manufacturer code           none
  direction                   client to server
  default response disabled   no
  sequence                    5
  command                     0x00 add scene
  fields
    groupId                   0x0102
    sceneId                   3
    transitionTime            10
    sceneName                 a
  extensions
    clusterId  length  value
    0x0006     1       01
    0x0300     2       fe01
  verdict                     whole
)");
}

TEST(TextPrinter, PrintsListsOfIdsInTheirDigits) {
  const std::string block = text(HOME, GROUPS, "09 05 02 08 02 02 01 04 03");
  EXPECT_NE(block.find("    groupIds                  0x0102 0x0304\n"), std::string::npos) << block;
  const std::string scenes = text(HOME, SCENES, "09 05 06 00 10 02 01 02 03 ff");
  EXPECT_NE(scenes.find("    sceneIds                  3 255\n"), std::string::npos) << scenes;
}

TEST(TextPrinter, EscapesWhatATerminalWouldObey) {
  const std::string block = text(HOME, BASIC,
                                 "18 05 0a 05 00 42 05 "  // report, attribute 5, character string
                                 "1b 5b 32 4a 9b");       // escape sequence that clears a screen, and its 8-bit form
  EXPECT_NE(block.find("data_: \\x1b[2J\\x9b>\n"), std::string::npos) << block;
  EXPECT_EQ(block.find('\x1b'), std::string::npos);

  const std::string field = text(HOME, GROUPS,
                                 "01 05 00 02 01 06 "  // add group, with a name of 6 bytes
                                 "61 1b 5b 32 4a 9b");
  EXPECT_NE(field.find("    groupName                 a\\x1b[2J\\x9b\n"), std::string::npos) << field;
  EXPECT_EQ(field.find('\x1b'), std::string::npos);

  const std::string reading = text(QX_ANNOUNCE, ANNOUNCE, "18 05 0a 07 00 42 02 41 1b");
  EXPECT_NE(reading.find("    productString             A\\x1b\n"), std::string::npos) << reading;
  EXPECT_EQ(reading.find('\x1b'), std::string::npos);
}

TEST(TextPrinter, PaintsHeadingsAndWhatIsWrongIfAsked) {
  EXPECT_EQ(text(HOME, BASIC, "18 05 04 00 04 00 88 05 00", TextPrinter::Colour::ANSI),
            "\x1b[1mZCL frame of 9 bytes: 18 05 04 00 04 00 88 05 00\x1b[0m\n"
            "  profile                     0x0104\n"
            "  cluster                     0x0000 Basic\n"
            "  frame control               0x18\n"
            "  frame type                  general\n"
            "  manufacturer code           none\n"
            "  direction                   server to client\n"
            "  default response disabled   yes\n"
            "  sequence                    5\n"
            "  command                     0x04 write attributes response\n"
            "  attributes\n"
            "    0x0004, status 0x00 ZCL_SUCCESS\n"
            "    0x0005, status \x1b[31m0x88 ZCL_READ_ONLY\x1b[0m\n"
            "  verdict                     whole\n");
}

TEST(TextPrinter, PaintsTheStatusOfAFailedZdoResponse) {
  const auto painted = [](const char* hex) { return text(ZDO, 0x8036, hex, TextPrinter::Colour::ANSI); };
  EXPECT_EQ(painted("07 84"),
            "\x1b[1mZDO frame of 2 bytes: 07 84\x1b[0m\n"
            "  profile                     0x0000\n"
            "  cluster                     0x8036 permit join response\n"
            "  sequence                    7\n"
            "  status                      \x1b[31m0x84 QX_ZDP_NOT_SUPPORTED\x1b[0m\n"
            "  verdict                     whole\n");
  EXPECT_NE(painted("07 00").find("  status                      0x00 QX_ZDP_SUCCESS\n"), std::string::npos);
}

TEST(TextPrinter, PaintsTheVerdictOfABrokenFrameAlone) {
  const auto verdict = [](const char* hex) {
    const std::string block = text(HOME, ON_OFF, hex, TextPrinter::Colour::ANSI);
    return block.substr(block.find("  verdict "));
  };
  EXPECT_EQ(verdict("01 05 02"), "  verdict                     whole\n");
  EXPECT_EQ(verdict("01 05"), "  verdict                     \x1b[31mcommand is missing at byte 2\x1b[0m\n");
  EXPECT_EQ(verdict("01 05 03"), "  verdict                     payload of this command is not known at byte 3\n");
}

TEST(TextPrinter, PrintsNothingForALineThatCannotBeRead) {
  EXPECT_EQ(TextPrinter(TextPrinter::Colour::NONE).print(UnreadableLine{"hex: missing", std::nullopt}), "");
}

}  // namespace
}  // namespace qx::app

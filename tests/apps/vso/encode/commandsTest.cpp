// Each command as the whole frame that it gives.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "apps/vso/encode/Built.h"
#include "apps/vso/encode/encodeCommand.h"
#include "support/Bytes.h"

namespace qx::app {
namespace {

using test::Call;

struct Golden {
  Call call;
  unsigned short profile;
  unsigned short cluster;
  std::string frame;
};

std::string zeros(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += " 00";
  return text;
}

const Golden GOLDENS[] = {
    // General: frame control, sequence, command, records
    {{"general", "read-attributes", {"cluster", "6", "attribute", "0", "attribute", "0x4001", "sequence", "7"}},
     0x0104,
     0x0006,
     "00 07 00 00 00 01 40"},
    {{"general",
      "read-attributes-response",
      {"cluster", "8", "attribute", "0:uint8:254", "attribute", "0x0001:unsupported-attribute", "from-server", "",
       "sequence", "1"}},
     0x0104,
     0x0008,
     "08 01 01 00 00 00 20 fe 01 00 86"},
    {{"general",
      "no-read-attributes-response",
      {"cluster", "8", "attribute", "0x0010", "attribute", "3", "sequence", "2"}},
     0x0104,
     0x0008,
     "00 02 01 10 00 86 03 00 86"},
    {{"general",
      "write-attributes",
      {"profile", "0xC25D", "cluster", "0x8001", "manufacturer-code", "0x1040", "attribute", "0x0102:int16:-2",
       "attribute", "3:octet-string:0aff", "attribute", "4:character-string:a:b", "sequence", "3"}},
     0xC25D,
     0x8001,
     "04 40 10 03 02 02 01 29 fe ff 03 00 41 02 0a ff 04 00 42 03 61 3a 62"},
    {{"general",
      "write-attributes-no-response",
      {"cluster", "0x0300", "attribute", "1:0xF0:0011223344556677", "disable-default-response", "", "sequence", "4"}},
     0x0104,
     0x0300,
     "10 04 05 01 00 f0 77 66 55 44 33 22 11 00"},
    {{"general",
      "write-attributes-response",
      {"cluster", "0", "attribute", "0:success", "attribute", "0x1234:0x88", "from-server", "", "sequence", "5"}},
     0x0104,
     0x0000,
     "08 05 04 00 00 00 88 34 12"},
    {{"general",
      "report-attributes",
      {"cluster", "0", "attribute", "0:boolean:true", "attribute", "1:single-float:1.5", "attribute",
       "2:double-float:-2", "attribute", "3:bitmap24:0x010203", "sequence", "6"}},
     0x0104,
     0x0000,
     "00 06 0a 00 00 10 01 01 00 39 00 00 c0 3f 02 00 3a 00 00 00 00 00 00 00 c0 03 00 1a 03 02 01"},

    {{"identify", "read-attributes-response", {"attribute", "0:uint16:60", "sequence", "9"}},
     0x0104,
     0x0003,
     "00 09 01 00 00 00 21 3c 00"},

    {{"groups", "add-group", {"group-id", "0x1234", "group-name", "Hall", "sequence", "16"}},
     0x0104,
     0x0004,
     "01 10 00 34 12 04 48 61 6c 6c"},
    {{"groups", "add-group", {"group-id", "1", "group-name", "exactly sixteen.", "sequence", "16"}},
     0x0104,
     0x0004,
     "01 10 00 01 00 10 65 78 61 63 74 6c 79 20 73 69 78 74 65 65 6e 2e"},
    {{"groups", "view-group", {"group-id", "0x1234", "sequence", "17"}}, 0x0104, 0x0004, "01 11 01 34 12"},
    {{"groups", "get-group-membership", {"group-ids", "1,0x0203", "sequence", "18"}},
     0x0104,
     0x0004,
     "01 12 02 02 01 00 03 02"},
    {{"groups", "get-group-membership", {"sequence", "18"}}, 0x0104, 0x0004, "01 12 02 00"},
    {{"groups", "remove-group", {"group-id", "0x1234", "disable-default-response", "", "sequence", "19"}},
     0x0104,
     0x0004,
     "11 13 03 34 12"},
    {{"groups", "remove-all-groups", {"sequence", "20"}}, 0x0104, 0x0004, "01 14 04"},
    {{"groups", "add-group-if-identifying", {"group-id", "1", "sequence", "21"}}, 0x0104, 0x0004, "01 15 05 01 00 00"},

    {{"scenes",
      "add-scene",
      {"group-id", "0x1234", "scene-id", "5", "transition-time", "0x0203", "scene-name", "Tea", "extension", "6:1",
       "extension", "0x0008:0x80", "sequence", "32"}},
     0x0104,
     0x0005,
     "01 20 00 34 12 05 03 02 03 54 65 61 06 00 01 01 08 00 01 80"},
    {{"scenes", "view-scene", {"group-id", "0x1234", "scene-id", "5", "sequence", "33"}},
     0x0104,
     0x0005,
     "01 21 01 34 12 05"},
    {{"scenes", "remove-scene", {"group-id", "0x1234", "scene-id", "5", "sequence", "34"}},
     0x0104,
     0x0005,
     "01 22 02 34 12 05"},
    {{"scenes", "remove-all-scenes", {"group-id", "0x1234", "sequence", "35"}}, 0x0104, 0x0005, "01 23 03 34 12"},
    {{"scenes", "store-scene", {"group-id", "0x1234", "scene-id", "5", "sequence", "36"}},
     0x0104,
     0x0005,
     "01 24 04 34 12 05"},
    {{"scenes", "recall-scene", {"group-id", "0x1234", "scene-id", "5", "sequence", "37"}},
     0x0104,
     0x0005,
     "01 25 05 34 12 05"},
    {{"scenes", "un-recall-scene", {"group-id", "0x1234", "scene-id", "5", "sequence", "38"}},
     0x0104,
     0x0005,
     "05 40 10 26 05 34 12 05"},
    {{"scenes", "un-recall-scene", {"group-id", "0x1234", "scene-id", "5"}}, 0x0104, 0x0005, "05 40 10 00 05 34 12 05"},
    {{"scenes", "get-scene-membership", {"group-id", "0x1234", "sequence", "39"}}, 0x0104, 0x0005, "01 27 06 34 12"},
    {{"scenes", "get-scene-count", {"sequence", "40"}}, 0x0104, 0x0005, "00 28 00 00 00"},

    {{"on-off", "off", {"sequence", "48"}}, 0x0104, 0x0006, "01 30 00"},
    {{"on-off", "on", {"sequence", "49"}}, 0x0104, 0x0006, "01 31 01"},
    {{"on-off", "toggle", {"sequence", "50", "disable-default-response", ""}}, 0x0104, 0x0006, "11 32 02"},

    {{"level-control", "move-to-level", {"level", "128", "transition-time", "10", "sequence", "64"}},
     0x0104,
     0x0008,
     "01 40 00 80 0a 00"},
    {{"level-control", "move", {"mode", "1", "rate", "0x0203", "sequence", "65"}}, 0x0104, 0x0008, "01 41 01 01 03 02"},
    {{"level-control", "step", {"mode", "0", "step-size", "16", "transition-time", "0x0203", "sequence", "66"}},
     0x0104,
     0x0008,
     "01 42 02 00 10 03 02"},
    {{"level-control", "stop", {"sequence", "67"}}, 0x0104, 0x0008, "01 43 03"},
    {{"level-control", "move-to-level-with-on-off", {"level", "255", "transition-time", "0xFFFF", "sequence", "68"}},
     0x0104,
     0x0008,
     "01 44 04 ff ff ff"},
    {{"level-control", "move-with-on-off", {"mode", "1", "rate", "50", "sequence", "69"}},
     0x0104,
     0x0008,
     "01 45 05 01 32 00"},
    {{"level-control",
      "step-with-on-off",
      {"mode", "1", "step-size", "16", "transition-time", "0x0203", "sequence", "70"}},
     0x0104,
     0x0008,
     "01 46 06 01 10 03 02"},
    {{"level-control", "stop-with-on-off", {"sequence", "71"}}, 0x0104, 0x0008, "01 47 07"},

    // One second after the start of 2000, most significant byte first
    {{"time", "time", {"fixed-time", "946684801", "sequence", "80"}},
     0x0104,
     0x000A,
     "00 50 01 00 00 00 23 00 00 00 01"},
    {{"time", "status", {"sequence", "81"}}, 0x0104, 0x000A, "00 51 01 01 00 00 18 01"},

    {{"ota", "image-notify", {"payload-type", "0", "query-jitter", "50", "sequence", "96"}},
     0x0104,
     0x0019,
     "09 60 00 00 32"},
    {{"ota",
      "image-notify",
      {"payload-type", "3", "manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607",
       "sequence", "96"}},
     0x0104,
     0x0019,
     "09 60 00 03 64 40 10 03 02 07 06 05 04"},
    {{"ota",
      "query-next-image-response",
      {"manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607", "image-size", "0x08090a0b",
       "sequence", "97"}},
     0x0104,
     0x0019,
     "09 61 02 00 40 10 03 02 07 06 05 04 0b 0a 09 08"},
    {{"ota", "query-next-image-response", {"status", "0x98", "sequence", "97"}}, 0x0104, 0x0019, "09 61 02 98"},
    {{"ota",
      "image-block-response",
      {"manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607", "file-offset", "0x08090a0b",
       "data", "CAfe01", "sequence", "98"}},
     0x0104,
     0x0019,
     "09 62 05 00 40 10 03 02 07 06 05 04 0b 0a 09 08 03 ca fe 01"},
    {{"ota",
      "upgrade-end-response",
      {"manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607", "current-time",
       "0x08090a0b", "upgrade-time", "0x0c0d0e0f", "sequence", "99"}},
     0x0104,
     0x0019,
     "09 63 07 40 10 03 02 07 06 05 04 0b 0a 09 08 0f 0e 0d 0c"},
    {{"ota", "unsupported-command", {"command-id", "9", "sequence", "100"}}, 0x0104, 0x0019, "08 64 0b 09 81"},
    {{"ota", "get-attributes", {"sequence", "101"}}, 0x0104, 0x0019, "08 65 00 02 00 07 00 08 00"},
    {{"ota", "get-upgrade-status", {"sequence", "102"}}, 0x0104, 0x0019, "08 66 00 06 00"},
    {{"ota",
      "image-page-request",
      {"manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607", "file-offset", "0x08090a0b",
       "maximum-data-size", "64", "page-size", "0x0400", "response-spacing", "0x00fa", "request-node-address",
       "0011223344556677", "sequence", "103"}},
     0x0104,
     0x0019,
     "01 67 04 01 40 10 03 02 07 06 05 04 0b 0a 09 08 40 00 04 fa 00 77 66 55 44 33 22 11 00"},
    {{"ota",
      "image-page-request",
      {"manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607", "file-offset", "0",
       "maximum-data-size", "64", "page-size", "1024", "response-spacing", "250", "sequence", "103"}},
     0x0104,
     0x0019,
     "01 67 04 00 40 10 03 02 07 06 05 04 00 00 00 00 40 00 04 fa 00"},
    {{"ota",
      "upgrade-end-request",
      {"status", "0x96", "manufacturer-code", "0x1040", "image-type", "0x0203", "file-version", "0x04050607",
       "sequence", "104"}},
     0x0104,
     0x0019,
     "01 68 06 96 40 10 03 02 07 06 05 04"},

    // The firmware's text was written anew when the product's came, without its length byte: the digit 2 (0x32) stands
    // for a length of 50.
    {{"announce",
      "report",
      {"announce-window", "0x0102", "boot-count", "0x0304", "reflash-version", "5", "firmware-version", "2.7",
       "product-string", "Lamp", "sequence", "112"}},
     0xC25F,
     0x0001,
     "00 70 0a 01 00 21 02 01 06 00 21 04 03 05 00 20 05 04 00 42 32 2e 37" + zeros(48) + " 07 00 42 04 4c 61 6d 70"},
    {{"announce", "report", {"device-type",
                             "1",
                             "mtorr-period",
                             "0x0203",
                             "num-zaps",
                             "4",
                             "ap-poll-interval",
                             "0x0506",
                             "channel",
                             "15",
                             "parent-poll-interval",
                             "0x0708",
                             "node-rssi",
                             "-60",
                             "node-lqi",
                             "200",
                             "battery-level",
                             "-1",
                             "node-radio-bars",
                             "3",
                             "announce-window",
                             "0x0102",
                             "boot-count",
                             "0x0304",
                             "reflash-version",
                             "5",
                             "firmware-version",
                             "AB",
                             "sequence",
                             "113"}},
     0xC25F,
     0x0001,
     "00 71 0a 00 00 20 01 02 00 21 03 02 03 00 20 04 0b 00 21 06 05 0c 00 20 0f 0f 00 21 08 07 13 00 28 c4 "
     "14 00 20 c8 15 00 28 ff 16 00 20 03 01 00 21 02 01 06 00 21 04 03 05 00 20 05 04 00 42 02 41 42"},
    {{"announce", "report", {"sequence", "114"}}, 0xC25F, 0x0001, "00 72 0a"},
    {{"immediate-announce", "request", {"ids", "1,0x0203", "sequence", "115"}},
     0xC25D,
     0x0001,
     "01 73 00 02 01 00 03 02"},

    {{"sscp",
      "write",
      {"announce-window", "0x0102", "mtorr-period", "0x0304", "ap-count", "5", "channel", "15", "sequence", "116"}},
     0xC25D,
     0x0001,
     "10 74 05 01 00 21 02 01 02 00 21 04 03 03 00 20 05 0c 00 20 0f"},
    {{"sscp", "write", {"ap-count", "5", "cluster-specific", "", "sequence", "116"}},
     0xC25D,
     0x0001,
     "11 74 05 03 00 20 05"},
    {{"sscp",
      "response",
      {"announce-window", "0x0102", "mtorr-period", "0x0304", "ap-count", "5", "channel", "15", "sequence", "117"}},
     0xC25D,
     0x0001,
     "10 75 01 01 00 00 21 02 01 02 00 00 21 04 03 03 00 00 20 05 0c 00 00 20 0f"},
    {{"sscp-packet",
      "image",
      {"announce-window", "0x0102", "mtorr-period", "0x0304", "ap-count", "5", "options-type", "6"}},
     0xC25D,
     0x0001,
     "01 02 03 04 05 06"},
    {{"set-zap",
      "response",
      {"sid", "0x1234", "lid", "0011223344556677", "cost", "3", "end-node-ap-period", "0x0102",
       "end-node-parent-period", "0x0304", "sequence", "118"}},
     0xC25D,
     0x0001,
     "08 76 01 08 00 00 21 34 12 09 00 00 f0 77 66 55 44 33 22 11 00 0a 00 00 20 03 0b 00 00 21 02 01 "
     "0f 00 00 21 04 03"},
    {{"diagnostics", "read", {"attribute", "2", "attribute", "0x0103", "sequence", "119"}},
     0xC25D,
     0x0002,
     "00 77 00 02 00 03 01"},
    {{"diagnostics", "reset-counters", {"sequence", "120"}}, 0xC25D, 0x0002, "01 78 01 01"},
    {{"diagnostics", "reset-counters", {"reset", "0", "sequence", "121"}}, 0xC25D, 0x0002, "01 79 01 00"},
    {{"diagnostics", "display-signal-strength", {"display", "1", "sequence", "122"}}, 0xC25D, 0x0002, "01 7a 02 01"},
    {{"diagnostics", "display-signal-strength", {"display", "0", "sequence", "123", "disable-default-response", ""}},
     0xC25D,
     0x0002,
     "11 7b 02 00"},

    // ZDO: sequence, fields
    {{"zdo", "lqi-request", {"destination", "0011223344556677", "start-index", "9", "sequence", "128"}},
     0,
     0x0031,
     "80 09"},
    {{"zdo", "routing-request", {"start-index", "10", "sequence", "129"}}, 0, 0x0032, "81 0a"},
    {{"zdo", "leave-request", {"device", "0011223344556677", "options", "0x40", "sequence", "130"}},
     0,
     0x0034,
     "82 77 66 55 44 33 22 11 00 40"},
    {{"zdo", "permit-join-request", {"duration", "60", "trust-centre-significance", "1", "sequence", "131"}},
     0,
     0x0036,
     "83 3c 01"},
    {{"zdo", "energy-scan", {"duration", "5", "scan-count", "2", "sequence", "132"}},
     0,
     0x0038,
     "84 00 f8 ff 07 05 02"},
    {{"zdo", "channel-change", {"channel-mask", "0x00008000", "update-id", "9", "sequence", "133"}},
     0,
     0x0038,
     "85 00 80 00 00 fe 09"},
    {{"zdo", "manager-update", {"update-id", "0", "manager-address", "0x1234", "sequence", "134"}},
     0,
     0x0038,
     "86 00 f8 ff 07 ff 00 34 12"},
};

TEST(EncodeCommands, GiveTheWholeFrame) {
  for (const Golden& golden : GOLDENS) {
    SCOPED_TRACE(test::nameOf(golden.call));
    const BuiltFrame frame = test::build(golden.call);
    EXPECT_EQ(frame.profile, golden.profile);
    EXPECT_EQ(frame.cluster, golden.cluster);
    EXPECT_EQ(test::hex(frame.bytes), golden.frame);
  }
}

TEST(EncodeCommands, AreEachTestedAsAWholeFrame) {
  std::set<std::string> tested;
  for (const Golden& golden : GOLDENS) tested.insert(std::string(golden.call.group) + " " + golden.call.command);
  std::set<std::string> all;
  for (const CommandGroup& group : commandGroups()) {
    for (const CommandRow& row : group.commands) all.insert(std::string(group.name) + " " + row.name);
  }
  EXPECT_EQ(tested, all);
}

TEST(EncodeCommands, TakeTheLibrarysNextSequenceNumberUnlessTold) {
  const auto sequenceOf = [](const Call& call, unsigned int offset) {
    return test::build(call).bytes.contents[offset];
  };
  const unsigned char first = sequenceOf({"on-off", "on"}, 1);
  EXPECT_EQ(sequenceOf({"on-off", "on"}, 1), static_cast<unsigned char>(first + 1));
  const unsigned char firstZdo = sequenceOf({"zdo", "lqi-request"}, 0);
  EXPECT_EQ(sequenceOf({"zdo", "lqi-request"}, 0), static_cast<unsigned char>(firstZdo + 1));
}

TEST(EncodeCommands, TakeTheLibrarysNextUpdateIdUnlessTold) {
  constexpr unsigned int UPDATE_ID_AT = 6;
  const auto updateId = [] {
    return test::build({"zdo", "channel-change", {"channel-mask", "0x8000"}}).bytes.contents[UPDATE_ID_AT];
  };
  const unsigned char first = updateId();
  EXPECT_EQ(updateId(), static_cast<unsigned char>(first + 1));
}

TEST(EncodeCommands, NameEachCommandAndEachArgumentOnce) {
  std::set<std::string> commands;
  for (const CommandGroup& group : commandGroups()) {
    for (const CommandRow& row : group.commands) {
      EXPECT_TRUE(commands.insert(std::string(group.name) + " " + row.name).second) << group.name << " " << row.name;
      std::set<std::string> arguments;
      for (const Argument& argument : row.arguments) {
        EXPECT_TRUE(arguments.insert(argument.name).second) << row.name << " --" << argument.name;
      }
    }
  }
}

}  // namespace
}  // namespace qx::app

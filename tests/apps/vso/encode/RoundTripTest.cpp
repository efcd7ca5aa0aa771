// What goes into a command comes out of `vso decode`.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "apps/vso/decode/FrameLine.h"
#include "apps/vso/decode/JsonPrinter.h"
#include "apps/vso/decode/decodeFrame.h"
#include "apps/vso/encode/Built.h"
#include "apps/vso/encode/encodeCommand.h"
#include "support/Bytes.h"
#include "vso/layout/FrameVerdict.h"

namespace qx::app {
namespace {

using nlohmann::json;
using test::Call;

struct Sample {
  Call call;
  /// Values of arguments that travel as attributes, by the attribute's id. They come back as text.
  std::map<unsigned int, std::string> attributes = {};
  /// Why the frame is not whole, null for one that is.
  const char* brokenBecause = nullptr;
};

/// One or more for each command. Every value differs from what is read where nothing stands.
const Sample SAMPLES[] = {
    {{"general", "read-attributes", {"cluster", "6", "attribute", "0x4001"}}},
    {{"general", "read-attributes-response", {"cluster", "8", "attribute", "17:uint8:254", "attribute", "1:not-found"}},
     {{17, "254"}}},
    {{"general", "no-read-attributes-response", {"cluster", "8", "attribute", "0x0010"}}},
    {{"general", "write-attributes", {"cluster", "8", "attribute", "16:uint16:300"}}, {{16, "300"}}},
    {{"general", "write-attributes-no-response", {"cluster", "8", "attribute", "4:character-string:Lamp"}},
     {{4, "Lamp"}}},
    {{"general", "write-attributes-response", {"cluster", "8", "attribute", "16:0x88"}}},
    {{"general", "report-attributes", {"cluster", "6", "attribute", "9:ieee-address:0011223344556677"}},
     {{9, "0011223344556677"}}},
    {{"identify", "read-attributes-response", {"attribute", "2:uint16:60"}}, {{2, "60"}}},
    {{"groups", "add-group", {"group-id", "0x1234", "group-name", "Hall"}}},
    {{"groups", "view-group", {"group-id", "0x1234"}}},
    {{"groups", "get-group-membership", {"group-ids", "1,0x0203"}}},
    {{"groups", "remove-group", {"group-id", "0x1234"}}},
    {{"groups", "remove-all-groups"}},
    {{"groups", "add-group-if-identifying", {"group-id", "0x1234", "group-name", "Hall"}}},
    {{"scenes",
      "add-scene",
      {"group-id", "0x1234", "scene-id", "5", "transition-time", "300", "scene-name", "Tea", "extension", "6:1",
       "extension", "8:128", "extension", "0x0300:7", "extension", "9:2"}}},
    {{"scenes", "view-scene", {"group-id", "0x1234", "scene-id", "5"}}},
    {{"scenes", "remove-scene", {"group-id", "0x1234", "scene-id", "5"}}},
    {{"scenes", "remove-all-scenes", {"group-id", "0x1234"}}},
    {{"scenes", "store-scene", {"group-id", "0x1234", "scene-id", "5"}}},
    {{"scenes", "recall-scene", {"group-id", "0x1234", "scene-id", "5"}}},
    {{"scenes", "un-recall-scene", {"group-id", "0x1234", "scene-id", "5"}}},
    {{"scenes", "get-scene-membership", {"group-id", "0x1234"}}},
    {{"scenes", "get-scene-count"}},
    {{"on-off", "off"}},
    {{"on-off", "on"}},
    {{"on-off", "toggle"}},
    {{"level-control", "move-to-level", {"level", "128", "transition-time", "300"}}},
    {{"level-control", "move", {"mode", "1", "rate", "300"}}},
    {{"level-control", "step", {"mode", "1", "step-size", "16", "transition-time", "300"}}},
    {{"level-control", "stop"}},
    {{"level-control", "move-to-level-with-on-off", {"level", "128", "transition-time", "300"}}},
    {{"level-control", "move-with-on-off", {"mode", "1", "rate", "30"}}},
    {{"level-control", "step-with-on-off", {"mode", "1", "step-size", "16", "transition-time", "300"}}},
    {{"level-control", "stop-with-on-off"}},
    // Sent most significant byte first and read the other way round: the last byte of 1 weighs most.
    {{"time", "time", {"fixed-time", "946684801"}}, {{0, "16777216"}}},
    {{"time", "status"}, {{1, "01"}}},
    {{"ota", "image-notify", {"payload-type", "0", "query-jitter", "50"}}},
    {{"ota",
      "image-notify",
      {"payload-type", "3", "query-jitter", "50", "manufacturer-code", "0x1040", "image-type", "2", "file-version",
       "0x04050607"}}},
    {{"ota", "query-next-image-response", {"status", "0x98"}}},
    {{"ota",
      "query-next-image-response",
      {"status", "0", "manufacturer-code", "0x1040", "image-type", "2", "file-version", "0x04050607", "image-size",
       "0x08090a0b"}}},
    {{"ota",
      "image-block-response",
      {"status", "0", "manufacturer-code", "0x1040", "image-type", "2", "file-version", "0x04050607", "file-offset",
       "0x08090a0b", "data", "cafe01"}}},
    {{"ota",
      "upgrade-end-response",
      {"manufacturer-code", "0x1040", "image-type", "2", "file-version", "0x04050607", "current-time", "1",
       "upgrade-time", "2"}}},
    {{"ota", "unsupported-command", {"command-id", "9"}}},
    {{"ota", "get-attributes"}},
    {{"ota", "get-upgrade-status"}},
    {{"ota",
      "image-page-request",
      {"manufacturer-code", "0x1040", "image-type", "2", "file-version", "0x04050607", "file-offset", "0x08090a0b",
       "maximum-data-size", "64", "page-size", "1024", "response-spacing", "250", "request-node-address",
       "0011223344556677"}}},
    {{"ota",
      "upgrade-end-request",
      {"status", "0x96", "manufacturer-code", "0x1040", "image-type", "2", "file-version", "0x04050607"}}},
    {{"announce",
      "report",
      {"device-type",     "1",  "mtorr-period",         "300", "num-zaps",        "4",   "ap-poll-interval", "301",
       "channel",         "15", "parent-poll-interval", "302", "node-rssi",       "-60", "node-lqi",         "200",
       "battery-level",   "-1", "node-radio-bars",      "3",   "announce-window", "303", "boot-count",       "304",
       "reflash-version", "5",  "product-string",       "Lamp"}},
     {{0, "1"},
      {1, "303"},
      {2, "300"},
      {3, "4"},
      {5, "5"},
      {6, "304"},
      {7, "Lamp"},
      {0x0B, "301"},
      {0x0C, "15"},
      {0x0F, "302"},
      {0x13, "c4"},
      {0x14, "200"},
      {0x15, "ff"},
      {0x16, "3"}}},
    {{"announce", "report", {"device-type", "1", "firmware-version", "2.7"}}, {{0, "1"}, {4, "2.7"}}},
    // A string that is not the last is written anew without its length byte, so that the firmware's first character is
    // lost: what comes back is not what was given.
    {{"announce", "report", {"firmware-version", "2.7", "product-string", "Lamp"}}, {{4, ".7"}, {7, "Lamp"}}},
    {{"immediate-announce", "request", {"ids", "1,0x0203"}}},
    {{"sscp", "write", {"announce-window", "300", "mtorr-period", "301", "ap-count", "5", "channel", "15"}},
     {{1, "300"}, {2, "301"}, {3, "5"}, {0x0C, "15"}}},
    {{"sscp", "write", {"announce-window", "300", "cluster-specific", ""}}, {{1, "300"}}},
    {{"sscp", "response", {"announce-window", "300", "mtorr-period", "301", "ap-count", "5", "channel", "15"}},
     {{1, "300"}, {2, "301"}, {3, "5"}, {0x0C, "15"}}},
    {{"sscp", "response", {"announce-window", "300", "cluster-specific", ""}}, {{1, "300"}}},
    {{"sscp-packet", "image", {"announce-window", "1", "mtorr-period", "2", "ap-count", "3", "options-type", "4"}},
     {},
     "an image of parameters is no ZCL frame"},
    {{"set-zap",
      "response",
      {"sid", "0x1234", "lid", "0011223344556677", "cost", "3", "end-node-ap-period", "300", "end-node-parent-period",
       "301"}},
     {{8, "4660"}, {9, "0011223344556677"}, {0x0A, "3"}, {0x0B, "300"}, {0x0F, "301"}}},
    {{"diagnostics", "read", {"attribute", "3"}}},
    {{"diagnostics", "reset-counters", {"reset", "1"}}},
    {{"diagnostics", "display-signal-strength", {"display", "1"}}},
    {{"zdo", "lqi-request", {"destination", "0011223344556677", "start-index", "9"}}},
    {{"zdo", "routing-request", {"start-index", "9"}}},
    {{"zdo", "leave-request", {"device", "0011223344556677", "options", "0x40"}}},
    {{"zdo", "permit-join-request", {"duration", "60", "trust-centre-significance", "1"}}},
    {{"zdo", "energy-scan", {"channel-mask", "0x8000", "duration", "5", "scan-count", "2"}}},
    {{"zdo", "channel-change", {"channel-mask", "0x8000", "update-id", "9"}}},
    {{"zdo", "manager-update", {"channel-mask", "0x8000", "update-id", "9", "manager-address", "0x1234"}}},
};

/// The field of an argument: "group-id" as "groupId".
std::string fieldOf(const std::string& argument) {
  std::string field;
  for (std::size_t i = 0; i < argument.size(); ++i) {
    const bool isFirstOfWord = i > 0 && argument[i - 1] == '-';
    if (argument[i] == '-') continue;
    field += isFirstOfWord ? static_cast<char>(std::toupper(static_cast<unsigned char>(argument[i]))) : argument[i];
  }
  return field;
}

/// Arguments that are no fields of a payload.
bool isField(const Sample& sample, const Argument& argument) {
  static const std::set<std::string> OUTSIDE = {
      "destination",  // where a ZDO frame goes is said in the layers below
      "sequence",     // a field of the header, as is the next
      "disable-default-response",
      "attribute",  // attributes are compared as such
      "fixed-time",
      "cluster-specific",  // the frame type, in the header
      "extension",         // a list, which has a test of its own
  };
  // General commands have nothing but attributes behind the header.
  if (std::string(sample.call.group) == "general") return false;
  return OUTSIDE.count(argument.name) == 0;
}

/// What `vso decode --json` says of the frame.
json decoded(const Call& call) {
  const BuiltFrame frame = test::build(call);
  return json::parse(JsonPrinter().print(decodeFrame({frame.profile, frame.cluster, frame.bytes})));
}

/// A value as the JSON has it.
json expected(const Argument& argument, const std::string& value) {
  switch (argument.kind) {
    case ArgumentKind::NUMBER:
      return parseNumber(value, argument.least, argument.most);
    case ArgumentKind::STATUS:
      return parseStatus(value);
    case ArgumentKind::NUMBERS:
      return parseNumbers(value, argument.least, argument.most);
    default:
      return value;
  }
}

TEST(EncodeRoundTrip, HasASampleOfEachCommand) {
  std::set<std::string> sampled;
  for (const Sample& sample : SAMPLES) sampled.insert(std::string(sample.call.group) + " " + sample.call.command);
  std::set<std::string> all;
  for (const CommandGroup& group : commandGroups()) {
    for (const CommandRow& row : group.commands) all.insert(std::string(group.name) + " " + row.name);
  }
  EXPECT_EQ(sampled, all);
}

TEST(EncodeRoundTrip, PrintsALineThatDecodeReads) {
  for (const Sample& sample : SAMPLES) {
    SCOPED_TRACE(test::nameOf(sample.call));
    const BuiltFrame built = test::build(sample.call);
    const FrameLine line = parseFrameLine(lineOf(built));
    const auto* const frame = std::get_if<ReceivedFrame>(&line);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->profile, built.profile);
    EXPECT_EQ(frame->cluster, built.cluster);
    EXPECT_EQ(test::hex(frame->bytes), test::hex(built.bytes));
  }
}

TEST(EncodeRoundTrip, MakesWholeFrames) {
  for (const Sample& sample : SAMPLES) {
    SCOPED_TRACE(test::nameOf(sample.call));
    const BuiltFrame built = test::build(sample.call);
    const FrameVerdict verdict = judgeFrame(built.profile, built.cluster, built.bytes);
    if (sample.brokenBecause == nullptr) {
      EXPECT_EQ(verdict.state, FrameVerdict::WHOLE) << verdict;
    } else {
      EXPECT_NE(verdict.state, FrameVerdict::WHOLE) << sample.brokenBecause;
    }
  }
}

TEST(EncodeRoundTrip, GivesEachFieldBack) {
  for (const Sample& sample : SAMPLES) {
    if (sample.brokenBecause != nullptr || !sample.attributes.empty()) continue;
    SCOPED_TRACE(test::nameOf(sample.call));
    const json frame = decoded(sample.call);
    const Arguments::Values values = test::valuesOf(sample.call);
    for (const Argument& argument : test::rowOf(sample.call).arguments) {
      const auto given = values.find(argument.name);
      if (given == values.end() || !isField(sample, argument)) continue;
      const std::string field = fieldOf(argument.name);
      ASSERT_TRUE(frame.contains("fields") && frame["fields"].contains(field)) << field << " of " << frame;
      EXPECT_EQ(frame["fields"][field], expected(argument, given->second.front())) << field;
    }
  }
}

TEST(EncodeRoundTrip, GivesTheExtensionsOfASceneBack) {
  const json frame = decoded(
      {"scenes", "add-scene", {"group-id", "1", "scene-id", "5", "extension", "6:1", "extension", "0x0300:0x80"}});
  ASSERT_TRUE(frame.contains("rows")) << frame;
  EXPECT_EQ(frame["rows"], json::parse(R"([{"clusterId": 6, "length": 1, "value": "01"},
                                           {"clusterId": 768, "length": 1, "value": "80"}])"));
}

TEST(EncodeRoundTrip, GivesEachAttributeBack) {
  for (const Sample& sample : SAMPLES) {
    if (sample.attributes.empty()) continue;
    SCOPED_TRACE(test::nameOf(sample.call));
    const json frame = decoded(sample.call);
    ASSERT_TRUE(frame.contains("attributes")) << frame;
    std::map<unsigned int, std::string> values;
    for (const json& attribute : frame["attributes"]) {
      if (attribute.contains("value")) values[attribute["id"]] = attribute["value"];
    }
    EXPECT_EQ(values, sample.attributes);
  }
}

}  // namespace
}  // namespace qx::app

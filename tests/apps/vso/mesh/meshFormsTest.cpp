#include "apps/vso/mesh/meshForms.h"

#include <gmock/gmock.h>
#include <google/protobuf/any.pb.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "qxcrypto/Base64Encoder.h"
#include "qxxml/XmlReader.h"
#include "support/LogCapture.h"
#include "tests/apps/vso/mesh/MeshFrames.h"
#include "tests/vso/node/Nodes.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace qx::app {
namespace {

using namespace test_mesh;
using nlohmann::json;
using test::messageOf;
using test::sameMessage;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class MeshFormsTest : public testing::Test {
 protected:
  MeshFormsTest() {
    mesh_.take(announcement(NOON, LAMP, 12));
    mesh_.take(announcement(NOON + 60, LAMP, 15));
    mesh_.take(neighbourPage(NOON + 60, LAMP, pageOf(2, 0, {neighbourRow(0x20), neighbourRow(0x21)})));
    mesh_.take(routePage(NOON + 60, LAMP, pageOf(1, 0, {routeRow(0x40)})));
    mesh_.take(networkStatus(NOON + 60, LAMP, 0x0C, 0));
    mesh_.take(networkStatus(NOON + 60, LAMP, 0x0B, LAMP.address));
    mesh_.take(networkStatus(NOON + 60, LAMP, 0x0B, LAMP.address));
  }

  ZigbeeNode& lamp() { return *mesh_.node(LAMP.id()); }

  test::LogCapture log_;
  MeshServer mesh_{NOON};
};

TEST_F(MeshFormsTest, AsJsonANodeHasItsFieldsAndTables) {
  lamp().label("Hall");
  lamp().uptime(3600);
  EXPECT_EQ(json::parse(jsonOf(lamp())), json::parse(R"({
    "euid": "0017880100a00010", "shortAddress": "0x1c02", "label": "Hall", "product": "qx:lamp",
    "firmware": "1.2.3", "type": "Router", "state": "online", "lastContact": 1773489660, "bootCount": 15,
    "reboots": 3, "inboundRouteFailures": 1, "outboundRouteFailures": 2, "signalBars": 3, "rssi": -60, "rxLqi": 240,
    "batteryLevel": 80, "channel": 20, "uptime": 3600,
    "neighbours": [
      {"euid": "0017880100a00020", "shortAddress": "0x1a20", "lqi": 32, "relationship": "NEIGHBOR_IS_SIBLING"},
      {"euid": "0017880100a00021", "shortAddress": "0x1a21", "lqi": 33, "relationship": "NEIGHBOR_IS_SIBLING"}],
    "routes": [{"destination": "0x1a40", "nextHop": "0x1b40", "status": "ROUTE_ACTIVE"}],
    "accessPoints": [{"shortAddress": "0x7a01"}, {"shortAddress": "0x0000"}]})"));
}

TEST_F(MeshFormsTest, AsJsonANodeHasNoReadingsThatItNeverGave) {
  const json node = json::parse(jsonOf(ZigbeeNode()));
  for (const char* const name : {"rssi", "rxLqi", "batteryLevel"}) EXPECT_FALSE(node.contains(name)) << name;
  for (const char* const name : {"neighbours", "routes", "accessPoints"}) EXPECT_EQ(node.at(name), json::array());
  EXPECT_EQ(node.at("signalBars"), -1);
  EXPECT_EQ(node.at("shortAddress"), "0xffff");
  EXPECT_EQ(node.at("state"), "silent");
  EXPECT_EQ(node.at("type"), "Unknown");
}

TEST_F(MeshFormsTest, AsJsonANodeIsOneLineWhateverItsTextsHold) {
  lamp().label("a \"b\"\n\x1b[31m \xc3\xa4 \xff");
  lamp().product(std::string("\0\x01\\", 3));
  const std::string text = jsonOf(lamp());
  EXPECT_THAT(text, Not(HasSubstr("\n")));
  EXPECT_THAT(text, Not(HasSubstr("\x1b")));
  const json node = json::parse(text);
  EXPECT_EQ(node.at("label"), "a \"b\"\n\x1b[31m \xc3\xa4 \xef\xbf\xbd");
  EXPECT_EQ(node.at("product"), std::string("\0\x01\\", 3));
}

TEST_F(MeshFormsTest, AsJsonAReportHasItsItems) {
  const json report = json::parse(jsonOf(mesh_.health())).at("NetworkHealth");
  ASSERT_EQ(report.at("nodeHealth_").size(), 1U);
  EXPECT_EQ(report.at("healthItemData").size(), 26U);
  const json& node = report.at("nodeHealth_").at(0);
  EXPECT_EQ(node.at("id"), LAMP.euid);
  std::map<std::string, std::string> values;
  for (const json& item : node.at("healthItem")) values[item.at("name_")] = item.at("value_");
  EXPECT_EQ(values.size(), 26U);
  EXPECT_EQ(values["reboot.count"], "15");
  EXPECT_EQ(values["reboot.cumulative_count"], "3");
  EXPECT_EQ(values["inbound_route_failures.cumulative_count"], "1");
  EXPECT_EQ(values["outbound_route_failures.cumulative_count"], "2");
  EXPECT_EQ(values["rssi.value"], "-60");
}

TEST_F(MeshFormsTest, AsJsonAReportOfNobodyIsEmpty) {
  EXPECT_EQ(json::parse(jsonOf(mesh_.health(NOBODY.id()))).at("NetworkHealth").at("nodeHealth_"), json::array());
}

/// Texts of a document by the names of the elements that hold them, the first of each name; fails if it is not
/// well-formed.
std::map<std::string, std::string> textsOf(const std::string& xml) {
  std::map<std::string, std::string> texts;
  XmlReader reader(xml);
  constexpr int START = 1;
  constexpr int TEXT = 3;
  constexpr int AT_THE_END = 3;
  std::string element;
  bool isFirst = true;
  while (reader.read()) {
    if (isFirst) texts["the document"] = reader.name();
    isFirst = false;
    if (reader.nodeType() == START) element = reader.name();
    if (reader.nodeType() == TEXT) texts.emplace(element, reader.value());
  }
  EXPECT_EQ(reader.state(), AT_THE_END) << xml;
  return texts;
}

TEST_F(MeshFormsTest, AsXmlANodeIsWellFormed) {
  const std::string xml = xmlOf(lamp());
  EXPECT_EQ(xml.back(), '\n');
  auto texts = textsOf(xml);
  EXPECT_EQ(texts["the document"], "node");
  EXPECT_EQ(texts["product_"], "qx:lamp");
  EXPECT_EQ(texts["boot_count_"], "15");
  EXPECT_EQ(texts["channel_"], "20");
}

TEST_F(MeshFormsTest, AsXmlAReportIsWellFormed) {
  const std::string xml = xmlOf(mesh_.health());
  EXPECT_EQ(xml.back(), '\n');
  auto texts = textsOf(xml);
  EXPECT_EQ(texts["the document"], "health");
  EXPECT_EQ(texts["name_"], "reboot.count");
  EXPECT_EQ(texts["value_"], "15");
}

TEST_F(MeshFormsTest, AsXmlANodeIsWellFormedWhateverItsTextsHold) {
  for (const std::string& text : {std::string("<a>&\"']]>"), std::string("\x01\x1b\x7f\0x", 5), std::string("\xff\xc3"),
                                  std::string("\xef\xbf\xbf"), std::string("\xc3\xa4")}) {
    lamp().label(text);
    lamp().product(text);
    textsOf(xmlOf(lamp()));
  }
  lamp().label("<a>&\"'");
  EXPECT_EQ(textsOf(xmlOf(lamp()))["label_"], "<a>&\"'");
}

/// The bytes that base64 stands for.
std::string decoded(const std::string& base64) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned int bits = 0;
  int count = 0;
  for (const char c : base64) {
    const std::size_t value = alphabet.find(c);
    if (value == std::string::npos) break;
    bits = bits << 6 | static_cast<unsigned int>(value);
    count += 6;
    if (count >= 8) bytes += static_cast<char>(bits >> (count -= 8));
  }
  return bytes;
}

TEST_F(MeshFormsTest, InAnAnyANodeIsItsMessage) {
  google::protobuf::Any any;
  ASSERT_TRUE(any.ParseFromString(decoded(anyOf(lamp()))));
  EXPECT_EQ(any.type_url(), "type.googleapis.com/qx.pb.ZigbeeNodePBuf");
  qx::pb::ZigbeeNodePBuf message;
  ASSERT_TRUE(any.UnpackTo(&message));
  EXPECT_TRUE(sameMessage(message, *messageOf(lamp())));
}

TEST_F(MeshFormsTest, InAnAnyAReportIsItsMessage) {
  const NetworkHealth health = mesh_.health();
  google::protobuf::Any any;
  ASSERT_TRUE(any.ParseFromString(decoded(anyOf(health))));
  EXPECT_EQ(any.type_url(), "type.googleapis.com/qx.pb.NetworkHealthPBuf");
  qx::pb::NetworkHealthPBuf message;
  ASSERT_TRUE(any.UnpackTo(&message));
  EXPECT_TRUE(sameMessage(message, *messageOf(health)));
}

TEST_F(MeshFormsTest, OfANodeWithEveryFieldAreReadable) {
  const ZigbeeNode node = test::filledNode();
  EXPECT_EQ(json::parse(jsonOf(node)).at("euid"), node.lid().toString());
  textsOf(xmlOf(node));
  google::protobuf::Any any;
  ASSERT_TRUE(any.ParseFromString(decoded(anyOf(node))));
  qx::pb::ZigbeeNodePBuf message;
  ASSERT_TRUE(any.UnpackTo(&message));
  EXPECT_TRUE(sameMessage(message, *messageOf(node)));
}

}  // namespace
}  // namespace qx::app

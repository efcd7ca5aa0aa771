#include "apps/vso/mesh/nodeWords.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "apps/vso/mesh/MeshServer.h"
#include "support/LogCapture.h"
#include "tests/vso/mesh/Records.h"

namespace qx::app {
namespace {

ZigbeeNode unnamed() {
  ZigbeeNode node;
  node.lid(test::euidOf("0017880100a00010"));
  return node;
}

TEST(NodeWords, NameANodeAsPeopleDo) {
  ZigbeeNode node = unnamed();
  EXPECT_EQ(nameOf(node), "0017880100a00010");
  node.product("qx:lamp");
  EXPECT_EQ(nameOf(node), "qx:lamp");
  node.label("Hall");
  EXPECT_EQ(nameOf(node), "Hall");
}

TEST(NodeWords, NameANodeWithoutBytesThatATerminalObeys) {
  ZigbeeNode node = unnamed();
  node.product("\x1b[2J\r\n\xff");
  EXPECT_EQ(nameOf(node), "\\x1b[2J\\r\\n\\xff");
  node.label(
      "B\xc3\xa4"
      "d\t\x07");
  EXPECT_EQ(nameOf(node),
            "B\xc3\xa4"
            "d\\t\\x07");
}

TEST(NodeWords, CountThings) {
  EXPECT_EQ(counted(0, "node"), "0 nodes");
  EXPECT_EQ(counted(1, "node"), "1 node");
  EXPECT_EQ(counted(65'528, "access point"), "65528 access points");
}

TEST(NodeWords, TellTypes) {
  const char* const types[] = {"Unknown",           "Coordinator",       "Router", "End Device",
                               "Sleepy End Device", "Mobile End Device", "Unknown"};
  for (unsigned char type = 0; type < std::size(types); ++type) {
    ZigbeeNode node = unnamed();
    node.deviceType(type);
    EXPECT_EQ(typeOf(node), types[type]);
  }
}

TEST(NodeWords, TellWhetherANodeIsThere) {
  const struct {
    bool isOnline;
    bool isAwake;
    const char* word;
  } rows[] = {{true, true, "online"}, {true, false, "asleep"}, {false, true, "silent"}, {false, false, "silent"}};
  for (const auto& row : rows) {
    ZigbeeNode node = unnamed();
    node.online(row.isOnline);
    node.awake(row.isAwake);
    EXPECT_EQ(presenceOf(node), row.word);
  }
}

/// A node with so many events in the hour that has just begun.
ZigbeeNode nodeWith(int reboots, int inbound, int outbound) {
  ZigbeeNode node = unnamed();
  const BPosixTime now = ZigbeeNode::localtime();
  for (int i = 0; i < reboots; ++i) node.addRebootEvent(now);
  for (int i = 0; i < inbound; ++i) node.addManyToOneRouteFailure(now);
  for (int i = 0; i < outbound; ++i) node.addSourceRouteFailure(now);
  node.updateNetworkHealth();
  return node;
}

// The greatest rates that are still green and yellow: 10 and 20 reboots a day, 50 and 300 failures an hour.
TEST(NodeWords, TellTheStoriesWithTheirLights) {
  const struct {
    int reboots, inbound, outbound;
    const char *first, *second, *third, *worst;
  } rows[] = {
      {0, 0, 0, "0/day green", "0/h green", "0/h green", "green"},
      {10, 50, 50, "10/day green", "50/h green", "50/h green", "green"},
      {11, 0, 0, "11/day yellow", "0/h green", "0/h green", "yellow"},
      {0, 51, 0, "0/day green", "51/h yellow", "0/h green", "yellow"},
      {0, 0, 51, "0/day green", "0/h green", "51/h yellow", "yellow"},
      {20, 300, 300, "20/day yellow", "300/h yellow", "300/h yellow", "yellow"},
      {21, 51, 0, "21/day red", "51/h yellow", "0/h green", "red"},
      {11, 301, 51, "11/day yellow", "301/h red", "51/h yellow", "red"},
      {0, 0, 301, "0/day green", "0/h green", "301/h red", "red"},
  };
  for (const auto& row : rows) {
    const test::LogCapture log;
    const ZigbeeNode made = nodeWith(row.reboots, row.inbound, row.outbound);
    ZigbeeNode node = made;
    node.updateNetworkHealth();  // a copy has no report
    const auto stories = storiesOf(node);
    EXPECT_EQ(stories[0].rate + " " + stories[0].light, row.first);
    EXPECT_EQ(stories[1].rate + " " + stories[1].light, row.second);
    EXPECT_EQ(stories[2].rate + " " + stories[2].light, row.third);
    EXPECT_EQ(worstLightOf(node), row.worst);
  }
}

TEST(NodeWords, HaveAHeadingForEachStory) {
  EXPECT_STREQ(STORY_HEADINGS[0], "REBOOTS");
  EXPECT_STREQ(STORY_HEADINGS[1], "INBOUND FAILURES");
  EXPECT_STREQ(STORY_HEADINGS[2], "OUTBOUND FAILURES");
}

}  // namespace
}  // namespace qx::app

#include "vso/node/ZigbeeNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "Nodes.h"
#include "vso/node/NetworkHealth.h"

namespace qx {
namespace {

using test::emptyNode;
using test::euidFrom;
using test::euidOf;
using test::filledMessage;
using test::filledNode;
using test::messageOf;
using test::NODE_LID;
using test::NodeField;
using test::nodeFields;
using test::printed;
using test::sameMessage;
using test::ServerStart;
using test::timeOf;

const Euid LID = euidOf("0011223344556677");

ZigbeeNode nodeOf(const std::string& lid, const std::string& product) {
  ZigbeeNode node;
  node.lid(euidOf(lid));
  node.product(product);
  return node;
}

ZigbeeNode productOf(const std::string& product, unsigned char deviceType) {
  ZigbeeNode node;
  node.product(product);
  node.deviceType(deviceType);
  return node;
}

static_assert(std::has_virtual_destructor_v<ZigbeeNode>);
static_assert(std::is_same_v<ZigbeeNode::Deque, std::deque<SourceRoute>>);

TEST(ZigbeeNode, IsAnUnnamedNodeByDefault) {
  const ServerStart start(timeOf(1600000000));
  const BPosixTime before = ZigbeeNode::localtime();
  const ZigbeeNode node;
  const BPosixTime after = ZigbeeNode::localtime();
  EXPECT_EQ(node.lid(), Euid());
  EXPECT_EQ(node.product(), "");
  EXPECT_EQ(node.sid(), 0xFFFF);
  EXPECT_FALSE(node.isOnline());
  EXPECT_EQ(node.reflashProfile(), 0);
  EXPECT_EQ(node.fwVer(), "");
  EXPECT_EQ(node.reboots(), 0);
  EXPECT_EQ(node.rebootsResetTime(), timeOf(1600000000));
  EXPECT_EQ(node.bootCount(), 0);
  EXPECT_EQ(node.rebootsHistogram().windowSize(), 7U);
  EXPECT_EQ(node.rebootsHistogram().histogram(), std::vector<int>(7, 0));
  EXPECT_EQ(node.numSourceRoutes(), 0U);
  EXPECT_FALSE(node.updating());
  EXPECT_EQ(node.updatePercentage(), 0);
  EXPECT_EQ(node.deviceType(), 0);
  EXPECT_TRUE(node.isAwake());
  EXPECT_EQ(node.apPollInterval(), 0);
  EXPECT_EQ(node.parentPollInterval(), 0);
  EXPECT_EQ(node.acceptedPacketSuccesses(), 0U);
  EXPECT_EQ(node.acceptedPacketFailures(), 0U);
  EXPECT_EQ(node.packetDeliverySuccesses(), 0U);
  EXPECT_EQ(node.packetDeliveryFailures(), 0U);
  EXPECT_EQ(node.inboundUnicastCount(), 0U);
  EXPECT_EQ(node.inboundMulticastCount(), 0U);
  EXPECT_EQ(node.outboundPacketCount(), 0U);
  EXPECT_EQ(node.sourceRouteFailures(), 0U);
  EXPECT_EQ(node.sourceRouteFailuresHistogram().windowSize(), 24U);
  EXPECT_EQ(node.sourceRouteFailuresHistogram().histogram(), std::vector<int>(24, 0));
  EXPECT_EQ(node.sourceRouteFailuresResetTime(), timeOf(1600000000));
  EXPECT_EQ(node.manyToOneRouteFailures(), 0U);
  EXPECT_EQ(node.manyToOneRouteFailuresHistogram().windowSize(), 24U);
  EXPECT_EQ(node.manyToOneRouteFailuresHistogram().histogram(), std::vector<int>(24, 0));
  EXPECT_EQ(node.manyToOneRouteFailuresResetTime(), timeOf(1600000000));
  EXPECT_EQ(node.networkHealth(), nullptr);
  EXPECT_EQ(node.maxHops(), 0);
  EXPECT_FALSE(node.updateFailed());
  EXPECT_EQ(node.label(), "unknown");
  EXPECT_EQ(node.channel(), 0);
  EXPECT_EQ(node.lastContact(), 0);
  EXPECT_EQ(node.pendingQueueSize(), 0U);
  EXPECT_EQ(node.inflightQueueSize(), 0U);
  EXPECT_EQ(node.reflashTime(), 0);
  EXPECT_EQ(node.rssi(), 0);
  EXPECT_FALSE(node.hasRssi());
  EXPECT_EQ(node.rxLqi(), 0);
  EXPECT_FALSE(node.hasRxLqi());
  EXPECT_EQ(node.txLqi(), 0);
  EXPECT_FALSE(node.hasTxLqi());
  EXPECT_EQ(node.radioBars(), 0);
  EXPECT_FALSE(node.hasRadioBars());
  EXPECT_EQ(messageOf(node)->hops_size(), 0);
  EXPECT_EQ(node.numMtoRoutes(), 0U);
  EXPECT_EQ(node.numOfAps(), 0U);
  EXPECT_EQ(messageOf(node)->energylevels_size(), 0);
  EXPECT_FALSE(node.hasBatteryLevel());
  EXPECT_EQ(node.batteryLevel(), 0);
  EXPECT_EQ(node.uptime(), 0U);
  EXPECT_EQ(node.signalStrength(), -1);
  EXPECT_TRUE(node.packetCounters() == QxdiagnosticsNodeCounters());

  EXPECT_TRUE(node.defaultLabel());
  EXPECT_FALSE(node.hasProduct());
  EXPECT_FALSE(node.hasFwVer());
  EXPECT_FALSE(node.hasDeviceType());
  EXPECT_STREQ(node.deviceTypeStr(), "Unknown");
  for (const EventHistogram* histogram :
       {static_cast<const EventHistogram*>(&node.rebootsHistogram()),
        static_cast<const EventHistogram*>(&node.sourceRouteFailuresHistogram()),
        static_cast<const EventHistogram*>(&node.manyToOneRouteFailuresHistogram())}) {
    EXPECT_LE(before, histogram->startTime());
    EXPECT_LE(histogram->startTime(), after);
    EXPECT_EQ(histogram->lastEvent(), histogram->startTime());
  }
}

TEST(ZigbeeNode, TakesEightFieldsAtConstruction) {
  const ServerStart start(timeOf(1600000000));
  const ZigbeeNode node(LID, "qx:velmarin_sr2", 0x1A03, true, 205, "1.2.6M", 40009, "hall");
  // The clocks of the histograms are the only thing in which two new nodes differ.
  ZigbeeNode expected;
  expected.rebootsHistogram(node.rebootsHistogram());
  expected.sourceRouteFailuresHistogram(node.sourceRouteFailuresHistogram());
  expected.manyToOneRouteFailuresHistogram(node.manyToOneRouteFailuresHistogram());
  pb::ZigbeeNodePBuf message = *messageOf(expected);
  message.mutable_lid()->set_id(NODE_LID);
  message.set_product("qx:velmarin_sr2");
  message.set_sid(0x1A03);
  message.set_online(true);
  message.set_reflashprofile(205);
  message.set_fwver("1.2.6M");
  message.set_bootcount(40009);
  message.set_label("hall");
  EXPECT_TRUE(sameMessage(*messageOf(node), message));
  EXPECT_EQ(node.reboots(), 0);
  EXPECT_TRUE(node.isAwake());
  EXPECT_EQ(node.signalStrength(), -1);
  EXPECT_EQ(node.rebootsHistogram().histogram(), std::vector<int>(7, 0));
  EXPECT_EQ(node.sourceRouteFailuresHistogram().histogram(), std::vector<int>(24, 0));
  EXPECT_EQ(node.manyToOneRouteFailuresHistogram().histogram(), std::vector<int>(24, 0));
  EXPECT_EQ(node.networkHealth(), nullptr);
}

TEST(ZigbeeNode, SetsEachFieldAndNoOther) {
  const ZigbeeNode empty = emptyNode();
  for (const NodeField& field : nodeFields()) {
    ZigbeeNode node = empty;
    EXPECT_FALSE(field.shows(node)) << field.name;
    field.set(node);
    EXPECT_TRUE(field.shows(node)) << field.name;
    pb::ZigbeeNodePBuf expected = *messageOf(empty);
    field.put(expected);
    EXPECT_TRUE(sameMessage(*messageOf(node), expected)) << field.name;
  }
}

TEST(ZigbeeNode, ShowsEachFieldOfAFilledNode) {
  ZigbeeNode node;
  ASSERT_FALSE(node.fromProtobuf(filledMessage()));
  for (const NodeField& field : nodeFields()) EXPECT_TRUE(field.shows(node)) << field.name;
}

TEST(ZigbeeNode, TakesBackEachFlag) {
  struct Flag {
    void (ZigbeeNode::*set)(const bool&);
    void (pb::ZigbeeNodePBuf::*put)(bool);
  };
  using Message = pb::ZigbeeNodePBuf;
  const std::vector<Flag> flags = {
      {&ZigbeeNode::online, &Message::set_online},
      {&ZigbeeNode::updating, &Message::set_updating},
      {&ZigbeeNode::awake, &Message::set_awake},
      {&ZigbeeNode::updateFailed, &Message::set_updatefailed},
      {&ZigbeeNode::hasRssi, &Message::set_hasrssi},
      {&ZigbeeNode::hasRxLqi, &Message::set_hasrxlqi},
      {&ZigbeeNode::hasTxLqi, &Message::set_hastxlqi},
      {&ZigbeeNode::hasRadioBars, &Message::set_hasradiobars},
      {&ZigbeeNode::hasBatteryLevel, &Message::set_hasbatterylevel},
  };
  for (const Flag& flag : flags) {
    ZigbeeNode node = filledNode();
    (node.*flag.set)(false);
    pb::ZigbeeNodePBuf expected = filledMessage();
    (expected.*flag.put)(false);
    EXPECT_TRUE(sameMessage(*messageOf(node), expected)) << "flag " << &flag - flags.data();
  }
}

TEST(ZigbeeNode, CopiesAllFieldsButTheReport) {
  ZigbeeNode node = filledNode();
  node.gatherNetworkHealth();
  // Gathering ages the histograms.
  const pb::ZigbeeNodePBuf gathered = *messageOf(node);
  ASSERT_NE(node.networkHealth(), nullptr);
  const ZigbeeNode copy(node);
  EXPECT_EQ(copy.networkHealth(), nullptr);
  EXPECT_NE(node.networkHealth(), nullptr);
  EXPECT_TRUE(sameMessage(*messageOf(copy), gathered));
  for (const NodeField& field : nodeFields()) {
    EXPECT_TRUE(field.shows(ZigbeeNode(filledNode()))) << field.name;
  }
}

TEST(ZigbeeNode, AssignsAllFieldsButTheReport) {
  ZigbeeNode source = filledNode();
  source.gatherNetworkHealth();
  ZigbeeNode target;
  target = source;
  EXPECT_EQ(target.networkHealth(), nullptr);
  EXPECT_TRUE(sameMessage(*messageOf(target), *messageOf(source)));

  ZigbeeNode reported;
  reported.gatherNetworkHealth();
  const boost::shared_ptr<NetworkHealth> report = reported.networkHealth();
  ASSERT_NE(report, nullptr);
  reported = filledNode();
  EXPECT_EQ(reported.networkHealth(), report);
  for (const NodeField& field : nodeFields()) EXPECT_TRUE(field.shows(reported)) << field.name;
  reported = source;
  EXPECT_EQ(reported.networkHealth(), report);
}

TEST(ZigbeeNode, SurvivesAssignmentToItself) {
  ZigbeeNode node = filledNode();
  ZigbeeNode& same = node;
  node = same;
  EXPECT_TRUE(sameMessage(*messageOf(node), filledMessage()));
  node.gatherNetworkHealth();
  const boost::shared_ptr<NetworkHealth> report = node.networkHealth();
  node = same;
  EXPECT_EQ(node.networkHealth(), report);
}

TEST(ZigbeeNode, ComparesAddressAndProductAlone) {
  const ZigbeeNode node = nodeOf("0011223344556677", "lamp");
  ZigbeeNode same = filledNode();
  same.product("lamp");
  EXPECT_TRUE(node == same);
  EXPECT_FALSE(node != same);
  for (const ZigbeeNode& other :
       {nodeOf("0011223344556677", "Lamp"), nodeOf("0011223344556677", "lamp "), nodeOf("0011223344556677", ""),
        nodeOf("0011223344556677", std::string("lamp\0", 5)), nodeOf("0011223344556678", "lamp")}) {
    EXPECT_FALSE(node == other) << other.product();
    EXPECT_TRUE(node != other) << other.product();
  }
}

TEST(ZigbeeNode, OrdersByTheNumberOfTheAddressAlone) {
  ZigbeeNode less;
  less.lid(euidFrom(0x7FFFFFFFFFFFFFFF));
  less.product("z");
  ZigbeeNode greater;
  greater.lid(euidFrom(0x8000000000000000));
  greater.product("a");
  EXPECT_TRUE(less < greater);
  EXPECT_FALSE(greater < less);
  EXPECT_TRUE(greater > less);
  EXPECT_FALSE(less > greater);

  const ZigbeeNode one = nodeOf("0011223344556677", "one");
  const ZigbeeNode two = nodeOf("0011223344556677", "two");
  EXPECT_FALSE(one == two);
  EXPECT_FALSE(one < two);
  EXPECT_FALSE(one > two);
  EXPECT_FALSE(two < one);
  EXPECT_FALSE(two > one);
  EXPECT_EQ((std::set<ZigbeeNode>{one, two, less, greater}.size()), 3U);
}

TEST(ZigbeeNode, SaysWhatIsThere) {
  ZigbeeNode node;
  node.product("x");
  EXPECT_TRUE(node.hasProduct());
  node.fwVer("1");
  EXPECT_TRUE(node.hasFwVer());
  for (int type = 0; type <= 255; ++type) {
    node.deviceType(static_cast<unsigned char>(type));
    EXPECT_EQ(node.hasDeviceType(), type != 0) << type;
  }
}

TEST(ZigbeeNode, KnowsTheMakersDevicesByTheStartOfTheirProduct) {
  EXPECT_TRUE(productOf("qx:velmarin", 0).isQxDevice());
  EXPECT_TRUE(productOf("qx:velmarin_sr", 0).isQxDevice());
  EXPECT_TRUE(productOf("qx:velmarinx", 0).isQxDevice());
  EXPECT_FALSE(productOf("qx:velmari", 0).isQxDevice());
  EXPECT_FALSE(productOf("", 0).isQxDevice());
  EXPECT_FALSE(productOf(" qx:velmarin", 0).isQxDevice());
  EXPECT_FALSE(productOf("QX:velmarin", 0).isQxDevice());
  EXPECT_FALSE(productOf("a qx:velmarin further in", 0).isQxDevice());
}

TEST(ZigbeeNode, ChecksTheQueueOfPlainEndDevicesOfOneProductLine) {
  for (int type = 0; type <= 255; ++type) {
    const auto deviceType = static_cast<unsigned char>(type);
    EXPECT_EQ(productOf("qx:velmarin_sr", deviceType).isQueueCheckDevice(), type == 3) << type;
    EXPECT_EQ(productOf("qx:velmarin_sr4 x", deviceType).isQueueCheckDevice(), type == 3) << type;
  }
  EXPECT_FALSE(productOf("qx:velmarin_s", 3).isQueueCheckDevice());
  EXPECT_FALSE(productOf("qx:velmarin", 3).isQueueCheckDevice());
  EXPECT_FALSE(productOf("x qx:velmarin_sr", 3).isQueueCheckDevice());
  EXPECT_FALSE(productOf("", 3).isQueueCheckDevice());
}

TEST(ZigbeeNode, NamesItsDeviceType) {
  const std::vector<std::string> texts = {"Unknown",    "Coordinator",       "Router",
                                          "End Device", "Sleepy End Device", "Mobile End Device"};
  ZigbeeNode node;
  for (unsigned int type = 0; type <= 255; ++type) {
    node.deviceType(static_cast<unsigned char>(type));
    EXPECT_EQ(node.deviceTypeStr(), type < texts.size() ? texts[type] : "Unknown") << type;
    EXPECT_EQ(node.isEndDevice(), type == 3 || type == 4 || type == 5) << type;
    EXPECT_EQ(node.isEmberSleepy(), type == 4 || type == 5) << type;
  }
}

TEST(ZigbeeNode, IsInItsMiniappIfItsFirmwareEndsInM) {
  ZigbeeNode node;
  EXPECT_FALSE(node.inMiniapp());
  for (const char* version : {"1.2.3M", "M", "MM"}) {
    node.fwVer(version);
    EXPECT_TRUE(node.inMiniapp()) << version;
  }
  for (const char* version : {"1.2.3m", "1.2.3", "M1", "1M "}) {
    node.fwVer(version);
    EXPECT_FALSE(node.inMiniapp()) << version;
  }
}

TEST(ZigbeeNode, HasTheDefaultLabelUntilSomebodyNamesIt) {
  ZigbeeNode node;
  for (const char* label : {"", "Unknown", "unknown ", "unknow", "hall"}) {
    node.label(label);
    EXPECT_FALSE(node.defaultLabel()) << label;
  }
  node.label("unknown");
  EXPECT_TRUE(node.defaultLabel());
  EXPECT_TRUE(ZigbeeNode(LID, "", 0, false, 0, "", 0, "unknown").defaultLabel());
  EXPECT_FALSE(ZigbeeNode(LID, "", 0, false, 0, "", 0, "").defaultLabel());
}

TEST(ZigbeeNode, PrintsTheTagOfItsLogLines) {
  EXPECT_EQ(ZigbeeNode().printId(), "(0x0000000000000000)(0xffff)");
  ZigbeeNode node;
  node.lid(euidOf("00124b00deadbeef"));
  node.sid(0x1A03);
  EXPECT_EQ(node.printId(), "(0x00124b00deadbeef)(0x1a03)");
  node.sid(0x0007);
  EXPECT_EQ(node.printId(), "(0x00124b00deadbeef)(0x0007)");
}

TEST(ZigbeeNode, SpellsOutTheSeparatorsOfItsProduct) {
  EXPECT_EQ(productOf("", 0).cleanProductString(), "none");
  EXPECT_EQ(productOf(":@|", 0).cleanProductString(), "##==~~");
  EXPECT_EQ(productOf("qx:velmarin_sr2@1|2", 0).cleanProductString(), "qx##velmarin_sr2==1~~2");
  EXPECT_EQ(productOf("=~# none", 0).cleanProductString(), "=~# none");
  std::string all;
  std::string clean;
  for (int c = 0; c <= 255; ++c) {
    const std::string character(1, static_cast<char>(c));
    all += character;
    clean += c == '@' ? "==" : c == '|' ? "~~" : c == ':' ? "##" : character;
  }
  EXPECT_EQ(productOf(all, 0).cleanProductString(), clean);
}

TEST(ZigbeeNode, StreamsItsRoutes) {
  EXPECT_EQ(printed(ZigbeeNode()), "ROUTES: none");
  EXPECT_EQ(printed(filledNode()), "ROUTES: [0]: ROUTE: 0x0abc 0xabcd 0x0001 0x1a03, [1]: ROUTE: 0x0def 0x1a03");
}

TEST(ZigbeeNode, StartsWithoutAServerStart) {
  const ServerStart start{BPosixTime()};
  const ZigbeeNode node;
  EXPECT_TRUE(node.rebootsResetTime().is_not_a_date_time());
  EXPECT_TRUE(node.sourceRouteFailuresResetTime().is_not_a_date_time());
  EXPECT_TRUE(node.manyToOneRouteFailuresResetTime().is_not_a_date_time());
}

TEST(ZigbeeNode, TakesTheServerStartAsSecondsSince1970) {
  const ServerStart start{BPosixTime()};
  struct Case {
    long seconds;
    const char* text;
  };
  for (const Case& row : {Case{0, "1970-Jan-01 00:00:00"}, Case{1700000008, "2023-Nov-14 22:13:28"},
                          Case{-1, "1969-Dec-31 23:59:59"}, Case{5000000000, "2128-Jun-11 08:53:20"}}) {
    ZigbeeNode::vessoriStartTime(row.seconds);
    EXPECT_EQ(boost::posix_time::to_simple_string(ZigbeeNode::vessoriStartTime_), row.text);
    EXPECT_EQ(ZigbeeNode().rebootsResetTime(), ZigbeeNode::vessoriStartTime_);
    const ZigbeeNode named(LID, "", 0, false, 0, "", 0, "");
    EXPECT_EQ(named.rebootsResetTime(), ZigbeeNode::vessoriStartTime_);
    EXPECT_EQ(named.sourceRouteFailuresResetTime(), ZigbeeNode::vessoriStartTime_);
    EXPECT_EQ(named.manyToOneRouteFailuresResetTime(), ZigbeeNode::vessoriStartTime_);
  }
}

TEST(ZigbeeNode, HasTheLocalTimeInMicrosecondsAsItsClock) {
  const BPosixTime before = boost::posix_time::microsec_clock::local_time();
  const BPosixTime now = ZigbeeNode::localtime();
  const BPosixTime after = boost::posix_time::microsec_clock::local_time();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

}  // namespace
}  // namespace qx

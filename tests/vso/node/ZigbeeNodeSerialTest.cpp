// The serial forms of a node.
#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "Nodes.h"
#include "qxxml/XmlReader.h"
#include "support/LogCapture.h"
#include "vso/node/NetworkHealth.h"
#include "vso/node/ZigbeeNode.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::emptyNode;
using test::euidFrom;
using test::filledMessage;
using test::filledNode;
using test::messageOf;
using test::NodeField;
using test::nodeFields;
using test::sameMessage;
using test::timeOf;
using test::xmlOf;

using google::protobuf::FieldDescriptor;

constexpr int FIELD_COUNT = 55;

/// Whether a field of a message differs from that of a message with nothing set.
bool isSet(const pb::ZigbeeNodePBuf& message, const FieldDescriptor& field) {
  const google::protobuf::Reflection& reflection = *message.GetReflection();
  return field.is_repeated() ? reflection.FieldSize(message, &field) != 0 : reflection.HasField(message, &field);
}

TEST(ZigbeeNodeProtobuf, HasTheFieldsOfTheTable) {
  const google::protobuf::Descriptor& descriptor = *pb::ZigbeeNodePBuf::descriptor();
  ASSERT_EQ(descriptor.field_count(), FIELD_COUNT);
  ASSERT_EQ(nodeFields().size(), static_cast<std::size_t>(FIELD_COUNT));
  for (int i = 0; i < FIELD_COUNT; ++i) {
    const NodeField& field = nodeFields()[static_cast<std::size_t>(i)];
    EXPECT_EQ(field.number, i + 1);
    EXPECT_EQ(descriptor.field(i)->number(), i + 1);
    EXPECT_EQ(descriptor.field(i)->name(), field.name);
  }
}

TEST(ZigbeeNodeProtobuf, WritesEveryField) {
  const auto message = messageOf(filledNode());
  const google::protobuf::Descriptor& descriptor = *message->GetDescriptor();
  for (int i = 0; i < descriptor.field_count(); ++i)
    EXPECT_TRUE(isSet(*message, *descriptor.field(i))) << descriptor.field(i)->name();
  EXPECT_TRUE(sameMessage(*message, filledMessage()));
}

TEST(ZigbeeNodeProtobuf, ReadsEveryField) {
  ZigbeeNode node;
  EXPECT_FALSE(node.fromProtobuf(filledMessage()));
  for (const NodeField& field : nodeFields()) EXPECT_TRUE(field.shows(node)) << field.name;
  EXPECT_TRUE(sameMessage(*messageOf(node), filledMessage()));
}

TEST(ZigbeeNodeProtobuf, ReadsEachFieldByItself) {
  const pb::ZigbeeNodePBuf blank = *messageOf(emptyNode());
  for (const NodeField& field : nodeFields()) {
    pb::ZigbeeNodePBuf message;
    field.put(message);
    ZigbeeNode node = filledNode();
    EXPECT_FALSE(node.fromProtobuf(message)) << field.name;
    pb::ZigbeeNodePBuf expected = blank;
    field.put(expected);
    EXPECT_TRUE(sameMessage(*messageOf(node), expected)) << field.name;
  }
}

// A node has its table of virtual operations, 55 fields and its report, and nothing else. Whoever adds a member finds
// this broken, and the new member's place in the copy below is the reminder to give it a place in the serial forms and
// in the table of fields, too (or to say here, as of the report, that it has none).
struct SameMembers {
  void* virtualOperations;
  Euid lid;
  std::string product;
  unsigned short sid;
  bool online;
  unsigned char reflashProfile;
  std::string fwVer;
  unsigned short reboots;
  BPosixTime rebootsResetTime;
  unsigned short bootCount;
  RebootHistogram rebootsHistogram;
  ZigbeeNode::Deque sourceRoutes;
  bool updating;
  unsigned char updatePercentage;
  unsigned char deviceType;
  bool awake;
  unsigned short pollIntervals[2];
  unsigned long long counters[8];
  MessageFailHistogram sourceRouteFailuresHistogram;
  BPosixTime sourceRouteFailuresResetTime;
  unsigned long long manyToOneRouteFailures;
  MessageFailHistogram manyToOneRouteFailuresHistogram;
  BPosixTime manyToOneRouteFailuresResetTime;
  boost::shared_ptr<NetworkHealth> reportWithoutAPlace;
  unsigned char maxHops;
  bool updateFailed;
  std::string label;
  unsigned char channel;
  std::time_t lastContact;
  unsigned int queueSizes[2];
  std::time_t reflashTime;
  signed char rssi;
  bool hasRssi;
  unsigned char rxLqi;
  bool hasRxLqi;
  unsigned char txLqi;
  bool hasTxLqi;
  unsigned char radioBars;
  bool hasRadioBars;
  std::list<Hop> hops;
  std::list<Route> mtoRoutes;
  std::list<AccessPoint> apTable;
  std::list<signed char> energyLevels;
  bool hasBatteryLevel;
  signed char batteryLevel;
  unsigned int uptime;
  signed char signalStrength;
  QxdiagnosticsNodeCounters packetCounters;
};
static_assert(sizeof(ZigbeeNode) == sizeof(SameMembers));

TEST(ZigbeeNodeProtobuf, OfNothingGivesTheDefaultsOfTheMessage) {
  ZigbeeNode node = filledNode();
  EXPECT_FALSE(node.fromProtobuf(pb::ZigbeeNodePBuf()));
  EXPECT_EQ(node.lid(), Euid());
  EXPECT_EQ(node.product(), "");
  EXPECT_EQ(node.sid(), 0);
  EXPECT_FALSE(node.isAwake());
  EXPECT_EQ(node.signalStrength(), 0);
  EXPECT_EQ(node.label(), "");
  EXPECT_FALSE(node.defaultLabel());
  EXPECT_EQ(node.rebootsResetTime(), timeOf(0));
  EXPECT_EQ(node.numSourceRoutes(), 0U);
  EXPECT_EQ(node.lastContact(), 0);
  EXPECT_TRUE(node.packetCounters() == QxdiagnosticsNodeCounters());
  for (const EventHistogram* histogram :
       {static_cast<const EventHistogram*>(&node.rebootsHistogram()),
        static_cast<const EventHistogram*>(&node.sourceRouteFailuresHistogram()),
        static_cast<const EventHistogram*>(&node.manyToOneRouteFailuresHistogram())}) {
    EXPECT_EQ(histogram->windowSize(), 0U);
    EXPECT_TRUE(histogram->histogram().empty());
    EXPECT_EQ(histogram->startTime(), timeOf(0));
    EXPECT_EQ(histogram->lastEvent(), timeOf(0));
  }
  // The parts are there, with nothing in them; every other field is as in a message with nothing set.
  pb::ZigbeeNodePBuf expected;
  expected.mutable_lid();
  for (pb::EventHistogramPBuf* histogram :
       {expected.mutable_rebootshistogram(), expected.mutable_sourceroutefailureshistogram(),
        expected.mutable_manytooneroutefailureshistogram()}) {
    histogram->mutable_starttime();
    histogram->mutable_lastevent();
  }
  expected.mutable_rebootsresettime();
  expected.mutable_sourceroutefailuresresettime();
  expected.mutable_manytooneroutefailuresresettime();
  expected.mutable_lastcontact();
  expected.mutable_reflashtime();
  expected.mutable_packetcounters();
  EXPECT_TRUE(sameMessage(*messageOf(node), expected));
}

TEST(ZigbeeNodeProtobuf, OfANewNodeTellsItsDefaults) {
  const test::ServerStart start(timeOf(1600000000));
  const ZigbeeNode node;
  const auto message = messageOf(node);
  EXPECT_EQ(message->sid(), 0xFFFFU);
  EXPECT_TRUE(message->awake());
  EXPECT_EQ(message->label(), "unknown");
  EXPECT_EQ(message->signalstrength(), -1);
  EXPECT_EQ(message->rebootshistogram().windowsize(), 7U);
  EXPECT_EQ(message->sourceroutefailureshistogram().windowsize(), 24U);
  EXPECT_EQ(message->manytooneroutefailureshistogram().windowsize(), 24U);
  EXPECT_EQ(message->rebootsresettime().seconds(), 1600000000);
  ZigbeeNode restored = filledNode();
  EXPECT_FALSE(restored.fromProtobuf(*message));
  EXPECT_TRUE(sameMessage(*messageOf(restored), *message));
}

/// One number too wide for its field, and what the field keeps of it.
struct Cut {
  const char* name;
  std::function<void(pb::ZigbeeNodePBuf&)> put;
  std::function<long long(const ZigbeeNode&)> read;
  long long kept;
};

TEST(ZigbeeNodeProtobuf, CutsWideNumbersToTheirLowBits) {
  using Message = pb::ZigbeeNodePBuf;
  using Node = ZigbeeNode;
  const std::vector<Cut> cuts = {
      {"sid", [](Message& m) { m.set_sid(0x12345); }, [](const Node& n) { return n.sid(); }, 0x2345},
      {"reflashProfile", [](Message& m) { m.set_reflashprofile(0x1FE); },
       [](const Node& n) { return n.reflashProfile(); }, 0xFE},
      {"reboots", [](Message& m) { m.set_reboots(0xFFFF8001); }, [](const Node& n) { return n.reboots(); }, 0x8001},
      {"bootCount", [](Message& m) { m.set_bootcount(0x10000); }, [](const Node& n) { return n.bootCount(); }, 0},
      {"updatePercentage", [](Message& m) { m.set_updatepercentage(0x164); },
       [](const Node& n) { return n.updatePercentage(); }, 0x64},
      {"deviceType", [](Message& m) { m.set_devicetype(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(0x103)); },
       [](const Node& n) { return n.deviceType(); }, 3},
      {"deviceType below zero", [](Message& m) { m.set_devicetype(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(-1)); },
       [](const Node& n) { return n.deviceType(); }, 255},
      {"apPollInterval", [](Message& m) { m.set_appollinterval(0x54321); },
       [](const Node& n) { return n.apPollInterval(); }, 0x4321},
      {"parentPollInterval", [](Message& m) { m.set_parentpollinterval(0x65432); },
       [](const Node& n) { return n.parentPollInterval(); }, 0x5432},
      {"maxHops", [](Message& m) { m.set_maxhops(0x101); }, [](const Node& n) { return n.maxHops(); }, 1},
      {"channel", [](Message& m) { m.set_channel(0x119); }, [](const Node& n) { return n.channel(); }, 0x19},
      {"rssi", [](Message& m) { m.set_rssi(186); }, [](const Node& n) { return n.rssi(); }, -70},
      {"rssi far below zero", [](Message& m) { m.set_rssi(-300); }, [](const Node& n) { return n.rssi(); }, -44},
      {"rxLqi", [](Message& m) { m.set_rxlqi(0x1EB); }, [](const Node& n) { return n.rxLqi(); }, 0xEB},
      {"txLqi", [](Message& m) { m.set_txlqi(0x1EC); }, [](const Node& n) { return n.txLqi(); }, 0xEC},
      {"radioBars", [](Message& m) { m.set_radiobars(0x102); }, [](const Node& n) { return n.radioBars(); }, 2},
      {"batteryLevel", [](Message& m) { m.set_batterylevel(200); }, [](const Node& n) { return n.batteryLevel(); },
       -56},
      {"signalStrength", [](Message& m) { m.set_signalstrength(0xFF); },
       [](const Node& n) { return n.signalStrength(); }, -1},
      {"energyLevels", [](Message& m) { m.add_energylevels(200); },
       [](const Node& n) {
         std::list<signed char> levels;
         n.getEnergyLevelsList(levels);
         return levels.front();
       },
       -56},
      {"lastContact", [](Message& m) { m.mutable_lastcontact()->set_seconds(4294967297); },
       [](const Node& n) { return n.lastContact(); }, 1},
      {"reflashTime", [](Message& m) { m.mutable_reflashtime()->set_seconds(0x80000000LL); },
       [](const Node& n) { return n.reflashTime(); }, -2147483648LL},
      {"lastContact's fraction", [](Message& m) { m.mutable_lastcontact()->set_nanos(999999999); },
       [](const Node& n) { return n.lastContact(); }, 0},
      {"packetCounters", [](Message& m) { m.mutable_packetcounters()->set_macrxunicasts(0x12345); },
       [](const Node& n) { return n.packetCounters().mac_rx_unicasts_; }, 0x2345},
      {"rebootsResetTime", [](Message& m) { m.mutable_rebootsresettime()->set_seconds(4294967297); },
       [](const Node& n) { return n.rebootsResetTime() == timeOf(1) ? 1 : 0; }, 1},
  };
  for (const Cut& cut : cuts) {
    pb::ZigbeeNodePBuf message;
    cut.put(message);
    ZigbeeNode node;
    EXPECT_FALSE(node.fromProtobuf(message)) << cut.name;
    EXPECT_EQ(cut.read(node), cut.kept) << cut.name;
  }
}

TEST(ZigbeeNodeProtobuf, ExtendsTheSignOfItsBytes) {
  ZigbeeNode node;
  node.rssi(-128);
  node.batteryLevel(-1);
  node.signalStrength(-1);
  node.setEnergyLevelsList({-128, -1, 0, 127});
  const auto message = messageOf(node);
  EXPECT_EQ(message->rssi(), -128);
  EXPECT_EQ(message->batterylevel(), -1);
  EXPECT_EQ(message->signalstrength(), -1);
  EXPECT_THAT(message->energylevels(), testing::ElementsAre(-128, -1, 0, 127));
}

TEST(ZigbeeNodeProtobuf, KeepsWholeSecondsOfItsTimes) {
  ZigbeeNode node;
  node.rebootsResetTime(timeOf(1700000008) + boost::posix_time::microseconds(999999));
  node.sourceRouteFailuresResetTime(BPosixTime());
  node.manyToOneRouteFailuresResetTime(BPosixTime(boost::date_time::neg_infin));
  node.lastContact(-1);
  const auto message = messageOf(node);
  EXPECT_EQ(message->rebootsresettime().seconds(), 1700000008);
  EXPECT_EQ(message->rebootsresettime().nanos(), 0);
  EXPECT_EQ(message->sourceroutefailuresresettime().seconds(), 2077252342);
  EXPECT_EQ(message->manytooneroutefailuresresettime().seconds(), -2077252342);
  EXPECT_EQ(message->lastcontact().seconds(), -1);
}

TEST(ZigbeeNodeProtobuf, ReplacesTheListsItReads) {
  ZigbeeNode node = filledNode();
  pb::ZigbeeNodePBuf message;
  test::putSourceRoute(message.add_sourceroutes(), {7}, 0, 1, 2, 3);
  test::putHop(message.add_hops(), 1, 1);
  test::putRoute(message.add_mtoroutes(), 1, 1);
  test::putAccessPoint(message.add_aptable(), 1, 1);
  message.add_energylevels(9);
  EXPECT_FALSE(node.fromProtobuf(message));
  const auto written = messageOf(node);
  EXPECT_EQ(written->sourceroutes_size(), 1);
  EXPECT_EQ(written->hops_size(), 1);
  EXPECT_EQ(written->mtoroutes_size(), 1);
  EXPECT_EQ(written->aptable_size(), 1);
  EXPECT_THAT(written->energylevels(), testing::ElementsAre(9));
  EXPECT_FALSE(node.fromProtobuf(pb::ZigbeeNodePBuf()));
  EXPECT_EQ(node.numSourceRoutes(), 0U);
  EXPECT_EQ(node.numMtoRoutes(), 0U);
  EXPECT_EQ(node.numOfAps(), 0U);
}

TEST(ZigbeeNodeProtobuf, FailsWithEachPartAndTakesTheOthers) {
  {
    pb::ZigbeeNodePBuf message = filledMessage();
    message.mutable_hops(0)->mutable_neighborpanid()->set_addr("seven b");
    ZigbeeNode node;
    EXPECT_TRUE(node.fromProtobuf(message));
    for (const NodeField& field : nodeFields()) EXPECT_TRUE(field.shows(node)) << field.name;
    // The byte that is missing stays that of the invalid id.
    EXPECT_EQ(messageOf(node)->hops(0).neighborpanid().addr(), "seven b\xFF");
  }
  {
    pb::ZigbeeNodePBuf message = filledMessage();
    for (int i = 0; i < 256; ++i) message.mutable_sourceroutes(1)->mutable_baseclass()->add_contents(1);
    ZigbeeNode node;
    EXPECT_TRUE(node.fromProtobuf(message));
    // The relays that do not fit are dropped; the rest of the route is taken.
    EXPECT_TRUE(sameMessage(*messageOf(node), filledMessage()));
  }
  {
    pb::ZigbeeNodePBuf message = filledMessage();
    message.mutable_hops(1)->clear_neighborpanid();
    ZigbeeNode node;
    EXPECT_TRUE(node.fromProtobuf(message));
    EXPECT_FALSE(node.fromProtobuf(filledMessage()));
  }
}

TEST(ZigbeeNodeProtobuf, ThrowsOnTruthsThatAreNone) {
  pb::ZigbeeNodePBuf message = filledMessage();
  message.mutable_hops(0)->set_rxonwhenidle(static_cast<pb::TriboolPEnum>(3));
  ZigbeeNode node;
  try {
    node.fromProtobuf(message);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "triboolFromProtobuf: invalid tribool");
  }
  EXPECT_EQ(node.product(), "qx:velmarin_sr2");
  // The rows up to the bad one, and nothing behind it.
  std::list<Hop> hops;
  node.getHopList(hops);
  EXPECT_EQ(hops.size(), 1U);
  EXPECT_EQ(node.numMtoRoutes(), 0U);
}

TEST(ZigbeeNodeProtobuf, LeavesTheReportAndLogsNothing) {
  ZigbeeNode node;
  node.gatherNetworkHealth();
  const boost::shared_ptr<NetworkHealth> report = node.networkHealth();
  const test::LogCapture capture;
  EXPECT_FALSE(node.fromProtobuf(filledMessage()));
  EXPECT_EQ(node.networkHealth(), report);
  pb::ZigbeeNodePBuf bad = filledMessage();
  bad.mutable_hops(0)->clear_neighborpanid();
  EXPECT_TRUE(node.fromProtobuf(bad));
  EXPECT_EQ(node.networkHealth(), report);
  EXPECT_THAT(capture.texts(), testing::IsEmpty());
}

TEST(ZigbeeNodeProtobuf, ParsesAgainWhateverDevicesCallThemselves) {
  std::mt19937 random(5);
  for (int round = 0; round < 2000; ++round) {
    std::string texts[3];
    for (std::string& text : texts) {
      const unsigned int length = random() % 12;
      for (unsigned int i = 0; i < length; ++i) text += static_cast<char>(random());
    }
    ZigbeeNode node;
    node.product(texts[0]);
    node.fwVer(texts[1]);
    node.label(texts[2]);
    const auto written = messageOf(node);
    pb::ZigbeeNodePBuf parsed;
    ASSERT_TRUE(parsed.ParseFromString(written->SerializeAsString())) << round;
    ASSERT_TRUE(sameMessage(parsed, *written)) << round;
    ZigbeeNode restored;
    ASSERT_FALSE(restored.fromProtobuf(parsed)) << round;
    ASSERT_TRUE(sameMessage(*messageOf(restored), *written)) << round;
  }
}

TEST(ZigbeeNodeProtobuf, KeepsTextsThatAreUtf8AndReplacesOtherBytes) {
  ZigbeeNode node;
  node.product("caf\xC3\xA9");
  node.fwVer(
      "\xFF"
      "1M");
  node.label("a\xC3");
  const auto message = messageOf(node);
  EXPECT_EQ(message->product(), "caf\xC3\xA9");
  EXPECT_EQ(message->fwver(),
            "\xEF\xBF\xBD"
            "1M");
  EXPECT_EQ(message->label(), "a\xEF\xBF\xBD");
  EXPECT_EQ(node.product(), "caf\xC3\xA9");
  EXPECT_EQ(node.label(), "a\xC3");
}

std::string number(const std::string& name, const std::string& value) {
  return "<" + name + ">" + value + "</" + name + ">";
}

std::string object(const std::string& name, const std::string& content) {
  return "<" + name + ARCHIVE + ">" + content + "</" + name + ">";
}

std::string collection(const std::string& name, int count, const std::string& items) {
  return object(name, number("count", std::to_string(count)) + "<item_version>183</item_version>" + items);
}

std::string dateTime(const std::string& name, const std::string& date, const std::string& h, const std::string& m,
                     const std::string& s) {
  return object(name, object("ptime_date", number("date", date)) +
                          object("ptime_time_duration",
                                 "<is_special>0</is_special>" + number("time_duration_hours", h) +
                                     number("time_duration_minutes", m) + number("time_duration_seconds", s) +
                                     "<time_duration_fractional_seconds>0</time_duration_fractional_seconds>"));
}

std::string histogram(const std::string& name, const std::vector<std::string>& buckets, const std::string& lastEvent) {
  std::string items;
  for (const std::string& bucket : buckets) items += number("item", bucket);
  const std::string count = std::to_string(buckets.size());
  return object(name,
                object("EventHistogram", number("windowSize_", count) + "<histogram_>" + number("count", count) +
                                             "<item_version>0</item_version>" + items + "</histogram_>" + lastEvent));
}

std::string sourceRoute(const std::string& relays, const std::string& count, const std::string& failures,
                        const std::string& zap, const std::string& zapSid, const std::string& time) {
  return object("item", "<source_route class_id=\"0\" tracking_level=\"0\" version=\"0\">" +
                            number("contents", relays) + number("length_", count) + "</source_route>" +
                            number("failures_", failures) + object("zap_", number("id_", zap)) +
                            number("zap_sid_", zapSid) + number("time_stamp_", time));
}

std::string hop(const std::string& neighbor, const std::string& lid) {
  return object("item",
                number("neighbor_", neighbor) + "<lqi_>47</lqi_>" + object("neighbor_lid_", number("id_", lid)) +
                    "<type_>2</type_>" + object("rx_on_when_idle_", "<undetermined>0</undetermined><state>1</state>") +
                    "<relationship_>1</relationship_>" +
                    object("permit_joining_", "<undetermined>1</undetermined><state>0</state>") +
                    "<tree_depth_>12</tree_depth_>" + object("neighbor_pan_id_", "<addr>70616e69642d3437</addr>"));
}

std::string route(const std::string& destination, const std::string& nextHop) {
  return object("item", number("destination_", destination) +
                            "<route_status_>3</route_status_><mem_constrained_>0</mem_constrained_>"
                            "<many_to_one_>1</many_to_one_><route_record_required_>0</route_record_required_>" +
                            number("next_hop_", nextHop));
}

TEST(ZigbeeNodeXml, OfAFilledNodeIsThisDocument) {
  const std::string elements =
      object("lid_", "<id_>8603657889541918976</id_>") +  // 1
      "<product_>qx:velmarin_sr2</product_>"              // 2
      "<sid_>6659</sid_>"                                 // 3
      "<online_>1</online_>"                              // 4
      "<reflash_profile_>205</reflash_profile_>"          // 5
      "<fw_ver_>1.2.6M</fw_ver_>"                         // 6
      "<reboots_>40007</reboots_>" +                      // 7
      collection("routes", 2,                             // 8
                 sourceRoute("0001abcd", "2", "11", "1224979098644774913", "2748", "1700000011") +
                     sourceRoute("", "0", "12", "1224979098644774914", "3567", "1700000012")) +
      "<updating_>1</updating_>"                                                         // 9
      "<update_percentage_>213</update_percentage_>"                                     // 10
      "<device_type_>214</device_type_>"                                                 // 11
      "<awake_>1</awake_>"                                                               // 12
      "<accepted_packet_successes_>10000000000000000018</accepted_packet_successes_>"    // 13
      "<accepted_packet_failures_>10000000000000000019</accepted_packet_failures_>"      // 14
      "<packet_delivery_successes_>10000000000000000020</packet_delivery_successes_>"    // 15
      "<packet_delivery_failures_>10000000000000000021</packet_delivery_failures_>"      // 16
      "<inbound_unicast_count_>10000000000000000022</inbound_unicast_count_>"            // 17
      "<inbound_multicast_count_>10000000000000000023</inbound_multicast_count_>"        // 18
      "<outbound_packet_count_>10000000000000000024</outbound_packet_count_>"            // 19
      "<source_route_failures_>10000000000000000025</source_route_failures_>"            // 20
      "<many_to_one_route_failures_>10000000000000000028</many_to_one_route_failures_>"  // 21
      "<max_hops_>231</max_hops_>"                                                       // 22
      "<update_failed_>1</update_failed_>"                                               // 23
      "<label_>hall &lt;33&gt;</label_>"                                                 // 24
      "<channel_>234</channel_>"                                                         // 25
      "<last_contact_>1700000035</last_contact_>"                                        // 26
      "<ap_poll_interval_>40016</ap_poll_interval_>"                                     // 27
      "<parent_poll_interval_>40017</parent_poll_interval_>"                             // 28
      "<boot_count_>40009</boot_count_>"                                                 // 29
      "<pending_queue_size_>4000000036</pending_queue_size_>"                            // 30
      "<inflight_queue_size_>4000000037</inflight_queue_size_>"                          // 31
      "<reflash_time_>-38</reflash_time_>"                                               // 32
      "<rssi_>-70</rssi_>"                                                               // 33
      "<has_rssi_>1</has_rssi_>" +                                                       // 34
      collection("hops_", 2, hop("4701", "1") + hop("4702", "2")) +                      // 35
      collection("mto_routes_", 2, route("4801", "4811") + route("4802", "4812")) +      // 36
      collection("ap_table_", 2,                                                         // 37
                 object("item", "<destination_>4901</destination_><table_index_>91</table_index_>") +
                     object("item", "<destination_>4902</destination_><table_index_>92</table_index_>")) +
      "<rx_lqi_>241</rx_lqi_>"                  // 38
      "<has_rx_lqi_>1</has_rx_lqi_>"            // 39
      "<tx_lqi_>243</tx_lqi_>"                  // 40
      "<has_tx_lqi_>1</has_tx_lqi_>"            // 41
      "<radio_bars_>245</radio_bars_>"          // 42
      "<has_radio_bars_>1</has_radio_bars_>" +  // 43
      object("energy_levels_",                  // 44
             "<count>4</count><item_version>182</item_version>"
             "<item>50</item><item>-50</item><item>127</item><item>-128</item>") +
      "<has_battery_level_>1</has_battery_level_>"  // 45
      "<battery_level_>-52</battery_level_>"        // 46
      "<uptime_>4000000053</uptime_>"               // 47
      "<signal_strength_>-54</signal_strength_>" +  // 48
      object("packet_counters_",                    // 49
             "<version_>5501</version_><mac_rx_unicasts_>5502</mac_rx_unicasts_>"
             "<mac_tx_unicasts_>5503</mac_tx_unicasts_><mac_tx_unicast_retries_>5504</mac_tx_unicast_retries_>"
             "<mac_tx_unicast_failures_>5505</mac_tx_unicast_failures_><mac_rx_broadcasts_>5506</mac_rx_broadcasts_>"
             "<mac_tx_broadcasts_>5507</mac_tx_broadcasts_><aps_rx_unicasts_>5508</aps_rx_unicasts_>"
             "<aps_tx_unicasts_>5509</aps_tx_unicasts_><aps_tx_unicast_retries_>5510</aps_tx_unicast_retries_>"
             "<aps_tx_unicast_failures_>5511</aps_tx_unicast_failures_><aps_rx_broadcasts_>5512</aps_rx_broadcasts_>"
             "<aps_tx_broadcasts_>5513</aps_tx_broadcasts_>"
             "<nwk_frame_counter_failures_>5514</nwk_frame_counter_failures_>"
             "<aps_frame_counter_failures_>5515</aps_frame_counter_failures_>") +
      dateTime("reboots_reset_time", "20231114", "22", "13", "28") +  // 50
      histogram("reboots_histogram_", {"10", "11", "-12"},            // 51
                dateTime("lastEvent_", "20231114", "22", "46", "50")) +
      histogram("source_route_failures_histogram_", {"26", "27", "28", "29"},  // 52
                dateTime("lastEvent_", "20231114", "22", "47", "6")) +
      dateTime("source_route_failures_reset_time_", "20231114", "22", "13", "47") +  // 53
      histogram("many_to_one_route_failures_histogram_", {"-1", "2147483647"},       // 54
                dateTime("lastEvent_", "20231114", "22", "47", "9")) +
      dateTime("many_to_one_route_failures_reset_time_", "20231114", "22", "13", "50");  // 55
  EXPECT_EQ(xmlOf(filledNode(), "node"), object("node", elements));
}

/// The names of the elements within the outermost one.
std::vector<std::string> elementsOf(const std::string& document) {
  std::vector<std::string> names;
  int depth = 0;
  for (std::size_t at = document.find('<'); at != std::string::npos; at = document.find('<', at + 1)) {
    if (document[at + 1] == '/') {
      --depth;
    } else {
      if (depth == 1) names.push_back(document.substr(at + 1, document.find_first_of(" >", at) - at - 1));
      ++depth;
    }
  }
  EXPECT_EQ(depth, 0);
  return names;
}

TEST(ZigbeeNodeXml, HasAnElementForEachFieldOfTheMessage) {
  // The name of a field in the message with its words apart, as "has_rx_lqi_"; two have names of their own.
  std::vector<std::string> expected;
  for (const NodeField& field : nodeFields()) {
    std::string element;
    for (const char c : std::string(field.name)) {
      if (c >= 'A' && c <= 'Z') element += '_';
      element += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    element += "_";
    if (element == "source_routes_") element = "routes";
    if (element == "reboots_reset_time_") element = "reboots_reset_time";
    expected.push_back(element);
  }
  const std::vector<std::string> elements = elementsOf(xmlOf(filledNode(), "node"));
  EXPECT_EQ(elements.size(), static_cast<std::size_t>(FIELD_COUNT));
  EXPECT_THAT(elements, testing::UnorderedElementsAreArray(expected));
  EXPECT_EQ(elementsOf(xmlOf(ZigbeeNode(), "node")), elements);
}

TEST(ZigbeeNodeXml, WritesAnEmptyNode) {
  const std::string document = xmlOf(emptyNode(), "n");
  for (const char* part :
       {"<sid_>0</sid_>", "<awake_>0</awake_>", "<label_></label_>", "<rssi_>0</rssi_><has_rssi_>0</has_rssi_>",
        "<signal_strength_>0</signal_strength_>", "<last_contact_>0</last_contact_>"}) {
    EXPECT_NE(document.find(part), std::string::npos) << part;
  }
  const std::string none = "<count>0</count><item_version>182</item_version>";
  EXPECT_NE(document.find(object("energy_levels_", none)), std::string::npos);
  for (const char* name : {"routes", "hops_", "mto_routes_", "ap_table_"})
    EXPECT_NE(document.find(collection(name, 0, "")), std::string::npos) << name;
  EXPECT_EQ(document.find("<item>"), std::string::npos);
  EXPECT_NE(document.find(histogram("reboots_histogram_", {}, dateTime("lastEvent_", "19700101", "0", "0", "0"))),
            std::string::npos);
}

TEST(ZigbeeNodeXml, WritesARssiThatIsNotValid) {
  ZigbeeNode node;
  node.rssi(-70);
  EXPECT_NE(xmlOf(node, "n").find("<rssi_>-70</rssi_><has_rssi_>0</has_rssi_>"), std::string::npos);
}

TEST(ZigbeeNodeXml, WritesTheFractionOfAResetTimeAndTimesOfNoDate) {
  ZigbeeNode node;
  node.rebootsResetTime(timeOf(1700000008) + boost::posix_time::microseconds(123456));
  node.sourceRouteFailuresResetTime(BPosixTime());
  const std::string document = xmlOf(node, "n");
  EXPECT_NE(document.find("<time_duration_fractional_seconds>123456</time_duration_fractional_seconds>"),
            std::string::npos);
  EXPECT_NE(document.find("<date>not-a-date-time</date>"), std::string::npos);
}

TEST(ZigbeeNodeXml, IsWellFormedWhateverDevicesCallThemselves) {
  std::mt19937 random(6);
  for (int round = 0; round < 200; ++round) {
    std::string text;
    for (int i = 0; i < 12; ++i) text += static_cast<char>(random());
    ZigbeeNode node = filledNode();
    node.product(text);
    node.label(text);
    XmlReader reader(xmlOf(node, "node"));
    while (reader.read()) continue;
    ASSERT_NE(reader.state(), 2) << round;
  }
}

TEST(ZigbeeNodeForms, ChangeNothing) {
  const ZigbeeNode node = filledNode();
  xmlOf(node, "node");
  messageOf(node);
  EXPECT_TRUE(sameMessage(*messageOf(node), filledMessage()));
}

}  // namespace
}  // namespace qx

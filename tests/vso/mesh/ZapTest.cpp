#include "vso/mesh/Zap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "Records.h"
#include "qxxml/XmlReader.h"
#include "support/LogCapture.h"
#include "vso/mesh/MeshParameters.h"
#include "vso/proto/MeshParametersPBuf.pb.h"
#include "vso/proto/ZapPBuf.pb.h"

namespace qx {
namespace {

using boost::logic::indeterminate;
using test::ARCHIVE;
using test::euidOf;
using test::LogCapture;
using test::messageOf;
using test::printed;
using test::sameMessage;
using test::xmlOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int WARN = 30000;

const Euid LID = euidOf("0011223344556677");
const PanId XPANID(std::string("8899aabbccddeeff"));
const std::string XPANID_BYTES = "\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF";

const std::string PANID_TEXT = "Zap::fromProtobuf: cannot deserialize PanId";
const std::string SECURITY_TEXT = "Zap::fromProtobuf: cannot deserialize security";
const std::string HOPS_TEXT = "Zap::fromProtobuf: cannot deserialize hops";
const std::string ROUTES_TEXT = "Zap::fromProtobuf: cannot deserialize routes";

using SecurityField = pb::MeshSecurityDataPBuf* (pb::ZapPBuf::*)();
const std::map<std::string, SecurityField> SECURITY_FIELDS = {
    {"trustCenterLinkData", &pb::ZapPBuf::mutable_trustcenterlinkdata},
    {"trustCenterMasterData", &pb::ZapPBuf::mutable_trustcentermasterdata},
    {"trustCurrentNetworkData", &pb::ZapPBuf::mutable_trustcurrentnetworkdata},
    {"trustNextNetworkData", &pb::ZapPBuf::mutable_trustnextnetworkdata},
    {"applicationLinkData", &pb::ZapPBuf::mutable_applicationlinkdata},
    {"applicationMasterData", &pb::ZapPBuf::mutable_applicationmasterdata},
};

void fillSecurity(pb::MeshSecurityDataPBuf* message, unsigned int number) {
  message->set_keytype(static_cast<pb::KeyTypePEnum>(number % 7));
  message->mutable_key()->set_contents(std::string(16, static_cast<char>(number)));
  message->set_outgoingframecounter(number * 10 + 1);
  message->set_incomingframecounter(number * 10 + 2);
  message->set_sequencenumber(number + 3);
  message->mutable_partnerlid()->set_id(number * 10 + 4);
}

void addHop(pb::ZapPBuf& message, unsigned int number) {
  pb::HopPBuf* hop = message.add_hops();
  hop->set_neighbor(number);
  hop->set_lqi(number % 100);
  hop->mutable_neighborlid()->set_id(number * 3);
  hop->set_type(pb::QX_END_DEVICE);
  hop->set_rxonwhenidle(pb::TB_TRUE);
  hop->set_relationship(pb::PREVIOUS_CHILD);
  hop->set_permitjoining(pb::TB_INDETERMINATE);
  hop->set_treedepth(number % 50);
  hop->mutable_neighborpanid()->set_addr(XPANID_BYTES);
}

void addRoute(pb::ZapPBuf& message, unsigned int number) {
  pb::RoutePBuf* route = message.add_routes();
  route->set_destination(number);
  route->set_routestatus(pb::ROUTE_INACTIVE);
  route->set_manytoone(true);
  route->set_nexthop(number + 1);
}

/// Every field with a number of its own.
pb::ZapPBuf filledMessage() {
  pb::ZapPBuf message;
  message.set_ip(0xC0A80001);
  message.set_port(1002);
  message.mutable_id()->set_id(0x7766554433221100);
  message.mutable_xpanid()->set_addr(XPANID_BYTES);
  message.set_panid(1005);
  message.set_channel(106);
  message.set_status(107);
  message.set_iscoordinator(true);
  message.set_radiotxpower(-9);
  message.mutable_timestarted()->set_seconds(1700000010);
  message.set_rollovercount(4000000011U);
  message.set_nobuffercount(12000000000000000012ULL);
  message.set_sid(1013);
  message.set_stackversion(1014);
  message.set_protocolversion(115);
  message.set_stackid(116);
  message.set_configureascoordinator(true);
  fillSecurity(message.mutable_trustcenterlinkdata(), 18);
  fillSecurity(message.mutable_trustcentermasterdata(), 19);
  fillSecurity(message.mutable_trustcurrentnetworkdata(), 20);
  fillSecurity(message.mutable_trustnextnetworkdata(), 21);
  fillSecurity(message.mutable_applicationlinkdata(), 22);
  fillSecurity(message.mutable_applicationmasterdata(), 23);
  addHop(message, 2401);
  addHop(message, 2402);
  message.set_rssi(-25);
  addRoute(message, 2601);
  addRoute(message, 2602);
  addRoute(message, 2603);
  message.set_maxinflightmessages(1027);
  message.set_numinflightmessages(1028);
  message.set_inflightmessageswatermark(129);
  return message;
}

/// Sets every field of `zap`.
void fill(Zap& zap) { EXPECT_FALSE(zap.fromProtobuf(filledMessage())); }

/// `count` routes to 0, 1 and so on.
std::list<Route> routesTo(unsigned int count) {
  std::list<Route> routes;
  for (unsigned int i = 0; i < count; ++i)
    routes.emplace_back(static_cast<unsigned short>(i), 0, ROUTE_ACTIVE, false, false, false);
  return routes;
}

std::vector<std::string> hopLines(const Zap& zap) {
  std::list<Hop> hops;
  zap.getHopList(hops);
  std::vector<std::string> lines;
  for (const Hop& hop : hops) lines.push_back(printed(hop));
  return lines;
}

Hop hopOf(unsigned short sid, const std::string& lid) {
  return {sid, 10, euidOf(lid), 2, true, NEIGHBOR_IS_CHILD, false, 3, XPANID};
}

TEST(Zap, IsBlankByDefault) {
  static_assert(std::has_virtual_destructor_v<Zap>);
  const Zap zap;
  EXPECT_EQ(zap.ip(), 0U);
  EXPECT_EQ(zap.port(), 0);
  EXPECT_EQ(zap.id(), Euid());
  EXPECT_EQ(zap.xpanId(), PanId());
  EXPECT_EQ(zap.panId(), 0);
  EXPECT_EQ(zap.channel(), 0);
  EXPECT_EQ(zap.status(), 0);
  EXPECT_FALSE(zap.coordinator());
  EXPECT_EQ(zap.radioTxPower(), -1);
  EXPECT_EQ(zap.timeStarted(), 0);
  EXPECT_EQ(zap.rolloverCount(), 0U);
  EXPECT_EQ(zap.noBufferCount(), 0U);
  EXPECT_EQ(zap.sid(), 0);
  EXPECT_EQ(zap.stackVersion(), 0);
  EXPECT_EQ(zap.protocolVersion(), 0);
  EXPECT_EQ(zap.stackId(), 0);
  EXPECT_FALSE(zap.configuredAsCoordinator());
  for (const MeshSecurityData* data :
       {&zap.trustCenterLinkData(), &zap.trustCenterMasterData(), &zap.trustCurrentNetworkData(),
        &zap.trustNextNetworkData(), &zap.applicationLinkData(), &zap.applicationMasterData()}) {
    EXPECT_TRUE(*data == 0);
    EXPECT_EQ(data->keyType(), QX_UNKNOWN_KEY);
    EXPECT_EQ(data->outgoingFrameCounter(), 0U);
    EXPECT_EQ(data->incomingFrameCounter(), 0U);
    EXPECT_EQ(data->sequenceNumber(), 0);
  }
  EXPECT_THAT(hopLines(zap), IsEmpty());
  EXPECT_EQ(messageOf(zap)->rssi(), 0);
  EXPECT_EQ(zap.numRoutes(), 0U);
  EXPECT_EQ(zap.maxInflightMessages(), 0);
  EXPECT_EQ(zap.numInflightMessages(), 0);
  EXPECT_EQ(zap.inflightMessagesWatermark(), 0);
}

TEST(Zap, TakesTwelveFieldsAtConstruction) {
  const Zap zap(0xC0A80001, 1002, true, LID, XPANID, 1005, 106, -9, 107, false, 1027, 1028);
  pb::ZapPBuf expected = *messageOf(Zap());
  expected.set_ip(0xC0A80001);
  expected.set_port(1002);
  expected.set_configureascoordinator(true);
  expected.mutable_id()->set_id(0x7766554433221100);
  expected.mutable_xpanid()->set_addr(XPANID_BYTES);
  expected.set_panid(1005);
  expected.set_channel(106);
  expected.set_radiotxpower(-9);
  expected.set_status(107);
  expected.set_maxinflightmessages(1027);
  expected.set_numinflightmessages(1028);
  EXPECT_TRUE(sameMessage(*messageOf(zap), expected));
  const Zap coordinator(0, 0, false, Euid(), PanId(), 0, 0, 0, 0, true, 0, 0);
  EXPECT_TRUE(coordinator.coordinator());
  EXPECT_FALSE(coordinator.configuredAsCoordinator());
  EXPECT_EQ(coordinator.radioTxPower(), 0);
}

TEST(Zap, ShowsEachField) {
  Zap zap;
  fill(zap);
  EXPECT_EQ(zap.ip(), 0xC0A80001U);
  EXPECT_EQ(zap.port(), 1002);
  EXPECT_EQ(zap.id(), LID);
  EXPECT_EQ(zap.xpanId(), XPANID);
  EXPECT_EQ(zap.panId(), 1005);
  EXPECT_EQ(zap.channel(), 106);
  EXPECT_EQ(zap.status(), 107);
  EXPECT_TRUE(zap.coordinator());
  EXPECT_EQ(zap.radioTxPower(), -9);
  EXPECT_EQ(zap.timeStarted(), 1700000010);
  EXPECT_EQ(zap.rolloverCount(), 4000000011U);
  EXPECT_EQ(zap.noBufferCount(), 12000000000000000012ULL);
  EXPECT_EQ(zap.sid(), 1013);
  EXPECT_EQ(zap.stackVersion(), 1014);
  EXPECT_EQ(zap.protocolVersion(), 115);
  EXPECT_EQ(zap.stackId(), 116);
  EXPECT_TRUE(zap.configuredAsCoordinator());
  EXPECT_TRUE(zap.trustCenterLinkData().key() == 18);
  EXPECT_TRUE(zap.trustCenterMasterData().key() == 19);
  EXPECT_TRUE(zap.trustCurrentNetworkData().key() == 20);
  EXPECT_TRUE(zap.trustNextNetworkData().key() == 21);
  EXPECT_TRUE(zap.applicationLinkData().key() == 22);
  EXPECT_TRUE(zap.applicationMasterData().key() == 23);
  EXPECT_EQ(hopLines(zap).size(), 2U);
  EXPECT_EQ(zap.numRoutes(), 3U);
  EXPECT_EQ(zap.maxInflightMessages(), 1027);
  EXPECT_EQ(zap.numInflightMessages(), 1028);
  EXPECT_EQ(zap.inflightMessagesWatermark(), 129);
}

/// One setter of a `Zap`, and what it changes in the message of a blank one.
struct Setter {
  const char* name;
  std::function<void(Zap&)> set;
  std::function<void(pb::ZapPBuf&)> expect;
};

TEST(Zap, SetsOneFieldAtATime) {
  MeshSecurityData data(0);
  EXPECT_FALSE(data.fromProtobuf(filledMessage().trustcenterlinkdata()));
  std::vector<Setter> setters = {
      {"timeStarted", [](Zap& z) { z.timeStarted(-5); },
       [](pb::ZapPBuf& m) { m.mutable_timestarted()->set_seconds(-5); }},
      {"rolloverCount", [](Zap& z) { z.rolloverCount(0xFFFFFFFF); },
       [](pb::ZapPBuf& m) { m.set_rollovercount(0xFFFFFFFF); }},
      {"noBufferCount", [](Zap& z) { z.noBufferCount(0xFFFFFFFFFFFFFFFF); },
       [](pb::ZapPBuf& m) { m.set_nobuffercount(0xFFFFFFFFFFFFFFFF); }},
      {"sid", [](Zap& z) { z.sid(0xFFFF); }, [](pb::ZapPBuf& m) { m.set_sid(0xFFFF); }},
      {"stackVersion", [](Zap& z) { z.stackVersion(0xFFFF); }, [](pb::ZapPBuf& m) { m.set_stackversion(0xFFFF); }},
      {"protocolVersion", [](Zap& z) { z.protocolVersion(0xFF); }, [](pb::ZapPBuf& m) { m.set_protocolversion(0xFF); }},
      {"stackId", [](Zap& z) { z.stackId(0xFF); }, [](pb::ZapPBuf& m) { m.set_stackid(0xFF); }},
      {"inflightMessagesWatermark", [](Zap& z) { z.inflightMessagesWatermark(0xFF); },
       [](pb::ZapPBuf& m) { m.set_inflightmessageswatermark(0xFF); }},
      {"configureAsCoordinator", [](Zap& z) { z.configureAsCoordinator(); },
       [](pb::ZapPBuf& m) { m.set_configureascoordinator(true); }},
  };
  const std::map<std::string, void (Zap::*)(const MeshSecurityData&)> slots = {
      {"trustCenterLinkData", &Zap::trustCenterLinkData},
      {"trustCenterMasterData", &Zap::trustCenterMasterData},
      {"trustCurrentNetworkData", &Zap::trustCurrentNetworkData},
      {"trustNextNetworkData", &Zap::trustNextNetworkData},
      {"applicationLinkData", &Zap::applicationLinkData},
      {"applicationMasterData", &Zap::applicationMasterData},
  };
  for (const auto& [name, slot] : slots) {
    const SecurityField field = SECURITY_FIELDS.at(name);
    const auto set = slot;
    setters.push_back({name.c_str(), [set, &data](Zap& z) { (z.*set)(data); },
                       [field](pb::ZapPBuf& m) { fillSecurity((m.*field)(), 18); }});
  }
  for (const Setter& setter : setters) {
    Zap zap;
    setter.set(zap);
    pb::ZapPBuf expected = *messageOf(Zap());
    setter.expect(expected);
    EXPECT_TRUE(sameMessage(*messageOf(zap), expected)) << setter.name;
  }
}

TEST(Zap, IsKnownByItsEndpointAlone) {
  const auto zapAt = [](unsigned int ip, unsigned short port) {
    return Zap(ip, port, false, LID, XPANID, 1, 2, 3, 4, false, 5, 6);
  };
  Zap other;
  auto message = filledMessage();
  message.set_ip(0x7F000001);
  message.set_port(80);
  EXPECT_FALSE(other.fromProtobuf(message));
  EXPECT_TRUE(zapAt(0x7F000001, 80) == other);
  EXPECT_FALSE(zapAt(0x7F000001, 80) != other);
  EXPECT_FALSE(zapAt(0x7F000001, 80) == zapAt(0x7F000001, 81));
  EXPECT_TRUE(zapAt(0x7F000001, 80) != zapAt(0x7F000001, 81));
  EXPECT_FALSE(zapAt(0x7F000001, 80) == zapAt(0x7F000002, 80));
  EXPECT_TRUE(zapAt(0x7F000001, 80) != zapAt(0x7F000002, 80));
}

TEST(Zap, CopyHasNoRoutesAndAllElse) {
  Zap original;
  fill(original);
  const Zap copy(original);
  EXPECT_EQ(copy.numRoutes(), 0U);
  EXPECT_EQ(hopLines(copy), hopLines(original));
  auto expected = filledMessage();
  expected.clear_routes();
  EXPECT_TRUE(sameMessage(*messageOf(copy), expected));
  EXPECT_EQ(original.numRoutes(), 3U);
}

TEST(Zap, AssignmentKeepsTheRoutesOfItsTarget) {
  Zap original;
  fill(original);
  Zap target;
  target.setRoutes({Route(0x0111, 0x0222, ROUTE_ACTIVE, false, false, false)});
  target.setHopList({hopOf(1, "01")});
  EXPECT_EQ(&(target = original), &target);
  auto expected = filledMessage();
  expected.clear_routes();
  expected.add_routes()->set_destination(0x0111);
  expected.mutable_routes(0)->set_nexthop(0x0222);
  EXPECT_TRUE(sameMessage(*messageOf(target), expected));
}

TEST(Zap, AssignmentToItselfChangesNothing) {
  Zap zap;
  fill(zap);
  const Zap& itself = zap;
  zap = itself;
  EXPECT_TRUE(sameMessage(*messageOf(zap), filledMessage()));
}

TEST(Zap, PrintsItsAddressAsADottedQuad) {
  const std::map<unsigned int, std::string> expected = {{0x7F000001, "127.0.0.1"},
                                                        {0xC0A80001, "192.168.0.1"},
                                                        {0, "0.0.0.0"},
                                                        {0xFFFFFFFF, "255.255.255.255"},
                                                        {0x01020304, "1.2.3.4"}};
  for (const auto& [ip, text] : expected) {
    const Zap zap(ip, 0, false, Euid(), PanId(), 0, 0, 0, 0, false, 0, 0);
    EXPECT_EQ(zap.ipStr(), text);
  }
}

TEST(Zap, SetsTheLinkQualityOfAKnownHopAlone) {
  Zap zap;
  zap.setHopList({hopOf(0x0001, "01"), hopOf(0x0002, "02"), hopOf(0x0003, "02")});
  const std::vector<std::string> before = hopLines(zap);
  zap.setHopInfo(0x0009, euidOf("02"), 255);
  std::vector<std::string> expected = before;
  expected[1] =
      "Neighbor: 0x0002 LQI: 255 LID: 0x0200000000000000 DT: QX_ROUTER RX on when idle: true "
      "Relationship: NEIGHBOR_IS_CHILD Permit Joining: false Tree depth: 3 XPANID: 0x8899aabbccddeeff";
  EXPECT_EQ(hopLines(zap), expected);
}

TEST(Zap, AppendsAHopOfWhichNothingMoreIsKnown) {
  Zap zap;
  zap.setHopList({hopOf(0x0009, "01")});
  zap.setHopInfo(0x0009, euidOf("02"), 77);
  ASSERT_EQ(hopLines(zap).size(), 2U);
  EXPECT_EQ(hopLines(zap)[1],
            "Neighbor: 0x0009 LQI: 77 LID: 0x0200000000000000 DT: QX_UNKNOWN_DEVICE RX on when idle: false "
            "Relationship: NONE_OF_THE_ABOVE Permit Joining: false Tree depth: 0 XPANID: 0xffffffffffffffff");
  const Hop& hop = zap.getHop(euidOf("02"));
  EXPECT_EQ(hop.type_, 0);
  EXPECT_TRUE(indeterminate(hop.rx_on_when_idle_));
  EXPECT_TRUE(indeterminate(hop.permit_joining_));
}

TEST(Zap, KeepsOneHopForALongAddress) {
  Zap zap;
  zap.setHopInfo(1, euidOf("01"), 10);
  zap.setHopInfo(2, euidOf("02"), 20);
  zap.setHopInfo(3, euidOf("01"), 30);
  ASSERT_EQ(hopLines(zap).size(), 2U);
  EXPECT_EQ(zap.getHop(euidOf("01")).neighbor_, 1);
  EXPECT_EQ(zap.getHop(euidOf("01")).lqi_, 30);
  EXPECT_EQ(zap.getHop(euidOf("02")).lqi_, 20);
}

TEST(Zap, FindsTheFirstHopByEitherAddress) {
  Zap zap;
  zap.setHopList({hopOf(1, "01"), hopOf(2, "02"), hopOf(2, "03"), hopOf(4, "02")});
  EXPECT_EQ(zap.getHop(euidOf("02")).neighbor_, 2);
  EXPECT_EQ(zap.getHop(static_cast<unsigned short>(2)).neighbor_lid_, euidOf("02"));
  EXPECT_EQ(zap.getHop(static_cast<unsigned short>(4)).neighbor_lid_, euidOf("02"));
  EXPECT_EQ(&zap.getHop(euidOf("01")), &zap.getHop(static_cast<unsigned short>(1)));
}

TEST(Zap, FindsNoHopAsInvalid) {
  Zap zap;
  EXPECT_EQ(&zap.getHop(euidOf("01")), &Hop::INVALID);
  EXPECT_EQ(&zap.getHop(static_cast<unsigned short>(1)), &Hop::INVALID);
  zap.setHopList({hopOf(1, "01")});
  EXPECT_EQ(&zap.getHop(euidOf("02")), &Hop::INVALID);
  EXPECT_EQ(&zap.getHop(static_cast<unsigned short>(2)), &Hop::INVALID);
  EXPECT_EQ(zap.getHop(static_cast<unsigned short>(2)).neighbor_, 0xFFFF);
}

TEST(Zap, ReplacesItsHopListAndTheListGiven) {
  Zap zap;
  zap.setHopList({hopOf(1, "01"), hopOf(1, "01")});
  EXPECT_EQ(hopLines(zap).size(), 2U) << "doubles are kept";
  zap.setHopList({hopOf(3, "03")});
  std::list<Hop> hops(5, Hop::INVALID);
  zap.getHopList(hops);
  ASSERT_EQ(hops.size(), 1U);
  EXPECT_EQ(hops.front().neighbor_, 3);
  zap.setHopList({});
  zap.getHopList(hops);
  EXPECT_TRUE(hops.empty());
}

TEST(Zap, ReplacesItsRoutesAndTheListGiven) {
  Zap zap;
  zap.setRoutes(routesTo(4));
  EXPECT_EQ(zap.numRoutes(), 4U);
  zap.setRoutes(routesTo(2));
  std::list<Route> routes(5, Route::INVALID);
  zap.getRoutes(routes);
  EXPECT_TRUE(routes == routesTo(2));
  EXPECT_EQ(zap.numRoutes(), 2U);
}

void expectNoRoute(const Zap& zap, unsigned int index) {
  try {
    zap.getRoute(index);
    ADD_FAILURE() << "route " << index << " of " << zap.numRoutes();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Invalid index.");
  }
}

TEST(Zap, HasNoRouteInAnEmptyList) {
  for (const unsigned int index : {0U, 1U, 256U, 0xFFFFFFFFU}) expectNoRoute(Zap(), index);
}

TEST(Zap, GivesRoutesByTheirIndex) {
  Zap zap;
  zap.setRoutes(routesTo(3));
  for (unsigned int index = 0; index < 3; ++index) EXPECT_EQ(zap.getRoute(index).destination_, index);
  for (const unsigned int index : {3U, 4U, 256U, 258U, 0xFFFFFFFFU}) expectNoRoute(zap, index);
}

TEST(Zap, GivesNoRouteBeyondIndex255) {
  Zap zap;
  zap.setRoutes(routesTo(300));
  EXPECT_EQ(zap.numRoutes(), 300U);
  EXPECT_EQ(zap.getRoute(0).destination_, 0);
  EXPECT_EQ(zap.getRoute(255).destination_, 255);
  for (const unsigned int index : {256U, 257U, 299U, 300U, 301U, 512U}) expectNoRoute(zap, index);
}

TEST(Zap, ReadsAndWritesEachFieldOfItsMessage) {
  const LogCapture log;
  Zap zap;
  EXPECT_FALSE(zap.fromProtobuf(filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(zap), filledMessage()));
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(Zap, WritesABlankRecordWithAllItsParts) {
  const auto message = messageOf(Zap());
  EXPECT_EQ(message->radiotxpower(), -1);
  EXPECT_TRUE(message->has_id());
  EXPECT_EQ(message->xpanid().addr(), std::string(8, '\0'));
  EXPECT_EQ(message->timestarted().seconds(), 0);
  EXPECT_EQ(message->trustcenterlinkdata().key().contents(), std::string(16, '\0'));
  EXPECT_EQ(message->hops_size(), 0);
  EXPECT_EQ(message->routes_size(), 0);
  Zap zap;
  EXPECT_FALSE(zap.fromProtobuf(*message));
}

TEST(Zap, KeepsItsRoutesInItsMessageUnlikeInACopy) {
  Zap original;
  original.setRoutes(routesTo(300));
  Zap restored;
  restored.setRoutes(routesTo(2));
  EXPECT_FALSE(restored.fromProtobuf(*messageOf(original)));
  std::list<Route> routes;
  restored.getRoutes(routes);
  EXPECT_TRUE(routes == routesTo(300));
}

TEST(Zap, ReplacesItsListsFromAMessage) {
  Zap zap;
  fill(zap);
  auto message = filledMessage();
  message.clear_hops();
  message.clear_routes();
  EXPECT_FALSE(zap.fromProtobuf(message));
  EXPECT_TRUE(sameMessage(*messageOf(zap), message));
}

TEST(Zap, KeepsTheLowBitsOfWiderNumbers) {
  auto message = filledMessage();
  message.set_port(0x10002);
  message.set_panid(0x20003);
  message.set_channel(0x104);
  message.set_status(0x205);
  message.set_radiotxpower(0x17F);
  message.set_sid(0x30006);
  message.set_stackversion(0x40007);
  message.set_protocolversion(0x308);
  message.set_stackid(0x409);
  message.set_rssi(0x280);
  message.set_maxinflightmessages(0x5000A);
  message.set_numinflightmessages(0x6000B);
  message.set_inflightmessageswatermark(0x50C);
  message.mutable_timestarted()->set_seconds(0x1FFFFFFFE);
  auto expected = filledMessage();
  expected.set_port(2);
  expected.set_panid(3);
  expected.set_channel(4);
  expected.set_status(5);
  expected.set_radiotxpower(127);
  expected.set_sid(6);
  expected.set_stackversion(7);
  expected.set_protocolversion(8);
  expected.set_stackid(9);
  expected.set_rssi(-128);
  expected.set_maxinflightmessages(10);
  expected.set_numinflightmessages(11);
  expected.set_inflightmessageswatermark(12);
  expected.mutable_timestarted()->set_seconds(-2);
  Zap zap;
  EXPECT_FALSE(zap.fromProtobuf(message));
  EXPECT_TRUE(sameMessage(*messageOf(zap), expected));
}

/// Reads a message that fails and returns what was logged, all of it warnings.
std::vector<std::string> warningsOf(const pb::ZapPBuf& message, Zap& zap) {
  const LogCapture log;
  EXPECT_TRUE(zap.fromProtobuf(message));
  EXPECT_EQ(log.count(WARN), log.lines().size());
  std::set<int> lines;
  for (const test::LogLine& line : log.lines()) {
    EXPECT_THAT(line.function, testing::HasSubstr("Zap::fromProtobuf"));
    EXPECT_EQ(line.logger, "root");
    lines.insert(line.line);
  }
  EXPECT_EQ(lines.size(), log.lines().size()) << "each stage warns from a line of its own";
  return log.texts();
}

TEST(Zap, ReportsEachStageFromAShortPanIdOn) {
  for (const std::size_t length : {0, 1, 7}) {
    auto message = filledMessage();
    message.mutable_xpanid()->set_addr(XPANID_BYTES.substr(0, length));
    Zap zap;
    EXPECT_THAT(warningsOf(message, zap), ElementsAre(PANID_TEXT, SECURITY_TEXT, HOPS_TEXT, ROUTES_TEXT)) << length;
    auto expected = filledMessage();
    expected.mutable_xpanid()->set_addr(XPANID_BYTES.substr(0, length) + std::string(8 - length, '\0'));
    EXPECT_TRUE(sameMessage(*messageOf(zap), expected)) << length;
  }
}

TEST(Zap, ReportsEachStageFromAShortKeyOn) {
  for (const auto& [name, field] : SECURITY_FIELDS) {
    auto message = filledMessage();
    (message.*field)()->mutable_key()->set_contents("short");
    Zap zap;
    EXPECT_THAT(warningsOf(message, zap), ElementsAre(SECURITY_TEXT, HOPS_TEXT, ROUTES_TEXT)) << name;
    auto expected = filledMessage();
    (expected.*field)()->mutable_key()->set_contents("short" + std::string(11, '\0'));
    EXPECT_TRUE(sameMessage(*messageOf(zap), expected)) << name;
  }
}

TEST(Zap, ReportsEachStageFromAShortHopOn) {
  for (const int index : {0, 1}) {
    auto message = filledMessage();
    message.mutable_hops(index)->mutable_neighborpanid()->set_addr(XPANID_BYTES.substr(0, 7));
    Zap zap;
    EXPECT_THAT(warningsOf(message, zap), ElementsAre(HOPS_TEXT, ROUTES_TEXT)) << index;
    auto expected = filledMessage();
    expected.mutable_hops(index)->mutable_neighborpanid()->set_addr(XPANID_BYTES.substr(0, 7) + "\xFF");
    EXPECT_TRUE(sameMessage(*messageOf(zap), expected)) << index;
  }
}

TEST(Zap, ReportsOnceForAllThatIsBad) {
  auto message = filledMessage();
  message.clear_xpanid();
  message.clear_trustcenterlinkdata();
  message.clear_applicationmasterdata();
  message.mutable_hops(0)->clear_neighborpanid();
  message.mutable_hops(1)->clear_neighborpanid();
  Zap zap;
  EXPECT_THAT(warningsOf(message, zap), ElementsAre(PANID_TEXT, SECURITY_TEXT, HOPS_TEXT, ROUTES_TEXT));
}

TEST(Zap, FailsOnADefaultMessageAndStillSetsTheOtherFields) {
  Zap zap;
  fill(zap);
  EXPECT_THAT(warningsOf(pb::ZapPBuf(), zap), ElementsAre(PANID_TEXT, SECURITY_TEXT, HOPS_TEXT, ROUTES_TEXT));
  auto expected = *messageOf(Zap());
  expected.clear_radiotxpower();
  expected.mutable_xpanid()->set_addr(XPANID_BYTES);
  char number = 18;
  for (const SecurityField field :
       {&pb::ZapPBuf::mutable_trustcenterlinkdata, &pb::ZapPBuf::mutable_trustcentermasterdata,
        &pb::ZapPBuf::mutable_trustcurrentnetworkdata, &pb::ZapPBuf::mutable_trustnextnetworkdata,
        &pb::ZapPBuf::mutable_applicationlinkdata, &pb::ZapPBuf::mutable_applicationmasterdata}) {
    (expected.*field)()->mutable_key()->set_contents(std::string(16, number++));
  }
  EXPECT_TRUE(sameMessage(*messageOf(zap), expected));
}

TEST(Zap, FillsPartsOfANewHopThatTheMessageLacksAsInvalid) {
  auto message = filledMessage();
  message.clear_hops();
  message.add_hops();
  Zap zap;
  EXPECT_THAT(warningsOf(message, zap), ElementsAre(HOPS_TEXT, ROUTES_TEXT));
  EXPECT_EQ(zap.getHop(static_cast<unsigned short>(0)).neighbor_pan_id_, PanId::INVALID);
}

TEST(Zap, LetsABadTruthThroughWithWhatCameBeforeItTaken) {
  auto message = filledMessage();
  addHop(message, 2403);
  message.mutable_hops(1)->set_permitjoining(static_cast<pb::TriboolPEnum>(7));
  Zap zap;
  zap.setRoutes(routesTo(2));
  const LogCapture log;
  try {
    zap.fromProtobuf(message);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "triboolFromProtobuf: invalid tribool");
  }
  EXPECT_THAT(log.texts(), IsEmpty());

  pb::ZapPBuf before = *messageOf(zap);
  EXPECT_THAT(hopLines(zap),
              ElementsAre("Neighbor: 0x0961 LQI: 1 LID: 0x231c000000000000 DT: QX_END_DEVICE RX on when idle: true "
                          "Relationship: PREVIOUS_CHILD Permit Joining: false Tree depth: 1 XPANID: 0x8899aabbccddeeff",
                          "Neighbor: 0x0962 LQI: 2 LID: 0x261c000000000000 DT: QX_END_DEVICE RX on when idle: true "
                          "Relationship: PREVIOUS_CHILD Permit Joining: false Tree depth: 0 XPANID: 0xffffffffffffffff",
                          printed(Hop::INVALID)));
  std::list<Route> routes;
  zap.getRoutes(routes);
  EXPECT_TRUE(routes == routesTo(2));
  before.clear_hops();
  before.clear_routes();
  auto expected = filledMessage();
  expected.clear_hops();
  expected.clear_rssi();
  expected.clear_routes();
  expected.clear_maxinflightmessages();
  expected.clear_numinflightmessages();
  expected.clear_inflightmessageswatermark();
  EXPECT_TRUE(sameMessage(before, expected));
}

TEST(Zap, ReportsWhatWasBadBeforeABadTruth) {
  auto message = filledMessage();
  message.clear_xpanid();
  message.mutable_hops(0)->set_rxonwhenidle(static_cast<pb::TriboolPEnum>(3));
  Zap zap;
  const LogCapture log;
  EXPECT_THROW(zap.fromProtobuf(message), std::runtime_error);
  EXPECT_THAT(log.texts(), ElementsAre(PANID_TEXT, SECURITY_TEXT));
}

std::string securityXml(const std::string& name, unsigned int number) {
  std::string items;
  for (int i = 0; i < 16; ++i) items += "<item>" + std::to_string(number) + "</item>";
  return "<" + name + "><key_type_>" + std::to_string(number % 7) +
         "</key_type_><key_><count>16</count><item_version>0</item_version>" + items +
         "</key_><outgoing_frame_counter_>" + std::to_string(number * 10 + 1) +
         "</outgoing_frame_counter_><incoming_frame_counter_>" + std::to_string(number * 10 + 2) +
         "</incoming_frame_counter_><sequence_number_>" + std::to_string(number + 3) +
         "</sequence_number_><partner_lid_" + ARCHIVE + "><id_>" + std::to_string(number * 10 + 4) +
         "</id_></partner_lid_></" + name + ">";
}

std::string hopXml(unsigned int number) {
  return "<item" + ARCHIVE + "><neighbor_>" + std::to_string(number) + "</neighbor_><lqi_>" +
         std::to_string(number % 100) + "</lqi_><neighbor_lid_" + ARCHIVE + "><id_>" + std::to_string(number * 3) +
         "</id_></neighbor_lid_><type_>3</type_><rx_on_when_idle_" + ARCHIVE +
         "><undetermined>0</undetermined><state>1</state></rx_on_when_idle_><relationship_>4</relationship_>"
         "<permit_joining_" +
         ARCHIVE + "><undetermined>1</undetermined><state>0</state></permit_joining_><tree_depth_>" +
         std::to_string(number % 50) + "</tree_depth_><neighbor_pan_id_" + ARCHIVE +
         "><addr>8899aabbccddeeff</addr></neighbor_pan_id_></item>";
}

TEST(Zap, WritesXmlOfAllButItsRoutes) {
  Zap zap;
  fill(zap);
  EXPECT_EQ(xmlOf(zap, "zap"),
            "<zap" + ARCHIVE + "><ip_>3232235521</ip_><port_>1002</port_><id_" + ARCHIVE +
                "><id_>8603657889541918976</id_></id_><xpanid_" + ARCHIVE +
                "><addr>8899aabbccddeeff</addr></xpanid_><panid_>1005</panid_><channel_>106</channel_>"
                "<status_>107</status_><is_coordinator_>1</is_coordinator_><radio_tx_power_>-9</radio_tx_power_>"
                "<time_started_>1700000010</time_started_><rollover_count_>4000000011</rollover_count_>"
                "<no_buffer_count_>12000000000000000012</no_buffer_count_><sid_>1013</sid_>"
                "<stack_version_>1014</stack_version_><protocol_version_>115</protocol_version_>"
                "<stack_id_>116</stack_id_><configure_as_coordinator_>1</configure_as_coordinator_>" +
                securityXml("trust_center_link_data_", 18) + securityXml("trust_center_master_data_", 19) +
                securityXml("trust_current_network_data_", 20) + securityXml("trust_next_network_data_", 21) +
                securityXml("application_link_data_", 22) + securityXml("application_master_data_", 23) + "<hops_" +
                ARCHIVE + "><count>2</count><item_version>183</item_version>" + hopXml(2401) + hopXml(2402) +
                "</hops_><rssi_>-25</rssi_><max_inflight_messages_>1027</max_inflight_messages_>"
                "<num_inflight_messages_>1028</num_inflight_messages_>"
                "<inflight_messages_watermark_>129</inflight_messages_watermark_></zap>");
}

TEST(Zap, WritesXmlOfABlankRecord) {
  const std::string xml = xmlOf(Zap(), "zap");
  EXPECT_THAT(xml, HasSubstr("<is_coordinator_>0</is_coordinator_><radio_tx_power_>-1</radio_tx_power_>"));
  EXPECT_THAT(xml, HasSubstr("<configure_as_coordinator_>0</configure_as_coordinator_>"));
  EXPECT_THAT(xml, HasSubstr("<hops_" + ARCHIVE + "><count>0</count><item_version>183</item_version></hops_>"));
}

TEST(Zap, LogsNoByteOfAKey) {
  const std::string key = "KEYKEYKEYKEYKEYK";
  auto message = filledMessage();
  for (const auto& [name, field] : SECURITY_FIELDS) (message.*field)()->mutable_key()->set_contents(key);
  auto shortKey = message;
  for (const auto& [name, field] : SECURITY_FIELDS) (shortKey.*field)()->mutable_key()->set_contents(key.substr(1));
  auto shortPanId = message;
  shortPanId.clear_xpanid();
  auto badTruth = shortKey;
  badTruth.mutable_hops(0)->set_rxonwhenidle(static_cast<pb::TriboolPEnum>(3));

  const LogCapture log;
  Zap zap;
  EXPECT_FALSE(zap.fromProtobuf(message));
  EXPECT_TRUE(zap.fromProtobuf(shortKey));
  EXPECT_TRUE(zap.fromProtobuf(shortPanId));
  EXPECT_THROW(zap.fromProtobuf(badTruth), std::runtime_error);
  EXPECT_THAT(xmlOf(zap, "zap"), HasSubstr("<item>75</item><item>69</item><item>89</item>"));
  EXPECT_THAT(messageOf(zap)->SerializeAsString(), HasSubstr("KEYKEY"));

  MeshParameters mesh;
  mesh.preconfiguredKey(MeshSecurityKeyData(key));
  mesh.networkKey(MeshSecurityKeyData(key));
  std::ostringstream out;
  mesh.print(out);
  EXPECT_THAT(out.str(), HasSubstr(key));
  pb::MeshParametersPBuf shortMesh;
  shortMesh.mutable_networkkey()->set_contents(key.substr(1));
  EXPECT_TRUE(mesh.fromProtobuf(shortMesh));
  const std::string xml = xmlOf(mesh, "mesh");
  XmlReader broken(xml.substr(0, xml.size() - 20));
  EXPECT_TRUE(mesh.fromXml(broken));
  EXPECT_THROW(MeshSecurityKeyData(key + "K"), std::runtime_error);

  EXPECT_EQ(log.lines().size(), 8U) << "three of a short key, four of a short PAN id, one before the bad truth";
  for (const std::string& text : log.texts()) {
    for (const char* part : {"KEYK", "EYKE", "YKEY", "4b4559", "4B4559", "4b 45 59", "K  E  Y", "75, 69", "75 69"})
      EXPECT_THAT(text, Not(HasSubstr(part)));
  }
}

}  // namespace
}  // namespace qx

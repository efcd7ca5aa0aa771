#include "vso/mesh/Route.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "Records.h"
#include "vso/proto/RoutePBuf.pb.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::messageOf;
using test::printed;
using test::sameMessage;
using test::stateOf;
using test::xmlOf;

const std::map<int, std::string> STATUS_TEXTS = {
    {0, "ROUTE_ACTIVE"},
    {1, "ROUTE_DISCOVERY_UNDERWAY"},
    {2, "ROUTE_DISCOVERY_FAILED"},
    {3, "ROUTE_INACTIVE"},
    {4, "ROUTE_VALIDATION_UNDERWAY"},
    {5, "ROUTE_UNKNOWN"},
    {6, "ROUTE_UNKNOWN"},
    {9, "ROUTE_UNKNOWN"},
    {-1, "ROUTE_UNKNOWN"},
    {0x100, "ROUTE_UNKNOWN"},
};

TEST(Route, NumbersItsStatus) {
  EXPECT_EQ(ROUTE_ACTIVE, 0);
  EXPECT_EQ(ROUTE_DISCOVERY_UNDERWAY, 1);
  EXPECT_EQ(ROUTE_DISCOVERY_FAILED, 2);
  EXPECT_EQ(ROUTE_INACTIVE, 3);
  EXPECT_EQ(ROUTE_VALIDATION_UNDERWAY, 4);
  EXPECT_EQ(ROUTE_UNKNOWN, 5);
}

TEST(Route, NamesItsStatus) {
  for (const auto& [number, text] : STATUS_TEXTS)
    EXPECT_EQ(Route::toStr(static_cast<RouteStatus>(number)), text) << number;
}

TEST(Route, TakesTheNextHopSecond) {
  static_assert(!std::is_polymorphic_v<Route>);
  static_assert(!std::is_default_constructible_v<Route>);
  static_assert(sizeof(RouteStatus) == 4);
  const Route route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, false, true);
  EXPECT_EQ(route.destination_, 0x1A2B);
  EXPECT_EQ(route.next_hop_, 0x3C4D);
  EXPECT_EQ(route.route_status_, ROUTE_INACTIVE);
  EXPECT_TRUE(route.mem_constrained_);
  EXPECT_FALSE(route.many_to_one_);
  EXPECT_TRUE(route.route_record_required_);
  EXPECT_TRUE(Route(0, 0, ROUTE_ACTIVE, false, true, false).many_to_one_);
}

TEST(Route, InvalidLeadsNowhere) {
  EXPECT_TRUE(Route::INVALID == Route(0xFFFF, 0xFFFF, ROUTE_UNKNOWN, false, false, false));
  EXPECT_EQ(Route::INVALID.destination_, 0xFFFF);
  EXPECT_EQ(Route::INVALID.next_hop_, 0xFFFF);
  EXPECT_EQ(Route::INVALID.route_status_, ROUTE_UNKNOWN);
  EXPECT_FALSE(Route::INVALID.mem_constrained_);
  EXPECT_FALSE(Route::INVALID.many_to_one_);
  EXPECT_FALSE(Route::INVALID.route_record_required_);
}

TEST(Route, ComparesEachOfItsFields) {
  const Route route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, false, true);
  const std::vector<Route> others = {
      Route(0x1A2C, 0x3C4D, ROUTE_INACTIVE, true, false, true),
      Route(0x1A2B, 0x3C4E, ROUTE_INACTIVE, true, false, true),
      Route(0x1A2B, 0x3C4D, ROUTE_ACTIVE, true, false, true),
      Route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, false, false, true),
      Route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, true, true),
      Route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, false, false),
  };
  EXPECT_TRUE(route == Route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, false, true));
  EXPECT_FALSE(route != Route(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, false, true));
  for (const Route& other : others) {
    EXPECT_FALSE(route == other) << other;
    EXPECT_TRUE(route != other) << other;
  }
}

TEST(Route, CopiesEachField) {
  const Route original(0x1A2B, 0x3C4D, ROUTE_INACTIVE, true, true, true);
  const Route constructed(original);
  Route assigned(Route::INVALID);
  assigned = original;
  EXPECT_TRUE(constructed == original);
  EXPECT_TRUE(assigned == original);
}

TEST(Route, PrintsOneLine) {
  EXPECT_EQ(printed(Route(0x1A2B, 0x0C4D, ROUTE_VALIDATION_UNDERWAY, true, false, false)),
            "Destination: 0x1a2b Status: ROUTE_VALIDATION_UNDERWAY Mem Constrained: true Many To One: false "
            "Route Record Required: false Next Hop: 0x0c4d");
  EXPECT_EQ(printed(Route(0x000F, 0, static_cast<RouteStatus>(9), false, true, false)),
            "Destination: 0x000f Status: ROUTE_UNKNOWN Mem Constrained: false Many To One: true "
            "Route Record Required: false Next Hop: 0x0000");
  EXPECT_EQ(printed(Route(1, 2, ROUTE_ACTIVE, false, false, true)),
            "Destination: 0x0001 Status: ROUTE_ACTIVE Mem Constrained: false Many To One: false "
            "Route Record Required: true Next Hop: 0x0002");
}

TEST(Route, LeavesTheStreamInHexadecimalFilledWithZerosAndWithWords) {
  std::ostringstream out;
  EXPECT_EQ(&(out << Route::INVALID), &out);
  EXPECT_EQ(stateOf(out), "00ab true");
}

pb::RoutePBuf filledMessage() {
  pb::RoutePBuf message;
  message.set_destination(1001);
  message.set_routestatus(pb::ROUTE_INACTIVE);
  message.set_memconstrained(true);
  message.set_manytoone(true);
  message.set_routerecordrequired(true);
  message.set_nexthop(1006);
  return message;
}

TEST(Route, ReadsAndWritesEachFieldOfItsMessage) {
  Route route(Route::INVALID);
  EXPECT_FALSE(route.fromProtobuf(filledMessage()));
  EXPECT_TRUE(route == Route(1001, 1006, ROUTE_INACTIVE, true, true, true));
  EXPECT_TRUE(sameMessage(*messageOf(route), filledMessage()));
}

TEST(Route, KeepsItsFlagsApartInItsMessage) {
  const std::map<std::string, std::function<void(pb::RoutePBuf&)>> cleared = {
      {"memConstrained", [](pb::RoutePBuf& m) { m.clear_memconstrained(); }},
      {"manyToOne", [](pb::RoutePBuf& m) { m.clear_manytoone(); }},
      {"routeRecordRequired", [](pb::RoutePBuf& m) { m.clear_routerecordrequired(); }},
  };
  for (const auto& [name, clear] : cleared) {
    pb::RoutePBuf message = filledMessage();
    clear(message);
    Route route(Route::INVALID);
    EXPECT_FALSE(route.fromProtobuf(message));
    EXPECT_EQ(route.mem_constrained_, name != "memConstrained") << name;
    EXPECT_EQ(route.many_to_one_, name != "manyToOne") << name;
    EXPECT_EQ(route.route_record_required_, name != "routeRecordRequired") << name;
    EXPECT_TRUE(sameMessage(*messageOf(route), message)) << name;
  }
}

TEST(Route, KeepsTheLowBitsOfWiderNumbers) {
  pb::RoutePBuf message = filledMessage();
  message.set_destination(0x12345);
  message.set_nexthop(0x6789ABCD);
  Route route(Route::INVALID);
  EXPECT_FALSE(route.fromProtobuf(message));
  EXPECT_EQ(route.destination_, 0x2345);
  EXPECT_EQ(route.next_hop_, 0xABCD);
}

TEST(Route, KeepsAStatusWithoutAName) {
  pb::RoutePBuf message = filledMessage();
  message.set_routestatus(static_cast<pb::RouteStatusPEnum>(77));
  Route route(Route::INVALID);
  EXPECT_FALSE(route.fromProtobuf(message));
  EXPECT_EQ(static_cast<int>(route.route_status_), 77);
  EXPECT_TRUE(sameMessage(*messageOf(route), message));
}

TEST(Route, ReadsADefaultMessageAsZeros) {
  Route route(1, 2, ROUTE_UNKNOWN, true, true, true);
  EXPECT_FALSE(route.fromProtobuf(pb::RoutePBuf()));
  EXPECT_TRUE(route == Route(0, 0, ROUTE_ACTIVE, false, false, false));
}

TEST(Route, WritesXmlWithDigitsForItsFlags) {
  EXPECT_EQ(xmlOf(Route(1001, 1006, ROUTE_INACTIVE, true, false, true), "route"),
            "<route" + ARCHIVE +
                "><destination_>1001</destination_><route_status_>3</route_status_>"
                "<mem_constrained_>1</mem_constrained_><many_to_one_>0</many_to_one_>"
                "<route_record_required_>1</route_record_required_><next_hop_>1006</next_hop_></route>");
  EXPECT_EQ(xmlOf(Route(0xFFFF, 0, ROUTE_UNKNOWN, false, true, false), "item"),
            "<item" + ARCHIVE +
                "><destination_>65535</destination_><route_status_>5</route_status_>"
                "<mem_constrained_>0</mem_constrained_><many_to_one_>1</many_to_one_>"
                "<route_record_required_>0</route_record_required_><next_hop_>0</next_hop_></item>");
}

TEST(Route, PrintsTheSameAgainOnAStreamThatItLeft) {
  const Route route(0x0A, 0x1A2B, ROUTE_ACTIVE, false, true, false);
  const std::string line =
      "Destination: 0x000a Status: ROUTE_ACTIVE Mem Constrained: false Many To One: true Route Record Required: false "
      "Next Hop: 0x1a2b";
  std::ostringstream out;
  out << std::dec;
  out.fill('*');
  out << route << '|' << route;
  EXPECT_EQ(out.str(), line + '|' + line);
}

}  // namespace
}  // namespace qx

#include "vso/zdo/ZdoNetworkRtgResponse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <list>
#include <ostream>
#include <string>
#include <vector>

#include "Frames.h"
#include "support/Bytes.h"
#include "vso/mesh/Route.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::mixedFrame;
using test::ringOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Routes = std::list<Route>;

Routes routesOf(const ZdoNetworkRtgResponse& response) {
  Routes routes;
  response.routes(routes);
  return routes;
}

Routes routesOf(const std::string& frame) { return routesOf(ZdoNetworkRtgResponse(bytesOf(frame))); }

// By the bits of the status.
const RouteStatus STATUSES[] = {ROUTE_ACTIVE,
                                ROUTE_DISCOVERY_UNDERWAY,
                                ROUTE_DISCOVERY_FAILED,
                                ROUTE_INACTIVE,
                                ROUTE_VALIDATION_UNDERWAY,
                                ROUTE_UNKNOWN,
                                ROUTE_UNKNOWN,
                                ROUTE_UNKNOWN};

/// A route as the tables say: `flags` in the order of their bits.
Route routeOf(unsigned int destination, unsigned int flags, unsigned int nextHop) {
  return {static_cast<unsigned short>(destination),
          static_cast<unsigned short>(nextHop),
          STATUSES[flags % 8],
          flags / 8 % 2 == 1,
          flags / 16 % 2 == 1,
          flags / 32 % 2 == 1};
}

/// An entry decoded from the ring on which it lies.
Route decoded(const std::array<unsigned char, 256>& ring, unsigned int entry) {
  const auto at = [&](unsigned int i) { return ring[(5 + 5 * entry + i) % 256]; };
  return routeOf(at(0) + 256 * at(1), at(2), at(3) + 256 * at(4));
}

/// A page of one entry with these flags.
U255Buff<unsigned char> pageWith(unsigned char flags) {
  return bytes({
      0x07, 0x00, 0x02, 0x00, 0x01,  // sequence number, status, total, start index, count
      0x34, 0x12,                    // destination
      flags,                         // status, memory constrained, many-to-one, route record required
      0x78, 0x56                     // next hop
  });
}

TEST(ZdoNetworkRtgResponse, ReadsAPageOfOneRoute) {
  const ZdoNetworkRtgResponse response(pageWith(0x0B));
  EXPECT_EQ(response.seqNum(), 7);
  EXPECT_EQ(response.status(), 0);
  EXPECT_EQ(response.totalRoutingTableEntriesOnDevice(), 2);
  EXPECT_EQ(response.startIndex(), 0);
  EXPECT_EQ(response.entries(), 1);
  EXPECT_THAT(routesOf(response), ElementsAre(Route(0x1234, 0x5678, ROUTE_INACTIVE, true, false, false)));
}

TEST(ZdoNetworkRtgResponse, ReadsAPageOfThreeRoutesInOrder) {
  EXPECT_THAT(routesOf("07 00 30 21 03 "   // sequence number, status, total, start index, count
                       "01 02 00 03 04 "   // first
                       "11 12 11 13 14 "   // second
                       "fe ff 24 fd fc"),  // third
              ElementsAre(Route(0x0201, 0x0403, ROUTE_ACTIVE, false, false, false),
                          Route(0x1211, 0x1413, ROUTE_DISCOVERY_UNDERWAY, false, true, false),
                          Route(0xFFFE, 0xFCFD, ROUTE_VALIDATION_UNDERWAY, false, false, true)));
}

TEST(ZdoNetworkRtgResponse, DecodesNamedFlags) {
  EXPECT_THAT(routesOf(ZdoNetworkRtgResponse(pageWith(0x38))),
              ElementsAre(Route(0x1234, 0x5678, ROUTE_ACTIVE, true, true, true)));
  EXPECT_THAT(routesOf(ZdoNetworkRtgResponse(pageWith(0x07))),
              ElementsAre(Route(0x1234, 0x5678, ROUTE_UNKNOWN, false, false, false)));
  EXPECT_THAT(routesOf(ZdoNetworkRtgResponse(pageWith(0xC0))),
              ElementsAre(Route(0x1234, 0x5678, ROUTE_ACTIVE, false, false, false)));
}

TEST(ZdoNetworkRtgResponse, DecodesEachByteOfFlags) {
  for (unsigned int flags = 0; flags < 256; ++flags) {
    EXPECT_THAT(routesOf(ZdoNetworkRtgResponse(pageWith(static_cast<unsigned char>(flags)))),
                ElementsAre(Route(0x1234, 0x5678, STATUSES[flags & 0x07], (flags & 0x08) != 0, (flags & 0x10) != 0,
                                  (flags & 0x20) != 0)))
        << flags;
  }
}

TEST(ZdoNetworkRtgResponse, EmptiesTheListItIsHanded) {
  Routes routes(3, Route::INVALID);
  ZdoNetworkRtgResponse().routes(routes);
  EXPECT_THAT(routes, IsEmpty());
  routes.assign(3, Route::INVALID);
  ZdoNetworkRtgResponse(bytesOf("07 00 30 21 00 01 02 03 04 05")).routes(routes);
  EXPECT_THAT(routes, IsEmpty());
}

TEST(ZdoNetworkRtgResponse, ReplacesTheListItIsHanded) {
  Routes routes(3, Route::INVALID);
  ZdoNetworkRtgResponse(pageWith(0)).routes(routes);
  EXPECT_THAT(routes, ElementsAre(Route(0x1234, 0x5678, ROUTE_ACTIVE, false, false, false)));
}

TEST(ZdoNetworkRtgResponse, HasNoRoutesInAShortFrame) {
  for (const char* frame : {"", "07", "07 00", "07 00 30", "07 00 30 21"}) {
    EXPECT_THAT(routesOf(frame), IsEmpty()) << frame;
  }
  ZdoNetworkRtgResponse response(pageWith(0));
  for (const unsigned int length : {0U, 1U, 2U, 3U}) {
    response.length_ = length;
    EXPECT_THAT(routesOf(response), IsEmpty()) << length;
  }
}

TEST(ZdoNetworkRtgResponse, TrustsItsCountOverTheLength) {
  ZdoNetworkRtgResponse response(pageWith(0x38));
  for (const unsigned int length : {4U, 5U, 6U, 9U, 10U, 255U, 256U, 0xFFFFFFFFU}) {
    response.length_ = length;
    EXPECT_THAT(routesOf(response), ElementsAre(Route(0x1234, 0x5678, ROUTE_ACTIVE, true, true, true))) << length;
  }
}

TEST(ZdoNetworkRtgResponse, ReadsRoutesOfZerosBehindAReceivedFrame) {
  EXPECT_THAT(routesOf("07 00 30 21 02 34 12 38"), ElementsAre(Route(0x1234, 0, ROUTE_ACTIVE, true, true, true),
                                                               Route(0, 0, ROUTE_ACTIVE, false, false, false)));
}

TEST(ZdoNetworkRtgResponse, TrustsItsCountOverTheStatus) {
  U255Buff<unsigned char> frame = pageWith(0x38);
  for (const int status : {1, 128, 132, 134, 255}) {
    frame.contents[1] = static_cast<unsigned char>(status);
    EXPECT_THAT(routesOf(ZdoNetworkRtgResponse(frame)),
                ElementsAre(Route(0x1234, 0x5678, ROUTE_ACTIVE, true, true, true)))
        << status;
  }
}

TEST(ZdoNetworkRtgResponse, HoldsFiftyWholeRoutes) {
  U255Buff<unsigned char> frame = mixedFrame(1);
  frame.contents[4] = 50;
  for (unsigned int i = 0; i < 5; ++i) frame.contents[250 + i] = static_cast<unsigned char>(0xE0 + i);
  const Routes routes = routesOf(ZdoNetworkRtgResponse(frame));
  ASSERT_EQ(routes.size(), 50U);
  EXPECT_EQ(routes.back(), Route(0xE1E0, 0xE4E3, ROUTE_DISCOVERY_FAILED, false, false, true));
}

TEST(ZdoNetworkRtgResponse, ReadsTheFiftyFirstRouteAroundTheEndOfTheStorage) {
  U255Buff<unsigned char> frame = mixedFrame(1);
  frame.contents[0] = 0xA1;  // sequence number
  frame.contents[1] = 0x0C;  // status
  frame.contents[2] = 0xB2;  // total
  frame.contents[3] = 0xC3;  // start index
  frame.contents[4] = 52;    // count
  frame.contents[5] = 0x13;
  frame.contents[6] = 0xD4;
  frame.contents[7] = 0xE5;
  frame.contents[8] = 0xF6;
  const Routes routes = routesOf(ZdoNetworkRtgResponse(frame));
  ASSERT_EQ(routes.size(), 52U);
  // From offset 255, which reads zero, to 3; the one behind it from 4 to 8.
  EXPECT_EQ(*std::prev(routes.end(), 2), Route(0xA100, 0xC3B2, ROUTE_VALIDATION_UNDERWAY, true, false, false));
  EXPECT_EQ(routes.back(), Route(0x1334, 0xF6E5, ROUTE_VALIDATION_UNDERWAY, false, true, false));
}

TEST(ZdoNetworkRtgResponse, ReadsZeroAtOffset255InEachFieldThatLiesThere) {
  U255Buff<unsigned char> frame(0xFF);
  frame.length_ = 255;
  const Routes routes = routesOf(ZdoNetworkRtgResponse(frame));
  ASSERT_EQ(routes.size(), 255U);
  const Route whole(0xFFFF, 0xFFFF, ROUTE_UNKNOWN, true, true, true);
  unsigned int entry = 0;
  for (const Route& route : routes) {
    switch ((255 - (5 + 5 * entry)) % 256) {  // offset in the entry of the one byte that is zero
      case 0:
        EXPECT_EQ(route, Route(0xFF00, 0xFFFF, ROUTE_UNKNOWN, true, true, true)) << entry;
        break;
      case 1:
        EXPECT_EQ(route, Route(0x00FF, 0xFFFF, ROUTE_UNKNOWN, true, true, true)) << entry;
        break;
      case 2:
        EXPECT_EQ(route, Route(0xFFFF, 0xFFFF, ROUTE_ACTIVE, false, false, false)) << entry;
        break;
      case 3:
        EXPECT_EQ(route, Route(0xFFFF, 0xFF00, ROUTE_UNKNOWN, true, true, true)) << entry;
        break;
      case 4:
        EXPECT_EQ(route, Route(0xFFFF, 0x00FF, ROUTE_UNKNOWN, true, true, true)) << entry;
        break;
      default:
        EXPECT_EQ(route, whole) << entry;
    }
    ++entry;
  }
  EXPECT_EQ(std::count(routes.begin(), routes.end(), whole), 250);
}

TEST(ZdoNetworkRtgResponse, DecodesAsManyRoutesAsItClaims) {
  for (unsigned int salt = 0; salt < 8; ++salt) {
    for (const int count : {1, 49, 50, 51, 52, 101, 102, 128, 254, 255}) {
      U255Buff<unsigned char> frame = mixedFrame(salt);
      frame.contents[4] = static_cast<unsigned char>(count);
      Routes expected;
      for (int entry = 0; entry < count; ++entry) expected.push_back(decoded(ringOf(frame), entry));
      EXPECT_EQ(routesOf(ZdoNetworkRtgResponse(frame)), expected) << "salt " << salt << ", count " << count;
    }
  }
}

TEST(ZdoNetworkRtgResponse, TakesOverAnyResponseUnderItsOwnCommand) {
  const ZdoNetworkRtgResponse response(ZdoResponse(0x1234, pageWith(0)));
  EXPECT_EQ(response.commandId(), 0x8032);
  EXPECT_EQ(routesOf(response).size(), 1U);
}

TEST(ZdoNetworkRtgResponse, StaysAsItWasWhenItIsRead) {
  const ZdoNetworkRtgResponse response(mixedFrame(2));
  EXPECT_EQ(routesOf(response), routesOf(response));
  EXPECT_EQ(test::hex(response), test::hex(mixedFrame(2)));
}

}  // namespace
}  // namespace qx

#include "vso/mesh/SourceRoute.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "Records.h"
#include "vso/proto/SourceRoutePBuf.pb.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::euidOf;
using test::messageOf;
using test::printed;
using test::sameMessage;
using test::stateOf;
using test::xmlOf;
using testing::ElementsAre;

constexpr std::uint64_t ZAP_NUMBER = 0x7766554433221100;
const Euid ZAP = euidOf("0011223344556677");
const Euid OTHER_ZAP = euidOf("0011223344556678");

SourceRoute routeOf(const std::vector<unsigned short>& relays, const Euid& zap = ZAP, unsigned short zapSid = 0x0ABC) {
  return {relays.data(), static_cast<unsigned int>(relays.size()), zap, zapSid};
}

/// `count` relays: 0x1001, 0x1002 and so on.
std::vector<unsigned short> manyRelays(unsigned int count) {
  std::vector<unsigned short> relays;
  for (unsigned int i = 1; i <= count; ++i) relays.push_back(static_cast<unsigned short>(0x1000 + i));
  return relays;
}

std::string digitsOf(const std::vector<unsigned short>& relays) {
  std::string digits;
  for (const unsigned short relay : relays) {
    for (const int shift : {12, 8, 4, 0}) digits += "0123456789abcdef"[relay >> shift & 0xF];
  }
  return digits;
}

std::vector<unsigned short> relaysOf(const SourceRoute& route) {
  return {route.contents, route.contents + route.storedLength()};
}

pb::SourceRoutePBuf messageWith(const std::vector<unsigned short>& relays, unsigned int failures,
                                std::int64_t seconds) {
  pb::SourceRoutePBuf message;
  message.mutable_baseclass();
  for (const unsigned short relay : relays) message.mutable_baseclass()->add_contents(relay);
  message.set_failures(failures);
  message.mutable_zap()->set_id(ZAP_NUMBER);
  message.set_zapsid(0x0ABC);
  message.mutable_timestamp()->set_seconds(seconds);
  return message;
}

/// A route made at a known time.
SourceRoute storedRoute(const std::vector<unsigned short>& relays, unsigned int failures, std::int64_t seconds) {
  SourceRoute route(SourceRoute::INVALID);
  EXPECT_FALSE(route.fromProtobuf(messageWith(relays, failures, seconds)));
  return route;
}

/// All a route holds but its time: relays, access point, short address, failures.
std::string all(const SourceRoute& route) {
  return xmlOf(route, "r").substr(0, xmlOf(route, "r").find("<time_stamp_>"));
}

TEST(SourceRoute, LivesWhollyInItsObject) {
  static_assert(std::is_base_of_v<U255Buff<unsigned short>, SourceRoute>);
  static_assert(std::has_virtual_destructor_v<SourceRoute>);
  static_assert(!std::is_default_constructible_v<SourceRoute>);
  static_assert(sizeof(SourceRoute) >= 510);
  const SourceRoute route = routeOf(manyRelays(255));
  const auto* const begin = reinterpret_cast<const unsigned char*>(&route);
  const auto* const last = reinterpret_cast<const unsigned char*>(&route.contents[254]);
  EXPECT_TRUE(last > begin && last < begin + sizeof route);
}

TEST(SourceRoute, FillsItsStorageWithTheLowByte) {
  const SourceRoute route(0x12AB, ZAP, 0x0ABC);
  EXPECT_EQ(route.length_, 0U);
  for (const unsigned short element : route.contents) EXPECT_EQ(element, 0xABAB);
  EXPECT_EQ(route.failures(), 0U);
  EXPECT_EQ(route.printSourceRouteOrder(" "), "0x0abc");
  EXPECT_EQ(messageOf(route)->zap().id(), ZAP_NUMBER);
}

TEST(SourceRoute, TakesRelaysFromAPointer) {
  const SourceRoute route = routeOf({0x1111, 0x2222, 0x3333});
  EXPECT_EQ(route.length_, 3U);
  EXPECT_THAT(relaysOf(route), ElementsAre(0x1111, 0x2222, 0x3333));
  EXPECT_EQ(route.failures(), 0U);
  EXPECT_EQ(messageOf(route)->zap().id(), ZAP_NUMBER);
  EXPECT_EQ(messageOf(route)->zapsid(), 0x0ABCU);
}

TEST(SourceRoute, TakesAsManyRelaysAsItHolds) { EXPECT_EQ(relaysOf(routeOf(manyRelays(255))), manyRelays(255)); }

TEST(SourceRoute, TakesTheLengthAloneFromNull) {
  const SourceRoute route(static_cast<const unsigned short*>(nullptr), 3, ZAP, 1);
  EXPECT_EQ(route.length_, 3U);
  EXPECT_THAT(relaysOf(route), ElementsAre(0, 0, 0));
}

TEST(SourceRoute, IsStampedWithTheClock) {
  const std::time_t before = std::time(nullptr);
  const SourceRoute filled(0, ZAP, 1);
  const SourceRoute pointed = routeOf({1});
  const SourceRoute read("0001", ZAP, 1);
  const std::time_t after = std::time(nullptr);
  for (const SourceRoute* route : {&filled, &pointed, &read}) {
    EXPECT_GE(route->timeStamp(), before);
    EXPECT_LE(route->timeStamp(), after);
  }
}

TEST(SourceRoute, ReadsFourDigitsARelay) {
  const std::map<std::string, std::vector<unsigned short>> expected = {
      {"", {}},           {"1", {}},          {"123", {}},
      {"12AB", {0x12AB}}, {"12ab", {0x12AB}}, {"0001FfFe8000", {0x0001, 0xFFFE, 0x8000}},
  };
  for (const auto& [text, relays] : expected) {
    const SourceRoute route(text, ZAP, 0x0ABC);
    EXPECT_EQ(route.length_, relays.size()) << text;
    EXPECT_EQ(relaysOf(route), relays) << text;
    EXPECT_EQ(route.failures(), 0U);
    EXPECT_EQ(messageOf(route)->zap().id(), ZAP_NUMBER);
    EXPECT_EQ(messageOf(route)->zapsid(), 0x0ABCU);
  }
}

TEST(SourceRoute, CountsRelaysOfABrokenTextWithoutReadingThem) {
  for (const std::size_t digits : {5, 6, 7}) {
    const SourceRoute route(std::string(digits, '1'), ZAP, 1);
    EXPECT_EQ(route.length_, 1U) << digits;
    EXPECT_EQ(route.head(), 0) << digits;
  }
  const SourceRoute full(std::string(1023, '1'), ZAP, 1);
  EXPECT_EQ(full.length_, 255U);
  EXPECT_EQ(relaysOf(full), std::vector<unsigned short>(255, 0));
}

TEST(SourceRoute, ReadsATextOf255Relays) {
  const SourceRoute route(digitsOf(manyRelays(255)), ZAP, 1);
  EXPECT_EQ(route.length_, 255U);
  EXPECT_EQ(relaysOf(route), manyRelays(255));
}

TEST(SourceRoute, StaysEmptyOnATextOfMoreRelaysThanItHolds) {
  for (const std::size_t digits : {1024, 1025, 1028, 2040, 2043, 2044, 2045, 4096, 65536, 65540, 262144, 262148}) {
    const SourceRoute route(std::string(digits, '1'), ZAP, 0x0ABC);
    EXPECT_EQ(route.length_, 0U) << digits;
    for (const unsigned short element : route.contents) EXPECT_EQ(element, 0) << digits;
    EXPECT_EQ(route.printSourceRouteOrder(" "), "0x0abc") << digits;
  }
}

TEST(SourceRoute, ConstantsAreOneValue) {
  for (const SourceRoute* route : {&SourceRoute::INVALID, &SourceRoute::NULL_ROUTE}) {
    EXPECT_EQ(route->length_, 0U);
    for (const unsigned short element : route->contents) EXPECT_EQ(element, 0);
    EXPECT_EQ(messageOf(*route)->zap().id(), 0U);
    EXPECT_EQ(messageOf(*route)->zapsid(), 0xFFFFU);
    EXPECT_EQ(route->failures(), 0U);
  }
  EXPECT_TRUE(SourceRoute::INVALID == SourceRoute::NULL_ROUTE);
  EXPECT_FALSE(SourceRoute::INVALID != SourceRoute::NULL_ROUTE);
}

TEST(SourceRoute, IsInvalidWithoutRelaysAndAccessPointWhateverItsShortAddress) {
  EXPECT_TRUE(SourceRoute(0, Euid(), 0x1234) == SourceRoute::INVALID);
  EXPECT_FALSE(SourceRoute(0, ZAP, 0xFFFF) == SourceRoute::INVALID);
  EXPECT_FALSE(routeOf({0}, Euid(), 0xFFFF) == SourceRoute::INVALID);
}

TEST(SourceRoute, CopiesAgeAndFailuresToo) {
  const SourceRoute original = storedRoute({0x1111, 0x2222}, 31, 1234567);
  const SourceRoute constructed(original);
  SourceRoute assigned = routeOf({9, 9, 9}, OTHER_ZAP, 9);
  EXPECT_EQ(&(assigned = original), &assigned);
  const auto expected = messageWith({0x1111, 0x2222}, 31, 1234567);
  EXPECT_TRUE(sameMessage(*messageOf(constructed), expected));
  EXPECT_TRUE(sameMessage(*messageOf(assigned), expected));
}

TEST(SourceRoute, AnswersForAnEmptyList) {
  SourceRoute route = routeOf({});
  EXPECT_EQ(route.hops(), 1U);
  EXPECT_EQ(route.head(), -1);
  EXPECT_EQ(route.tail(), -1);
  EXPECT_EQ(route.pop(), -1);
  EXPECT_EQ(route.length_, 0U);
  EXPECT_EQ(printed(route), "neighbor");
  for (unsigned int sid = 0; sid <= 0xFFFF; ++sid) EXPECT_FALSE(route.contains(static_cast<unsigned short>(sid)));
}

TEST(SourceRoute, PopsFromTheNodesEnd) {
  SourceRoute route = routeOf({0x1111, 0x2222, 0xFFFF});
  EXPECT_EQ(route.head(), 0x1111);
  EXPECT_EQ(route.tail(), 0xFFFF);
  EXPECT_EQ(route.hops(), 4U);
  EXPECT_EQ(route.pop(), 0x1111);
  EXPECT_THAT(relaysOf(route), ElementsAre(0x2222, 0xFFFF));
  EXPECT_EQ(route.pop(), 0x2222);
  EXPECT_EQ(route.head(), 0xFFFF);
  EXPECT_EQ(route.tail(), 0xFFFF);
  EXPECT_EQ(route.hops(), 2U);
  EXPECT_EQ(route.pop(), 65535);
  EXPECT_EQ(route.hops(), 1U);
  EXPECT_EQ(route.pop(), -1);
}

TEST(SourceRoute, PopsAllOfAFullList) {
  SourceRoute route = routeOf(manyRelays(255));
  EXPECT_EQ(route.hops(), 256U);
  EXPECT_EQ(route.tail(), 0x10FF);
  for (int relay = 0x1001; relay <= 0x10FF; ++relay) EXPECT_EQ(route.pop(), relay);
  EXPECT_EQ(route.pop(), -1);
}

TEST(SourceRoute, SwapsItsOrderAndNothingElse) {
  const std::map<std::vector<unsigned short>, std::vector<unsigned short>> expected = {
      {{}, {}}, {{1}, {1}}, {{1, 2}, {2, 1}}, {{1, 2, 3}, {3, 2, 1}}, {{1, 2, 3, 4}, {4, 3, 2, 1}}};
  for (const auto& [relays, swapped] : expected) {
    SourceRoute route = storedRoute(relays, 7, 99);
    route.orderSwap();
    EXPECT_TRUE(sameMessage(*messageOf(route), messageWith(swapped, 7, 99)));
    route.orderSwap();
    EXPECT_TRUE(sameMessage(*messageOf(route), messageWith(relays, 7, 99)));
  }
  SourceRoute full = routeOf(manyRelays(255));
  full.orderSwap();
  const std::vector<unsigned short> relays = manyRelays(255);
  EXPECT_EQ(relaysOf(full), std::vector<unsigned short>(relays.rbegin(), relays.rend()));
}

TEST(SourceRoute, ContainsItsRelaysAndNotItsEnds) {
  const SourceRoute route = routeOf({0x1111, 0x2222, 0x3333}, ZAP, 0x0ABC);
  for (const unsigned short relay : {0x1111, 0x2222, 0x3333}) EXPECT_TRUE(route.contains(relay));
  EXPECT_FALSE(route.contains(0x0ABC));
  EXPECT_FALSE(route.contains(0));
  EXPECT_FALSE(route.contains(0x1112));
}

TEST(SourceRoute, DoesNotContainWhatItPopped) {
  SourceRoute route = routeOf({0x1111, 0x2222});
  route.pop();
  EXPECT_FALSE(route.contains(0x1111));
  EXPECT_TRUE(route.contains(0x2222));
  route.pop();
  EXPECT_FALSE(route.contains(0x2222));
}

TEST(SourceRoute, ContainsAnyOfASet) {
  const SourceRoute route = routeOf({0x1111, 0x2222}, ZAP, 0x0ABC);
  EXPECT_TRUE(route.contains(std::set<unsigned short>{0x2222}));
  EXPECT_TRUE(route.contains(std::set<unsigned short>{0, 0x1111, 0xFFFF}));
  EXPECT_FALSE(route.contains(std::set<unsigned short>{0x0ABC, 0, 0x3333}));
  EXPECT_FALSE(route.contains(std::set<unsigned short>()));
  EXPECT_FALSE(routeOf({}).contains(std::set<unsigned short>{0x1111, 0}));
  EXPECT_FALSE(routeOf({}).contains(std::set<unsigned short>()));
}

TEST(SourceRoute, IsBadFromTheThirtiethFailureOn) {
  SourceRoute route = routeOf({1});
  for (unsigned int failures = 1; failures <= 29; ++failures) {
    route.failed(1);
    EXPECT_EQ(route.failures(), failures);
    EXPECT_FALSE(route.bad()) << failures;
  }
  route.failed(1);
  EXPECT_EQ(route.failures(), 30U);
  EXPECT_TRUE(route.bad());
  EXPECT_TRUE(storedRoute({}, 0xFFFFFFFF, 0).bad());
}

TEST(SourceRoute, CountsUpTo255FailuresAtATime) {
  SourceRoute route = routeOf({1});
  route.failed(255);
  EXPECT_EQ(route.failures(), 255U);
  EXPECT_TRUE(route.bad());
  route.failed(0);
  EXPECT_EQ(route.failures(), 255U);
}

TEST(SourceRoute, StopsCountingAtTheVeryMaximumOnly) {
  struct Step {
    unsigned int before;
    unsigned char count;
    unsigned int after;
  };
  for (const Step& step : {Step{0xFFFFFFFF, 1, 0xFFFFFFFF}, Step{0xFFFFFFFF, 255, 0xFFFFFFFF},
                           Step{0xFFFFFFFF, 0, 0xFFFFFFFF}, Step{0xFFFFFFFE, 1, 0xFFFFFFFF}, Step{0xFFFFFFFE, 2, 0},
                           Step{0xFFFFFFFE, 255, 0xFD}, Step{0xFFFFFF00, 255, 0xFFFFFFFF}}) {
    SourceRoute route = storedRoute({1}, step.before, 5);
    route.failed(step.count);
    EXPECT_EQ(route.failures(), step.after) << step.before << " + " << int{step.count};
  }
}

TEST(SourceRoute, ForgetsItsFailuresAndKeepsItsAge) {
  SourceRoute route = storedRoute({0x1111}, 30, 1234567);
  EXPECT_TRUE(route.bad());
  route.clearFailures();
  EXPECT_FALSE(route.bad());
  EXPECT_TRUE(sameMessage(*messageOf(route), messageWith({0x1111}, 0, 1234567)));
}

TEST(SourceRoute, IsNotBadByAge) { EXPECT_FALSE(storedRoute({1}, 0, -2147483648LL).bad()); }

TEST(SourceRoute, ComparesRelaysAndAccessPoint) {
  const SourceRoute route = routeOf({0x1111, 0x2222});
  EXPECT_TRUE(route == routeOf({0x1111, 0x2222}));
  EXPECT_FALSE(route != routeOf({0x1111, 0x2222}));
  const std::map<std::string, SourceRoute> others = {
      {"first relay", routeOf({0x1112, 0x2222})},
      {"last relay, low byte", routeOf({0x1111, 0x2223})},
      {"last relay, high byte", routeOf({0x1111, 0x2322})},
      {"shorter", routeOf({0x1111})},
      {"longer", routeOf({0x1111, 0x2222, 0})},
      {"other order", routeOf({0x2222, 0x1111})},
      {"access point", routeOf({0x1111, 0x2222}, OTHER_ZAP)},
  };
  for (const auto& [what, other] : others) {
    EXPECT_FALSE(route == other) << what;
    EXPECT_TRUE(route != other) << what;
  }
}

TEST(SourceRoute, ComparesTheLastOf255Relays) {
  SourceRoute route = routeOf(manyRelays(255));
  EXPECT_TRUE(route == routeOf(manyRelays(255)));
  route.contents[254] = 0;
  EXPECT_FALSE(route == routeOf(manyRelays(255)));
}

TEST(SourceRoute, ComparesNeitherFailuresNorShortAddressNorTime) {
  const SourceRoute route = storedRoute({0x1111, 0x2222}, 0, 100);
  EXPECT_TRUE(route == storedRoute({0x1111, 0x2222}, 30, 100));
  EXPECT_TRUE(route == storedRoute({0x1111, 0x2222}, 0, 101));
  EXPECT_TRUE(route == routeOf({0x1111, 0x2222}, ZAP, 0x0ABD));
}

TEST(SourceRoute, ComparesNothingBehindItsRelays) {
  SourceRoute popped = routeOf({0x1111, 0x2222});
  popped.pop();
  EXPECT_TRUE(popped == routeOf({0x2222}));
  EXPECT_TRUE(SourceRoute(0xFF, ZAP, 0x0ABC) == SourceRoute(0x00, ZAP, 0x0ABC));
}

TEST(SourceRoute, PrintsRelaysFromTheNodeOn) {
  EXPECT_EQ(printed(routeOf({0x1111, 0x2222})), "0x1111 0x2222");
  EXPECT_EQ(printed(routeOf({0x000A})), "0x000a");
  EXPECT_EQ(printed(routeOf({0, 0xFFFE, 0xABCD})), "0x0000 0xfffe 0xabcd");
}

TEST(SourceRoute, LeavesTheStreamInHexadecimalFilledWithZeros) {
  std::ostringstream out;
  EXPECT_EQ(&(out << routeOf({1})), &out);
  EXPECT_EQ(stateOf(out), "00ab 1");
}

TEST(SourceRoute, PrintsFromTheAccessPointOutward) {
  SourceRoute route = routeOf({0x1111, 0x2222}, ZAP, 0);
  EXPECT_EQ(route.printSourceRouteOrder(" "), "0x0000 0x2222 0x1111");
  EXPECT_EQ(route.printSourceRouteOrder(" -> "), "0x0000 -> 0x2222 -> 0x1111");
  EXPECT_EQ(route.printSourceRouteOrder(""), "0x00000x22220x1111");
  EXPECT_EQ(printed(route), "0x1111 0x2222");
  EXPECT_EQ(routeOf({}, ZAP, 0xABCD).printSourceRouteOrder(" "), "0xabcd");
}

TEST(SourceRoute, ReadsAndWritesEachFieldOfItsMessage) {
  for (const auto& relays : {std::vector<unsigned short>{}, {0x1111, 0xFFFF, 0}, manyRelays(255)}) {
    const auto message = messageWith(relays, 1002, 1700000005);
    SourceRoute route = routeOf({9, 9}, OTHER_ZAP, 9);
    EXPECT_FALSE(route.fromProtobuf(message));
    EXPECT_EQ(relaysOf(route), relays);
    EXPECT_EQ(route.failures(), 1002U);
    EXPECT_EQ(route.timeStamp(), 1700000005);
    EXPECT_EQ(route.printSourceRouteOrder("").substr(0, 6), "0x0abc");
    EXPECT_TRUE(route == routeOf(relays));
    EXPECT_TRUE(sameMessage(*messageOf(route), message));
  }
}

TEST(SourceRoute, ReadsADefaultMessageAsAnEmptyRouteOf1970) {
  SourceRoute route = routeOf({1, 2}, ZAP, 3);
  route.failed(4);
  EXPECT_FALSE(route.fromProtobuf(pb::SourceRoutePBuf()));
  EXPECT_EQ(route.length_, 0U);
  EXPECT_EQ(route.failures(), 0U);
  EXPECT_EQ(route.timeStamp(), 0);
  EXPECT_EQ(messageOf(route)->zap().id(), 0U);
  EXPECT_EQ(messageOf(route)->zapsid(), 0U);
}

TEST(SourceRoute, KeepsTheLowBitsOfWiderNumbers) {
  auto message = messageWith({}, 1, 0);
  message.mutable_baseclass()->add_contents(0x12345);
  message.set_zapsid(0x6789A);
  message.mutable_timestamp()->set_seconds(0x1FFFFFFFF);
  message.mutable_timestamp()->set_nanos(5);
  SourceRoute route(SourceRoute::INVALID);
  EXPECT_FALSE(route.fromProtobuf(message));
  EXPECT_THAT(relaysOf(route), ElementsAre(0x2345));
  EXPECT_EQ(messageOf(route)->zapsid(), 0x789AU);
  EXPECT_EQ(route.timeStamp(), -1);
}

TEST(SourceRoute, FailsOn256RelaysWithAllElseTaken) {
  SourceRoute route = routeOf({0x1111, 0x2222}, OTHER_ZAP, 9);
  EXPECT_TRUE(route.fromProtobuf(messageWith(manyRelays(256), 1002, 1700000005)));
  EXPECT_TRUE(sameMessage(*messageOf(route), messageWith({0x1111, 0x2222}, 1002, 1700000005)));
}

TEST(SourceRoute, WritesXml) {
  EXPECT_EQ(xmlOf(storedRoute({0x0001, 0xABCD}, 1002, 1700000005), "route"),
            "<route" + ARCHIVE +
                "><source_route class_id=\"0\" tracking_level=\"0\" version=\"0\"><contents>0001abcd</contents>"
                "<length_>2</length_></source_route><failures_>1002</failures_><zap_" +
                ARCHIVE +
                "><id_>8603657889541918976</id_></zap_><zap_sid_>2748</zap_sid_>"
                "<time_stamp_>1700000005</time_stamp_></route>");
}

TEST(SourceRoute, WritesXmlOfAnEmptyRoute) {
  EXPECT_EQ(xmlOf(storedRoute({}, 0xFFFFFFFF, -1), "item"),
            "<item" + ARCHIVE +
                "><source_route class_id=\"0\" tracking_level=\"0\" version=\"0\"><contents></contents>"
                "<length_>0</length_></source_route><failures_>4294967295</failures_><zap_" +
                ARCHIVE +
                "><id_>8603657889541918976</id_></zap_><zap_sid_>2748</zap_sid_>"
                "<time_stamp_>-1</time_stamp_></item>");
}

/// Relays at the end of allocated memory: whatever reads one too many of them is seen by a sanitizer.
SourceRoute oversized(unsigned int count) {
  const std::vector<unsigned short> relays(count, 0x1111);
  return {relays.data(), count, ZAP, 0x0ABC};
}

TEST(SourceRoute, KeepsALengthAboveItsStorageAndTakesNoRelays) {
  for (const unsigned int count : {256U, 300U, 1000U}) {
    const SourceRoute route = oversized(count);
    EXPECT_EQ(route.length_, count);
    EXPECT_EQ(route.hops(), count + 1);
    for (const unsigned short element : route.contents) EXPECT_EQ(element, 0);
  }
}

TEST(SourceRoute, StaysInsideItsStorageWhateverItsLength) {
  for (const unsigned int count : {256U, 300U, 0xFFFFFFFFU}) {
    SourceRoute route(static_cast<const unsigned short*>(nullptr), count, ZAP, 0x0ABC);
    EXPECT_EQ(route.head(), 0);
    EXPECT_EQ(route.tail(), 0);
    EXPECT_TRUE(route.contains(0));
    EXPECT_FALSE(route.contains(0x1111));
    EXPECT_FALSE(route.contains(std::set<unsigned short>{0x1111}));
    EXPECT_TRUE(route == SourceRoute(static_cast<const unsigned short*>(nullptr), count, ZAP, 1));
    EXPECT_FALSE(route == SourceRoute(static_cast<const unsigned short*>(nullptr), count - 1, ZAP, 0x0ABC));
    EXPECT_EQ(route.printSourceRouteOrder(" "), "0x0abc");
    EXPECT_EQ(all(route), "<r" + ARCHIVE +
                              "><source_route class_id=\"0\" tracking_level=\"0\" version=\"0\"><contents>" +
                              std::string(1020, '0') + "</contents><length_>" + std::to_string(count) +
                              "</length_></source_route><failures_>0</failures_><zap_" + ARCHIVE +
                              "><id_>8603657889541918976</id_></zap_><zap_sid_>2748</zap_sid_>");
    EXPECT_EQ(messageOf(route)->baseclass().contents_size(), 255);
    EXPECT_EQ(printed(route).size(), 255 * 7 - 1U);
    route.orderSwap();
    EXPECT_EQ(route.length_, count);
    EXPECT_EQ(route.pop(), 0);
    EXPECT_EQ(route.length_, count - 1);
  }
}

TEST(SourceRoute, CopiesNoListFromALengthAboveTheStorage) {
  const SourceRoute source = oversized(300);
  const SourceRoute constructed(source);
  EXPECT_EQ(constructed.length_, 0U);
  SourceRoute assigned = routeOf({0x1111, 0x2222}, OTHER_ZAP, 9);
  assigned = source;
  EXPECT_THAT(relaysOf(assigned), ElementsAre(0x1111, 0x2222));
  EXPECT_EQ(messageOf(assigned)->zap().id(), ZAP_NUMBER);
  EXPECT_EQ(assigned.printSourceRouteOrder(" "), "0x0abc 0x2222 0x1111");
}

TEST(SourceRoute, PrintsTheSameAgainOnAStreamThatItLeft) {
  std::ostringstream out;
  out << std::dec;
  out.fill('*');
  out << routeOf({0x0A, 0x2222}) << '|' << routeOf({0x0A, 0x2222});
  EXPECT_EQ(out.str(), "0x000a 0x2222|0x000a 0x2222");
}

TEST(SourceRoute, LeavesTheStreamAloneWhenThereIsNoRelay) {
  std::ostringstream out;
  out.fill('*');
  out << routeOf({}) << ' ' << 10;
  EXPECT_EQ(out.str(), "neighbor 10");
  EXPECT_EQ(out.fill(), '*');
}

}  // namespace
}  // namespace qx

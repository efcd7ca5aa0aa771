// The source routes and the tables of a node.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

#include "Nodes.h"
#include "support/LogCapture.h"
#include "vso/node/ZigbeeNode.h"

namespace qx {
namespace {

using test::euidFrom;
using test::FIRST_ZAP;
using test::hopOf;
using test::LogCapture;
using test::messageOf;
using test::routeTo;
using test::sameMessage;
using test::SECOND_ZAP;
using test::sourceRouteOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int INFO = 20000;
constexpr int WARN = 30000;

// Three routes, of which the first and the last lead to one access point.
const SourceRoute LONG_ROUTE = sourceRouteOf({0x1111, 0x2222}, 200, FIRST_ZAP, 0x0ABC, 1);
const SourceRoute DIRECT_ROUTE = sourceRouteOf({}, 0, SECOND_ZAP, 0x0DEF, 2);
const SourceRoute LATER_ROUTE = sourceRouteOf({0x3333}, 0, FIRST_ZAP, 0x0ABC, 3);

const Euid UNKNOWN_ZAP = euidFrom(0x0102030405060708);

ZigbeeNode nodeWith(const ZigbeeNode::Deque& routes) {
  ZigbeeNode node;
  node.lid(euidFrom(test::NODE_LID));
  node.sid(0x1A03);
  node.setSourceRoutes(routes);
  return node;
}

/// What `call` throws as a std::runtime_error; "nothing" if it does not.
std::string thrownBy(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing";
}

/// Whether two routes are the same in everything, also in what does not count for their equality.
testing::AssertionResult isRoute(const SourceRoute& actual, const SourceRoute& expected) {
  return sameMessage(*messageOf(actual), *messageOf(expected));
}

TEST(ZigbeeNodeRoutes, AreCountedAndReadByIndex) {
  const ZigbeeNode node = nodeWith({LONG_ROUTE, DIRECT_ROUTE, LATER_ROUTE});
  EXPECT_EQ(node.numSourceRoutes(), 3U);
  EXPECT_TRUE(isRoute(node.sourceRoutes(0), LONG_ROUTE));
  EXPECT_TRUE(isRoute(node.sourceRoutes(1), DIRECT_ROUTE));
  EXPECT_TRUE(isRoute(node.sourceRoutes(2), LATER_ROUTE));
}

TEST(ZigbeeNodeRoutes, ThrowForAnIndexFromTheirCountOnAndLogNothing) {
  const LogCapture capture;
  const ZigbeeNode node = nodeWith({LONG_ROUTE, DIRECT_ROUTE});
  for (const unsigned int index : {2U, 3U, 256U, 0xFFFFFFFFU})
    EXPECT_EQ(thrownBy([&] { node.sourceRoutes(index); }), "Invalid index.") << index;
  for (const unsigned int index : {0U, 1U, 0xFFFFFFFFU})
    EXPECT_EQ(thrownBy([&] { nodeWith({}).sourceRoutes(index); }), "Invalid index.") << index;
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeRoutes, MayBeMoreThanAByteCounts) {
  ZigbeeNode::Deque routes;
  for (unsigned int i = 0; i < 300; ++i) routes.push_back(sourceRouteOf({}, i, FIRST_ZAP, 0, 0));
  const ZigbeeNode node = nodeWith(routes);
  EXPECT_EQ(node.numSourceRoutes(), 300U);
  for (const unsigned int index : {0U, 255U, 256U, 299U}) EXPECT_EQ(node.sourceRoutes(index).failures(), index);
  EXPECT_EQ(thrownBy([&] { node.sourceRoutes(300); }), "Invalid index.");
}

TEST(ZigbeeNodeRoutes, AreCopiedOutOverWhatWasThere) {
  ZigbeeNode::Deque out = {LATER_ROUTE, LATER_ROUTE, LATER_ROUTE};
  nodeWith({LONG_ROUTE, DIRECT_ROUTE}).sourceRoutes(out);
  ASSERT_EQ(out.size(), 2U);
  EXPECT_TRUE(isRoute(out[0], LONG_ROUTE));
  EXPECT_TRUE(isRoute(out[1], DIRECT_ROUTE));
  nodeWith({}).sourceRoutes(out);
  EXPECT_TRUE(out.empty());
}

TEST(ZigbeeNodeRoutes, GiveTheFirstTowardsAnAccessPoint) {
  const LogCapture capture;
  const ZigbeeNode node = nodeWith({LONG_ROUTE, DIRECT_ROUTE, LATER_ROUTE});
  EXPECT_TRUE(isRoute(node.getSourceRoute(euidFrom(FIRST_ZAP)), LONG_ROUTE));
  EXPECT_TRUE(isRoute(node.getSourceRoute(euidFrom(SECOND_ZAP)), DIRECT_ROUTE));
  const ZigbeeNode swapped = nodeWith({LATER_ROUTE, LONG_ROUTE});
  EXPECT_TRUE(isRoute(swapped.getSourceRoute(euidFrom(FIRST_ZAP)), LATER_ROUTE));
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeRoutes, WarnAndThrowIfNoneLeadsToAnAccessPoint) {
  const std::string text =
      "ZigbeeNode::getSourceRoute: (0x0011223344556677)(0x1a03): Unable to locate a source route via zap LID: "
      "0x0807060504030201 for node: ";
  struct Case {
    ZigbeeNode::Deque routes;
    std::string printed;
  };
  for (const Case& row :
       {Case{{}, "ROUTES: none"}, Case{{LONG_ROUTE, DIRECT_ROUTE},
                                       "ROUTES: [0]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03, [1]: ROUTE: 0x0def 0x1a03"}}) {
    const LogCapture capture;
    const ZigbeeNode node = nodeWith(row.routes);
    EXPECT_EQ(thrownBy([&] { node.getSourceRoute(UNKNOWN_ZAP); }), text + row.printed);
    EXPECT_THAT(capture.texts(), ElementsAre(text + row.printed));
    EXPECT_EQ(capture.count(WARN), 1U);
  }
}

TEST(ZigbeeNodeRoutes, ThrowTheSameTextIfWarningsAreNotLogged) {
  const LogCapture capture(WARN + 1);
  EXPECT_EQ(thrownBy([] { nodeWith({}).getSourceRoute(UNKNOWN_ZAP); }),
            "ZigbeeNode::getSourceRoute: (0x0011223344556677)(0x1a03): Unable to locate a source route via zap LID: "
            "0x0807060504030201 for node: ROUTES: none");
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeRoutes, CountTheHopsOfTheFirstTowardsAnAccessPoint) {
  const LogCapture capture;
  const ZigbeeNode node = nodeWith({LONG_ROUTE, DIRECT_ROUTE, LATER_ROUTE});
  EXPECT_EQ(node.sourceRouteHops(euidFrom(FIRST_ZAP)), 3U);
  EXPECT_EQ(node.sourceRouteHops(euidFrom(SECOND_ZAP)), 1U);
  EXPECT_EQ(node.sourceRouteHops(UNKNOWN_ZAP), 0U);
  EXPECT_EQ(nodeWith({}).sourceRouteHops(euidFrom(FIRST_ZAP)), 0U);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeRoutes, PrintFromTheAccessPointToTheNode) {
  const ZigbeeNode node = nodeWith({});
  EXPECT_EQ(node.printSourceRoute(LONG_ROUTE), "ROUTE: 0x0abc 0x2222 0x1111 0x1a03");
  EXPECT_EQ(node.printSourceRoute(DIRECT_ROUTE), "ROUTE: 0x0def 0x1a03");
  EXPECT_EQ(ZigbeeNode().printSourceRoute(DIRECT_ROUTE), "ROUTE: 0x0def 0xffff");
}

TEST(ZigbeeNodeRoutes, PrintNoneForWhatEqualsTheInvalid) {
  const ZigbeeNode node = nodeWith({});
  EXPECT_EQ(node.printSourceRoute(SourceRoute::INVALID), "ROUTE: none");
  // The short address of the access point does not count, its long address and the relays do.
  EXPECT_EQ(node.printSourceRoute(sourceRouteOf({}, 7, 0, 0x1234, 9)), "ROUTE: none");
  EXPECT_EQ(node.printSourceRoute(sourceRouteOf({}, 0, 1, 0xFFFF, 0)), "ROUTE: 0xffff 0x1a03");
  EXPECT_EQ(node.printSourceRoute(sourceRouteOf({0}, 0, 0, 0xFFFF, 0)), "ROUTE: 0xffff 0x0000 0x1a03");
}

TEST(ZigbeeNodeRoutes, PrintAllWithTheirIndices) {
  const ZigbeeNode node = nodeWith({LONG_ROUTE, SourceRoute::INVALID, DIRECT_ROUTE});
  const std::string text =
      "ROUTES: [0]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03, [1]: ROUTE: none, [2]: ROUTE: 0x0def 0x1a03";
  EXPECT_EQ(node.printSourceRoutes(), text);
  EXPECT_EQ(nodeWith({}).printSourceRoutes({LONG_ROUTE, SourceRoute::INVALID, DIRECT_ROUTE}), text);
  EXPECT_EQ(node.printSourceRoutes({}), "ROUTES: none");
  EXPECT_EQ(nodeWith({}).printSourceRoutes(), "ROUTES: none");
  EXPECT_EQ(nodeWith({DIRECT_ROUTE}).printSourceRoutes(), "ROUTES: [0]: ROUTE: 0x0def 0x1a03");
  ZigbeeNode::Deque many(11, SourceRoute::INVALID);
  EXPECT_EQ(node.printSourceRoutes(many).substr(node.printSourceRoutes(many).rfind(", ")), ", [10]: ROUTE: none");
}

struct Change {
  const char* name;
  ZigbeeNode::Deque now;
  ZigbeeNode::Deque previous;
  /// Behind the tag of the node; null if nothing is logged.
  const char* text;
};

void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }

class ZigbeeNodeRouteChanges : public testing::TestWithParam<Change> {};

TEST_P(ZigbeeNodeRouteChanges, AreLoggedFromTheFirstDifferenceOn) {
  const Change& change = GetParam();
  const ZigbeeNode node = nodeWith(change.now);
  const LogCapture capture;
  node.logRoutingChanges(change.previous);
  if (change.text == nullptr) {
    EXPECT_THAT(capture.texts(), IsEmpty());
  } else {
    EXPECT_THAT(capture.texts(), ElementsAre(std::string("ZigbeeNode::logRoutingChanges: "
                                                         "(0x0011223344556677)(0x1a03): ") +
                                             change.text));
    EXPECT_EQ(capture.count(INFO), 1U);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ZigbeeNodeRouteChanges,
    testing::Values(
        Change{"NothingBeforeAndNow", {}, {}, nullptr}, Change{"NothingNow", {}, {LONG_ROUTE}, nullptr},
        Change{"Same", {LONG_ROUTE, DIRECT_ROUTE}, {LONG_ROUTE, DIRECT_ROUTE}, nullptr},
        Change{"FewerNow", {LONG_ROUTE}, {LONG_ROUTE, DIRECT_ROUTE}, nullptr},
        Change{"LearntAnew", {LONG_ROUTE}, {sourceRouteOf({0x1111, 0x2222}, 0, FIRST_ZAP, 0x0999, 77)}, nullptr},
        Change{"OtherOrder",
               {LONG_ROUTE, DIRECT_ROUTE},
               {DIRECT_ROUTE, LONG_ROUTE},
               "NEW: ROUTES: [0]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03, [1]: ROUTE: 0x0def 0x1a03, OLD: ROUTES: [0]: "
               "ROUTE: 0x0def 0x1a03, [1]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03"},
        Change{"LastDiffers",
               {DIRECT_ROUTE, LONG_ROUTE},
               {DIRECT_ROUTE, LATER_ROUTE},
               "NEW: ROUTES: [0]: ROUTE: 0x0def 0x1a03, [1]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03, OLD: ROUTES: [0]: "
               "ROUTE: 0x0def 0x1a03, [1]: ROUTE: 0x0abc 0x3333 0x1a03"},
        Change{"PreviousIsShorterAndDiffers",
               {DIRECT_ROUTE, LONG_ROUTE},
               {LONG_ROUTE},
               "NEW: ROUTES: [0]: ROUTE: 0x0def 0x1a03, [1]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03, OLD: ROUTES: [0]: "
               "ROUTE: 0x0abc 0x2222 0x1111 0x1a03"},
        Change{"PreviousRunsOut",
               {DIRECT_ROUTE, LONG_ROUTE},
               {DIRECT_ROUTE},
               "NEW: ROUTES: [0]: ROUTE: 0x0def 0x1a03, [1]: ROUTE: 0x0abc 0x2222 0x1111 0x1a03, OLD: ROUTES: [0]: "
               "ROUTE: 0x0def 0x1a03"},
        Change{"NothingBefore", {DIRECT_ROUTE}, {}, "NEW: ROUTES: [0]: ROUTE: 0x0def 0x1a03, OLD: ROUTES: none"}),
    [](const testing::TestParamInfo<Change>& test) { return test.param.name; });

TEST(ZigbeeNodeRoutes, LogNoChangeBelowInfo) {
  const LogCapture capture(INFO + 1);
  nodeWith({DIRECT_ROUTE}).logRoutingChanges({LONG_ROUTE});
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeHops, AreFoundByTheFirstOfAnAddress) {
  ZigbeeNode node;
  Hop first = hopOf(0x1111, 0xA);
  first.lqi_ = 1;
  Hop second = hopOf(0x1111, 0xA);
  second.lqi_ = 2;
  Hop other = hopOf(0x2222, 0xB);
  other.lqi_ = 3;
  node.setHopList({first, second, other});
  EXPECT_EQ(node.getHop(0x1111).lqi_, 1);
  EXPECT_EQ(node.getHop(euidFrom(0xA)).lqi_, 1);
  EXPECT_EQ(node.getHop(0x2222).lqi_, 3);
  EXPECT_EQ(node.getHop(euidFrom(0xB)).lqi_, 3);
}

TEST(ZigbeeNodeHops, AreTheInvalidIfNoneHasAnAddress) {
  const LogCapture capture;
  ZigbeeNode node;
  EXPECT_EQ(&node.getHop(0x1111), &Hop::INVALID);
  EXPECT_EQ(&node.getHop(euidFrom(0xA)), &Hop::INVALID);
  node.setHopList({hopOf(0x1111, 0xA)});
  EXPECT_EQ(&node.getHop(0x1112), &Hop::INVALID);
  EXPECT_EQ(&node.getHop(euidFrom(0x1111)), &Hop::INVALID);
  EXPECT_NE(&node.getHop(0x1111), &Hop::INVALID);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(ZigbeeNodeTables, AreCopiedOutOverWhatWasThere) {
  const ZigbeeNode node = test::filledNode();
  std::list<Hop> hops(5, Hop::INVALID);
  node.getHopList(hops);
  ASSERT_EQ(hops.size(), 2U);
  EXPECT_TRUE(sameMessage(*messageOf(hops.front()), *messageOf(hopOf(4701, 1))));
  EXPECT_TRUE(sameMessage(*messageOf(hops.back()), *messageOf(hopOf(4702, 2))));
  std::list<Route> routes(5, Route::INVALID);
  node.getMtoRouteList(routes);
  EXPECT_EQ(routes, (std::list<Route>{routeTo(4801, 4811), routeTo(4802, 4812)}));
  std::list<AccessPoint> accessPoints(5, AccessPoint::INVALID);
  node.getApTable(accessPoints);
  ASSERT_EQ(accessPoints.size(), 2U);
  EXPECT_TRUE(sameMessage(*messageOf(accessPoints.front()), *messageOf(AccessPoint(4901, 91))));
  EXPECT_TRUE(sameMessage(*messageOf(accessPoints.back()), *messageOf(AccessPoint(4902, 92))));
  std::list<signed char> levels(9, 1);
  node.getEnergyLevelsList(levels);
  EXPECT_EQ(levels, (std::list<signed char>{50, -50, 127, -128}));

  const ZigbeeNode blank;
  blank.getHopList(hops);
  blank.getMtoRouteList(routes);
  blank.getApTable(accessPoints);
  blank.getEnergyLevelsList(levels);
  EXPECT_TRUE(hops.empty() && routes.empty() && accessPoints.empty() && levels.empty());
}

/// One of the two tables that are read by index; row number i says i.
struct IndexedTable {
  const char* name;
  std::function<void(ZigbeeNode&, unsigned int rows)> fill;
  std::function<unsigned int(const ZigbeeNode&)> count;
  std::function<unsigned int(const ZigbeeNode&, unsigned int index)> at;
};

void PrintTo(const IndexedTable& table, std::ostream* out) { *out << table.name; }

class ZigbeeNodeIndexedTables : public testing::TestWithParam<IndexedTable> {
 protected:
  ZigbeeNode filled(unsigned int rows) {
    ZigbeeNode node;
    GetParam().fill(node, rows);
    return node;
  }
};

TEST_P(ZigbeeNodeIndexedTables, AreCounted) {
  for (const unsigned int rows : {0U, 1U, 2U, 255U, 256U, 300U}) EXPECT_EQ(GetParam().count(filled(rows)), rows);
}

TEST_P(ZigbeeNodeIndexedTables, AreReadByIndex) {
  const ZigbeeNode node = filled(300);
  for (unsigned int index = 0; index <= 255; ++index) EXPECT_EQ(GetParam().at(node, index), index);
  EXPECT_EQ(GetParam().at(filled(1), 0), 0U);
}

TEST_P(ZigbeeNodeIndexedTables, ThrowFromTheirCountOnAndLogNothing) {
  const LogCapture capture;
  for (const unsigned int rows : {0U, 1U, 2U, 10U, 255U, 256U}) {
    const ZigbeeNode node = filled(rows);
    for (const unsigned int index : {rows, rows + 1, rows + 256, 1000U, 0xFFFFFFFFU})
      EXPECT_EQ(thrownBy([&] { GetParam().at(node, index); }), "Invalid index.") << rows << ' ' << index;
  }
  EXPECT_EQ(thrownBy([&] { GetParam().at(filled(0), 0); }), "Invalid index.");
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST_P(ZigbeeNodeIndexedTables, HaveNoRowAtAnIndexThatAByteDoesNotHold) {
  const ZigbeeNode node = filled(300);
  for (const unsigned int index : {256U, 257U, 299U, 300U, 511U, 512U})
    EXPECT_EQ(thrownBy([&] { GetParam().at(node, index); }), "Invalid index.") << index;
}

INSTANTIATE_TEST_SUITE_P(Cases, ZigbeeNodeIndexedTables,
                         testing::Values(IndexedTable{"ManyToOneRoutes",
                                                      [](ZigbeeNode& node, unsigned int rows) {
                                                        std::list<Route> table;
                                                        for (unsigned int i = 0; i < rows; ++i)
                                                          table.push_back(routeTo(static_cast<unsigned short>(i), 0));
                                                        node.setMtoRouteList(table);
                                                      },
                                                      [](const ZigbeeNode& node) { return node.numMtoRoutes(); },
                                                      [](const ZigbeeNode& node, unsigned int index) {
                                                        return static_cast<unsigned int>(
                                                            node.getMtoRoute(index).destination_);
                                                      }},
                                         IndexedTable{"AccessPoints",
                                                      [](ZigbeeNode& node, unsigned int rows) {
                                                        std::list<AccessPoint> table;
                                                        for (unsigned int i = 0; i < rows; ++i)
                                                          table.emplace_back(static_cast<unsigned short>(i), 0);
                                                        node.setApTable(table);
                                                      },
                                                      [](const ZigbeeNode& node) { return node.numOfAps(); },
                                                      [](const ZigbeeNode& node, unsigned int index) {
                                                        return static_cast<unsigned int>(
                                                            node.getAp(index).destination_);
                                                      }}),
                         [](const testing::TestParamInfo<IndexedTable>& test) { return test.param.name; });

}  // namespace
}  // namespace qx

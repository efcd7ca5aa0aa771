#include "apps/vso/mesh/TablePages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <list>
#include <optional>
#include <utility>

namespace qx::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

constexpr std::time_t NOON = 1'700'049'600;

std::optional<std::list<int>> take(TablePages<int>& pages, unsigned int total, unsigned int start, std::list<int> rows,
                                   std::time_t time = NOON) {
  return pages.take({total, start, time}, std::move(rows));
}

TEST(TablePages, OfOnePageAreWholeAtOnce) {
  TablePages<int> pages;
  EXPECT_THAT(take(pages, 2, 0, {10, 11}), Optional(ElementsAre(10, 11)));
  EXPECT_THAT(pages.rows(), IsEmpty()) << "the next table begins";
}

TEST(TablePages, AreWholeWithTheLastOne) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 5, 0, {10, 11}));
  EXPECT_FALSE(take(pages, 5, 2, {12, 13}));
  EXPECT_THAT(take(pages, 5, 4, {14}), Optional(ElementsAre(10, 11, 12, 13, 14)));
}

TEST(TablePages, PassOverAPageThatComesTwice) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 5, 0, {10, 11}));
  EXPECT_FALSE(take(pages, 5, 2, {12, 13}));
  EXPECT_FALSE(take(pages, 5, 2, {12, 13}));
  EXPECT_THAT(take(pages, 5, 4, {14}), Optional(ElementsAre(10, 11, 12, 13, 14)));
}

TEST(TablePages, BehindAGapAreDroppedWithAllBeforeIt) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 4, 0, {10}));
  EXPECT_FALSE(take(pages, 4, 2, {12, 13}));
  EXPECT_THAT(pages.rows(), IsEmpty());
  EXPECT_FALSE(take(pages, 4, 1, {11, 12, 13})) << "the first row is lost";
  EXPECT_TRUE(take(pages, 4, 0, {10, 11, 12, 13}));
}

TEST(TablePages, WithoutABeginningAreDropped) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 2, 1, {11}));
  EXPECT_THAT(pages.rows(), IsEmpty());
}

TEST(TablePages, BeginAnewWithTheFirstRow) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 3, 0, {10, 11}));
  EXPECT_FALSE(take(pages, 3, 0, {20}));
  EXPECT_THAT(pages.rows(), ElementsAre(20));
  EXPECT_THAT(take(pages, 3, 1, {21, 22}), Optional(ElementsAre(20, 21, 22)));
}

TEST(TablePages, OfTwoTablesAreNotMixed) {
  for (const unsigned int total : {2U, 3U, 5U}) {
    TablePages<int> pages;
    EXPECT_FALSE(take(pages, 4, 0, {10, 11}));
    EXPECT_FALSE(take(pages, total, 2, {22, 23})) << total;
    EXPECT_THAT(pages.rows(), IsEmpty()) << total;
    EXPECT_FALSE(take(pages, 4, 2, {12, 13})) << total;
  }
}

TEST(TablePages, OfAnotherTableEndTheFirstAlsoIfTheyRepeatItsRows) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 4, 0, {10, 11, 12}));
  EXPECT_FALSE(take(pages, 5, 1, {21}));
  EXPECT_THAT(pages.rows(), IsEmpty());
}

TEST(TablePages, ComeWithinTenMinutes) {
  for (const std::time_t late : {600, -600}) {  // frames may come in another order than they were sent
    TablePages<int> pages;
    EXPECT_FALSE(take(pages, 2, 0, {10}));
    EXPECT_THAT(take(pages, 2, 1, {11}, NOON + late), Optional(ElementsAre(10, 11))) << late;
  }
  for (const std::time_t late : {601, -601}) {
    TablePages<int> pages;
    EXPECT_FALSE(take(pages, 2, 0, {10}));
    EXPECT_FALSE(take(pages, 2, 1, {11}, NOON + late)) << late;
    EXPECT_THAT(pages.rows(), IsEmpty()) << late;
  }
}

TEST(TablePages, OfAnEmptyTableAreWholeAtOnce) {
  TablePages<int> pages;
  EXPECT_THAT(take(pages, 0, 0, {}), Optional(IsEmpty()));
}

TEST(TablePages, WithoutRowsDoNotEndATable) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 2, 0, {}));
  EXPECT_FALSE(take(pages, 2, 0, {10}));
  EXPECT_FALSE(take(pages, 2, 1, {}));
  EXPECT_TRUE(take(pages, 2, 1, {11}));
}

TEST(TablePages, HoldAsManyRowsAsADeviceCanCount) {
  TablePages<int> pages;
  for (unsigned int row = 0; row < 254; ++row) EXPECT_FALSE(take(pages, 255, row, {static_cast<int>(row)}));
  const auto table = take(pages, 255, 254, {254});
  ASSERT_THAT(table, Optional(SizeIs(255)));
  EXPECT_EQ(table->back(), 254);
}

}  // namespace
}  // namespace qx::app

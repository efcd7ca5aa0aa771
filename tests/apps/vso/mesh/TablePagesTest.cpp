#include "apps/vso/mesh/TablePages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>

namespace qx::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

bool take(TablePages<int>& pages, unsigned int total, unsigned int start, std::list<int> page) {
  return pages.take(total, start, page);
}

TEST(TablePages, OfOnePageAreWholeAtOnce) {
  TablePages<int> pages;
  EXPECT_TRUE(take(pages, 2, 0, {10, 11}));
  EXPECT_THAT(pages.rows(), ElementsAre(10, 11));
}

TEST(TablePages, AreWholeWithTheLastOne) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 5, 0, {10, 11}));
  EXPECT_FALSE(take(pages, 5, 2, {12, 13}));
  EXPECT_TRUE(take(pages, 5, 4, {14}));
  EXPECT_THAT(pages.rows(), ElementsAre(10, 11, 12, 13, 14));
}

TEST(TablePages, PassOverAPageThatComesTwice) {
  TablePages<int> pages;
  EXPECT_FALSE(take(pages, 5, 0, {10, 11}));
  EXPECT_FALSE(take(pages, 5, 2, {12, 13}));
  EXPECT_FALSE(take(pages, 5, 2, {12, 13}));
  EXPECT_TRUE(take(pages, 5, 4, {14}));
  EXPECT_THAT(pages.rows(), ElementsAre(10, 11, 12, 13, 14));
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
  EXPECT_TRUE(take(pages, 3, 1, {21, 22}));
  EXPECT_THAT(pages.rows(), ElementsAre(20, 21, 22));
}

TEST(TablePages, OfAnEmptyTableAreWholeAtOnce) {
  TablePages<int> pages;
  EXPECT_TRUE(take(pages, 0, 0, {}));
  EXPECT_THAT(pages.rows(), IsEmpty());
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
  EXPECT_TRUE(take(pages, 255, 254, {254}));
  EXPECT_THAT(pages.rows(), SizeIs(255));
  EXPECT_EQ(pages.rows().back(), 254);
}

}  // namespace
}  // namespace qx::app

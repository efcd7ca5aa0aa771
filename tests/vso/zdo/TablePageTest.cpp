#include "vso/zdo/TablePage.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <type_traits>

#include "Frames.h"
#include "support/Bytes.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"

namespace qx {
namespace {

using test::bytesOf;
using test::mixedFrame;
using test::ringOf;

// Sequence number, status, total, start index, count, and the first byte of an entry.
const char* const HEADER = "07 00 30 21 12 99";

/// "total/start/count" of a page, by each way to ask.
std::string countsOf(unsigned char total, unsigned char start, unsigned char count) {
  return std::to_string(total) + '/' + std::to_string(start) + '/' + std::to_string(count);
}
std::string countsOf(const ZdoResponse& page) {
  return countsOf(detail::TablePage::total(page), detail::TablePage::startIndex(page), detail::TablePage::count(page));
}
std::string countsOf(const ZdoNetworkLqiResponse& page) {
  return countsOf(page.totalNeighborTableEntriesOnDevice(), page.startIndex(), page.entries());
}
std::string countsOf(const ZdoNetworkRtgResponse& page) {
  return countsOf(page.totalRoutingTableEntriesOnDevice(), page.startIndex(), page.entries());
}

template <typename Page>
Page pageOf(const U255Buff<unsigned char>& frame) {
  return Page(frame);
}
template <>
ZdoResponse pageOf<ZdoResponse>(const U255Buff<unsigned char>& frame) {
  return {0x8031, frame};
}

template <typename Page>
class TablePageOf : public testing::Test {};

struct PageName {
  template <typename Page>
  static std::string GetName(int /*index*/) {
    if (std::is_same_v<Page, ZdoNetworkLqiResponse>) return "NetworkLqi";
    if (std::is_same_v<Page, ZdoNetworkRtgResponse>) return "NetworkRtg";
    return "AnyResponse";
  }
};

using Pages = testing::Types<ZdoResponse, ZdoNetworkLqiResponse, ZdoNetworkRtgResponse>;
TYPED_TEST_SUITE(TablePageOf, Pages, PageName);

TYPED_TEST(TablePageOf, ReadsItsCounts) { EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf(HEADER))), "48/33/18"); }

TYPED_TEST(TablePageOf, ReadsEachCountFromOneByteBehindTheLengthOn) {
  struct Row {
    unsigned int length;
    const char* counts;
  };
  for (const auto& [length, counts] :
       {Row{0, "0/0/0"}, Row{1, "0/0/0"}, Row{2, "48/0/0"}, Row{3, "48/33/0"}, Row{4, "48/33/18"}, Row{5, "48/33/18"},
        Row{6, "48/33/18"}, Row{255, "48/33/18"}, Row{256, "48/33/18"}, Row{0xFFFFFFFF, "48/33/18"}}) {
    auto page = pageOf<TypeParam>(bytesOf(HEADER));
    page.length_ = length;
    EXPECT_EQ(countsOf(page), counts) << length;
  }
}

TYPED_TEST(TablePageOf, ReadsZeroWhereAReceivedFrameEnds) {
  EXPECT_EQ(countsOf(pageOf<TypeParam>(U255Buff<unsigned char>())), "0/0/0");
  EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf("07"))), "0/0/0");
  EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf("07 00"))), "0/0/0");
  EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf("07 00 30"))), "48/0/0");
  EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf("07 00 30 21"))), "48/33/0");
  EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf("07 00 30 21 12"))), "48/33/18");
}

TYPED_TEST(TablePageOf, ReadsACountThatAnEarlierFrameLeftBehindTheLength) {
  auto page = pageOf<TypeParam>(bytesOf(HEADER));
  page = pageOf<TypeParam>(bytesOf("08 01"));
  EXPECT_EQ(countsOf(page), "48/0/0");
  page = pageOf<TypeParam>(bytesOf("08 01 02"));
  EXPECT_EQ(countsOf(page), "2/33/0");
  page = pageOf<TypeParam>(bytesOf("08 01 02 03"));
  EXPECT_EQ(countsOf(page), "2/3/18");
}

TYPED_TEST(TablePageOf, ReadsCountsUpTo255WhateverTheStatus) {
  EXPECT_EQ(countsOf(pageOf<TypeParam>(bytesOf("07 84 ff ff ff"))), "255/255/255");
}

template <unsigned int SIZE>
void expectEntriesOnTheRing() {
  for (unsigned int salt = 0; salt < 3; ++salt) {
    ZdoResponse page(0x8031, mixedFrame(salt));
    const std::array<unsigned char, 256> ring = ringOf(page);
    page.length_ = 7;  // entries are taken from wherever they lie
    detail::TableEntries<SIZE> entries(page);
    for (unsigned int entry = 0; entry < 600; ++entry) {
      FrameReader in = entries.next();
      for (unsigned int i = 0; i < SIZE; ++i) {
        ASSERT_EQ(in.u8(), ring[(5 + entry * SIZE + i) % 256]) << "entry " << entry << ", byte " << i;
      }
    }
  }
}

TEST(TableEntries, TakeEachByteOfEachEntryFromTheRing) {
  expectEntriesOnTheRing<22>();
  expectEntriesOnTheRing<5>();
}

TEST(TableEntries, MayHaveAnySizeUpToTheRing) {
  expectEntriesOnTheRing<1>();
  expectEntriesOnTheRing<2>();
  expectEntriesOnTheRing<250>();
  expectEntriesOnTheRing<251>();
  expectEntriesOnTheRing<255>();
  expectEntriesOnTheRing<256>();
}

}  // namespace
}  // namespace qx

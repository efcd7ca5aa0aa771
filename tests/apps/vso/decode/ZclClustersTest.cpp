#include "apps/vso/decode/ZclClusters.h"

#include <gtest/gtest.h>

namespace qx::app {
namespace {

TEST(ZclClusters, HaveTheirPublicNames) {
  constexpr struct {
    unsigned short cluster;
    const char* name;
  } PUBLIC[] = {{0x0000, "Basic"},
                {0x0001, "Power Configuration"},
                {0x0003, "Identify"},
                {0x0004, "Groups"},
                {0x0005, "Scenes"},
                {0x0006, "On/Off"},
                {0x0007, "On/Off Switch Configuration"},
                {0x0008, "Level Control"},
                {0x000A, "Time"},
                {0x0019, "OTA Upgrade"},
                {0x0B05, "Diagnostics"}};
  for (const auto& expected : PUBLIC) {
    const ZclClusterRow* const row = findCluster(0x0104, expected.cluster);
    ASSERT_NE(row, nullptr) << expected.name;
    EXPECT_STREQ(row->name, expected.name);
    EXPECT_EQ(row->cluster, expected.cluster);
  }
}

TEST(ZclClusters, OfTheMakersProfilesHaveNamesToo) {
  ASSERT_NE(findCluster(0xC25D, 0x0001), nullptr);
  EXPECT_STREQ(findCluster(0xC25D, 0x0001)->name, "mesh parameters");
  ASSERT_NE(findCluster(0xC25D, 0x0002), nullptr);
  EXPECT_STREQ(findCluster(0xC25D, 0x0002)->name, "node diagnostics");
  ASSERT_NE(findCluster(0xC25F, 0x0001), nullptr);
  EXPECT_STREQ(findCluster(0xC25F, 0x0001)->name, "announce");
}

TEST(ZclClusters, OfAnotherProfileAreOthers) {
  EXPECT_EQ(findCluster(0xC25D, 0x0006), nullptr);
  EXPECT_EQ(findCluster(0x0105, 0x0006), nullptr);
  EXPECT_EQ(findCluster(0x0103, 0x0006), nullptr);
  EXPECT_EQ(findCluster(0xC25E, 0x0001), nullptr);
}

TEST(ZclClusters, AreUnknownOutsideTheTable) {
  EXPECT_EQ(findCluster(0x0104, 0x0002), nullptr);
  EXPECT_EQ(findCluster(0x0104, 0xFFFF), nullptr);
}

}  // namespace
}  // namespace qx::app

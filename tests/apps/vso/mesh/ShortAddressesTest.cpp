#include "apps/vso/mesh/ShortAddresses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "tests/apps/vso/mesh/MeshFrames.h"

namespace qx::app {
namespace {

using testing::IsNull;
using testing::Pointee;

const Euid ONE = test_mesh::LAMP.id();
const Euid OTHER = test_mesh::SENSOR.id();

TEST(ShortAddresses, AreNobodysAtFirst) {
  const ShortAddresses addresses;
  EXPECT_THAT(addresses.ownerOf(0x1A2B), IsNull());
}

TEST(ShortAddresses, GoToWhomTheyAreGiven) {
  ShortAddresses addresses;
  EXPECT_EQ(addresses.give(0x1A2B, ONE), std::nullopt);
  EXPECT_EQ(addresses.give(0x3C4D, OTHER), std::nullopt);
  EXPECT_THAT(addresses.ownerOf(0x1A2B), Pointee(ONE));
  EXPECT_THAT(addresses.ownerOf(0x3C4D), Pointee(OTHER));
}

TEST(ShortAddresses, GivenTwiceStay) {
  ShortAddresses addresses;
  addresses.give(0x1A2B, ONE);
  EXPECT_EQ(addresses.give(0x1A2B, ONE), std::nullopt);
  EXPECT_THAT(addresses.ownerOf(0x1A2B), Pointee(ONE));
}

TEST(ShortAddresses, AreLeftByAnOwnerWhoMoves) {
  ShortAddresses addresses;
  addresses.give(0x1A2B, ONE);
  EXPECT_EQ(addresses.give(0x3C4D, ONE), std::nullopt);
  EXPECT_THAT(addresses.ownerOf(0x1A2B), IsNull());
  EXPECT_THAT(addresses.ownerOf(0x3C4D), Pointee(ONE));
  EXPECT_EQ(addresses.give(0x1A2B, OTHER), std::nullopt);
}

TEST(ShortAddresses, AreTakenFromWhoHadThem) {
  ShortAddresses addresses;
  addresses.give(0x1A2B, ONE);
  EXPECT_EQ(addresses.give(0x1A2B, OTHER), ONE);
  EXPECT_THAT(addresses.ownerOf(0x1A2B), Pointee(OTHER));
  EXPECT_EQ(addresses.give(0x3C4D, ONE), std::nullopt) << "had none any more";
  EXPECT_THAT(addresses.ownerOf(0x1A2B), Pointee(OTHER));
}

TEST(ShortAddresses, AreTakenByAnOwnerWhoMoves) {
  ShortAddresses addresses;
  addresses.give(0x1A2B, ONE);
  addresses.give(0x3C4D, OTHER);
  EXPECT_EQ(addresses.give(0x1A2B, OTHER), ONE);
  EXPECT_THAT(addresses.ownerOf(0x1A2B), Pointee(OTHER));
  EXPECT_THAT(addresses.ownerOf(0x3C4D), IsNull());
}

TEST(ShortAddresses, AreNobodysWhenCleared) {
  ShortAddresses addresses;
  addresses.give(0x1A2B, ONE);
  addresses.clear();
  EXPECT_THAT(addresses.ownerOf(0x1A2B), IsNull());
  EXPECT_EQ(addresses.give(0x1A2B, OTHER), std::nullopt);
}

}  // namespace
}  // namespace qx::app

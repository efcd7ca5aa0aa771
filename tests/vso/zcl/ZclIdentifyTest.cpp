#include "vso/zcl/ZclIdentify.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "support/Bytes.h"

namespace qx {
namespace {

TEST(ZclIdentify, BelongsToItsCluster) {
  EXPECT_EQ(ZclIdentify().getProfileId(), 0x0104);
  EXPECT_EQ(ZclIdentify().getClusterId(), 0x0003);
}

TEST(ZclIdentify, IsAReadResponse) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const ZclIdentify frame;
  EXPECT_EQ(test::hex(frame), test::hex(test::bytes({0x00, sequence, 0x01})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclIdentify, HasNoOtherConstructor) {
  static_assert(!std::is_constructible_v<ZclIdentify, const U255Buff<unsigned char>&>);
  static_assert(!std::is_constructible_v<ZclIdentify, const std::string&>);
  static_assert(!std::is_constructible_v<ZclIdentify, unsigned char>);
  static_assert(std::is_base_of_v<ZclMessage, ZclIdentify>);
}

}  // namespace
}  // namespace qx

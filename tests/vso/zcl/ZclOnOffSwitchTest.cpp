#include "vso/zcl/ZclOnOffSwitch.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "support/Bytes.h"

namespace qx {
namespace {

TEST(ZclOnOffSwitch, BelongsToItsCluster) {
  EXPECT_EQ(ZclOnOffSwitch().getProfileId(), 0x0104);
  EXPECT_EQ(ZclOnOffSwitch().getClusterId(), 0x0007);
}

TEST(ZclOnOffSwitch, IsAClusterFrameWithoutACommand) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const ZclOnOffSwitch frame;
  EXPECT_EQ(test::hex(frame), test::hex(test::bytes({0x01, sequence, 0xFF})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclOnOffSwitch, HasNoOtherConstructor) {
  static_assert(!std::is_constructible_v<ZclOnOffSwitch, const U255Buff<unsigned char>&>);
  static_assert(!std::is_constructible_v<ZclOnOffSwitch, const std::string&>);
  static_assert(!std::is_constructible_v<ZclOnOffSwitch, unsigned char>);
  static_assert(std::is_base_of_v<ZclMessage, ZclOnOffSwitch>);
}

}  // namespace
}  // namespace qx

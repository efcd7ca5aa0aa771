#include "vso/zdo/ZdoPermitJoinResponse.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/Bytes.h"

namespace qx {
namespace {

using test::bytesOf;
using test::hex;

TEST(ZdoPermitJoinResponse, TakesOverAResponseWithItsCommand) {
  const ZdoPermitJoinResponse response(ZdoResponse(0x8036, bytesOf("9c 80")));
  EXPECT_EQ(hex(response), "9c 80");
  EXPECT_EQ(response.seqNum(), 0x9C);
  EXPECT_EQ(response.status(), 128);
  EXPECT_EQ(response.commandId(), 0x8036);
  EXPECT_EQ(ZdoPermitJoinResponse(ZdoResponse(0x1234, bytesOf("9c 80"))).commandId(), 0x1234);
}

TEST(ZdoPermitJoinResponse, IsNotBuiltFromAFrameAlone) {
  static_assert(!std::is_constructible_v<ZdoPermitJoinResponse, const U255Buff<unsigned char>&>);
  EXPECT_EQ(ZdoPermitJoinResponse().status(), 134);
}

}  // namespace
}  // namespace qx

#include "vso/zdo/ZdoLeaveResponse.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Bytes.h"

namespace qx {
namespace {

using test::bytesOf;
using test::hex;

TEST(ZdoLeaveResponse, ReadsSequenceNumberAndStatus) {
  const ZdoLeaveResponse response(bytesOf("9c 84"));
  EXPECT_EQ(hex(response), "9c 84");
  EXPECT_EQ(response.seqNum(), 0x9C);
  EXPECT_EQ(response.status(), 132);
  EXPECT_EQ(response.commandId(), 0x8034);
}

TEST(ZdoLeaveResponse, TakesOverAResponseWithItsCommand) {
  const ZdoLeaveResponse response(ZdoResponse(0x8034, bytesOf("9c 81")));
  EXPECT_EQ(hex(response), "9c 81");
  EXPECT_EQ(response.status(), 129);
  EXPECT_EQ(response.commandId(), 0x8034);
  EXPECT_EQ(ZdoLeaveResponse(ZdoResponse(0x1234, bytesOf("9c 81"))).commandId(), 0x1234);
}

TEST(ZdoLeaveResponse, ReportsNoMatchForAnEmptyResponse) {
  EXPECT_EQ(ZdoLeaveResponse(ZdoResponse(0x8034)).status(), 134);
  EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(ZdoLeaveResponse().status())), "QX_ZDP_NO_MATCH");
}

}  // namespace
}  // namespace qx

#include "vso/zdo/ZdoCommand.h"

#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "vso/identifiers/Euid.h"
#include "vso/zdo/ZdoLeaveRequest.h"
#include "vso/zdo/ZdoLeaveResponse.h"
#include "vso/zdo/ZdoNetworkLqiRequest.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgRequest.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateRequest.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"
#include "vso/zdo/ZdoPermitJoinRequest.h"
#include "vso/zdo/ZdoPermitJoinResponse.h"

namespace qx {
namespace {

TEST(ZdoCommand, NumbersRequests) {
  EXPECT_EQ(ZdoCommand::NETWORK_LQI, 0x0031);
  EXPECT_EQ(ZdoCommand::NETWORK_RTG, 0x0032);
  EXPECT_EQ(ZdoCommand::LEAVE, 0x0034);
  EXPECT_EQ(ZdoCommand::PERMIT_JOIN, 0x0036);
  EXPECT_EQ(ZdoCommand::NETWORK_UPDATE, 0x0038);
}

TEST(ZdoCommand, MarksResponsesByBitFifteen) { EXPECT_EQ(ZdoCommand::RESPONSE, 1 << 15); }

TEST(ZdoCommand, StandsBesideEachRequest) {
  const Euid to;
  EXPECT_EQ(ZdoNetworkLqiRequest(to, 0).commandId(), 0x0031);
  EXPECT_EQ(ZdoNetworkRtgRequest(to, 0).commandId(), 0x0032);
  EXPECT_EQ(ZdoLeaveRequest(to, to, 0).commandId(), 0x0034);
  EXPECT_EQ(ZdoPermitJoinRequest(to, 0, 0).commandId(), 0x0036);
  EXPECT_EQ(ZdoNetworkUpdateRequest(to, 0, 0, 0, 0).commandId(), 0x0038);
  EXPECT_EQ(ZdoNetworkUpdateRequest(test::bytesOf("05")).commandId(), 0x0038);
}

TEST(ZdoCommand, StandsBesideEachResponse) {
  const U255Buff<unsigned char> frame = test::bytesOf("05 00");
  EXPECT_EQ(ZdoNetworkLqiResponse().commandId(), 0x8031);
  EXPECT_EQ(ZdoNetworkLqiResponse(frame).commandId(), 0x8031);
  EXPECT_EQ(ZdoNetworkRtgResponse().commandId(), 0x8032);
  EXPECT_EQ(ZdoNetworkRtgResponse(frame).commandId(), 0x8032);
  EXPECT_EQ(ZdoLeaveResponse().commandId(), 0x8034);
  EXPECT_EQ(ZdoLeaveResponse(frame).commandId(), 0x8034);
  EXPECT_EQ(ZdoPermitJoinResponse().commandId(), 0x8036);
  EXPECT_EQ(ZdoNetworkUpdateResponse().commandId(), 0x8038);
  EXPECT_EQ(ZdoNetworkUpdateResponse(frame).commandId(), 0x8038);
}

}  // namespace
}  // namespace qx

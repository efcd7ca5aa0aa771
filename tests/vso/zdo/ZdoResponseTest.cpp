#include "vso/zdo/ZdoResponse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <string>
#include <type_traits>

#include "Frames.h"
#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/zdo/ZdoLeaveResponse.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"
#include "vso/zdo/ZdoPermitJoinResponse.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::hex;
using test::hexBehind;
using test::mixedFrame;
using test::nextNumber;
using test::zeros;

TEST(ZdoResponse, IsEmptyWithItsCommandAlone) {
  const ZdoResponse response(0x8034);
  EXPECT_EQ(response.length_, 0U);
  EXPECT_EQ(hexBehind(response), zeros(255));
  EXPECT_EQ(response.commandId(), 0x8034);
  EXPECT_EQ(response.seqNum(), 0);
}

TEST(ZdoResponse, TakesAReceivedFrame) {
  const ZdoResponse response(0xFEDC, bytesOf("9c 86 01 02"));
  EXPECT_EQ(hex(response), "9c 86 01 02");
  EXPECT_EQ(hexBehind(response), zeros(251));
  EXPECT_EQ(response.seqNum(), 0x9C);
  EXPECT_EQ(response.status(), 134);
  EXPECT_EQ(response.commandId(), 0xFEDC);
}

TEST(ZdoResponse, HasAVirtualDestructor) {
  static_assert(std::has_virtual_destructor_v<ZdoResponse>);
  static_assert(std::is_base_of_v<U255Buff<unsigned char>, ZdoResponse>);
}

TEST(ZdoResponse, CopiesFrameAndCommand) {
  const ZdoResponse source(0x8034, bytesOf("05 84"));
  const ZdoResponse copy(source);
  ZdoResponse assigned(0x8031);
  assigned = source;
  for (const ZdoResponse& response : {std::cref(copy), std::cref<ZdoResponse>(assigned)}) {
    EXPECT_EQ(hex(response), "05 84");
    EXPECT_EQ(response.commandId(), 0x8034);
    EXPECT_EQ(response.status(), 132);
  }
}

TEST(ZdoResponse, IsEmptyIfTheFrameIsTooLong) {
  U255Buff<unsigned char> frame = mixedFrame(3);
  frame.length_ = 256;
  const ZdoResponse response(0x8034, frame);
  EXPECT_EQ(response.length_, 0U);
  EXPECT_EQ(hexBehind(response), zeros(255));
  EXPECT_EQ(response.status(), 134);
}

TEST(ZdoResponse, KeepsItsFrameIfTheOneAssignedIsTooLong) {
  ZdoResponse source(0x8034, bytesOf("05 84"));
  source.length_ = 256;
  ZdoResponse response(0x8031, bytesOf("06 85"));
  response = source;
  EXPECT_EQ(hex(response), "06 85");
  EXPECT_EQ(response.commandId(), 0x8034);
}

TEST(ZdoResponse, ReadsTheStatusOfOneByteFromBehindIt) {
  EXPECT_EQ(ZdoResponse(0x8034, bytesOf("05")).status(), 0);
  ZdoResponse response(0x8034, bytesOf("05 84"));
  response = ZdoResponse(0x8034, bytesOf("06"));  // leaves the byte behind the frame
  EXPECT_EQ(hex(response), "06");
  EXPECT_EQ(response.status(), 132);
}

TEST(ZdoResponse, TakesNoSequenceNumber) {
  const unsigned char number = nextNumber();
  const ZdoResponse empty(0x8034);
  const ZdoLeaveResponse received(bytesOf("05 84"));
  EXPECT_EQ(ZdoSeqNumPeddler::instance().next(), number);
}

TEST(ZdoResponse, NamesTheStatusOfAnEmptyFrame) {
  EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(134)), "QX_ZDP_NO_MATCH");
  EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(ZdoResponse(0x8034).status())), "QX_ZDP_NO_MATCH");
}

template <typename Response>
struct Expected;
template <>
struct Expected<ZdoLeaveResponse> {
  static constexpr unsigned short COMMAND = 0x8034;
};
template <>
struct Expected<ZdoPermitJoinResponse> {
  static constexpr unsigned short COMMAND = 0x8036;
};
template <>
struct Expected<ZdoNetworkLqiResponse> {
  static constexpr unsigned short COMMAND = 0x8031;
};
template <>
struct Expected<ZdoNetworkRtgResponse> {
  static constexpr unsigned short COMMAND = 0x8032;
};
template <>
struct Expected<ZdoNetworkUpdateResponse> {
  static constexpr unsigned short COMMAND = 0x8038;
};

template <typename Response>
class ZdoResponseOf : public testing::Test {
 protected:
  static constexpr unsigned short COMMAND = Expected<Response>::COMMAND;

  static Response received(const U255Buff<unsigned char>& frame) {
    if constexpr (std::is_constructible_v<Response, const U255Buff<unsigned char>&>) {
      return Response(frame);
    } else {
      return Response(ZdoResponse(COMMAND, frame));
    }
  }
};

struct ResponseName {
  template <typename Response>
  static std::string GetName(int /*index*/) {
    switch (Expected<Response>::COMMAND) {
      case 0x8034:
        return "Leave";
      case 0x8036:
        return "PermitJoin";
      case 0x8031:
        return "NetworkLqi";
      case 0x8032:
        return "NetworkRtg";
      default:
        return "NetworkUpdate";
    }
  }
};

using Responses = testing::Types<ZdoLeaveResponse, ZdoPermitJoinResponse, ZdoNetworkLqiResponse, ZdoNetworkRtgResponse,
                                 ZdoNetworkUpdateResponse>;
TYPED_TEST_SUITE(ZdoResponseOf, Responses, ResponseName);

TYPED_TEST(ZdoResponseOf, IsEmptyByDefaultAndReportsNoMatch) {
  const TypeParam response;
  EXPECT_EQ(response.length_, 0U);
  EXPECT_EQ(hexBehind(response), zeros(255));
  EXPECT_EQ(response.commandId(), this->COMMAND);
  EXPECT_EQ(response.seqNum(), 0);
  EXPECT_EQ(response.status(), 134);
  static_assert(std::is_same_v<decltype(response.status()), unsigned char>);
}

TYPED_TEST(ZdoResponseOf, TakesAReceivedFrame) {
  const TypeParam response = this->received(mixedFrame(4));
  EXPECT_EQ(hex(response), hex(mixedFrame(4)));
  EXPECT_EQ(response.commandId(), this->COMMAND);
  EXPECT_EQ(response.seqNum(), mixedFrame(4).contents[0]);
}

TYPED_TEST(ZdoResponseOf, ReadsEachStatus) {
  for (int status = 0; status < 256; ++status) {
    EXPECT_EQ(this->received(bytes({5, static_cast<unsigned char>(status)})).status(), status);
  }
}

TYPED_TEST(ZdoResponseOf, ReportsNoMatchForAnEmptyFrameAndSuccessForOneByte) {
  EXPECT_EQ(this->received(U255Buff<unsigned char>()).status(), 134);
  EXPECT_EQ(this->received(bytesOf("05")).status(), 0);
}

TYPED_TEST(ZdoResponseOf, ReadsTheStatusBehindACutLength) {
  TypeParam response = this->received(bytesOf("05 c7"));
  response.length_ = 1;
  EXPECT_EQ(response.status(), 0xC7);
  response.length_ = 0;
  EXPECT_EQ(response.status(), 134);
  EXPECT_EQ(response.seqNum(), 5);
  response.length_ = 256;
  EXPECT_EQ(response.status(), 0xC7);
}

TYPED_TEST(ZdoResponseOf, IsEmptyIfTheFrameIsTooLong) {
  U255Buff<unsigned char> frame = mixedFrame(5);
  frame.length_ = 300;
  const TypeParam response = this->received(frame);
  EXPECT_EQ(response.length_, 0U);
  EXPECT_EQ(hexBehind(response), zeros(255));
  EXPECT_EQ(response.status(), 134);
}

TYPED_TEST(ZdoResponseOf, IsCopiedAndAssigned) {
  const TypeParam source = this->received(bytesOf("05 81 01"));
  const TypeParam copy(source);
  TypeParam assigned;
  assigned = source;
  EXPECT_EQ(hex(copy), "05 81 01");
  EXPECT_EQ(hex(assigned), "05 81 01");
  EXPECT_EQ(assigned.commandId(), this->COMMAND);
}

TYPED_TEST(ZdoResponseOf, LogsNothingAboutAnyLength) {
  const test::LogCapture log;
  for (const unsigned int length : {0U, 1U, 2U, 3U, 4U, 5U, 10U, 255U, 256U}) {
    TypeParam response = this->received(mixedFrame(6));
    response.length_ = length;
    response.seqNum();
    response.status();
    if constexpr (std::is_same_v<TypeParam, ZdoNetworkLqiResponse>) {
      std::list<Hop> hops;
      response.hops(hops);
    } else if constexpr (std::is_same_v<TypeParam, ZdoNetworkRtgResponse>) {
      std::list<Route> routes;
      response.routes(routes);
    } else if constexpr (std::is_same_v<TypeParam, ZdoNetworkUpdateResponse>) {
      signed char levels[16];
      response.setEnergyLevels(levels);
    }
  }
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

}  // namespace
}  // namespace qx

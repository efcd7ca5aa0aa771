#include "vso/zdo/ZdoRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>

#include "Frames.h"
#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zdo/ZdoLeaveRequest.h"
#include "vso/zdo/ZdoNetworkLqiRequest.h"
#include "vso/zdo/ZdoNetworkRtgRequest.h"
#include "vso/zdo/ZdoNetworkUpdateRequest.h"
#include "vso/zdo/ZdoPermitJoinRequest.h"

namespace qx {
namespace {

using test::addressOf;
using test::bytesOf;
using test::hex;
using test::hexBehind;
using test::hexOf;
using test::mixedFrame;
using test::nextNumber;
using test::zeros;

const Euid NODE = addressOf("0011223344556677");
const Euid OTHER_NODE = addressOf("8899aabbccddeeff");

TEST(ZdoRequest, HoldsItsSequenceNumberAlone) {
  const unsigned char number = nextNumber();
  const ZdoRequest request(NODE, 0xABCD);
  EXPECT_EQ(hex(request), hexOf(number));
  EXPECT_EQ(hexBehind(request), zeros(254));
  EXPECT_EQ(request.seqNum(), number);
}

TEST(ZdoRequest, HasDestinationAndCommandBesideTheFrame) {
  const ZdoRequest request(NODE, 0xABCD);
  EXPECT_EQ(request.destination(), NODE);
  EXPECT_EQ(request.commandId(), 0xABCD);
  EXPECT_EQ(request.length_, 1U);
  static_assert(std::is_same_v<decltype(request.destination()), const Euid&>);
}

TEST(ZdoRequest, IsDestroyedThroughItsBase) {
  static_assert(std::has_virtual_destructor_v<ZdoRequest>);
  static_assert(std::is_base_of_v<U255Buff<unsigned char>, ZdoRequest>);
  const std::unique_ptr<U255Buff<unsigned char>> frame = std::make_unique<ZdoLeaveRequest>(NODE, NODE, 0);
  EXPECT_EQ(frame->length_, 10U);
}

/// Says at the end of the process which numbers its first requests got.
[[noreturn]] void buildFirstRequests() {
  int numbers[257];
  for (int& number : numbers) number = ZdoRequest(NODE, 0x0031).seqNum();
  static_cast<void>(std::fprintf(stderr, "first %d, %d; 255th %d, %d, %d", numbers[0], numbers[1], numbers[254],
                                 numbers[255], numbers[256]));
  std::_Exit(0);
}

TEST(ZdoRequestDeathTest, HasNumberOneAsTheFirstOfAProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(buildFirstRequests(), testing::ExitedWithCode(0), "first 1, 2; 255th 255, 0, 1");
}

TEST(ZdoRequest, TakesItsNumberApartFromZclFrames) {
  const unsigned char zcl = ZclMessage::transactionSequenceNumber_;
  const unsigned char number = nextNumber();
  const ZclMessage between(0x01, false, true);
  const ZdoRequest request(NODE, 0x0031);
  EXPECT_EQ(request.seqNum(), number);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(zcl + 1));
}

TEST(ZdoRequest, KeepsTheNumberOfAFrameThatIsThere) {
  const unsigned char number = nextNumber();
  const ZdoRequest request(NODE, 0x0034, bytesOf("9c 01 02 03"));
  EXPECT_EQ(hex(request), "9c 01 02 03");
  EXPECT_EQ(hexBehind(request), zeros(251));
  EXPECT_EQ(request.seqNum(), 0x9C);
  EXPECT_EQ(request.destination(), NODE);
  EXPECT_EQ(request.commandId(), 0x0034);
  EXPECT_EQ(ZdoRequest(NODE, 0x0034).seqNum(), number);
}

TEST(ZdoRequest, TakesAnEmptyAndAFullFrame) {
  const ZdoRequest empty(NODE, 0x0034, U255Buff<unsigned char>());
  EXPECT_EQ(empty.length_, 0U);
  EXPECT_EQ(empty.seqNum(), 0);
  const U255Buff<unsigned char> full = mixedFrame(1);
  EXPECT_EQ(hex(ZdoRequest(NODE, 0x0034, full)), hex(full));
}

TEST(ZdoRequest, IsEmptyIfTheFrameIsTooLong) {
  for (const unsigned int length : {256U, 300U, 0xFFFFFFFFU}) {
    U255Buff<unsigned char> frame = mixedFrame(1);
    frame.length_ = length;
    const ZdoRequest request(NODE, 0x0034, frame);
    EXPECT_EQ(request.length_, 0U) << length;
    EXPECT_EQ(hexBehind(request), zeros(255)) << length;
    EXPECT_EQ(request.destination(), NODE);
    EXPECT_EQ(request.commandId(), 0x0034);
  }
}

TEST(ZdoRequest, IsSentAgainWithItsNumber) {
  const ZdoPermitJoinRequest request(NODE, 60, 1);
  const unsigned char number = nextNumber();
  const ZdoPermitJoinRequest copy(request);
  ZdoPermitJoinRequest assigned(OTHER_NODE, 0, 0);
  assigned = request;
  const ZdoRequest base(request);
  for (const ZdoRequest& again : {std::cref<ZdoRequest>(copy), std::cref<ZdoRequest>(assigned), std::cref(base)}) {
    EXPECT_EQ(hex(again), hex(request));
    EXPECT_EQ(again.seqNum(), request.seqNum());
    EXPECT_EQ(again.destination(), NODE);
    EXPECT_EQ(again.commandId(), 0x0036);
  }
  // Only the object that was assigned to took a number, when it was built.
  EXPECT_EQ(ZdoRequest(NODE, 0).seqNum(), static_cast<unsigned char>(number + 1));
}

TEST(ZdoRequest, KeepsItsFrameIfTheOneAssignedIsTooLong) {
  ZdoRequest source(NODE, 0x0034, bytesOf("05 06 07"));
  source.length_ = 256;
  ZdoRequest request(OTHER_NODE, 0x0031, bytesOf("11 12"));
  request = source;
  EXPECT_EQ(hex(request), "11 12");
  EXPECT_EQ(hexBehind(request), zeros(253));
  EXPECT_EQ(request.destination(), NODE);
  EXPECT_EQ(request.commandId(), 0x0034);
}

TEST(ZdoRequest, TakesAnAssignedFrameOf255Bytes) {
  const ZdoRequest source(NODE, 0x0034, mixedFrame(2));
  ZdoRequest request(OTHER_NODE, 0x0031);
  request = source;
  EXPECT_EQ(hex(request), hex(mixedFrame(2)));
}

TEST(ZdoRequest, KeepsWhatItHoldsBehindAShorterAssignedFrame) {
  ZdoRequest request(OTHER_NODE, 0x0031, bytesOf("11 12 13"));
  request = ZdoRequest(NODE, 0x0034, bytesOf("05"));
  EXPECT_EQ(hex(request), "05");
  EXPECT_EQ(hexBehind(request), "12 13 " + zeros(252));
}

TEST(ZdoRequest, IsEmptyAsACopyOfOneThatIsTooLong) {
  ZdoRequest source(NODE, 0x0034, bytesOf("05 06 07"));
  source.length_ = 256;
  const ZdoRequest copy(source);
  EXPECT_EQ(copy.length_, 0U);
  EXPECT_EQ(hexBehind(copy), zeros(255));
  EXPECT_EQ(copy.seqNum(), 0);
  EXPECT_EQ(copy.destination(), NODE);
  EXPECT_EQ(copy.commandId(), 0x0034);
}

TEST(ZdoRequest, IsAssignedToItself) {
  ZdoRequest request(NODE, 0x0034, bytesOf("05 06 07"));
  const ZdoRequest& same = request;
  request = same;
  EXPECT_EQ(hex(request), "05 06 07");
  EXPECT_EQ(request.destination(), NODE);
  EXPECT_EQ(request.commandId(), 0x0034);
}

TEST(ZdoRequest, ReadsItsNumberWhateverTheLength) {
  ZdoRequest request(NODE, 0x0034, bytesOf("05 06"));
  for (const unsigned int length : {0U, 1U, 255U, 256U, 0xFFFFFFFFU}) {
    request.length_ = length;
    EXPECT_EQ(request.seqNum(), 5) << length;
  }
}

/// A class of requests: how one is built anew.
struct Kind {
  const char* name;
  ZdoRequest (*build)();
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class ZdoRequestOf : public testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(
    EachClass, ZdoRequestOf,
    testing::Values(
        Kind{"Base", [] { return ZdoRequest(NODE, 0x1234); }},
        Kind{"Leave", [] { return ZdoRequest(ZdoLeaveRequest(NODE, OTHER_NODE, 0)); }},
        Kind{"PermitJoin", [] { return ZdoRequest(ZdoPermitJoinRequest(NODE, 1, 0)); }},
        Kind{"NetworkLqi", [] { return ZdoRequest(ZdoNetworkLqiRequest(NODE, 1)); }},
        Kind{"NetworkRtg", [] { return ZdoRequest(ZdoNetworkRtgRequest(NODE, 1)); }},
        Kind{"NetworkUpdateScan", [] { return ZdoRequest(ZdoNetworkUpdateRequest(NODE, 0x8000, 1, 1, 1)); }},
        Kind{"NetworkUpdateManager", [] { return ZdoRequest(ZdoNetworkUpdateRequest(NODE, 0x8000, 0xFF, 1, 1)); }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZdoRequestOf, TakesExactlyOneNumber) {
  const unsigned char number = nextNumber();
  EXPECT_EQ(GetParam().build().seqNum(), number);
  EXPECT_EQ(GetParam().build().seqNum(), static_cast<unsigned char>(number + 1));
}

TEST_P(ZdoRequestOf, GoesToItsDestination) { EXPECT_EQ(GetParam().build().destination(), NODE); }

TEST_P(ZdoRequestOf, HoldsZerosBehindItsFrame) {
  const ZdoRequest request = GetParam().build();
  EXPECT_EQ(hexBehind(request), zeros(255 - request.length_));
}

TEST_P(ZdoRequestOf, LogsNothing) {
  const test::LogCapture log;
  ZdoRequest request = GetParam().build();
  request.length_ = 256;
  ZdoRequest copy(request);
  copy = request;
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

}  // namespace
}  // namespace qx

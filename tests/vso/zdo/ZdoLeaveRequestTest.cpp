#include "vso/zdo/ZdoLeaveRequest.h"

#include <gtest/gtest.h>

#include <string>

#include "Frames.h"
#include "support/Bytes.h"

namespace qx {
namespace {

using test::addressOf;
using test::bytes;
using test::bytesOf;
using test::hex;
using test::hexBehind;
using test::hexOf;
using test::nextNumber;
using test::zeros;

const Euid PARENT = addressOf("8899aabbccddeeff");
const Euid DEVICE = addressOf("0011223344556677");

TEST(ZdoLeaveRequest, CarriesAddressAndOptions) {
  const unsigned char number = nextNumber();
  const ZdoLeaveRequest request(PARENT, DEVICE, 0x40);
  EXPECT_EQ(hex(request), hex(bytes({
                              number,                                          // sequence number
                              0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0x00,  // device, least significant byte first
                              0x40                                             // options
                          })));
  EXPECT_EQ(request.length_, 10U);
  EXPECT_EQ(hexBehind(request), zeros(245));
}

TEST(ZdoLeaveRequest, GoesToItsDestinationNotToTheDevice) {
  const ZdoLeaveRequest request(PARENT, DEVICE, 0);
  EXPECT_EQ(request.destination(), PARENT);
  EXPECT_EQ(request.commandId(), 0x0034);
}

TEST(ZdoLeaveRequest, LeavesTheCallersAddressAsItIs) {
  const Euid device(DEVICE);
  const ZdoLeaveRequest request(device, device, 0);
  EXPECT_EQ(device.toString(), "0011223344556677");
  EXPECT_EQ(request.destination().toString(), "0011223344556677");
}

TEST(ZdoLeaveRequest, CarriesAnyOptions) {
  for (int options = 0; options < 256; ++options) {
    const ZdoLeaveRequest request(PARENT, DEVICE, static_cast<unsigned char>(options));
    EXPECT_EQ(hex(request),
              hexOf(request.seqNum()) + " 77 66 55 44 33 22 11 00 " + hexOf(static_cast<unsigned char>(options)));
  }
}

TEST(ZdoLeaveRequest, CarriesTheAddressOfAllOnes) {
  const ZdoLeaveRequest request(PARENT, Euid::ALL, 0);
  EXPECT_EQ(hex(request), hexOf(request.seqNum()) + " ff ff ff ff ff ff ff ff 00");
}

TEST(ZdoLeaveRequest, IsTakenFromARequestWithoutANewNumber) {
  const unsigned char number = nextNumber();
  const ZdoLeaveRequest request(ZdoRequest(DEVICE, 0x0034, bytesOf("9c 77 66 55 44 33 22 11 00 40")));
  EXPECT_EQ(hex(request), "9c 77 66 55 44 33 22 11 00 40");
  EXPECT_EQ(request.seqNum(), 0x9C);
  EXPECT_EQ(request.destination(), DEVICE);
  EXPECT_EQ(request.commandId(), 0x0034);
  EXPECT_EQ(ZdoSeqNumPeddler::instance().next(), number);
}

TEST(ZdoLeaveRequest, TakesOverTheCommandOfARequest) {
  EXPECT_EQ(ZdoLeaveRequest(ZdoRequest(DEVICE, 0x1234, bytesOf("9c"))).commandId(), 0x1234);
}

TEST(ZdoLeaveRequest, IsEmptyAsACopyOfARequestThatIsTooLong) {
  ZdoRequest source(DEVICE, 0x0034, bytesOf("9c 77"));
  source.length_ = 256;
  const ZdoLeaveRequest request(source);
  EXPECT_EQ(request.length_, 0U);
  EXPECT_EQ(hexBehind(request), zeros(255));
  EXPECT_EQ(request.destination(), DEVICE);
}

}  // namespace
}  // namespace qx

#include "vso/zdo/ZdoPermitJoinRequest.h"

#include <gtest/gtest.h>

#include <string>

#include "Frames.h"
#include "support/Bytes.h"

namespace qx {
namespace {

using test::addressOf;
using test::hex;
using test::hexBehind;
using test::hexOf;
using test::nextNumber;
using test::zeros;

const Euid NODE = addressOf("0011223344556677");

TEST(ZdoPermitJoinRequest, CarriesDurationAndSignificance) {
  const unsigned char number = nextNumber();
  const ZdoPermitJoinRequest request(NODE, 60, 1);
  EXPECT_EQ(hex(request), hexOf(number) + " 3c 01");
  EXPECT_EQ(request.length_, 3U);
  EXPECT_EQ(hexBehind(request), zeros(252));
  EXPECT_EQ(request.destination(), NODE);
  EXPECT_EQ(request.commandId(), 0x0036);
}

TEST(ZdoPermitJoinRequest, CarriesAnyBytes) {
  for (int i = 0; i < 256; ++i) {
    const auto duration = static_cast<unsigned char>(i);
    const auto significance = static_cast<unsigned char>(255 - i);
    const ZdoPermitJoinRequest request(NODE, duration, significance);
    EXPECT_EQ(hex(request), hexOf(request.seqNum()) + " " + hexOf(duration) + " " + hexOf(significance));
  }
}

}  // namespace
}  // namespace qx

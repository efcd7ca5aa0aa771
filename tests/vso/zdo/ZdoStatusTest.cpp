#include "vso/zdo/ZdoStatus.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <type_traits>

#include "vso/zdo/ZdoResponse.h"

namespace qx {
namespace {

const std::map<int, std::string> TEXTS = {
    {0, "QX_ZDP_SUCCESS"},
    {128, "QX_ZDP_INVALID_REQUEST_TYPE"},
    {129, "QX_ZDP_DEVICE_NOT_FOUND"},
    {130, "QX_ZDP_INVALID_ENDPOINT"},
    {131, "QX_ZDP_NOT_ACTIVE"},
    {132, "QX_ZDP_NOT_SUPPORTED"},
    {133, "QX_ZDP_TIMEOUT"},
    {134, "QX_ZDP_NO_MATCH"},
    {135, "QX_ZDP_TABLE_FULL"},
    {136, "QX_ZDP_NO_ENTRY"},
    {137, "QX_ZDP_NO_DESCRIPTOR"},
    {197, "QX_NWK_ALREADY_PRESENT"},
    {199, "QX_NWK_TABLE_FULL"},
    {200, "QX_NWK_UNKNOWN_DEVICE"},
};

TEST(ZdoStatus, NumbersTheStatusByte) {
  static_assert(std::is_same_v<std::underlying_type_t<ZdoStatus>, int>);
  EXPECT_EQ(QX_ZDP_SUCCESS, 0);
  EXPECT_EQ(QX_ZDP_INVALID_REQUEST_TYPE, 128);
  EXPECT_EQ(QX_ZDP_DEVICE_NOT_FOUND, 129);
  EXPECT_EQ(QX_ZDP_INVALID_ENDPOINT, 130);
  EXPECT_EQ(QX_ZDP_NOT_ACTIVE, 131);
  EXPECT_EQ(QX_ZDP_NOT_SUPPORTED, 132);
  EXPECT_EQ(QX_ZDP_TIMEOUT, 133);
  EXPECT_EQ(QX_ZDP_NO_MATCH, 134);
  EXPECT_EQ(QX_ZDP_TABLE_FULL, 135);
  EXPECT_EQ(QX_ZDP_NO_ENTRY, 136);
  EXPECT_EQ(QX_ZDP_NO_DESCRIPTOR, 137);
  EXPECT_EQ(QX_NWK_ALREADY_PRESENT, 197);
  EXPECT_EQ(QX_NWK_TABLE_FULL, 199);
  EXPECT_EQ(QX_NWK_UNKNOWN_DEVICE, 200);
}

TEST(ZdoStatus, HasATextForEachByte) {
  for (int value = 0; value < 256; ++value) {
    const auto row = TEXTS.find(value);
    const std::string expected = row == TEXTS.end() ? "QX_UKNOWN_ZDP_STATUS" : row->second;
    EXPECT_EQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(value)), expected) << value;
  }
}

TEST(ZdoStatus, HasNoTextBetweenTwoThatHaveOne) {
  EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(197)), "QX_NWK_ALREADY_PRESENT");
  EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(198)), "QX_UKNOWN_ZDP_STATUS");
  EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(199)), "QX_NWK_TABLE_FULL");
}

TEST(ZdoStatus, IsUnknownBeyondAByte) {
  for (const int value :
       {-1, -128, 256, 256 + 128, 256 + 200, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_STREQ(ZdoResponse::statusStr(static_cast<ZdoStatus>(value)), "QX_UKNOWN_ZDP_STATUS") << value;
  }
}

}  // namespace
}  // namespace qx

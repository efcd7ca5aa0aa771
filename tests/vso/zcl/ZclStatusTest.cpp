#include "vso/zcl/ZclStatus.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <string>
#include <type_traits>

#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

struct StatusRow {
  ZclStatus status;
  int value;
  const char* text;
};

constexpr StatusRow STATUSES[] = {
    {ZCL_SUCCESS, 0, "ZCL_SUCCESS"},
    {ZCL_FAILURE, 1, "ZCL_FAILURE"},
    {ZCL_MALFORMED_COMMAND, 128, "ZCL_MALFORMED_COMMAND"},
    {ZCL_UNSUP_CLUSTER_COMMAND, 129, "ZCL_UNSUP_CLUSTER_COMMAND"},
    {ZCL_UNSUP_GENERAL_COMMAND, 130, "ZCL_UNSUP_GENERAL_COMMAND"},
    {ZCL_UNSUP_MANUF_CLUSTER_COMMAND, 131, "ZCL_UNSUP_MANUF_CLUSTER_COMMAND"},
    {ZCL_UNSUP_MANUF_GENERAL_COMMAND, 132, "ZCL_UNSUP_MANUF_GENERAL_COMMAND"},
    {ZCL_INVALID_FIELD, 133, "ZCL_INVALID_FIELD"},
    {ZCL_UNSUPPORTED_ATTRIBUTE, 134, "ZCL_UNSUPPORTED_ATTRIBUTE"},
    {ZCL_INVALID_VALUE, 135, "ZCL_INVALID_VALUE"},
    {ZCL_READ_ONLY, 136, "ZCL_READ_ONLY"},
    {ZCL_INSUFFICIENT_SPACE, 137, "ZCL_INSUFFICIENT_SPACE"},
    {ZCL_DUPLICATE_EXISTS, 138, "ZCL_DUPLICATE_EXISTS"},
    {ZCL_NOT_FOUND, 139, "ZCL_NOT_FOUND"},
    {ZCL_UNREPORTABLE_ATTRIBUTE, 140, "ZCL_UNREPORTABLE_ATTRIBUTE"},
    {ZCL_INVALID_DATA_TYPE, 141, "ZCL_INVALID_DATA_TYPE"},
    {ZCL_HARDWARE_FAILURE, 192, "ZCL_HARDWARE_FAILURE"},
    {ZCL_SOFTWARE_FAILURE, 193, "ZCL_SOFTWARE_FAILURE"},
    {ZCL_CALIBRATION_ERROR, 194, "ZCL_CALIBRATION_ERROR"},
};

TEST(ZclStatus, HasTheValuesOfTheStatusByte) {
  static_assert(std::is_same_v<std::underlying_type_t<ZclStatus>, int>);
  for (const StatusRow& row : STATUSES) EXPECT_EQ(row.status, row.value) << row.text;
}

TEST(ZclStatus, HasATextForEachByte) {
  std::map<int, std::string> texts;
  for (const StatusRow& row : STATUSES) texts[row.value] = row.text;
  ASSERT_EQ(texts.size(), std::size(STATUSES));
  for (int value = 0; value < 256; ++value) {
    const auto row = texts.find(value);
    const std::string expected = row == texts.end() ? "ZCL_UKNOWN_STATUS" : row->second;
    EXPECT_EQ(ZclMessage::zclStatusToStr(static_cast<ZclStatus>(value)), expected) << value;
  }
}

TEST(ZclStatus, IsUnknownOutsideAByte) {
  for (const int value : {-1, -128, 256, 256 + 128, 0x7FFFFFFF}) {
    EXPECT_STREQ(ZclMessage::zclStatusToStr(static_cast<ZclStatus>(value)), "ZCL_UKNOWN_STATUS") << value;
  }
}

}  // namespace
}  // namespace qx

#include "vso/zcl/QxAttributes.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace qx::detail::QxAttributes {
namespace {

template <typename T, typename U>
void expectAttribute(const Attribute<U>& attribute, unsigned short id, unsigned char type) {
  static_assert(std::is_same_v<T, U>, "the type of the value in the program");
  EXPECT_EQ(attribute.id, id);
  EXPECT_EQ(attribute.type, type) << id;
}

TEST(QxAttributes, HaveTheIdsAndTypesThatDevicesKnow) {
  expectAttribute<unsigned char>(DEVICE_TYPE, 0x0000, 0x20);
  expectAttribute<unsigned short>(ANNOUNCE_WINDOW, 0x0001, 0x21);
  expectAttribute<unsigned short>(MTORR_PERIOD, 0x0002, 0x21);
  expectAttribute<unsigned char>(ZAP_COUNT, 0x0003, 0x20);
  expectAttribute<std::string>(FIRMWARE_VERSION, 0x0004, 0x42);
  expectAttribute<unsigned char>(REFLASH_VERSION, 0x0005, 0x20);
  expectAttribute<unsigned short>(BOOT_COUNT, 0x0006, 0x21);
  expectAttribute<std::string>(PRODUCT_STRING, 0x0007, 0x42);
  expectAttribute<unsigned short>(ZAP_SID, 0x0008, 0x21);
  expectAttribute<Euid>(ZAP_LID, 0x0009, 0xF0);
  expectAttribute<unsigned char>(ZAP_COST, 0x000A, 0x20);
  expectAttribute<unsigned short>(AP_POLL_INTERVAL, 0x000B, 0x21);
  expectAttribute<unsigned char>(CHANNEL, 0x000C, 0x20);
  expectAttribute<unsigned short>(PARENT_POLL_INTERVAL, 0x000F, 0x21);
  expectAttribute<std::string>(AP_ROUTE_TABLE, 0x0012, 0x41);
  expectAttribute<signed char>(NODE_RSSI, 0x0013, 0x28);
  expectAttribute<unsigned char>(NODE_LQI, 0x0014, 0x20);
  expectAttribute<signed char>(BATTERY_LEVEL, 0x0015, 0x28);
  expectAttribute<unsigned char>(NODE_RADIO_BARS, 0x0016, 0x20);
}

}  // namespace
}  // namespace qx::detail::QxAttributes

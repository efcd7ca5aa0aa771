#include "vso/zcl/ZclOtaUpgrade.h"

#include "apps/vso/decode/clusters/readings.h"

namespace qx::app {

void addOtaUpgradeReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  constexpr unsigned int ID16_DIGITS = 4;
  constexpr unsigned int ID32_DIGITS = 8;
  ZclOtaUpgrade frame(bytes);
  if (!frame.isReadAttributesResponse()) return;
  unsigned short manufacturer = 0;
  unsigned short imageType = 0;
  unsigned int firmwareVersion = 0;
  unsigned char status = 0;
  if (frame.readAttributesResponseManufacturer(manufacturer)) {
    decoded.readings.push_back({"manufacturer", manufacturer, nullptr, ID16_DIGITS});
  }
  if (frame.readAttributesResponseImageTypeId(imageType)) {
    decoded.readings.push_back({"imageTypeId", imageType, nullptr, ID16_DIGITS});
  }
  if (frame.readAttributesResponseFwv(firmwareVersion)) {
    decoded.readings.push_back({"firmwareVersion", firmwareVersion, nullptr, ID32_DIGITS});
  }
  if (frame.readAttributesResponseImageUpgradeStatus(status)) {
    decoded.readings.push_back({"imageUpgradeStatus", status});
  }
}

}  // namespace qx::app

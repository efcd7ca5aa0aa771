#include "apps/vso/decode/clusters/addReading.h"
#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/ZclLevelControl.h"

namespace qx::app {

void addLevelControlReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  const ZclLevelControl frame(bytes);
  std::vector<NamedValue>& readings = decoded.readings;
  addReading(readings, "currentLevel", frame.currentLevel());
  addReading(readings, "remainingTime", frame.remainingTime());
  addReading(readings, "transitionTime", frame.transitionTime());
  addReading(readings, "onLevel", frame.onLevel());
  addReading(readings, "currentLevelSuccess", frame.currentLevelSuccess());
  addReading(readings, "remainingTimeSuccess", frame.remainingTimeSuccess());
  addReading(readings, "transitionTimeSuccess", frame.transitionTimeSuccess());
  addReading(readings, "onLevelSuccess", frame.onLevelSuccess());
}

}  // namespace qx::app

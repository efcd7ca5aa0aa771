#include "apps/vso/decode/clusters/addReading.h"
#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/ZclOnOff.h"

namespace qx::app {

void addOnOffReadings(const U255Buff<unsigned char>& bytes, std::vector<NamedValue>& readings) {
  const ZclOnOff frame(bytes);
  addReading(readings, "on", frame.on());
  addReading(readings, "onSuccess", frame.onSuccess());
}

}  // namespace qx::app

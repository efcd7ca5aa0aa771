#include "apps/vso/decode/clusters/addReading.h"
#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/ZclOnOff.h"

namespace qx::app {

void addOnOffReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  const ZclOnOff frame(bytes);
  addReading(decoded.readings, "on", frame.on());
  addReading(decoded.readings, "onSuccess", frame.onSuccess());
}

}  // namespace qx::app

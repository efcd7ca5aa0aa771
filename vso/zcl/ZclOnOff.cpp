#include "vso/zcl/ZclOnOff.h"

#include "vso/zcl/AttributeReading.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

short ZclOnOff::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclOnOff::getClusterId() const { return CLUSTER_ID; }

ZclReading<bool> ZclOnOff::on() const { return detail::readAttribute<bool>(*this, ON_OFF); }

ZclReading<bool> ZclOnOff::off() const {
  ZclReading<bool> reading = on();
  reading.value = !reading.value;
  return reading;
}

ZclReading<bool> ZclOnOff::onSuccess() const { return detail::wroteAttribute(*this, ON_OFF); }

}  // namespace qx

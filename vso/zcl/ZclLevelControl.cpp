#include "vso/zcl/ZclLevelControl.h"

#include "vso/zcl/AttributeReading.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

using detail::readAttribute;
using detail::wroteAttribute;

short ZclLevelControl::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclLevelControl::getClusterId() const { return CLUSTER_ID; }

ZclReading<unsigned char> ZclLevelControl::currentLevel() const {
  return readAttribute<unsigned char>(*this, CURRENT_LEVEL);
}
ZclReading<unsigned short> ZclLevelControl::remainingTime() const {
  return readAttribute<unsigned short>(*this, REMAINING_TIME);
}
ZclReading<unsigned short> ZclLevelControl::transitionTime() const {
  return readAttribute<unsigned short>(*this, TRANSITION_TIME);
}
ZclReading<unsigned char> ZclLevelControl::onLevel() const { return readAttribute<unsigned char>(*this, ON_LEVEL); }

ZclReading<bool> ZclLevelControl::currentLevelSuccess() const { return wroteAttribute(*this, CURRENT_LEVEL); }
ZclReading<bool> ZclLevelControl::remainingTimeSuccess() const { return wroteAttribute(*this, REMAINING_TIME); }
ZclReading<bool> ZclLevelControl::transitionTimeSuccess() const { return wroteAttribute(*this, TRANSITION_TIME); }
ZclReading<bool> ZclLevelControl::onLevelSuccess() const { return wroteAttribute(*this, ON_LEVEL); }

}  // namespace qx

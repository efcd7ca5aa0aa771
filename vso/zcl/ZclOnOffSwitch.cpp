#include "vso/zcl/ZclOnOffSwitch.h"

#include "vso/zcl/ZclProfile.h"

namespace qx {

ZclOnOffSwitch::ZclOnOffSwitch() : ZclMessage(0xFF, false, true) {}

short ZclOnOffSwitch::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclOnOffSwitch::getClusterId() const { return CLUSTER_ID; }

}  // namespace qx

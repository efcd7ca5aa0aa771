#include "vso/zcl/ZclIdentify.h"

#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

ZclIdentify::ZclIdentify() : ZclMessage(ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE, false, false) {}

short ZclIdentify::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclIdentify::getClusterId() const { return CLUSTER_ID; }

}  // namespace qx

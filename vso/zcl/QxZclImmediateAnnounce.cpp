#include "vso/zcl/QxZclImmediateAnnounce.h"

#include "vso/zcl/ZclProfile.h"

namespace qx {

QxZclImmediateAnnounce::QxZclImmediateAnnounce(const std::vector<unsigned short>& ids)
    : ZclMessage(IMMEDIATE_ANNOUNCE, false, true) {
  setCountedIds(ids);
}

short QxZclImmediateAnnounce::getProfileId() const { return ZclProfile::QX_PRIVATE; }
short QxZclImmediateAnnounce::getClusterId() const { return CLUSTER_ID; }

}  // namespace qx

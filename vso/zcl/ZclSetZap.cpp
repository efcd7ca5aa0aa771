#include "vso/zcl/ZclSetZap.h"

#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/QxAttributes.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

namespace {

using namespace detail::QxAttributes;
using detail::recordOf;

constexpr detail::RecordLayout RESPONSE = detail::RecordLayout::STATUS_VALUE;

template <typename T>
T read(const ZclSetZap& frame, const detail::Attribute<T>& attribute) {
  return readFirst(frame, RESPONSE, attribute);
}

template <typename T>
bool has(const ZclSetZap& frame, const detail::Attribute<T>& attribute) {
  return detail::AttributeWalk(frame, RESPONSE).find(attribute.id);
}

}  // namespace

ZclSetZap::ZclSetZap() : ZclMessage(ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE, false, false) { setFcf(FROM_SERVER); }

short ZclSetZap::getProfileId() const { return ZclProfile::QX_PRIVATE; }
short ZclSetZap::getClusterId() const { return CLUSTER_ID; }

unsigned short ZclSetZap::sid() const { return read(*this, ZAP_SID); }
Euid ZclSetZap::lid() const { return read(*this, ZAP_LID); }
unsigned char ZclSetZap::cost() const { return read(*this, ZAP_COST); }

void ZclSetZap::sid(unsigned short value) { addAttribute(RESPONSE, recordOf(ZAP_SID, value)); }
void ZclSetZap::lid(const Euid& value) { addAttribute(RESPONSE, recordOf(ZAP_LID, value)); }
void ZclSetZap::cost(unsigned char value) { addAttribute(RESPONSE, recordOf(ZAP_COST, value)); }
void ZclSetZap::endNodeApPeriod(unsigned short value) { addAttribute(RESPONSE, recordOf(AP_POLL_INTERVAL, value)); }
void ZclSetZap::endNodeParentPeriod(unsigned short value) {
  addAttribute(RESPONSE, recordOf(PARENT_POLL_INTERVAL, value));
}

bool ZclSetZap::hasSid() const { return has(*this, ZAP_SID); }
bool ZclSetZap::hasLid() const { return has(*this, ZAP_LID); }
bool ZclSetZap::hasCost() const { return has(*this, ZAP_COST); }

}  // namespace qx

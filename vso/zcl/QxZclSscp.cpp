#include "vso/zcl/QxZclSscp.h"

#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/QxAttributes.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

namespace {

using namespace detail::QxAttributes;
using detail::RecordLayout;
using detail::recordOf;

template <typename T>
T read(const QxZclSscp& frame, const detail::Attribute<T>& attribute) {
  return readFirst(frame, RecordLayout::VALUE, attribute);
}

}  // namespace

QxZclSscp::QxZclSscp(bool isResponse, bool general)
    : ZclMessage(
          isResponse ? ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE : ZclGeneralCommand::WRITE_ATTRIBUTES_NO_RESPONSE,
          false, false),
      isResponse_(isResponse) {
  setFcf(general ? DISABLE_DEFAULT_RESPONSE : DISABLE_DEFAULT_RESPONSE | CLUSTER_SPECIFIC);
}

QxZclSscp::QxZclSscp(const U255Buff<unsigned char>& frame) : ZclMessage(frame) {
  setFcf(DISABLE_DEFAULT_RESPONSE);
  setCid(ZclGeneralCommand::WRITE_ATTRIBUTES_NO_RESPONSE);
}

short QxZclSscp::getProfileId() const { return ZclProfile::QX_PRIVATE; }
short QxZclSscp::getClusterId() const { return CLUSTER_ID; }

unsigned short QxZclSscp::announceWindow() const { return read(*this, ANNOUNCE_WINDOW); }
unsigned short QxZclSscp::mtorrPeriod() const { return read(*this, MTORR_PERIOD); }
unsigned char QxZclSscp::apCount() const { return read(*this, ZAP_COUNT); }
unsigned char QxZclSscp::channel() const { return read(*this, CHANNEL); }

void QxZclSscp::announceWindow(unsigned short value) { add(recordOf(ANNOUNCE_WINDOW, value)); }
void QxZclSscp::mtorrPeriod(unsigned short value) { add(recordOf(MTORR_PERIOD, value)); }
void QxZclSscp::apCount(unsigned char value) { add(recordOf(ZAP_COUNT, value)); }
void QxZclSscp::channel(unsigned char value) { add(recordOf(CHANNEL, value)); }

void QxZclSscp::add(const AttributeRecordData& record) {
  addAttribute(isResponse_ ? RecordLayout::STATUS_VALUE : RecordLayout::VALUE, record);
}

}  // namespace qx

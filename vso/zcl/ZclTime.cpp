#include "vso/zcl/ZclTime.h"

#include <ctime>

#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"
#include "vso/zcl/ZclType.h"

namespace qx {

namespace {

/// 1 January 2000, the start of ZCL time, in seconds since 1970.
constexpr long long ZCL_EPOCH = 946684800;
constexpr unsigned char MASTER_CLOCK = 1;

}  // namespace

ZclTime::ZclTime() : ZclMessage(ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE, false, false) {}

short ZclTime::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclTime::getClusterId() const { return CLUSTER_ID; }

void ZclTime::populateTime() {
  const long long now = fixedTime_ != 0 ? fixedTime_ : static_cast<long long>(std::time(nullptr));
  AttributeBytes data;
  toData32(data, static_cast<unsigned int>(now - ZCL_EPOCH));  // big-endian, unlike every other number on the wire
  answer(TIME, ZclType::UINT32, data);
}

void ZclTime::populateStatus() {
  AttributeBytes data{};
  toData8(data, MASTER_CLOCK);
  answer(TIME_STATUS, ZclType::BITMAP8, data);
}

void ZclTime::answer(unsigned short id, unsigned char type, const AttributeBytes& data) {
  FrameWriter out = newPayload();
  addReadResponse(out, ReadAttributeStatusRecord(id, type, data));
  endPayload(out);
}

}  // namespace qx

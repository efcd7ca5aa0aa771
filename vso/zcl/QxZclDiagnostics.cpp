#include "vso/zcl/QxZclDiagnostics.h"

#include "vso/zcl/Attribute.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

namespace {

using detail::Attribute;
using detail::AttributeWalk;

constexpr detail::RecordLayout RESPONSE = detail::RecordLayout::STATUS_VALUE;

constexpr Attribute<std::string> LOG{QxZclDiagnostics::LOG_MESSAGE, ZclType::TEXT};
constexpr Attribute<std::string> COUNTERS_BLOCK{QxZclDiagnostics::COUNTERS, ZclType::OCTET_STRING};
constexpr Attribute<unsigned int> UPTIME_SECONDS{QxZclDiagnostics::UPTIME, ZclType::UINT32};

/// Moves to the next record with the attribute's id and type.
template <typename T>
bool findTyped(AttributeWalk& walk, const Attribute<T>& attribute) {
  while (walk.find(attribute.id)) {
    if (walk.value().type() == attribute.type) return true;
  }
  return false;
}

}  // namespace

QxZclDiagnostics::QxZclDiagnostics(const std::vector<unsigned short>& ids)
    : ZclMessage(ZclGeneralCommand::READ_ATTRIBUTES, false, false) {
  setReadAttributes(ids);
}

short QxZclDiagnostics::getProfileId() const { return ZclProfile::QX_PRIVATE; }
short QxZclDiagnostics::getClusterId() const { return CLUSTER_ID; }

void QxZclDiagnostics::resetCounters(bool reset) { setSwitch(RESET_COUNTERS, reset); }
void QxZclDiagnostics::displaySignalStrength(bool display) { setSwitch(DISPLAY_SIGNAL_STRENGTH, display); }

bool QxZclDiagnostics::parseReadAttributesResponse(QxdiagnosticsNodeCounters& counters) const {
  AttributeWalk walk(*this, RESPONSE);
  if (!findTyped(walk, COUNTERS_BLOCK)) return false;
  const AttributeRecordData::Data data = walk.value().wireForm();
  FrameReader in(data.data(), AttributeRecordData::DATA_SIZE, AttributeRecordData::DATA_SIZE);
  if (in.u8() != QxdiagnosticsNodeCounters::WIRE_SIZE) return false;
  counters.read(in);
  return true;
}

bool QxZclDiagnostics::parseReadAttributesResponse(unsigned int& uptime) const {
  AttributeWalk walk(*this, RESPONSE);
  if (!findTyped(walk, UPTIME_SECONDS)) return false;
  uptime = toUint32(walk.value().wireForm());
  return true;
}

bool QxZclDiagnostics::hasLogMessage() const { return hasAttributeId(LOG.id, LOG.type); }
bool QxZclDiagnostics::hasCounters() const { return hasAttributeId(COUNTERS_BLOCK.id, COUNTERS_BLOCK.type); }
bool QxZclDiagnostics::hasUptime() const { return hasAttributeId(UPTIME_SECONDS.id, UPTIME_SECONDS.type); }

bool QxZclDiagnostics::hasAttributeId(unsigned short id, unsigned char type) const {
  AttributeWalk walk(*this, RESPONSE);
  return findTyped(walk, Attribute<std::string>{id, type});
}

void QxZclDiagnostics::setSwitch(unsigned char commandId, bool on) {
  initMessage(commandId, false, true);
  setFcf(CLUSTER_SPECIFIC);
  addByte(on ? 1 : 0);
}

}  // namespace qx

#include <list>

#include "apps/vso/decode/clusters/readings.h"
#include "apps/vso/decode/tables.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"
#include "vso/zcl/QxZclAnnounce.h"

namespace qx::app {

void addAnnounceReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  const QxZclAnnounce frame(bytes);
  if (!frame.isReportAttributes()) return;
  const auto add = [&decoded](bool isThere, const char* name, const Value& value) {
    if (!isThere) return;
    NamedValue& reading = decoded.readings.emplace_back();
    reading.name = name;
    reading.value = value;
  };
  if (frame.hasDeviceType()) {
    const auto type = static_cast<pb::ZigbeeNodeDeviceTypePEnum>(frame.deviceType());
    decoded.readings.push_back({"deviceType", frame.deviceType(), pb::ZigbeeNodeDeviceTypePEnum_Name(type).c_str()});
  }
  add(frame.hasAnnounceWindow(), "announceWindow", frame.announceWindow());
  add(frame.hasMtorrPeriod(), "mtorrPeriod", frame.mtorrPeriod());
  add(frame.hasNumZaps(), "numZaps", frame.numZaps());
  add(frame.hasFirmwareVersion(), "firmwareVersion", frame.firmwareVersion());
  add(frame.hasReflashVersion(), "reflashVersion", frame.reflashVersion());
  add(frame.hasBootCount(), "bootCount", frame.bootCount());
  add(frame.hasProductString(), "productString", frame.productString());
  add(frame.hasApPollInterval(), "apPollInterval", frame.apPollInterval());
  add(frame.hasChannel(), "channel", frame.channel());
  add(frame.hasParentPollInterval(), "parentPollInterval", frame.parentPollInterval());
  add(frame.hasNodeRssi(), "nodeRssi", frame.nodeRssi());
  add(frame.hasNodeLqi(), "nodeLqi", frame.nodeLqi());
  add(frame.hasBatteryLevel(), "batteryLevel", frame.batteryLevel());
  add(frame.hasNodeRadioBars(), "nodeRadioBars", frame.nodeRadioBars());
  if (frame.hasApTable()) {
    std::list<AccessPoint> accessPoints;
    frame.apRouteTable(accessPoints);
    decoded.table = tableOf(accessPoints);
  }
}

}  // namespace qx::app

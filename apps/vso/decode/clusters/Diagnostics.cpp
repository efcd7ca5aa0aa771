#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <memory>

#include "apps/vso/decode/clusters/readings.h"
#include "vso/proto/QxdiagnosticsNodeCountersPBuf.pb.h"
#include "vso/zcl/QxZclDiagnostics.h"
#include "vso/zcl/ZclType.h"

namespace qx::app {

namespace {

/// The counters under the names of their message, a row for each.
DecodedTable tableOf(const QxdiagnosticsNodeCounters& counters) {
  const std::unique_ptr<pb::QxdiagnosticsNodeCountersPBuf> message(counters.toProtobuf());
  const auto* const descriptor = message->GetDescriptor();
  DecodedTable table{"counters", {}};
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const auto* const field = descriptor->field(i);
    table.rows.push_back({{"counter", field->name()}, {"value", message->GetReflection()->GetUInt32(*message, field)}});
  }
  return table;
}

void addLogMessage(DecodedFrame& decoded) {
  const auto& attributes = *decoded.attributes;
  const auto found = std::find_if(attributes.begin(), attributes.end(), [](const DecodedAttribute& attribute) {
    return attribute.id == QxZclDiagnostics::LOG_MESSAGE && attribute.value && attribute.value->type == ZclType::TEXT;
  });
  // The library also finds the message in a record that reports a failure, which has no value of its own.
  if (found != attributes.end()) decoded.readings.push_back({"logMessage", *found->value->text});
}

}  // namespace

void addDiagnosticsReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  const QxZclDiagnostics frame(bytes);
  if (!frame.isReadAttributesResponse()) return;
  unsigned int uptime = 0;
  QxdiagnosticsNodeCounters counters;
  if (frame.hasLogMessage()) addLogMessage(decoded);
  if (frame.parseReadAttributesResponse(uptime)) decoded.readings.push_back({"uptime", uptime});
  if (frame.parseReadAttributesResponse(counters)) decoded.table = tableOf(counters);
}

}  // namespace qx::app

#include <cstddef>
#include <vector>

#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/MetricsPair.h"
#include "vso/zcl/QxZclHaDiagnostics.h"
#include "vso/zcl/ReportAttributeRecord.h"

namespace qx::app {

void addHaDiagnosticsReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  const QxZclHaDiagnostics frame(bytes);
  if (!frame.isReportAttributes()) return;
  std::vector<ReportAttributeRecord> records;
  frame.getReportAttributes(records);
  DecodedTable table{"metrics", {}};
  // The pairs that are sent as metrics: those in front of what makes no pair.
  for (std::size_t i = 0; i + 1 < records.size(); i += 2) {
    MetricsPair pair;
    pair.getPair(records[i]);
    pair.getPair(records[i + 1]);
    if (!pair.complete()) break;
    table.rows.push_back({{"name", pair.name_}, {"value", pair.value_}});
  }
  if (!table.rows.empty()) decoded.table = table;
}

}  // namespace qx::app

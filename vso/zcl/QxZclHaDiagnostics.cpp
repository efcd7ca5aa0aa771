#include "vso/zcl/QxZclHaDiagnostics.h"

#include <log4cplus/logger.h>

#include <vector>

#include "vso/logging/Log.h"
#include "vso/zcl/MetricsPair.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/ZclProfile.h"
#include "vso/zcl/getHostName.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

}  // namespace

short QxZclHaDiagnostics::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short QxZclHaDiagnostics::getClusterId() const { return CLUSTER_ID; }

bool QxZclHaDiagnostics::isMetricsReport() const {
  return isValidLength() && affectsEntireProfile() && isReportAttributes() && !isManufacturerSpecific();
}

bool QxZclHaDiagnostics::sendMetrics(const std::string& name, const Euid& node) const {
  std::vector<ReportAttributeRecord> records;
  getReportAttributes(records);
  MetricsPair pair;
  bool isSecond = false;
  bool isBroken = false;
  for (const ReportAttributeRecord& record : records) {
    pair.getPair(record);
    VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
            "QxZclHaDiagnostics::sendMetrics: " << record << ", name: '" << pair.name_ << "' "
                                                << ", value: '" << pair.value_ << "' ");
    if (isSecond) {
      isBroken = !pair.complete();
      if (isBroken) break;
      pair.send("vessori2." + getHostName() + "." + name + "." + node.toString() + ".zcl_diag");
      pair.reset();
    }
    isSecond = !isSecond;
  }
  // What is left is half a pair.
  if (!isSecond && !isBroken) return false;
  VSO_LOG(logger, log4cplus::ERROR_LOG_LEVEL,
          "QxZclHaDiagnostics::sendMetrics: attribute record pair did not yield a valid name,value: {'"
              << pair.name_ << "': '" << pair.value_ << "'}");
  return true;
}

}  // namespace qx

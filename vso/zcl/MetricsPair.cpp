#include "vso/zcl/MetricsPair.h"

#include <log4cplus/logger.h>

#include "vso/connectors/QxMetricsClient.h"
#include "vso/logging/Log.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/ZclType.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

}  // namespace

void MetricsPair::reset() { *this = MetricsPair(); }

void MetricsPair::getPair(const ReportAttributeRecord& record) {
  switch (record.id_) {
    case NAME:
      if (!record.valueToString(name_)) hasName_ = true;
      if (record.type_ != ZclType::TEXT && record.type_ != ZclType::CHARACTER_STRING) {
        hasName_ = false;
        VSO_LOG(logger, log4cplus::ERROR_LOG_LEVEL,
                "QxZclHaDiagnostics::getPair: diagnostics metric name has wrong type: " << record);
      }
      break;
    case VALUE:
      if (!record.valueToString(value_)) hasValue_ = true;
      break;
    default:
      VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "QxZclHaDiagnostics::getPair: unknown attribute id: " << record);
      break;
  }
}

void MetricsPair::send(const std::string& name) const {
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
          "QxZclHaDiagnostics::send: Send metric (" << name << ", " << name_ << ", " << value_ << ")");
  QxMetricsClient::instance().send(name, name_, value_);
}

}  // namespace qx

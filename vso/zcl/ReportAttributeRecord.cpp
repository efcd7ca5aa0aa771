#include "vso/zcl/ReportAttributeRecord.h"

#include <log4cplus/logger.h>

#include <algorithm>
#include <stdexcept>

#include "vso/logging/Log.h"
#include "vso/zcl/ZclType.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

/// A record as `print` writes it, where a stream insertion is called for.
struct Printed {
  const AttributeRecordData& record;
};
std::ostream& operator<<(std::ostream& out, const Printed& printed) { return printed.record.print(out); }

}  // namespace

std::string ReportAttributeRecord::getAttribute(const std::vector<ReportAttributeRecord>& records, int id) {
  const auto found = std::find_if(records.begin(), records.end(),
                                  [id](const ReportAttributeRecord& record) { return record.id_ == id; });
  if (found == records.end()) throw std::runtime_error("no matching report attribute");
  if (found->type_ != ZclType::CHARACTER_STRING) {
    throw std::runtime_error("cannot retrieve non-string value as string");
  }
  std::string text;
  found->valueToString(text);
  return text;
}

void ReportAttributeRecord::debug(const std::vector<ReportAttributeRecord>& records) {
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL, "{ReportAttributeRecords length_: " << records.size());
  for (const ReportAttributeRecord& record : records) {
    VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL, "ReportAttributeRecord::debug: " << Printed{record});
  }
  VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL, "}");
}

}  // namespace qx

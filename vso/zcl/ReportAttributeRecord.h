// One attribute of a report attributes command.
#pragma once

#include <string>
#include <vector>

#include "vso/zcl/AttributeRecordData.h"

namespace qx {

class ReportAttributeRecord : public AttributeRecordData {
 public:
  using AttributeRecordData::AttributeRecordData;

  /// The text of the first record with this id, which must be a character string (0x42) in readable form. Throws
  /// std::runtime_error, "cannot retrieve non-string value as string" if it is of another type, and "no matching report
  /// attribute" if there is none.
  static std::string getAttribute(const std::vector<ReportAttributeRecord>& records, int id);

  /// Logs the records at debug level, one line each between a line with their number and a closing one.
  static void debug(const std::vector<ReportAttributeRecord>& records);
};

}  // namespace qx

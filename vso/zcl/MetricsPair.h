// Name and value of a metric, out of the records of a diagnostics report.
#pragma once

#include <string>

namespace qx {

class ReportAttributeRecord;

/// A report sends a metric as two records, one with its name and one with its value, in either order.
class MetricsPair {
 public:
  // Attributes of the two records.
  static constexpr unsigned short NAME = 0x011E;
  static constexpr unsigned short VALUE = 0x011F;

  /// Forgets both.
  void reset();
  /// True if both are valid.
  bool complete() const { return hasName_ && hasValue_; }
  /// Takes name or value from a record in readable form. A name of a type other than text, a value that does not print
  /// and an unknown attribute are logged, and leave the pair incomplete.
  void getPair(const ReportAttributeRecord& record);
  /// Sends the pair as a metric of `name`, see QxMetricsClient, and logs that at debug level.
  void send(const std::string& name) const;

  /// Key of the metric.
  std::string name_;
  std::string value_;
  bool hasName_ = false;
  bool hasValue_ = false;
};

}  // namespace qx

// The public diagnostics cluster, in which devices report metrics.
#pragma once

#include <string>

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// A report of names and values, see MetricsPair.
class QxZclHaDiagnostics : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0B05;

  /// Received frames, see ZclMessage.
  explicit QxZclHaDiagnostics(const std::string& hex) : ZclMessage(hex) {}
  explicit QxZclHaDiagnostics(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}

  short getProfileId() const override;
  short getClusterId() const override;

  /// A whole report of public attributes, which is what `sendMetrics` is for: neither a command of the cluster's own
  /// nor a manufacturer's attributes, whatever their numbers.
  bool isMetricsReport() const;

  /// Sends each pair of the report as a metric of "vessori2.HOST.NAME.ADDRESS.zcl_diag", where ADDRESS is that of
  /// `node`. A pair is two records that follow each other. True on failure: two records that do not make a pair, or an
  /// odd number of them. That ends the walk; pairs before it have been sent.
  bool sendMetrics(const std::string& name, const Euid& node) const;
};

}  // namespace qx

#include "apps/vso/decode/MetricsSending.h"

#include <boost/make_shared.hpp>

#include "vso/connectors/QxMetricsClient.h"
#include "vso/zcl/QxZclHaDiagnostics.h"
#include "vso/zcl/ZclProfile.h"

namespace qx::app {

MetricsSending::MetricsSending(const std::string& name, const Euid& node)
    : name_(name), node_(node), context_(boost::make_shared<boost::asio::io_context>()) {
  QxMetricsClient::instance().initializeDataLakeConnection(context_);
}

MetricsSending::~MetricsSending() { QxMetricsClient::instance().stop(); }

void MetricsSending::send(const ReceivedFrame& frame) const {
  if (frame.profile != ZclProfile::HOME_AUTOMATION || frame.cluster != QxZclHaDiagnostics::CLUSTER_ID) return;
  const QxZclHaDiagnostics report(frame.bytes);
  if (report.isMetricsReport()) report.sendMetrics(name_, frame.node.value_or(node_));
}

}  // namespace qx::app

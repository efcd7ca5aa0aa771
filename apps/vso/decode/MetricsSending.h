// Sends on the metrics that frames hold.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/shared_ptr.hpp>
#include <string>

#include "apps/vso/decode/ReceivedFrame.h"
#include "vso/identifiers/Euid.h"

namespace qx::app {

/// While it lives, the process's metrics client is connected to the gateway, if there is one.
class MetricsSending {
 public:
  /// Metrics bear `name` and the address of the frame's node, or `node` if it does not tell.
  MetricsSending(const std::string& name, const Euid& node);
  ~MetricsSending();
  MetricsSending(const MetricsSending&) = delete;
  MetricsSending& operator=(const MetricsSending&) = delete;

  /// Sends the pairs of a report of the public diagnostics cluster, see QxZclHaDiagnostics; takes any other frame too.
  void send(const ReceivedFrame& frame) const;

 private:
  std::string name_;
  Euid node_;
  boost::shared_ptr<boost::asio::io_context> context_;
};

}  // namespace qx::app

// The library's one way to publish a metric.
#pragma once

#include <atomic>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <string>

namespace boost::asio {
class io_context;
}

namespace qx {

class StatsdClient;

/// A gate in front of the controller's StatsdClient: it finds the metrics gateway once and from then on puts PREFIX in
/// front of the name of every metric and forwards it. Best effort: what is sent before the connection is set up, or
/// after `stop`, is dropped with a debug line and never fails the caller. (No connection is opened: metrics are
/// datagrams.)
///
/// Sends may come from any thread.
class QxMetricsClient {
 public:
  /// "vessori2.v2."
  static const std::string PREFIX;

  /// The one object, made at first use and destroyed at process exit.
  static QxMetricsClient& instance();

  QxMetricsClient(const QxMetricsClient&) = delete;
  QxMetricsClient& operator=(const QxMetricsClient&) = delete;

  /// Resolves the gateway's name (a build constant; port 8125) and hands the first address to the StatsdClient, whose
  /// work then belongs to `ioContext`. Blocks until the name is resolved. A null context, a missing client, and
  /// whatever fails with a std::exception on the way, each logs a line; sends are then let through, or dropped, as
  /// before. Call again for another attempt. Any other exception passes.
  void initializeDataLakeConnection(boost::shared_ptr<boost::asio::io_context> ioContext);
  /// Drops what is sent from now on.
  void stop();

  /// Sends a metric: `name` says what it belongs to, `key` is its dotted key ("reboot.count").
  void send(const std::string& name, const std::string& key, const std::string& value);
  /// The same with a JSON text.
  void sendJson(const std::string& name, const std::string& key, const std::string& value);
  /// The same with the number in decimal.
  void send(const std::string& name, const std::string& key, int value);
  void send(const std::string& name, const std::string& key, unsigned int value);

  /// What all sends go through.
  void sendImpl(bool json, const std::string& name, const std::string& key, const std::string& value);

 private:
  QxMetricsClient() = default;

  // Read by senders of any thread while the owner sets up or stops; a metric more or less does not matter.
  std::atomic<bool> connected_{false};
  std::atomic<StatsdClient*> statsdClient_{nullptr};
};

}  // namespace qx

// A client of a line server that notes what it is told, with hooks for tests.

#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "qxnet/TCPConnection.h"
#include "support/ConnectionEvents.h"
#include "vso/connectors/QxnetClient.h"

namespace qx::test {

/// Asks for the first line of each connection, as the owner of a server has to. May be called by several threads.
class RecordingClient : public QxnetClient {
 public:
  void handleData(QxnetTcpConnectionPtr connection, const std::string& data) override {
    events.add(data);
    if (onData) onData(connection, data);
  }
  void handleState(QxnetTcpConnectionPtr connection, QxnetConnectionState state, QxnetConnectionState previous,
                   QxnetConnectionOperation operation, const BErrorCode& error) override {
    if (state == net::stream::CONNECTION_OPEN) {
      if (asksForLines) connection->asyncReadUntil("\r\n");
      const std::lock_guard<std::mutex> lock(mutex_);
      opened_.push_back(connection);
    }
    events.add(changeOf(state, previous, operation, error));
    if (onState) onState(connection, state);
  }

  /// The connections that have opened, in order.
  std::vector<QxnetTcpConnectionPtr> opened() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return opened_;
  }

  Events events;
  bool asksForLines = true;
  std::function<void(const QxnetTcpConnectionPtr&, const std::string&)> onData;
  std::function<void(const QxnetTcpConnectionPtr&, QxnetConnectionState)> onState;

 private:
  mutable std::mutex mutex_;
  std::vector<QxnetTcpConnectionPtr> opened_;
};

}  // namespace qx::test

// What a line server calls.
#pragma once

#include <string>

#include "vso/connectors/QxnetTypes.h"

namespace qx {

/// Receives the lines and the changes of state of all connections of a QxnetServer, on the threads that run the
/// server's context: for one connection one call at a time, for different ones also at the same time, if there are
/// several threads. Calls must not block for long. They may close connections and stop the server.
class QxnetClient {
 public:
  virtual ~QxnetClient() = default;

  /// A line has come. It ends with its delimiter, "\r\n", and is longer than that.
  virtual void handleData(QxnetTcpConnectionPtr connection, const std::string& data) = 0;
  /// A connection has changed its state: mostly opened first, and closed last. One that the server is stopped upon is
  /// told as closed without having opened. On the open state of a connection somebody has to call its
  /// `asyncReadUntil("\r\n")` once, or no line is ever read from it.
  virtual void handleState(QxnetTcpConnectionPtr connection, QxnetConnectionState state,
                           QxnetConnectionState previousState, QxnetConnectionOperation operation,
                           const BErrorCode& error) = 0;
};

}  // namespace qx

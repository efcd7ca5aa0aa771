// What changed a connection's state.
#pragma once

#include <iosfwd>

namespace qx::net::stream {

enum ConnectionOperation : int {
  /// Its socket was accepted.
  OPERATION_START = 0,
  /// A read ended: the peer closed its side, the connection broke, or a line was too long.
  OPERATION_READ,
  /// A write ended: with what was left to send to a peer that had closed its side, or because the connection broke.
  OPERATION_WRITE,
  /// Its owner closed it.
  OPERATION_CLOSE,
};

/// Writes the enumerator's name; for any other number, "UNKNOWN".
std::ostream& operator<<(std::ostream& out, ConnectionOperation operation);

}  // namespace qx::net::stream

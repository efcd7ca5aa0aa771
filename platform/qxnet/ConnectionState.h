// What a connection is up to.
#pragma once

#include <iosfwd>

namespace qx::net::stream {

enum ConnectionState : int {
  /// Its socket is closed; the last state of every connection.
  CONNECTION_CLOSED = 0,
  /// It waits for its socket to be accepted; the first state.
  CONNECTION_OPENING,
  CONNECTION_OPEN,
  /// The peer has ended its side, and what was written is still on its way to it.
  CONNECTION_CLOSING,
};

/// Writes the enumerator's name; for any other number, "UNKNOWN".
std::ostream& operator<<(std::ostream& out, ConnectionState state);

}  // namespace qx::net::stream

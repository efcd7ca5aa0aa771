#include "qxnet/ConnectionState.h"

#include <ostream>

namespace qx::net::stream {

namespace {

const char* nameOf(ConnectionState state) {
  switch (state) {
    case CONNECTION_CLOSED:
      return "CONNECTION_CLOSED";
    case CONNECTION_OPENING:
      return "CONNECTION_OPENING";
    case CONNECTION_OPEN:
      return "CONNECTION_OPEN";
    case CONNECTION_CLOSING:
      return "CONNECTION_CLOSING";
  }
  return "UNKNOWN";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, ConnectionState state) { return out << nameOf(state); }

}  // namespace qx::net::stream

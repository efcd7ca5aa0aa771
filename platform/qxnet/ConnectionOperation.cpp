#include "qxnet/ConnectionOperation.h"

#include <ostream>

namespace qx::net::stream {

namespace {

const char* nameOf(ConnectionOperation operation) {
  switch (operation) {
    case OPERATION_START:
      return "OPERATION_START";
    case OPERATION_READ:
      return "OPERATION_READ";
    case OPERATION_WRITE:
      return "OPERATION_WRITE";
    case OPERATION_CLOSE:
      return "OPERATION_CLOSE";
  }
  return "UNKNOWN";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, ConnectionOperation operation) { return out << nameOf(operation); }

}  // namespace qx::net::stream

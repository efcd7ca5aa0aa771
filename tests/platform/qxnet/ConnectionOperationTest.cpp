#include "qxnet/ConnectionOperation.h"

#include <gtest/gtest.h>

#include "platform/qxnet/EnumerationChecks.h"

namespace qx::net::stream {

struct ConnectionOperationTable {
  using Enumeration = ConnectionOperation;
  static constexpr test::EnumeratorRow<Enumeration> ROWS[] = {
      {OPERATION_START, 0, "OPERATION_START"},
      {OPERATION_READ, 1, "OPERATION_READ"},
      {OPERATION_WRITE, 2, "OPERATION_WRITE"},
      {OPERATION_CLOSE, 3, "OPERATION_CLOSE"},
  };
};

}  // namespace qx::net::stream

namespace qx::test {

INSTANTIATE_TYPED_TEST_SUITE_P(ConnectionOperation, PlainEnumeration, net::stream::ConnectionOperationTable, );

}  // namespace qx::test

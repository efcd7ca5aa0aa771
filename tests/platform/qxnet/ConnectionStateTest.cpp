#include "qxnet/ConnectionState.h"

#include <gtest/gtest.h>

#include "platform/qxnet/EnumerationChecks.h"

namespace qx::net::stream {

struct ConnectionStateTable {
  using Enumeration = ConnectionState;
  static constexpr test::EnumeratorRow<Enumeration> ROWS[] = {
      {CONNECTION_CLOSED, 0, "CONNECTION_CLOSED"},
      {CONNECTION_OPENING, 1, "CONNECTION_OPENING"},
      {CONNECTION_OPEN, 2, "CONNECTION_OPEN"},
      {CONNECTION_CLOSING, 3, "CONNECTION_CLOSING"},
  };
};

}  // namespace qx::net::stream

namespace qx::test {

INSTANTIATE_TYPED_TEST_SUITE_P(ConnectionState, PlainEnumeration, net::stream::ConnectionStateTable, );

}  // namespace qx::test

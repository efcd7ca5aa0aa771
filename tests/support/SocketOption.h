// A look at the socket of a connection.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "qxnet/TCPConnection.h"

namespace qx::test {

/// The value of a numeric option of the connection's socket; fails the test if there is none.
inline int optionOf(net::stream::TCPConnection& connection, int level, int name) {
  int value = -1;
  socklen_t size = sizeof value;
  EXPECT_EQ(0, ::getsockopt(connection.socket().native_handle(), level, name, &value, &size));
  return value;
}

}  // namespace qx::test

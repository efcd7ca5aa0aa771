// Calls of the system around sockets that fail on demand, in a program that is linked with SocketCalls.cpp.

#pragma once

namespace qx::test {

enum class Call { SOCKET, REUSE_ADDRESS, BIND, LISTEN, ACCEPT, CLOSE };

/// While it lives, the first such call fails with `error`. A close that fails closes nevertheless, as the system's
/// does.
class FailingCall {
 public:
  FailingCall(Call call, int error);
  ~FailingCall();

  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;
};

/// What the last call of `listen` asked for.
int lastBacklog();

}  // namespace qx::test

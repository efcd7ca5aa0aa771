#include "platform/qxnet/SocketCalls.h"

#include <sys/socket.h>

#include <atomic>
#include <cerrno>

#include "support/NextFunction.h"

namespace qx::test {
namespace {

constexpr int NONE = -1;

std::atomic<int> failingCall{NONE};
std::atomic<int> failingError{0};
std::atomic<int> backlog{0};

/// True if this call is the one that fails; then `errno` is set.
bool fails(Call call) {
  int expected = static_cast<int>(call);
  if (!failingCall.compare_exchange_strong(expected, NONE)) return false;
  errno = failingError;
  return true;
}

}  // namespace

FailingCall::FailingCall(Call call, int error) {
  failingError = error;
  failingCall = static_cast<int>(call);
}

FailingCall::~FailingCall() { failingCall = NONE; }

int lastBacklog() { return backlog; }

}  // namespace qx::test

using qx::test::Call;
using qx::test::fails;
using qx::test::nextFunction;

// In front of the system's own.
extern "C" {

int socket(int domain, int type, int protocol) noexcept {
  static auto* const next = nextFunction<decltype(socket)>("socket");
  return fails(Call::SOCKET) ? -1 : next(domain, type, protocol);
}

int setsockopt(int descriptor, int level, int name, const void* value, socklen_t size) noexcept {
  static auto* const next = nextFunction<decltype(setsockopt)>("setsockopt");
  if (level == SOL_SOCKET && name == SO_REUSEADDR && fails(Call::REUSE_ADDRESS)) return -1;
  return next(descriptor, level, name, value, size);
}

int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept {
  static auto* const next = nextFunction<decltype(bind)>("bind");
  return fails(Call::BIND) ? -1 : next(descriptor, address, size);
}

int listen(int descriptor, int count) noexcept {
  static auto* const next = nextFunction<decltype(listen)>("listen");
  qx::test::backlog = count;
  return fails(Call::LISTEN) ? -1 : next(descriptor, count);
}

int accept(int descriptor, sockaddr* address, socklen_t* size) {
  static auto* const next = nextFunction<decltype(accept)>("accept");
  return fails(Call::ACCEPT) ? -1 : next(descriptor, address, size);
}

int close(int descriptor) {
  static auto* const next = nextFunction<int(int)>("close");
  const int result = next(descriptor);
  return fails(Call::CLOSE) ? -1 : result;
}
}

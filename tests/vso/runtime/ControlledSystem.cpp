#include "tests/vso/runtime/ControlledSystem.h"

#include <execinfo.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "support/NextFunction.h"

namespace {

using qx::test::nextFunction;

thread_local qx::test::ControlledSystem* controlled = nullptr;

std::vector<int> descriptorsIn(fd_set* set) {
  std::vector<int> descriptors;
  for (int descriptor = 0; set != nullptr && descriptor < FD_SETSIZE; ++descriptor) {
    if (FD_ISSET(descriptor, set)) descriptors.push_back(descriptor);
  }
  return descriptors;
}

/// A file without a name, at its beginning.
std::FILE* fileWith(const std::string& content) {
  const int descriptor = ::memfd_create("content", MFD_CLOEXEC);
  if (descriptor < 0) std::abort();
  if (::pwrite(descriptor, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) std::abort();
  return ::fdopen(descriptor, "r");
}

}  // namespace

namespace qx::test {

ControlledSystem::ControlledSystem() { controlled = this; }
ControlledSystem::~ControlledSystem() { controlled = nullptr; }

}  // namespace qx::test

extern "C" {

int gettimeofday(timeval* time, void*) noexcept {
  if (controlled != nullptr) ++controlled->timesAsked;
  if (controlled != nullptr && controlled->time) {
    *time = *controlled->time;
    return 0;
  }
  timespec now{};
  const int result = ::clock_gettime(CLOCK_REALTIME, &now);
  *time = {now.tv_sec, now.tv_nsec / 1000};
  return result;
}

int usleep(useconds_t microseconds) {
  if (controlled != nullptr) {
    controlled->sleeps.push_back(microseconds);
    return 0;
  }
  const timespec time{microseconds / 1'000'000, static_cast<long>(microseconds % 1'000'000) * 1000};
  return ::nanosleep(&time, nullptr);
}

int select(int count, fd_set* __restrict readable, fd_set* __restrict writable, fd_set* __restrict exceptional,
           timeval* __restrict limit) {
  if (controlled != nullptr) {
    controlled->selections.push_back({count, descriptorsIn(readable), descriptorsIn(writable),
                                      descriptorsIn(exceptional),
                                      limit != nullptr ? std::optional(*limit) : std::nullopt});
    if (controlled->selected) return *controlled->selected;
  }
  static auto* const choose = nextFunction<int(int, fd_set*, fd_set*, fd_set*, timeval*)>("select");
  return choose(count, readable, writable, exceptional, limit);
}

pid_t getpid() noexcept {
  if (controlled != nullptr && controlled->processId) return *controlled->processId;
  return static_cast<pid_t>(::syscall(SYS_getpid));
}

// What file streams open their files with.
std::FILE* fopen64(const char* name, const char* mode) {
  if (controlled != nullptr) {
    controlled->opened.emplace_back(name);
    if (controlled->content) return fileWith(*controlled->content);
    if (controlled->noFile) {
      errno = ENOENT;
      return nullptr;
    }
  }
  static auto* const open = nextFunction<std::FILE*(const char*, const char*)>("fopen64");
  return open(name, mode);
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  if (controlled != nullptr && controlled->noMutex) return EAGAIN;
  static auto* const init = nextFunction<int(pthread_mutex_t*, const pthread_mutexattr_t*)>("pthread_mutex_init");
  return init(mutex, attributes);
}

int backtrace(void** frames, int size) {
  if (controlled != nullptr) {
    controlled->framesAsked.push_back(size);
    if (controlled->stack) {
      const std::vector<const char*>& stack = *controlled->stack;
      const int count = std::min(size, static_cast<int>(stack.size()));
      for (int i = 0; i < count; ++i) frames[i] = const_cast<char*>(stack[static_cast<std::size_t>(i)]);
      return count;
    }
  }
  static auto* const trace = nextFunction<int(void**, int)>("backtrace");
  return trace(frames, size);
}

char** backtrace_symbols(void* const* frames, int size) noexcept {
  if (controlled != nullptr && controlled->noSymbols) return nullptr;
  if (controlled == nullptr || !controlled->stack) {
    static auto* const symbols = nextFunction<char**(void* const*, int)>("backtrace_symbols");
    return symbols(frames, size);
  }
  // One piece, as the caller frees it: the pointers, and behind them the texts.
  const auto count = static_cast<std::size_t>(size);
  std::size_t length = (count + 1) * sizeof(char*);
  for (std::size_t i = 0; i < count; ++i) length += std::strlen(static_cast<const char*>(frames[i])) + 1;
  auto** const lines = static_cast<char**>(std::malloc(length));
  char* text = reinterpret_cast<char*>(lines + count + 1);
  for (std::size_t i = 0; i < count; ++i) {
    lines[i] = text;
    text = ::stpcpy(text, static_cast<const char*>(frames[i])) + 1;
  }
  return lines;
}

}  // extern "C"

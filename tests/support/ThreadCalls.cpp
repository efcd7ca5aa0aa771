#include "support/ThreadCalls.h"

#include <pthread.h>

#include <cerrno>
#include <ctime>
#include <utility>

#include "support/NextFunction.h"

namespace {

using qx::test::nextFunction;
using qx::test::ThreadCalls;

bool mayMake() {
  if (ThreadCalls::makesLeft == 0) return false;
  if (ThreadCalls::makesLeft > 0) --ThreadCalls::makesLeft;
  return true;
}

}  // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  static auto* const make = nextFunction<decltype(pthread_mutex_init)>("pthread_mutex_init");
  if (!mayMake()) return EAGAIN;
  ++ThreadCalls::alive;
  return make(mutex, attributes);
}

int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept {
  static auto* const destroy = nextFunction<decltype(pthread_mutex_destroy)>("pthread_mutex_destroy");
  --ThreadCalls::alive;
  return destroy(mutex);
}

int pthread_cond_init(pthread_cond_t* __restrict condition, const pthread_condattr_t* __restrict attributes) noexcept {
  static auto* const make = nextFunction<decltype(pthread_cond_init)>("pthread_cond_init");
  if (!mayMake()) return EAGAIN;
  ++ThreadCalls::alive;
  clockid_t clock = CLOCK_REALTIME;
  if (attributes != nullptr) ::pthread_condattr_getclock(attributes, &clock);
  ThreadCalls::clock = clock;
  return make(condition, attributes);
}

int pthread_cond_destroy(pthread_cond_t* condition) noexcept {
  static auto* const destroy = nextFunction<decltype(pthread_cond_destroy)>("pthread_cond_destroy");
  --ThreadCalls::alive;
  return destroy(condition);
}

int pthread_cond_wait(pthread_cond_t* __restrict condition, pthread_mutex_t* __restrict mutex) {
  static auto* const wait = nextFunction<decltype(pthread_cond_wait)>("pthread_cond_wait");
  // With the mutex held: who wants to wake comes after the wait has begun.
  if (ThreadCalls::watched) ++ThreadCalls::waits;
  const int result = wait(condition, mutex);
  if (ThreadCalls::afterAWait) ThreadCalls::afterAWait();
  return result;
}

int pthread_cond_timedwait(pthread_cond_t* __restrict condition, pthread_mutex_t* __restrict mutex,
                           const timespec* __restrict deadline) {
  static auto* const wait = nextFunction<decltype(pthread_cond_timedwait)>("pthread_cond_timedwait");
  if (ThreadCalls::watched) ++ThreadCalls::waits;
  const int result = wait(condition, mutex, deadline);
  if (ThreadCalls::afterAWait) ThreadCalls::afterAWait();
  return result;
}

int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
  static auto* const wake = nextFunction<decltype(pthread_cond_broadcast)>("pthread_cond_broadcast");
  ++ThreadCalls::wakesOfAll;
  if (ThreadCalls::beforeAWakeOfAll) std::exchange(ThreadCalls::beforeAWakeOfAll, nullptr)();
  return wake(condition);
}

int pthread_cond_signal(pthread_cond_t* condition) noexcept {
  static auto* const wake = nextFunction<decltype(pthread_cond_signal)>("pthread_cond_signal");
  ++ThreadCalls::wakesOfOne;
  return wake(condition);
}
}

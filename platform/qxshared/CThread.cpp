#include "qxshared/CThread.h"

#include <type_traits>

namespace qx {

// Storage without a destructor is what lets the record outlive the thread's other objects.
static_assert(std::is_trivially_destructible_v<CThread>);

CThread* CThread::myCThread(int /*reserved*/) noexcept {
  static thread_local CThread record;
  return &record;
}

}  // namespace qx

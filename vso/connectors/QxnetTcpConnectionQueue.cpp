#include "vso/connectors/QxnetTcpConnectionQueue.h"

#include <algorithm>
#include <boost/chrono/system_clocks.hpp>

namespace qx {

namespace {

using boost::chrono::milliseconds;
using boost::chrono::steady_clock;

// A clock counts nanoseconds in 64 bits: more than this, added to now, might not fit. A century.
constexpr milliseconds LONGEST_WAIT(100LL * 365 * 24 * 3600 * 1000);

}  // namespace

QxnetTcpConnectionPtr QxnetTcpConnectionQueue::pop() {
  QxnetTcpConnectionPtr connection;
  LockingQueue::pop(connection);
  return connection;
}

QxnetTcpConnectionPtr QxnetTcpConnectionQueue::pop(const milliseconds& timeout) {
  if (timeout <= milliseconds::zero()) return QxnetTcpConnectionQueue::pop();
  boost::unique_lock<boost::mutex> lock(mutex_);
  const steady_clock::time_point deadline = steady_clock::now() + std::min(timeout, LONGEST_WAIT);
  passOnIfInterrupted([&] {
    if (items_.empty()) condition_.wait_until(lock, deadline);
  });
  return items_.empty() ? QxnetTcpConnectionPtr() : takeFirst();
}

QxnetTcpConnectionPtr QxnetTcpConnectionQueue::front() const {
  const boost::lock_guard<boost::mutex> lock(mutex_);
  return items_.empty() ? QxnetTcpConnectionPtr() : items_.front();
}

}  // namespace qx

// A queue of connections that wait for a thread.
#pragma once

#include <boost/chrono/duration.hpp>

#include "vso/connectors/LockingQueue.h"
#include "vso/connectors/QxnetTypes.h"

namespace qx {

/// A LockingQueue of connections that can also be looked at and waited at for a limited time.
class QxnetTcpConnectionQueue : public LockingQueue<QxnetTcpConnectionPtr> {
 public:
  ~QxnetTcpConnectionQueue() override = default;

  using LockingQueue::pop;
  /// Waits, without an end, until there is a connection, and takes the first.
  virtual QxnetTcpConnectionPtr pop();
  /// The same with a limit: waits once, for at most `timeout`, and gives an empty pointer if there is still none; that
  /// can be early, if the wait ends for no reason. A `timeout` of 0 or less is no limit: it waits without an end.
  virtual QxnetTcpConnectionPtr pop(const boost::chrono::milliseconds& timeout);
  /// The first connection, which stays in the queue; empty if there is none. Never waits for one.
  virtual QxnetTcpConnectionPtr front() const;
};

}  // namespace qx

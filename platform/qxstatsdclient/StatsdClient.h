// Sends metrics to a StatsD server.
#pragma once

#include <memory>
#include <string>

namespace boost::asio {
class io_context;
}

namespace qx {

namespace detail {
class StatsdDatagram;
}

/// The process's client of a StatsD server: UDP datagrams of at most 1,432 bytes, one or more lines each. Sending is
/// best effort. It never blocks and never throws; a metric that cannot go out, because there is no server, the socket's
/// buffer is full, or it does not fit a datagram, is dropped with a debug line.
///
/// Names and values may hold any bytes: those that would break a line become `_`.
///
/// All operations may be called from any thread.
class StatsdClient {
 public:
  /// The one object, made at first use and never destroyed: a metric may be sent as late as at process exit. Never
  /// null.
  static StatsdClient* getInstance();

  StatsdClient(const StatsdClient&) = delete;
  StatsdClient& operator=(const StatsdClient&) = delete;

  /// The context that the socket belongs to; it need not be running. It may end before this object does, after which
  /// metrics are dropped. Null, or another context than before, closes the socket. `ownThread` true, for a thread of
  /// the client's own, is not provided for: false is returned and nothing changed. Returns true if the context was
  /// taken, and throws, with nothing changed, if it cannot be guarded.
  bool setAsioContext(boost::asio::io_context* context, bool ownThread);
  /// Where metrics go from now on: an IPv4 or IPv6 address as text (no name), and a port. Returns true. Throws
  /// boost::system::system_error if `address` is none or the system refuses a socket to it, std::invalid_argument for a
  /// port above 65535, std::logic_error without a context; the server is then the one before.
  bool setServer(const std::string& address, unsigned int port);

  /// Sends `name.key` with a value: a decimal number (digits with an optional minus in front and an optional fraction
  /// behind) as a gauge, any other text as a set. An empty value is dropped. True if the datagram was handed to the
  /// system.
  bool string(const std::string& name, const std::string& key, const std::string& value);
  /// Sends each leaf of a JSON object under `name.key` and its dotted path; the elements of an array stand under their
  /// index. Numbers go out as gauges, booleans as 1 and 0, strings as sets whatever they say, null not at all. A text
  /// that is no JSON object goes out as `string` sends it. True if every datagram was handed to the system and nothing
  /// was dropped.
  bool jsonObject(const std::string& name, const std::string& key, const std::string& value);

 private:
  struct Link;
  class LinkGuard;

  StatsdClient();

  bool send(const detail::StatsdDatagram& datagram);

  /// Shared with the context, which closes the socket when it ends.
  std::shared_ptr<Link> link_;
};

}  // namespace qx

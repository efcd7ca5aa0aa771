// One TCP connection of a server, read line by line.
#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/strand.hpp>
#include <boost/function.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/system/error_code.hpp>
#include <mutex>
#include <string>
#include <string_view>

#include "qxnet/ConnectionOperation.h"
#include "qxnet/ConnectionState.h"
#include "qxnet/LineBuffer.h"

namespace qx::net::stream {

/// A connection from its accept to its end. Held in a boost::shared_ptr, which what is under way on it shares.
///
/// All operations may be called from any thread, also from within the connection's own callbacks. The callbacks run on
/// the threads that run the context, one at a time and in order: while one runs, whatever thread it is on, the
/// connection's next one waits. None runs inside a call of this class. An exception that leaves one leaves the
/// context's `run` too; the connection goes on.
///
/// The context must outlive the connection.
class TCPConnection : public boost::enable_shared_from_this<TCPConnection> {
 public:
  using Ptr = boost::shared_ptr<TCPConnection>;
  /// Gets what a read has read, the delimiter included. The text is the connection's own: good during the call.
  using DataFunc = boost::function<void(Ptr, const std::string&)>;
  /// Gets the new state, the one before, what changed it, and why. `boost::asio::error::eof` is a peer that closed its
  /// side.
  using StateFunc = boost::function<void(Ptr, ConnectionState, ConnectionState, ConnectionOperation,
                                         const boost::system::error_code&)>;

  /// The longest line in bytes, with its delimiter. A peer that sends more without a delimiter is disconnected with
  /// `boost::asio::error::message_size`.
  static constexpr std::size_t LONGEST_LINE = detail::LineBuffer::LONGEST_LINE;
  /// While this many bytes or more wait to be sent, no more are taken.
  static constexpr std::size_t WRITE_LIMIT = 1'048'576;

  /// A connection in the state CONNECTION_OPENING, its socket not open.
  explicit TCPConnection(boost::asio::io_context& ioContext);
  virtual ~TCPConnection() = default;

  TCPConnection(const TCPConnection&) = delete;
  TCPConnection& operator=(const TCPConnection&) = delete;

  /// Sets the callback for data, or for changes of state, in place of the one before, which may still be running. An
  /// empty one means that nobody wants to know. Both are forgotten when the closed state has been told, and so are
  /// those that are set later.
  void handleDataFunc(DataFunc callback);
  void handleStateFunc(StateFunc callback);

  /// Makes a connection whose socket has been accepted CONNECTION_OPEN. Does nothing to any other.
  virtual void start();
  /// Closes the socket at once; what waits to be sent is lost. Does nothing to a closed connection.
  virtual void close();

  ConnectionState state() const noexcept { return state_.load(std::memory_order_acquire); }

  /// Reads once: up to and including the next `delimiter`, and hands that to the data callback. One read is under way
  /// at a time: a call while one is changes nothing but its delimiter. Does nothing unless the connection is open.
  /// Throws std::invalid_argument if `delimiter` is empty.
  ///
  /// If the peer has closed its side, the connection ends when all lines before have been read: at once, or
  /// CONNECTION_CLOSING until what is still to be sent has been. (A peer that does not read what it gets keeps it so:
  /// to close such a connection is the owner's business.)
  void asyncReadUntil(std::string_view delimiter);
  /// Sends `data` behind what was to be sent before. On failure nothing of it is sent: `not_connected` unless the
  /// connection is open, `no_buffer_space` while WRITE_LIMIT is reached (the peer does not read).
  boost::system::error_code asyncWrite(const std::string& data);

  /// Keep-alive of the socket: on or off; the number of probes without an answer that end the connection; the seconds
  /// of silence before the first; the seconds between two. Each gives the system's error.
  boost::system::error_code setKeepAlive(bool on);
  boost::system::error_code setKeepAliveCount(int probes);
  boost::system::error_code setKeepAliveIdle(int seconds);
  boost::system::error_code setKeepAliveInterval(int seconds);

  /// For whoever accepts into it. Once `start` has been called, of the connection's own.
  boost::asio::ip::tcp::socket& socket() noexcept { return socket_; }

 private:
  using Strand = boost::asio::strand<boost::asio::io_context::executor_type>;

  void want(std::string_view delimiter);
  void deliver();
  bool deliverLines();
  void read();
  void handleRead(const boost::system::error_code& error, std::size_t size);
  void sendWaiting();
  void handleWrite(const boost::system::error_code& error, std::size_t size);
  void end(ConnectionOperation operation, const boost::system::error_code& error);
  void changeState(ConnectionState state, ConnectionOperation operation, const boost::system::error_code& error);
  boost::system::error_code setOption(int level, int name, int value);

  const Strand strand_;

  // Guards the socket, the callbacks and what is to be sent. Never held during a callback.
  std::mutex mutex_;
  boost::asio::ip::tcp::socket socket_;
  // Changed under the mutex.
  std::atomic<ConnectionState> state_{CONNECTION_OPENING};
  // Shared, so that one that runs may be replaced.
  boost::shared_ptr<const DataFunc> dataFunc_;
  boost::shared_ptr<const StateFunc> stateFunc_;
  std::atomic<bool> isDataFuncNew_{false};
  // Being sent, of which the first `sent_` bytes have been; and what comes behind it.
  std::string sending_;
  std::size_t sent_ = 0;
  std::string waiting_;
  // The closed state has been told.
  bool isOver_ = false;

  // Touched in the strand only.
  detail::LineBuffer received_;
  std::string delimiter_;
  std::string line_;
  // A line is asked for and not delivered yet.
  bool isWanted_ = false;
  // A read or a delivery is on its way, and will see to what is wanted.
  bool isBusy_ = false;
};

}  // namespace qx::net::stream

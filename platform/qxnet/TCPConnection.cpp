#include "qxnet/TCPConnection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <boost/asio/bind_executor.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace qx::net::stream {

namespace {

using boost::system::error_code;
using Lock = std::lock_guard<std::mutex>;

// A buffer that had to grow further for one large message is given back.
constexpr std::size_t KEPT_CAPACITY = 65'536;

/// Empties a text and gives its memory back, which an assignment would keep.
void release(std::string& text) { std::string().swap(text); }

/// A callback in a shared place; none if it is empty.
template <typename Func>
boost::shared_ptr<const Func> shared(Func callback) {
  return callback ? boost::make_shared<const Func>(std::move(callback)) : nullptr;
}

}  // namespace

TCPConnection::TCPConnection(boost::asio::io_context& ioContext)
    : strand_(ioContext.get_executor()), socket_(ioContext) {}

void TCPConnection::handleDataFunc(DataFunc callback) {
  boost::shared_ptr<const DataFunc> replacement = shared(std::move(callback));
  const Lock lock(mutex_);
  if (isOver_) return;
  dataFunc_.swap(replacement);  // the old one dies after the lock has gone
  isDataFuncNew_.store(true, std::memory_order_release);
}

void TCPConnection::handleStateFunc(StateFunc callback) {
  boost::shared_ptr<const StateFunc> replacement = shared(std::move(callback));
  const Lock lock(mutex_);
  if (isOver_) return;
  stateFunc_.swap(replacement);
}

void TCPConnection::start() {
  const Lock lock(mutex_);
  if (state_ != CONNECTION_OPENING) return;
  // What is written while something is on its way goes out as one: to wait for more would only keep a peer waiting, by
  // as much as 40 milliseconds for each answer.
  error_code ignored;
  socket_.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
  changeState(CONNECTION_OPEN, OPERATION_START, {});
}

void TCPConnection::close() { end(OPERATION_CLOSE, {}); }

void TCPConnection::asyncReadUntil(std::string_view delimiter) {
  if (delimiter.empty()) throw std::invalid_argument("TCPConnection: a line needs a delimiter");
  if (strand_.running_in_this_thread()) {
    want(delimiter);
    return;
  }
  boost::asio::post(strand_, [self = shared_from_this(), text = std::string(delimiter)] { self->want(text); });
}

void TCPConnection::want(std::string_view delimiter) {
  if (delimiter_ != delimiter) delimiter_ = delimiter;
  isWanted_ = true;
  if (isBusy_) return;
  isBusy_ = true;
  // Also when the line is there already: nobody expects the callback inside this call.
  boost::asio::post(strand_, [self = shared_from_this()] { self->deliver(); });
}

/// Delivers the lines that are wanted and there, and goes on to read when they are not.
void TCPConnection::deliver() {
  bool isReadNeeded = false;
  try {
    isReadNeeded = deliverLines();
  } catch (...) {
    boost::asio::post(strand_, [self = shared_from_this()] { self->deliver(); });
    throw;
  }
  if (isReadNeeded) {
    read();
  } else {
    isBusy_ = false;
  }
}

/// True if a line is wanted that is not there.
bool TCPConnection::deliverLines() {
  const Ptr self = shared_from_this();
  boost::shared_ptr<const DataFunc> callback;
  isDataFuncNew_.store(true, std::memory_order_relaxed);
  while (isWanted_ && state() == CONNECTION_OPEN) {
    const std::string_view line = received_.line(delimiter_);
    if (line.empty()) return true;
    isWanted_ = false;
    line_ = line;
    if (isDataFuncNew_.load(std::memory_order_acquire)) {
      const Lock lock(mutex_);
      isDataFuncNew_.store(false, std::memory_order_relaxed);
      callback = dataFunc_;
    }
    if (callback) (*callback)(self, line_);
  }
  return false;
}

void TCPConnection::read() {
  const detail::LineBuffer::Space space = received_.space();
  if (space.size == 0) {
    isBusy_ = false;
    end(OPERATION_READ, boost::asio::error::message_size);
    return;
  }
  const Lock lock(mutex_);
  if (state_ != CONNECTION_OPEN) {
    isBusy_ = false;
    return;
  }
  socket_.async_read_some(
      boost::asio::buffer(space.bytes, space.size),
      boost::asio::bind_executor(strand_, [self = shared_from_this()](const error_code& error, std::size_t size) {
        self->handleRead(error, size);
      }));
}

void TCPConnection::handleRead(const error_code& error, std::size_t size) {
  if (!error) {
    received_.received(size);
    deliver();
    return;
  }
  isBusy_ = false;
  {
    const Lock lock(mutex_);
    if (error == boost::asio::error::eof && state_ == CONNECTION_OPEN && !sending_.empty()) {
      changeState(CONNECTION_CLOSING, OPERATION_READ, error);
      return;
    }
  }
  end(OPERATION_READ, error);
}

error_code TCPConnection::asyncWrite(const std::string& data) {
  const Lock lock(mutex_);
  if (state_ != CONNECTION_OPEN) return boost::asio::error::not_connected;
  if (sending_.size() - sent_ + waiting_.size() >= WRITE_LIMIT) return boost::asio::error::no_buffer_space;
  waiting_ += data;
  if (sending_.empty()) sendWaiting();
  return {};
}

/// Sends the rest of what is being sent, or else what waits, if anything does. The mutex is held, and nothing is on its
/// way. (Asio's own writing of a whole buffer would touch the socket in between, without the mutex.)
void TCPConnection::sendWaiting() {
  if (sent_ == sending_.size()) {
    sent_ = 0;
    sending_.clear();
    if (sending_.capacity() > KEPT_CAPACITY) release(sending_);
    sending_.swap(waiting_);
    if (sending_.empty()) return;
  }
  socket_.async_write_some(
      boost::asio::buffer(sending_.data() + sent_, sending_.size() - sent_),
      boost::asio::bind_executor(strand_, [self = shared_from_this()](const error_code& error, std::size_t size) {
        self->handleWrite(error, size);
      }));
}

void TCPConnection::handleWrite(const error_code& error, std::size_t size) {
  bool isOver = static_cast<bool>(error);
  {
    const Lock lock(mutex_);
    if (state_ == CONNECTION_CLOSED) {
      release(sending_);
      return;
    }
    if (!isOver) {
      sent_ += size;
      sendWaiting();
      isOver = state_ == CONNECTION_CLOSING && sending_.empty();
    } else {
      release(sending_);
      sent_ = 0;
    }
  }
  if (isOver) end(OPERATION_WRITE, error);
}

void TCPConnection::end(ConnectionOperation operation, const error_code& error) {
  const Lock lock(mutex_);
  if (state_ == CONNECTION_CLOSED) return;
  error_code ignored;  // the system's answer changes nothing: the descriptor is gone
  socket_.close(ignored);
  release(waiting_);
  changeState(CONNECTION_CLOSED, operation, error);
}

/// Changes the state and has it told. The mutex is held.
void TCPConnection::changeState(ConnectionState state, ConnectionOperation operation, const error_code& error) {
  const ConnectionState previous = state_.exchange(state, std::memory_order_acq_rel);
  boost::asio::post(strand_, [self = shared_from_this(), state, previous, operation, error] {
    boost::shared_ptr<const StateFunc> callback;
    boost::shared_ptr<const DataFunc> dropped;
    {
      const Lock lock(self->mutex_);
      callback = self->stateFunc_;
      if (state == CONNECTION_CLOSED) {
        // They may hold what holds this connection.
        self->isOver_ = true;
        self->stateFunc_.reset();
        dropped.swap(self->dataFunc_);
      }
    }
    if (callback) (*callback)(self, state, previous, operation, error);
  });
}

error_code TCPConnection::setKeepAlive(bool on) { return setOption(SOL_SOCKET, SO_KEEPALIVE, on ? 1 : 0); }

error_code TCPConnection::setKeepAliveCount(int probes) { return setOption(IPPROTO_TCP, TCP_KEEPCNT, probes); }

error_code TCPConnection::setKeepAliveIdle(int seconds) { return setOption(IPPROTO_TCP, TCP_KEEPIDLE, seconds); }

error_code TCPConnection::setKeepAliveInterval(int seconds) { return setOption(IPPROTO_TCP, TCP_KEEPINTVL, seconds); }

error_code TCPConnection::setOption(int level, int name, int value) {
  const Lock lock(mutex_);
  if (::setsockopt(socket_.native_handle(), level, name, &value, sizeof value) == 0) return {};
  return {errno, boost::system::system_category()};
}

}  // namespace qx::net::stream

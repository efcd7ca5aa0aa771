// How a server listens.
#pragma once

#include <log4cplus/loglevel.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/socket_base.hpp>
#include <boost/system/error_code.hpp>
#include <sstream>

#include "qxnet/streamLog.h"

namespace qx::net::stream {

/// An acceptor and the endpoint that it listens at.
template <typename Acceptor, typename Endpoint>
class BasicAcceptorPolicy {
 public:
  /// Opens nothing.
  BasicAcceptorPolicy(boost::asio::io_context& ioContext, const Endpoint& endpoint)
      : acceptor_(ioContext), endpoint_(endpoint) {}
  virtual ~BasicAcceptorPolicy() = default;

  BasicAcceptorPolicy(const BasicAcceptorPolicy&) = delete;
  BasicAcceptorPolicy& operator=(const BasicAcceptorPolicy&) = delete;

 protected:
  using ErrorCode = boost::system::error_code;

  /// Opens, binds and listens. The first failure is logged at error level and returned, and leaves the acceptor as far
  /// as it came: `closeAcceptor` before the next attempt. An open acceptor gives `boost::asio::error::already_open`.
  virtual ErrorCode openAcceptor() {
    ErrorCode error;
    acceptor_.open(endpoint_.protocol(), error);
    if (error) return failed("openAcceptor", "opening acceptor", error, __PRETTY_FUNCTION__);
    acceptor_.set_option(boost::asio::socket_base::reuse_address(true), error);
    if (error) return failed("openAcceptor", "setting socket option (SO_REUSEADDR)", error, __PRETTY_FUNCTION__);
    acceptor_.bind(endpoint_, error);
    if (error) return failed("openAcceptor", "binding to endpoint", error, __PRETTY_FUNCTION__);
    acceptor_.listen(BACKLOG, error);
    if (error) return failed("openAcceptor", "listening for incoming connections", error, __PRETTY_FUNCTION__);
    // Asio would try again by itself when a peer gives up before it is accepted; the server is to hear of it.
    acceptor_.set_option(boost::asio::socket_base::enable_connection_aborted(true), error);
    return error;
  }

  /// Closes an open acceptor; a failure is logged at error level. The argument is reserved; callers pass false.
  virtual void closeAcceptor(bool /*reserved*/) {
    if (!acceptor_.is_open()) return;
    ErrorCode error;
    acceptor_.close(error);
    if (error) failed("closeAcceptor", "closing acceptor", error, __PRETTY_FUNCTION__);
  }

  /// Where the open acceptor listens, with the port that the system chose for port 0; otherwise `endpoint_`.
  Endpoint listeningEndpoint() const {
    ErrorCode error;
    const Endpoint listening = acceptor_.local_endpoint(error);
    return error ? endpoint_ : listening;
  }

  Acceptor acceptor_;
  Endpoint endpoint_;

 private:
  // How many connections may wait to be accepted.
  static constexpr int BACKLOG = 128;

  ErrorCode failed(const char* operation, const char* step, const ErrorCode& error, const char* function) const {
    std::ostringstream text;
    text << operation << "(): Error " << step << " [" << endpoint_ << "]: " << error.message();
    detail::log(log4cplus::ERROR_LOG_LEVEL, text.str(), __FILE__, __LINE__, function);
    return error;
  }
};

}  // namespace qx::net::stream

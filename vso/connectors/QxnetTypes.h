// Short names for what the line server and its client share.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/system/error_code.hpp>

#include "qxnet/ConnectionOperation.h"
#include "qxnet/ConnectionState.h"

namespace qx {

namespace net::stream {
class TCPConnection;
}

using BErrorCode = boost::system::error_code;
using QxnetTcpConnectionPtr = boost::shared_ptr<net::stream::TCPConnection>;
using QxnetConnectionState = net::stream::ConnectionState;
using QxnetConnectionOperation = net::stream::ConnectionOperation;

}  // namespace qx

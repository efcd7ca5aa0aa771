// What connections tell, as texts in the order in which it was told.

#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "qxnet/ConnectionOperation.h"
#include "qxnet/ConnectionState.h"

namespace qx::test {

/// Any thread may add.
class Events {
 public:
  void add(std::string event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    events_.push_back(std::move(event));
  }
  std::vector<std::string> all() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return events_;
  }
  std::size_t count() const { return all().size(); }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
};

/// "CONNECTION_OPENING -> CONNECTION_OPEN, OPERATION_START, Success"
inline std::string changeOf(net::stream::ConnectionState state, net::stream::ConnectionState previous,
                            net::stream::ConnectionOperation operation, const boost::system::error_code& error) {
  std::ostringstream out;
  out << previous << " -> " << state << ", " << operation << ", " << error.message();
  return out.str();
}

constexpr char OPENED[] = "CONNECTION_OPENING -> CONNECTION_OPEN, OPERATION_START, Success";
constexpr char CLOSED_BY_OWNER[] = "CONNECTION_OPEN -> CONNECTION_CLOSED, OPERATION_CLOSE, Success";
constexpr char CLOSED_BY_PEER[] = "CONNECTION_OPEN -> CONNECTION_CLOSED, OPERATION_READ, End of file";

}  // namespace qx::test

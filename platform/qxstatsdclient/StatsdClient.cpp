#include "qxstatsdclient/StatsdClient.h"

#include <fcntl.h>
#include <log4cplus/logger.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/execution_context.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/udp.hpp>
#include <charconv>
#include <exception>
#include <limits>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "qxlogger/Logger.h"
#include "qxstatsdclient/StatsdDatagram.h"

namespace qx {

namespace {

using boost::asio::ip::udp;
using detail::StatsdDatagram;
using Json = nlohmann::json;

void logDrop(const std::string& reason) {
  if (!Logger::hasBeenInitialized) Logger::initialize();
  const log4cplus::Logger root = log4cplus::Logger::getRoot();
  if (root.isEnabledFor(log4cplus::DEBUG_LOG_LEVEL)) {
    root.log(log4cplus::DEBUG_LOG_LEVEL, "StatsdClient::send: metric dropped: " + reason, __FILE__, __LINE__,
             __PRETTY_FUNCTION__);
  }
}

/// As digits, however large or small: the protocol has no exponents.
std::string digitsOf(double number) {
  constexpr std::size_t LONGEST = std::numeric_limits<double>::max_exponent10 + 64;
  constexpr std::size_t LONGEST_FRACTION = 1100;
  char digits[LONGEST + LONGEST_FRACTION];
  const auto end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed).ptr;
  return {digits, end};
}

std::string textOf(const Json& leaf) {
  switch (leaf.type()) {
    case Json::value_t::string:
      return leaf.get<std::string>();
    case Json::value_t::boolean:
      return leaf.get<bool>() ? "1" : "0";
    case Json::value_t::number_float:
      return digitsOf(leaf.get<double>());
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      return leaf.dump();
    default:
      return {};
  }
}

/// Hands each leaf below `node` to `use`, with its dotted path.
template <typename Use>
void forEachLeaf(const Json& node, const std::string& path, const Use& use) {
  if (node.is_null()) return;
  // A path that no datagram holds is not gone down further: nesting costs the sender nothing, and a stack has an end.
  if (!node.is_structured() || path.size() > StatsdDatagram::CAPACITY) {
    use(path, node);
  } else if (node.is_object()) {
    for (const auto& [key, child] : node.items()) forEachLeaf(child, path + "." + key, use);
  } else {
    for (std::size_t i = 0; i < node.size(); ++i) forEachLeaf(node[i], path + "." + std::to_string(i), use);
  }
}

}  // namespace

struct StatsdClient::Link {
  std::mutex mutex;
  boost::asio::io_context* context = nullptr;
  std::optional<udp::socket> socket;
};

/// Lives in the context. A socket must not outlive its context, which this client's owner may well end first.
class StatsdClient::LinkGuard : public boost::asio::execution_context::service {
 public:
  static boost::asio::execution_context::id id;

  explicit LinkGuard(boost::asio::execution_context& context) : service(context) {}

  void guard(const std::shared_ptr<Link>& link) { link_ = link; }

 private:
  void shutdown() override {
    if (!link_) return;
    const std::lock_guard<std::mutex> lock(link_->mutex);
    if (static_cast<boost::asio::execution_context*>(link_->context) != &context()) return;
    link_->socket.reset();
    link_->context = nullptr;
  }

  std::shared_ptr<Link> link_;
};

boost::asio::execution_context::id StatsdClient::LinkGuard::id;

StatsdClient::StatsdClient() : link_(std::make_shared<Link>()) {}

StatsdClient* StatsdClient::getInstance() {
  static auto* const client = new StatsdClient;
  return client;
}

bool StatsdClient::setAsioContext(boost::asio::io_context* context, bool ownThread) {
  if (ownThread) return false;
  const std::lock_guard<std::mutex> lock(link_->mutex);
  if (context == link_->context) return context != nullptr;
  if (context != nullptr) boost::asio::use_service<LinkGuard>(*context).guard(link_);
  link_->socket.reset();
  link_->context = context;
  return context != nullptr;
}

bool StatsdClient::setServer(const std::string& address, unsigned int port) {
  if (port > std::numeric_limits<unsigned short>::max()) throw std::invalid_argument("StatsdClient: no such port");
  const udp::endpoint server(boost::asio::ip::make_address(address), static_cast<unsigned short>(port));
  const std::lock_guard<std::mutex> lock(link_->mutex);
  if (link_->context == nullptr) throw std::logic_error("StatsdClient: a server was set before a context");
  udp::socket socket(*link_->context, server.protocol());
  socket.non_blocking(true);
  ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
  // A connected socket hears of a server that is not there, and spares each send the address.
  socket.connect(server);
  link_->socket.emplace(std::move(socket));
  return true;
}

bool StatsdClient::string(const std::string& name, const std::string& key, const std::string& value) try {
  if (value.empty()) {
    logDrop("empty value");
    return false;
  }
  StatsdDatagram datagram;
  if (!datagram.add(name + "." + key, value)) {
    logDrop("too long for a datagram");
    return false;
  }
  return send(datagram);
} catch (const std::exception&) {  // No memory is one more reason to lose a metric.
  return false;
}

bool StatsdClient::jsonObject(const std::string& name, const std::string& key, const std::string& value) try {
  constexpr bool NO_EXCEPTIONS = false;
  const Json document = Json::parse(value, nullptr, NO_EXCEPTIONS);
  if (!document.is_object()) return string(name, key, value);
  StatsdDatagram datagram;
  bool isSent = true;
  forEachLeaf(document, name + "." + key, [&](const std::string& path, const Json& leaf) {
    const std::string text = textOf(leaf);
    const auto add = [&] { return leaf.is_string() ? datagram.addText(path, text) : datagram.add(path, text); };
    if (leaf.is_string() && text.empty()) {
      logDrop("empty value");
      isSent = false;
      return;
    }
    if (add()) return;
    if (!datagram.empty()) isSent = send(datagram) && isSent;
    datagram.clear();
    if (add()) return;
    logDrop("too long for a datagram");
    isSent = false;
  });
  if (!datagram.empty()) isSent = send(datagram) && isSent;
  return isSent;
} catch (const std::exception&) {
  return false;
}

bool StatsdClient::send(const StatsdDatagram& datagram) {
  boost::system::error_code error = boost::asio::error::not_connected;
  {
    const std::lock_guard<std::mutex> lock(link_->mutex);
    if (link_->socket) {
      const boost::asio::const_buffer bytes(datagram.data(), datagram.size());
      link_->socket->send(bytes, 0, error);
      // What the network said of an earlier datagram is told now, in place of sending this one.
      if (error && error != boost::asio::error::would_block) link_->socket->send(bytes, 0, error);
    }
  }
  if (error) logDrop(error.message());
  return !error;
}

}  // namespace qx

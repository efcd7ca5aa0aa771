// The source routes and the tables of a node.
#include <log4cplus/logger.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <stdexcept>

#include "qxshared/hexStr.h"
#include "vso/logging/Log.h"
#include "vso/node/ZigbeeNode.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

constexpr const char* INVALID_INDEX = "Invalid index.";

/// The first route to an access point; the end of the routes if there is none.
ZigbeeNode::Deque::const_iterator findRoute(const ZigbeeNode::Deque& routes, const Euid& zap) {
  return std::find_if(routes.begin(), routes.end(), [&zap](const SourceRoute& route) { return route.zap() == zap; });
}

/// The row at `index`. These tables are short: no row stands at an index that a byte does not hold.
template <typename Row>
const Row& rowAt(const std::list<Row>& table, unsigned int index) {
  constexpr unsigned int MOST_ROWS = 256;
  if (index >= std::min<std::size_t>(table.size(), MOST_ROWS)) throw std::runtime_error(INVALID_INDEX);
  return *std::next(table.begin(), index);
}

template <typename IsWanted>
const Hop& findHop(const std::list<Hop>& hops, IsWanted isWanted) {
  const auto hop = std::find_if(hops.begin(), hops.end(), isWanted);
  return hop != hops.end() ? *hop : Hop::INVALID;
}

}  // namespace

unsigned int ZigbeeNode::numSourceRoutes() const { return static_cast<unsigned int>(routes.size()); }

SourceRoute ZigbeeNode::sourceRoutes(unsigned int index) const {
  if (index >= routes.size()) throw std::runtime_error(INVALID_INDEX);
  return routes[index];
}

SourceRoute ZigbeeNode::getSourceRoute(const Euid& zap) const {
  const auto route = findRoute(routes, zap);
  if (route != routes.end()) return *route;
  const std::string text = "ZigbeeNode::getSourceRoute: " + printId() +
                           ": Unable to locate a source route via zap LID: 0x" + zap.toString() +
                           " for node: " + printSourceRoutes();
  VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, text);
  throw std::runtime_error(text);
}

unsigned int ZigbeeNode::sourceRouteHops(const Euid& zap) const {
  const auto route = findRoute(routes, zap);
  return route != routes.end() ? route->hops() : 0;
}

std::string ZigbeeNode::printSourceRoute(const SourceRoute& route) const {
  if (route == SourceRoute::INVALID) return "ROUTE: none";
  return "ROUTE: " + route.printSourceRouteOrder(" ") + " " + hexStr(sid_, 2, true);
}

std::string ZigbeeNode::printSourceRoutes(const Deque& printed) const {
  if (printed.empty()) return "ROUTES: none";
  std::string text = "ROUTES: ";
  for (std::size_t i = 0; i < printed.size(); ++i) {
    text += (i == 0 ? "[" : ", [") + std::to_string(i) + "]: " + printSourceRoute(printed[i]);
  }
  return text;
}

void ZigbeeNode::logRoutingChanges(const Deque& previous) const {
  const bool isPrefix = routes.size() <= previous.size() && std::equal(routes.begin(), routes.end(), previous.begin());
  if (isPrefix) return;
  VSO_LOG(logger, log4cplus::INFO_LOG_LEVEL,
          "ZigbeeNode::logRoutingChanges: " << printId() << ": NEW: " << printSourceRoutes()
                                            << ", OLD: " << printSourceRoutes(previous));
}

const Hop& ZigbeeNode::getHop(const Euid& neighborLid) const {
  return findHop(hops_, [&neighborLid](const Hop& hop) { return hop.neighbor_lid_ == neighborLid; });
}

const Hop& ZigbeeNode::getHop(unsigned short neighbor) const {
  return findHop(hops_, [neighbor](const Hop& hop) { return hop.neighbor_ == neighbor; });
}

unsigned int ZigbeeNode::numMtoRoutes() const { return static_cast<unsigned int>(mto_routes_.size()); }
Route ZigbeeNode::getMtoRoute(unsigned int index) const { return rowAt(mto_routes_, index); }

unsigned int ZigbeeNode::numOfAps() const { return static_cast<unsigned int>(ap_table_.size()); }
AccessPoint ZigbeeNode::getAp(unsigned int index) const { return rowAt(ap_table_, index); }

std::ostream& operator<<(std::ostream& out, const ZigbeeNode& node) { return out << node.printSourceRoutes(); }

}  // namespace qx

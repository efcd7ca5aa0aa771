// The message of a node into its record, and everything that a record can be asked. Reachable from outside: the records
// come back from saved files and from other processes, and only the parser has looked at the bytes before.
#include <algorithm>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <google/protobuf/stubs/logging.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include "fuzz/support/trapUnless.h"
#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"
#include "vso/node/NetworkHealth.h"
#include "vso/node/ZigbeeNode.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace {

using qx::BPosixTime;
using qx::EventHistogram;
using qx::Hop;
using qx::SourceRoute;
using qx::ZigbeeNode;
using qx::fuzz::trapUnless;
using qx::pb::ZigbeeNodePBuf;

bool isTruth(int number) { return number >= 0 && number <= 2; }

bool throwsOnRead(const ZigbeeNodePBuf& message) {
  return std::any_of(message.hops().begin(), message.hops().end(), [](const qx::pb::HopPBuf& hop) {
    return !isTruth(hop.rxonwhenidle()) || !isTruth(hop.permitjoining());
  });
}

/// What the result of reading should be, by a look at the message alone.
bool failsOnRead(const ZigbeeNodePBuf& message) {
  return std::any_of(message.hops().begin(), message.hops().end(),
                     [](const qx::pb::HopPBuf& hop) { return hop.neighborpanid().addr().size() < 8; }) ||
         std::any_of(message.sourceroutes().begin(), message.sourceroutes().end(),
                     [](const qx::pb::SourceRoutePBuf& route) { return route.baseclass().contents_size() > 255; });
}

std::string bytesOf(const ZigbeeNode& node) {
  const std::unique_ptr<ZigbeeNodePBuf> message(node.toProtobuf());
  return message->SerializeAsString();
}

/// The readers of a record against the message that it was read from.
void checkReaders(const ZigbeeNode& node, const ZigbeeNodePBuf& message) {
  trapUnless(node.product() == message.product(), "product");
  trapUnless(node.sid() == (message.sid() & 0xFFFF), "short address");
  trapUnless(node.isOnline() == message.online(), "online");
  trapUnless(node.reflashProfile() == (message.reflashprofile() & 0xFF), "reflash profile");
  trapUnless(node.fwVer() == message.fwver(), "firmware version");
  trapUnless(node.reboots() == (message.reboots() & 0xFFFF), "reboots");
  trapUnless(node.bootCount() == (message.bootcount() & 0xFFFF), "boot count");
  trapUnless(node.updating() == message.updating(), "updating");
  trapUnless(node.updatePercentage() == (message.updatepercentage() & 0xFF), "update percentage");
  trapUnless(node.deviceType() == (static_cast<unsigned int>(message.devicetype()) & 0xFF), "device type");
  trapUnless(node.isAwake() == message.awake(), "awake");
  trapUnless(node.sourceRouteFailures() == message.sourceroutefailures(), "source route failures");
  trapUnless(node.manyToOneRouteFailures() == message.manytooneroutefailures(), "many-to-one route failures");
  trapUnless(node.label() == message.label(), "label");
  trapUnless(node.lastContact() == static_cast<std::int32_t>(message.lastcontact().seconds()), "last contact");
  trapUnless(node.rssi() == static_cast<signed char>(message.rssi()), "signal strength");
  trapUnless(node.uptime() == message.uptime(), "uptime");
  trapUnless(node.rebootsHistogram().windowSize() == message.rebootshistogram().windowsize(), "window");
  std::list<signed char> levels;
  node.getEnergyLevelsList(levels);
  trapUnless(levels.size() == static_cast<std::size_t>(message.energylevels_size()), "energy levels");
}

void checkPredicates(const ZigbeeNode& node) {
  trapUnless(node.hasProduct() != node.product().empty(), "a product is there or empty");
  trapUnless(node.hasFwVer() != node.fwVer().empty(), "a version is there or empty");
  trapUnless(node.hasFwVer() || !node.inMiniapp(), "no version, no miniapp");
  trapUnless(!node.isQueueCheckDevice() || (node.isQxDevice() && node.isEndDevice() && !node.isEmberSleepy()),
             "queues are checked of plain end devices of the maker");
  trapUnless(node.isEndDevice() || !node.isEmberSleepy(), "what sleeps is an end device");
  trapUnless(node.hasDeviceType() || node.deviceTypeStr() == std::string("Unknown"), "no type, no name");
  trapUnless(node.defaultLabel() == (node.label() == "unknown"), "the label of a node that nobody named");
  trapUnless(node.cleanProductString().find_first_of("@|:") == std::string::npos, "no separators are left");
  trapUnless(!node.cleanProductString().empty(), "there is always a product to show");
  trapUnless(node.printId().size() == 28, "a tag has its digits");
  trapUnless(node == node && !(node != node) && !(node < node) && !(node > node), "a node equals itself");
}

template <typename Call>
bool isInvalidIndex(Call call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return std::string(error.what()) == "Invalid index.";
  }
  return false;
}

void checkRoutes(const ZigbeeNode& node) {
  ZigbeeNode::Deque routes;
  node.sourceRoutes(routes);
  trapUnless(routes.size() == node.numSourceRoutes(), "as many routes as it says");
  unsigned int index = 0;
  for (const SourceRoute& route : routes) {
    trapUnless(node.sourceRoutes(index) == route, "a route is found by its index");
    const SourceRoute first = node.getSourceRoute(route.zap());
    trapUnless(first.zap() == route.zap(), "a route is found by its access point");
    trapUnless(node.sourceRouteHops(route.zap()) == first.hops(), "its hops are those of the first");
    trapUnless(node.printSourceRoute(route).rfind("ROUTE: ", 0) == 0, "a route prints");
    ++index;
  }
  std::ostringstream out;
  out << node;
  trapUnless(out.str() == node.printSourceRoutes(), "a node prints as its routes");
  node.logRoutingChanges(routes);
  node.logRoutingChanges({});

  std::list<Hop> hops;
  node.getHopList(hops);
  for (const Hop& hop : hops) {
    trapUnless(node.getHop(hop.neighbor_).neighbor_ == hop.neighbor_, "a hop is found by its short address");
    trapUnless(node.getHop(hop.neighbor_lid_).neighbor_lid_ == hop.neighbor_lid_, "a hop is found by its long address");
  }
  for (index = 0; index < std::min(node.numMtoRoutes(), 256U); ++index) node.getMtoRoute(index);
  for (index = 0; index < std::min(node.numOfAps(), 256U); ++index) node.getAp(index);
  for (const unsigned int beyond : {0U, 256U, 0xFFFFFFFFU}) {
    trapUnless(isInvalidIndex([&] { node.sourceRoutes(std::max(node.numSourceRoutes(), beyond)); }), "no route there");
    trapUnless(isInvalidIndex([&] { node.getMtoRoute(std::max(node.numMtoRoutes(), beyond)); }), "no route there");
    trapUnless(isInvalidIndex([&] { node.getAp(std::max(node.numOfAps(), beyond)); }), "no access point there");
  }
}

/// Moments that a clock may claim, round those that a record has.
std::vector<BPosixTime> moments(const ZigbeeNode& node) {
  using boost::posix_time::hours;
  std::vector<BPosixTime> times = {BPosixTime(),
                                   BPosixTime(boost::date_time::neg_infin),
                                   BPosixTime(boost::date_time::pos_infin),
                                   BPosixTime(boost::gregorian::date(1400, 1, 1)),
                                   BPosixTime(boost::gregorian::date(9999, 12, 31)),
                                   BPosixTime(boost::gregorian::date(2040, 1, 1)),
                                   ZigbeeNode::localtime()};
  for (const EventHistogram* histogram :
       {static_cast<const EventHistogram*>(&node.rebootsHistogram()),
        static_cast<const EventHistogram*>(&node.sourceRouteFailuresHistogram()),
        static_cast<const EventHistogram*>(&node.manyToOneRouteFailuresHistogram())}) {
    for (const BPosixTime& time : {histogram->startTime(), histogram->lastEvent()}) {
      for (const int away : {-50, -1, 0, 1, 50}) times.push_back(time + hours(away));
    }
  }
  return times;
}

bool isLight(int quality) { return quality >= 1 && quality <= 3; }

void checkHealth(ZigbeeNode node) {
  for (const BPosixTime& now : moments(node)) {
    for (const double average : {node.rebootCumulativeAverage(now), node.sourceRouteFailuresCumulativeAverage(now),
                                 node.manyToOneRouteFailuresCumulativeAverage(now)}) {
      trapUnless(std::isfinite(average) && average >= 0, "an average is a number");
    }
    trapUnless(isLight(node.rebootCumulativeQuality(now)) && isLight(node.sourceRouteFailuresCumulativeQuality(now)) &&
                   isLight(node.manyToOneRouteFailuresCumulativeQuality(now)),
               "a cumulative quality is a light");
    trapUnless(isLight(node.rebootSlidingQuality(now)) && isLight(node.sourceRouteFailuresSlidingQuality(now)) &&
                   isLight(node.manyToOneRouteFailuresSlidingQuality(now)),
               "a sliding quality is a light");
    qx::RebootHistogram reboots = node.rebootsHistogram();
    trapUnless(std::isfinite(reboots.rate(now)), "a rate is a number");
    reboots.quality(now);
    const auto count = static_cast<unsigned short>(node.reboots() + 1);
    node.addRebootEvent(now);
    node.addSourceRouteFailure(now);
    node.addManyToOneRouteFailure(now);
    trapUnless(node.reboots() == count, "a reboot counts");
  }
}

void checkReport(ZigbeeNode node) {
  trapUnless(node.updateNetworkHealth(), "the first report is a new one");
  const qx::NetworkHealth::NodeHealth& health = node.networkHealth()->nodeHealth();
  trapUnless(health.size() == 1 && health.begin()->first == node.lid() && health.begin()->second.size() == 26,
             "a report has 26 items of the node");
  trapUnless(node.hasRadioBars() || (node.signalStrength() >= -1 && node.signalStrength() <= 4), "bars are few");
  node.updateNetworkHealth();
  node.updateSignalStrength();
  node.invalidateNodeSignalInfo();
  trapUnless(node.signalStrength() == -1, "nothing is known of the link");
  trapUnless(!node.resetHealthCounters({ZigbeeNode::REBOOT_CUMULATIVE_COUNT}), "reboots can be reset");
  trapUnless(node.resetHealthCounters({node.product()}), "no product is a metric");
  node.resetCounters();
  trapUnless(node.sourceRouteFailures() == 0 && node.manyToOneRouteFailures() == 0 && node.reboots() == 0,
             "what was reset is zero");
  node.gatherNetworkHealth();
}

void checkForms(const ZigbeeNode& node) {
  const std::string written = bytesOf(node);
  ZigbeeNodePBuf parsed;
  trapUnless(parsed.ParseFromString(written), "what a record writes parses");
  trapUnless(!failsOnRead(parsed) && !throwsOnRead(parsed), "a record writes whole parts");
  ZigbeeNode restored;
  trapUnless(!restored.fromProtobuf(parsed), "a record reads what it wrote");
  trapUnless(bytesOf(restored) == written, "a record survives its message");
  const ZigbeeNode copy(node);
  trapUnless(copy == node && bytesOf(copy) == written && !copy.networkHealth(), "a copy has all but the report");
  restored = node;
  trapUnless(bytesOf(restored) == written, "so has what it is assigned to");

  std::ostringstream out;
  {
    qx::XmlWriter writer(out);
    node.toXml(writer, "node");
  }
  qx::XmlReader reader(out.str());
  while (reader.read()) continue;
  trapUnless(reader.state() != 2, "a record writes well-formed XML");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // Nobody reads here what is logged of bad records, but it is to be put together.
  static const log4cplus::Initializer logging;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
  log4cplus::Logger::getRoot().setLogLevel(log4cplus::TRACE_LOG_LEVEL);
  // Nor does anybody read of each text that is not UTF-8, for which the parser refuses an input.
  google::protobuf::SetLogHandler(nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZigbeeNodePBuf message;
  if (!message.ParseFromArray(data, static_cast<int>(size))) return 0;

  ZigbeeNode node;
  try {
    const bool failed = node.fromProtobuf(message);
    trapUnless(!throwsOnRead(message), "a bad truth is thrown on");
    trapUnless(failed == failsOnRead(message), "reading fails on short ids and long routes, and on nothing else");
    checkReaders(node, message);
  } catch (const std::runtime_error& error) {
    trapUnless(std::string(error.what()) == "triboolFromProtobuf: invalid tribool", "nothing else is thrown");
    trapUnless(throwsOnRead(message), "good truths are not thrown on");
  }
  checkPredicates(node);
  checkRoutes(node);
  checkForms(node);
  checkHealth(node);
  checkReport(node);
  return 0;
}

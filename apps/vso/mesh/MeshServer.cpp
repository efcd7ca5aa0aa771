#include "apps/vso/mesh/MeshServer.h"

#include <algorithm>
#include <list>
#include <utility>
#include <vector>

#include "vso/identifiers/FrameReader.h"
#include "vso/layout/FrameVerdict.h"
#include "vso/logging/Log.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/node/MessageFailHistogram.h"
#include "vso/node/RebootHistogram.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclDiagnostics.h"
#include "vso/zcl/QxZclHaDiagnostics.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/ZclProfile.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"

namespace qx::app {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

constexpr unsigned short COORDINATOR = 0x0000;
constexpr unsigned short ZDO_PROFILE = 0x0000;

/// The network status command and two of its codes (Zigbee, network layer).
constexpr unsigned short NETWORK_STATUS = 0x0003;
constexpr unsigned char SOURCE_ROUTE_FAILURE = 0x0B;
constexpr unsigned char MANY_TO_ONE_ROUTE_FAILURE = 0x0C;
constexpr unsigned int NETWORK_STATUS_SIZE = 3;

/// If a device's own count of its reboots has moved by more than this, it was replaced or reset, which is one reboot.
constexpr unsigned short MOST_MISSED_REBOOTS = 16;
/// An announcement that is overtaken by the next one arrives within this time after the reboot that the next one told
/// of, in seconds.
constexpr int LATE = 60;

constexpr unsigned short unsignedId(short id) { return static_cast<unsigned short>(id); }

bool isOf(const RecordedFrame& frame, short profile, short cluster) {
  return frame.profile == unsignedId(profile) && frame.cluster == unsignedId(cluster);
}

/// Commands of a cluster's own have numbers of their own, which mean nothing here.
bool isReport(const ZclMessage& message) { return message.affectsEntireProfile() && message.isReportAttributes(); }

bool isAnnouncement(const RecordedFrame& frame) {
  return isOf(frame, ZclProfile::QX_ANNOUNCE, QxZclAnnounce::CLUSTER_ID) && isReport(QxZclAnnounce(frame.bytes));
}

/// A histogram that begins at `time`, and not when it is made: frames may tell of times that are long gone.
template <typename Histogram>
Histogram begunAt(const BPosixTime& time) {
  Histogram histogram(Histogram::WINDOW_SIZE);
  histogram.reset(time);
  return histogram;
}

ZigbeeNode newNode(const Euid& euid, std::time_t time) {
  ZigbeeNode node;
  node.lid(euid);
  const BPosixTime start = posixTimeOf(time);
  node.rebootsHistogram(begunAt<RebootHistogram>(start));
  node.sourceRouteFailuresHistogram(begunAt<MessageFailHistogram>(start));
  node.manyToOneRouteFailuresHistogram(begunAt<MessageFailHistogram>(start));
  return node;
}

/// What the source of a frame tells of itself: who it is, and where. The coordinator is where the address is 0.
Zap newZap(const Euid& euid, unsigned short address) {
  const bool isCoordinator = address == COORDINATOR;
  Zap zap(0, 0, isCoordinator, euid, PanId(), 0, 0, -1, 0, isCoordinator, 0, 0);
  zap.sid(address);
  return zap;
}

/// The time of an event that a frame of `time` tells of. Histograms go forward alone: an event before the last one
/// would clear what lies between.
template <typename Histogram>
BPosixTime eventTime(const Histogram& histogram, std::time_t time) {
  return std::max(posixTimeOf(time), histogram.lastEvent());
}

/// Counts how often the device rebooted since it told its count before. A count of 0 has not been told.
void countReboots(ZigbeeNode& node, unsigned short count, std::time_t time) {
  const unsigned short before = node.bootCount();
  const auto further = static_cast<unsigned short>(count - before);
  const auto behind = static_cast<unsigned short>(before - count);
  const BPosixTime now = eventTime(node.rebootsHistogram(), time);
  const bool isLate = behind > 0 && behind <= MOST_MISSED_REBOOTS &&
                      now - node.rebootsHistogram().lastEvent() < boost::posix_time::seconds(LATE);
  if (before != 0 && isLate) return;
  node.bootCount(count);
  if (before == 0) return;
  for (int left = further <= MOST_MISSED_REBOOTS ? further : 1; left > 0; --left) node.addRebootEvent(now);
}

/// Takes over what a device says of itself.
void describe(ZigbeeNode& node, const QxZclAnnounce& announce) {
  if (announce.hasProductString()) node.product(announce.productString());
  if (announce.hasFirmwareVersion()) node.fwVer(announce.firmwareVersion());
  if (announce.hasReflashVersion()) node.reflashProfile(announce.reflashVersion());
  if (announce.hasDeviceType()) node.deviceType(announce.deviceType());
  if (announce.hasChannel()) node.channel(announce.channel());
  if (announce.hasApPollInterval()) node.apPollInterval(announce.apPollInterval());
  if (announce.hasParentPollInterval()) node.parentPollInterval(announce.parentPollInterval());
  if (announce.hasNodeRssi()) {
    node.rssi(announce.nodeRssi());
    node.hasRssi(true);
  }
  if (announce.hasNodeLqi()) {
    node.rxLqi(announce.nodeLqi());
    node.hasRxLqi(true);
  }
  if (announce.hasNodeRadioBars()) {
    node.radioBars(announce.nodeRadioBars());
    node.hasRadioBars(true);
  }
  if (announce.hasBatteryLevel()) {
    node.batteryLevel(announce.batteryLevel());
    node.hasBatteryLevel(true);
  }
  node.updateSignalStrength();
}

bool isCoordinator(const QxZclAnnounce& announce) {
  return announce.hasDeviceType() && announce.deviceType() == qx::pb::QX_COORDINATOR;
}

bool isSomebodys(unsigned short address) { return address < MeshServer::FIRST_BROADCAST; }

}  // namespace

MeshServer::Outcome MeshServer::take(const RecordedFrame& frame) {
  const Outcome outcome = sorted(frame);
  switch (outcome) {
    case Outcome::TAKEN:
      ++counts_.taken;
      break;
    case Outcome::HEARD:
      ++counts_.heard;
      break;
    case Outcome::BROKEN:
      ++counts_.broken;
      break;
    case Outcome::STRANGER:
      ++counts_.strangers;
      break;
  }
  return outcome;
}

/// Hands the frame to whom it concerns.
MeshServer::Outcome MeshServer::sorted(const RecordedFrame& frame) {
  if (frame.profile == RecordedFrame::NETWORK_LAYER) return routeFailed(frame);
  const FrameVerdict verdict = judgeFrame(frame.profile, frame.cluster, frame.bytes);
  if (verdict.state == FrameVerdict::BROKEN) {
    VSO_LOG(logger, log4cplus::DEBUG_LOG_LEVEL,
            "MeshServer::take: frame of " << frame.source << " is not whole: " << verdict);
    return Outcome::BROKEN;
  }
  if (isAnnouncement(frame)) return announced(frame);
  if (frame.profile == ZDO_PROFILE) return answered(frame);
  const Source source = heard(frame);
  if (!source.isKnown()) return Outcome::STRANGER;
  return source.node != nullptr ? diagnosed(frame, *source.node) : Outcome::HEARD;
}

/// A device says who it is.
MeshServer::Outcome MeshServer::announced(const RecordedFrame& frame) {
  const QxZclAnnounce announce(frame.bytes);
  auto found = nodes_.find(frame.source);
  if (found == nodes_.end()) {
    const bool isKnownZap = zaps_.count(frame.source) != 0;
    if (isKnownZap || frame.shortAddress == COORDINATOR ||
        (isCoordinator(announce) && isSomebodys(frame.shortAddress))) {
      heardZap(frame);
      return Outcome::TAKEN;
    }
    if (isCoordinator(announce)) return Outcome::STRANGER;
    if (nodes_.size() >= MOST_NODES) return Outcome::STRANGER;
    found = nodes_.emplace(frame.source, newNode(frame.source, frame.time)).first;
  }
  ZigbeeNode& node = found->second;
  heardNode(node, frame);
  if (announce.hasBootCount()) countReboots(node, announce.bootCount(), frame.time);
  describe(node, announce);
  if (announce.hasApTable()) {
    std::list<AccessPoint> table;
    announce.apRouteTable(table);
    forgetZaps(node);
    node.setApTable(table);
    nameZaps(node);
  }
  return Outcome::TAKEN;
}

/// A node says how it is.
MeshServer::Outcome MeshServer::diagnosed(const RecordedFrame& frame, ZigbeeNode& node) {
  if (isOf(frame, ZclProfile::QX_PRIVATE, QxZclDiagnostics::CLUSTER_ID)) {
    const QxZclDiagnostics diagnostics(frame.bytes);
    if (!diagnostics.affectsEntireProfile() || !diagnostics.isReadAttributesResponse()) return Outcome::HEARD;
    QxdiagnosticsNodeCounters counters;
    unsigned int uptime = 0;
    const bool hasCounters = diagnostics.parseReadAttributesResponse(counters);
    const bool hasUptime = diagnostics.parseReadAttributesResponse(uptime);
    if (hasCounters) node.packetCounters(counters);
    if (hasUptime) node.uptime(uptime);
    return hasCounters || hasUptime ? Outcome::TAKEN : Outcome::HEARD;
  }
  if (isOf(frame, ZclProfile::HOME_AUTOMATION, QxZclHaDiagnostics::CLUSTER_ID)) {
    const QxZclHaDiagnostics diagnostics(frame.bytes);
    std::vector<ReportAttributeRecord> records;
    if (diagnostics.isMetricsReport()) diagnostics.getReportAttributes(records);
    if (records.empty()) return Outcome::HEARD;
    return diagnostics.sendMetrics("vso", node.lid()) ? Outcome::HEARD : Outcome::TAKEN;
  }
  return Outcome::HEARD;
}

/// A node or an access point answers the server: a page of one of its tables, mostly.
MeshServer::Outcome MeshServer::answered(const RecordedFrame& frame) {
  const Source source = heard(frame);
  if (!source.isKnown()) return Outcome::STRANGER;
  if (frame.cluster == ZdoNetworkLqiResponse::COMMAND_ID) {
    const ZdoNetworkLqiResponse response(frame.bytes);
    if (response.status() != QX_ZDP_SUCCESS) return Outcome::HEARD;
    const TablePage page{response.totalNeighborTableEntriesOnDevice(), response.startIndex(), frame.time};
    std::list<Hop> rows;
    response.hops(rows);
    const auto table = pages_[frame.source].hops.take(page, std::move(rows));
    if (table && source.node != nullptr) source.node->setHopList(*table);
    if (table && source.zap != nullptr) source.zap->setHopList(*table);
    return Outcome::TAKEN;
  }
  if (frame.cluster == ZdoNetworkRtgResponse::COMMAND_ID) {
    const ZdoNetworkRtgResponse response(frame.bytes);
    if (response.status() != QX_ZDP_SUCCESS) return Outcome::HEARD;
    const TablePage page{response.totalRoutingTableEntriesOnDevice(), response.startIndex(), frame.time};
    std::list<Route> rows;
    response.routes(rows);
    const auto table = pages_[frame.source].routes.take(page, std::move(rows));
    if (table && source.node != nullptr) source.node->setMtoRouteList(*table);
    if (table && source.zap != nullptr) source.zap->setRoutes(*table);
    return Outcome::TAKEN;
  }
  return Outcome::HEARD;
}

/// A router says that it could not go on with a message: on a source route, to the node that was to get it; on a
/// many-to-one route, to an access point, from the node that sent it.
MeshServer::Outcome MeshServer::routeFailed(const RecordedFrame& frame) {
  const bool isStatus = frame.cluster == NETWORK_STATUS;
  if (isStatus && frame.bytes.length_ != NETWORK_STATUS_SIZE) return Outcome::BROKEN;
  const Source source = heard(frame);
  FrameReader in(frame.bytes);
  const unsigned char status = isStatus ? in.u8() : 0;
  if (status == SOURCE_ROUTE_FAILURE) {
    const Euid* const owner = nodeAddresses_.ownerOf(in.u16le());
    if (owner != nullptr) {
      ZigbeeNode* const target = node(*owner);
      target->addSourceRouteFailure(eventTime(target->sourceRouteFailuresHistogram(), frame.time));
      return Outcome::TAKEN;
    }
  }
  if (status == MANY_TO_ONE_ROUTE_FAILURE && source.node != nullptr) {
    source.node->addManyToOneRouteFailure(eventTime(source.node->manyToOneRouteFailuresHistogram(), frame.time));
    return Outcome::TAKEN;
  }
  return source.isKnown() ? Outcome::HEARD : Outcome::STRANGER;
}

bool MeshServer::isZap(const RecordedFrame& frame) const {
  return zaps_.count(frame.source) != 0 || frame.shortAddress == COORDINATOR ||
         zapNamings_.count(frame.shortAddress) != 0;
}

/// Notes where the source of a frame is, and that it is there.
MeshServer::Source MeshServer::heard(const RecordedFrame& frame) {
  ZigbeeNode* const known = node(frame.source);
  if (known != nullptr) {
    heardNode(*known, frame);
    return {known, nullptr};
  }
  return {nullptr, isZap(frame) ? &heardZap(frame) : nullptr};
}

void MeshServer::heardNode(ZigbeeNode& node, const RecordedFrame& frame) {
  if (isSomebodys(frame.shortAddress)) settle(node, frame.shortAddress);
  node.lastContact(std::max(frame.time, node.lastContact()));
  node.online(true);
  node.awake(true);
}

/// The record of the access point that a frame comes from, a new one if need be.
Zap& MeshServer::heardZap(const RecordedFrame& frame) {
  const auto found = zaps_.find(frame.source);
  if (found != zaps_.end()) {
    if (isSomebodys(frame.shortAddress)) settle(found->second, frame.shortAddress);
    return found->second;
  }
  Zap& zap = zaps_.emplace(frame.source, newZap(frame.source, frame.shortAddress)).first->second;
  settle(zap, frame.shortAddress);
  return zap;
}

/// Makes the node the owner of an address.
void MeshServer::settle(ZigbeeNode& node, unsigned short address) {
  const auto former = nodeAddresses_.give(address, node.lid());
  if (former) nodes_.at(*former).sid(UNKNOWN_ADDRESS);
  node.sid(address);
}

/// Makes the access point the owner of an address; who had it is gone.
void MeshServer::settle(Zap& zap, unsigned short address) {
  const auto former = zapAddresses_.give(address, zap.id());
  if (former) {
    pages_.erase(*former);
    zaps_.erase(*former);
  }
  zap.sid(address);
  if (zap.coordinator() == (address == COORDINATOR)) return;
  std::list<Hop> hops;
  zap.getHopList(hops);
  zap = newZap(zap.id(), address);  // which keeps its routes
  zap.setHopList(hops);
}

void MeshServer::nameZaps(const ZigbeeNode& node) {
  std::list<AccessPoint> table;
  node.getApTable(table);
  for (const AccessPoint& zap : table) {
    if (isSomebodys(zap.destination_)) ++zapNamings_[zap.destination_];
  }
}

void MeshServer::forgetZaps(const ZigbeeNode& node) {
  std::list<AccessPoint> table;
  node.getApTable(table);
  for (const AccessPoint& zap : table) {
    const auto naming = zapNamings_.find(zap.destination_);
    if (naming != zapNamings_.end() && --naming->second == 0) zapNamings_.erase(naming);
  }
}

ZigbeeNode* MeshServer::node(const Euid& euid) {
  const auto found = nodes_.find(euid);
  return found == nodes_.end() ? nullptr : &found->second;
}

void MeshServer::restore(Nodes nodes, Zaps zaps) {
  nodes_ = std::move(nodes);
  zaps_ = std::move(zaps);
  pages_.clear();
  nodeAddresses_.clear();
  zapAddresses_.clear();
  zapNamings_.clear();
  for (const auto& [euid, zap] : zaps_) zapAddresses_.give(zap.sid(), euid);
  for (auto& [euid, node] : nodes_) {
    nameZaps(node);
    const unsigned short address = node.sid();
    const Euid* const owner = nodeAddresses_.ownerOf(address);
    if (!isSomebodys(address) || (owner != nullptr && nodes_.at(*owner).lastContact() > node.lastContact())) {
      node.sid(UNKNOWN_ADDRESS);
    } else {
      settle(node, address);
    }
  }
}

void MeshServer::look(std::time_t now) {
  for (auto& [euid, node] : nodes_) look(node, now);
}

void MeshServer::look(ZigbeeNode& node, std::time_t now) {
  const std::time_t silence = now - node.lastContact();
  node.awake(!node.isEmberSleepy() || silence < NAP);
  node.online(silence < (node.isEmberSleepy() ? SLEEPERS_SILENCE : SILENCE));
}

NetworkHealth MeshServer::health(const Euid& euid) {
  ZigbeeNode* const found = node(euid);
  if (found == nullptr) return {};
  found->updateNetworkHealth();
  return *found->networkHealth();
}

NetworkHealth MeshServer::health() {
  NetworkHealth all;
  for (auto& [euid, node] : nodes_) {
    node.updateNetworkHealth();
    const NetworkHealth::NodeHealth& report = node.networkHealth()->nodeHealth();
    for (const auto& [reported, items] : report) all.nodeHealth(reported, items);
  }
  return all;
}

const char* nameOf(MeshServer::Outcome outcome) {
  switch (outcome) {
    case MeshServer::Outcome::TAKEN:
      return "taken";
    case MeshServer::Outcome::HEARD:
      return "heard";
    case MeshServer::Outcome::BROKEN:
      return "broken";
    case MeshServer::Outcome::STRANGER:
      return "stranger";
  }
  return "";
}

}  // namespace qx::app

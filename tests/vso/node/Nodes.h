// The fields of a node as a table, and a node in which each of them has a value of its own.
#pragma once

#include <google/protobuf/timestamp.pb.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <functional>
#include <initializer_list>
#include <list>
#include <string>
#include <vector>

#include "vso/mesh/Records.h"
#include "vso/node/ZigbeeNode.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace qx::test {

/// A time, seconds since 1970.
inline BPosixTime timeOf(long long seconds) {
  return BPosixTime(boost::gregorian::date(1970, 1, 1)) + boost::posix_time::seconds(seconds);
}

/// Makes the reset times of new nodes begin at a time, and puts back what was there.
class ServerStart {
 public:
  explicit ServerStart(const BPosixTime& start) { ZigbeeNode::vessoriStartTime_ = start; }
  ~ServerStart() { ZigbeeNode::vessoriStartTime_ = before_; }
  ServerStart(const ServerStart&) = delete;
  ServerStart& operator=(const ServerStart&) = delete;

 private:
  BPosixTime before_ = ZigbeeNode::vessoriStartTime_;
};

/// A record read from a message that `fill` makes.
template <typename Message, typename Record, typename Fill>
Record recordOf(Record record, Fill fill) {
  Message message;
  fill(message);
  EXPECT_FALSE(record.fromProtobuf(message));
  return record;
}

inline void putHistogram(pb::EventHistogramPBuf* message, unsigned int window, std::initializer_list<int> buckets,
                         long long start, long long lastEvent) {
  message->set_windowsize(window);
  for (const int count : buckets) message->add_histogram(count);
  message->mutable_starttime()->set_seconds(start);
  message->mutable_lastevent()->set_seconds(lastEvent);
}

template <typename Histogram>
Histogram histogramOf(unsigned int window, std::initializer_list<int> buckets, long long start, long long lastEvent) {
  return recordOf<pb::EventHistogramPBuf>(
      Histogram(0), [&](auto& message) { putHistogram(&message, window, buckets, start, lastEvent); });
}

inline void putSourceRoute(pb::SourceRoutePBuf* message, std::initializer_list<unsigned int> relays,
                           unsigned int failures, unsigned long long zap, unsigned int zapSid, long long time) {
  message->mutable_baseclass();
  for (const unsigned int relay : relays) message->mutable_baseclass()->add_contents(relay);
  message->set_failures(failures);
  message->mutable_zap()->set_id(zap);
  message->set_zapsid(zapSid);
  message->mutable_timestamp()->set_seconds(time);
}

inline SourceRoute sourceRouteOf(std::initializer_list<unsigned int> relays, unsigned int failures,
                                 unsigned long long zap, unsigned int zapSid, long long time) {
  // Not SourceRoute::INVALID: constants of the tests are made before it may be.
  return recordOf<pb::SourceRoutePBuf>(SourceRoute(0, Euid(), 0xFFFF), [&](auto& message) {
    putSourceRoute(&message, relays, failures, zap, zapSid, time);
  });
}

inline void putHop(pb::HopPBuf* message, unsigned int neighbor, unsigned long long lid) {
  message->set_neighbor(neighbor);
  message->set_lqi(47);
  message->mutable_neighborlid()->set_id(lid);
  message->set_type(pb::QX_ROUTER);
  message->set_rxonwhenidle(pb::TB_TRUE);
  message->set_relationship(pb::NEIGHBOR_IS_CHILD);
  message->set_permitjoining(pb::TB_INDETERMINATE);
  message->set_treedepth(12);
  message->mutable_neighborpanid()->set_addr("panid-47");
}

inline Hop hopOf(unsigned int neighbor, unsigned long long lid) {
  return recordOf<pb::HopPBuf>(Hop::INVALID, [&](auto& message) { putHop(&message, neighbor, lid); });
}

inline void putRoute(pb::RoutePBuf* message, unsigned int destination, unsigned int nextHop) {
  message->set_destination(destination);
  message->set_routestatus(pb::ROUTE_INACTIVE);
  message->set_manytoone(true);
  message->set_nexthop(nextHop);
}

inline Route routeTo(unsigned short destination, unsigned short nextHop) {
  return {destination, nextHop, ROUTE_INACTIVE, false, true, false};
}

inline void putAccessPoint(pb::AccessPointPBuf* message, unsigned int destination, unsigned int index) {
  message->set_destination(destination);
  message->set_tableindex(index);
}

inline QxdiagnosticsNodeCounters someCounters() {
  return {5501, 5502, 5503, 5504, 5505, 5506, 5507, 5508, 5509, 5510, 5511, 5512, 5513, 5514, 5515};
}

inline void putCounters(pb::QxdiagnosticsNodeCountersPBuf* message) {
  message->set_version(5501);
  message->set_macrxunicasts(5502);
  message->set_mactxunicasts(5503);
  message->set_mactxunicastretries(5504);
  message->set_mactxunicastfailures(5505);
  message->set_macrxbroadcasts(5506);
  message->set_mactxbroadcasts(5507);
  message->set_apsrxunicasts(5508);
  message->set_apstxunicasts(5509);
  message->set_apstxunicastretries(5510);
  message->set_apstxunicastfailures(5511);
  message->set_apsrxbroadcasts(5512);
  message->set_apstxbroadcasts(5513);
  message->set_nwkframecounterfailures(5514);
  message->set_apsframecounterfailures(5515);
}

/// What a node of an empty message has: everything zero, the times at the start of 1970, windows of 0 buckets.
inline ZigbeeNode emptyNode() {
  ZigbeeNode node;
  EXPECT_FALSE(node.fromProtobuf(pb::ZigbeeNodePBuf()));
  return node;
}

/// One field: its number and name in the message, how it is set to a value that no other field has and that no field
/// starts with, whether a node shows that value, and how the message has it.
struct NodeField {
  int number;
  const char* name;
  std::function<void(ZigbeeNode&)> set;
  std::function<bool(const ZigbeeNode&)> shows;
  std::function<void(pb::ZigbeeNodePBuf&)> put;
};

/// A field with a setter, a getter and a plain field of the message.
template <typename T, typename R, typename M>
NodeField plain(int number, const char* name, T value, void (ZigbeeNode::*set)(const T&), R (ZigbeeNode::*get)() const,
                void (pb::ZigbeeNodePBuf::*put)(M)) {
  return {number, name, [=](ZigbeeNode& node) { (node.*set)(value); },
          [=](const ZigbeeNode& node) { return (node.*get)() == value; },
          [=](pb::ZigbeeNodePBuf& message) { (message.*put)(static_cast<std::decay_t<M>>(value)); }};
}

/// The same with a text.
template <typename Put>
NodeField text(int number, const char* name, const std::string& value, void (ZigbeeNode::*set)(const std::string&),
               const std::string& (ZigbeeNode::*get)() const, Put put) {
  return {number, name, [=](ZigbeeNode& node) { (node.*set)(value); },
          [=](const ZigbeeNode& node) { return (node.*get)() == value; },
          [=](pb::ZigbeeNodePBuf& message) { put(message, value); }};
}

/// The same with a time.
inline NodeField time(int number, const char* name, long long seconds, void (ZigbeeNode::*set)(const BPosixTime&),
                      const BPosixTime& (ZigbeeNode::*get)() const,
                      google::protobuf::Timestamp* (pb::ZigbeeNodePBuf::*part)()) {
  return {number, name, [=](ZigbeeNode& node) { (node.*set)(timeOf(seconds)); },
          [=](const ZigbeeNode& node) { return (node.*get)() == timeOf(seconds); },
          [=](pb::ZigbeeNodePBuf& message) { (message.*part)()->set_seconds(seconds); }};
}

inline NodeField seconds(int number, const char* name, long value, void (ZigbeeNode::*set)(const std::time_t&),
                         std::time_t (ZigbeeNode::*get)() const,
                         google::protobuf::Timestamp* (pb::ZigbeeNodePBuf::*part)()) {
  return {number, name, [=](ZigbeeNode& node) { (node.*set)(value); },
          [=](const ZigbeeNode& node) { return (node.*get)() == value; },
          [=](pb::ZigbeeNodePBuf& message) { (message.*part)()->set_seconds(value); }};
}

template <typename Histogram>
NodeField histogram(int number, const char* name, unsigned int window, std::initializer_list<int> buckets,
                    void (ZigbeeNode::*set)(const Histogram&), const Histogram& (ZigbeeNode::*get)() const,
                    pb::EventHistogramPBuf* (pb::ZigbeeNodePBuf::*part)()) {
  const long long start = 1700001000 + number;
  const long long lastEvent = 1700002000 + number;
  const auto value = histogramOf<Histogram>(window, buckets, start, lastEvent);
  const std::vector<int> counts = buckets;
  return {number, name, [=](ZigbeeNode& node) { (node.*set)(value); },
          [=](const ZigbeeNode& node) {
            const Histogram& shown = (node.*get)();
            return shown.windowSize() == window && shown.histogram() == counts && shown.startTime() == timeOf(start) &&
                   shown.lastEvent() == timeOf(lastEvent);
          },
          [=](pb::ZigbeeNodePBuf& message) {
            pb::EventHistogramPBuf* const field = (message.*part)();
            field->set_windowsize(window);
            for (const int count : counts) field->add_histogram(count);
            field->mutable_starttime()->set_seconds(start);
            field->mutable_lastevent()->set_seconds(lastEvent);
          }};
}

constexpr unsigned long long NODE_LID = 0x7766554433221100;
constexpr unsigned long long FIRST_ZAP = 0x1100000000000001;
constexpr unsigned long long SECOND_ZAP = 0x1100000000000002;

inline Euid euidFrom(unsigned long long number) {
  Euid euid;
  EXPECT_FALSE(euid.fromProtobuf(number));
  return euid;
}

/// The fields that have a place in the serial forms, by number.
inline const std::vector<NodeField>& nodeFields() {
  using Node = ZigbeeNode;
  using Message = pb::ZigbeeNodePBuf;
  using U8 = unsigned char;
  using S8 = signed char;
  using U16 = unsigned short;
  using U32 = unsigned int;
  using U64 = unsigned long long;
  static const std::vector<NodeField> FIELDS = {
      {1, "lid", [](Node& node) { node.lid(euidFrom(NODE_LID)); },
       [](const Node& node) { return node.lid() == euidFrom(NODE_LID); },
       [](Message& message) { message.mutable_lid()->set_id(NODE_LID); }},
      text(2, "product", "qx:velmarin_sr2", &Node::product, &Node::product,
           [](Message& message, const std::string& value) { message.set_product(value); }),
      plain<U16>(3, "sid", 0x1A03, &Node::sid, &Node::sid, &Message::set_sid),
      plain<bool>(4, "online", true, &Node::online, &Node::isOnline, &Message::set_online),
      plain<U8>(5, "reflashProfile", 205, &Node::reflashProfile, &Node::reflashProfile, &Message::set_reflashprofile),
      text(6, "fwVer", "1.2.6M", &Node::fwVer, &Node::fwVer,
           [](Message& message, const std::string& value) { message.set_fwver(value); }),
      plain<U16>(7, "reboots", 40007, &Node::reboots, &Node::reboots, &Message::set_reboots),
      time(8, "rebootsResetTime", 1700000008, &Node::rebootsResetTime, &Node::rebootsResetTime,
           &Message::mutable_rebootsresettime),
      plain<U16>(9, "bootCount", 40009, &Node::bootCount, &Node::bootCount, &Message::set_bootcount),
      histogram<RebootHistogram>(10, "rebootsHistogram", 3, {10, 11, -12}, &Node::rebootsHistogram,
                                 &Node::rebootsHistogram, &Message::mutable_rebootshistogram),
      {11, "sourceRoutes",
       [](Node& node) {
         node.setSourceRoutes({sourceRouteOf({0x0001, 0xABCD}, 11, FIRST_ZAP, 0x0ABC, 1700000011),
                               sourceRouteOf({}, 12, SECOND_ZAP, 0x0DEF, 1700000012)});
       },
       [](const Node& node) {
         return node.numSourceRoutes() == 2 && node.sourceRoutes(0).zap() == euidFrom(FIRST_ZAP) &&
                node.sourceRoutes(0).hops() == 3 && node.sourceRoutes(1).failures() == 12;
       },
       [](Message& message) {
         putSourceRoute(message.add_sourceroutes(), {0x0001, 0xABCD}, 11, FIRST_ZAP, 0x0ABC, 1700000011);
         putSourceRoute(message.add_sourceroutes(), {}, 12, SECOND_ZAP, 0x0DEF, 1700000012);
       }},
      plain<bool>(12, "updating", true, &Node::updating, &Node::updating, &Message::set_updating),
      plain<U8>(13, "updatePercentage", 213, &Node::updatePercentage, &Node::updatePercentage,
                &Message::set_updatepercentage),
      plain<U8>(14, "deviceType", 214, &Node::deviceType, &Node::deviceType, &Message::set_devicetype),
      plain<bool>(15, "awake", true, &Node::awake, &Node::isAwake, &Message::set_awake),
      plain<U16>(16, "apPollInterval", 40016, &Node::apPollInterval, &Node::apPollInterval,
                 &Message::set_appollinterval),
      plain<U16>(17, "parentPollInterval", 40017, &Node::parentPollInterval, &Node::parentPollInterval,
                 &Message::set_parentpollinterval),
      plain<U64>(18, "acceptedPacketSuccesses", 10000000000000000018U, &Node::acceptedPacketSuccesses,
                 &Node::acceptedPacketSuccesses, &Message::set_acceptedpacketsuccesses),
      plain<U64>(19, "acceptedPacketFailures", 10000000000000000019U, &Node::acceptedPacketFailures,
                 &Node::acceptedPacketFailures, &Message::set_acceptedpacketfailures),
      plain<U64>(20, "packetDeliverySuccesses", 10000000000000000020U, &Node::packetDeliverySuccesses,
                 &Node::packetDeliverySuccesses, &Message::set_packetdeliverysuccesses),
      plain<U64>(21, "packetDeliveryFailures", 10000000000000000021U, &Node::packetDeliveryFailures,
                 &Node::packetDeliveryFailures, &Message::set_packetdeliveryfailures),
      plain<U64>(22, "inboundUnicastCount", 10000000000000000022U, &Node::inboundUnicastCount,
                 &Node::inboundUnicastCount, &Message::set_inboundunicastcount),
      plain<U64>(23, "inboundMulticastCount", 10000000000000000023U, &Node::inboundMulticastCount,
                 &Node::inboundMulticastCount, &Message::set_inboundmulticastcount),
      plain<U64>(24, "outboundPacketCount", 10000000000000000024U, &Node::outboundPacketCount,
                 &Node::outboundPacketCount, &Message::set_outboundpacketcount),
      plain<U64>(25, "sourceRouteFailures", 10000000000000000025U, &Node::sourceRouteFailures,
                 &Node::sourceRouteFailures, &Message::set_sourceroutefailures),
      histogram<MessageFailHistogram>(26, "sourceRouteFailuresHistogram", 4, {26, 27, 28, 29},
                                      &Node::sourceRouteFailuresHistogram, &Node::sourceRouteFailuresHistogram,
                                      &Message::mutable_sourceroutefailureshistogram),
      time(27, "sourceRouteFailuresResetTime", 1700000027, &Node::sourceRouteFailuresResetTime,
           &Node::sourceRouteFailuresResetTime, &Message::mutable_sourceroutefailuresresettime),
      plain<U64>(28, "manyToOneRouteFailures", 10000000000000000028U, &Node::manyToOneRouteFailures,
                 &Node::manyToOneRouteFailures, &Message::set_manytooneroutefailures),
      histogram<MessageFailHistogram>(29, "manyToOneRouteFailuresHistogram", 2, {-1, 2147483647},
                                      &Node::manyToOneRouteFailuresHistogram, &Node::manyToOneRouteFailuresHistogram,
                                      &Message::mutable_manytooneroutefailureshistogram),
      time(30, "manyToOneRouteFailuresResetTime", 1700000030, &Node::manyToOneRouteFailuresResetTime,
           &Node::manyToOneRouteFailuresResetTime, &Message::mutable_manytooneroutefailuresresettime),
      plain<U8>(31, "maxHops", 231, &Node::maxHops, &Node::maxHops, &Message::set_maxhops),
      plain<bool>(32, "updateFailed", true, &Node::updateFailed, &Node::updateFailed, &Message::set_updatefailed),
      text(33, "label", "hall <33>", &Node::label, &Node::label,
           [](Message& message, const std::string& value) { message.set_label(value); }),
      plain<U8>(34, "channel", 234, &Node::channel, &Node::channel, &Message::set_channel),
      seconds(35, "lastContact", 1700000035, &Node::lastContact, &Node::lastContact, &Message::mutable_lastcontact),
      plain<U32>(36, "pendingQueueSize", 4000000036U, &Node::pendingQueueSize, &Node::pendingQueueSize,
                 &Message::set_pendingqueuesize),
      plain<U32>(37, "inflightQueueSize", 4000000037U, &Node::inflightQueueSize, &Node::inflightQueueSize,
                 &Message::set_inflightqueuesize),
      seconds(38, "reflashTime", -38, &Node::reflashTime, &Node::reflashTime, &Message::mutable_reflashtime),
      plain<S8>(39, "rssi", -70, &Node::rssi, &Node::rssi, &Message::set_rssi),
      plain<bool>(40, "hasRssi", true, &Node::hasRssi, &Node::hasRssi, &Message::set_hasrssi),
      plain<U8>(41, "rxLqi", 241, &Node::rxLqi, &Node::rxLqi, &Message::set_rxlqi),
      plain<bool>(42, "hasRxLqi", true, &Node::hasRxLqi, &Node::hasRxLqi, &Message::set_hasrxlqi),
      plain<U8>(43, "txLqi", 243, &Node::txLqi, &Node::txLqi, &Message::set_txlqi),
      plain<bool>(44, "hasTxLqi", true, &Node::hasTxLqi, &Node::hasTxLqi, &Message::set_hastxlqi),
      plain<U8>(45, "radioBars", 245, &Node::radioBars, &Node::radioBars, &Message::set_radiobars),
      plain<bool>(46, "hasRadioBars", true, &Node::hasRadioBars, &Node::hasRadioBars, &Message::set_hasradiobars),
      {47, "hops",
       [](Node& node) {
         node.setHopList({hopOf(4701, 1), hopOf(4702, 2)});
       },
       [](const Node& node) { return node.getHop(4701).neighbor_ == 4701 && node.getHop(4702).tree_depth_ == 12; },
       [](Message& message) {
         putHop(message.add_hops(), 4701, 1);
         putHop(message.add_hops(), 4702, 2);
       }},
      {48, "mtoRoutes",
       [](Node& node) {
         node.setMtoRouteList({routeTo(4801, 4811), routeTo(4802, 4812)});
       },
       [](const Node& node) { return node.numMtoRoutes() == 2 && node.getMtoRoute(1) == routeTo(4802, 4812); },
       [](Message& message) {
         putRoute(message.add_mtoroutes(), 4801, 4811);
         putRoute(message.add_mtoroutes(), 4802, 4812);
       }},
      {49, "apTable",
       [](Node& node) {
         node.setApTable({AccessPoint(4901, 91), AccessPoint(4902, 92)});
       },
       [](const Node& node) { return node.numOfAps() == 2 && node.getAp(1).destination_ == 4902; },
       [](Message& message) {
         putAccessPoint(message.add_aptable(), 4901, 91);
         putAccessPoint(message.add_aptable(), 4902, 92);
       }},
      {50, "energyLevels",
       [](Node& node) {
         node.setEnergyLevelsList({50, -50, 127, -128});
       },
       [](const Node& node) {
         std::list<S8> levels;
         node.getEnergyLevelsList(levels);
         return levels == std::list<S8>{50, -50, 127, -128};
       },
       [](Message& message) {
         for (const int level : {50, -50, 127, -128}) message.add_energylevels(level);
       }},
      plain<bool>(51, "hasBatteryLevel", true, &Node::hasBatteryLevel, &Node::hasBatteryLevel,
                  &Message::set_hasbatterylevel),
      plain<S8>(52, "batteryLevel", -52, &Node::batteryLevel, &Node::batteryLevel, &Message::set_batterylevel),
      plain<U32>(53, "uptime", 4000000053U, &Node::uptime, &Node::uptime, &Message::set_uptime),
      plain<S8>(54, "signalStrength", -54, &Node::signalStrength, &Node::signalStrength, &Message::set_signalstrength),
      {55, "packetCounters", [](Node& node) { node.packetCounters(someCounters()); },
       [](const Node& node) { return node.packetCounters() == someCounters(); },
       [](Message& message) { putCounters(message.mutable_packetcounters()); }},
  };
  return FIELDS;
}

/// Every field has its value of the table.
inline ZigbeeNode filledNode() {
  ZigbeeNode node;
  for (const NodeField& field : nodeFields()) field.set(node);
  return node;
}

inline pb::ZigbeeNodePBuf filledMessage() {
  pb::ZigbeeNodePBuf message;
  for (const NodeField& field : nodeFields()) field.put(message);
  return message;
}

}  // namespace qx::test

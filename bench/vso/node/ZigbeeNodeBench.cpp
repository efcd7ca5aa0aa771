// A full node to the bytes of its message and back, to XML, its events and its reports, beside the same work by hand.
#include "vso/node/ZigbeeNode.h"

#include <benchmark/benchmark.h>
#include <libxml/xmlreader.h>
#include <libxml/xmlwriter.h>
#include <malloc.h>
#include <sys/resource.h>

#include <cstdlib>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../mesh/HandRows.h"
#include "qxxml/XmlWriter.h"
#include "vso/node/NetworkHealth.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace {

using qx::bench::HandHop;
using qx::bench::HandRoute;

constexpr unsigned int ROWS = 40;
constexpr unsigned int ROUTES = 5;

/// 40 neighbours, 40 many-to-one routes, 5 source routes, 2 access points.
qx::ZigbeeNode fullNode(unsigned long long address = 0x1122334455667788ULL) {
  qx::Euid lid;
  lid.fromProtobuf(address);
  qx::ZigbeeNode node(lid, "qx:velmarin_dimmer:2", 0x1234, true, 3, "2.14.7", 17, "kitchen ceiling");
  std::list<qx::Hop> hops;
  std::list<qx::Route> routes;
  for (unsigned short i = 0; i < ROWS; ++i) {
    qx::Euid neighbor;
    neighbor.fromProtobuf(0x1122334455667700ULL + i);
    hops.emplace_back(static_cast<unsigned short>(0x1000 + i), static_cast<unsigned char>(200 + i), neighbor, 2, true,
                      qx::NEIGHBOR_IS_SIBLING, false, 3, qx::PanId(std::string("8877665544332211")));
    routes.emplace_back(static_cast<unsigned short>(0x2000 + i), static_cast<unsigned short>(0x1000 + i),
                        qx::ROUTE_ACTIVE, false, true, false);
  }
  node.setHopList(hops);
  node.setMtoRouteList(routes);
  qx::ZigbeeNode::Deque sourceRoutes;
  for (unsigned short i = 0; i < ROUTES; ++i) {
    const unsigned short relays[] = {0x0001, 0x0002, static_cast<unsigned short>(3 + i)};
    sourceRoutes.emplace_back(relays, 3, lid, static_cast<unsigned short>(0x0100 + i));
  }
  node.setSourceRoutes(sourceRoutes);
  node.setApTable({{0x0100, 0}, {0x0101, 1}});
  node.setEnergyLevelsList({-90, -80, -70});
  const qx::BPosixTime now = qx::ZigbeeNode::localtime();
  node.rebootsResetTime(now);
  node.sourceRouteFailuresResetTime(now);
  node.manyToOneRouteFailuresResetTime(now);
  for (int i = 0; i < 3; ++i) {
    node.addRebootEvent(now);
    node.addSourceRouteFailure(now);
    node.addManyToOneRouteFailure(now);
  }
  node.rssi(-65);
  node.hasRssi(true);
  node.rxLqi(220);
  node.hasRxLqi(true);
  return node;
}

// By hand: a plain record beside the generated message.

struct HandHistogram {
  unsigned int windowSize;
  std::vector<int> histogram;
  long startTime;
  long lastEvent;
};

struct HandSourceRoute {
  std::vector<unsigned short> relays;
  unsigned int failures;
  unsigned long long zap;
  unsigned int zapSid;
  long timeStamp;
};

struct HandNode {
  unsigned long long lid;
  std::string product;
  unsigned int sid;
  bool online;
  unsigned int reflashProfile;
  std::string fwVer;
  unsigned int reboots;
  unsigned int bootCount;
  bool updating;
  unsigned int updatePercentage;
  int deviceType;
  bool awake;
  unsigned int apPollInterval;
  unsigned int parentPollInterval;
  unsigned long long acceptedPacketSuccesses;
  unsigned long long acceptedPacketFailures;
  unsigned long long packetDeliverySuccesses;
  unsigned long long packetDeliveryFailures;
  unsigned long long inboundUnicastCount;
  unsigned long long inboundMulticastCount;
  unsigned long long outboundPacketCount;
  unsigned long long sourceRouteFailures;
  unsigned long long manyToOneRouteFailures;
  unsigned int maxHops;
  bool updateFailed;
  std::string label;
  unsigned int channel;
  unsigned int pendingQueueSize;
  unsigned int inflightQueueSize;
  int rssi;
  bool hasRssi;
  unsigned int rxLqi;
  bool hasRxLqi;
  unsigned int txLqi;
  bool hasTxLqi;
  unsigned int radioBars;
  bool hasRadioBars;
  bool hasBatteryLevel;
  int batteryLevel;
  unsigned int uptime;
  int signalStrength;
  long rebootsResetTime;
  long sourceRouteFailuresResetTime;
  long manyToOneRouteFailuresResetTime;
  long lastContact;
  long reflashTime;
  HandHistogram rebootsHistogram;
  HandHistogram sourceRouteFailuresHistogram;
  HandHistogram manyToOneRouteFailuresHistogram;
  std::list<HandSourceRoute> sourceRoutes;
  std::list<HandHop> hops;
  std::list<HandRoute> mtoRoutes;
  std::list<std::pair<unsigned int, unsigned int>> apTable;
  std::list<signed char> energyLevels;
  unsigned int counters[15];
};

void fill(const HandHistogram& histogram, qx::pb::EventHistogramPBuf* to) {
  to->set_windowsize(histogram.windowSize);
  to->mutable_histogram()->Add(histogram.histogram.begin(), histogram.histogram.end());
  to->mutable_starttime()->set_seconds(histogram.startTime);
  to->mutable_lastevent()->set_seconds(histogram.lastEvent);
}

void read(const qx::pb::EventHistogramPBuf& from, HandHistogram& histogram) {
  histogram.windowSize = from.windowsize();
  histogram.histogram.assign(from.histogram().begin(), from.histogram().end());
  histogram.startTime = from.starttime().seconds();
  histogram.lastEvent = from.lastevent().seconds();
}

void fill(const HandNode& node, qx::pb::ZigbeeNodePBuf& message) {
  message.mutable_lid()->set_id(node.lid);
  message.set_product(node.product);
  message.set_sid(node.sid);
  message.set_online(node.online);
  message.set_reflashprofile(node.reflashProfile);
  message.set_fwver(node.fwVer);
  message.set_reboots(node.reboots);
  message.set_bootcount(node.bootCount);
  message.set_updating(node.updating);
  message.set_updatepercentage(node.updatePercentage);
  message.set_devicetype(static_cast<qx::pb::ZigbeeNodeDeviceTypePEnum>(node.deviceType));
  message.set_awake(node.awake);
  message.set_appollinterval(node.apPollInterval);
  message.set_parentpollinterval(node.parentPollInterval);
  message.set_acceptedpacketsuccesses(node.acceptedPacketSuccesses);
  message.set_acceptedpacketfailures(node.acceptedPacketFailures);
  message.set_packetdeliverysuccesses(node.packetDeliverySuccesses);
  message.set_packetdeliveryfailures(node.packetDeliveryFailures);
  message.set_inboundunicastcount(node.inboundUnicastCount);
  message.set_inboundmulticastcount(node.inboundMulticastCount);
  message.set_outboundpacketcount(node.outboundPacketCount);
  message.set_sourceroutefailures(node.sourceRouteFailures);
  message.set_manytooneroutefailures(node.manyToOneRouteFailures);
  message.set_maxhops(node.maxHops);
  message.set_updatefailed(node.updateFailed);
  message.set_label(node.label);
  message.set_channel(node.channel);
  message.set_pendingqueuesize(node.pendingQueueSize);
  message.set_inflightqueuesize(node.inflightQueueSize);
  message.set_rssi(node.rssi);
  message.set_hasrssi(node.hasRssi);
  message.set_rxlqi(node.rxLqi);
  message.set_hasrxlqi(node.hasRxLqi);
  message.set_txlqi(node.txLqi);
  message.set_hastxlqi(node.hasTxLqi);
  message.set_radiobars(node.radioBars);
  message.set_hasradiobars(node.hasRadioBars);
  message.set_hasbatterylevel(node.hasBatteryLevel);
  message.set_batterylevel(node.batteryLevel);
  message.set_uptime(node.uptime);
  message.set_signalstrength(node.signalStrength);
  message.mutable_rebootsresettime()->set_seconds(node.rebootsResetTime);
  message.mutable_sourceroutefailuresresettime()->set_seconds(node.sourceRouteFailuresResetTime);
  message.mutable_manytooneroutefailuresresettime()->set_seconds(node.manyToOneRouteFailuresResetTime);
  message.mutable_lastcontact()->set_seconds(node.lastContact);
  message.mutable_reflashtime()->set_seconds(node.reflashTime);
  fill(node.rebootsHistogram, message.mutable_rebootshistogram());
  fill(node.sourceRouteFailuresHistogram, message.mutable_sourceroutefailureshistogram());
  fill(node.manyToOneRouteFailuresHistogram, message.mutable_manytooneroutefailureshistogram());
  for (const HandSourceRoute& route : node.sourceRoutes) {
    qx::pb::SourceRoutePBuf* to = message.add_sourceroutes();
    to->mutable_baseclass()->mutable_contents()->Add(route.relays.begin(), route.relays.end());
    to->set_failures(route.failures);
    to->mutable_zap()->set_id(route.zap);
    to->set_zapsid(route.zapSid);
    to->mutable_timestamp()->set_seconds(route.timeStamp);
  }
  for (const HandHop& hop : node.hops) fillHop(hop, message.add_hops());
  for (const HandRoute& route : node.mtoRoutes) fillRoute(route, message.add_mtoroutes());
  for (const auto& [destination, index] : node.apTable) {
    qx::pb::AccessPointPBuf* to = message.add_aptable();
    to->set_destination(destination);
    to->set_tableindex(index);
  }
  message.mutable_energylevels()->Add(node.energyLevels.begin(), node.energyLevels.end());
  qx::pb::QxdiagnosticsNodeCountersPBuf* counters = message.mutable_packetcounters();
  counters->set_version(node.counters[0]);
}

void read(const qx::pb::ZigbeeNodePBuf& message, HandNode& node) {
  node.lid = message.lid().id();
  node.product = message.product();
  node.sid = message.sid();
  node.online = message.online();
  node.reflashProfile = message.reflashprofile();
  node.fwVer = message.fwver();
  node.reboots = message.reboots();
  node.bootCount = message.bootcount();
  node.updating = message.updating();
  node.updatePercentage = message.updatepercentage();
  node.deviceType = message.devicetype();
  node.awake = message.awake();
  node.apPollInterval = message.appollinterval();
  node.parentPollInterval = message.parentpollinterval();
  node.acceptedPacketSuccesses = message.acceptedpacketsuccesses();
  node.acceptedPacketFailures = message.acceptedpacketfailures();
  node.packetDeliverySuccesses = message.packetdeliverysuccesses();
  node.packetDeliveryFailures = message.packetdeliveryfailures();
  node.inboundUnicastCount = message.inboundunicastcount();
  node.inboundMulticastCount = message.inboundmulticastcount();
  node.outboundPacketCount = message.outboundpacketcount();
  node.sourceRouteFailures = message.sourceroutefailures();
  node.manyToOneRouteFailures = message.manytooneroutefailures();
  node.maxHops = message.maxhops();
  node.updateFailed = message.updatefailed();
  node.label = message.label();
  node.channel = message.channel();
  node.pendingQueueSize = message.pendingqueuesize();
  node.inflightQueueSize = message.inflightqueuesize();
  node.rssi = message.rssi();
  node.hasRssi = message.hasrssi();
  node.rxLqi = message.rxlqi();
  node.hasRxLqi = message.hasrxlqi();
  node.txLqi = message.txlqi();
  node.hasTxLqi = message.hastxlqi();
  node.radioBars = message.radiobars();
  node.hasRadioBars = message.hasradiobars();
  node.hasBatteryLevel = message.hasbatterylevel();
  node.batteryLevel = message.batterylevel();
  node.uptime = message.uptime();
  node.signalStrength = message.signalstrength();
  node.rebootsResetTime = message.rebootsresettime().seconds();
  node.sourceRouteFailuresResetTime = message.sourceroutefailuresresettime().seconds();
  node.manyToOneRouteFailuresResetTime = message.manytooneroutefailuresresettime().seconds();
  node.lastContact = message.lastcontact().seconds();
  node.reflashTime = message.reflashtime().seconds();
  read(message.rebootshistogram(), node.rebootsHistogram);
  read(message.sourceroutefailureshistogram(), node.sourceRouteFailuresHistogram);
  read(message.manytooneroutefailureshistogram(), node.manyToOneRouteFailuresHistogram);
  node.sourceRoutes.clear();
  for (const qx::pb::SourceRoutePBuf& from : message.sourceroutes()) {
    HandSourceRoute& route = node.sourceRoutes.emplace_back();
    route.relays.assign(from.baseclass().contents().begin(), from.baseclass().contents().end());
    route.failures = from.failures();
    route.zap = from.zap().id();
    route.zapSid = from.zapsid();
    route.timeStamp = from.timestamp().seconds();
  }
  readHops(message.hops(), node.hops);
  readRoutes(message.mtoroutes(), node.mtoRoutes);
  node.apTable.clear();
  for (const qx::pb::AccessPointPBuf& from : message.aptable()) {
    node.apTable.emplace_back(from.destination(), from.tableindex());
  }
  node.energyLevels.assign(message.energylevels().begin(), message.energylevels().end());
  node.counters[0] = message.packetcounters().version();
}

void NodeProtobuf_limit(benchmark::State& state) {
  HandNode node{};
  const std::unique_ptr<qx::pb::ZigbeeNodePBuf> full(fullNode().toProtobuf());
  read(*full, node);
  HandNode restored{};
  for (auto _ : state) {
    qx::pb::ZigbeeNodePBuf message;
    fill(node, message);
    const std::string bytes = message.SerializeAsString();
    qx::pb::ZigbeeNodePBuf parsed;
    if (!parsed.ParseFromString(bytes)) std::abort();
    read(parsed, restored);
    benchmark::DoNotOptimize(restored);
  }
  qx::pb::ZigbeeNodePBuf message;
  fill(node, message);
  if (message.SerializeAsString() != full->SerializeAsString()) std::abort();
}
BENCHMARK(NodeProtobuf_limit);

void NodeProtobuf(benchmark::State& state) {
  const qx::ZigbeeNode node = fullNode();
  qx::ZigbeeNode restored;
  for (auto _ : state) {
    const std::unique_ptr<qx::pb::ZigbeeNodePBuf> message(node.toProtobuf());
    const std::string bytes = message->SerializeAsString();
    qx::pb::ZigbeeNodePBuf parsed;
    if (!parsed.ParseFromString(bytes)) std::abort();
    if (restored.fromProtobuf(parsed)) std::abort();
    benchmark::DoNotOptimize(restored);
  }
}
BENCHMARK(NodeProtobuf);

// The elements of a document, with their texts ready, handed to libxml2's text writer one by one.

struct XmlEvent {
  enum Kind { START, TEXT, END };

  Kind kind;
  std::string text;
  /// Of an object; empty for an element without attributes.
  std::string version = {};
};

std::string xmlOf(const qx::ZigbeeNode& node) {
  std::ostringstream out;
  qx::XmlWriter writer(out);
  node.toXml(writer, "node");
  return out.str();
}

std::string textOf(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

std::string attributeOf(xmlTextReaderPtr reader, const char* name) {
  xmlChar* const value = xmlTextReaderGetAttribute(reader, xmlText(name));
  std::string text = value != nullptr ? textOf(value) : std::string();
  xmlFree(value);
  return text;
}

std::vector<XmlEvent> eventsOf(const std::string& document) {
  std::vector<XmlEvent> events;
  const xmlTextReaderPtr reader =
      xmlReaderForMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, 0);
  while (xmlTextReaderRead(reader) == 1) {
    switch (xmlTextReaderNodeType(reader)) {
      case XML_READER_TYPE_ELEMENT:
        events.push_back({XmlEvent::START, textOf(xmlTextReaderConstName(reader)), attributeOf(reader, "version")});
        if (xmlTextReaderIsEmptyElement(reader) == 1) events.push_back({XmlEvent::END, {}});
        break;
      case XML_READER_TYPE_TEXT:
        events.push_back({XmlEvent::TEXT, textOf(xmlTextReaderConstValue(reader))});
        break;
      case XML_READER_TYPE_END_ELEMENT:
        events.push_back({XmlEvent::END, {}});
        break;
      default:
        break;
    }
  }
  xmlFreeTextReader(reader);
  return events;
}

std::string written(const std::vector<XmlEvent>& events) {
  const xmlBufferPtr buffer = xmlBufferCreate();
  const xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
  for (const XmlEvent& event : events) {
    switch (event.kind) {
      case XmlEvent::START:
        xmlTextWriterStartElement(writer, xmlText(event.text.c_str()));
        if (event.version.empty()) break;
        xmlTextWriterWriteAttribute(writer, xmlText("class_id"), xmlText("0"));
        xmlTextWriterWriteAttribute(writer, xmlText("tracking_level"), xmlText("0"));
        xmlTextWriterWriteAttribute(writer, xmlText("version"), xmlText(event.version.c_str()));
        break;
      case XmlEvent::TEXT:
        xmlTextWriterWriteString(writer, xmlText(event.text.c_str()));
        break;
      case XmlEvent::END:
        xmlTextWriterEndElement(writer);
        break;
    }
  }
  xmlTextWriterFlush(writer);
  std::string document(reinterpret_cast<const char*>(buffer->content), buffer->use);
  xmlFreeTextWriter(writer);
  xmlBufferFree(buffer);
  return document;
}

void NodeXml_limit(benchmark::State& state) {
  const std::string expected = xmlOf(fullNode());
  const std::vector<XmlEvent> events = eventsOf(expected);
  std::string document;
  for (auto _ : state) {
    document = written(events);
    benchmark::DoNotOptimize(document.data());
  }
  if (document != expected) std::abort();
}
BENCHMARK(NodeXml_limit);

void NodeXml(benchmark::State& state) {
  const qx::ZigbeeNode node = fullNode();
  for (auto _ : state) {
    const std::string document = xmlOf(node);
    benchmark::DoNotOptimize(document.data());
  }
}
BENCHMARK(NodeXml);

// An event, beside a read of the two members that it changes.

void AddEvent_limit(benchmark::State& state) {
  qx::RebootHistogram histogram(qx::RebootHistogram::WINDOW_SIZE);
  for (auto _ : state) {
    benchmark::DoNotOptimize(histogram);
    int count = histogram.histogram()[0];
    qx::BPosixTime last = histogram.lastEvent();
    benchmark::DoNotOptimize(count);
    benchmark::DoNotOptimize(last);
  }
}
BENCHMARK(AddEvent_limit);

void AddEvent(benchmark::State& state) {
  qx::RebootHistogram histogram(qx::RebootHistogram::WINDOW_SIZE);
  const qx::BPosixTime now = histogram.startTime() + boost::posix_time::hours(50);
  for (auto _ : state) {
    benchmark::DoNotOptimize(histogram);
    histogram.addEvent(now);
  }
}
BENCHMARK(AddEvent);

// A report.

void UpdateNetworkHealth_limit(benchmark::State& state) {
  qx::ZigbeeNode node = fullNode();
  node.updateNetworkHealth();
  const std::vector<qx::NetworkHealthItem> items = node.networkHealth()->nodeHealth().begin()->second;
  for (auto _ : state) {
    std::vector<qx::NetworkHealthItem> built;
    built.reserve(items.size());
    for (const qx::NetworkHealthItem& item : items) {
      built.emplace_back(item.name(), item.type(), item.min(), item.max(), item.value(), item.units());
    }
    benchmark::DoNotOptimize(built);
  }
}
BENCHMARK(UpdateNetworkHealth_limit);

void UpdateNetworkHealth(benchmark::State& state) {
  qx::ZigbeeNode node = fullNode();
  for (auto _ : state) {
    bool isChanged = node.updateNetworkHealth();
    benchmark::DoNotOptimize(isChanged);
  }
}
BENCHMARK(UpdateNetworkHealth);

// A whole mesh: nodes filled, a hundred events for each, all reports gathered, all saved and restored.

std::size_t allocatedBytes() { return mallinfo2().uordblks; }

void Mesh(benchmark::State& state) {
  const auto count = static_cast<unsigned int>(state.range(0));
  constexpr unsigned int EVENTS_A_NODE = 100;
  std::size_t memory = 0;
  for (auto _ : state) {
    const std::size_t before = allocatedBytes();
    std::vector<qx::ZigbeeNode> nodes;
    nodes.reserve(count);
    for (unsigned int i = 0; i < count; ++i) nodes.push_back(fullNode(0x1122334400000000ULL + i));
    const qx::BPosixTime start = qx::ZigbeeNode::localtime();
    for (unsigned int event = 0; event < EVENTS_A_NODE; ++event) {
      const qx::BPosixTime now = start + boost::posix_time::minutes(event);
      for (qx::ZigbeeNode& node : nodes) {
        if (event % 2 == 0) {
          node.addSourceRouteFailure(now);
        } else {
          node.addManyToOneRouteFailure(now);
        }
      }
    }
    std::vector<std::string> saved;
    for (qx::ZigbeeNode& node : nodes) {
      node.updateNetworkHealth();
      saved.push_back(std::unique_ptr<qx::pb::ZigbeeNodePBuf>(node.toProtobuf())->SerializeAsString());
    }
    memory = allocatedBytes() - before;
    for (std::size_t i = 0; i < saved.size(); ++i) {
      qx::pb::ZigbeeNodePBuf message;
      if (!message.ParseFromString(saved[i]) || nodes[i].fromProtobuf(message)) std::abort();
    }
    benchmark::DoNotOptimize(nodes);
  }
  state.SetComplexityN(state.range(0));
  state.counters["bytes_a_node"] = static_cast<double>(memory) / count;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["process_peak_kb"] = static_cast<double>(usage.ru_maxrss);
}
BENCHMARK(Mesh)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);

// What a node takes: its object, and what belongs to it elsewhere.

void NodeMemory(benchmark::State& state) {
  std::size_t empty = 0;
  std::size_t full = 0;
  for (auto _ : state) {
    const std::size_t before = allocatedBytes();
    const auto node = std::make_unique<qx::ZigbeeNode>();
    empty = allocatedBytes() - before;
    *node = fullNode();
    full = allocatedBytes() - before;
  }
  state.counters["object"] = static_cast<double>(sizeof(qx::ZigbeeNode));
  state.counters["empty"] = static_cast<double>(empty);
  state.counters["full"] = static_cast<double>(full);
}
BENCHMARK(NodeMemory);

}  // namespace

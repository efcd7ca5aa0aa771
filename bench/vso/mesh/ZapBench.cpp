// The record of an access point with 40 hops and 40 routes to protobuf and back, and to XML, beside the same message
// filled and read by hand and the same elements handed to libxml2's text writer.
#include "vso/mesh/Zap.h"

#include <benchmark/benchmark.h>
#include <libxml/xmlwriter.h>

#include <cstdlib>
#include <list>
#include <memory>
#include <sstream>
#include <string>

#include "HandRows.h"
#include "qxxml/XmlWriter.h"
#include "vso/proto/ZapPBuf.pb.h"

namespace {

using qx::bench::HandHop;
using qx::bench::HandRoute;
using qx::bench::readBytes;
using qx::bench::readHops;
using qx::bench::readRoutes;

constexpr unsigned int ROWS = 40;

std::string digits(unsigned long long number) { return std::to_string(number); }

/// On the heap, since a copy would have no routes.
std::unique_ptr<qx::Zap> fullZap() {
  qx::Euid id;
  id = "0011223344556677";
  auto made = std::make_unique<qx::Zap>(0xC0A80001, 4321, true, id, qx::PanId(std::string("8877665544332211")), 0x1A2B,
                                        15, 8, 1, true, 20, 3);
  qx::Zap& zap = *made;
  zap.timeStarted(1700000000);
  zap.sid(0x0042);
  qx::MeshSecurityData key(7);
  key.keyType(qx::QX_CURRENT_NETWORK_KEY);
  zap.trustCurrentNetworkData(key);
  std::list<qx::Hop> hops;
  std::list<qx::Route> routes;
  for (unsigned short i = 0; i < ROWS; ++i) {
    qx::Euid lid;
    lid.fromProtobuf(0x1122334455667700ULL + i);
    hops.emplace_back(static_cast<unsigned short>(0x1000 + i), static_cast<unsigned char>(200 + i), lid, 2, true,
                      qx::NEIGHBOR_IS_SIBLING, false, 3, zap.xpanId());
    routes.emplace_back(static_cast<unsigned short>(0x2000 + i), static_cast<unsigned short>(0x1000 + i),
                        qx::ROUTE_ACTIVE, false, true, false);
  }
  zap.setHopList(hops);
  zap.setRoutes(routes);
  return made;
}

// By hand: a plain record beside the generated message.

struct HandKey {
  int type;
  unsigned char key[16];
  unsigned int outgoing;
  unsigned int incoming;
  unsigned char sequence;
  unsigned long long partner;
};

struct HandZap {
  unsigned int ip;
  unsigned short port;
  unsigned long long id;
  unsigned char xpanId[8];
  unsigned short panId;
  unsigned char channel;
  unsigned char status;
  bool isCoordinator;
  signed char radioTxPower;
  long timeStarted;
  unsigned int rolloverCount;
  unsigned long long noBufferCount;
  unsigned short sid;
  unsigned short stackVersion;
  unsigned char protocolVersion;
  unsigned char stackId;
  bool configureAsCoordinator;
  HandKey keys[6];
  std::list<HandHop> hops;
  signed char rssi;
  std::list<HandRoute> routes;
  unsigned short maxInflight;
  unsigned short numInflight;
  unsigned char watermark;
};

HandKey readKey(const qx::pb::MeshSecurityDataPBuf& message) {
  HandKey key{};
  key.type = message.keytype();
  readBytes(message.key().contents(), key.key, sizeof key.key);
  key.outgoing = message.outgoingframecounter();
  key.incoming = message.incomingframecounter();
  key.sequence = static_cast<unsigned char>(message.sequencenumber());
  key.partner = message.partnerlid().id();
  return key;
}

void fillKey(const HandKey& key, qx::pb::MeshSecurityDataPBuf* message) {
  message->set_keytype(static_cast<qx::pb::KeyTypePEnum>(key.type));
  message->mutable_key()->set_contents(key.key, sizeof key.key);
  message->set_outgoingframecounter(key.outgoing);
  message->set_incomingframecounter(key.incoming);
  message->set_sequencenumber(key.sequence);
  message->mutable_partnerlid()->set_id(key.partner);
}

void readZap(const qx::pb::ZapPBuf& message, HandZap& zap) {
  zap.ip = message.ip();
  zap.port = static_cast<unsigned short>(message.port());
  zap.id = message.id().id();
  readBytes(message.xpanid().addr(), zap.xpanId, sizeof zap.xpanId);
  zap.panId = static_cast<unsigned short>(message.panid());
  zap.channel = static_cast<unsigned char>(message.channel());
  zap.status = static_cast<unsigned char>(message.status());
  zap.isCoordinator = message.iscoordinator();
  zap.radioTxPower = static_cast<signed char>(message.radiotxpower());
  zap.timeStarted = message.timestarted().seconds();
  zap.rolloverCount = message.rollovercount();
  zap.noBufferCount = message.nobuffercount();
  zap.sid = static_cast<unsigned short>(message.sid());
  zap.stackVersion = static_cast<unsigned short>(message.stackversion());
  zap.protocolVersion = static_cast<unsigned char>(message.protocolversion());
  zap.stackId = static_cast<unsigned char>(message.stackid());
  zap.configureAsCoordinator = message.configureascoordinator();
  zap.keys[0] = readKey(message.trustcenterlinkdata());
  zap.keys[1] = readKey(message.trustcentermasterdata());
  zap.keys[2] = readKey(message.trustcurrentnetworkdata());
  zap.keys[3] = readKey(message.trustnextnetworkdata());
  zap.keys[4] = readKey(message.applicationlinkdata());
  zap.keys[5] = readKey(message.applicationmasterdata());
  readHops(message.hops(), zap.hops);
  zap.rssi = static_cast<signed char>(message.rssi());
  readRoutes(message.routes(), zap.routes);
  zap.maxInflight = static_cast<unsigned short>(message.maxinflightmessages());
  zap.numInflight = static_cast<unsigned short>(message.numinflightmessages());
  zap.watermark = static_cast<unsigned char>(message.inflightmessageswatermark());
}

void fillZap(const HandZap& zap, qx::pb::ZapPBuf* message) {
  message->set_ip(zap.ip);
  message->set_port(zap.port);
  message->mutable_id()->set_id(zap.id);
  message->mutable_xpanid()->set_addr(zap.xpanId, sizeof zap.xpanId);
  message->set_panid(zap.panId);
  message->set_channel(zap.channel);
  message->set_status(zap.status);
  message->set_iscoordinator(zap.isCoordinator);
  message->set_radiotxpower(zap.radioTxPower);
  message->mutable_timestarted()->set_seconds(zap.timeStarted);
  message->set_rollovercount(zap.rolloverCount);
  message->set_nobuffercount(zap.noBufferCount);
  message->set_sid(zap.sid);
  message->set_stackversion(zap.stackVersion);
  message->set_protocolversion(zap.protocolVersion);
  message->set_stackid(zap.stackId);
  message->set_configureascoordinator(zap.configureAsCoordinator);
  fillKey(zap.keys[0], message->mutable_trustcenterlinkdata());
  fillKey(zap.keys[1], message->mutable_trustcentermasterdata());
  fillKey(zap.keys[2], message->mutable_trustcurrentnetworkdata());
  fillKey(zap.keys[3], message->mutable_trustnextnetworkdata());
  fillKey(zap.keys[4], message->mutable_applicationlinkdata());
  fillKey(zap.keys[5], message->mutable_applicationmasterdata());
  for (const HandHop& hop : zap.hops) fillHop(hop, message->add_hops());
  message->set_rssi(zap.rssi);
  for (const HandRoute& route : zap.routes) fillRoute(route, message->add_routes());
  message->set_maxinflightmessages(zap.maxInflight);
  message->set_numinflightmessages(zap.numInflight);
  message->set_inflightmessageswatermark(zap.watermark);
}

void ZapProtobuf_limit(benchmark::State& state) {
  HandZap zap{};
  const std::unique_ptr<qx::pb::ZapPBuf> full(fullZap()->toProtobuf());
  readZap(*full, zap);
  HandZap read{};
  for (auto _ : state) {
    const auto message = std::make_unique<qx::pb::ZapPBuf>();
    fillZap(zap, message.get());
    readZap(*message, read);
    benchmark::DoNotOptimize(read);
  }
  if (read.hops.size() != ROWS || read.routes.size() != ROWS) std::abort();
}
BENCHMARK(ZapProtobuf_limit);

void ZapProtobuf(benchmark::State& state) {
  const std::unique_ptr<qx::Zap> zap = fullZap();
  qx::Zap read;
  for (auto _ : state) {
    const std::unique_ptr<qx::pb::ZapPBuf> message(zap->toProtobuf());
    read.fromProtobuf(*message);
    benchmark::DoNotOptimize(read);
  }
  if (read.numRoutes() != ROWS) std::abort();
}
BENCHMARK(ZapProtobuf);

// By hand, on libxml2's text writer.

class HandXml {
 public:
  HandXml() : buffer_(xmlBufferCreate()), writer_(xmlNewTextWriterMemory(buffer_, 0)) {}
  ~HandXml() {
    xmlFreeTextWriter(writer_);
    xmlBufferFree(buffer_);
  }
  HandXml(const HandXml&) = delete;
  HandXml& operator=(const HandXml&) = delete;

  void start(const char* name) { xmlTextWriterStartElement(writer_, text(name)); }
  void startObject(const char* name) {
    start(name);
    xmlTextWriterWriteAttribute(writer_, text("class_id"), text("0"));
    xmlTextWriterWriteAttribute(writer_, text("tracking_level"), text("0"));
    xmlTextWriterWriteAttribute(writer_, text("version"), text("182"));
  }
  void element(const char* name, const std::string& value) {
    xmlTextWriterWriteElement(writer_, text(name), text(value.c_str()));
  }
  void end() { xmlTextWriterEndElement(writer_); }
  std::string document() {
    xmlTextWriterFlush(writer_);
    return {reinterpret_cast<const char*>(buffer_->content), buffer_->use};
  }

  void object(const char* name, const char* inner, const std::string& value) {
    startObject(name);
    element(inner, value);
    end();
  }
  void tribool(const char* name, const char* undetermined, const char* value) {
    startObject(name);
    element("undetermined", undetermined);
    element("state", value);
    end();
  }

 private:
  static const xmlChar* text(const char* characters) { return reinterpret_cast<const xmlChar*>(characters); }

  xmlBufferPtr buffer_;
  xmlTextWriterPtr writer_;
};

void keyByHand(HandXml& xml, const char* name, const HandKey& key) {
  xml.start(name);
  xml.element("key_type_", digits(static_cast<unsigned int>(key.type)));
  xml.start("key_");
  xml.element("count", "16");
  xml.element("item_version", "0");
  for (const unsigned char byte : key.key) xml.element("item", digits(byte));
  xml.end();
  xml.element("outgoing_frame_counter_", digits(key.outgoing));
  xml.element("incoming_frame_counter_", digits(key.incoming));
  xml.element("sequence_number_", digits(key.sequence));
  xml.object("partner_lid_", "id_", digits(key.partner));
  xml.end();
}

std::string xmlByHand(const HandZap& zap, const std::string& panId) {
  HandXml xml;
  xml.startObject("zap");
  xml.element("ip_", digits(zap.ip));
  xml.element("port_", digits(zap.port));
  xml.object("id_", "id_", digits(zap.id));
  xml.object("xpanid_", "addr", panId);
  xml.element("panid_", digits(zap.panId));
  xml.element("channel_", digits(zap.channel));
  xml.element("status_", digits(zap.status));
  xml.element("is_coordinator_", zap.isCoordinator ? "1" : "0");
  xml.element("radio_tx_power_", std::to_string(zap.radioTxPower));
  xml.element("time_started_", std::to_string(zap.timeStarted));
  xml.element("rollover_count_", digits(zap.rolloverCount));
  xml.element("no_buffer_count_", digits(zap.noBufferCount));
  xml.element("sid_", digits(zap.sid));
  xml.element("stack_version_", digits(zap.stackVersion));
  xml.element("protocol_version_", digits(zap.protocolVersion));
  xml.element("stack_id_", digits(zap.stackId));
  xml.element("configure_as_coordinator_", zap.configureAsCoordinator ? "1" : "0");
  const char* const keys[] = {"trust_center_link_data_",  "trust_center_master_data_", "trust_current_network_data_",
                              "trust_next_network_data_", "application_link_data_",    "application_master_data_"};
  for (unsigned int i = 0; i < 6; ++i) keyByHand(xml, keys[i], zap.keys[i]);
  xml.startObject("hops_");
  xml.element("count", digits(zap.hops.size()));
  xml.element("item_version", "183");
  for (const HandHop& hop : zap.hops) {
    xml.startObject("item");
    xml.element("neighbor_", digits(hop.neighbor));
    xml.element("lqi_", digits(hop.lqi));
    xml.object("neighbor_lid_", "id_", digits(hop.lid));
    xml.element("type_", digits(hop.type));
    xml.tribool("rx_on_when_idle_", hop.rxOnWhenIdle == 2 ? "1" : "0", hop.rxOnWhenIdle == 1 ? "1" : "0");
    xml.element("relationship_", digits(static_cast<unsigned int>(hop.relationship)));
    xml.tribool("permit_joining_", hop.permitJoining == 2 ? "1" : "0", hop.permitJoining == 1 ? "1" : "0");
    xml.element("tree_depth_", digits(hop.treeDepth));
    xml.object("neighbor_pan_id_", "addr", panId);
    xml.end();
  }
  xml.end();
  xml.element("rssi_", std::to_string(zap.rssi));
  xml.element("max_inflight_messages_", digits(zap.maxInflight));
  xml.element("num_inflight_messages_", digits(zap.numInflight));
  xml.element("inflight_messages_watermark_", digits(zap.watermark));
  xml.end();
  return xml.document();
}

std::string xmlOf(const qx::Zap& zap) {
  std::ostringstream out;
  qx::XmlWriter writer(out);
  zap.toXml(writer, "zap");
  return out.str();
}

void ZapXml_limit(benchmark::State& state) {
  HandZap zap{};
  const std::unique_ptr<qx::Zap> full = fullZap();
  const std::unique_ptr<qx::pb::ZapPBuf> message(full->toProtobuf());
  readZap(*message, zap);
  const std::string panId = full->xpanId();
  std::string document;
  for (auto _ : state) {
    document = xmlByHand(zap, panId);
    benchmark::DoNotOptimize(document.data());
  }
  if (document != xmlOf(*full)) std::abort();
}
BENCHMARK(ZapXml_limit);

void ZapXml(benchmark::State& state) {
  const std::unique_ptr<qx::Zap> zap = fullZap();
  for (auto _ : state) {
    const std::string document = xmlOf(*zap);
    benchmark::DoNotOptimize(document.data());
  }
}
BENCHMARK(ZapXml);

}  // namespace

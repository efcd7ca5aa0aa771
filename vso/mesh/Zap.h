// The record of an access point: one radio that joins the mesh to the IP network.
#pragma once

#include <ctime>
#include <list>
#include <string>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/PanId.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/MeshSecurityData.h"
#include "vso/mesh/Route.h"

namespace qx {

class XmlWriter;
namespace pb {
class ZapPBuf;
}

/// An access point as the server keeps it: filled from what the radio reports, field by field, and read back. Holds no
/// lock; whoever shares it guards it. Its serial forms hold the keys in the clear: keep them out of logs.
class Zap {
 public:
  /// Everything zero, false or empty but a transmit power of -1.
  Zap() = default;
  /// `ip` in host byte order: 0xC0A80001 is 192.168.0.1. What is not given has its default.
  Zap(unsigned int ip, unsigned short port, bool configureAsCoordinator, const Euid& id, const PanId& xpanId,
      unsigned short panId, unsigned char channel, signed char radioTxPower, unsigned char status, bool isCoordinator,
      unsigned short maxInflightMessages, unsigned short numInflightMessages);
  /// Copies everything but the routes, of which the copy has none.
  Zap(const Zap& other);
  /// Assigns everything but the routes: this record keeps its own.
  Zap& operator=(const Zap& other);
  virtual ~Zap() = default;

  /// Compare address and port alone: the endpoint is what a radio is known by.
  bool operator==(const Zap& other) const { return ip_ == other.ip_ && port_ == other.port_; }
  bool operator!=(const Zap& other) const { return !(*this == other); }

  const Euid& id() const { return id_; }
  /// The radio says that it is the coordinator of the mesh.
  bool coordinator() const { return is_coordinator_; }
  /// Host byte order.
  unsigned int ip() const { return ip_; }
  /// As a dotted quad.
  std::string ipStr() const;
  unsigned short port() const { return port_; }
  const PanId& xpanId() const { return xpanid_; }
  unsigned short panId() const { return panid_; }
  unsigned char channel() const { return channel_; }
  unsigned char status() const { return status_; }
  signed char radioTxPower() const { return radio_tx_power_; }
  /// The server has asked that this radio form the mesh.
  bool configuredAsCoordinator() const { return configure_as_coordinator_; }
  void configureAsCoordinator() { configure_as_coordinator_ = true; }
  unsigned short maxInflightMessages() const { return max_inflight_messages_; }
  unsigned short numInflightMessages() const { return num_inflight_messages_; }

  /// Seconds since 1970.
  long timeStarted() const { return time_started_; }
  void timeStarted(long seconds) { time_started_ = seconds; }
  unsigned int rolloverCount() const { return rollover_count_; }
  void rolloverCount(unsigned int count) { rollover_count_ = count; }
  unsigned long long noBufferCount() const { return no_buffer_count_; }
  void noBufferCount(unsigned long long count) { no_buffer_count_ = count; }
  /// Short address in the mesh.
  unsigned short sid() const { return sid_; }
  void sid(unsigned short sid) { sid_ = sid; }
  unsigned short stackVersion() const { return stack_version_; }
  void stackVersion(unsigned short version) { stack_version_ = version; }
  unsigned char protocolVersion() const { return protocol_version_; }
  void protocolVersion(unsigned char version) { protocol_version_ = version; }
  unsigned char stackId() const { return stack_id_; }
  void stackId(unsigned char id) { stack_id_ = id; }
  /// The most messages that were in flight at a time.
  unsigned char inflightMessagesWatermark() const { return inflight_messages_watermark_; }
  void inflightMessagesWatermark(unsigned char watermark) { inflight_messages_watermark_ = watermark; }

  // The key store. A setter does not check that the record's kind fits the slot.

  const MeshSecurityData& trustCenterLinkData() const { return trust_center_link_data_; }
  void trustCenterLinkData(const MeshSecurityData& data) { trust_center_link_data_ = data; }
  const MeshSecurityData& trustCenterMasterData() const { return trust_center_master_data_; }
  void trustCenterMasterData(const MeshSecurityData& data) { trust_center_master_data_ = data; }
  const MeshSecurityData& trustCurrentNetworkData() const { return trust_current_network_data_; }
  void trustCurrentNetworkData(const MeshSecurityData& data) { trust_current_network_data_ = data; }
  const MeshSecurityData& trustNextNetworkData() const { return trust_next_network_data_; }
  void trustNextNetworkData(const MeshSecurityData& data) { trust_next_network_data_ = data; }
  const MeshSecurityData& applicationLinkData() const { return application_link_data_; }
  void applicationLinkData(const MeshSecurityData& data) { application_link_data_ = data; }
  const MeshSecurityData& applicationMasterData() const { return application_master_data_; }
  void applicationMasterData(const MeshSecurityData& data) { application_master_data_ = data; }

  // The neighbour table.

  /// Sets the link quality of the hop with this long address, and nothing else of it; without one, appends a hop of
  /// which nothing more is known.
  void setHopInfo(unsigned short sid, const Euid& lid, unsigned char lqi);
  /// The first hop with this address, or Hop::INVALID. The reference holds until the table changes.
  const Hop& getHop(const Euid& lid) const;
  const Hop& getHop(unsigned short sid) const;
  void getHopList(std::list<Hop>& out) const { out = hops_; }
  void setHopList(const std::list<Hop>& list) { hops_ = list; }

  // The routing table.

  unsigned int numRoutes() const { return static_cast<unsigned int>(routes_.size()); }
  /// Throws std::runtime_error, "Invalid index.", if there is no such route, and for any index above 255.
  Route getRoute(unsigned int index) const;
  void getRoutes(std::list<Route>& out) const { out = routes_; }
  void setRoutes(const std::list<Route>& list) { routes_ = list; }

  /// Caller owns the result.
  pb::ZapPBuf* toProtobuf() const;
  /// Takes all fields, wider ones cut to their low bits. True on failure: an id, a key or a hop was short; each stage
  /// from the first bad one on is warned of. Throws what `Hop::fromProtobuf` throws, with the fields before it taken.
  bool fromProtobuf(const pb::ZapPBuf& message);
  /// Everything but the routes.
  void toXml(XmlWriter& writer, const std::string& name) const;

 private:
  unsigned int ip_ = 0;
  unsigned short port_ = 0;
  Euid id_;
  PanId xpanid_;
  unsigned short panid_ = 0;
  unsigned char channel_ = 0;
  unsigned char status_ = 0;
  bool is_coordinator_ = false;
  signed char radio_tx_power_ = -1;
  std::time_t time_started_ = 0;
  unsigned int rollover_count_ = 0;
  unsigned long long no_buffer_count_ = 0;
  unsigned short sid_ = 0;
  unsigned short stack_version_ = 0;
  unsigned char protocol_version_ = 0;
  unsigned char stack_id_ = 0;
  bool configure_as_coordinator_ = false;
  MeshSecurityData trust_center_link_data_{0};
  MeshSecurityData trust_center_master_data_{0};
  MeshSecurityData trust_current_network_data_{0};
  MeshSecurityData trust_next_network_data_{0};
  MeshSecurityData application_link_data_{0};
  MeshSecurityData application_master_data_{0};
  std::list<Hop> hops_;
  signed char rssi_ = 0;
  std::list<Route> routes_;
  unsigned short max_inflight_messages_ = 0;
  unsigned short num_inflight_messages_ = 0;
  unsigned char inflight_messages_watermark_ = 0;
};

}  // namespace qx

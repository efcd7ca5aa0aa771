#include "vso/mesh/Zap.h"

#include <arpa/inet.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace qx {

namespace {

/// The first hop of `hops`, a list that may be constant, with this long address, or its end.
template <typename Hops>
auto findHop(Hops& hops, const Euid& lid) {
  return std::find_if(hops.begin(), hops.end(), [&lid](const Hop& hop) { return hop.neighbor_lid_ == lid; });
}

}  // namespace

Zap::Zap(unsigned int ip, unsigned short port, bool configureAsCoordinator, const Euid& id, const PanId& xpanId,
         unsigned short panId, unsigned char channel, signed char radioTxPower, unsigned char status,
         bool isCoordinator, unsigned short maxInflightMessages, unsigned short numInflightMessages)
    : ip_(ip),
      port_(port),
      id_(id),
      xpanid_(xpanId),
      panid_(panId),
      channel_(channel),
      status_(status),
      is_coordinator_(isCoordinator),
      radio_tx_power_(radioTxPower),
      configure_as_coordinator_(configureAsCoordinator),
      max_inflight_messages_(maxInflightMessages),
      num_inflight_messages_(numInflightMessages) {}

Zap::Zap(const Zap& other) { *this = other; }

Zap& Zap::operator=(const Zap& other) {
  if (this == &other) return *this;
  ip_ = other.ip_;
  port_ = other.port_;
  id_ = other.id_;
  xpanid_ = other.xpanid_;
  panid_ = other.panid_;
  channel_ = other.channel_;
  status_ = other.status_;
  is_coordinator_ = other.is_coordinator_;
  radio_tx_power_ = other.radio_tx_power_;
  time_started_ = other.time_started_;
  rollover_count_ = other.rollover_count_;
  no_buffer_count_ = other.no_buffer_count_;
  sid_ = other.sid_;
  stack_version_ = other.stack_version_;
  protocol_version_ = other.protocol_version_;
  stack_id_ = other.stack_id_;
  configure_as_coordinator_ = other.configure_as_coordinator_;
  trust_center_link_data_ = other.trust_center_link_data_;
  trust_center_master_data_ = other.trust_center_master_data_;
  trust_current_network_data_ = other.trust_current_network_data_;
  trust_next_network_data_ = other.trust_next_network_data_;
  application_link_data_ = other.application_link_data_;
  application_master_data_ = other.application_master_data_;
  hops_ = other.hops_;
  rssi_ = other.rssi_;
  // Not routes_: they belong to the record that was filled from the radio.
  max_inflight_messages_ = other.max_inflight_messages_;
  num_inflight_messages_ = other.num_inflight_messages_;
  inflight_messages_watermark_ = other.inflight_messages_watermark_;
  return *this;
}

std::string Zap::ipStr() const { return inet_ntoa(in_addr{htonl(ip_)}); }

void Zap::setHopInfo(unsigned short sid, const Euid& lid, unsigned char lqi) {
  const auto known = findHop(hops_, lid);
  if (known != hops_.end()) {
    known->lqi_ = lqi;
    return;
  }
  hops_.emplace_back(sid, lqi, lid, 0, boost::logic::indeterminate, NONE_OF_THE_ABOVE, boost::logic::indeterminate, 0,
                     PanId::INVALID);
}

const Hop& Zap::getHop(const Euid& lid) const {
  const auto found = findHop(hops_, lid);
  return found != hops_.end() ? *found : Hop::INVALID;
}

const Hop& Zap::getHop(unsigned short sid) const {
  const auto found = std::find_if(hops_.begin(), hops_.end(), [sid](const Hop& hop) { return hop.neighbor_ == sid; });
  return found != hops_.end() ? *found : Hop::INVALID;
}

Route Zap::getRoute(unsigned int index) const {
  // Routes are counted in eight bits: those behind the first 256 cannot be asked for.
  if (index >= routes_.size() || index > 0xFF) throw std::runtime_error("Invalid index.");
  return *std::next(routes_.begin(), index);
}

}  // namespace qx

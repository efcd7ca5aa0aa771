// The serial forms of a node.
#include <memory>

#include "vso/node/ZigbeeNode.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"
#include "vso/serial/protobufLists.h"
#include "vso/serial/utf8.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

/// As the part of a base class: two levels deep.
void histogramToXml(const EventHistogram& histogram, XmlWriter& writer, const std::string& name) {
  const detail::XmlObject element(writer, name);
  histogram.toXml(writer, "EventHistogram");
}

}  // namespace

pb::ZigbeeNodePBuf* ZigbeeNode::toProtobuf() const {
  auto message = std::make_unique<pb::ZigbeeNodePBuf>();
  message->set_allocated_lid(lid_.toProtobuf());
  message->set_product(detail::utf8(product_));
  message->set_sid(sid_);
  message->set_online(online_);
  message->set_reflashprofile(reflash_profile_);
  message->set_fwver(detail::utf8(fw_ver_));
  message->set_reboots(reboots_);
  message->set_allocated_rebootsresettime(posixTimeToProtobuf(reboots_reset_time));
  message->set_bootcount(boot_count_);
  message->set_allocated_rebootshistogram(reboots_histogram_.toProtobuf());
  detail::listToProtobuf(routes, message->mutable_sourceroutes());
  message->set_updating(updating_);
  message->set_updatepercentage(update_percentage_);
  message->set_devicetype(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(device_type_));
  message->set_awake(awake_);
  message->set_appollinterval(ap_poll_interval_);
  message->set_parentpollinterval(parent_poll_interval_);
  message->set_acceptedpacketsuccesses(accepted_packet_successes_);
  message->set_acceptedpacketfailures(accepted_packet_failures_);
  message->set_packetdeliverysuccesses(packet_delivery_successes_);
  message->set_packetdeliveryfailures(packet_delivery_failures_);
  message->set_inboundunicastcount(inbound_unicast_count_);
  message->set_inboundmulticastcount(inbound_multicast_count_);
  message->set_outboundpacketcount(outbound_packet_count_);
  message->set_sourceroutefailures(source_route_failures_);
  message->set_allocated_sourceroutefailureshistogram(source_route_failures_histogram_.toProtobuf());
  message->set_allocated_sourceroutefailuresresettime(posixTimeToProtobuf(source_route_failures_reset_time_));
  message->set_manytooneroutefailures(many_to_one_route_failures_);
  message->set_allocated_manytooneroutefailureshistogram(many_to_one_route_failures_histogram_.toProtobuf());
  message->set_allocated_manytooneroutefailuresresettime(posixTimeToProtobuf(many_to_one_route_failures_reset_time_));
  message->set_maxhops(max_hops_);
  message->set_updatefailed(update_failed_);
  message->set_label(detail::utf8(label_));
  message->set_channel(channel_);
  message->set_allocated_lastcontact(timetToProtobuf(last_contact_));
  message->set_pendingqueuesize(pending_queue_size_);
  message->set_inflightqueuesize(inflight_queue_size_);
  message->set_allocated_reflashtime(timetToProtobuf(reflash_time_));
  message->set_rssi(rssi_);
  message->set_hasrssi(has_rssi_);
  message->set_rxlqi(rx_lqi_);
  message->set_hasrxlqi(has_rx_lqi_);
  message->set_txlqi(tx_lqi_);
  message->set_hastxlqi(has_tx_lqi_);
  message->set_radiobars(radio_bars_);
  message->set_hasradiobars(has_radio_bars_);
  detail::listToProtobuf(hops_, message->mutable_hops());
  detail::listToProtobuf(mto_routes_, message->mutable_mtoroutes());
  detail::listToProtobuf(ap_table_, message->mutable_aptable());
  message->mutable_energylevels()->Add(energy_levels_.begin(), energy_levels_.end());
  message->set_hasbatterylevel(has_battery_level_);
  message->set_batterylevel(battery_level_);
  message->set_uptime(uptime_);
  message->set_signalstrength(signal_strength_);
  message->set_allocated_packetcounters(packet_counters_.toProtobuf());
  return message.release();
}

bool ZigbeeNode::fromProtobuf(const pb::ZigbeeNodePBuf& message) {
  bool failed = false;
  failed |= lid_.fromProtobuf(message.lid());
  product_ = message.product();
  sid_ = static_cast<unsigned short>(message.sid());
  online_ = message.online();
  reflash_profile_ = static_cast<unsigned char>(message.reflashprofile());
  fw_ver_ = message.fwver();
  reboots_ = static_cast<unsigned short>(message.reboots());
  reboots_reset_time = posixTimeFromProtobuf(message.rebootsresettime());
  boot_count_ = static_cast<unsigned short>(message.bootcount());
  failed |= reboots_histogram_.fromProtobuf(message.rebootshistogram());
  failed |= detail::listFromProtobufOneByOne(routes, SourceRoute::INVALID, message.sourceroutes());
  updating_ = message.updating();
  update_percentage_ = static_cast<unsigned char>(message.updatepercentage());
  device_type_ = static_cast<unsigned char>(message.devicetype());
  awake_ = message.awake();
  ap_poll_interval_ = static_cast<unsigned short>(message.appollinterval());
  parent_poll_interval_ = static_cast<unsigned short>(message.parentpollinterval());
  accepted_packet_successes_ = message.acceptedpacketsuccesses();
  accepted_packet_failures_ = message.acceptedpacketfailures();
  packet_delivery_successes_ = message.packetdeliverysuccesses();
  packet_delivery_failures_ = message.packetdeliveryfailures();
  inbound_unicast_count_ = message.inboundunicastcount();
  inbound_multicast_count_ = message.inboundmulticastcount();
  outbound_packet_count_ = message.outboundpacketcount();
  source_route_failures_ = message.sourceroutefailures();
  failed |= source_route_failures_histogram_.fromProtobuf(message.sourceroutefailureshistogram());
  source_route_failures_reset_time_ = posixTimeFromProtobuf(message.sourceroutefailuresresettime());
  many_to_one_route_failures_ = message.manytooneroutefailures();
  failed |= many_to_one_route_failures_histogram_.fromProtobuf(message.manytooneroutefailureshistogram());
  many_to_one_route_failures_reset_time_ = posixTimeFromProtobuf(message.manytooneroutefailuresresettime());
  max_hops_ = static_cast<unsigned char>(message.maxhops());
  update_failed_ = message.updatefailed();
  label_ = message.label();
  channel_ = static_cast<unsigned char>(message.channel());
  last_contact_ = timetFromProtobuf(message.lastcontact());
  pending_queue_size_ = message.pendingqueuesize();
  inflight_queue_size_ = message.inflightqueuesize();
  reflash_time_ = timetFromProtobuf(message.reflashtime());
  rssi_ = static_cast<signed char>(message.rssi());
  has_rssi_ = message.hasrssi();
  rx_lqi_ = static_cast<unsigned char>(message.rxlqi());
  has_rx_lqi_ = message.hasrxlqi();
  tx_lqi_ = static_cast<unsigned char>(message.txlqi());
  has_tx_lqi_ = message.hastxlqi();
  radio_bars_ = static_cast<unsigned char>(message.radiobars());
  has_radio_bars_ = message.hasradiobars();
  failed |= detail::listFromProtobufOneByOne(hops_, Hop::INVALID, message.hops());
  failed |= detail::listFromProtobufOneByOne(mto_routes_, Route::INVALID, message.mtoroutes());
  failed |= detail::listFromProtobufOneByOne(ap_table_, AccessPoint::INVALID, message.aptable());
  energy_levels_.clear();
  for (const int level : message.energylevels()) energy_levels_.push_back(static_cast<signed char>(level));
  has_battery_level_ = message.hasbatterylevel();
  battery_level_ = static_cast<signed char>(message.batterylevel());
  uptime_ = message.uptime();
  signal_strength_ = static_cast<signed char>(message.signalstrength());
  failed |= packet_counters_.fromProtobuf(message.packetcounters());
  return failed;
}

void ZigbeeNode::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  lid_.toXml(writer, "lid_");
  writer.writeElement("product_", product_);
  writer.writeElement("sid_", sid_);
  writer.writeElement("online_", online_, true);
  writer.writeElement("reflash_profile_", reflash_profile_);
  writer.writeElement("fw_ver_", fw_ver_);
  writer.writeElement("reboots_", reboots_);
  collectionToXml(routes, writer, "routes");
  writer.writeElement("updating_", updating_, true);
  writer.writeElement("update_percentage_", update_percentage_);
  writer.writeElement("device_type_", device_type_);
  writer.writeElement("awake_", awake_, true);
  writer.writeElement("accepted_packet_successes_", accepted_packet_successes_);
  writer.writeElement("accepted_packet_failures_", accepted_packet_failures_);
  writer.writeElement("packet_delivery_successes_", packet_delivery_successes_);
  writer.writeElement("packet_delivery_failures_", packet_delivery_failures_);
  writer.writeElement("inbound_unicast_count_", inbound_unicast_count_);
  writer.writeElement("inbound_multicast_count_", inbound_multicast_count_);
  writer.writeElement("outbound_packet_count_", outbound_packet_count_);
  writer.writeElement("source_route_failures_", source_route_failures_);
  writer.writeElement("many_to_one_route_failures_", many_to_one_route_failures_);
  writer.writeElement("max_hops_", max_hops_);
  writer.writeElement("update_failed_", update_failed_, true);
  writer.writeElement("label_", label_);
  writer.writeElement("channel_", channel_);
  timeTToXml(last_contact_, writer, "last_contact_");
  writer.writeElement("ap_poll_interval_", ap_poll_interval_);
  writer.writeElement("parent_poll_interval_", parent_poll_interval_);
  writer.writeElement("boot_count_", boot_count_);
  writer.writeElement("pending_queue_size_", pending_queue_size_);
  writer.writeElement("inflight_queue_size_", inflight_queue_size_);
  timeTToXml(reflash_time_, writer, "reflash_time_");
  writer.writeElement("rssi_", rssi_);
  writer.writeElement("has_rssi_", has_rssi_, true);
  collectionToXml(hops_, writer, "hops_");
  collectionToXml(mto_routes_, writer, "mto_routes_");
  collectionToXml(ap_table_, writer, "ap_table_");
  writer.writeElement("rx_lqi_", rx_lqi_);
  writer.writeElement("has_rx_lqi_", has_rx_lqi_, true);
  writer.writeElement("tx_lqi_", tx_lqi_);
  writer.writeElement("has_tx_lqi_", has_tx_lqi_, true);
  writer.writeElement("radio_bars_", radio_bars_);
  writer.writeElement("has_radio_bars_", has_radio_bars_, true);
  byteListToXml(energy_levels_, writer, "energy_levels_");
  writer.writeElement("has_battery_level_", has_battery_level_, true);
  writer.writeElement("battery_level_", battery_level_);
  writer.writeElement("uptime_", uptime_);
  writer.writeElement("signal_strength_", signal_strength_);
  packet_counters_.toXml(writer, "packet_counters_");
  posixTimeToXml(reboots_reset_time, writer, "reboots_reset_time");
  histogramToXml(reboots_histogram_, writer, "reboots_histogram_");
  histogramToXml(source_route_failures_histogram_, writer, "source_route_failures_histogram_");
  posixTimeToXml(source_route_failures_reset_time_, writer, "source_route_failures_reset_time_");
  histogramToXml(many_to_one_route_failures_histogram_, writer, "many_to_one_route_failures_histogram_");
  posixTimeToXml(many_to_one_route_failures_reset_time_, writer, "many_to_one_route_failures_reset_time_");
}

}  // namespace qx

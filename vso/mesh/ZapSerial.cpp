// The serial forms of an access point.
#include <log4cplus/logger.h>

#include <memory>

#include "vso/logging/Log.h"
#include "vso/mesh/Zap.h"
#include "vso/proto/ZapPBuf.pb.h"
#include "vso/serial/protobufLists.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

}  // namespace

pb::ZapPBuf* Zap::toProtobuf() const {
  auto message = std::make_unique<pb::ZapPBuf>();
  message->set_ip(ip_);
  message->set_port(port_);
  message->set_allocated_id(id_.toProtobuf());
  message->set_allocated_xpanid(xpanid_.toProtobuf());
  message->set_panid(panid_);
  message->set_channel(channel_);
  message->set_status(status_);
  message->set_iscoordinator(is_coordinator_);
  message->set_radiotxpower(radio_tx_power_);
  message->set_allocated_timestarted(timetToProtobuf(time_started_));
  message->set_rollovercount(rollover_count_);
  message->set_nobuffercount(no_buffer_count_);
  message->set_sid(sid_);
  message->set_stackversion(stack_version_);
  message->set_protocolversion(protocol_version_);
  message->set_stackid(stack_id_);
  message->set_configureascoordinator(configure_as_coordinator_);
  message->set_allocated_trustcenterlinkdata(trust_center_link_data_.toProtobuf());
  message->set_allocated_trustcentermasterdata(trust_center_master_data_.toProtobuf());
  message->set_allocated_trustcurrentnetworkdata(trust_current_network_data_.toProtobuf());
  message->set_allocated_trustnextnetworkdata(trust_next_network_data_.toProtobuf());
  message->set_allocated_applicationlinkdata(application_link_data_.toProtobuf());
  message->set_allocated_applicationmasterdata(application_master_data_.toProtobuf());
  detail::listToProtobuf(hops_, message->mutable_hops());
  message->set_rssi(rssi_);
  detail::listToProtobuf(routes_, message->mutable_routes());
  message->set_maxinflightmessages(max_inflight_messages_);
  message->set_numinflightmessages(num_inflight_messages_);
  message->set_inflightmessageswatermark(inflight_messages_watermark_);
  return message.release();
}

bool Zap::fromProtobuf(const pb::ZapPBuf& message) {
  // The flag is never cleared, so each stage from the first bad one on is warned of.
  bool failed = false;
  ip_ = message.ip();
  port_ = static_cast<unsigned short>(message.port());
  failed |= id_.fromProtobuf(message.id());
  failed |= xpanid_.fromProtobuf(message.xpanid());
  if (failed) VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "Zap::fromProtobuf: cannot deserialize PanId");
  panid_ = static_cast<unsigned short>(message.panid());
  channel_ = static_cast<unsigned char>(message.channel());
  status_ = static_cast<unsigned char>(message.status());
  is_coordinator_ = message.iscoordinator();
  radio_tx_power_ = static_cast<signed char>(message.radiotxpower());
  time_started_ = timetFromProtobuf(message.timestarted());
  rollover_count_ = message.rollovercount();
  no_buffer_count_ = message.nobuffercount();
  sid_ = static_cast<unsigned short>(message.sid());
  stack_version_ = static_cast<unsigned short>(message.stackversion());
  protocol_version_ = static_cast<unsigned char>(message.protocolversion());
  stack_id_ = static_cast<unsigned char>(message.stackid());
  configure_as_coordinator_ = message.configureascoordinator();
  failed |= trust_center_link_data_.fromProtobuf(message.trustcenterlinkdata());
  failed |= trust_center_master_data_.fromProtobuf(message.trustcentermasterdata());
  failed |= trust_current_network_data_.fromProtobuf(message.trustcurrentnetworkdata());
  failed |= trust_next_network_data_.fromProtobuf(message.trustnextnetworkdata());
  failed |= application_link_data_.fromProtobuf(message.applicationlinkdata());
  failed |= application_master_data_.fromProtobuf(message.applicationmasterdata());
  if (failed) VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "Zap::fromProtobuf: cannot deserialize security");
  failed |= detail::listFromProtobuf(hops_, Hop::INVALID, message.hops());
  if (failed) VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "Zap::fromProtobuf: cannot deserialize hops");
  rssi_ = static_cast<signed char>(message.rssi());
  failed |= detail::listFromProtobuf(routes_, Route::INVALID, message.routes());
  if (failed) VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "Zap::fromProtobuf: cannot deserialize routes");
  max_inflight_messages_ = static_cast<unsigned short>(message.maxinflightmessages());
  num_inflight_messages_ = static_cast<unsigned short>(message.numinflightmessages());
  inflight_messages_watermark_ = static_cast<unsigned char>(message.inflightmessageswatermark());
  return failed;
}

void Zap::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("ip_", ip_);
  writer.writeElement("port_", port_);
  id_.toXml(writer, "id_");
  xpanid_.toXml(writer, "xpanid_");
  writer.writeElement("panid_", panid_);
  writer.writeElement("channel_", channel_);
  writer.writeElement("status_", status_);
  writer.writeElement("is_coordinator_", is_coordinator_, true);
  writer.writeElement("radio_tx_power_", radio_tx_power_);
  timeTToXml(time_started_, writer, "time_started_");
  writer.writeElement("rollover_count_", rollover_count_);
  writer.writeElement("no_buffer_count_", no_buffer_count_);
  writer.writeElement("sid_", sid_);
  writer.writeElement("stack_version_", stack_version_);
  writer.writeElement("protocol_version_", protocol_version_);
  writer.writeElement("stack_id_", stack_id_);
  writer.writeElement("configure_as_coordinator_", configure_as_coordinator_, true);
  trust_center_link_data_.toXml(writer, "trust_center_link_data_");
  trust_center_master_data_.toXml(writer, "trust_center_master_data_");
  trust_current_network_data_.toXml(writer, "trust_current_network_data_");
  trust_next_network_data_.toXml(writer, "trust_next_network_data_");
  application_link_data_.toXml(writer, "application_link_data_");
  application_master_data_.toXml(writer, "application_master_data_");
  collectionToXml(hops_, writer, "hops_");
  writer.writeElement("rssi_", rssi_);
  writer.writeElement("max_inflight_messages_", max_inflight_messages_);
  writer.writeElement("num_inflight_messages_", num_inflight_messages_);
  writer.writeElement("inflight_messages_watermark_", inflight_messages_watermark_);
}

}  // namespace qx

#include "vso/mesh/MeshSecurityData.h"

#include <memory>

#include "vso/proto/MeshSecurityDataPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

Euid euidOf(unsigned long long integer) {
  Euid euid;
  euid.fromProtobuf(integer);
  return euid;
}

}  // namespace

MeshSecurityData::MeshSecurityData(unsigned char fill)
    : key_(fill), outgoing_frame_counter_(fill), incoming_frame_counter_(fill), sequence_number_(fill) {}

MeshSecurityData& MeshSecurityData::operator=(unsigned char value) {
  *this = MeshSecurityData(value);
  partner_lid_ = euidOf(value);
  return *this;
}

bool MeshSecurityData::operator==(const MeshSecurityData& other) const {
  return key_type_ == other.key_type_ && key_ == other.key_ && partner_lid_ == other.partner_lid_;
}

bool MeshSecurityData::operator==(unsigned char value) const {
  return static_cast<int>(key_type_) == value && key_ == value && partner_lid_ == euidOf(value);
}

std::string MeshSecurityData::keyTypeStr() const {
  switch (key_type_) {
    case QX_UNKNOWN_KEY:
      return "UNKNOWN_KEY";
    case QX_TRUST_CENTER_LINK_KEY:
      return "TRUST_CENTER_LINK_KEY";
    case QX_TRUST_CENTER_MASTER_KEY:
      return "TRUST_CENTER_MASTER_KEY";
    case QX_CURRENT_NETWORK_KEY:
      return "CURRENT_NETWORK_KEY";
    case QX_NEXT_NETWORK_KEY:
      return "NEXT_NETWORK_KEY";
    case QX_APPLICATION_LINK_KEY:
      return "APPLICATION_LINK_KEY";
    case QX_APPLICATION_MASTER_KEY:
      return "APPLICATION_MASTER_KEY";
  }
  return "UNKNOWN_KEY";
}

pb::MeshSecurityDataPBuf* MeshSecurityData::toProtobuf() const {
  auto message = std::make_unique<pb::MeshSecurityDataPBuf>();
  message->set_keytype(static_cast<pb::KeyTypePEnum>(key_type_));
  message->set_allocated_key(key_.toProtobuf());
  message->set_outgoingframecounter(outgoing_frame_counter_);
  message->set_incomingframecounter(incoming_frame_counter_);
  message->set_sequencenumber(sequence_number_);
  message->set_allocated_partnerlid(partner_lid_.toProtobuf());
  return message.release();
}

bool MeshSecurityData::fromProtobuf(const pb::MeshSecurityDataPBuf& message) {
  key_type_ = static_cast<KeyType>(message.keytype());
  bool failed = key_.fromProtobuf(message.key());
  outgoing_frame_counter_ = message.outgoingframecounter();
  incoming_frame_counter_ = message.incomingframecounter();
  sequence_number_ = static_cast<unsigned char>(message.sequencenumber());
  failed |= partner_lid_.fromProtobuf(message.partnerlid());
  return failed;
}

void MeshSecurityData::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlScope element(writer, name);
  writer.writeElement("key_type_", static_cast<int>(key_type_));
  key_.toXml(writer, "key_");
  writer.writeElement("outgoing_frame_counter_", outgoing_frame_counter_);
  writer.writeElement("incoming_frame_counter_", incoming_frame_counter_);
  writer.writeElement("sequence_number_", sequence_number_);
  partner_lid_.toXml(writer, "partner_lid_");
}

}  // namespace qx

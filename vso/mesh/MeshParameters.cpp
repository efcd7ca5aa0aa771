#include "vso/mesh/MeshParameters.h"

#include <iomanip>
#include <memory>
#include <ostream>

#include "qxshared/hexStr.h"
#include "qxxml/XmlReader.h"
#include "vso/proto/MeshParametersPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

MeshParameters& MeshParameters::operator=(unsigned char value) {
  xpanid_ = value;
  panid_ = value;
  preconfiguredKey_ = value;
  networkKey_ = value;
  return *this;
}

bool MeshParameters::operator==(const MeshParameters& other) const {
  return isSameMesh(other) && panid_ == other.panid_;
}

bool MeshParameters::operator==(unsigned char value) const {
  return xpanid_ == static_cast<unsigned int>(value) && panid_ == value && preconfiguredKey_ == value &&
         networkKey_ == value;
}

bool MeshParameters::isSameMesh(const MeshParameters& other) const {
  return xpanid_ == other.xpanid_ && preconfiguredKey_ == other.preconfiguredKey_ && networkKey_ == other.networkKey_ &&
         channel_ == other.channel_;
}

bool MeshParameters::isValid() const { return xpanid_ != 0U && panid_ != 0; }

std::string MeshParameters::meshStateStr(MeshState status) {
  switch (status) {
    case MESH_DOWN:
      return "MESH_DOWN";
    case MESH_UP:
      return "MESH_UP";
    case MESH_CLEAN:
      return "MESH_CLEAN";
    case MESH_UNKNOWN_STATE:
    case MESH_FORCE_CREATION:
      break;
  }
  return "MESH_UKNOWN";
}

std::ostream& MeshParameters::print(std::ostream& out) const {
  return out << "STATUS: " << static_cast<int>(status_) << ", XPANID: 0x" << xpanid_
             << ", PANID: " << hexStr(panid_, 2, true) << ", CHANNEL: " << std::dec << static_cast<int>(channel_)
             << ", PRECONFIGUREDKEY: " << static_cast<std::string>(preconfiguredKey_)
             << ", NETWORKKEY: " << static_cast<std::string>(networkKey_) << std::setfill('0');
}

pb::MeshParametersPBuf* MeshParameters::toProtobuf() const {
  auto message = std::make_unique<pb::MeshParametersPBuf>();
  message->set_status(static_cast<pb::MeshStatePEnum>(status_));
  message->set_allocated_xpanid(xpanid_.toProtobuf());
  message->set_panid(panid_);
  message->set_channel(channel_);
  message->set_allocated_preconfiguredkey(preconfiguredKey_.toProtobuf());
  message->set_allocated_networkkey(networkKey_.toProtobuf());
  return message.release();
}

bool MeshParameters::fromProtobuf(const pb::MeshParametersPBuf& message) {
  status_ = static_cast<MeshState>(message.status());
  bool failed = xpanid_.fromProtobuf(message.xpanid());
  panid_ = static_cast<unsigned short>(message.panid());
  channel_ = static_cast<unsigned char>(message.channel());
  failed |= preconfiguredKey_.fromProtobuf(message.preconfiguredkey());
  failed |= networkKey_.fromProtobuf(message.networkkey());
  return failed;
}

void MeshParameters::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("status_", static_cast<int>(status_));
  xpanid_.toXml(writer, "xpanid_");
  writer.writeElement("panid_", panid_);
  writer.writeElement("channel_", channel_);
  preconfiguredKey_.toXml(writer, "preconfiguredKey_");
  networkKey_.toXml(writer, "networkKey_");
}

bool MeshParameters::fromXml(XmlReader& reader) {
  // A text that is no number stands for the last number of its element, which the field holds already: it is left
  // alone.
  bool failed = false;
  while (!failed && reader.read()) {
    if (reader.nodeType() != detail::XML_ELEMENT) continue;
    const std::string name = reader.name();
    int number = 0;
    if (name == "status_") {
      if (detail::readNumber(reader, number)) status_ = static_cast<MeshState>(number);
    } else if (name == "xpanid_") {
      failed = xpanid_.fromXml(reader);
    } else if (name == "panid_") {
      if (detail::readNumber(reader, number)) panid_ = static_cast<unsigned short>(number);
    } else if (name == "channel_") {
      if (detail::readNumber(reader, number)) channel_ = static_cast<unsigned char>(number);
    } else if (name == "preconfiguredKey_") {
      failed = preconfiguredKey_.fromXml(reader);
    } else if (name == "networkKey_") {
      failed = networkKey_.fromXml(reader);
    }
  }
  return failed || reader.state() == detail::XML_ERROR;
}

}  // namespace qx

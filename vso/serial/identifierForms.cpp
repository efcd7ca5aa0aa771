// The serial forms of the identifiers, apart from the classes so that these need neither protobuf nor XML.
#include <algorithm>
#include <memory>
#include <string>

#include "qxxml/XmlReader.h"
#include "vso/identifiers/Euid.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/PanId.h"
#include "vso/identifiers/hexify.h"
#include "vso/proto/EuidPBuf.pb.h"
#include "vso/proto/PanIdPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

pb::EuidPBuf* Euid::toProtobuf() const {
  auto message = std::make_unique<pb::EuidPBuf>();
  message->set_id(integer());
  return message.release();
}

bool Euid::fromProtobuf(const pb::EuidPBuf& message) { return fromProtobuf(message.id()); }

bool Euid::fromProtobuf(unsigned long long id) {
  for (unsigned int i = 0; i < sizeof id_; ++i) bytes()[i] = static_cast<unsigned char>(id >> 8 * i);
  return false;
}

void Euid::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("id_", static_cast<unsigned long long>(integer()));
}

pb::PanIdPBuf* PanId::toProtobuf() const {
  auto message = std::make_unique<pb::PanIdPBuf>();
  message->set_addr(id_, sizeof id_);
  return message.release();
}

bool PanId::fromProtobuf(const pb::PanIdPBuf& message) {
  const std::string& addr = message.addr();
  std::copy_n(addr.begin(), std::min(addr.size(), sizeof id_), id_);
  return addr.size() < sizeof id_;
}

void PanId::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("addr", static_cast<std::string>(*this));
}

bool PanId::fromXml(XmlReader& reader) {
  while (reader.read()) {
    if (reader.nodeType() != detail::XML_ELEMENT || reader.name() != "addr") continue;
    std::string text;
    readValue(reader, text);
    if (text.size() != 2 * sizeof id_) return true;
    deHexify(text, id_, sizeof id_);
    return reader.state() == detail::XML_ERROR;
  }
  return true;
}

}  // namespace qx

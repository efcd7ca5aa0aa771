#include "vso/mesh/AccessPoint.h"

#include <iomanip>
#include <memory>
#include <ostream>

#include "qxshared/hexStr.h"
#include "vso/proto/AccessPointPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

const AccessPoint AccessPoint::INVALID(0xFFFF, 0xFF);

AccessPoint::AccessPoint(unsigned short destination, unsigned char tableIndex)
    : destination_(destination), table_index_(tableIndex) {}

pb::AccessPointPBuf* AccessPoint::toProtobuf() const {
  auto message = std::make_unique<pb::AccessPointPBuf>();
  message->set_destination(destination_);
  message->set_tableindex(table_index_);
  return message.release();
}

bool AccessPoint::fromProtobuf(const pb::AccessPointPBuf& message) {
  destination_ = static_cast<unsigned short>(message.destination());
  table_index_ = static_cast<unsigned char>(message.tableindex());
  return false;
}

void AccessPoint::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("destination_", destination_);
  writer.writeElement("table_index_", table_index_);
}

std::ostream& operator<<(std::ostream& out, const AccessPoint& accessPoint) {
  return out << std::hex << std::setfill('0') << "Destination: " << hexStr(accessPoint.destination_, 2, true)
             << " Index: 0x" << static_cast<int>(accessPoint.table_index_);
}

}  // namespace qx

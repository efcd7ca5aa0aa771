#include "vso/zcl/AttributeRecordData.h"

#include <log4cplus/logger.h>

#include <algorithm>
#include <ostream>

#include "qxshared/hexStr.h"
#include "vso/identifiers/hexify.h"
#include "vso/identifiers/storage.h"
#include "vso/logging/Log.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclType.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

unsigned long long littleEndian(const AttributeRecordData::Data& data, unsigned int bytes) {
  unsigned long long value = 0;
  for (unsigned int i = bytes; i-- != 0;) value = value << 8 | data[i];
  return value;
}

}  // namespace

AttributeRecordData::AttributeRecordData() noexcept { detail::clearBytes(data_.data(), DATA_SIZE); }

AttributeRecordData::AttributeRecordData(unsigned short id, unsigned char type, const Data& data) noexcept
    : id_(id), type_(type), data_(data) {}

unsigned short AttributeRecordData::getUInt16() const noexcept { return ZclMessage::toUint16(data_); }
unsigned int AttributeRecordData::getUInt32() const noexcept { return ZclMessage::toUint32(data_); }
unsigned long long AttributeRecordData::getUInt64() const noexcept { return ZclMessage::toUint64(data_); }
Euid AttributeRecordData::getEuid() const noexcept { return ZclMessage::toEuid(data_); }

std::string AttributeRecordData::getBytesAsHex(unsigned int count) const {
  std::string text;
  hexify(data_.data(), std::min(count, DATA_SIZE), text, false);
  return text;
}

std::string AttributeRecordData::hexId() const { return hexStr(id_, 2, true); }
std::string AttributeRecordData::hexType() const { return hexStr(type_, 1, true); }

bool AttributeRecordData::valueToString(std::string& out) const {
  const detail::ZclTypeRow& type = detail::zclType(type_);
  switch (type.kind) {
    case detail::ZclValueKind::DECIMAL:
      out = std::to_string(littleEndian(data_, type.size));
      return false;
    case detail::ZclValueKind::BOOLEAN:
      out = data_[0] != 0 ? "1" : "0";
      return false;
    case detail::ZclValueKind::HEX:
      out = hexStr(littleEndian(data_, type.size), type.size, false);
      return false;
    case detail::ZclValueKind::TEXT:
      out.assign(data_.begin(), std::find(data_.begin(), data_.end(), '\0'));
      return false;
    case detail::ZclValueKind::OCTETS:
      // Wire form, although the list readers leave readable form by default.
      for (unsigned int i = 1; i <= data_[0]; ++i) out += hexStr(data_.at(i), 1, false);
      return false;
    case detail::ZclValueKind::UNKNOWN:
      break;
  }
  VSO_LOG(logger, log4cplus::ERROR_LOG_LEVEL,
          "AttributeRecordData::valueToString: diagnostics metric value unsupported type: " << hexType() << ", data: "
                                                                                            << getBytesAsHex(4));
  return true;
}

std::ostream& AttributeRecordData::print(std::ostream& out) const {
  std::string value;
  if (valueToString(value)) value = getBytesAsHex(4) + " (error)";
  return out << "<AttributeRecordData id_: " + hexId() + ", type_: " + hexType() + ", data_: " + value + ">";
}

std::ostream& operator<<(std::ostream& out, const AttributeRecordData& record) { return record.print(out); }

}  // namespace qx

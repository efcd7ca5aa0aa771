#include "vso/node/NetworkHealthItem.h"

#include <charconv>
#include <memory>
#include <ostream>
#include <tuple>
#include <utility>

#include "qxresponse/IResponse.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/serial/utf8.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

/// As a stream prints it by default, at a tenth of the cost.
std::string textOf(double value) {
  constexpr int PRECISION = 6;
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, PRECISION).ptr;
  return {digits, end};
}

}  // namespace

NetworkHealthItem::NetworkHealthItem(std::string name, DataType type, std::string min, std::string max,
                                     std::string value, std::string units)
    : name_(std::move(name)),
      type_(type),
      min_(std::move(min)),
      max_(std::move(max)),
      value_(std::move(value)),
      units_(std::move(units)) {}

bool NetworkHealthItem::operator==(const NetworkHealthItem& other) const {
  return std::tie(version_, name_, type_, min_, max_, value_, units_) ==
         std::tie(other.version_, other.name_, other.type_, other.min_, other.max_, other.value_, other.units_);
}

void NetworkHealthItem::add(std::vector<NetworkHealthItem>& items, const std::string& name, DataType type,
                            const std::string& min, const std::string& max, const std::string& value,
                            const std::string& units) {
  items.emplace_back(name, type, min, max, value, units);
}

void NetworkHealthItem::add(std::vector<NetworkHealthItem>& items, const std::string& name, DataType type,
                            const std::string& min, const std::string& max, int value, const std::string& units) {
  items.emplace_back(name, type, min, max, std::to_string(value), units);
}

void NetworkHealthItem::add(std::vector<NetworkHealthItem>& items, const std::string& name, DataType type,
                            const std::string& min, const std::string& max, double value, const std::string& units) {
  items.emplace_back(name, type, min, max, textOf(value), units);
}

std::ostream& NetworkHealthItem::print(std::ostream& out) const {
  return out << "{" << version_ << ", " << name_ << ", " << static_cast<int>(type_) << ", " << min_ << ", " << max_
             << ", " << value_ << ", " << units_ << "}";
}

NetworkHealthItem* NetworkHealthItem::clone() const { return new NetworkHealthItem(*this); }

pb::NetworkHealthItemPBuf* NetworkHealthItem::toProtobuf() const {
  auto message = std::make_unique<pb::NetworkHealthItemPBuf>();
  message->set_version(version_);
  message->set_name(detail::utf8(name_));
  message->set_type(static_cast<pb::DataTypePEnum>(type_));
  message->set_min(detail::utf8(min_));
  message->set_max(detail::utf8(max_));
  message->set_value(detail::utf8(value_));
  message->set_units(detail::utf8(units_));
  return message.release();
}

bool NetworkHealthItem::fromProtobuf(const pb::NetworkHealthItemPBuf& message) {
  version_ = message.version();
  name_ = message.name();
  type_ = static_cast<DataType>(message.type());
  min_ = message.min();
  max_ = message.max();
  value_ = message.value();
  units_ = message.units();
  return false;
}

void NetworkHealthItem::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  writer.writeElement("version_", version_);
  writer.writeElement("name_", name_);
  writer.writeElement("type_", static_cast<int>(type_));
  writer.writeElement("min_", min_);
  writer.writeElement("max_", max_);
  writer.writeElement("value_", value_);
  writer.writeElement("units_", units_);
}

void NetworkHealthItem::toIResponse(boost::shared_ptr<response::IResponse> response) const {
  response->startObject("NetworkHealthItem", 0);
  response->addString("name_", name_);
  response->addString("value_", value_);
  response->endObject();
}

void NetworkHealthItem::toIResponseData(boost::shared_ptr<response::IResponse> response) const {
  response->startObject("NetworkHealthItemData", 0);
  response->addInteger("version_", version_);
  response->addString("name_", name_);
  response->addInteger("type_", type_);
  response->addString("min_", min_);
  response->addString("max_", max_);
  response->addString("units_", units_);
  response->endObject();
}

}  // namespace qx

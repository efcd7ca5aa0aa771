#include "apps/vso/decode/JsonPrinter.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <variant>
#include <vector>

namespace qx::app {

namespace {

/// Keeps the order in which members are added.
using Json = nlohmann::ordered_json;

template <typename T>
Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

const char* layer(const ZclHeader&) { return "zcl"; }
const char* layer(const ZdoHeader&) { return "zdo"; }

Json json(const ZclHeader& header) {
  return {{"frameControl", orNull(header.frameControl)},
          {"manufacturerCode", orNull(header.manufacturerCode)},
          {"sequence", orNull(header.sequence)},
          {"command", orNull(header.command)},
          {"name", header.name != nullptr ? Json(header.name) : Json(nullptr)}};
}

Json json(const ZdoHeader& header) { return {{"sequence", orNull(header.sequence)}}; }

Json json(const DecodedAttribute& attribute) {
  Json object{{"id", attribute.id}};
  if (attribute.status) object["status"] = *attribute.status;
  if (attribute.value) {
    object["type"] = attribute.value->type;
    if (attribute.value->text) object["value"] = *attribute.value->text;
  }
  return object;
}

Json json(const std::vector<DecodedAttribute>& attributes) {
  Json array = Json::array();
  for (const DecodedAttribute& attribute : attributes) array.push_back(json(attribute));
  return array;
}

Json json(const std::vector<NamedValue>& values) {
  Json object = Json::object();
  for (const NamedValue& named : values) {
    std::visit([&](const auto& value) { object[named.name] = value; }, named.value);
  }
  return object;
}

std::string lineOf(const Json& object) { return object.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n"; }

}  // namespace

std::string JsonPrinter::print(const DecodedFrame& frame) const {
  Json object{{"layer", std::visit([](const auto& header) { return layer(header); }, frame.header)},
              {"profile", frame.profile},
              {"cluster", frame.cluster},
              {"hex", frame.hex},
              {"header", std::visit([](const auto& header) { return json(header); }, frame.header)}};
  if (frame.attributes) object["attributes"] = json(*frame.attributes);
  if (!frame.fields.empty()) object["fields"] = json(frame.fields);
  if (!frame.readings.empty()) object["readings"] = json(frame.readings);
  return lineOf(object);
}

std::string JsonPrinter::print(const UnreadableLine& line) const {
  return lineOf({{"hex", orNull(line.hex)}, {"error", line.reason}});
}

}  // namespace qx::app

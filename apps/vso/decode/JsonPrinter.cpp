#include "apps/vso/decode/JsonPrinter.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <variant>
#include <vector>

#include "vso/zdo/ZdoResponse.h"

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

Json json(const ZdoHeader& header) {
  Json object{{"sequence", orNull(header.sequence)}};
  if (header.isResponse) object["status"] = orNull(header.status);
  if (header.status) object["statusText"] = ZdoResponse::statusStr(static_cast<ZdoStatus>(*header.status));
  return object;
}

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

Json json(const DecodedTable& table) {
  Json array = Json::array();
  for (const auto& row : table.rows) array.push_back(json(row));
  return array;
}

Json json(const FrameVerdict& verdict) {
  switch (verdict.state) {
    case FrameVerdict::WHOLE:
      return {{"whole", true}};
    case FrameVerdict::BROKEN:
      return {{"whole", false}, {"byte", verdict.byte}, {"what", verdict.what}};
    case FrameVerdict::UNKNOWN:
      break;
  }
  return {{"whole", nullptr}, {"byte", verdict.byte}, {"what", verdict.what}};
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
  if (frame.table) object["rows"] = json(*frame.table);
  object["verdict"] = json(frame.verdict);
  return lineOf(object);
}

std::string JsonPrinter::print(const UnreadableLine& line) const {
  return lineOf({{"hex", orNull(line.hex)}, {"error", line.reason}});
}

}  // namespace qx::app

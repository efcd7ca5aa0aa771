#include "tests/vso/frames/RebuiltFrame.h"

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/vso/frames/FrameFacts.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"

namespace qx::test {

using nlohmann::json;

namespace {

template <typename Record>
std::vector<Record> recordsOf(const json& attributes) {
  std::vector<Record> records;
  for (const json& attribute : attributes) {
    const std::vector<unsigned char> raw =
        attribute.contains("value") ? rawOf(attribute) : std::vector<unsigned char>();
    records.emplace_back(attribute.value<unsigned short>("id", 0), attribute.value<unsigned char>("type", 0),
                         dataOf(raw));
    if constexpr (std::is_same_v<Record, ReadAttributeStatusRecord> ||
                  std::is_same_v<Record, WriteAttributeReportRecord>) {
      records.back().status_ = attribute.at("status");
    }
  }
  return records;
}

void addOptions(ZclMessage& frame, const json& fields) {
  for (const char* field : {"options_mask", "options_override"}) {
    if (fields.contains(field) && !fields.at(field).is_null()) frame.addByte(fields.at(field));
  }
}

ZclMessage onOff(void (ZclOnOff::*build)()) {
  ZclOnOff frame;
  (frame.*build)();
  return ZclMessage(frame);
}

template <typename Build>
ZclMessage levelControl(const json& fields, Build build) {
  ZclLevelControl frame;
  build(frame);
  addOptions(frame, fields);
  return ZclMessage(frame);
}

/// A command of a cluster, which the library has no builder for, by its append operations.
template <typename Append>
ZclMessage clusterCommand(unsigned char command, Append append) {
  ZclMessage frame(command, false, true);
  append(frame);
  return frame;
}

/// The cluster commands of the file, by their names in it.
const std::map<std::string, std::function<ZclMessage(const json&)>> COMMANDS{
    {"identify",
     [](const json& f) { return clusterCommand(0x00, [&](auto& out) { out.addUint16(f.at("identify_time")); }); }},
    {"identify_query", [](const json&) { return clusterCommand(0x01, [](auto&) {}); }},
    {"identify_query_response",
     [](const json& f) { return clusterCommand(0x00, [&](auto& out) { out.addUint16(f.at("timeout")); }); }},
    {"trigger_effect",
     [](const json& f) {
       return clusterCommand(0x40, [&](auto& out) {
         out.addByte(f.at("effect_id"));
         out.addByte(f.at("effect_variant"));
       });
     }},
    {"off", [](const json&) { return onOff(&ZclOnOff::setOff); }},
    {"on", [](const json&) { return onOff(&ZclOnOff::setOn); }},
    {"toggle", [](const json&) { return onOff(&ZclOnOff::setToggle); }},
    {"off_with_effect",
     [](const json& f) {
       return clusterCommand(0x40, [&](auto& out) {
         out.addByte(f.at("effect_id"));
         out.addByte(f.at("effect_variant"));
       });
     }},
    {"on_with_recall_global_scene", [](const json&) { return clusterCommand(0x41, [](auto&) {}); }},
    {"on_with_timed_off",
     [](const json& f) {
       return clusterCommand(0x42, [&](auto& out) {
         out.addByte(f.at("on_off_control"));
         out.addUint16(f.at("on_time"));
         out.addUint16(f.at("off_wait_time"));
       });
     }},
    {"move_to_level",
     [](const json& f) {
       return levelControl(f, [&](auto& out) { out.moveToLevel(f.at("level"), f.at("transition_time")); });
     }},
    {"move",
     [](const json& f) { return levelControl(f, [&](auto& out) { out.move(f.at("move_mode"), f.at("rate")); }); }},
    {"step",
     [](const json& f) {
       return levelControl(f,
                           [&](auto& out) { out.step(f.at("step_mode"), f.at("step_size"), f.at("transition_time")); });
     }},
    {"stop", [](const json& f) { return levelControl(f, [](auto& out) { out.stop(); }); }},
    {"move_to_level_with_on_off",
     [](const json& f) {
       return levelControl(f, [&](auto& out) { out.moveToLevelWOnOff(f.at("level"), f.at("transition_time")); });
     }},
    {"moveToLevelWithOnOff",
     [](const json& f) {
       return levelControl(f, [&](auto& out) { out.moveToLevelWOnOff(f.at("level"), f.at("transtime")); });
     }},
    {"move_with_on_off",
     [](const json& f) {
       return levelControl(f, [&](auto& out) { out.moveWOnOff(f.at("move_mode"), f.at("rate")); });
     }},
    {"step_with_on_off",
     [](const json& f) {
       return levelControl(
           f, [&](auto& out) { out.stepWOnOff(f.at("step_mode"), f.at("step_size"), f.at("transition_time")); });
     }},
    {"stop_with_on_off", [](const json& f) { return levelControl(f, [](auto& out) { out.stopWOnOff(); }); }},
};

ZclMessage payloadRebuilt(const json& facts, const std::string& kind) {
  const json& header = facts.at("header");
  if (kind == CLUSTER_COMMAND) return COMMANDS.at(facts.at("commandName"))(facts.at("fields"));

  ZclMessage frame(header.at("command"), header.at("manufacturerSpecific"), header.at("frameType") == 1);
  if (kind == READ_ATTRIBUTES) {
    std::vector<unsigned short> ids;
    for (const json& attribute : facts.at("attributes")) ids.push_back(attribute.at("id"));
    frame.setReadAttributes(ids);
  } else if (kind == READ_RESPONSE) {
    frame.setReadAttributesResponse(recordsOf<ReadAttributeStatusRecord>(facts.at("attributes")));
  } else if (kind == WRITE_ATTRIBUTES) {
    frame.setWriteAttributes(recordsOf<WriteAttributeRecord>(facts.at("attributes")));
  } else if (kind == WRITE_RESPONSE) {
    frame.setWriteAttributeResponses(recordsOf<WriteAttributeReportRecord>(facts.at("attributes")));
  } else if (kind == REPORT) {
    frame.setReportAttributes(recordsOf<ReportAttributeRecord>(facts.at("attributes")));
  } else if (kind == DEFAULT_RESPONSE) {
    frame.addByte(facts.at("fields").at("commandId"));
    frame.addByte(facts.at("fields").at("status"));
  } else if (kind != HEADER_ONLY) {
    throw std::out_of_range("no way to rebuild a frame of kind " + kind);
  }
  return frame;
}

}  // namespace

ZclMessage rebuilt(const RecordedFrame& frame) {
  const json& header = frame.facts.at("header");
  ZclMessage built = payloadRebuilt(frame.facts, kindOf(frame));
  built.setFcf(frameControlOf(header));
  if (header.at("manufacturerSpecific")) built.setMc(header.at("manufacturerCode"));
  built.setTsn(header.at("sequence"));
  return built;
}

}  // namespace qx::test

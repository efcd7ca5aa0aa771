// Recorded commands of the groups, scenes and upgrade clusters and of ZDO: read and rebuilt by the classes of the
// library, against what independent decoders state of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/logic/tribool.hpp>
#include <cstdio>
#include <fstream>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "tests/vso/frames/FrameFacts.h"
#include "tests/vso/frames/FramesFile.h"
#include "vso/layout/FrameVerdict.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/zcl/ZclGroups.h"
#include "vso/zcl/ZclOtaUpgrade.h"
#include "vso/zcl/ZclScenes.h"
#include "vso/zdo/ZdoLeaveRequest.h"
#include "vso/zdo/ZdoLeaveResponse.h"
#include "vso/zdo/ZdoNetworkLqiRequest.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgRequest.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateRequest.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"
#include "vso/zdo/ZdoPermitJoinRequest.h"
#include "vso/zdo/ZdoPermitJoinResponse.h"

namespace qx::test {
namespace {

using nlohmann::json;
using Frame = U255Buff<unsigned char>;

/// What is done with one command. Either may be missing.
struct Command {
  /// The frame that the library builds from the stated fields. Its header is the caller's.
  std::function<Frame(const json&)> build;
  /// What the library reads, in the words of the facts; null if a reader refuses the frame.
  std::function<json(const Frame&)> read;
};

using Commands = std::map<std::string, Command>;

template <typename Bundle, typename Class, typename Words>
std::function<json(const Frame&)> reader(boost::logic::tribool (Class::*read)(Bundle&) const, Words words) {
  return [read, words](const Frame& bytes) {
    Bundle bundle;
    return (Class(bytes).*read)(bundle) ? json(words(bundle)) : json();
  };
}

template <typename Class, typename Build>
std::function<Frame(const json&)> builder(Build build) {
  return [build](const json& fields) {
    Class frame;
    build(frame, fields);
    return Frame(frame);
  };
}

const Commands GROUPS{
    {"add", {builder<ZclGroups>([](auto& out, auto& f) { out.addGroup(f.at("group_id"), f.at("group_name")); }), {}}},
    {"view", {builder<ZclGroups>([](auto& out, auto& f) { out.viewGroup(f.at("group_id")); }), {}}},
    {"get_membership", {builder<ZclGroups>([](auto& out, auto& f) { out.getGroupMembership(f.at("groups")); }), {}}},
    {"remove", {builder<ZclGroups>([](auto& out, auto& f) { out.removeGroup(f.at("group_id")); }), {}}},
    {"remove_all", {builder<ZclGroups>([](auto& out, auto&) { out.removeAllGroups(); }), {}}},
    {"add_if_identifying",
     {builder<ZclGroups>([](auto& out, auto& f) { out.addGroupIfIdentifying(f.at("group_id"), f.at("group_name")); }),
      {}}},
    {"add_response",
     {{},
      reader(&ZclGroups::addGroupResponse,
             [](auto& b) {
               return json{{"status", b.status}, {"group_id", b.groupId}};
             })}},
    {"view_response",
     {{},
      reader(&ZclGroups::viewGroupResponse,
             [](auto& b) {
               return json{{"status", b.status}, {"group_id", b.groupId}, {"group_name", b.groupName}};
             })}},
    {"get_membership_response",
     {{},
      reader(&ZclGroups::getGroupMembershipResponse,
             [](auto& b) {
               return json{{"capacity", b.capacity}, {"groups", b.groupIds}};
             })}},
    {"remove_response",
     {{},
      reader(&ZclGroups::remGroupResponse,
             [](auto& b) {
               return json{{"status", b.status}, {"group_id", b.groupId}};
             })}},
};

json sceneWords(const SceneBundle& b) {
  return {{"status", b.status}, {"group_id", b.groupId}, {"scene_id", b.sceneId}};
}

void addScene(ZclScenes& out, const json& f) {
  // One frame comes from another decoder, with words of its own.
  const auto either = [&f](const char* word, const char* other) { return f.contains(word) ? f.at(word) : f.at(other); };
  SceneTableEntry scene;
  scene.groupId = either("group_id", "groupid");
  scene.sceneId = either("scene_id", "sceneid");
  scene.transitionTime = either("transition_time", "transtime");
  scene.sceneName = either("scene_name", "scenename");
  if (f.contains("extensionfieldsets")) {
    for (std::size_t i = 0; i < f.at("extensionfieldsets").size(); ++i) {
      const json& extension = f.at("extensionfieldsets")[i];
      scene.extensions[i] = {extension.at("clstId"), extension.at("len"), extension.at("extField")[0]};
    }
  }
  out.addScene(scene);
}

const Commands SCENES{
    {"add", {builder<ZclScenes>(addScene), {}}},
    {"view", {builder<ZclScenes>([](auto& out, auto& f) { out.viewScene(f.at("group_id"), f.at("scene_id")); }), {}}},
    {"remove",
     {builder<ZclScenes>([](auto& out, auto& f) { out.removeScene(f.at("group_id"), f.at("scene_id")); }), {}}},
    {"remove_all", {builder<ZclScenes>([](auto& out, auto& f) { out.removeAllScenes(f.at("group_id")); }), {}}},
    {"store", {builder<ZclScenes>([](auto& out, auto& f) { out.storeScene(f.at("group_id"), f.at("scene_id")); }), {}}},
    {"recall",
     {builder<ZclScenes>([](auto& out, auto& f) { out.recallScene(f.at("group_id"), f.at("scene_id")); }), {}}},
    {"get_scene_membership",
     {builder<ZclScenes>([](auto& out, auto& f) { out.getSceneMembership(f.at("group_id")); }), {}}},
    {"add_scene_response", {{}, reader(&ZclScenes::addSceneResponse, sceneWords)}},
    {"remove_scene_response", {{}, reader(&ZclScenes::removeSceneResponse, sceneWords)}},
    {"store_scene_response", {{}, reader(&ZclScenes::storeSceneResponse, sceneWords)}},
    {"remove_all_scenes_response",
     {{},
      reader(&ZclScenes::removeAllScenesResponse,
             [](auto& b) {
               return json{{"status", b.status}, {"group_id", b.groupId}};
             })}},
    {"view_response",
     {{},
      reader(&ZclScenes::viewSceneResponse,
             [](auto& b) {
               return json{{"status", b.status},
                           {"group_id", b.groupId},
                           {"scene_id", b.sceneId},
                           {"transition_time", b.transitionTime},
                           {"scene_name", b.sceneName}};
             })}},
    {"get_scene_membership_response",
     {{},
      reader(&ZclScenes::getSceneMembershipResponse,
             [](auto& b) {
               return json{
                   {"status", b.status}, {"capacity", b.capacity}, {"group_id", b.groupId}, {"scenes", b.sceneIds}};
             })}},
};

/// Fields that all records of the upgrade cluster have, the file version under the name that the facts give it.
template <typename Record>
json imageWords(const Record& r, const char* version = "file_version") {
  return {{"manufacturer_code", r.manufacturerCode}, {"image_type", r.imageType}, {version, r.fileVersion}};
}

template <typename Record>
void takeImage(Record& r, const json& f, const char* version = "file_version") {
  r.manufacturerCode = f.at("manufacturer_code");
  r.imageType = f.at("image_type");
  r.fileVersion = f.at(version);
}

json with(json words, const json& more) {
  words.update(more);
  return words;
}

/// Null if the bit that announces the field is not set.
template <typename T>
json ifThere(bool isThere, const T& value) {
  return isThere ? json(value) : json();
}

const Commands OTA_UPGRADE{
    {"QueryNextImageCommand",
     {{},
      reader(&ZclOtaUpgrade::queryNextImageRequest,
             [](auto& r) {
               return with(imageWords(r, "current_file_version"),
                           {{"field_control", r.fieldControl},
                            {"hardware_version", ifThere((r.fieldControl & 1) != 0, r.hardwareVersion)}});
             })}},
    {"ImageBlockCommand",
     {{},
      reader(&ZclOtaUpgrade::imageBlockRequest,
             [](auto& r) {
               return with(imageWords(r),
                           {{"field_control", r.fieldControl},
                            {"file_offset", r.fileOffset},
                            {"maximum_data_size", r.maximumDataSize},
                            {"request_node_addr", ifThere((r.fieldControl & 1) != 0, r.requestNodeAddress)},
                            {"minimum_block_period", ifThere((r.fieldControl & 2) != 0, r.minimumBlockPeriod)}});
             })}},
    {"ImagePageCommand",
     {[](const json& f) {
        ImagePageRequest request;
        takeImage(request, f);
        request.fieldControl = f.at("field_control");
        request.fileOffset = f.at("file_offset");
        request.maximumDataSize = f.at("maximum_data_size");
        request.pageSize = f.at("page_size");
        request.responseSpacing = f.at("response_spacing");
        ZclOtaUpgrade out(ZclOtaUpgrade::IMAGE_PAGE_REQUEST);
        out.testingImagePageRequest(request);
        return Frame(out);
      },
      reader(&ZclOtaUpgrade::imagePageRequest,
             [](auto& r) {
               return with(imageWords(r), {{"field_control", r.fieldControl},
                                           {"file_offset", r.fileOffset},
                                           {"maximum_data_size", r.maximumDataSize},
                                           {"page_size", r.pageSize},
                                           {"response_spacing", r.responseSpacing},
                                           {"request_node_addr", ifThere((r.fieldControl & 1) != 0, 0)}});
             })}},
    {"upgrade_end",
     {[](const json& f) {
        UpgradeEndRequest request;
        takeImage(request, f);
        request.status = f.at("status");
        ZclOtaUpgrade out(ZclOtaUpgrade::UPGRADE_END_REQUEST);
        out.sendUpgradeEndRequest(request);
        return Frame(out);
      },
      reader(&ZclOtaUpgrade::upgradeEndRequest,
             [](auto& r) {
               return with(imageWords(r), {{"status", r.status}});
             })}},
    {"query_next_image_response",
     {[](const json& f) {
        QueryNextImageResponse response;
        response.status = f.at("status");
        if (response.status == 0) {
          takeImage(response, f);
          response.imageSize = f.at("image_size");
        }
        ZclOtaUpgrade out(ZclOtaUpgrade::QUERY_NEXT_IMAGE_RESPONSE);
        out.queryNextImageResponse(response);
        return Frame(out);
      },
      {}}},
    {"upgrade_end_response",
     {[](const json& f) {
        UpgradeEndResponse response;
        takeImage(response, f);
        response.currentTime = f.at("current_time");
        response.upgradeTime = f.at("upgrade_time");
        ZclOtaUpgrade out(ZclOtaUpgrade::UPGRADE_END_RESPONSE);
        out.upgradeEndResponse(response);
        return Frame(out);
      },
      reader(&ZclOtaUpgrade::testingUpgradeEndResponse,
             [](auto& r) {
               return with(imageWords(r), {{"current_time", r.currentTime}, {"upgrade_time", r.upgradeTime}});
             })}},
    {"ImageNotifyCommand",
     {[](const json& f) {
        ImageNotifyCommand command;
        command.payloadType = f.at("payload_type");
        command.queryJitter = f.at("query_jitter");
        ZclOtaUpgrade out(ZclOtaUpgrade::IMAGE_NOTIFY);
        out.imageNotify(command);
        return Frame(out);
      },
      {}}},
    {"ImageBlockResponseCommand",
     {[](const json& f) {
        ImageBlockResponse response;
        takeImage(response, f);
        response.status = f.at("status");
        response.fileOffset = f.at("file_offset");
        const Frame data = bytesOf(f.at("image_data").at("hex"));
        ZclOtaUpgrade out(ZclOtaUpgrade::IMAGE_BLOCK_RESPONSE);
        out.imageBlockResponse(response, data.contents, static_cast<unsigned char>(data.length_));
        return Frame(out);
      },
      [](const Frame& bytes) {
        ImageBlockResponse r;
        if (!ZclOtaUpgrade(bytes).testingImageBlockResponse(r)) return json();
        const std::string data = digitsOf(bytes.contents + bytes.length_ - r.dataSize, r.dataSize);
        return with(imageWords(r), {{"status", r.status},
                                    {"file_offset", r.fileOffset},
                                    {"image_data", {{"hex", data}}},
                                    {"current_time", nullptr},
                                    {"request_time", nullptr},
                                    {"minimum_block_period", nullptr}});
      }}},
};

const std::map<unsigned int, const Commands&> CLUSTERS{{0x0004, GROUPS}, {0x0005, SCENES}, {0x0019, OTA_UPGRADE}};

// ZDO.

Euid euidOf(const json& text) {
  Euid euid;
  euid = text.get<std::string>().substr(2);
  return euid;
}

/// The bits from which the library made its answer.
int bitsOf(boost::logic::tribool value, int whenTrue) {
  if (boost::logic::indeterminate(value)) return 2;
  return value ? whenTrue : 1 - whenTrue;
}

json rowsOf(const ZdoNetworkLqiResponse& response) {
  constexpr int BITS_OF_TYPE[] = {3, 0, 1, 2};
  std::list<Hop> hops;
  response.hops(hops);
  json rows = json::array();
  for (const Hop& hop : hops) {
    rows.push_back({{"extendedPanId", "0x" + std::string(hop.neighbor_pan_id_)},
                    {"ieee", "0x" + hop.neighbor_lid_.toString()},
                    {"nwk", hop.neighbor_},
                    {"deviceType", BITS_OF_TYPE[hop.type_]},
                    // A set bit counts as off.
                    {"rxOnWhenIdle", bitsOf(hop.rx_on_when_idle_, 0)},
                    {"relationship", hop.relationship_},
                    {"permitJoin", bitsOf(hop.permit_joining_, 1)},
                    {"depth", hop.tree_depth_},
                    {"lqi", hop.lqi_}});
  }
  return rows;
}

json rowsOf(const ZdoNetworkRtgResponse& response) {
  std::list<Route> routes;
  response.routes(routes);
  json rows = json::array();
  for (const Route& route : routes) {
    rows.push_back({{"destination", route.destination_},
                    {"status", route.route_status_},
                    {"memoryConstrained", route.mem_constrained_ ? 1 : 0},
                    {"manyToOne", route.many_to_one_ ? 1 : 0},
                    {"routeRecordRequired", route.route_record_required_ ? 1 : 0},
                    {"nextHop", route.next_hop_}});
  }
  return rows;
}

json statusWords(const ZdoResponse& response) {
  return {{"sequence", response.seqNum()}, {"status", response.status()}};
}

template <typename Page>
json pageWords(const Page& page, unsigned char total) {
  return with(
      statusWords(page),
      {{"totalEntries", total}, {"startIndex", page.startIndex()}, {"count", page.entries()}, {"rows", rowsOf(page)}});
}

/// The energy values as far as there is one for each scanned channel, back from the strengths that they stand for.
json energyWords(const ZdoNetworkUpdateResponse& response) {
  signed char levels[ZdoNetworkUpdateResponse::CHANNEL_COUNT];
  response.setEnergyLevels(levels);
  json energy = json::array();
  for (unsigned int i = 0; i < ZdoNetworkUpdateResponse::CHANNEL_COUNT; ++i) {
    if ((response.scannedChannels() >> (ZdoNetworkUpdateResponse::FIRST_CHANNEL + i) & 1) != 0) {
      energy.push_back((levels[i] + 100) * 4);
    }
  }
  return energy;
}

unsigned char byteOf(const json& value) { return value.is_null() ? 0 : value.get<unsigned char>(); }

const Commands ZDO{
    {"Mgmt_Lqi_req", {[](const json& f) { return Frame(ZdoNetworkLqiRequest(Euid(), f.at("startIndex"))); }, {}}},
    {"Mgmt_Rtg_req", {[](const json& f) { return Frame(ZdoNetworkRtgRequest(Euid(), f.at("startIndex"))); }, {}}},
    {"Mgmt_Leave_req",
     {[](const json& f) { return Frame(ZdoLeaveRequest(Euid(), euidOf(f.at("ieee")), f.at("options"))); }, {}}},
    {"Mgmt_Permit_Joining_req",
     {[](const json& f) { return Frame(ZdoPermitJoinRequest(Euid(), f.at("duration"), f.at("tcSignificance"))); }, {}}},
    {"Mgmt_NWK_Update_req",
     {[](const json& f) {
        // The id that comes next is the one stated.
        ZdoNetworkUpdateRequest::updateId_ = static_cast<unsigned char>(byteOf(f.at("updateId")) - 1);
        const json& manager = f.at("managerAddress");
        return Frame(ZdoNetworkUpdateRequest(
            Euid(), f.at("channels"), f.at("scanDuration"), byteOf(f.at("scanCount")),
            manager.is_null() ? static_cast<unsigned short>(0) : manager.get<unsigned short>()));
      },
      {}}},
    {"Mgmt_Lqi_rsp",
     {{},
      [](const Frame& bytes) {
        const ZdoNetworkLqiResponse page(bytes);
        return pageWords(page, page.totalNeighborTableEntriesOnDevice());
      }}},
    {"Mgmt_Rtg_rsp",
     {{},
      [](const Frame& bytes) {
        const ZdoNetworkRtgResponse page(bytes);
        return pageWords(page, page.totalRoutingTableEntriesOnDevice());
      }}},
    {"Mgmt_Leave_rsp", {{}, [](const Frame& bytes) { return statusWords(ZdoLeaveResponse(bytes)); }}},
    {"Mgmt_Permit_Joining_rsp",
     {{}, [](const Frame& bytes) { return statusWords(ZdoPermitJoinResponse(ZdoResponse(0x8036, bytes))); }}},
    {"Mgmt_NWK_Update_rsp",
     {{},
      [](const Frame& bytes) {
        const ZdoNetworkUpdateResponse response(bytes);
        return with(statusWords(response), {{"scannedChannels", response.scannedChannels()},
                                            {"transmissions", response.transmissions()},
                                            {"failures", response.failures()},
                                            {"count", response.energyCount()},
                                            {"energy", energyWords(response)}});
      }}},
};

// What differs on purpose.

constexpr char RESERVED[] = "numbers that the standard keeps back read as one answer";
constexpr char MASK_ALONE[] = "the mask alone says how many energy values there are";
constexpr char ONE_BYTE[] = "an extension goes out with one byte of value";
constexpr char UNSTATED_BYTES[] = "the decoder leaves the bytes behind the fields out of its facts";

struct ReadDifference {
  const char* reason;
  /// Turns the facts into what the library reads.
  std::function<void(json&)> change;
};

const std::map<std::string, ReadDifference> READ_DIFFERENCES{
    {"o421",
     {RESERVED,
      [](json& f) {
        f["rows"][1].update({{"relationship", 3}, {"permitJoin", 2}});
      }}},
    {"o422",
     {RESERVED,
      [](json& f) {
        f["rows"][0].update({{"relationship", 3}, {"permitJoin", 2}});
      }}},
    {"o426",
     {RESERVED,
      [](json& f) {
        f["rows"][7]["status"] = 5;
        f["rows"][9]["status"] = 5;
      }}},
    {"o427",
     {RESERVED,
      [](json& f) {
        f["rows"][2]["status"] = 5;
        f["rows"][5]["status"] = 5;
      }}},
    {"o436", {MASK_ALONE, [](json& f) { f["energy"] = {64, 252, 108, 0, 0, 0, 0, 0}; }}},
};

struct BuiltDifference {
  const char* reason;
  const char* built;
};

const std::map<std::string, BuiltDifference> BUILT_DIFFERENCES{
    {"o155", {ONE_BYTE, "010100000003010000060001010003041c080001fe"}},
    {"o401", {UNSTATED_BYTES, "00ff01"}},
};

/// Commands that are no part of the public clusters.
const std::set<std::string> UNKNOWN_COMMANDS{"miboxerSetZones"};

/// On every recorded frame that is not whole in the library's eyes: strings that the standard calls invalid, types and
/// a command that are not known, bytes behind what is, failures that go on behind their status, and more channels
/// scanned than there are values for.
const std::map<std::string, std::string> VERDICTS{
    {"o047", "string of attribute 0x4000 claims 255 bytes, 0 follow at byte 8"},
    {"o054", "string of attribute 0x0004 claims 255 bytes, 0 follow at byte 8"},
    {"o061", "string of attribute 0x0005 claims 255 bytes, 0 follow at byte 8"},
    {"o063", "string of attribute 0x0006 claims 255 bytes, 0 follow at byte 8"},
    {"o065", "type 0xE2 of attribute 0x0000 is unknown, the walk goes on at byte 7"},
    {"o073", "type 0x4C of attribute 0xFF02 is unknown, the walk goes on at byte 8"},
    {"o125", "payload of this command is not known at byte 3"},
    {"o277", "type 0xE2 of attribute 0x0000 is unknown, the walk goes on at byte 7"},
    {"o278", "type 0xE2 of attribute 0x0000 is unknown, the walk goes on at byte 7"},
    {"o279", "type 0xE2 of attribute 0x0000 is unknown, the walk goes on at byte 7"},
    {"o280", "type 0xE2 of attribute 0x0000 is unknown, the walk goes on at byte 10"},
    {"o361", "type 0x26 of attribute 0x0000 is unknown, the walk goes on at byte 6"},
    {"o401", "6 bytes behind the last field at byte 3"},
    {"o420", "neighbour 1 of 3 runs past the end at byte 5"},
    {"o425", "route 1 of 3 runs past the end at byte 5"},
    {"o428", "3 bytes behind the last field at byte 2"},
    {"o431", "3 bytes behind the last field at byte 2"},
    {"o436", "energy value 4 of 8 runs past the end at byte 14"},
    {"o439", "payload of this command is not known at byte 3"},
    {"o440", "payload of this command is not known at byte 3"},
    {"o441", "payload of this command is not known at byte 3"},
    {"o442", "payload of this command is not known at byte 3"},
    {"o443", "payload of this command is not known at byte 5"},
    {"o444", "payload of this command is not known at byte 5"},
    {"o447", "payload of this command is not known at byte 3"},
    {"o448", "payload of this command is not known at byte 3"},
    {"o449", "payload of this command is not known at byte 3"},
    {"o450", "payload of this command is not known at byte 5"},
    {"o451", "payload of this command is not known at byte 3"},
    {"o452", "payload of this command is not known at byte 3"},
    {"o453", "payload of this command is not known at byte 3"},
    {"o454", "payload of this command is not known at byte 3"},
    {"o455", "payload of this command is not known at byte 3"},
    {"o456", "payload of this command is not known at byte 3"},
    {"o457", "payload of this command is not known at byte 3"},
    {"o458", "payload of this command is not known at byte 3"},
    {"o459", "payload of this command is not known at byte 3"},
    {"o460", "payload of this command is not known at byte 3"},
    {"o461", "payload of this command is not known at byte 3"},
    {"o462", "payload of this command is not known at byte 3"},
    {"o463", "payload of this command is not known at byte 3"},
};

/// An energy value comes back from a strength without its lowest two bits.
void dropLowBits(json& facts) {
  if (!facts.contains("energy")) return;
  for (json& value : facts.at("energy")) value = value.get<int>() / 4 * 4;
}

/// Of what was read, the words that the facts have.
json onlyStated(const json& read, const json& stated) {
  json words = json::object();
  for (const auto& [word, value] : stated.items()) {
    if (read.contains(word)) words[word] = read.at(word);
  }
  return words;
}

class RecordedCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::optional<std::string> path = pathOfFrames("open.jsonl");
    if (!path) GTEST_SKIP() << "VSO_FRAMES_DIR names no folder with a file open.jsonl";
    path_ = *path;
    frames_ = readFrames(path_);
  }

  /// Lines of the file that have all of these texts.
  std::size_t countLines(const std::vector<std::string>& texts) const {
    std::size_t count = 0;
    std::ifstream in(path_);
    for (std::string line; std::getline(in, line);) {
      count += std::all_of(texts.begin(), texts.end(),
                           [&](const std::string& text) { return line.find(text) != std::string::npos; })
                   ? 1
                   : 0;
    }
    return count;
  }

  void expectRead(const Command& command, const RecordedFrame& frame, json stated) {
    if (!command.read) return;
    dropLowBits(stated);
    const auto known = READ_DIFFERENCES.find(frame.id);
    if (known != READ_DIFFERENCES.end()) {
      const json facts = stated;
      known->second.change(stated);
      EXPECT_NE(stated, facts) << frame.id << " is listed and does not differ: " << known->second.reason;
    }
    const json read = command.read(frame.bytes);
    EXPECT_EQ(read.is_null() ? read : onlyStated(read, stated), stated) << frame.id << " " << frame.hex;
    ++read_;
  }

  void expectBuilt(const RecordedFrame& frame, const Frame& built) {
    const auto known = BUILT_DIFFERENCES.find(frame.id);
    const std::string expected = known != BUILT_DIFFERENCES.end() ? known->second.built : frame.hex;
    EXPECT_EQ(digitsOf(built.contents, built.length_), expected) << frame.id;
    if (known != BUILT_DIFFERENCES.end()) {
      EXPECT_NE(expected, frame.hex) << frame.id << " is listed and does not differ: " << known->second.reason;
    }
    ++built_;
  }

  std::string path_;
  std::vector<RecordedFrame> frames_;
  std::size_t read_ = 0;
  std::size_t built_ = 0;
};

TEST_F(RecordedCommands, OfClustersAreReadAndRebuilt) {
  std::map<unsigned int, std::size_t> compared;
  std::size_t unknown = 0;
  for (const RecordedFrame& frame : frames_) {
    const auto cluster = CLUSTERS.find(frame.cluster);
    if (frame.layer != "zcl" || cluster == CLUSTERS.end() || kindOf(frame) != CLUSTER_COMMAND) continue;
    ++compared[frame.cluster];
    const std::string name = frame.facts.at("commandName");
    if (UNKNOWN_COMMANDS.count(name) != 0) {
      ++unknown;
      continue;
    }
    const Command& command = cluster->second.at(name);
    const json& fields = frame.facts.at("fields");
    EXPECT_TRUE(command.build || command.read) << name;
    expectRead(command, frame, fields);
    if (!command.build) continue;
    const json& header = frame.facts.at("header");
    ZclMessage built(command.build(fields));
    built.setFcf(frameControlOf(header));
    built.setTsn(header.at("sequence"));
    expectBuilt(frame, built);
  }
  for (const auto& [cluster, count] : compared) {
    char id[8];
    std::snprintf(id, sizeof id, "0x%04x", cluster);
    EXPECT_EQ(count, countLines({R"("layer": "zcl")", std::string(R"("cluster": ")") + id, R"("clusterCommand")"}));
  }
  EXPECT_EQ(compared.size(), CLUSTERS.size());
  EXPECT_EQ(unknown, 1U);
  EXPECT_GT(read_, 0U);
  EXPECT_GT(built_, 0U);
}

TEST_F(RecordedCommands, OfZdoAreReadAndRebuilt) {
  std::size_t compared = 0;
  for (const RecordedFrame& frame : frames_) {
    if (frame.layer != "zdo") continue;
    ++compared;
    const Command& command = ZDO.at(kindOf(frame));
    EXPECT_TRUE(command.build || command.read) << kindOf(frame);
    json stated = frame.facts;
    stated.erase("kind");
    stated.erase("payload");  // of a failure: nothing
    expectRead(command, frame, stated);
    if (!command.build) continue;
    Frame built = command.build(stated);
    ASSERT_NE(built.length_, 0U);
    built.contents[0] = stated.at("sequence");
    expectBuilt(frame, built);
  }
  EXPECT_EQ(compared, countLines({R"("layer": "zdo")"}));
  EXPECT_EQ(read_ + built_, compared);
}

TEST_F(RecordedCommands, ListedAsDifferentAreAllMet) {
  std::set<std::string> ids;
  for (const RecordedFrame& frame : frames_) ids.insert(frame.id);
  for (const auto& row : READ_DIFFERENCES) EXPECT_EQ(ids.count(row.first), 1U) << row.first;
  for (const auto& row : BUILT_DIFFERENCES) EXPECT_EQ(ids.count(row.first), 1U) << row.first;
  for (const auto& row : VERDICTS) EXPECT_EQ(ids.count(row.first), 1U) << row.first;
}

TEST_F(RecordedCommands, AndAllOthersAreJudgedAsTheyAre) {
  for (const RecordedFrame& frame : frames_) {
    const auto known = VERDICTS.find(frame.id);
    const FrameVerdict verdict = judgeFrame(frame.profile, frame.cluster, frame.bytes);
    EXPECT_EQ(verdict.toString(), known != VERDICTS.end() ? known->second : "whole") << frame.id << " " << frame.hex;
  }
}

}  // namespace
}  // namespace qx::test

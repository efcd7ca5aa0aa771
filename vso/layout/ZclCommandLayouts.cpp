#include "vso/layout/ZclCommandLayouts.h"

#include <algorithm>
#include <iterator>

#include "vso/zcl/QxZclDiagnostics.h"
#include "vso/zcl/QxZclImmediateAnnounce.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclGroups.h"
#include "vso/zcl/ZclIdentify.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclOtaUpgrade.h"
#include "vso/zcl/ZclProfile.h"
#include "vso/zcl/ZclScenes.h"

namespace qx {

namespace {

constexpr auto U8 = FieldKind::U8;
constexpr auto U16 = FieldKind::U16;
constexpr auto U32 = FieldKind::U32;
constexpr auto ID16 = FieldKind::ID16;
constexpr auto ID32 = FieldKind::ID32;

constexpr auto IF = FieldPresence::IF;
constexpr auto MAY_END = FieldPresence::MAY_END;
constexpr auto MAY_END_UNLESS = FieldPresence::MAY_END_UNLESS;

using Fields = decltype(CommandLayout::fields);

// Tests of the first byte of a payload: the status of a response, or what a command of the OTA Upgrade cluster says of
// its optional fields.
constexpr FieldCondition SUCCESS{0, 0xFF, ZCL_SUCCESS, ZCL_SUCCESS};
constexpr FieldCondition bit(unsigned char mask) { return {0, mask, mask, mask}; }
constexpr FieldCondition atLeast(unsigned char value) { return {0, 0xFF, value, 0xFF}; }

// Fields that recur.
constexpr FieldLayout STATUS{"status", FieldKind::ZCL_STATUS};
constexpr FieldLayout GROUP_ID{"groupId", ID16};
constexpr FieldLayout SCENE_ID{"sceneId", U8};
constexpr FieldLayout TRANSITION_TIME{"transitionTime", U16};
constexpr FieldLayout EXTENSIONS{"extensions", FieldKind::SCENE_EXTENSIONS, {}, {}, "extension"};
constexpr FieldLayout MANUFACTURER_CODE{"manufacturerCode", ID16};
constexpr FieldLayout IMAGE_TYPE{"imageType", ID16};
constexpr FieldLayout FILE_VERSION{"fileVersion", ID32};
constexpr FieldLayout FILE_OFFSET{"fileOffset", U32};
constexpr FieldLayout MAXIMUM_DATA_SIZE{"maximumDataSize", U8};
// The options came with a later revision of the standard: older devices leave both of them out.
constexpr FieldLayout OPTIONS_MASK{"optionsMask", U8, MAY_END};
constexpr FieldLayout OPTIONS_OVERRIDE{"optionsOverride", U8};

constexpr FieldLayout onlyIf(FieldLayout field, FieldCondition condition) {
  field.presence = IF;
  field.condition = condition;
  return field;
}
/// A response that reports a failure may end in front of the field.
constexpr FieldLayout onSuccess(FieldLayout field) {
  field.presence = MAY_END_UNLESS;
  field.condition = SUCCESS;
  return field;
}

// Payloads that several commands share.
constexpr Fields OPAQUE{{{"payload", FieldKind::OPAQUE}}};
constexpr Fields VALUES{{{"attributes", FieldKind::ATTRIBUTE_VALUES}}};
constexpr Fields ATTRIBUTE_RANGE{{{"startAttributeId", ID16}, {"maximumAttributeIds", U8}}};
constexpr Fields COMMAND_RANGE{{{"startCommandId", U8}, {"maximumCommandIds", U8}}};
constexpr Fields EFFECT{{{"effectIdentifier", U8}, {"effectVariant", U8}}};
constexpr Fields LEVEL{{{"level", U8}, TRANSITION_TIME, OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr Fields MOVE{{{"mode", U8}, {"rate", FieldKind::RATE}, OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr Fields STEP{{{"mode", U8}, {"stepSize", U8}, TRANSITION_TIME, OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr Fields STOP{{OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr Fields GROUP{{GROUP_ID}};
constexpr Fields NAMED_GROUP{{GROUP_ID, {"groupName", FieldKind::TEXT}}};
constexpr Fields STATUS_AND_GROUP{{STATUS, GROUP_ID}};
constexpr Fields SCENE{{GROUP_ID, SCENE_ID}};
constexpr Fields STATUS_AND_SCENE{{STATUS, GROUP_ID, SCENE_ID}};

/// By command identifier.
constexpr CommandLayout GENERAL_COMMANDS[] = {
    {"read attributes", {{{"attributes", FieldKind::ATTRIBUTE_IDS}}}},
    {"read attributes response", {{{"attributes", FieldKind::ATTRIBUTE_ANSWERS}}}},
    {"write attributes", VALUES},
    {"write attributes undivided", VALUES},
    {"write attributes response", {{{"attributes", FieldKind::ATTRIBUTE_STATUSES}}}},
    {"write attributes no response", VALUES},
    {"configure reporting", OPAQUE},
    {"configure reporting response", OPAQUE},
    {"read reporting configuration", OPAQUE},
    {"read reporting configuration response", OPAQUE},
    {"report attributes", VALUES},
    {"default response", {{{"commandId", U8}, STATUS}}},
    {"discover attributes", ATTRIBUTE_RANGE},
    {"discover attributes response", OPAQUE},
    {"read attributes structured", OPAQUE},
    {"write attributes structured", OPAQUE},
    {"write attributes structured response", OPAQUE},
    {"discover commands received", COMMAND_RANGE},
    {"discover commands received response", OPAQUE},
    {"discover commands generated", COMMAND_RANGE},
    {"discover commands generated response", OPAQUE},
    {"discover attributes extended", ATTRIBUTE_RANGE},
    {"discover attributes extended response", OPAQUE},
};
static_assert(std::size(GENERAL_COMMANDS) == 0x17, "one for each general command of the standard");

enum class Direction : unsigned char { TO_SERVER, TO_CLIENT, EITHER };
constexpr auto TO_SERVER = Direction::TO_SERVER;
constexpr auto TO_CLIENT = Direction::TO_CLIENT;
constexpr auto EITHER = Direction::EITHER;

struct Cluster {
  unsigned short profile;
  unsigned short id;
};

constexpr unsigned short HOME = ZclProfile::HOME_AUTOMATION;
constexpr Cluster IDENTIFY{HOME, ZclIdentify::CLUSTER_ID};
constexpr Cluster GROUPS{HOME, ZclGroups::CLUSTER_ID};
constexpr Cluster SCENES{HOME, ZclScenes::CLUSTER_ID};
constexpr Cluster ON_OFF{HOME, ZclOnOff::CLUSTER_ID};
constexpr Cluster LEVEL_CONTROL{HOME, ZclLevelControl::CLUSTER_ID};
constexpr Cluster OTA_UPGRADE{HOME, ZclOtaUpgrade::CLUSTER_ID};
constexpr Cluster QX_PRIVATE{static_cast<unsigned short>(ZclProfile::QX_PRIVATE), QxZclImmediateAnnounce::CLUSTER_ID};
constexpr Cluster QX_DIAGNOSTICS{QX_PRIVATE.profile, QxZclDiagnostics::CLUSTER_ID};

struct Row {
  Cluster cluster;
  Direction direction;
  unsigned char command;
  CommandLayout layout;
  /// 0 for a command without manufacturer code.
  unsigned short manufacturerCode = 0;
  /// Of a row that stands for payloads of this length alone, which begin with this byte; 0 for any payload.
  unsigned int payloadLength = 0;
  unsigned char firstByte = 0;

  bool takes(FrameReader payload) const noexcept {
    return payloadLength == 0 || (payload.left() == payloadLength && payload.u8() == firstByte);
  }
};

constexpr Row CLUSTER_COMMANDS[] = {
    {IDENTIFY, TO_SERVER, 0x00, {"identify", {{{"identifyTime", U16}}}}},
    {IDENTIFY, TO_SERVER, 0x01, {"identify query"}},
    {IDENTIFY, TO_SERVER, 0x40, {"trigger effect", EFFECT}},
    {IDENTIFY, TO_CLIENT, 0x00, {"identify query response", {{{"timeout", U16}}}}},

    {GROUPS, TO_SERVER, ZclGroups::ADD_GROUP, {"add group", NAMED_GROUP}},
    {GROUPS, TO_SERVER, ZclGroups::VIEW_GROUP, {"view group", GROUP}},
    {GROUPS,
     TO_SERVER,
     ZclGroups::GET_GROUP_MEMBERSHIP,
     {"get group membership", {{{"groupCount", U8}, {"groupIds", FieldKind::ID16_LIST, {}, {}, "group id"}}}}},
    {GROUPS, TO_SERVER, ZclGroups::REMOVE_GROUP, {"remove group", GROUP}},
    {GROUPS, TO_SERVER, ZclGroups::REMOVE_ALL_GROUPS, {"remove all groups"}},
    {GROUPS, TO_SERVER, ZclGroups::ADD_GROUP_IF_IDENTIFYING, {"add group if identifying", NAMED_GROUP}},
    {GROUPS, TO_CLIENT, ZclGroups::ADD_GROUP, {"add group response", STATUS_AND_GROUP}},
    {GROUPS,
     TO_CLIENT,
     ZclGroups::VIEW_GROUP,
     {"view group response", {{STATUS, GROUP_ID, onSuccess({"groupName", FieldKind::TEXT})}}}},
    {GROUPS,
     TO_CLIENT,
     ZclGroups::GET_GROUP_MEMBERSHIP,
     {"get group membership response",
      {{{"capacity", U8}, {"groupCount", U8}, {"groupIds", FieldKind::ID16_LIST, {}, {}, "group id"}}}}},
    {GROUPS, TO_CLIENT, ZclGroups::REMOVE_GROUP, {"remove group response", STATUS_AND_GROUP}},

    {SCENES,
     TO_SERVER,
     ZclScenes::ADD_SCENE,
     {"add scene", {{GROUP_ID, SCENE_ID, TRANSITION_TIME, {"sceneName", FieldKind::TEXT}, EXTENSIONS}}}},
    {SCENES, TO_SERVER, ZclScenes::VIEW_SCENE, {"view scene", SCENE}},
    {SCENES, TO_SERVER, ZclScenes::REMOVE_SCENE, {"remove scene", SCENE}},
    {SCENES, TO_SERVER, ZclScenes::REMOVE_ALL_SCENES, {"remove all scenes", GROUP}},
    {SCENES, TO_SERVER, ZclScenes::STORE_SCENE, {"store scene", SCENE}},
    // A later revision of the standard lets the command bring its own time.
    {SCENES,
     TO_SERVER,
     ZclScenes::RECALL_SCENE,
     {"recall scene", {{GROUP_ID, SCENE_ID, {"transitionTime", U16, MAY_END}}}}},
    {SCENES, TO_SERVER, ZclScenes::GET_SCENE_MEMBERSHIP, {"get scene membership", GROUP}},
    {SCENES, TO_CLIENT, ZclScenes::ADD_SCENE, {"add scene response", STATUS_AND_SCENE}},
    {SCENES,
     TO_CLIENT,
     ZclScenes::VIEW_SCENE,
     {"view scene response",
      {{STATUS, GROUP_ID, SCENE_ID, onSuccess(TRANSITION_TIME), {"sceneName", FieldKind::TEXT}, EXTENSIONS}}}},
    {SCENES, TO_CLIENT, ZclScenes::REMOVE_SCENE, {"remove scene response", STATUS_AND_SCENE}},
    {SCENES, TO_CLIENT, ZclScenes::REMOVE_ALL_SCENES, {"remove all scenes response", STATUS_AND_GROUP}},
    {SCENES, TO_CLIENT, ZclScenes::STORE_SCENE, {"store scene response", STATUS_AND_SCENE}},
    {SCENES,
     TO_CLIENT,
     ZclScenes::GET_SCENE_MEMBERSHIP,
     {"get scene membership response",
      {{STATUS,
        {"capacity", U8},
        GROUP_ID,
        onSuccess({"sceneCount", U8}),
        {"sceneIds", FieldKind::U8_LIST, {}, {}, "scene id"}}}}},
    {SCENES, TO_SERVER, ZclScenes::UN_RECALL_SCENE, {"un-recall scene", SCENE}, ZclMessage::QX_MANUFACTURER_CODE},

    {ON_OFF, TO_SERVER, ZclOnOff::OFF, {"off"}},
    {ON_OFF, TO_SERVER, ZclOnOff::ON, {"on"}},
    {ON_OFF, TO_SERVER, ZclOnOff::TOGGLE, {"toggle"}},
    {ON_OFF, TO_SERVER, 0x40, {"off with effect", EFFECT}},
    {ON_OFF, TO_SERVER, 0x41, {"on with recall global scene"}},
    {ON_OFF, TO_SERVER, 0x42, {"on with timed off", {{{"onOffControl", U8}, {"onTime", U16}, {"offWaitTime", U16}}}}},

    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::MOVE_TO_LEVEL, {"move to level", LEVEL}},
    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::MOVE, {"move", MOVE}},
    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::STEP, {"step", STEP}},
    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::STOP, {"stop", STOP}},
    {LEVEL_CONTROL,
     TO_SERVER,
     ZclLevelControl::MOVE_TO_LEVEL + ZclLevelControl::WITH_ON_OFF,
     {"move to level (with on/off)", LEVEL}},
    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::MOVE + ZclLevelControl::WITH_ON_OFF, {"move (with on/off)", MOVE}},
    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::STEP + ZclLevelControl::WITH_ON_OFF, {"step (with on/off)", STEP}},
    {LEVEL_CONTROL, TO_SERVER, ZclLevelControl::STOP + ZclLevelControl::WITH_ON_OFF, {"stop (with on/off)", STOP}},

    {OTA_UPGRADE,
     TO_SERVER,
     ZclOtaUpgrade::QUERY_NEXT_IMAGE_REQUEST,
     {"query next image request",
      {{{"fieldControl", U8},
        MANUFACTURER_CODE,
        IMAGE_TYPE,
        FILE_VERSION,
        {"hardwareVersion", U16, IF, bit(QueryNextImageRequest::HAS_HARDWARE_VERSION)}}}}},
    {OTA_UPGRADE,
     TO_SERVER,
     ZclOtaUpgrade::IMAGE_BLOCK_REQUEST,
     {"image block request",
      {{{"fieldControl", U8},
        MANUFACTURER_CODE,
        IMAGE_TYPE,
        FILE_VERSION,
        FILE_OFFSET,
        MAXIMUM_DATA_SIZE,
        {"requestNodeAddress", FieldKind::ADDRESS, IF, bit(ImageBlockRequest::HAS_REQUEST_NODE_ADDRESS)},
        {"minimumBlockPeriod", U16, IF, bit(ImageBlockRequest::HAS_MINIMUM_BLOCK_PERIOD)}}}}},
    // The library's builders of a device's requests leave the direction as the server has it.
    {OTA_UPGRADE,
     EITHER,
     ZclOtaUpgrade::IMAGE_PAGE_REQUEST,
     {"image page request",
      {{{"fieldControl", U8},
        MANUFACTURER_CODE,
        IMAGE_TYPE,
        FILE_VERSION,
        FILE_OFFSET,
        MAXIMUM_DATA_SIZE,
        {"pageSize", U16},
        {"responseSpacing", U16},
        {"requestNodeAddress", FieldKind::ADDRESS, IF, bit(ImagePageRequest::HAS_REQUEST_NODE_ADDRESS)}}}}},
    {OTA_UPGRADE,
     EITHER,
     ZclOtaUpgrade::UPGRADE_END_REQUEST,
     {"upgrade end request", {{STATUS, MANUFACTURER_CODE, IMAGE_TYPE, FILE_VERSION}}}},
    {OTA_UPGRADE,
     TO_CLIENT,
     ZclOtaUpgrade::IMAGE_NOTIFY,
     {"image notify",
      {{{"payloadType", U8},
        {"queryJitter", U8},
        onlyIf(MANUFACTURER_CODE, atLeast(ImageNotifyCommand::WITH_MANUFACTURER_CODE)),
        onlyIf(IMAGE_TYPE, atLeast(ImageNotifyCommand::WITH_IMAGE_TYPE)),
        onlyIf(FILE_VERSION, atLeast(ImageNotifyCommand::WITH_FILE_VERSION))}}}},
    {OTA_UPGRADE,
     TO_CLIENT,
     ZclOtaUpgrade::QUERY_NEXT_IMAGE_RESPONSE,
     {"query next image response",
      {{STATUS, onlyIf(MANUFACTURER_CODE, SUCCESS), onlyIf(IMAGE_TYPE, SUCCESS), onlyIf(FILE_VERSION, SUCCESS),
        onlyIf({"imageSize", U32}, SUCCESS)}}}},
    // "Wait for data", in which the standard has other fields; what this system sends with that status has the usual
    // ones.
    {OTA_UPGRADE,
     TO_CLIENT,
     ZclOtaUpgrade::IMAGE_BLOCK_RESPONSE,
     {"image block response", {{STATUS, {"currentTime", U32}, {"requestTime", U32}, {"minimumBlockPeriod", U16}}}},
     0,
     11,
     0x97},
    {OTA_UPGRADE,
     TO_CLIENT,
     ZclOtaUpgrade::IMAGE_BLOCK_RESPONSE,
     {"image block response",
      {{STATUS,
        onSuccess(MANUFACTURER_CODE),
        IMAGE_TYPE,
        FILE_VERSION,
        FILE_OFFSET,
        {"dataSize", U8},
        {"data", FieldKind::OCTETS}}}}},
    {OTA_UPGRADE,
     TO_CLIENT,
     ZclOtaUpgrade::UPGRADE_END_RESPONSE,
     {"upgrade end response",
      {{MANUFACTURER_CODE, IMAGE_TYPE, FILE_VERSION, {"currentTime", U32}, {"upgradeTime", U32}}}}},

    {QX_PRIVATE,
     TO_SERVER,
     QxZclImmediateAnnounce::IMMEDIATE_ANNOUNCE,
     {"immediate announce", {{{"idCount", U8}, {"ids", FieldKind::ID16_LIST, {}, {}, "id"}}}}},
    // Parameters of the mesh travel as lists of attributes even where the frame type says otherwise.
    {QX_PRIVATE,
     TO_SERVER,
     ZclGeneralCommand::READ_ATTRIBUTES_RESPONSE,
     {"read attributes response", {{{"attributes", FieldKind::ATTRIBUTE_ANSWERS}}}}},
    {QX_PRIVATE, TO_SERVER, ZclGeneralCommand::WRITE_ATTRIBUTES_NO_RESPONSE, {"write attributes no response", VALUES}},

    {QX_DIAGNOSTICS, TO_SERVER, QxZclDiagnostics::RESET_COUNTERS, {"reset counters", {{{"reset", U8}}}}},
    {QX_DIAGNOSTICS,
     TO_SERVER,
     QxZclDiagnostics::DISPLAY_SIGNAL_STRENGTH,
     {"display signal strength", {{{"display", U8}}}}},
};

}  // namespace

const CommandLayout* findZclCommand(unsigned short profile, unsigned short cluster, const ZclMessage& frame) noexcept {
  const unsigned char command = frame.commandIdentifier();
  if (frame.affectsEntireProfile()) {
    return command < std::size(GENERAL_COMMANDS) ? &GENERAL_COMMANDS[command] : nullptr;
  }
  if (!frame.affectsSpecificCluster()) return nullptr;
  const Direction direction = frame.isCommandFromServer() ? TO_CLIENT : TO_SERVER;
  const unsigned short manufacturerCode = frame.manufacturerCode();
  const auto* const row =
      std::find_if(std::begin(CLUSTER_COMMANDS), std::end(CLUSTER_COMMANDS), [&](const Row& candidate) {
        return candidate.cluster.id == cluster && candidate.cluster.profile == profile &&
               candidate.command == command && (candidate.direction == direction || candidate.direction == EITHER) &&
               candidate.takes(frame.payload()) && candidate.manufacturerCode == manufacturerCode &&
               frame.isManufacturerSpecific() == (manufacturerCode != 0);
      });
  return row != std::end(CLUSTER_COMMANDS) ? &row->layout : nullptr;
}

}  // namespace qx

#include "vso/layout/ZdoCommandLayouts.h"

#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoNetworkUpdateRequest.h"
#include "vso/zdo/ZdoStatus.h"

namespace qx {

namespace {

constexpr auto U8 = FieldKind::U8;
constexpr auto U16 = FieldKind::U16;

constexpr auto IF = FieldPresence::IF;
constexpr auto MAY_END_UNLESS = FieldPresence::MAY_END_UNLESS;

// Tests of the status, in front of a response's payload, and of the duration of an update request.
constexpr FieldCondition SUCCESS{0, 0xFF, QX_ZDP_SUCCESS, QX_ZDP_SUCCESS};
constexpr unsigned char DURATION_AT = 4;
constexpr FieldCondition SCANS{DURATION_AT, 0xFF, 0, ZdoNetworkUpdateRequest::LAST_SCAN};
constexpr FieldCondition UPDATES{DURATION_AT, 0xFF, ZdoNetworkUpdateRequest::CHANNEL_CHANGE,
                                 ZdoNetworkUpdateRequest::MANAGER_UPDATE};
constexpr FieldCondition UPDATES_MANAGER{DURATION_AT, 0xFF, ZdoNetworkUpdateRequest::MANAGER_UPDATE,
                                         ZdoNetworkUpdateRequest::MANAGER_UPDATE};

constexpr FieldLayout STATUS{"status", FieldKind::ZDO_STATUS};

struct Row {
  unsigned short commandId;
  CommandLayout layout;
};

constexpr Row COMMANDS[] = {
    {ZdoCommand::NETWORK_LQI, {"network LQI request", {{{"startIndex", U8}}}}},
    {ZdoCommand::NETWORK_RTG, {"network routing request", {{{"startIndex", U8}}}}},
    {ZdoCommand::LEAVE, {"leave request", {{{"device", FieldKind::ADDRESS}, {"options", U8}}}}},
    {ZdoCommand::PERMIT_JOIN, {"permit join request", {{{"duration", U8}, {"trustCentreSignificance", U8}}}}},
    {ZdoCommand::NETWORK_UPDATE,
     {"network update request",
      {{{"channelMask", FieldKind::ID32},
        {"duration", U8},
        {"scanCount", U8, IF, SCANS},
        {"updateId", U8, IF, UPDATES},
        {"managerAddress", FieldKind::ID16, IF, UPDATES_MANAGER}}}}},

    {ZdoCommand::NETWORK_LQI | ZdoCommand::RESPONSE,
     {"network LQI response",
      {{STATUS,
        {"totalNeighborTableEntriesOnDevice", U8, MAY_END_UNLESS, SUCCESS},
        {"startIndex", U8},
        {"entries", U8},
        {"hops", FieldKind::NEIGHBOURS, {}, {}, "neighbour"}}}}},
    {ZdoCommand::NETWORK_RTG | ZdoCommand::RESPONSE,
     {"network routing response",
      {{STATUS,
        {"totalRoutingTableEntriesOnDevice", U8, MAY_END_UNLESS, SUCCESS},
        {"startIndex", U8},
        {"entries", U8},
        {"routes", FieldKind::ROUTES, {}, {}, "route"}}}}},
    {ZdoCommand::LEAVE | ZdoCommand::RESPONSE, {"leave response", {{STATUS}}}},
    {ZdoCommand::PERMIT_JOIN | ZdoCommand::RESPONSE, {"permit join response", {{STATUS}}}},
    {ZdoCommand::NETWORK_UPDATE | ZdoCommand::RESPONSE,
     {"network update response",
      {{STATUS,
        {"scannedChannels", FieldKind::ID32, MAY_END_UNLESS, SUCCESS},
        {"transmissions", U16},
        {"failures", U16},
        {"energyCount", U8},
        {"energyLevels", FieldKind::ENERGY_VALUES, {}, {}, "energy value"}}}}},
};

}  // namespace

const CommandLayout* findZdoCommand(unsigned short commandId) noexcept {
  for (const Row& row : COMMANDS) {
    if (row.commandId == commandId) return &row.layout;
  }
  return nullptr;
}

}  // namespace qx

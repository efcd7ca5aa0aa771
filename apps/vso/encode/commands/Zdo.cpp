#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zdo/ZdoLeaveRequest.h"
#include "vso/zdo/ZdoNetworkLqiRequest.h"
#include "vso/zdo/ZdoNetworkRtgRequest.h"
#include "vso/zdo/ZdoNetworkUpdateRequest.h"
#include "vso/zdo/ZdoPermitJoinRequest.h"

namespace qx::app {

namespace {

constexpr const char* ALL_CHANNELS = "0x07fff800";

constexpr Argument START_INDEX = u8("start-index", "First entry of the page").orElse("0");
constexpr Argument CHANNEL_MASK = u32("channel-mask", "Bit n for channel n");
constexpr Argument UPDATE_ID =
    u8("update-id", "Network update id, in place of the one that the library gives").optional();

template <typename Request>
BuiltFrame page(const Arguments& in) {
  return zdoFrame(Request(destination(in), in.u8("start-index")), in);
}

/// The network update request in one of its forms. The arguments that a form does not have are zero, which nobody sees.
BuiltFrame update(const Arguments& in, unsigned char duration, unsigned char scanCount, unsigned short manager) {
  return zdoFrame(ZdoNetworkUpdateRequest(destination(in), in.u32("channel-mask"), duration, scanCount, manager), in);
}

/// The library counts the ids, and the frame takes the next.
void chooseUpdateId(const Arguments& in) {
  if (in.has("update-id")) {
    ZdoNetworkUpdateRequest::updateId_ = static_cast<unsigned char>(in.u8("update-id") - 1);
  }
}

BuiltFrame energyScan(const Arguments& in) { return update(in, in.u8("duration"), in.u8("scan-count"), 0); }

BuiltFrame channelChange(const Arguments& in) {
  chooseUpdateId(in);
  return update(in, ZdoNetworkUpdateRequest::CHANNEL_CHANGE, 0, 0);
}

BuiltFrame managerUpdate(const Arguments& in) {
  chooseUpdateId(in);
  return update(in, ZdoNetworkUpdateRequest::MANAGER_UPDATE, 0, in.u16("manager-address"));
}

}  // namespace

CommandGroup zdoCommands() {
  return {"zdo",
          "Management of the mesh",
          {
              {"lqi-request", "Ask for a page of the neighbour table", zdoArguments({START_INDEX}),
               page<ZdoNetworkLqiRequest>},
              {"routing-request", "Ask for a page of the routing table", zdoArguments({START_INDEX}),
               page<ZdoNetworkRtgRequest>},
              {"leave-request", "Make a device leave",
               zdoArguments({address("device", "Long address of the device that is to leave"),
                             u8("options", "Goes out as it is").orElse("0")}),
               [](const Arguments& in) {
                 return zdoFrame(ZdoLeaveRequest(destination(in), in.address("device"), in.u8("options")), in);
               }},
              {"permit-join-request", "Open or close a node for devices that want to join",
               zdoArguments(
                   {u8("duration", "Seconds; 0 closes, 255 opens for good"),
                    u8("trust-centre-significance", "1 if the trust centre's own policy changes too").orElse("0")}),
               [](const Arguments& in) {
                 return zdoFrame(
                     ZdoPermitJoinRequest(destination(in), in.u8("duration"), in.u8("trust-centre-significance")), in);
               }},
              {"energy-scan", "Measure the energy on channels",
               zdoArguments({CHANNEL_MASK.orElse(ALL_CHANNELS),
                             u8("duration", "Exponent of the time").within(0, ZdoNetworkUpdateRequest::LAST_SCAN),
                             u8("scan-count", "How many scans").orElse("1")}),
               energyScan},
              {"channel-change", "Move the mesh to another channel", zdoArguments({CHANNEL_MASK, UPDATE_ID}),
               channelChange},
              {"manager-update", "Name a new network manager",
               zdoArguments({CHANNEL_MASK.orElse(ALL_CHANNELS), UPDATE_ID,
                             u16("manager-address", "Short address of the network manager")}),
               managerUpdate},
          }};
}

}  // namespace qx::app

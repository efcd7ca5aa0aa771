#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/QxZclSscp.h"
#include "vso/zcl/SscpPacket.h"

namespace qx::app {

namespace {

constexpr Argument ANNOUNCE_WINDOW = u16("announce-window", "Announce window");
constexpr Argument MTORR_PERIOD = u16("mtorr-period", "Period of many-to-one route requests");
constexpr Argument AP_COUNT = u8("ap-count", "Number of access points");

template <bool isResponse>
BuiltFrame sscp(const Arguments& in) {
  QxZclSscp frame(isResponse, !in.has("cluster-specific"));
  if (in.has("announce-window")) frame.announceWindow(in.u16("announce-window"));
  if (in.has("mtorr-period")) frame.mtorrPeriod(in.u16("mtorr-period"));
  if (in.has("ap-count")) frame.apCount(in.u8("ap-count"));
  if (in.has("channel")) frame.channel(in.u8("channel"));
  return zclFrame(frame, in);
}

BuiltFrame image(const Arguments& in) {
  const SscpPacket packet(in.u16("announce-window"), in.u16("mtorr-period"), in.u8("ap-count"), in.u8("options-type"));
  return {static_cast<unsigned short>(QxZclSscp(false, true).getProfileId()), QxZclSscp::CLUSTER_ID, packet};
}

}  // namespace

CommandGroup sscpCommands() {
  const std::vector<Argument> arguments =
      zclArguments({ANNOUNCE_WINDOW.optional(), MTORR_PERIOD.optional(), AP_COUNT.optional(),
                    u8("channel", "Radio channel").optional(),
                    flag("cluster-specific", "The frame type says cluster specific in place of general")});
  return {"sscp",
          "Mesh parameters that the server hands to devices",
          {
              {"write", "Give a device those parameters that are given here", arguments, sscp<false>},
              {"response", "Answer a device that asks for them", arguments, sscp<true>},
          }};
}

CommandGroup sscpPacketCommands() {
  return {"sscp-packet",
          "Mesh parameters as a fixed image of six bytes, which is no ZCL frame",
          {
              {"image",
               "All of them, most significant byte first",
               {ANNOUNCE_WINDOW, MTORR_PERIOD, AP_COUNT, u8("options-type", "Options type")},
               image},
          }};
}

}  // namespace qx::app

#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclSetZap.h"

namespace qx::app {

CommandGroup setZapCommands() {
  return {"set-zap",
          "Tell a device about its Zigbee access point",
          {
              {"response", "An answer with those attributes that are given",
               zclArguments({u16("sid", "Short id of the access point").optional(),
                             address("lid", "Long id of the access point").optional(),
                             u8("cost", "Cost of the way to it").optional(),
                             u16("end-node-ap-period", "How often the device polls its access point").optional(),
                             u16("end-node-parent-period", "How often the device polls its parent").optional()}),
               [](const Arguments& in) {
                 ZclSetZap frame;
                 if (in.has("sid")) frame.sid(in.u16("sid"));
                 if (in.has("lid")) frame.lid(in.address("lid"));
                 if (in.has("cost")) frame.cost(in.u8("cost"));
                 if (in.has("end-node-ap-period")) frame.endNodeApPeriod(in.u16("end-node-ap-period"));
                 if (in.has("end-node-parent-period")) frame.endNodeParentPeriod(in.u16("end-node-parent-period"));
                 return zclFrame(frame, in);
               }},
          }};
}

}  // namespace qx::app

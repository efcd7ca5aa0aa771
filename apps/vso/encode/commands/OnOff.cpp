#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclOnOff.h"

namespace qx::app {

namespace {

template <void (ZclOnOff::*command)()>
BuiltFrame plain(const Arguments& in) {
  ZclOnOff frame;
  (frame.*command)();
  return zclFrame(frame, in);
}

}  // namespace

CommandGroup onOffCommands() {
  return {"on-off",
          "Switch a device",
          {
              {"off", "Switch off", zclArguments({}), plain<&ZclOnOff::setOff>},
              {"on", "Switch on", zclArguments({}), plain<&ZclOnOff::setOn>},
              {"toggle", "Switch over", zclArguments({}), plain<&ZclOnOff::setToggle>},
          }};
}

}  // namespace qx::app

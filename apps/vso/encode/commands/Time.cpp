#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclTime.h"

namespace qx::app {

CommandGroup timeCommands() {
  constexpr long long LAST_SECOND = 0x7FFFFFFF;
  return {"time",
          "Answers to devices that ask for the time",
          {
              {"time", "The time, most significant byte first",
               zclArguments(
                   {u32("fixed-time", "Seconds since 1970, in place of the clock").within(1, LAST_SECOND).optional()}),
               [](const Arguments& in) {
                 ZclTime frame;
                 frame.fixedTime(static_cast<int>(in.u32("fixed-time")));
                 frame.populateTime();
                 return zclFrame(frame, in);
               }},
              {"status", "This side's clock is the master", zclArguments({}),
               [](const Arguments& in) {
                 ZclTime frame;
                 frame.populateStatus();
                 return zclFrame(frame, in);
               }},
          }};
}

}  // namespace qx::app

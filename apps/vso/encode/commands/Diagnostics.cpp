#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/attributeLists.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/QxZclDiagnostics.h"

namespace qx::app {

CommandGroup diagnosticsCommands() {
  return {"diagnostics",
          "What a device counts and logs, in the manufacturer's own cluster",
          {
              {"read", "Ask for attributes: log message 0, counters 2, uptime 3", zclArguments({ATTRIBUTE_IDS}),
               [](const Arguments& in) {
                 QxZclDiagnostics frame(std::vector<unsigned short>{});
                 fillReadAttributes(frame, in);
                 return zclFrame(frame, in);
               }},
              {"reset-counters", "Have a device start to count anew",
               zclArguments({u8("reset", "0 leaves them as they are").within(0, 1).orElse("1")}),
               [](const Arguments& in) {
                 QxZclDiagnostics frame;
                 frame.resetCounters(in.u8("reset") != 0);
                 return zclFrame(frame, in);
               }},
              {"display-signal-strength", "Have a device show the strength of its signal",
               zclArguments({u8("display", "1 to show it, 0 to end that").within(0, 1)}),
               [](const Arguments& in) {
                 QxZclDiagnostics frame;
                 frame.displaySignalStrength(in.u8("display") != 0);
                 return zclFrame(frame, in);
               }},
          }};
}

}  // namespace qx::app

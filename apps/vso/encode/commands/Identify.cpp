#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/attributeLists.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclIdentify.h"

namespace qx::app {

CommandGroup identifyCommands() {
  return {"identify",
          "The Identify cluster",
          {
              {"read-attributes-response", "Answer with the values of attributes", zclArguments({ATTRIBUTE_ANSWERS}),
               [](const Arguments& in) {
                 ZclIdentify frame;
                 fillReadAttributesResponse(frame, in);
                 return zclFrame(frame, in);
               }},
          }};
}

}  // namespace qx::app

#include "apps/vso/decode/ZclCommands.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "apps/vso/decode/attributeLists.h"
#include "vso/zcl/ZclIdentify.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"

namespace qx::app {

namespace {

constexpr auto U8 = ZclFieldKind::U8;
constexpr auto U16 = ZclFieldKind::U16;
constexpr auto RATE = ZclFieldKind::RATE;
constexpr auto STATUS = ZclFieldKind::STATUS;

constexpr auto EITHER = ZclDirection::EITHER;
constexpr auto TO_SERVER = ZclDirection::TO_SERVER;
constexpr auto TO_CLIENT = ZclDirection::TO_CLIENT;

constexpr int IDENTIFY = ZclIdentify::CLUSTER_ID;
constexpr int ON_OFF = ZclOnOff::CLUSTER_ID;
constexpr int LEVEL_CONTROL = ZclLevelControl::CLUSTER_ID;

// The options came with a later revision of the standard: older devices leave both of them out.
constexpr ZclField OPTIONS_MASK{"optionsMask", U8};
constexpr ZclField OPTIONS_OVERRIDE{"optionsOverride", U8};

// Payloads that several commands share.
constexpr ZclFields ATTRIBUTE_RANGE{{{"startAttributeId", U16}, {"maximumAttributeIds", U8}}};
constexpr ZclFields COMMAND_RANGE{{{"startCommandId", U8}, {"maximumCommandIds", U8}}};
constexpr ZclFields EFFECT{{{"effectIdentifier", U8}, {"effectVariant", U8}}};
constexpr ZclFields LEVEL{{{"level", U8}, {"transitionTime", U16}, OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr ZclFields MOVE{{{"mode", U8}, {"rate", RATE}, OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr ZclFields STEP{{{"mode", U8}, {"stepSize", U8}, {"transitionTime", U16}, OPTIONS_MASK, OPTIONS_OVERRIDE}};
constexpr ZclFields STOP{{OPTIONS_MASK, OPTIONS_OVERRIDE}};

constexpr ZclCommandRow COMMANDS[] = {
    {GENERAL_COMMANDS, EITHER, 0x00, "read attributes", {}, decodeAttributeIds},
    {GENERAL_COMMANDS, EITHER, 0x01, "read attributes response", {}, decodeReadResponses},
    {GENERAL_COMMANDS, EITHER, 0x02, "write attributes", {}, decodeWrites},
    {GENERAL_COMMANDS, EITHER, 0x03, "write attributes undivided", {}, decodeWrites},
    {GENERAL_COMMANDS, EITHER, 0x04, "write attributes response", {}, decodeWriteResponses},
    {GENERAL_COMMANDS, EITHER, 0x05, "write attributes no response", {}, decodeWrites},
    {GENERAL_COMMANDS, EITHER, 0x06, "configure reporting"},
    {GENERAL_COMMANDS, EITHER, 0x07, "configure reporting response"},
    {GENERAL_COMMANDS, EITHER, 0x08, "read reporting configuration"},
    {GENERAL_COMMANDS, EITHER, 0x09, "read reporting configuration response"},
    {GENERAL_COMMANDS, EITHER, 0x0A, "report attributes", {}, decodeReports},
    {GENERAL_COMMANDS, EITHER, 0x0B, "default response", {{{"commandId", U8}, {"status", STATUS}}}},
    {GENERAL_COMMANDS, EITHER, 0x0C, "discover attributes", ATTRIBUTE_RANGE},
    {GENERAL_COMMANDS, EITHER, 0x0D, "discover attributes response"},
    {GENERAL_COMMANDS, EITHER, 0x0E, "read attributes structured"},
    {GENERAL_COMMANDS, EITHER, 0x0F, "write attributes structured"},
    {GENERAL_COMMANDS, EITHER, 0x10, "write attributes structured response"},
    {GENERAL_COMMANDS, EITHER, 0x11, "discover commands received", COMMAND_RANGE},
    {GENERAL_COMMANDS, EITHER, 0x12, "discover commands received response"},
    {GENERAL_COMMANDS, EITHER, 0x13, "discover commands generated", COMMAND_RANGE},
    {GENERAL_COMMANDS, EITHER, 0x14, "discover commands generated response"},
    {GENERAL_COMMANDS, EITHER, 0x15, "discover attributes extended", ATTRIBUTE_RANGE},
    {GENERAL_COMMANDS, EITHER, 0x16, "discover attributes extended response"},

    {IDENTIFY, TO_SERVER, 0x00, "identify", {{{"identifyTime", U16}}}},
    {IDENTIFY, TO_SERVER, 0x01, "identify query"},
    {IDENTIFY, TO_SERVER, 0x40, "trigger effect", EFFECT},
    {IDENTIFY, TO_CLIENT, 0x00, "identify query response", {{{"timeout", U16}}}},

    {ON_OFF, TO_SERVER, 0x00, "off"},
    {ON_OFF, TO_SERVER, 0x01, "on"},
    {ON_OFF, TO_SERVER, 0x02, "toggle"},
    {ON_OFF, TO_SERVER, 0x40, "off with effect", EFFECT},
    {ON_OFF, TO_SERVER, 0x41, "on with recall global scene"},
    {ON_OFF, TO_SERVER, 0x42, "on with timed off", {{{"onOffControl", U8}, {"onTime", U16}, {"offWaitTime", U16}}}},

    {LEVEL_CONTROL, TO_SERVER, 0x00, "move to level", LEVEL},
    {LEVEL_CONTROL, TO_SERVER, 0x01, "move", MOVE},
    {LEVEL_CONTROL, TO_SERVER, 0x02, "step", STEP},
    {LEVEL_CONTROL, TO_SERVER, 0x03, "stop", STOP},
    {LEVEL_CONTROL, TO_SERVER, 0x04, "move to level (with on/off)", LEVEL},
    {LEVEL_CONTROL, TO_SERVER, 0x05, "move (with on/off)", MOVE},
    {LEVEL_CONTROL, TO_SERVER, 0x06, "step (with on/off)", STEP},
    {LEVEL_CONTROL, TO_SERVER, 0x07, "stop (with on/off)", STOP},
};

constexpr bool before(const ZclCommandRow& a, const ZclCommandRow& b) {
  if (a.cluster != b.cluster) return a.cluster < b.cluster;
  if (a.direction != b.direction) return a.direction < b.direction;
  return a.command < b.command;
}

constexpr bool isSorted() {
  for (std::size_t i = 1; i < std::size(COMMANDS); ++i) {
    if (!before(COMMANDS[i - 1], COMMANDS[i])) return false;
  }
  return true;
}
static_assert(isSorted(), "the rows stand in the order of cluster, direction and command, each once");

const ZclCommandRow* find(int cluster, ZclDirection direction, unsigned char command) {
  const ZclCommandRow key{cluster, direction, command, nullptr};
  const ZclCommandRow* const row = std::lower_bound(std::begin(COMMANDS), std::end(COMMANDS), key, before);
  return row != std::end(COMMANDS) && !before(key, *row) ? row : nullptr;
}

}  // namespace

unsigned int fieldSize(ZclFieldKind kind, unsigned int left) {
  switch (kind) {
    case ZclFieldKind::NONE:
      return 0;
    case ZclFieldKind::U8:
    case ZclFieldKind::STATUS:
      return 1;
    case ZclFieldKind::U16:
      return 2;
    case ZclFieldKind::RATE:
      // Behind it stand both options or none of them, so an even rest begins with a rate of two bytes.
      return left % 2 == 0 ? 2 : 1;
  }
  return 0;
}

const ZclCommandRow* findGeneralCommand(unsigned char command) { return find(GENERAL_COMMANDS, EITHER, command); }

const ZclCommandRow* findClusterCommand(unsigned short cluster, bool fromServer, unsigned char command) {
  return find(cluster, fromServer ? TO_CLIENT : TO_SERVER, command);
}

}  // namespace qx::app

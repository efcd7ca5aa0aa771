#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclLevelControl.h"

namespace qx::app {

namespace {

constexpr Argument LEVEL = u8("level", "The level to go to");
constexpr Argument TRANSITION_TIME = u16("transition-time", "Tenths of a second");
constexpr Argument MODE = u8("mode", "0: up, 1: down");
constexpr Argument STEP_SIZE = u8("step-size", "By how much");
constexpr Argument RATE = u16("rate", "Units a second");
// The library takes no more for this command, although it goes out in two bytes as well.
constexpr Argument BYTE_RATE = u8("rate", "Units a second");

template <void (ZclLevelControl::*command)(unsigned char, unsigned short)>
BuiltFrame toLevel(const Arguments& in) {
  ZclLevelControl frame;
  (frame.*command)(in.u8("level"), in.u16("transition-time"));
  return zclFrame(frame, in);
}

BuiltFrame move(const Arguments& in) {
  ZclLevelControl frame;
  frame.move(in.u8("mode"), in.u16("rate"));
  return zclFrame(frame, in);
}

BuiltFrame moveWithOnOff(const Arguments& in) {
  ZclLevelControl frame;
  frame.moveWOnOff(in.u8("mode"), in.u8("rate"));
  return zclFrame(frame, in);
}

template <void (ZclLevelControl::*command)(unsigned char, unsigned char, unsigned short)>
BuiltFrame step(const Arguments& in) {
  ZclLevelControl frame;
  (frame.*command)(in.u8("mode"), in.u8("step-size"), in.u16("transition-time"));
  return zclFrame(frame, in);
}

template <void (ZclLevelControl::*command)()>
BuiltFrame stop(const Arguments& in) {
  ZclLevelControl frame;
  (frame.*command)();
  return zclFrame(frame, in);
}

}  // namespace

CommandGroup levelCommands() {
  const std::vector<Argument> toLevelArguments = zclArguments({LEVEL, TRANSITION_TIME});
  const std::vector<Argument> stepArguments = zclArguments({MODE, STEP_SIZE, TRANSITION_TIME});
  return {"level-control",
          "Dim a device",
          {
              {"move-to-level", "Go to a level", toLevelArguments, toLevel<&ZclLevelControl::moveToLevel>},
              {"move", "Keep going up or down", zclArguments({MODE, RATE}), move},
              {"step", "Go up or down by a step", stepArguments, step<&ZclLevelControl::step>},
              {"stop", "Stay where it is", zclArguments({}), stop<&ZclLevelControl::stop>},
              {"move-to-level-with-on-off", "Go to a level, and switch on or off there", toLevelArguments,
               toLevel<&ZclLevelControl::moveToLevelWOnOff>},
              {"move-with-on-off", "Keep going up or down, and switch on or off", zclArguments({MODE, BYTE_RATE}),
               moveWithOnOff},
              {"step-with-on-off", "Go up or down by a step, and switch on or off", stepArguments,
               step<&ZclLevelControl::stepWOnOff>},
              {"stop-with-on-off", "Stay where it is", zclArguments({}), stop<&ZclLevelControl::stopWOnOff>},
          }};
}

}  // namespace qx::app

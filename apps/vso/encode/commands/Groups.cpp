#include "vso/zcl/ZclGroups.h"

#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"

namespace qx::app {

namespace {

constexpr Argument GROUP_ID = u16("group-id", "The group");
// The bound is far above the library's own, which so has the last word.
constexpr Argument GROUP_NAME = text("group-name", "Name of at most 16 characters", 255).orElse("");

template <void (ZclGroups::*command)(unsigned short, const std::string&)>
BuiltFrame withName(const Arguments& in) {
  ZclGroups frame;
  (frame.*command)(in.u16("group-id"), in.text("group-name"));
  return zclFrame(frame, in);
}

template <void (ZclGroups::*command)(unsigned short)>
BuiltFrame onGroup(const Arguments& in) {
  ZclGroups frame;
  (frame.*command)(in.u16("group-id"));
  return zclFrame(frame, in);
}

BuiltFrame getGroupMembership(const Arguments& in) {
  ZclGroups frame;
  frame.getGroupMembership(in.u16List("group-ids"));
  return zclFrame(frame, in);
}

BuiltFrame removeAllGroups(const Arguments& in) {
  ZclGroups frame;
  frame.removeAllGroups();
  return zclFrame(frame, in);
}

}  // namespace

CommandGroup groupsCommands() {
  return {"groups",
          "Which groups a device belongs to",
          {
              {"add-group", "Make the device a member of a group", zclArguments({GROUP_ID, GROUP_NAME}),
               withName<&ZclGroups::addGroup>},
              {"view-group", "Ask for the name of a group", zclArguments({GROUP_ID}), onGroup<&ZclGroups::viewGroup>},
              {"get-group-membership", "Ask which of these groups the device is in",
               zclArguments({u16List("group-ids", "The groups; none stands for all").orElse("")}), getGroupMembership},
              {"remove-group", "Take the device out of a group", zclArguments({GROUP_ID}),
               onGroup<&ZclGroups::removeGroup>},
              {"remove-all-groups", "Take the device out of every group", zclArguments({}), removeAllGroups},
              {"add-group-if-identifying", "Make the device a member of a group if it is identifying itself",
               zclArguments({GROUP_ID, GROUP_NAME}), withName<&ZclGroups::addGroupIfIdentifying>},
          }};
}

}  // namespace qx::app

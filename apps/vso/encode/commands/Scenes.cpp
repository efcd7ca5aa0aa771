#include "vso/zcl/ZclScenes.h"

#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"

namespace qx::app {

namespace {

constexpr Argument GROUP_ID = u16("group-id", "The group that the scene is for");
constexpr Argument SCENE_ID = u8("scene-id", "The scene");

/// Most commands of the cluster name a scene and nothing else.
template <void (ZclScenes::*command)(unsigned short, unsigned char)>
BuiltFrame onScene(const Arguments& in) {
  ZclScenes frame;
  (frame.*command)(in.u16("group-id"), in.u8("scene-id"));
  return zclFrame(frame, in);
}

template <void (ZclScenes::*command)(unsigned short)>
BuiltFrame onGroup(const Arguments& in) {
  ZclScenes frame;
  (frame.*command)(in.u16("group-id"));
  return zclFrame(frame, in);
}

BuiltFrame addScene(const Arguments& in) {
  SceneTableEntry scene;
  scene.groupId = in.u16("group-id");
  scene.sceneId = in.u8("scene-id");
  scene.transitionTime = in.u16("transition-time");
  scene.sceneName = in.text("scene-name");
  const std::vector<std::string> extensions = in.texts("extension");
  if (extensions.size() > scene.extensions.size()) {
    throw BadArgument("--extension: " + std::to_string(extensions.size()) + " of them, and a scene has at most " +
                      std::to_string(scene.extensions.size()));
  }
  for (std::size_t i = 0; i < extensions.size(); ++i) scene.extensions[i] = parseSceneExtension(extensions[i]);
  ZclScenes frame;
  frame.addScene(scene);
  return zclFrame(frame, in);
}

BuiltFrame getSceneCount(const Arguments& in) {
  ZclScenes frame;
  frame.getSceneCount();
  return zclFrame(frame, in);
}

}  // namespace

CommandGroup scenesCommands() {
  const std::vector<Argument> scene = zclArguments({GROUP_ID, SCENE_ID});
  return {
      "scenes",
      "States that a group of devices can be put into at once",
      {
          {"add-scene", "Give the device a scene",
           zclArguments(
               {GROUP_ID, SCENE_ID, u16("transition-time", "Seconds").orElse("0"),
                // The bound is far above the library's own, which so has the last word.
                text("scene-name", "Name of at most 16 characters", 255).orElse(""),
                Argument{"extension", ArgumentKind::SCENE_EXTENSION, "Value of one byte for a cluster; up to four"}
                    .optional()
                    .repeated()}),
           addScene},
          {"view-scene", "Ask what a scene holds", scene, onScene<&ZclScenes::viewScene>},
          {"remove-scene", "Take a scene away", scene, onScene<&ZclScenes::removeScene>},
          {"remove-all-scenes", "Take all scenes of a group away", zclArguments({GROUP_ID}),
           onGroup<&ZclScenes::removeAllScenes>},
          {"store-scene", "Keep the present state as a scene", scene, onScene<&ZclScenes::storeScene>},
          {"recall-scene", "Go to the state of a scene", scene, onScene<&ZclScenes::recallScene>},
          {"un-recall-scene", "The maker's own counterpart of recall-scene", scene, onScene<&ZclScenes::unRecallScene>},
          {"get-scene-membership", "Ask which scenes of a group there are", zclArguments({GROUP_ID}),
           onGroup<&ZclScenes::getSceneMembership>},
          {"get-scene-count", "Read how many scenes there are in all", zclArguments({}), getSceneCount},
      }};
}

}  // namespace qx::app

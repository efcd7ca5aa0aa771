#include "vso/zcl/ZclScenes.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

using boost::logic::indeterminate;
using boost::logic::tribool;

namespace {

constexpr unsigned short COLOR_CONTROL = 0x0300;

/// The clusters whose extensions are understood.
bool hasExtension(unsigned short clusterId) {
  return clusterId == ZclOnOff::CLUSTER_ID || clusterId == ZclLevelControl::CLUSTER_ID || clusterId == COLOR_CONTROL;
}

/// Writes `length` bytes from the value of slot `slot` on, over the slots behind it, up to the end of the last.
void readValue(FrameReader& in, unsigned int length, SceneExtensions& slots, unsigned int slot) {
  static_assert(sizeof(SceneExtension) == 4, "the slots lie side by side");
  auto* const storage = reinterpret_cast<unsigned char*>(slots.data());
  const unsigned int at = slot * sizeof(SceneExtension) + offsetof(SceneExtension, value);
  const unsigned int fitting = std::min<unsigned int>(length, sizeof(SceneExtensions) - at);
  in.bytes(storage + at, fitting);
  in.skip(length - fitting);
}

void readExtensions(FrameReader in, SceneExtensions& slots) {
  constexpr unsigned int UNKNOWN_EXTENSION_SIZE = 4;
  for (unsigned int slot = 0; slot < slots.size(); ++slot) {
    if (!in.more()) {
      slots[slot] = SceneExtension();
      continue;
    }
    const unsigned short clusterId = in.u16le();
    if (hasExtension(clusterId)) {
      slots[slot].clusterId = clusterId;
      slots[slot].length = in.u8();
      readValue(in, slots[slot].length, slots, slot);
    } else {
      in.skip(UNKNOWN_EXTENSION_SIZE - sizeof clusterId);
    }
  }
}

}  // namespace

void SceneTableEntry::SetSceneData(unsigned short group, unsigned char scene, unsigned short transition,
                                   std::string name, unsigned short cluster, unsigned char value) {
  groupId = group;
  sceneId = scene;
  transitionTime = transition;
  sceneName = std::move(name);
  extensions.fill(SceneExtension());
  extensions[0] = {cluster, 1, value};
}

short ZclScenes::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclScenes::getClusterId() const { return CLUSTER_ID; }

void ZclScenes::addScene(const SceneTableEntry& scene) {
  if (scene.sceneName.size() > LONGEST_NAME) throw std::runtime_error("Scene name too large");
  FrameWriter out = newCommand(ADD_SCENE);
  out.u16le(scene.groupId);
  out.u8(scene.sceneId);
  out.u16le(scene.transitionTime);
  endPayload(out);
  addString(scene.sceneName);
  out = morePayload();
  for (const SceneExtension& extension : scene.extensions) {
    if (extension.clusterId == SceneExtension::EMPTY) continue;
    out.u16le(extension.clusterId);
    out.u8(extension.length);
    out.u8(extension.value);
  }
  endCommand(out);
}

void ZclScenes::viewScene(unsigned short groupId, unsigned char sceneId) { setScene(VIEW_SCENE, groupId, sceneId); }
void ZclScenes::removeScene(unsigned short groupId, unsigned char sceneId) { setScene(REMOVE_SCENE, groupId, sceneId); }
void ZclScenes::removeAllScenes(unsigned short groupId) { setCommand(REMOVE_ALL_SCENES, groupId); }
void ZclScenes::storeScene(unsigned short groupId, unsigned char sceneId) { setScene(STORE_SCENE, groupId, sceneId); }
void ZclScenes::recallScene(unsigned short groupId, unsigned char sceneId) { setScene(RECALL_SCENE, groupId, sceneId); }
void ZclScenes::getSceneMembership(unsigned short groupId) { setCommand(GET_SCENE_MEMBERSHIP, groupId); }

void ZclScenes::unRecallScene(unsigned short groupId, unsigned char sceneId) {
  prepareQxCustomMessage(0, UN_RECALL_SCENE, true);
  addUint16(groupId);
  addByte(sceneId);
  isValidLength();
}

void ZclScenes::getSceneCount() {
  static const std::vector<unsigned short> ids{SCENE_COUNT};  // once a process: a frame does not allocate
  clusterSpecific_ = false;
  setFcf(0);
  setCid(ZclGeneralCommand::READ_ATTRIBUTES);
  setReadAttributes(ids);
}

tribool ZclScenes::sceneBundleResponse(SceneBundle& bundle) const {
  if (!isPayloadOf(4, 4)) return indeterminate;
  FrameReader in = payload();
  bundle.status = in.u8();
  bundle.groupId = in.u16le();
  bundle.sceneId = in.u8();
  return true;
}

tribool ZclScenes::addSceneResponse(SceneBundle& bundle) const {
  return isCommand(ADD_SCENE) ? sceneBundleResponse(bundle) : tribool(indeterminate);
}
tribool ZclScenes::removeSceneResponse(SceneBundle& bundle) const {
  return isCommand(REMOVE_SCENE) ? sceneBundleResponse(bundle) : tribool(indeterminate);
}
tribool ZclScenes::storeSceneResponse(SceneBundle& bundle) const {
  return isCommand(STORE_SCENE) ? sceneBundleResponse(bundle) : tribool(indeterminate);
}

tribool ZclScenes::removeAllScenesResponse(RemoveScenesBundle& bundle) const {
  if (!isCommand(REMOVE_ALL_SCENES) || !isPayloadOf(3, 3)) return indeterminate;
  FrameReader in = payload();
  bundle.status = in.u8();
  bundle.groupId = in.u16le();
  return true;
}

tribool ZclScenes::viewSceneResponse(ViewSceneBundle& bundle) const {
  if (!isCommand(VIEW_SCENE) || !isPayloadOf(4)) return indeterminate;
  FrameReader in = payload();
  bundle.status = in.u8();
  bundle.groupId = in.u16le();
  bundle.sceneId = in.u8();
  if (!isPayloadOf(6)) return false;
  bundle.transitionTime = in.u16le();
  const unsigned char nameLength = in.u8();
  bundle.sceneName = FrameReader(in).text(nameLength);
  readExtensions(in, bundle.extensions);
  return true;
}

tribool ZclScenes::getSceneMembershipResponse(SceneMembershipBundle& bundle) const {
  if (!isCommand(GET_SCENE_MEMBERSHIP) || !isPayloadOf(4)) return indeterminate;
  FrameReader in = payload();
  bundle.status = in.u8();
  bundle.capacity = in.u8();
  bundle.groupId = in.u16le();
  bundle.sceneIds.clear();
  if (in.more()) {
    bundle.sceneCount = in.u8();
    bundle.sceneIds.resize(bundle.sceneCount);
    in.bytes(bundle.sceneIds.data(), bundle.sceneCount);
  }
  return true;
}

void ZclScenes::setScene(unsigned char commandId, unsigned short groupId, unsigned char sceneId) {
  FrameWriter out = newCommand(commandId);
  out.u16le(groupId);
  out.u8(sceneId);
  endCommand(out);
}

}  // namespace qx

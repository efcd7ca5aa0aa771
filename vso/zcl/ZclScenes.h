// The Scenes cluster: states that a group of devices can be put into at once.
#pragma once

#include <boost/array.hpp>
#include <boost/logic/tribool.hpp>
#include <string>
#include <vector>

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// What a scene holds for one cluster of a device. Values longer than a byte are not provided for.
struct SceneExtension {
  static constexpr unsigned short EMPTY = 0xFFFF;

  unsigned short clusterId = EMPTY;  ///< EMPTY in a slot that is not in use.
  unsigned char length = 0;
  unsigned char value = 0;
};

using SceneExtensions = boost::array<SceneExtension, 4>;

/// A scene as it is sent to a device.
struct SceneTableEntry {
  /// Stores the scene with a single extension of one byte, in the first slot; the others become empty.
  void SetSceneData(unsigned short group, unsigned char scene, unsigned short transition, std::string name,
                    unsigned short cluster, unsigned char value);

  unsigned short groupId = 0;
  unsigned char sceneId = 0;
  unsigned short transitionTime = 0;  ///< Seconds.
  std::string sceneName;
  SceneExtensions extensions;
};

/// The answer to addScene, removeScene and storeScene.
struct SceneBundle {
  unsigned char status = 0;  ///< A ZclStatus.
  unsigned short groupId = 0;
  unsigned char sceneId = 0;
};

/// The answer to removeAllScenes.
struct RemoveScenesBundle {
  unsigned char status = 0;  ///< A ZclStatus.
  unsigned short groupId = 0;
};

/// The answer to viewScene.
struct ViewSceneBundle {
  unsigned char status = 0;  ///< A ZclStatus.
  unsigned short groupId = 0;
  unsigned char sceneId = 0;
  unsigned short transitionTime = 0;  ///< Seconds.
  std::string sceneName;              ///< Any bytes.
  SceneExtensions extensions;
};

/// The answer to getSceneMembership.
struct SceneMembershipBundle {
  unsigned char status = 0;    ///< A ZclStatus.
  unsigned char capacity = 0;  ///< Scenes that the device has still room for; 0xFE: some, 0xFF: not known.
  unsigned short groupId = 0;
  unsigned char sceneCount = 0;
  std::vector<unsigned char> sceneIds;
};

/// A frame of the Scenes cluster. The builders make a command from client to server; the readers fill a bundle from a
/// response and answer true, or leave it alone and answer indeterminate if the frame's command or length does not fit.
/// The readers log nothing.
class ZclScenes : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0005;

  // Commands of the cluster. A response has the id of its command.
  static constexpr unsigned char ADD_SCENE = 0x00;
  static constexpr unsigned char VIEW_SCENE = 0x01;
  static constexpr unsigned char REMOVE_SCENE = 0x02;
  static constexpr unsigned char REMOVE_ALL_SCENES = 0x03;
  static constexpr unsigned char STORE_SCENE = 0x04;
  static constexpr unsigned char RECALL_SCENE = 0x05;
  static constexpr unsigned char GET_SCENE_MEMBERSHIP = 0x06;
  /// The maker's own: in a manufacturer-specific frame alone.
  static constexpr unsigned char UN_RECALL_SCENE = 0x05;

  // Attributes of the cluster.
  static constexpr unsigned short SCENE_COUNT = 0x0000;

  /// Characters that the name of a scene can have.
  static constexpr unsigned int LONGEST_NAME = 16;

  /// A cluster-specific frame without a command yet (0xFF). Takes a sequence number.
  ZclScenes() : ZclMessage(0xFF, false, true) {}
  /// Received frames, see ZclMessage.
  explicit ZclScenes(const std::string& hex) : ZclMessage(hex) {}
  explicit ZclScenes(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}

  short getProfileId() const override;
  short getClusterId() const override;

  /// Slots that are empty are left out, wherever they stand; of the others one byte of value goes out, whatever their
  /// length says. Throws std::runtime_error, "Scene name too large", with the frame unchanged, if the name is longer
  /// than 16 characters.
  void addScene(const SceneTableEntry& scene);
  void viewScene(unsigned short groupId, unsigned char sceneId);
  void removeScene(unsigned short groupId, unsigned char sceneId);
  void removeAllScenes(unsigned short groupId);
  /// The device stores its present state as the scene.
  void storeScene(unsigned short groupId, unsigned char sceneId);
  void recallScene(unsigned short groupId, unsigned char sceneId);
  void getSceneMembership(unsigned short groupId);
  /// The maker's own counterpart of `recallScene`, in a frame with the maker's code, which the frame keeps from then
  /// on. Its sequence number is whatever stands at its place: 0 in a fresh frame. See `setTsn`.
  void unRecallScene(unsigned short groupId, unsigned char sceneId);
  /// Turns the frame into a general one that reads the attribute SCENE_COUNT. The first call of a process allocates.
  void getSceneCount();

  /// For a response of any command, if its length fits.
  boost::logic::tribool sceneBundleResponse(SceneBundle& bundle) const;
  boost::logic::tribool addSceneResponse(SceneBundle& bundle) const;
  boost::logic::tribool removeSceneResponse(SceneBundle& bundle) const;
  boost::logic::tribool storeSceneResponse(SceneBundle& bundle) const;
  boost::logic::tribool removeAllScenesResponse(RemoveScenesBundle& bundle) const;
  /// False, with status and the two ids taken, for a frame that ends behind them, as a failure does.
  ///
  /// Extensions are read right behind the name's length byte, not behind the name: with a name, its characters are
  /// taken for extensions. Those of the clusters On/Off, Level Control and Color Control fill the next slot, a value of
  /// several bytes running on into the slots behind it (in the machine's byte order, and not beyond the last); any
  /// other cluster leaves its slot as it was and is taken to be 4 bytes long. Slots behind the frame's end become
  /// empty.
  boost::logic::tribool viewSceneResponse(ViewSceneBundle& bundle) const;
  /// `sceneCount` keeps its value, and there are no ids, in a frame that ends before it. Otherwise there are as many
  /// ids as it says: those behind the frame's end are what the buffer holds.
  boost::logic::tribool getSceneMembershipResponse(SceneMembershipBundle& bundle) const;

 private:
  void setScene(unsigned char commandId, unsigned short groupId, unsigned char sceneId);
};

}  // namespace qx

// The Groups cluster: which groups a device belongs to.
#pragma once

#include <boost/logic/tribool.hpp>
#include <string>
#include <vector>

#include "vso/zcl/ZclMessage.h"

namespace qx {

/// The answer to addGroup and removeGroup.
struct StatusGroupidBundle {
  unsigned char status = 0;  ///< A ZclStatus.
  unsigned short groupId = 0;
};

/// The answer to viewGroup.
struct StatusGroupIdGroupNameBundle {
  unsigned char status = 0;  ///< A ZclStatus.
  unsigned short groupId = 0;
  std::string groupName;  ///< Any bytes.
};

/// The answer to getGroupMembership.
struct GroupIdsBundle {
  unsigned char capacity = 0;  ///< Groups that the device has still room for; 0xFE: some, 0xFF: not known.
  unsigned char groupCount = 0;
  std::vector<unsigned short> groupIds;
};

/// A frame of the Groups cluster. The builders make a command from client to server; the readers fill a bundle from a
/// response and answer true, or leave it alone and answer indeterminate if the frame's command or length does not fit.
/// The readers log nothing.
class ZclGroups : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0004;

  // Commands of the cluster. A response has the id of its command.
  static constexpr unsigned char ADD_GROUP = 0x00;
  static constexpr unsigned char VIEW_GROUP = 0x01;
  static constexpr unsigned char GET_GROUP_MEMBERSHIP = 0x02;
  static constexpr unsigned char REMOVE_GROUP = 0x03;
  static constexpr unsigned char REMOVE_ALL_GROUPS = 0x04;
  static constexpr unsigned char ADD_GROUP_IF_IDENTIFYING = 0x05;

  /// Characters that the name of a group can have.
  static constexpr unsigned int LONGEST_NAME = 16;

  /// A cluster-specific frame without a command yet (0xFF). Takes a sequence number, as the next constructor does.
  ZclGroups() : ZclGroups(0xFF) {}
  explicit ZclGroups(unsigned char commandId) : ZclMessage(commandId, false, true) {}
  /// Received frames, see ZclMessage.
  explicit ZclGroups(const std::string& hex) : ZclMessage(hex) {}
  explicit ZclGroups(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}

  short getProfileId() const override;
  short getClusterId() const override;

  /// Throws std::runtime_error, "groupName has to be less than 16 characters in length", with the frame unchanged, if
  /// the name is longer than 16 characters; exactly 16 are accepted.
  void addGroup(unsigned short groupId, const std::string& name);
  void viewGroup(unsigned short groupId);
  /// Asks which of these groups the device is in; none stands for all. Throws std::runtime_error, "Too many ids to fit
  /// in packet", with the command set and the payload empty, for more than fit: 125 behind a header of 3 bytes.
  void getGroupMembership(const std::vector<unsigned short>& groupIds);
  void removeGroup(unsigned short groupId);
  void removeAllGroups();
  /// As `addGroup`, for devices that are identifying themselves.
  void addGroupIfIdentifying(unsigned short groupId, const std::string& name);

  boost::logic::tribool addGroupResponse(StatusGroupidBundle& bundle) const;
  /// Takes a frame with a name of up to 15 characters. The name is as long as its length byte says: what of it lies
  /// behind the frame's end is what the buffer holds.
  boost::logic::tribool viewGroupResponse(StatusGroupIdGroupNameBundle& bundle) const;
  /// As many ids as the count says. Those behind the frame's end are what the buffer holds.
  boost::logic::tribool getGroupMembershipResponse(GroupIdsBundle& bundle) const;
  boost::logic::tribool remGroupResponse(StatusGroupidBundle& bundle) const;

 private:
  void setNamedGroup(unsigned char commandId, unsigned short groupId, const std::string& name);
  boost::logic::tribool statusAndGroup(unsigned char commandId, StatusGroupidBundle& bundle) const;
};

}  // namespace qx

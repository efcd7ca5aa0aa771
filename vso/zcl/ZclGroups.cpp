#include "vso/zcl/ZclGroups.h"

#include <stdexcept>

#include "vso/zcl/ZclProfile.h"

namespace qx {

using boost::logic::indeterminate;
using boost::logic::tribool;

short ZclGroups::getProfileId() const { return ZclProfile::HOME_AUTOMATION; }
short ZclGroups::getClusterId() const { return CLUSTER_ID; }

void ZclGroups::addGroup(unsigned short groupId, const std::string& name) { setNamedGroup(ADD_GROUP, groupId, name); }
void ZclGroups::viewGroup(unsigned short groupId) { setCommand(VIEW_GROUP, groupId); }

void ZclGroups::getGroupMembership(const std::vector<unsigned short>& groupIds) {
  newCommand(GET_GROUP_MEMBERSHIP);
  setCountedIds(groupIds);
  isValidLength();
}

void ZclGroups::removeGroup(unsigned short groupId) { setCommand(REMOVE_GROUP, groupId); }
void ZclGroups::removeAllGroups() { endPayload(newCommand(REMOVE_ALL_GROUPS)); }

void ZclGroups::addGroupIfIdentifying(unsigned short groupId, const std::string& name) {
  setNamedGroup(ADD_GROUP_IF_IDENTIFYING, groupId, name);
}

tribool ZclGroups::addGroupResponse(StatusGroupidBundle& bundle) const { return statusAndGroup(ADD_GROUP, bundle); }

tribool ZclGroups::viewGroupResponse(StatusGroupIdGroupNameBundle& bundle) const {
  // The upper bound leaves out the name's length byte: a name of 16 characters is refused.
  if (!isCommand(VIEW_GROUP) || !isPayloadOf(3, 3 + LONGEST_NAME)) return indeterminate;
  FrameReader in = payload();
  bundle.status = in.u8();
  bundle.groupId = in.u16le();
  bundle.groupName = in.text(in.u8());
  return true;
}

tribool ZclGroups::getGroupMembershipResponse(GroupIdsBundle& bundle) const {
  if (!isCommand(GET_GROUP_MEMBERSHIP) || !isPayloadOf(2)) return indeterminate;
  FrameReader in = payload();
  bundle.capacity = in.u8();
  bundle.groupCount = in.u8();
  bundle.groupIds.resize(bundle.groupCount);
  for (unsigned short& id : bundle.groupIds) id = in.u16le();
  return true;
}

tribool ZclGroups::remGroupResponse(StatusGroupidBundle& bundle) const { return statusAndGroup(REMOVE_GROUP, bundle); }

void ZclGroups::setNamedGroup(unsigned char commandId, unsigned short groupId, const std::string& name) {
  if (name.size() > LONGEST_NAME) {
    throw std::runtime_error("groupName has to be less than 16 characters in length");
  }
  FrameWriter out = newCommand(commandId);
  out.u16le(groupId);
  endPayload(out);
  addString(name);
  isValidLength();
}

tribool ZclGroups::statusAndGroup(unsigned char commandId, StatusGroupidBundle& bundle) const {
  if (!isCommand(commandId) || !isPayloadOf(3, 3)) return indeterminate;
  FrameReader in = payload();
  bundle.status = in.u8();
  bundle.groupId = in.u16le();
  return true;
}

}  // namespace qx

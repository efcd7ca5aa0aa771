// The responses of the Groups and Scenes clusters on arbitrary bytes. Reachable from outside: any node of the mesh
// chooses every byte of the frames that the server parses with these classes, up to the length that the radio link
// delivers. What is built of the same bytes comes from the server's clients.
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <algorithm>
#include <boost/logic/tribool.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/support/trapUnless.h"
#include "vso/zcl/ZclGroups.h"
#include "vso/zcl/ZclScenes.h"

namespace {

using boost::logic::indeterminate;
using boost::logic::tribool;
using qx::U255Buff;
using qx::ZclGroups;
using qx::ZclScenes;
using qx::fuzz::trapUnless;

constexpr unsigned int STORAGE = 255;

/// A byte of the frame's storage, 0 behind it.
unsigned int byteAt(const U255Buff<unsigned char>& frame, unsigned int at) {
  return at < STORAGE ? frame.contents[at] : 0;
}

unsigned int wordAt(const U255Buff<unsigned char>& frame, unsigned int at) {
  return byteAt(frame, at) | byteAt(frame, at + 1) << 8;
}

std::string textAt(const U255Buff<unsigned char>& frame, unsigned int at, unsigned int count) {
  std::string text;
  for (unsigned int i = 0; i < count; ++i) text += static_cast<char>(byteAt(frame, at + i));
  return text;
}

/// What a frame's own bytes say of it.
struct Facts {
  explicit Facts(const U255Buff<unsigned char>& frame)
      : header((frame.contents[0] & 4) != 0 ? 5 : 3), command(byteAt(frame, header - 1)), length(frame.length_) {}

  bool has(unsigned int least, unsigned int most) const {
    return length >= header + least && length <= static_cast<unsigned long long>(header) + most;
  }

  unsigned int header;
  unsigned int command;
  unsigned int length;
};

constexpr unsigned int ANY = 0xFFFFFFFF;

/// Says that a reader answered true or, of a frame that it does not take, indeterminate.
void requireTaken(tribool answer, bool takes) {
  trapUnless(indeterminate(answer) == !takes, "a reader takes a frame by its command and its length alone");
}

void requireStatusAndGroup(const ZclGroups& frame, tribool (ZclGroups::*read)(qx::StatusGroupidBundle&) const,
                           unsigned int command) {
  const Facts facts(frame);
  const bool takes = facts.command == command && facts.has(3, 3);
  qx::StatusGroupidBundle bundle{0xAB, 0xCDEF};
  requireTaken((frame.*read)(bundle), takes);
  trapUnless(bundle.status == (takes ? byteAt(frame, facts.header) : 0xAB), "status of a group");
  trapUnless(bundle.groupId == (takes ? wordAt(frame, facts.header + 1) : 0xCDEF), "id of a group");
}

void requireView(const ZclGroups& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 1 && facts.has(3, 19);
  qx::StatusGroupIdGroupNameBundle bundle{0xAB, 0xCDEF, "left"};
  requireTaken(frame.viewGroupResponse(bundle), takes);
  trapUnless(bundle.status == (takes ? byteAt(frame, facts.header) : 0xAB), "status of a view");
  trapUnless(bundle.groupId == (takes ? wordAt(frame, facts.header + 1) : 0xCDEF), "id of a view");
  const std::string name = textAt(frame, facts.header + 4, byteAt(frame, facts.header + 3));
  trapUnless(bundle.groupName == (takes ? name : "left"), "a name is as long as its length byte says");
}

void requireMembership(const ZclGroups& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 2 && facts.has(2, ANY);
  qx::GroupIdsBundle bundle{0xAB, 0xCD, {1, 2, 3}};
  requireTaken(frame.getGroupMembershipResponse(bundle), takes);
  std::vector<unsigned short> ids{1, 2, 3};
  if (takes) {
    ids.clear();
    for (unsigned int i = 0; i < byteAt(frame, facts.header + 1); ++i) {
      ids.push_back(static_cast<unsigned short>(wordAt(frame, facts.header + 2 + 2 * i)));
    }
    trapUnless(bundle.groupIds.size() == bundle.groupCount, "there are as many groups as the count says");
  }
  trapUnless(bundle.capacity == (takes ? byteAt(frame, facts.header) : 0xAB), "capacity for groups");
  trapUnless(bundle.groupCount == (takes ? byteAt(frame, facts.header + 1) : 0xCD), "count of groups");
  trapUnless(bundle.groupIds == ids, "the groups are those of the frame");
}

void requireScene(const ZclScenes& frame, tribool (ZclScenes::*read)(qx::SceneBundle&) const, bool fits) {
  const Facts facts(frame);
  const bool takes = fits && facts.has(4, 4);
  qx::SceneBundle bundle{0xAB, 0xCDEF, 0x12};
  requireTaken((frame.*read)(bundle), takes);
  trapUnless(bundle.status == (takes ? byteAt(frame, facts.header) : 0xAB), "status of a scene");
  trapUnless(bundle.groupId == (takes ? wordAt(frame, facts.header + 1) : 0xCDEF), "group of a scene");
  trapUnless(bundle.sceneId == (takes ? byteAt(frame, facts.header + 3) : 0x12), "id of a scene");
}

void requireRemoval(const ZclScenes& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 3 && facts.has(3, 3);
  qx::RemoveScenesBundle bundle{0xAB, 0xCDEF};
  requireTaken(frame.removeAllScenesResponse(bundle), takes);
  trapUnless(bundle.status == (takes ? byteAt(frame, facts.header) : 0xAB), "status of a removal");
  trapUnless(bundle.groupId == (takes ? wordAt(frame, facts.header + 1) : 0xCDEF), "group of a removal");
}

void requireSceneMembership(const ZclScenes& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 6 && facts.has(4, ANY);
  const bool counts = takes && facts.has(5, ANY);
  qx::SceneMembershipBundle bundle{0xAB, 0xCD, 0xEF01, 0x23, {1, 2, 3}};
  requireTaken(frame.getSceneMembershipResponse(bundle), takes);
  trapUnless(bundle.status == (takes ? byteAt(frame, facts.header) : 0xAB), "status of a membership");
  trapUnless(bundle.capacity == (takes ? byteAt(frame, facts.header + 1) : 0xCD), "capacity for scenes");
  trapUnless(bundle.groupId == (takes ? wordAt(frame, facts.header + 2) : 0xEF01), "group of a membership");
  const unsigned int count = byteAt(frame, facts.header + 4);
  trapUnless(bundle.sceneCount == (counts ? count : 0x23), "a short answer keeps the count");
  std::vector<unsigned char> ids{1, 2, 3};
  if (takes) ids.clear();
  for (unsigned int i = 0; counts && i < count; ++i) {
    ids.push_back(static_cast<unsigned char>(byteAt(frame, facts.header + 5 + i)));
  }
  trapUnless(bundle.sceneIds == ids, "the scenes are those of the frame");
}

/// The bytes of the slots after a walk from `at`, of which each was 0xEE.
std::vector<unsigned char> slotsOf(const U255Buff<unsigned char>& frame, unsigned int at) {
  std::vector<unsigned char> slots(16, 0xEE);
  for (unsigned int slot = 0; slot < 16; slot += 4) {
    if (at >= std::min(frame.length_, STORAGE)) {
      slots[slot] = slots[slot + 1] = 0xFF;
      slots[slot + 2] = slots[slot + 3] = 0;
      continue;
    }
    const unsigned int cluster = wordAt(frame, at);
    if (cluster != 0x0006 && cluster != 0x0008 && cluster != 0x0300) {
      at += 4;
      continue;
    }
    const unsigned int length = byteAt(frame, at + 2);
    slots[slot] = static_cast<unsigned char>(cluster);
    slots[slot + 1] = static_cast<unsigned char>(cluster >> 8);
    slots[slot + 2] = static_cast<unsigned char>(length);
    for (unsigned int i = 0; i < length && slot + 3 + i < slots.size(); ++i) {
      slots[slot + 3 + i] = static_cast<unsigned char>(byteAt(frame, at + 3 + i));
    }
    at += 3 + length;
  }
  return slots;
}

void requireSceneView(const ZclScenes& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 1 && facts.has(4, ANY);
  const bool whole = takes && facts.has(6, ANY);
  qx::ViewSceneBundle bundle{0xAB, 0xCDEF, 0x12, 0x3456, "left", {}};
  bundle.extensions.fill({0xEEEE, 0xEE, 0xEE});
  const tribool answer = frame.viewSceneResponse(bundle);
  requireTaken(answer, takes);
  trapUnless(!takes || static_cast<bool>(answer) == whole, "a view that ends behind its ids is false");
  trapUnless(bundle.status == (takes ? byteAt(frame, facts.header) : 0xAB), "status of a view");
  trapUnless(bundle.groupId == (takes ? wordAt(frame, facts.header + 1) : 0xCDEF), "group of a view");
  trapUnless(bundle.sceneId == (takes ? byteAt(frame, facts.header + 3) : 0x12), "scene of a view");
  trapUnless(bundle.transitionTime == (whole ? wordAt(frame, facts.header + 4) : 0x3456), "time of a view");
  const std::string name = textAt(frame, facts.header + 7, byteAt(frame, facts.header + 6));
  trapUnless(bundle.sceneName == (whole ? name : "left"), "a name is as long as its length byte says");
  std::vector<unsigned char> slots(16, 0xEE);
  if (whole) slots = slotsOf(frame, facts.header + 7);
  trapUnless(std::memcmp(bundle.extensions.data(), slots.data(), slots.size()) == 0, "the slots of a view");
}

void requireResponses(const U255Buff<unsigned char>& bytes, unsigned int length) {
  ZclGroups groups(bytes);
  groups.length_ = length;
  requireStatusAndGroup(groups, &ZclGroups::addGroupResponse, 0);
  requireStatusAndGroup(groups, &ZclGroups::remGroupResponse, 3);
  requireView(groups);
  requireMembership(groups);

  ZclScenes scenes(bytes);
  scenes.length_ = length;
  const unsigned int command = Facts(scenes).command;
  requireScene(scenes, &ZclScenes::sceneBundleResponse, true);
  requireScene(scenes, &ZclScenes::addSceneResponse, command == 0);
  requireScene(scenes, &ZclScenes::removeSceneResponse, command == 2);
  requireScene(scenes, &ZclScenes::storeSceneResponse, command == 4);
  requireRemoval(scenes);
  requireSceneMembership(scenes);
  requireSceneView(scenes);
}

/// Commands made of the bytes, in the frame that the bytes are.
void requireCommands(const U255Buff<unsigned char>& bytes) {
  const unsigned int header = Facts(bytes).header;
  const auto group = static_cast<unsigned short>(wordAt(bytes, header));
  const auto id = static_cast<unsigned char>(byteAt(bytes, header + 2));
  const std::string name = textAt(bytes, header, bytes.length_ % 24);

  ZclGroups named(bytes);
  bool thrown = false;
  try {
    named.addGroup(group, name);
  } catch (const std::runtime_error&) {
    thrown = true;
  }
  trapUnless(thrown == (name.size() > 16), "a name of up to 16 characters is taken");
  trapUnless(named.length_ == (thrown ? bytes.length_ : header + 3 + name.size()), "a refused name changes nothing");
  if (thrown) {
    trapUnless(std::memcmp(named.contents, bytes.contents, STORAGE) == 0, "a refused name changes no byte");
  } else {
    trapUnless(textAt(named, header + 3, byteAt(named, header + 2)) == name, "a name goes out behind its length");
  }

  std::vector<unsigned short> ids;
  for (unsigned int at = 0; at + 1 < bytes.length_; ++at) ids.push_back(static_cast<unsigned short>(wordAt(bytes, at)));
  ZclGroups asked(bytes);
  thrown = false;
  try {
    asked.getGroupMembership(ids);
  } catch (const std::runtime_error&) {
    thrown = true;
  }
  trapUnless(thrown == (header + 2 * ids.size() + 1 > STORAGE), "ids are taken as long as they fit");
  trapUnless(asked.length_ == (thrown ? header : header + 1 + 2 * ids.size()), "refused ids leave no payload");

  qx::SceneTableEntry entry;
  entry.SetSceneData(group, id, group, name, group, id);
  for (std::size_t slot = 0; slot < entry.extensions.size(); ++slot) {
    const auto at = header + 3 * static_cast<unsigned int>(slot);
    entry.extensions[slot] = {static_cast<unsigned short>(wordAt(bytes, at)),
                              static_cast<unsigned char>(byteAt(bytes, at + 2)), id};
  }
  const auto used = std::count_if(entry.extensions.begin(), entry.extensions.end(),
                                  [](const qx::SceneExtension& slot) { return slot.clusterId != 0xFFFF; });
  ZclScenes added(bytes);
  thrown = false;
  try {
    added.addScene(entry);
  } catch (const std::runtime_error&) {
    thrown = true;
  }
  trapUnless(thrown == (name.size() > 16), "a scene's name of up to 16 characters is taken");
  const std::size_t length = header + 6 + name.size() + 4 * static_cast<std::size_t>(used);
  trapUnless(added.length_ == (thrown ? bytes.length_ : length), "a scene has 4 bytes for each slot in use");

  ZclScenes makers(bytes);
  makers.unRecallScene(group, id);
  trapUnless(makers.length_ == 8 && makers.contents[0] == 5 && wordAt(makers, 1) == 0x1040, "the maker's header");
  trapUnless(makers.contents[3] == bytes.contents[3], "the sequence number keeps its place's byte");
  trapUnless(makers.contents[4] == 5 && wordAt(makers, 5) == group && makers.contents[7] == id, "the maker's command");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto length = static_cast<unsigned int>(std::min<std::size_t>(size, STORAGE));
  const U255Buff<unsigned char> bytes(data, length);
  requireResponses(bytes, length);
  // Lengths that leave bytes in the buffer behind the frame, and ones beyond the storage.
  for (const unsigned int other : {6U, 7U, length / 2, STORAGE, STORAGE + 1 + length, 0xFFFFFFFFU}) {
    requireResponses(bytes, other);
  }
  requireCommands(bytes);
  return 0;
}

// A whole frame of each command whose payload is known, in each of its forms.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::test {

struct WholeFrame {
  /// Of the command.
  const char* name;
  unsigned short profile;
  unsigned short cluster;
  const char* hex;
  /// Fields that a walk shows, each with its size: "groupId 2, groupName 4".
  const char* fields;
  /// Lengths of the beginnings that are whole frames themselves.
  std::vector<unsigned int> shorter = {};

  U255Buff<unsigned char> frame() const { return bytesOf(hex); }
};

inline void PrintTo(const WholeFrame& frame, std::ostream* out) { *out << frame.name << ": " << frame.hex; }

inline const std::vector<WholeFrame>& wholeFrames() {
  constexpr unsigned short HOME = 0x0104;
  constexpr unsigned short PRIVATE = 0xC25D;
  constexpr unsigned short ZDO = 0x0000;
  static const std::vector<WholeFrame> FRAMES = {
      // General commands. Their lists may end behind each record.
      {"read attributes", HOME, 0x0000, "00 05 00  04 00  05 00", "attributes 4", {3, 5}},
      {"read attributes response",
       HOME,
       0x0000,
       "18 05 01  04 00 00 20 2a  05 00 86  06 00 00 42 02 61 62",
       "attributes 15",
       {3, 8, 11}},
      {"write attributes", HOME, 0x0008, "00 05 02  11 00 20 c8  12 00 41 01 ff", "attributes 9", {3, 7}},
      {"write attributes undivided", HOME, 0x0008, "00 05 03  11 00 20 c8  12 00 41 01 ff", "attributes 9", {3, 7}},
      // The beginning of 4 bytes is a single status for all attributes at once.
      {"write attributes response", HOME, 0x0008, "18 05 04  86 01 40  88 02 40", "attributes 6", {3, 4, 6}},
      {"write attributes no response", HOME, 0x0008, "00 05 05  11 00 20 c8  12 00 41 01 ff", "attributes 9", {3, 7}},
      {"report attributes", HOME, 0x0008, "18 05 0a  11 00 20 c8  12 00 41 01 ff", "attributes 9", {3, 7}},
      {"report attributes", 0xC25F, 0x0001, "0c 40 10 05 0a  00 00 20 03  04 00 42 00", "attributes 8", {5, 9}},
      {"default response", HOME, 0x0006, "18 05 0b  42 81", "commandId 1, status 1"},
      {"discover attributes", HOME, 0x0000, "00 05 0c  01 02 0a", "startAttributeId 2, maximumAttributeIds 1"},
      {"discover commands received", HOME, 0x0000, "00 05 11  01 0a", "startCommandId 1, maximumCommandIds 1"},
      {"discover commands generated", HOME, 0x0000, "00 05 13  01 0a", "startCommandId 1, maximumCommandIds 1"},
      {"discover attributes extended", HOME, 0x0000, "00 05 15  01 02 0a", "startAttributeId 2, maximumAttributeIds 1"},

      {"identify", HOME, 0x0003, "01 05 00  1e 00", "identifyTime 2"},
      {"identify query", HOME, 0x0003, "01 05 01", ""},
      {"trigger effect", HOME, 0x0003, "01 05 40  02 01", "effectIdentifier 1, effectVariant 1"},
      {"identify query response", HOME, 0x0003, "09 05 00  1e 00", "timeout 2"},

      {"add group", HOME, 0x0004, "01 05 00  02 01  03 61 62 63", "groupId 2, groupName 4"},
      {"add group", HOME, 0x0004, "01 05 00  02 01  00", "groupId 2, groupName 1"},
      {"view group", HOME, 0x0004, "01 05 01  02 01", "groupId 2"},
      {"get group membership", HOME, 0x0004, "01 05 02  02  02 01  04 03", "groupCount 1, groupIds 4"},
      {"get group membership", HOME, 0x0004, "01 05 02  00", "groupCount 1, groupIds 0"},
      {"remove group", HOME, 0x0004, "01 05 03  02 01", "groupId 2"},
      {"remove all groups", HOME, 0x0004, "01 05 04", ""},
      {"add group if identifying", HOME, 0x0004, "01 05 05  02 01  01 61", "groupId 2, groupName 2"},
      {"add group response", HOME, 0x0004, "09 05 00  00  02 01", "status 1, groupId 2"},
      {"view group response", HOME, 0x0004, "09 05 01  00  02 01  02 61 62", "status 1, groupId 2, groupName 3"},
      {"view group response", HOME, 0x0004, "09 05 01  8b  02 01", "status 1, groupId 2"},
      {"view group response", HOME, 0x0004, "09 05 01  8b  02 01  00", "status 1, groupId 2, groupName 1", {6}},
      {"get group membership response", HOME, 0x0004, "09 05 02  08  02  02 01  04 03",
       "capacity 1, groupCount 1, groupIds 4"},
      {"remove group response", HOME, 0x0004, "09 05 03  8b  02 01", "status 1, groupId 2"},

      // A list of extensions may end behind each of them.
      {"add scene",
       HOME,
       0x0005,
       "01 05 00  02 01  03  0a 00  02 61 62  06 00 01 01  00 03 02 fe 01",
       "groupId 2, sceneId 1, transitionTime 2, sceneName 3, extensions 9",
       {11, 15}},
      {"view scene", HOME, 0x0005, "01 05 01  02 01  03", "groupId 2, sceneId 1"},
      {"remove scene", HOME, 0x0005, "01 05 02  02 01  03", "groupId 2, sceneId 1"},
      {"remove all scenes", HOME, 0x0005, "01 05 03  02 01", "groupId 2"},
      {"store scene", HOME, 0x0005, "01 05 04  02 01  03", "groupId 2, sceneId 1"},
      {"recall scene", HOME, 0x0005, "01 05 05  02 01  03  0a 00", "groupId 2, sceneId 1, transitionTime 2", {6}},
      {"get scene membership", HOME, 0x0005, "01 05 06  02 01", "groupId 2"},
      {"add scene response", HOME, 0x0005, "09 05 00  00  02 01  03", "status 1, groupId 2, sceneId 1"},
      {"view scene response",
       HOME,
       0x0005,
       "09 05 01  00  02 01  03  0a 00  01 61  06 00 01 01",
       "status 1, groupId 2, sceneId 1, transitionTime 2, sceneName 2, extensions 4",
       {11}},
      {"view scene response", HOME, 0x0005, "09 05 01  8b  02 01  03", "status 1, groupId 2, sceneId 1"},
      {"remove scene response", HOME, 0x0005, "09 05 02  8b  02 01  03", "status 1, groupId 2, sceneId 1"},
      {"remove all scenes response", HOME, 0x0005, "09 05 03  00  02 01", "status 1, groupId 2"},
      {"store scene response", HOME, 0x0005, "09 05 04  00  02 01  03", "status 1, groupId 2, sceneId 1"},
      {"get scene membership response", HOME, 0x0005, "09 05 06  00  10  02 01  02  03 04",
       "status 1, capacity 1, groupId 2, sceneCount 1, sceneIds 2"},
      {"get scene membership response", HOME, 0x0005, "09 05 06  85  10  02 01", "status 1, capacity 1, groupId 2"},
      {"un-recall scene", HOME, 0x0005, "05 40 10 00 05  02 01  03", "groupId 2, sceneId 1"},

      {"off", HOME, 0x0006, "01 05 00", ""},
      {"on", HOME, 0x0006, "01 05 01", ""},
      {"toggle", HOME, 0x0006, "01 05 02", ""},
      {"off with effect", HOME, 0x0006, "01 05 40  01 02", "effectIdentifier 1, effectVariant 1"},
      {"on with recall global scene", HOME, 0x0006, "01 05 41", ""},
      {"on with timed off", HOME, 0x0006, "01 05 42  01  64 00  32 01", "onOffControl 1, onTime 2, offWaitTime 2"},

      // All of them may end in front of both options. The rate has one byte or two.
      {"move to level",
       HOME,
       0x0008,
       "01 05 00  80  0a 01  01 02",
       "level 1, transitionTime 2, optionsMask 1, optionsOverride 1",
       {6}},
      {"move",
       HOME,
       0x0008,
       "01 05 01  01  03 02  03 04",
       "mode 1, rate 2, optionsMask 1, optionsOverride 1",
       {5, 6, 7}},
      {"move", HOME, 0x0008, "01 05 01  01  20  03 04", "mode 1, rate 1, optionsMask 1, optionsOverride 1", {5, 6}},
      {"step",
       HOME,
       0x0008,
       "01 05 02  00  10  01 02  03 04",
       "mode 1, stepSize 1, transitionTime 2, optionsMask 1, optionsOverride 1",
       {7}},
      {"stop", HOME, 0x0008, "01 05 03  01 02", "optionsMask 1, optionsOverride 1", {3}},
      {"move to level (with on/off)",
       HOME,
       0x0008,
       "01 05 04  80  0a 01  01 02",
       "level 1, transitionTime 2, optionsMask 1, optionsOverride 1",
       {6}},
      {"move (with on/off)",
       HOME,
       0x0008,
       "01 05 05  01  03 02  03 04",
       "mode 1, rate 2, optionsMask 1, optionsOverride 1",
       {5, 6, 7}},
      {"step (with on/off)",
       HOME,
       0x0008,
       "01 05 06  00  10  01 02  03 04",
       "mode 1, stepSize 1, transitionTime 2, optionsMask 1, optionsOverride 1",
       {7}},
      {"stop (with on/off)", HOME, 0x0008, "01 05 07  01 02", "optionsMask 1, optionsOverride 1", {3}},

      {"query next image request", HOME, 0x0019, "01 05 01  00  40 10  34 12  04 03 02 01",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4"},
      {"query next image request", HOME, 0x0019, "01 05 01  01  40 10  34 12  04 03 02 01  78 56",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, hardwareVersion 2"},
      {"image block request", HOME, 0x0019, "01 05 03  00  40 10  34 12  04 03 02 01  00 01 00 00  40",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, maximumDataSize 1"},
      {"image block request", HOME, 0x0019,
       "01 05 03  01  40 10  34 12  04 03 02 01  00 01 00 00  40  77 66 55 44 33 22 11 00",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, maximumDataSize 1, "
       "requestNodeAddress 8"},
      {"image block request", HOME, 0x0019, "01 05 03  02  40 10  34 12  04 03 02 01  00 01 00 00  40  32 00",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, maximumDataSize 1, "
       "minimumBlockPeriod 2"},
      {"image block request", HOME, 0x0019,
       "01 05 03  03  40 10  34 12  04 03 02 01  00 01 00 00  40  77 66 55 44 33 22 11 00  32 00",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, maximumDataSize 1, "
       "requestNodeAddress 8, minimumBlockPeriod 2"},
      {"image page request", HOME, 0x0019, "01 05 04  00  40 10  34 12  04 03 02 01  00 01 00 00  40  00 02  0a 00",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, maximumDataSize 1, pageSize 2, "
       "responseSpacing 2"},
      {"image page request", HOME, 0x0019,
       "01 05 04  01  40 10  34 12  04 03 02 01  00 01 00 00  40  00 02  0a 00  77 66 55 44 33 22 11 00",
       "fieldControl 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, maximumDataSize 1, pageSize 2, "
       "responseSpacing 2, requestNodeAddress 8"},
      {"upgrade end request", HOME, 0x0019, "01 05 06  00  40 10  34 12  04 03 02 01",
       "status 1, manufacturerCode 2, imageType 2, fileVersion 4"},
      {"image notify", HOME, 0x0019, "09 05 00  00  32", "payloadType 1, queryJitter 1"},
      {"image notify", HOME, 0x0019, "09 05 00  01  32  40 10", "payloadType 1, queryJitter 1, manufacturerCode 2"},
      {"image notify", HOME, 0x0019, "09 05 00  02  32  40 10  34 12",
       "payloadType 1, queryJitter 1, manufacturerCode 2, imageType 2"},
      {"image notify", HOME, 0x0019, "09 05 00  03  32  40 10  34 12  04 03 02 01",
       "payloadType 1, queryJitter 1, manufacturerCode 2, imageType 2, fileVersion 4"},
      {"image notify", HOME, 0x0019, "09 05 00  04  32  40 10  34 12  04 03 02 01",
       "payloadType 1, queryJitter 1, manufacturerCode 2, imageType 2, fileVersion 4"},
      {"query next image response", HOME, 0x0019, "09 05 02  00  40 10  34 12  04 03 02 01  00 10 00 00",
       "status 1, manufacturerCode 2, imageType 2, fileVersion 4, imageSize 4"},
      {"query next image response", HOME, 0x0019, "09 05 02  98", "status 1"},
      {"image block response", HOME, 0x0019, "09 05 05  00  40 10  34 12  04 03 02 01  00 01 00 00  03 aa bb cc",
       "status 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, dataSize 1, data 3"},
      {"image block response",
       HOME,
       0x0019,
       "09 05 05  97  10 00 00 00  20 00 00 00  32 00",
       "status 1, currentTime 4, requestTime 4, minimumBlockPeriod 2",
       {4}},
      // The beginning of 14 bytes has the length of a "wait for data".
      {"image block response",
       HOME,
       0x0019,
       "09 05 05  97  40 10  34 12  04 03 02 01  00 01 00 00  00",
       "status 1, manufacturerCode 2, imageType 2, fileVersion 4, fileOffset 4, dataSize 1, data 0",
       {4, 14}},
      {"image block response", HOME, 0x0019, "09 05 05  96", "status 1"},
      {"image block response", HOME, 0x0019, "09 05 05  98", "status 1"},
      {"upgrade end response", HOME, 0x0019, "09 05 07  40 10  34 12  04 03 02 01  10 00 00 00  20 00 00 00",
       "manufacturerCode 2, imageType 2, fileVersion 4, currentTime 4, upgradeTime 4"},

      {"immediate announce", PRIVATE, 0x0001, "01 05 00  02  01 00  02 00", "idCount 1, ids 4"},
      {"immediate announce", PRIVATE, 0x0001, "01 05 00  00", "idCount 1, ids 0"},
      {"read attributes response", PRIVATE, 0x0001, "11 05 01  0c 00 00 20 0f  01 00 86", "attributes 8", {3, 8}},
      {"write attributes no response",
       PRIVATE,
       0x0001,
       "11 05 05  0c 00 20 0f  01 00 21 02 01",
       "attributes 9",
       {3, 7}},

      {"reset counters", PRIVATE, 0x0002, "01 05 01  01", "reset 1"},
      {"display signal strength", PRIVATE, 0x0002, "01 05 02  00", "display 1"},

      {"network LQI request", ZDO, 0x0031, "07  09", "startIndex 1"},
      {"network routing request", ZDO, 0x0032, "07  09", "startIndex 1"},
      {"leave request", ZDO, 0x0034, "07  77 66 55 44 33 22 11 00  40", "device 8, options 1"},
      {"permit join request", ZDO, 0x0036, "07  3c  01", "duration 1, trustCentreSignificance 1"},
      {"network update request", ZDO, 0x0038, "07  00 80 00 00  05  03", "channelMask 4, duration 1, scanCount 1"},
      {"network update request", ZDO, 0x0038, "07  00 80 00 00  06", "channelMask 4, duration 1"},
      {"network update request", ZDO, 0x0038, "07  00 80 00 00  fd", "channelMask 4, duration 1"},
      {"network update request", ZDO, 0x0038, "07  00 80 00 00  fe  01", "channelMask 4, duration 1, updateId 1"},
      {"network update request", ZDO, 0x0038, "07  00 80 00 00  ff  01  34 12",
       "channelMask 4, duration 1, updateId 1, managerAddress 2"},
      {"network LQI response", ZDO, 0x8031,
       "07  00  02  00  01  11 22 33 44 55 66 77 88  77 66 55 44 33 22 11 00  34 12  05 02 02 ff",
       "status 1, totalNeighborTableEntriesOnDevice 1, startIndex 1, entries 1, hops 22"},
      {"network LQI response", ZDO, 0x8031, "07  00  00  00  00",
       "status 1, totalNeighborTableEntriesOnDevice 1, startIndex 1, entries 1, hops 0"},
      {"network LQI response", ZDO, 0x8031, "07  84", "status 1"},
      {"network LQI response",
       ZDO,
       0x8031,
       "07  84  00  00  00",
       "status 1, totalNeighborTableEntriesOnDevice 1, startIndex 1, entries 1, hops 0",
       {2}},
      {"network routing response", ZDO, 0x8032, "07  00  02  00  02  01 02 38 03 04  11 12 03 13 14",
       "status 1, totalRoutingTableEntriesOnDevice 1, startIndex 1, entries 1, routes 10"},
      {"network routing response", ZDO, 0x8032, "07  84", "status 1"},
      {"leave response", ZDO, 0x8034, "07  00", "status 1"},
      {"permit join response", ZDO, 0x8036, "07  84", "status 1"},
      // Channels 11 and 13.
      {"network update response", ZDO, 0x8038, "07  00  00 28 00 00  05 00  01 00  02  00 ff",
       "status 1, scannedChannels 4, transmissions 2, failures 2, energyCount 1, energyLevels 2"},
      // Channels outside of 11 to 26 have no value.
      {"network update response", ZDO, 0x8038, "07  00  ff 07 00 f8  05 00  01 00  00",
       "status 1, scannedChannels 4, transmissions 2, failures 2, energyCount 1, energyLevels 0"},
      {"network update response", ZDO, 0x8038, "07  84", "status 1"},
  };
  return FRAMES;
}

}  // namespace qx::test

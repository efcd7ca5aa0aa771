#include "vso/layout/ZclCommandLayouts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "support/Bytes.h"
#include "tests/vso/layout/WholeFrames.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

constexpr unsigned short HOME = 0x0104;
constexpr unsigned short PRIVATE = 0xC25D;

constexpr unsigned char GENERAL = 0x00;
constexpr unsigned char TO_SERVER = 0x01;
constexpr unsigned char TO_CLIENT = 0x09;

/// No frame carries this one here, so that it stands for none.
constexpr unsigned int NO_CODE = 0x10000;

/// A frame that is no more than its header.
ZclMessage header(unsigned char frameControl, unsigned char command, unsigned int manufacturerCode = NO_CODE) {
  if (manufacturerCode == NO_CODE) return ZclMessage(test::bytes({frameControl, 0x05, command}));
  return ZclMessage(
      test::bytes({static_cast<unsigned char>(frameControl | 0x04), static_cast<unsigned char>(manufacturerCode & 0xFF),
                   static_cast<unsigned char>(manufacturerCode >> 8), 0x05, command}));
}

std::string nameOf(const CommandLayout* layout) { return layout != nullptr ? layout->name : "none"; }

TEST(ZclCommandLayouts, NameTheGeneralCommandsOfTheStandard) {
  constexpr const char* NAMES[] = {
      "read attributes",                        // 0x00
      "read attributes response",               // 0x01
      "write attributes",                       // 0x02
      "write attributes undivided",             // 0x03
      "write attributes response",              // 0x04
      "write attributes no response",           // 0x05
      "configure reporting",                    // 0x06
      "configure reporting response",           // 0x07
      "read reporting configuration",           // 0x08
      "read reporting configuration response",  // 0x09
      "report attributes",                      // 0x0a
      "default response",                       // 0x0b
      "discover attributes",                    // 0x0c
      "discover attributes response",           // 0x0d
      "read attributes structured",             // 0x0e
      "write attributes structured",            // 0x0f
      "write attributes structured response",   // 0x10
      "discover commands received",             // 0x11
      "discover commands received response",    // 0x12
      "discover commands generated",            // 0x13
      "discover commands generated response",   // 0x14
      "discover attributes extended",           // 0x15
      "discover attributes extended response",  // 0x16
  };
  for (unsigned int command = 0; command <= 0xFF; ++command) {
    const std::string expected = command <= 0x16 ? NAMES[command] : "none";
    // The direction and what is asked of the receiver make no difference.
    for (const unsigned char frameControl : {0x00, 0x08, 0x10, 0x18}) {
      const ZclMessage frame = header(frameControl, static_cast<unsigned char>(command));
      EXPECT_EQ(nameOf(findZclCommand(HOME, 0x0006, frame)), expected) << command;
    }
  }
}

TEST(ZclCommandLayouts, NameGeneralCommandsInEveryClusterAndBehindEveryManufacturerCode) {
  for (const unsigned short profile : {0x0104, 0xC25D, 0xC25F, 0x1234}) {
    for (const unsigned short cluster : {0x0000, 0x0001, 0x0006, 0xFC00}) {
      for (const unsigned int code : {NO_CODE, 0x0000u, 0x1040u, 0xFFFFu}) {
        EXPECT_EQ(nameOf(findZclCommand(profile, cluster, header(GENERAL, 0x0A, code))), "report attributes");
      }
    }
  }
}

/// Profile, cluster, frame control, manufacturer code and command.
using Place = std::tuple<unsigned short, unsigned short, unsigned char, unsigned int, unsigned int>;

const std::map<Place, std::string> CLUSTER_COMMANDS = {
    {{HOME, 0x0003, TO_SERVER, NO_CODE, 0x00}, "identify"},
    {{HOME, 0x0003, TO_SERVER, NO_CODE, 0x01}, "identify query"},
    {{HOME, 0x0003, TO_SERVER, NO_CODE, 0x40}, "trigger effect"},
    {{HOME, 0x0003, TO_CLIENT, NO_CODE, 0x00}, "identify query response"},

    {{HOME, 0x0004, TO_SERVER, NO_CODE, 0x00}, "add group"},
    {{HOME, 0x0004, TO_SERVER, NO_CODE, 0x01}, "view group"},
    {{HOME, 0x0004, TO_SERVER, NO_CODE, 0x02}, "get group membership"},
    {{HOME, 0x0004, TO_SERVER, NO_CODE, 0x03}, "remove group"},
    {{HOME, 0x0004, TO_SERVER, NO_CODE, 0x04}, "remove all groups"},
    {{HOME, 0x0004, TO_SERVER, NO_CODE, 0x05}, "add group if identifying"},
    {{HOME, 0x0004, TO_CLIENT, NO_CODE, 0x00}, "add group response"},
    {{HOME, 0x0004, TO_CLIENT, NO_CODE, 0x01}, "view group response"},
    {{HOME, 0x0004, TO_CLIENT, NO_CODE, 0x02}, "get group membership response"},
    {{HOME, 0x0004, TO_CLIENT, NO_CODE, 0x03}, "remove group response"},

    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x00}, "add scene"},
    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x01}, "view scene"},
    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x02}, "remove scene"},
    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x03}, "remove all scenes"},
    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x04}, "store scene"},
    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x05}, "recall scene"},
    {{HOME, 0x0005, TO_SERVER, NO_CODE, 0x06}, "get scene membership"},
    {{HOME, 0x0005, TO_SERVER, 0x1040, 0x05}, "un-recall scene"},
    {{HOME, 0x0005, TO_CLIENT, NO_CODE, 0x00}, "add scene response"},
    {{HOME, 0x0005, TO_CLIENT, NO_CODE, 0x01}, "view scene response"},
    {{HOME, 0x0005, TO_CLIENT, NO_CODE, 0x02}, "remove scene response"},
    {{HOME, 0x0005, TO_CLIENT, NO_CODE, 0x03}, "remove all scenes response"},
    {{HOME, 0x0005, TO_CLIENT, NO_CODE, 0x04}, "store scene response"},
    {{HOME, 0x0005, TO_CLIENT, NO_CODE, 0x06}, "get scene membership response"},

    {{HOME, 0x0006, TO_SERVER, NO_CODE, 0x00}, "off"},
    {{HOME, 0x0006, TO_SERVER, NO_CODE, 0x01}, "on"},
    {{HOME, 0x0006, TO_SERVER, NO_CODE, 0x02}, "toggle"},
    {{HOME, 0x0006, TO_SERVER, NO_CODE, 0x40}, "off with effect"},
    {{HOME, 0x0006, TO_SERVER, NO_CODE, 0x41}, "on with recall global scene"},
    {{HOME, 0x0006, TO_SERVER, NO_CODE, 0x42}, "on with timed off"},

    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x00}, "move to level"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x01}, "move"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x02}, "step"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x03}, "stop"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x04}, "move to level (with on/off)"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x05}, "move (with on/off)"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x06}, "step (with on/off)"},
    {{HOME, 0x0008, TO_SERVER, NO_CODE, 0x07}, "stop (with on/off)"},

    {{HOME, 0x0019, TO_CLIENT, NO_CODE, 0x00}, "image notify"},
    {{HOME, 0x0019, TO_SERVER, NO_CODE, 0x01}, "query next image request"},
    {{HOME, 0x0019, TO_CLIENT, NO_CODE, 0x02}, "query next image response"},
    {{HOME, 0x0019, TO_SERVER, NO_CODE, 0x03}, "image block request"},
    {{HOME, 0x0019, TO_SERVER, NO_CODE, 0x04}, "image page request"},
    {{HOME, 0x0019, TO_CLIENT, NO_CODE, 0x04}, "image page request"},
    {{HOME, 0x0019, TO_CLIENT, NO_CODE, 0x05}, "image block response"},
    {{HOME, 0x0019, TO_SERVER, NO_CODE, 0x06}, "upgrade end request"},
    {{HOME, 0x0019, TO_CLIENT, NO_CODE, 0x06}, "upgrade end request"},
    {{HOME, 0x0019, TO_CLIENT, NO_CODE, 0x07}, "upgrade end response"},

    {{PRIVATE, 0x0001, TO_SERVER, NO_CODE, 0x00}, "immediate announce"},
    {{PRIVATE, 0x0001, TO_SERVER, NO_CODE, 0x01}, "read attributes response"},
    {{PRIVATE, 0x0001, TO_SERVER, NO_CODE, 0x05}, "write attributes no response"},
};

TEST(ZclCommandLayouts, NameTheCommandsOfTheClustersAndNoOthers) {
  for (const unsigned short profile : {0x0104, 0x0105, 0xC25D, 0xC25F}) {
    for (const unsigned short cluster :
         {0x0000, 0x0001, 0x0003, 0x0004, 0x0005, 0x0006, 0x0007, 0x0008, 0x000A, 0x0019, 0x0B05, 0x0105, 0xFFFF}) {
      for (const unsigned char frameControl : {TO_SERVER, TO_CLIENT}) {
        for (const unsigned int code : {NO_CODE, 0x0000u, 0x1040u, 0x4010u}) {
          for (unsigned int command = 0; command <= 0xFF; ++command) {
            const auto row = CLUSTER_COMMANDS.find({profile, cluster, frameControl, code, command});
            const std::string expected = row != CLUSTER_COMMANDS.end() ? row->second : "none";
            const ZclMessage frame = header(frameControl, static_cast<unsigned char>(command), code);
            ASSERT_EQ(nameOf(findZclCommand(profile, cluster, frame)), expected)
                << profile << ' ' << cluster << ' ' << test::hex(frame);
          }
        }
      }
    }
  }
}

/// The tests of walks and verdicts stand on those frames.
TEST(ZclCommandLayouts, OfTheClustersAreEachAmongTheWholeFrames) {
  const std::vector<test::WholeFrame>& frames = test::wholeFrames();
  for (const auto& [place, name] : CLUSTER_COMMANDS) {
    const bool isThere = std::any_of(frames.begin(), frames.end(), [&place = place, &name = name](const auto& whole) {
      return whole.profile == std::get<0>(place) && whole.cluster == std::get<1>(place) && whole.name == name;
    });
    EXPECT_TRUE(isThere) << name;
  }
}

TEST(ZclCommandLayouts, NameNoCommandOfAReservedFrameType) {
  for (const unsigned char frameControl : {0x02, 0x03, 0x0A, 0x0B}) {
    EXPECT_EQ(nameOf(findZclCommand(HOME, 0x0006, header(frameControl, 0x00))), "none");
  }
}

}  // namespace
}  // namespace qx

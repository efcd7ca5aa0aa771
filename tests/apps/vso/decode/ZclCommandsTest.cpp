#include "apps/vso/decode/ZclCommands.h"

#include <gtest/gtest.h>

#include <string>

namespace qx::app {
namespace {

constexpr bool FROM_CLIENT = false;
constexpr bool FROM_SERVER = true;

std::string nameOf(const ZclCommandRow* row) { return row != nullptr ? row->name : "none"; }

TEST(ZclCommands, NameTheGeneralCommandsOfTheStandard) {
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
    EXPECT_EQ(nameOf(findGeneralCommand(static_cast<unsigned char>(command))), expected) << command;
  }
}

TEST(ZclCommands, NameTheCommandsOfTheClusters) {
  constexpr struct {
    unsigned short cluster;
    bool fromServer;
    unsigned char command;
    const char* name;
  } COMMANDS[] = {
      {0x0003, FROM_CLIENT, 0x00, "identify"},
      {0x0003, FROM_CLIENT, 0x01, "identify query"},
      {0x0003, FROM_CLIENT, 0x40, "trigger effect"},
      {0x0003, FROM_SERVER, 0x00, "identify query response"},
      {0x0006, FROM_CLIENT, 0x00, "off"},
      {0x0006, FROM_CLIENT, 0x01, "on"},
      {0x0006, FROM_CLIENT, 0x02, "toggle"},
      {0x0006, FROM_CLIENT, 0x40, "off with effect"},
      {0x0006, FROM_CLIENT, 0x41, "on with recall global scene"},
      {0x0006, FROM_CLIENT, 0x42, "on with timed off"},
      {0x0008, FROM_CLIENT, 0x00, "move to level"},
      {0x0008, FROM_CLIENT, 0x01, "move"},
      {0x0008, FROM_CLIENT, 0x02, "step"},
      {0x0008, FROM_CLIENT, 0x03, "stop"},
      {0x0008, FROM_CLIENT, 0x04, "move to level (with on/off)"},
      {0x0008, FROM_CLIENT, 0x05, "move (with on/off)"},
      {0x0008, FROM_CLIENT, 0x06, "step (with on/off)"},
      {0x0008, FROM_CLIENT, 0x07, "stop (with on/off)"},
  };
  for (const auto& expected : COMMANDS) {
    EXPECT_EQ(nameOf(findClusterCommand(expected.cluster, expected.fromServer, expected.command)), expected.name);
  }
}

TEST(ZclCommands, OfTheOtherDirectionAreOthers) {
  EXPECT_EQ(nameOf(findClusterCommand(0x0006, FROM_SERVER, 0x02)), "none");
  EXPECT_EQ(nameOf(findClusterCommand(0x0003, FROM_SERVER, 0x01)), "none");
}

TEST(ZclCommands, AreUnknownOutsideTheTable) {
  EXPECT_EQ(nameOf(findClusterCommand(0x0006, FROM_CLIENT, 0x03)), "none");
  EXPECT_EQ(nameOf(findClusterCommand(0xFFFF, FROM_CLIENT, 0x00)), "none");
}

}  // namespace
}  // namespace qx::app

// The table of the commands that can be built: a row for each, in groups.
#pragma once

#include <string>
#include <vector>

#include "apps/vso/encode/Argument.h"
#include "apps/vso/encode/Arguments.h"
#include "vso/identifiers/U255Buff.h"

namespace qx::app {

/// A frame and the ids under which it travels; for ZDO profile 0 and the command.
struct BuiltFrame {
  unsigned short profile = 0;
  unsigned short cluster = 0;
  U255Buff<unsigned char> bytes;
};

/// One command. Behind its own arguments stand those of all frames of its kind.
struct CommandRow {
  const char* name;
  const char* description;
  std::vector<Argument> arguments;
  /// Builds the frame with the library's classes. Throws what the library throws, and BadArgument.
  BuiltFrame (*build)(const Arguments& in);
};

struct CommandGroup {
  const char* name;
  const char* description;
  std::vector<CommandRow> commands;
};

/// All of them, in the order of the help.
const std::vector<CommandGroup>& commandGroups();

/// "level-control move-to-level --level 0..255 --transition-time 0..65535 [--sequence 0..255]": what is optional stands
/// in brackets.
std::string usageOf(const CommandGroup& group, const CommandRow& command);

}  // namespace qx::app

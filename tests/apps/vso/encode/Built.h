// Frames built from the table, for tests.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "apps/vso/encode/CommandRow.h"

namespace qx::test {

/// How a command is called: each argument and its value in turn. A flag has the value "".
struct Call {
  const char* group;
  const char* command;
  std::vector<std::string> arguments = {};
};

inline const app::CommandRow& rowOf(const Call& call) {
  for (const app::CommandGroup& group : app::commandGroups()) {
    for (const app::CommandRow& row : group.commands) {
      if (std::string(group.name) == call.group && std::string(row.name) == call.command) return row;
    }
  }
  throw std::logic_error(std::string("no command ") + call.group + " " + call.command);
}

inline app::Arguments::Values valuesOf(const Call& call) {
  app::Arguments::Values values;
  for (std::size_t i = 0; i + 1 < call.arguments.size(); i += 2) {
    values[call.arguments[i]].push_back(call.arguments[i + 1]);
  }
  return values;
}

inline app::BuiltFrame build(const Call& call) {
  const app::CommandRow& row = rowOf(call);
  return row.build(app::Arguments(row.arguments, valuesOf(call)));
}

/// "groups add-group --group-id 1", to name a failing call.
inline std::string nameOf(const Call& call) {
  std::string name = std::string(call.group) + " " + call.command;
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    name += i % 2 == 0 ? " --" + call.arguments[i] : call.arguments[i].empty() ? "" : " " + call.arguments[i];
  }
  return name;
}

}  // namespace qx::test

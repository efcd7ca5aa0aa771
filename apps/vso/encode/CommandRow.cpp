#include "apps/vso/encode/CommandRow.h"

#include "apps/vso/encode/commands/commandGroups.h"

namespace qx::app {

const std::vector<CommandGroup>& commandGroups() {
  static const std::vector<CommandGroup> groups = {
      generalCommands(), identifyCommands(),   groupsCommands(), scenesCommands(),      onOffCommands(),
      levelCommands(),   timeCommands(),       otaCommands(),    announceCommands(),    immediateAnnounceCommands(),
      sscpCommands(),    sscpPacketCommands(), setZapCommands(), diagnosticsCommands(), zdoCommands(),
  };
  return groups;
}

std::string usageOf(const CommandGroup& group, const CommandRow& command) {
  std::string usage = std::string(group.name) + " " + command.name;
  for (const Argument& argument : command.arguments) {
    const std::string form = argument.form();
    const std::string shown = std::string("--") + argument.name + (form.empty() ? "" : " " + form);
    usage += argument.isRequired ? " " + shown : " [" + shown + "]";
    if (argument.isRepeated) usage += "...";
  }
  return usage;
}

}  // namespace qx::app

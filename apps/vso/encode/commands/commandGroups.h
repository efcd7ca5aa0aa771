// The groups of the table, one function for each.
#pragma once

#include "apps/vso/encode/CommandRow.h"

namespace qx::app {

CommandGroup generalCommands();
CommandGroup identifyCommands();
CommandGroup groupsCommands();
CommandGroup scenesCommands();
CommandGroup onOffCommands();
CommandGroup levelCommands();
CommandGroup timeCommands();
CommandGroup otaCommands();
CommandGroup announceCommands();
CommandGroup immediateAnnounceCommands();
CommandGroup sscpCommands();
CommandGroup sscpPacketCommands();
CommandGroup setZapCommands();
CommandGroup diagnosticsCommands();
CommandGroup zdoCommands();

}  // namespace qx::app

// The ZDO commands of the library and what they carry.
#pragma once

#include "vso/layout/CommandLayout.h"

namespace qx {

/// The layout behind the sequence number; null for a command that is not known. A response begins with its status.
const CommandLayout* findZdoCommand(unsigned short commandId) noexcept;

}  // namespace qx

// The ZCL commands that are known by name, and what they carry.
#pragma once

#include "vso/layout/CommandLayout.h"

namespace qx {

class ZclMessage;

/// The layout of a frame's payload, found by its header and the ids that it travelled under; null for a command that is
/// not known. The general commands are the same for all clusters. The frame must have its whole header.
const CommandLayout* findZclCommand(unsigned short profile, unsigned short cluster, const ZclMessage& frame) noexcept;

}  // namespace qx

// What the rows of the table share: the arguments of all frames of a kind, and what becomes of the frame in the end.
#pragma once

#include <vector>

#include "apps/vso/encode/CommandRow.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zdo/ZdoRequest.h"

namespace qx::app {

/// The row's own arguments, and behind them those of every ZCL frame: the sequence number and the disabled default
/// response.
std::vector<Argument> zclArguments(std::vector<Argument> own);
/// The row's own arguments, and behind them those of every ZDO frame: the destination and the sequence number.
std::vector<Argument> zdoArguments(std::vector<Argument> own);

/// The frame with what `zclArguments` added, under the ids of its class.
BuiltFrame zclFrame(ZclMessage& frame, const Arguments& in);
/// The same under ids of the caller's choice.
BuiltFrame zclFrame(ZclMessage& frame, unsigned short profile, unsigned short cluster, const Arguments& in);
/// The frame with the sequence number that was asked for.
BuiltFrame zdoFrame(const ZdoRequest& frame, const Arguments& in);
/// Where the frame goes.
Euid destination(const Arguments& in);

}  // namespace qx::app

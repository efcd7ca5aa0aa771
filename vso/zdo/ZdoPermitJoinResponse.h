// What a node answers to a permit join request.
#pragma once

#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx {

/// Sequence number and status alone. A received frame becomes a ZdoResponse first.
class ZdoPermitJoinResponse : public ZdoResponse {
 public:
  static constexpr unsigned short COMMAND_ID = ZdoCommand::PERMIT_JOIN | ZdoCommand::RESPONSE;

  ZdoPermitJoinResponse() noexcept : ZdoResponse(COMMAND_ID) {}
  /// Takes over the command too.
  explicit ZdoPermitJoinResponse(const ZdoResponse& response) noexcept : ZdoResponse(response) {}
};

}  // namespace qx

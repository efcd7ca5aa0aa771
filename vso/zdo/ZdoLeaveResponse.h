// What a device answers to a leave request.
#pragma once

#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx {

/// Sequence number and status alone.
class ZdoLeaveResponse : public ZdoResponse {
 public:
  static constexpr unsigned short COMMAND_ID = ZdoCommand::LEAVE | ZdoCommand::RESPONSE;

  ZdoLeaveResponse() noexcept : ZdoResponse(COMMAND_ID) {}
  explicit ZdoLeaveResponse(const U255Buff<unsigned char>& frame) noexcept : ZdoResponse(COMMAND_ID, frame) {}
  /// Takes over the command too.
  explicit ZdoLeaveResponse(const ZdoResponse& response) noexcept : ZdoResponse(response) {}
};

}  // namespace qx

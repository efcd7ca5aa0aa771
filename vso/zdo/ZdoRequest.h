// The base of every ZDO request.
#pragma once

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/FrameWriter.h"
#include "vso/identifiers/U255Buff.h"

namespace qx {

/// One ZDO request, held in the object exactly as it travels: byte 0 is the sequence number, the payload follows. Where
/// it goes and which command it is stand beside the frame, since on the air both travel in the lower layers.
///
/// A request takes its sequence number when it is built. Copies keep it: a request that is sent again carries the same.
/// Nothing here logs or allocates, and only the dealer of sequence numbers may throw, when it is made.
class ZdoRequest : public U255Buff<unsigned char> {
 public:
  /// A frame that holds its sequence number alone.
  ZdoRequest(const Euid& destination, unsigned short commandId);
  /// A frame that is there already. Takes no sequence number. One of more than 255 bytes gives an empty frame.
  ZdoRequest(const Euid& destination, unsigned short commandId, const U255Buff<unsigned char>& frame) noexcept
      : U255Buff<unsigned char>(frame), destination_(destination), commandId_(commandId) {}

  /// Long address of the node to which the request goes. Not part of the frame.
  const Euid& destination() const noexcept { return destination_; }
  /// 0 in an empty frame that came through the constructors.
  unsigned char seqNum() const noexcept { return FrameReader(*this).u8(); }
  /// A ZdoCommand. Not part of the frame.
  unsigned short commandId() const noexcept { return commandId_; }

 protected:
  /// A writer that stands behind what the frame holds. `endPayload` closes what it wrote.
  FrameWriter payload() noexcept { return {*this, length_}; }
  void endPayload(const FrameWriter& writer) noexcept { length_ = writer.at(); }

 private:
  Euid destination_;
  unsigned short commandId_;
};

}  // namespace qx

// The base of every ZDO response.
#pragma once

#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/U255Buff.h"
#include "vso/zdo/ZdoStatus.h"

namespace qx {

/// One ZDO response as it arrived: byte 0 is the sequence number of the request that it answers, byte 1 the status, the
/// rest depends on the command. The command stands beside the frame. Nothing here throws, logs or allocates.
///
/// A frame that is too short is read all the same: in one that came through the constructors the missing bytes are
/// zeros.
class ZdoResponse : public U255Buff<unsigned char> {
 public:
  /// An empty frame.
  explicit ZdoResponse(unsigned short commandId) noexcept : commandId_(commandId) {}
  /// A received frame. One of more than 255 bytes gives an empty frame.
  ZdoResponse(unsigned short commandId, const U255Buff<unsigned char>& frame) noexcept
      : U255Buff<unsigned char>(frame), commandId_(commandId) {}

  /// 0 in an empty frame that came through the constructors.
  unsigned char seqNum() const noexcept { return byteAt(SEQUENCE_OFFSET); }
  /// A ZdoCommand with RESPONSE. Not part of the frame.
  unsigned short commandId() const noexcept { return commandId_; }
  /// A ZdoStatus: an empty frame answers QX_ZDP_NO_MATCH, one of a single byte that came through the constructors
  /// success.
  unsigned char status() const noexcept {
    if (length_ == 0) return QX_ZDP_NO_MATCH;
    return byteAt(STATUS_OFFSET);
  }

  /// "QX_ZDP_SUCCESS" and so on; "QX_UKNOWN_ZDP_STATUS" for a value without a name.
  static const char* statusStr(ZdoStatus status);

 protected:
  unsigned char byteAt(unsigned int offset) const noexcept { return FrameReader(*this, offset).u8(); }

 private:
  static constexpr unsigned int SEQUENCE_OFFSET = 0;
  static constexpr unsigned int STATUS_OFFSET = 1;

  unsigned short commandId_;
};

}  // namespace qx

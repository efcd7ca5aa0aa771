#include "vso/zdo/ZdoNetworkUpdateRequest.h"

#include "vso/zdo/ZdoCommand.h"

namespace qx {

namespace {

constexpr unsigned int MASK_OFFSET = 1;
constexpr unsigned int DURATION_OFFSET = 5;

constexpr int FIRST_CHANNEL = 11;
constexpr int LAST_CHANNEL = 26;

}  // namespace

unsigned char ZdoNetworkUpdateRequest::updateId_ = 0;

ZdoNetworkUpdateRequest::ZdoNetworkUpdateRequest(const Euid& destination, unsigned int channelMask,
                                                 unsigned char duration, unsigned char scanCount,
                                                 unsigned short managerAddress)
    : ZdoRequest(destination, ZdoCommand::NETWORK_UPDATE) {
  FrameWriter out = payload();
  out.u32le(channelMask);
  out.u8(duration);
  if (duration <= LAST_SCAN) out.u8(scanCount);
  if (duration >= CHANNEL_CHANGE) out.u8(upId());
  if (duration == MANAGER_UPDATE) out.u16le(managerAddress);
  endPayload(out);
}

ZdoNetworkUpdateRequest::ZdoNetworkUpdateRequest(const U255Buff<unsigned char>& frame) noexcept
    : ZdoRequest(Euid(), ZdoCommand::NETWORK_UPDATE, frame) {}

unsigned char ZdoNetworkUpdateRequest::duration() const noexcept { return FrameReader(*this, DURATION_OFFSET).u8(); }

int ZdoNetworkUpdateRequest::channel() const noexcept {
  const unsigned int mask = FrameReader(*this, MASK_OFFSET).u32le();
  if (mask == ALL_CHANNELS) return -1;
  for (int channel = FIRST_CHANNEL; channel <= LAST_CHANNEL; ++channel) {
    if (mask == 1U << channel) return channel;
  }
  return 0;
}

}  // namespace qx

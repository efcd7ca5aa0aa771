// judgeFrame and PayloadWalk on arbitrary bytes. Reachable from outside: whoever can send to the mesh, or hands frames
// to the program that shows them, chooses every byte, and the ids under which it travels.
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

#include "fuzz/support/trapUnless.h"
#include "vso/layout/FrameVerdict.h"
#include "vso/layout/PayloadWalk.h"
#include "vso/layout/ZclCommandLayouts.h"
#include "vso/layout/ZdoCommandLayouts.h"
#include "vso/zcl/ZclMessage.h"

namespace {

using qx::CommandLayout;
using qx::FrameReader;
using qx::FrameVerdict;
using qx::PayloadWalk;
using qx::ZclMessage;
using qx::fuzz::trapUnless;

using Frame = qx::U255Buff<unsigned char>;

constexpr unsigned int STORAGE = Frame::CAPACITY;

/// What a frame travels under. The first byte of an input chooses one, the others are the frame.
struct Ids {
  unsigned short profile;
  unsigned short cluster;
};

constexpr Ids IDS[] = {
    // The device object, all commands and one that is not known.
    {0x0000, 0x0031},
    {0x0000, 0x0032},
    {0x0000, 0x0034},
    {0x0000, 0x0036},
    {0x0000, 0x0038},
    {0x0000, 0x8031},
    {0x0000, 0x8032},
    {0x0000, 0x8034},
    {0x0000, 0x8036},
    {0x0000, 0x8038},
    {0x0000, 0x8033},
    // Clusters with commands of their own, and one without.
    {0x0104, 0x0003},
    {0x0104, 0x0004},
    {0x0104, 0x0005},
    {0x0104, 0x0006},
    {0x0104, 0x0008},
    {0x0104, 0x0019},
    {0x0104, 0x0000},
    {0xC25D, 0x0001},
    {0xC25F, 0x0001},
};

const CommandLayout* layoutOf(const Ids& ids, const ZclMessage& frame) {
  if (ids.profile == 0) return frame.length_ >= 1 ? qx::findZdoCommand(ids.cluster) : nullptr;
  return frame.length_ >= frame.headerLength() ? qx::findZclCommand(ids.profile, ids.cluster, frame) : nullptr;
}

/// Walks the payload and returns where the walk ends. All fields but the last are whole, and none overlap.
unsigned int requireWalk(const CommandLayout& layout, const FrameReader& payload, bool& isWhole) {
  PayloadWalk walk(layout, payload);
  unsigned int at = payload.at();
  unsigned int fields = 0;
  isWhole = true;
  while (walk.next()) {
    trapUnless(isWhole, "no field follows one that does not fit");
    trapUnless(++fields <= layout.fields.size(), "a walk has no more fields than its layout");
    trapUnless(walk.value().at() == at, "a field begins where the one before it ends");
    trapUnless(walk.rows() * walk.rowSize() == (walk.rowSize() == 0 ? 0 : walk.size()), "rows fill their field");
    isWhole = walk.size() <= walk.value().left();
    trapUnless(walk.isWhole() == isWhole, "a field is whole if the frame has all its bytes");
    if (isWhole) at += walk.size();
  }
  trapUnless(walk.value().at() == at, "a walk ends behind the last whole field");
  trapUnless(!walk.next(), "a walk stays at its end");
  return at;
}

FrameVerdict requireVerdict(const Ids& ids, const Frame& frame) {
  FrameVerdict verdict = qx::judgeFrame(ids.profile, ids.cluster, frame);
  const unsigned int stored = frame.storedLength();
  trapUnless(verdict.byte <= stored, "a verdict points into the frame");
  trapUnless(verdict.what.empty() == (verdict.state == FrameVerdict::WHOLE), "all that is not whole has words");
  trapUnless(std::all_of(verdict.what.begin(), verdict.what.end(), [](char c) { return c >= ' ' && c <= '~'; }),
             "no byte of the frame is among the words");
  if (frame.length_ > STORAGE) {
    trapUnless(verdict.state == FrameVerdict::BROKEN, "a frame beyond its storage is broken");
    return verdict;
  }

  const ZclMessage zcl(frame);
  const CommandLayout* const layout = layoutOf(ids, zcl);
  if (layout == nullptr) {
    trapUnless(verdict.state != FrameVerdict::WHOLE, "no frame of an unknown command is whole");
    return verdict;
  }
  bool walksToItsEnd = false;
  const FrameReader payload = ids.profile == 0 ? FrameReader(frame, 1) : FrameReader(frame, zcl.headerLength());
  const unsigned int end = requireWalk(*layout, payload, walksToItsEnd);
  trapUnless(end <= stored, "whole fields lie inside the frame");
  if (verdict.state == FrameVerdict::WHOLE) {
    trapUnless(walksToItsEnd && end == stored, "the fields of a whole frame are the frame");
  }
  if (!walksToItsEnd) trapUnless(verdict.state != FrameVerdict::WHOLE, "a field that does not fit breaks the frame");
  return verdict;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Ids& ids = IDS[data[0] % std::size(IDS)];
  const Frame frame(data + 1, static_cast<unsigned int>(size - 1));
  const FrameVerdict verdict = requireVerdict(ids, frame);

  // The same bytes with something else behind them.
  if (frame.length_ <= STORAGE) {
    Frame dirty = frame;
    std::memset(dirty.contents + dirty.length_, data[0] | 1, STORAGE - dirty.length_);
    trapUnless(qx::judgeFrame(ids.profile, ids.cluster, dirty) == verdict, "bytes behind a frame make no difference");
  }

  // Any ids, and a length that a careless writer set.
  Frame overlong = frame;
  overlong.length_ = static_cast<unsigned int>(STORAGE + size);
  requireVerdict(ids, overlong);
  if (size > 4) {
    const Ids any{static_cast<unsigned short>(data[0] | data[1] << 8),
                  static_cast<unsigned short>(data[2] | data[3] << 8)};
    requireVerdict(any, Frame(data + 4, static_cast<unsigned int>(size - 4)));
  }
  return 0;
}

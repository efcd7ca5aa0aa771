#include "vso/layout/PayloadWalk.h"

#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"

namespace qx {

namespace {

unsigned int countScanned(unsigned int mask) {
  unsigned int scanned = mask >> ZdoNetworkUpdateResponse::FIRST_CHANNEL;
  scanned &= (1U << ZdoNetworkUpdateResponse::CHANNEL_COUNT) - 1;
  unsigned int count = 0;
  for (; scanned != 0; scanned >>= 1) count += scanned & 1;
  return count;
}

}  // namespace

bool PayloadWalk::next() noexcept {
  if (!isWhole()) return false;
  value_.skip(size_);
  size_ = 0;
  while (index_ < layout_.fields.size()) {
    const FieldLayout& field = layout_.fields[index_];
    if (field.kind == FieldKind::NONE || (!value_.more() && mayEnd(field))) break;
    ++index_;
    if (field.presence == FieldPresence::IF && !holds(field.condition)) continue;
    measure();
    return true;
  }
  rowSize_ = 0;
  return false;
}

FrameReader PayloadWalk::at(unsigned int offset) const noexcept {
  FrameReader in = payload_;
  in.skip(offset);
  return in;
}

bool PayloadWalk::holds(const FieldCondition& condition) const noexcept {
  const unsigned int value = at(condition.at).u8() & condition.mask;
  return condition.least <= value && value <= condition.most;
}

bool PayloadWalk::mayEnd(const FieldLayout& field) const noexcept {
  return field.presence == FieldPresence::MAY_END ||
         (field.presence == FieldPresence::MAY_END_UNLESS && !holds(field.condition));
}

void PayloadWalk::measure() noexcept {
  rowSize_ = 0;
  const unsigned int left = value_.left();
  const unsigned int offset = value_.at() - payload_.at();
  const unsigned int count = offset == 0 ? 0 : at(offset - 1).u8();
  switch (field().kind) {
    case FieldKind::NONE:
      break;
    case FieldKind::U8:
    case FieldKind::ZCL_STATUS:
    case FieldKind::ZDO_STATUS:
      size_ = 1;
      break;
    case FieldKind::U16:
    case FieldKind::ID16:
      size_ = 2;
      break;
    case FieldKind::U32:
    case FieldKind::ID32:
      size_ = 4;
      break;
    case FieldKind::RATE:
      // Behind it stand both options or none of them, so an even rest begins with a rate of two bytes.
      size_ = left % 2 == 0 ? 2 : 1;
      break;
    case FieldKind::ADDRESS:
      size_ = 8;
      break;
    case FieldKind::TEXT:
      size_ = 1U + FrameReader(value_).u8();
      break;
    case FieldKind::OCTETS:
    case FieldKind::U8_LIST:
      takeRows(count, 1);
      break;
    case FieldKind::ID16_LIST:
      takeRows(count, 2);
      break;
    case FieldKind::NEIGHBOURS:
      takeRows(count, ZdoNetworkLqiResponse::ENTRY_SIZE);
      break;
    case FieldKind::ROUTES:
      takeRows(count, ZdoNetworkRtgResponse::ENTRY_SIZE);
      break;
    case FieldKind::ENERGY_VALUES:
      takeRows(countScanned(at(1).u32le()), 1);
      break;
    case FieldKind::SCENE_EXTENSIONS:
    case FieldKind::ATTRIBUTE_IDS:
    case FieldKind::ATTRIBUTE_VALUES:
    case FieldKind::ATTRIBUTE_ANSWERS:
    case FieldKind::ATTRIBUTE_STATUSES:
    case FieldKind::OPAQUE:
      size_ = left;
      break;
  }
}

void PayloadWalk::takeRows(unsigned int rows, unsigned int rowSize) noexcept {
  size_ = rows * rowSize;
  rowSize_ = rowSize;
}

}  // namespace qx

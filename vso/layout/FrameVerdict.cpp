#include "vso/layout/FrameVerdict.h"

#include <fmt/format.h>

#include <ostream>
#include <tuple>
#include <utility>

#include "vso/layout/PayloadWalk.h"
#include "vso/layout/ZclCommandLayouts.h"
#include "vso/layout/ZdoCommandLayouts.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {

namespace {

using detail::AttributeWalk;
using detail::RecordLayout;

constexpr unsigned short ZDO_PROFILE = 0x0000;

FrameVerdict brokenAt(unsigned int byte, std::string what) { return {FrameVerdict::BROKEN, byte, std::move(what)}; }
FrameVerdict unknownAt(unsigned int byte) {
  return {FrameVerdict::UNKNOWN, byte, "payload of this command is not known"};
}

std::string bytes(unsigned int count) { return std::to_string(count) + (count == 1 ? " byte" : " bytes"); }
std::string follow(unsigned int count) { return std::to_string(count) + (count == 1 ? " follows" : " follow"); }

/// `subject` should have `size` bytes from where `in` stands, and the frame ends before.
FrameVerdict cutShort(const std::string& subject, const char* verb, unsigned int size, const FrameReader& in) {
  return brokenAt(in.at(), subject + verb + bytes(size) + ", " + follow(in.left()));
}

FrameVerdict missing(const std::string& subject, const FrameReader& in) {
  return brokenAt(in.at(), subject + " is missing");
}

std::string attributeName(unsigned short id) { return fmt::format("attribute 0x{:04X}", id); }

/// A record of an attribute list, up to its id and beyond, field by field.
class RecordJudge {
 public:
  RecordJudge(const ZclMessage& frame, const AttributeWalk& walk) : in_(frame, walk.begin()), id_(walk.id()) {}

  FrameVerdict judge(RecordLayout layout) {
    switch (layout) {
      case RecordLayout::ID:
        return takeId();
      case RecordLayout::VALUE:
        return all(takeId(), &RecordJudge::takeValue);
      case RecordLayout::STATUS_VALUE:
        return all(takeId(), &RecordJudge::takeStatusAndValue);
      case RecordLayout::STATUS_ID:
        in_.skip(1);
        return takeId();
    }
    return {};
  }

 private:
  FrameVerdict all(FrameVerdict first, FrameVerdict (RecordJudge::*rest)()) {
    return first.state == FrameVerdict::WHOLE ? (this->*rest)() : first;
  }

  FrameVerdict takeId() {
    if (in_.left() < 2) return cutShort("id of an attribute", " takes ", 2, in_);
    in_.skip(2);
    return {};
  }

  FrameVerdict takeStatusAndValue() {
    if (!in_.more()) return missing("status of " + attributeName(id_), in_);
    return in_.u8() == ZCL_SUCCESS ? takeValue() : FrameVerdict();
  }

  FrameVerdict takeValue() {
    if (!in_.more()) return missing("type of " + attributeName(id_), in_);
    const unsigned char type = in_.u8();
    const detail::ZclTypeRow& row = detail::zclType(type);
    if (row.kind == detail::ZclValueKind::UNKNOWN) {
      return brokenAt(in_.at(),
                      fmt::format("type 0x{:02X} of {} is unknown, the walk goes on", type, attributeName(id_)));
    }
    if (!row.isString()) {
      return in_.left() < row.size ? cutShort("value of " + attributeName(id_), " takes ", row.size, in_)
                                   : FrameVerdict();
    }
    if (!in_.more()) return missing("length of the string of " + attributeName(id_), in_);
    const unsigned char length = in_.u8();
    return in_.left() < length ? cutShort("string of " + attributeName(id_), " claims ", length, in_) : FrameVerdict();
  }

  FrameReader in_;
  unsigned short id_;
};

FrameVerdict judgeAttributes(const ZclMessage& frame, RecordLayout layout) {
  for (AttributeWalk walk(frame, layout); walk.next();) {
    FrameVerdict verdict = RecordJudge(frame, walk).judge(layout);
    if (verdict.state != FrameVerdict::WHOLE) return verdict;
  }
  return {};
}

FrameVerdict judgeExtensions(const char* row, FrameReader in) {
  constexpr unsigned int HEAD = 3;
  for (unsigned int number = 1; in.more(); ++number) {
    const std::string name = std::string(row) + " " + std::to_string(number);
    if (in.left() < HEAD) return cutShort(name, " takes ", HEAD, in);
    in.skip(HEAD - 1);
    const unsigned char length = in.u8();
    if (in.left() < length) return cutShort(name, " claims ", length, in);
    in.skip(length);
  }
  return {};
}

/// A field that does not fit into the frame.
FrameVerdict judgeOverrun(const PayloadWalk& walk) {
  const FieldLayout& field = walk.field();
  FrameReader in = walk.value();
  if (field.row != nullptr) {
    const unsigned int whole = in.left() / walk.rowSize();
    in.skip(whole * walk.rowSize());
    return brokenAt(in.at(), std::string(field.row) + " " + std::to_string(whole + 1) + " of " +
                                 std::to_string(walk.rows()) + " runs past the end");
  }
  if (field.kind == FieldKind::OCTETS) return cutShort(field.name, " claims ", walk.size(), in);
  if (!in.more()) return missing(field.name, in);
  if (field.kind == FieldKind::TEXT) {
    const unsigned char length = in.u8();
    return cutShort(field.name, " claims ", length, in);
  }
  return cutShort(field.name, " takes ", walk.size(), in);
}

FrameVerdict judgeField(const PayloadWalk& walk, const ZclMessage* zcl) {
  if (!walk.isWhole()) return judgeOverrun(walk);
  switch (walk.field().kind) {
    case FieldKind::ATTRIBUTE_IDS:
      return judgeAttributes(*zcl, RecordLayout::ID);
    case FieldKind::ATTRIBUTE_VALUES:
      return judgeAttributes(*zcl, RecordLayout::VALUE);
    case FieldKind::ATTRIBUTE_ANSWERS:
      return judgeAttributes(*zcl, RecordLayout::STATUS_VALUE);
    case FieldKind::ATTRIBUTE_STATUSES:
      // A single status byte stands for all attributes at once.
      return walk.size() == 1 ? FrameVerdict() : judgeAttributes(*zcl, RecordLayout::STATUS_ID);
    case FieldKind::SCENE_EXTENSIONS:
      return judgeExtensions(walk.field().row, walk.value());
    case FieldKind::OPAQUE:
      return unknownAt(walk.value().at());
    default:
      return {};
  }
}

/// `zcl` is null for a ZDO frame, whose layouts have no lists of attributes.
FrameVerdict judgePayload(const CommandLayout* layout, const FrameReader& payload, const ZclMessage* zcl) {
  if (layout == nullptr) return unknownAt(payload.at());
  PayloadWalk walk(*layout, payload);
  while (walk.next()) {
    FrameVerdict verdict = judgeField(walk, zcl);
    if (verdict.state != FrameVerdict::WHOLE) return verdict;
  }
  const FrameReader& rest = walk.value();
  if (rest.more()) return brokenAt(rest.at(), bytes(rest.left()) + " behind the last field");
  return {};
}

FrameVerdict judgeZcl(unsigned short profile, unsigned short cluster, const ZclMessage& frame) {
  FrameReader in(frame);
  if (!in.more()) return missing("frame control", in);
  in.skip(1);
  if (frame.isManufacturerSpecific()) {
    if (in.left() < 2) return cutShort("manufacturer code", " takes ", 2, in);
    in.skip(2);
  }
  if (!in.more()) return missing("sequence number", in);
  in.skip(1);
  if (!in.more()) return missing("command", in);
  return judgePayload(findZclCommand(profile, cluster, frame), frame.payload(), &frame);
}

FrameVerdict judgeZdo(unsigned short command, const U255Buff<unsigned char>& frame) {
  FrameReader in(frame);
  if (!in.more()) return missing("sequence number", in);
  in.skip(1);
  return judgePayload(findZdoCommand(command), in, nullptr);
}

}  // namespace

std::string FrameVerdict::toString() const {
  return state == WHOLE ? "whole" : what + " at byte " + std::to_string(byte);
}

bool operator==(const FrameVerdict& a, const FrameVerdict& b) {
  return std::tie(a.state, a.byte, a.what) == std::tie(b.state, b.byte, b.what);
}

std::ostream& operator<<(std::ostream& out, const FrameVerdict& verdict) { return out << verdict.toString(); }

FrameVerdict judgeFrame(unsigned short profile, unsigned short cluster, const U255Buff<unsigned char>& frame) {
  constexpr unsigned int STORAGE = U255Buff<unsigned char>::CAPACITY;
  if (frame.length_ > STORAGE) {
    return brokenAt(STORAGE, "frame of " + bytes(frame.length_) + " does not fit its storage");
  }
  if (profile == ZDO_PROFILE) return judgeZdo(cluster, frame);
  return judgeZcl(profile, cluster, ZclMessage(frame));
}

}  // namespace qx

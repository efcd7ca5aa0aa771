#include "apps/vso/decode/decodePayload.h"

#include "apps/vso/decode/attributeLists.h"
#include "apps/vso/decode/hexBytes.h"
#include "apps/vso/decode/tables.h"
#include "vso/identifiers/Euid.h"
#include "vso/layout/PayloadWalk.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx::app {

namespace {

constexpr unsigned int ID16_DIGITS = 4;
constexpr unsigned int ID32_DIGITS = 8;

std::string address(FrameReader in) {
  unsigned char bytes[8];
  in.bytes(bytes);
  Euid address(bytes);
  address.byteSwap();
  return address.toString();
}

std::vector<unsigned int> numbers(const PayloadWalk& walk) {
  FrameReader in = walk.value();
  std::vector<unsigned int> list(walk.rows());
  for (unsigned int& number : list) number = walk.rowSize() == 1 ? in.u8() : in.u16le();
  return list;
}

std::string text(FrameReader in) {
  const unsigned char length = in.u8();
  return in.text(length);
}

/// A field that is there as a whole; without a value if it is a table or a list of attributes.
NamedValue fieldOf(const PayloadWalk& walk) {
  const FieldLayout& field = walk.field();
  FrameReader in = walk.value();
  switch (field.kind) {
    case FieldKind::U8:
      return {field.name, in.u8()};
    case FieldKind::U16:
      return {field.name, in.u16le()};
    case FieldKind::U32:
      return {field.name, in.u32le()};
    case FieldKind::ID16:
      return {field.name, in.u16le(), nullptr, ID16_DIGITS};
    case FieldKind::ID32:
      return {field.name, in.u32le(), nullptr, ID32_DIGITS};
    case FieldKind::RATE:
      return {field.name, walk.size() == 1 ? in.u8() : in.u16le()};
    case FieldKind::ZCL_STATUS: {
      const unsigned char status = in.u8();
      return {field.name, status, ZclMessage::zclStatusToStr(static_cast<ZclStatus>(status))};
    }
    case FieldKind::ZDO_STATUS: {
      const unsigned char status = in.u8();
      return {field.name, status, ZdoResponse::statusStr(static_cast<ZdoStatus>(status))};
    }
    case FieldKind::ADDRESS:
      return {field.name, address(in)};
    case FieldKind::TEXT:
      return {field.name, text(in)};
    case FieldKind::OCTETS:
      return {field.name, hexBytes(in, walk.size())};
    case FieldKind::U8_LIST:
      return {field.name, numbers(walk)};
    case FieldKind::ID16_LIST:
      return {field.name, numbers(walk), nullptr, ID16_DIGITS};
    default:
      return {field.name, nullptr};
  }
}

bool isAttributeList(FieldKind kind) {
  return kind == FieldKind::ATTRIBUTE_IDS || kind == FieldKind::ATTRIBUTE_VALUES ||
         kind == FieldKind::ATTRIBUTE_ANSWERS || kind == FieldKind::ATTRIBUTE_STATUSES;
}

}  // namespace

void decodePayload(const CommandLayout* layout, const U255Buff<unsigned char>& frame, unsigned int payloadOffset,
                   DecodedFrame& decoded) {
  FrameReader rest(frame, payloadOffset);
  if (layout != nullptr) {
    PayloadWalk walk(*layout, rest);
    unsigned int shown = 0;
    while (walk.next()) {
      DecodedTable table;
      const bool isTable = readTable(walk, frame, table);
      if (isTable) decoded.table = table;
      shown = static_cast<unsigned int>(table.rows.size()) * walk.rowSize();
      if (!walk.isWhole() || walk.field().kind == FieldKind::OPAQUE) break;
      if (isAttributeList(walk.field().kind)) {
        decodeAttributeList(walk.field().kind, ZclMessage(frame), decoded);
      } else if (!isTable) {
        decoded.fields.push_back(fieldOf(walk));
      }
    }
    rest = walk.value();
    if (!walk.isWhole()) rest.skip(shown);
  }
  decoded.undecoded = hexBytes(rest, rest.left());
}

}  // namespace qx::app

// The one walk over the attribute records of a frame.
#pragma once

#include <algorithm>

#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/hexify.h"
#include "vso/identifiers/storage.h"
#include "vso/zcl/AttributeRecordData.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclType.h"

namespace qx::detail {

/// A value on its way: its type, and a reader that stands at its first byte, in a frame or in the data of a record.
class AttributeValue {
 public:
  AttributeValue(unsigned char type, FrameReader in) noexcept : type_(type), in_(in) {}

  unsigned char type() const noexcept { return type_; }

  /// Bytes of the value in wire form: 0 for a type that is not known, with its length byte for a string.
  unsigned int size() const noexcept {
    const ZclTypeRow& row = zclType(type_);
    return row.isString() ? row.size + textLength() : row.size;
  }

  /// Writes the value to `data`, which is clear: in wire form if asked for, otherwise in readable form. What `data`
  /// cannot hold is cut.
  void copyTo(AttributeRecordData::Data& data, bool wireForm) const noexcept {
    FrameReader in = in_;
    switch (wireForm ? ZclValueKind::DECIMAL : zclType(type_).kind) {
      case ZclValueKind::UNKNOWN:
        break;
      case ZclValueKind::TEXT:
        in.skip(1);
        in.bytes(data.data(), std::min<unsigned int>(textLength(), AttributeRecordData::DATA_SIZE));
        break;
      case ZclValueKind::OCTETS: {
        in.skip(1);
        const unsigned int octets = std::min<unsigned int>(textLength(), AttributeRecordData::DATA_SIZE / 2);
        char* to = reinterpret_cast<char*>(data.data());
        for (unsigned int i = 0; i < octets; ++i) to = hexDigits(in.u8(), to);
        break;
      }
      case ZclValueKind::DECIMAL:
      case ZclValueKind::BOOLEAN:
      case ZclValueKind::HEX:
        in.bytes(data.data(), std::min(size(), AttributeRecordData::DATA_SIZE));
        break;
    }
  }

  // The value in either form, zeros behind it.
  AttributeRecordData::Data readable() const noexcept { return inForm(false); }
  AttributeRecordData::Data wireForm() const noexcept { return inForm(true); }

  /// Appends the value, which lies in wire form, to a frame.
  void appendTo(FrameWriter& out) const noexcept {
    FrameReader in = in_;
    out.bytes(in, size());
  }

  /// The first byte of the value in readable form, 0 where there is none.
  unsigned char firstByte() const noexcept {
    const ZclTypeRow& row = zclType(type_);
    if (row.isString()) return ZclMessage::toUint16(readable()) & 0xFF;
    return row.size != 0 ? FrameReader(in_).u8() : 0;
  }
  /// The first two bytes of the value in readable form as a little-endian number, zeros where it is shorter. (Reads no
  /// more than it needs: a load that spans bytes just written and bytes just cleared waits for both.)
  unsigned short firstUint16() const noexcept {
    const ZclTypeRow& row = zclType(type_);
    if (row.isString()) return ZclMessage::toUint16(readable());
    return row.size >= 2 ? FrameReader(in_).u16le() : firstByte();
  }

 private:
  AttributeRecordData::Data inForm(bool wire) const noexcept {
    AttributeRecordData::Data data;
    clearBytes(data.data(), data.size());
    copyTo(data, wire);
    return data;
  }
  unsigned int textLength() const noexcept { return FrameReader(in_).u8(); }

  unsigned char type_;
  FrameReader in_;
};

/// How the records of a command are laid out.
enum class RecordLayout : int {
  ID,            ///< id (2): read attributes
  VALUE,         ///< id (2), type (1), value: write attributes, report attributes
  STATUS_VALUE,  ///< id (2), status (1), and if that is 0 type (1), value: read attributes response
  STATUS_ID,     ///< status (1), id (2): write attributes response
};

/// Steps through the records of a frame, one at a time, without a list. It ends when the offset reaches the frame's
/// length; a record that runs past it is read from what the buffer holds, and zeros behind the storage. Each step moves
/// on by at least two bytes, so every walk ends.
///
///   for (AttributeWalk walk(frame, RecordLayout::VALUE); walk.next();) use(walk.id(), walk.value());
class AttributeWalk {
 public:
  /// Warns of a frame that is too short for its header, and walks it all the same.
  AttributeWalk(const ZclMessage& frame, RecordLayout layout) : AttributeWalk(frame.payload(), layout) {
    frame.isValidLength();
  }
  /// Walks records wherever they are. `records` stands at the first of them.
  AttributeWalk(const FrameReader& records, RecordLayout layout) noexcept
      : layout_(layout), in_(records), value_(records) {}

  /// Moves to the next record; false at the end.
  bool next() noexcept {
    if (!in_.more()) return false;
    begin_ = in_.at();
    switch (layout_) {
      case RecordLayout::ID:
        id_ = in_.u16le();
        break;
      case RecordLayout::VALUE:
        id_ = in_.u16le();
        takeValue();
        break;
      case RecordLayout::STATUS_VALUE:
        id_ = in_.u16le();
        status_ = in_.u8();
        if (status_ == ZCL_SUCCESS) takeValue();
        break;
      case RecordLayout::STATUS_ID:
        status_ = in_.u8();
        id_ = in_.u16le();
        break;
    }
    return true;
  }

  /// Moves to the next record with this id; false at the end.
  bool find(unsigned short id) noexcept {
    while (next()) {
      if (id_ == id) return true;
    }
    return false;
  }

  unsigned short id() const noexcept { return id_; }
  /// A ZclStatus; 0 where the layout has none.
  unsigned char status() const noexcept { return status_; }
  /// The value of this record. That of the record before it where this one has none.
  AttributeValue value() const noexcept { return {type_, value_}; }

  /// Offset of this record in the frame, and of the byte behind it. The latter may lie behind the frame's end.
  unsigned int begin() const noexcept { return begin_; }
  unsigned int end() const noexcept { return in_.at(); }

  /// How many records follow this one.
  unsigned int countRest() const noexcept {
    AttributeWalk rest = *this;
    unsigned int count = 0;
    while (rest.next()) ++count;
    return count;
  }

 private:
  void takeValue() noexcept {
    type_ = in_.u8();
    value_ = in_;
    in_.skip(value().size());
  }

  RecordLayout layout_;
  FrameReader in_;
  unsigned int begin_ = 0;
  unsigned short id_ = 0;
  unsigned char status_ = ZCL_SUCCESS;
  unsigned char type_ = 0;
  FrameReader value_;
};

}  // namespace qx::detail

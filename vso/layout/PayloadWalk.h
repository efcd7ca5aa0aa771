// Steps through the fields of a payload by the layout of its command.
#pragma once

#include "vso/identifiers/FrameReader.h"
#include "vso/layout/CommandLayout.h"

namespace qx {

/// One field at a time, without allocation. Fields that are not to be there are passed over. The walk ends behind the
/// first field that does not fit into the frame, which is still shown: `isWhole()` tells.
///
///   for (PayloadWalk walk(layout, frame.payload()); walk.next() && walk.isWhole();) show(walk.field(), walk.value());
class PayloadWalk {
 public:
  /// `payload` stands at the first byte of the payload. `layout` must live as long as the walk.
  PayloadWalk(const CommandLayout& layout, const FrameReader& payload) noexcept
      : layout_(layout), payload_(payload), value_(payload) {}

  /// Moves to the next field; false at the end.
  bool next() noexcept;

  /// The field at hand; only after `next` was true.
  const FieldLayout& field() const noexcept { return layout_.fields[index_ - 1]; }
  /// A reader that stands at the first byte of the field. At the end, at the byte behind the last field that fitted.
  const FrameReader& value() const noexcept { return value_; }
  /// Bytes of the field, by what it says of itself, be they in the frame or not.
  unsigned int size() const noexcept { return size_; }
  bool isWhole() const noexcept { return size_ <= value_.left(); }
  /// Rows of a list or a table whose rows are all of `rowSize()` bytes; 0 rows of 0 bytes for any other field.
  unsigned int rows() const noexcept { return rowSize_ == 0 ? 0 : size_ / rowSize_; }
  unsigned int rowSize() const noexcept { return rowSize_; }

 private:
  FrameReader at(unsigned int offset) const noexcept;
  bool holds(const FieldCondition& condition) const noexcept;
  bool mayEnd(const FieldLayout& field) const noexcept;
  void measure() noexcept;
  void takeRows(unsigned int rows, unsigned int rowSize) noexcept;

  const CommandLayout& layout_;
  FrameReader payload_;
  FrameReader value_;
  unsigned int index_ = 0;
  unsigned int size_ = 0;
  unsigned int rowSize_ = 0;
};

}  // namespace qx

// A page of a node's neighbour or routing table, as both responses carry it.
#pragma once

#include "vso/identifiers/FrameReader.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx::detail {

///   offset   size   field
///   0        1      sequence number
///   1        1      status
///   2        1      total entries on the device
///   3        1      start index of this page
///   4        1      entries in this page
///   5               the entries
///
/// Each of the three counts reads as 0 in a frame that ends more than one byte before it. One byte before it, the count
/// is read from behind the frame's end, which is 0 too in a frame that came through the constructors.
struct TablePage {
  static constexpr unsigned int TOTAL_OFFSET = 2;
  static constexpr unsigned int START_INDEX_OFFSET = 3;
  static constexpr unsigned int COUNT_OFFSET = 4;
  static constexpr unsigned int ENTRIES_OFFSET = 5;

  static unsigned char total(const ZdoResponse& page) noexcept { return guarded(page, TOTAL_OFFSET); }
  static unsigned char startIndex(const ZdoResponse& page) noexcept { return guarded(page, START_INDEX_OFFSET); }
  static unsigned char count(const ZdoResponse& page) noexcept { return guarded(page, COUNT_OFFSET); }

 private:
  static unsigned char guarded(const ZdoResponse& page, unsigned int offset) noexcept {
    return page.length_ < offset ? 0 : FrameReader(page, offset).u8();
  }
};

/// The entries of a page, SIZE bytes each. A node's count is trusted, and so entries may lie behind the frame's end:
/// they are read from what the buffer holds. Their bytes lie on a ring of 256, which the 255 of the storage fill but
/// for the last, a zero: entries that would lie behind the ring are read from its start.
template <unsigned int SIZE>
class TableEntries {
 public:
  explicit TableEntries(const ZdoResponse& page) noexcept : page_(page) {}

  /// A reader over the next entry, to be used before the next call.
  FrameReader next() noexcept {
    const unsigned int at = at_;
    at_ = (at_ + SIZE) % RING;
    if (at + SIZE <= U255Buff<unsigned char>::CAPACITY) return FrameReader(page_.contents + at, SIZE, SIZE);
    for (unsigned int i = 0; i < SIZE; ++i) wrapped_[i] = FrameReader(page_, (at + i) % RING).u8();
    return FrameReader(wrapped_, SIZE, SIZE);
  }

 private:
  static constexpr unsigned int RING = 256;

  const ZdoResponse& page_;
  unsigned int at_ = TablePage::ENTRIES_OFFSET;
  unsigned char wrapped_[SIZE];
};

}  // namespace qx::detail

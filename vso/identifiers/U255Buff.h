// A buffer of at most 255 elements that lives wholly inside its object: the ground of every frame and every route.
#pragma once

#include "vso/identifiers/storage.h"

namespace qx {

/// A fixed-capacity buffer: `contents[0..length_)` is in use. Never allocates and never throws.
///
/// Only whole-buffer copies check the capacity. `length_` is a plain field, and a careless writer can set it above
/// CAPACITY; FrameReader and FrameWriter, through which frame fields are read and written, stay inside the storage all
/// the same.
///
/// Instantiated for unsigned char (frames) and unsigned short (source routes).
template <typename T>
class U255Buff {
 public:
  static constexpr unsigned int CAPACITY = 255;

  /// Empty: length 0, all elements zero.
  U255Buff() noexcept {
    detail::clearBytes(contents, sizeof contents);
    length_ = 0;
  }
  /// Empty, with every byte of the storage set to the low byte of `fill` (a byte fill, also for 16-bit elements).
  explicit U255Buff(int fill) noexcept;
  /// `length_` becomes `count` whatever it is; the elements are copied only if `elements` is not null and `count` fits.
  /// All other elements are zero.
  U255Buff(const T* elements, unsigned int count) noexcept;
  /// Copies the elements in use; the others are zero. A source whose length does not fit gives an empty buffer.
  U255Buff(const U255Buff& other) noexcept;
  /// Copies the elements in use and leaves the others. A source whose length does not fit changes nothing.
  U255Buff& operator=(const U255Buff& other) noexcept;
  virtual ~U255Buff() = default;

  /// `length_` cut to the capacity: how many of the elements in use exist.
  unsigned int storedLength() const noexcept { return length_ < CAPACITY ? length_ : CAPACITY; }

  T contents[CAPACITY];
  unsigned int length_;
};

extern template class U255Buff<unsigned char>;
extern template class U255Buff<unsigned short>;

}  // namespace qx

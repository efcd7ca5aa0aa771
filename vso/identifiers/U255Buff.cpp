#include "vso/identifiers/U255Buff.h"

#include <cstring>

namespace qx {

template <typename T>
U255Buff<T>::U255Buff(int fill) noexcept : length_(0) {
  std::memset(contents, fill, sizeof contents);
}

template <typename T>
U255Buff<T>::U255Buff(const T* elements, unsigned int count) noexcept : length_(count) {
  const unsigned int copied = elements != nullptr && count <= CAPACITY ? count : 0;
  detail::clearBytes(contents + copied, (CAPACITY - copied) * sizeof(T));
  if (copied != 0) detail::copyBytes(contents, elements, copied * sizeof(T));
}

template <typename T>
U255Buff<T>::U255Buff(const U255Buff& other) noexcept : length_(other.length_ <= CAPACITY ? other.length_ : 0) {
  detail::copyBytes(contents, other.contents, length_ * sizeof(T));
  detail::clearBytes(contents + length_, (CAPACITY - length_) * sizeof(T));
}

template <typename T>
U255Buff<T>& U255Buff<T>::operator=(const U255Buff& other) noexcept {
  if (this != &other && other.length_ <= CAPACITY) {
    detail::copyBytes(contents, other.contents, other.length_ * sizeof(T));
    length_ = other.length_;
  }
  return *this;
}

template class U255Buff<unsigned char>;
template class U255Buff<unsigned short>;

}  // namespace qx

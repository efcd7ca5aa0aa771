// A member that stays behind when its owner is copied.
#pragma once

#include <utility>

namespace qx::detail {

/// Holds a value that belongs to this one object: a copy starts with an empty value, and what is assigned to keeps its
/// own. With it, the copying of its owner can be left to the compiler.
template <typename T>
class NotCopied {
 public:
  NotCopied() = default;
  NotCopied(const NotCopied&) noexcept {}
  NotCopied& operator=(const NotCopied&) noexcept { return *this; }
  ~NotCopied() = default;

  const T& get() const noexcept { return value_; }
  void set(T value) noexcept { value_ = std::move(value); }

 private:
  T value_{};
};

}  // namespace qx::detail

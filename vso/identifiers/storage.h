// Clearing and copying of storage of a few hundred bytes.
//
// Out of line on purpose: where gcc knows that a size is of this order it expands memset and memcpy in place as
// `rep stos` and `rep movs`, which take several times as long as the C library's functions.
#pragma once

#include <cstddef>

namespace qx::detail {

/// Sets `size` bytes to zero.
void clearBytes(void* storage, std::size_t size) noexcept;

/// Copies `size` bytes between places that do not overlap.
void copyBytes(void* to, const void* from, std::size_t size) noexcept;

}  // namespace qx::detail

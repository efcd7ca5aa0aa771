#include "vso/identifiers/storage.h"

#include <cstring>

namespace qx::detail {

void clearBytes(void* storage, std::size_t size) noexcept { std::memset(storage, 0, size); }

void copyBytes(void* to, const void* from, std::size_t size) noexcept { std::memcpy(to, from, size); }

}  // namespace qx::detail

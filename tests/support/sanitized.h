#pragma once

namespace qx::test {

/// Whether this is built under the address or the thread sanitizer, under which everything takes longer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#elif defined(__has_feature)
constexpr bool IS_SANITIZED = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool IS_SANITIZED = false;
#endif

}  // namespace qx::test

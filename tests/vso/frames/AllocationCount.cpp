#include "tests/vso/frames/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned int> allocations{0};
/// The number of the allocation that is refused; 0 for none.
std::atomic<unsigned int> refused{0};

void* countedAllocation(std::size_t size, std::size_t alignment) noexcept {
  if (++allocations == refused) return nullptr;
  const std::size_t whole = (size + alignment - 1) / alignment * alignment;
  return std::aligned_alloc(alignment, whole != 0 ? whole : alignment);
}

void* countedOrThrow(std::size_t size, std::size_t alignment) {
  void* storage = countedAllocation(size, alignment);
  if (storage == nullptr) throw std::bad_alloc();
  return storage;
}

constexpr std::size_t DEFAULT_ALIGNMENT = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

}  // namespace

void* operator new(std::size_t size) { return countedOrThrow(size, DEFAULT_ALIGNMENT); }
void* operator new[](std::size_t size) { return countedOrThrow(size, DEFAULT_ALIGNMENT); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return countedAllocation(size, DEFAULT_ALIGNMENT);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return countedAllocation(size, DEFAULT_ALIGNMENT);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return countedOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return countedOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return countedAllocation(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return countedAllocation(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* storage) noexcept { std::free(storage); }
void operator delete[](void* storage) noexcept { std::free(storage); }
void operator delete(void* storage, std::size_t) noexcept { std::free(storage); }
void operator delete[](void* storage, std::size_t) noexcept { std::free(storage); }
void operator delete(void* storage, const std::nothrow_t&) noexcept { std::free(storage); }
void operator delete[](void* storage, const std::nothrow_t&) noexcept { std::free(storage); }
void operator delete(void* storage, std::align_val_t) noexcept { std::free(storage); }
void operator delete[](void* storage, std::align_val_t) noexcept { std::free(storage); }
void operator delete(void* storage, std::size_t, std::align_val_t) noexcept { std::free(storage); }
void operator delete[](void* storage, std::size_t, std::align_val_t) noexcept { std::free(storage); }
void operator delete(void* storage, std::align_val_t, const std::nothrow_t&) noexcept { std::free(storage); }
void operator delete[](void* storage, std::align_val_t, const std::nothrow_t&) noexcept { std::free(storage); }

unsigned int qx::test::allocationCount() { return allocations; }
void qx::test::refuseAllocation(unsigned int next) { refused = next == 0 ? 0 : allocations + next; }

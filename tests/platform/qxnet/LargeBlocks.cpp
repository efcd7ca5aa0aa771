#include "platform/qxnet/LargeBlocks.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> blocks{0};

void* allocation(std::size_t size) noexcept {
  void* const storage = std::malloc(size != 0 ? size : 1);
  if (storage != nullptr && ::malloc_usable_size(storage) >= qx::test::LARGE_BLOCK) ++blocks;
  return storage;
}

void* allocationOrThrow(std::size_t size) {
  void* const storage = allocation(size);
  if (storage == nullptr) throw std::bad_alloc();
  return storage;
}

void release(void* storage) noexcept {
  if (storage != nullptr && ::malloc_usable_size(storage) >= qx::test::LARGE_BLOCK) --blocks;
  std::free(storage);
}

}  // namespace

void* operator new(std::size_t size) { return allocationOrThrow(size); }
void* operator new[](std::size_t size) { return allocationOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocation(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocation(size); }
void operator delete(void* storage) noexcept { release(storage); }
void operator delete[](void* storage) noexcept { release(storage); }
void operator delete(void* storage, std::size_t) noexcept { release(storage); }
void operator delete[](void* storage, std::size_t) noexcept { release(storage); }
void operator delete(void* storage, const std::nothrow_t&) noexcept { release(storage); }
void operator delete[](void* storage, const std::nothrow_t&) noexcept { release(storage); }

int qx::test::largeBlocks() { return blocks; }

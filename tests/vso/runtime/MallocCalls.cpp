#include "tests/vso/runtime/MallocCalls.h"

#include <atomic>
#include <cstddef>

namespace {

std::atomic<unsigned int> calls{0};

}  // namespace

unsigned int qx::test::mallocCalls() { return calls; }

#ifdef VSO_SANITIZED

// A sanitizer has the allocation to itself, and tells of it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));

namespace {

const int installed = __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { ++calls; },
                                                                [](const volatile void*) {});

}  // namespace

#else

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* storage, std::size_t size);

void* malloc(std::size_t size) {
  ++calls;
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  ++calls;
  return __libc_calloc(count, size);
}

void* realloc(void* storage, std::size_t size) {
  ++calls;
  return __libc_realloc(storage, size);
}

}  // extern "C"

#endif

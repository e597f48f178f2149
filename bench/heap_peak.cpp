#include "bench/heap_peak.h"

#include <malloc.h>

#include <algorithm>

static HeapUse use;

void ForgetHeapUse() { use = {}; }
HeapUse CurrentHeapUse() { return use; }

static void* Count(void* memory) {
  use.now += static_cast<int64_t>(malloc_usable_size(memory));
  use.peak = std::max(use.peak, use.now);
  return memory;
}

static void Discount(void* memory) { use.now -= static_cast<int64_t>(malloc_usable_size(memory)); }

// The names that the linker's --wrap gives to the caller's side and to the C library's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __real_calloc(size_t count, size_t size);
void* __real_malloc(size_t size);
void* __real_realloc(void* memory, size_t size);
void __real_free(void* memory);

void* __wrap_calloc(size_t count, size_t size) { return Count(__real_calloc(count, size)); }
void* __wrap_malloc(size_t size) { return Count(__real_malloc(size)); }
void* __wrap_realloc(void* memory, size_t size) {
  Discount(memory);
  return Count(__real_realloc(memory, size));
}
void __wrap_free(void* memory) {
  Discount(memory);
  __real_free(memory);
}
}
// NOLINTEND(bugprone-reserved-identifier)

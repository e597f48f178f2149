#include "tests/support/failing_allocation.h"

#include <cstddef>

static int64_t failing_allocation = 0;
static Failing failing_how = Failing::kOnce;
static int64_t allocations = 0;

void FailAllocation(int64_t n, Failing how) {
  failing_allocation = n;
  failing_how = how;
  allocations = 0;
}

int64_t AllocationCount() { return allocations; }

bool AllocationFailed() { return failing_allocation > 0 && allocations >= failing_allocation; }

bool RefuseAllocation() {
  ++allocations;
  if (failing_allocation == 0 || allocations < failing_allocation) return false;
  return failing_how == Failing::kFromThenOn || allocations == failing_allocation;
}

// The names that the linker's --wrap gives to the caller's side and to the C library's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __real_calloc(size_t count, size_t size);
void* __real_malloc(size_t size);
void* __real_realloc(void* memory, size_t size);

void* __wrap_calloc(size_t count, size_t size) { return RefuseAllocation() ? nullptr : __real_calloc(count, size); }
void* __wrap_malloc(size_t size) { return RefuseAllocation() ? nullptr : __real_malloc(size); }
void* __wrap_realloc(void* memory, size_t size) {
  return RefuseAllocation() ? nullptr : __real_realloc(memory, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)

#pragma once

// Allocation that fails when a test says so, and a count of what is allocated. The test program is linked so
// that every `calloc`, `malloc` and `realloc` of the project's own objects comes by here.

#include <cstdint>

// The n-th allocation from now on (1 is the next) fails, once or for good. 0: none fails.
enum class Failing { kOnce, kFromThenOn };
void FailAllocation(int64_t n, Failing how = Failing::kOnce);

// True when an allocation has failed since `FailAllocation`.
bool AllocationFailed();

// Allocations since `FailAllocation`.
int64_t AllocationCount();

// Counts one more allocation; true when it is to fail. For other ways to allocate than those three.
bool RefuseAllocation();

#pragma once

// What the codec's objects have on the heap. The program is linked so that their allocations come by here.

#include <cstdint>

struct HeapUse {
  int64_t now, peak;  // bytes
};

// Counting from nothing again.
void ForgetHeapUse();
HeapUse CurrentHeapUse();

#pragma once

// Large memory that is about to be filled from end to end, such as the pixels of an image: the system is told, so
// that its first use does not stop at every page. Advice only; where a system takes none, it is memory as any other.

#include <cstddef>

struct MemoryToFill {
  void* memory;  // as from `malloc`; null when there is none
  size_t start;  // where the bytes asked for begin in it
};
MemoryToFill AllocateToFill(size_t size);
// The same, of zeros; what is never written to takes no memory.
MemoryToFill AllocateZerosToFill(size_t size);

#pragma once

// Memory for records, and lists that grow. Without memory each gives null or false and leaves its arguments as they
// were.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

// Zero-filled memory for `count` items of `size` bytes, released with `free`; null when the product overflows.
void* AllocateZeroed(size_t count, size_t size);

template <typename Record>
Record* NewRecord(size_t count = 1) {
  return static_cast<Record*>(AllocateZeroed(count, sizeof(Record)));  // NOLINT(bugprone-sizeof-expression)
}

// Owns memory of `malloc`'s kind.
struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename Item>
using Owned = std::unique_ptr<Item, FreeMemory>;

// Makes room in an array of `count` items of `size` bytes for one more. Room doubles each time it is used up, so that
// a list of n entries costs time linear in n; `count` alone tells how much room there is.
bool GrowArray(void** list, int32_t count, size_t size);

template <typename Item>
bool GrowList(Item*& list, int32_t count) {
  void* grown = list;
  if (!GrowArray(&grown, count, sizeof(Item))) return false;  // NOLINT(bugprone-sizeof-expression)
  list = static_cast<Item*>(grown);
  return true;
}

// Gives back what lies behind the first `size` bytes, 1 or more, of memory from `malloc`.
template <typename Item>
void Shrink(Item*& memory, size_t size) {
  if (void* kept = std::realloc(memory, size)) memory = static_cast<Item*>(kept);
}

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

#include "platform/pages.h"

namespace {

constexpr size_t kPage = 4096, kHugePage = size_t{2} << 20;

// From there on huge pages: one fault for 2 MiB. They would waste too much of the end of smaller memory.
constexpr size_t kHuge = 2 * kHugePage;

// From there on all pages at once are cheaper than a fault for each.
constexpr size_t kPopulated = size_t{256} << 10;

#if defined(MADV_POPULATE_WRITE)
constexpr int kPopulate = MADV_POPULATE_WRITE;
#else
constexpr int kPopulate = 23;  // of Linux 5.14
#endif

uintptr_t RoundUp(uintptr_t address, size_t unit) { return (address + unit - 1) & ~(unit - 1); }

void Advise(uintptr_t start, size_t size, int advice) {
  const uintptr_t first = RoundUp(start, kPage), end = (start + size) & ~(kPage - 1);
  // Memory that was used before has its pages; one of them tells.
  unsigned char there = 0;
  if (mincore(reinterpret_cast<void*>(end - kPage), kPage, &there) == 0 && (there & 1)) return;
  [[maybe_unused]] const int refused = madvise(reinterpret_cast<void*>(first), end - first, advice);
}

// Where `size` bytes begin in memory that has room for them and, when there are many, for beginning on a huge page.
size_t WithRoom(size_t size) { return size + (size >= kHuge ? kHugePage : 0); }
size_t StartIn(void* memory, size_t size) {
  const auto address = reinterpret_cast<uintptr_t>(memory);
  return size >= kHuge ? RoundUp(address, kHugePage) - address : 0;
}

}  // namespace

// (Aligned memory from the library would come new from the system each time.)
MemoryToFill AllocateToFill(size_t size) {
  void* memory = std::malloc(WithRoom(size));
  if (!memory || size < kPopulated) return {memory, 0};
  const size_t start = StartIn(memory, size);
  Advise(reinterpret_cast<uintptr_t>(memory) + start, size, size >= kHuge ? MADV_HUGEPAGE : kPopulate);
  return {memory, start};
}

// Not populated: it may stay as it is.
MemoryToFill AllocateZerosToFill(size_t size) {
  void* memory = std::calloc(1, WithRoom(size));
  if (!memory || size < kHuge) return {memory, 0};
  const size_t start = StartIn(memory, size);
  Advise(reinterpret_cast<uintptr_t>(memory) + start, size, MADV_HUGEPAGE);
  return {memory, start};
}

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

}  // namespace

// What is asked for begins on a huge page. (Aligned memory from the library would come new from the system each
// time.)
MemoryToFill AllocateToFill(size_t size) {
  const bool huge = size >= kHuge;
  void* memory = std::malloc(size + (huge ? kHugePage : 0));
  if (!memory || size < kPopulated) return {memory, 0};
  const auto address = reinterpret_cast<uintptr_t>(memory), start = huge ? RoundUp(address, kHugePage) : address;
  Advise(start, size, huge ? MADV_HUGEPAGE : kPopulate);
  return {memory, start - address};
}

#include "codec/memory.h"

#include <cstdlib>

void* AllocateZeroed(size_t count, size_t size) { return std::calloc(count, size); }

bool GrowArray(void** list, int32_t count, size_t size) {
  const auto used = static_cast<size_t>(count);
  const bool full = used != 1 && (used & (used - 1)) == 0;  // room is 0, 2, 4, 8 ... entries
  if (!full) return true;
  const size_t room = used == 0 ? 2 : used * 2;
  void* grown = std::realloc(*list, room * size);
  if (!grown) return false;
  *list = grown;
  return true;
}

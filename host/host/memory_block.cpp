#include "host/host/memory_block.h"

#include <algorithm>
#include <cstring>

#include "host/core/bytes.h"
#include "host/core/fault.h"
#include "host/core/text.h"

namespace host {
namespace {

constexpr size_t kGuardSize = 16;
constexpr std::byte kGuardByte{0xA5};

}  // namespace

bool MemoryBlock::Resize(int64_t size, int64_t largest) {
  if (size < 0 || size > largest) return false;
  const size_t wanted = static_cast<size_t>(size);
  Memory grown(static_cast<std::byte*>(std::calloc(1, wanted + kGuardSize)));
  if (!grown) return false;
  CheckGuard();
  if (bytes_) std::memcpy(grown.get(), bytes_.get(), static_cast<size_t>(std::min(size, size_)));
  std::fill_n(grown.get() + wanted, kGuardSize, kGuardByte);
  bytes_ = std::move(grown);
  size_ = size;
  return true;
}

void MemoryBlock::BeforeDeath() { CheckGuard(); }

void MemoryBlock::CheckGuard() const {
  if (!bytes_) return;
  if (!AllAre(bytes_.get() + size_, kGuardSize, kGuardByte)) {
    Fault(Text("something was written behind the ", size_, " bytes of ", Describe()));
  }
}

}  // namespace host

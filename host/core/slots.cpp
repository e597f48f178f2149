#include "host/core/slots.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "platform/pages.h"

// The address sanitizer sees free slots as memory that nobody may touch, and a gap between any two.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define GIF_SEES_SLOTS
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define GIF_SEES_SLOTS
#endif
#if defined(GIF_SEES_SLOTS)
#include <sanitizer/asan_interface.h>
#endif

namespace host {
namespace {

#if defined(GIF_SEES_SLOTS)
constexpr size_t kGap = 256;
void Forbid(void* memory, size_t size) { ASAN_POISON_MEMORY_REGION(memory, size); }
void Allow(void* memory, size_t size) { ASAN_UNPOISON_MEMORY_REGION(memory, size); }
#else
constexpr size_t kGap = 0;
void Forbid(void* /*memory*/, size_t /*size*/) {}
void Allow(void* /*memory*/, size_t /*size*/) {}
#endif

// From there on a slot gets a chunk of its own, which goes when it does.
constexpr size_t kLarge = size_t{64} << 10;
constexpr size_t kMost = size_t{1} << 31;

// Chunks are cut from pieces: a first one that most programs need no other beside, then pieces as large as what there
// is already, in the system's large pages.
constexpr size_t kFirstPiece = 8, kLargestPiece = 32;  // chunks

constexpr size_t RoundUp(size_t size, size_t unit) { return (size + unit - 1) / unit * unit; }

// What is still alive at the end may refer to each other and to a plugin that is gone. Leak checkers see that it has
// an owner.
std::vector<void*>& AbandonedPieces() {
  static auto& pieces = *new std::vector<void*>;
  return pieces;
}

}  // namespace

SlotMemory::~SlotMemory() {
  for (void* piece : pieces_) std::free(piece);
}

void SlotMemory::Abandon() {
  for (void* piece : pieces_) AbandonedPieces().push_back(piece);
  pieces_.clear();
}

void* SlotMemory::Take(size_t size) {
  if (size > kMost) throw std::bad_alloc();
  const size_t step = RoundUp(size, 16) + kGap;
  if (step >= kLarge) return TakeLarge(step);
  Chunk*& open = OpenChunk(step);
  if (open == nullptr) open = AddChunk(step);
  Chunk& chunk = *open;
  void* slot = chunk.returned;
  if (slot == nullptr) {
    slot = chunk.slot(chunk.fresh++);
    Allow(slot, step - kGap);
  } else {
    Allow(slot, step - kGap);
    chunk.returned = *static_cast<void**>(slot);
  }
  if (chunk.IsFull()) open = std::exchange(chunk.next_open, nullptr);
  chunk.states()[chunk.IndexOf(slot)] = SlotState::kLive;
  return slot;
}

void SlotMemory::Return(void* slot) {
  Chunk& chunk = ChunkOf(slot);
  StateOf(slot) = SlotState::kFree;
  if (chunk.step >= kLarge) {
    chunks_.Remove(&chunk);
    std::erase(pieces_, &chunk);
    std::free(&chunk);
    return;
  }
  if (chunk.IsFull()) chunk.next_open = std::exchange(OpenChunk(chunk.step), &chunk);
  *static_cast<void**>(slot) = std::exchange(chunk.returned, slot);
  Forbid(slot, chunk.step - kGap);
}

SlotMemory::Place SlotMemory::Find(const void* address) const {
  Chunk* chunk = chunks_.Find(reinterpret_cast<const void*>(BaseOf(address)));
  if (chunk == nullptr) return {};
  const uint32_t index = chunk->IndexOf(address);
  if (index >= chunk->fresh) return {};
  return {chunk->slot(index), chunk->states()[index]};
}

SlotState& SlotMemory::StateOf(void* slot) {
  Chunk& chunk = ChunkOf(slot);
  return chunk.states()[chunk.IndexOf(slot)];
}

SlotMemory::Chunk* SlotMemory::AddChunk(size_t step) {
  const size_t count = (kChunkSize - sizeof(Chunk) - 15) / (step + 1);
  return SetUp(NewMemory(), static_cast<uint32_t>(step), static_cast<uint32_t>(count));
}

SlotMemory::Chunk* SlotMemory::SetUp(std::byte* memory, uint32_t step, uint32_t count) {
  auto* chunk = new (memory) Chunk{owner_, nullptr, nullptr, 0, step, count, 0};
  chunk->first = static_cast<uint32_t>(RoundUp(sizeof(Chunk) + count, 16));
  std::fill_n(chunk->states(), count, SlotState::kFree);
  Forbid(chunk->slot(0), size_t{step} * count);
  chunks_.Add(chunk, chunk);
  return chunk;
}

// The slot begins in the first of as many chunks' memory as it takes, and is found by that.
void* SlotMemory::TakeLarge(size_t step) {
  const size_t header = RoundUp(sizeof(Chunk) + 1, 16);
  auto* memory = static_cast<std::byte*>(std::aligned_alloc(kChunkSize, RoundUp(header + step, kChunkSize)));
  if (memory == nullptr) throw std::bad_alloc();
  pieces_.push_back(memory);
  Chunk* chunk = SetUp(memory, static_cast<uint32_t>(step), 1);
  chunk->fresh = 1;
  chunk->states()[0] = SlotState::kLive;
  Allow(chunk->slot(0), step - kGap);
  return chunk->slot(0);
}

std::byte* SlotMemory::NewMemory() {
  if (uncut_chunks_ == 0) {
    const bool first = pieces_.empty();
    const size_t chunks = std::clamp(chunks_.count(), kFirstPiece, kLargestPiece), size = chunks * kChunkSize;
    const MemoryToFill piece = first ? MemoryToFill{std::aligned_alloc(kChunkSize, size), 0} : AllocateToFill(size);
    if (piece.memory == nullptr) throw std::bad_alloc();
    pieces_.push_back(piece.memory);
    uncut_ = static_cast<std::byte*>(piece.memory) + piece.start;
    uncut_chunks_ = chunks;
  }
  --uncut_chunks_;
  return std::exchange(uncut_, uncut_ + kChunkSize);
}

}  // namespace host

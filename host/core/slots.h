#pragma once

// Memory in slots. Those of one size lie side by side in chunks, which begin at multiples of their size: so the slot
// that an address lies in is found by arithmetic, what is made one after the other lies together, and a slot costs a
// byte beyond its size.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/core/handle_table.h"

namespace host {

enum class SlotState : uint8_t { kFree, kLive, kEnding, kDead };

class SlotMemory {
 public:
  // `owner` is what OwnerOf tells of any slot.
  explicit SlotMemory(void* owner) : owner_(owner) {}
  SlotMemory(const SlotMemory&) = delete;
  SlotMemory& operator=(const SlotMemory&) = delete;
  ~SlotMemory();

  // From now on the memory is nobody's, but stays for good.
  void Abandon();

  // A slot of `size` bytes or more, live, at a multiple of 16; throws std::bad_alloc.
  void* Take(size_t size);
  void Return(void* slot);

  struct Place {
    void* slot = nullptr;
    SlotState state = SlotState::kFree;
  };
  // The slot that any address whatsoever lies in; null, and free, when it is none.
  Place Find(const void* address) const;

  static SlotState& StateOf(void* slot);
  static void* OwnerOf(const void* slot) { return ChunkOf(slot).owner; }

  template <class Visit>
  void ForEachLive(Visit visit) const {
    chunks_.ForEach([&](Chunk& chunk) {
      for (uint32_t i = 0; i < chunk.fresh; ++i) {
        if (chunk.states()[i] == SlotState::kLive) visit(chunk.slot(i));
      }
    });
  }

 private:
  static constexpr uintptr_t kChunkSize = uintptr_t{1} << 20;

  // The beginning of a chunk: this, a state for each slot, the slots.
  struct Chunk {
    void* owner;
    Chunk* next_open;  // with slots of this size to be had
    void* returned;    // a chain of slots: each begins with the address of the next
    uint32_t first;    // where the first slot begins
    uint32_t step;     // from slot to slot, bytes
    uint32_t count;    // slots
    uint32_t fresh;    // slots from here on were never taken

    SlotState* states() { return reinterpret_cast<SlotState*>(this + 1); }
    std::byte* slot(uint32_t index) { return reinterpret_cast<std::byte*>(this) + first + size_t{step} * index; }
    uint32_t IndexOf(const void* address) const {  // `count` or more when it lies in no slot
      const auto offset =
          static_cast<uint32_t>(static_cast<const std::byte*>(address) - reinterpret_cast<const std::byte*>(this));
      return offset < first ? UINT32_MAX : (offset - first) / step;
    }
    bool IsFull() const { return returned == nullptr && fresh == count; }
  };

  static uintptr_t BaseOf(const void* address) { return reinterpret_cast<uintptr_t>(address) & ~(kChunkSize - 1); }
  static Chunk& ChunkOf(const void* slot) { return *reinterpret_cast<Chunk*>(BaseOf(slot)); }

  Chunk*& OpenChunk(size_t step) {
    const size_t kind = step / 16;
    if (kind >= open_.size()) open_.resize(kind + 1);
    return open_[kind];
  }
  Chunk* AddChunk(size_t step);
  Chunk* SetUp(std::byte* memory, uint32_t step, uint32_t count);
  void* TakeLarge(size_t step);
  std::byte* NewMemory();

  void* owner_;
  HandleTable<Chunk> chunks_;   // by where they begin
  std::vector<Chunk*> open_;    // by the slots' size in units of 16 bytes; null: none has a slot left
  std::vector<void*> pieces_;   // what the chunks were cut from, owned
  std::byte* uncut_ = nullptr;  // the rest of the latest piece
  size_t uncut_chunks_ = 0;
};

}  // namespace host

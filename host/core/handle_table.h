#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace host {

// What is found by a handle's address: one array with open addressing, since every use of a handle comes by here. At
// most half full; an entry lies at its home or behind it, with no gap between.
template <class T>
class HandleTable {
 public:
  T* Find(const void* handle) const {
    if (slots_.empty()) return nullptr;
    for (size_t at = Home(handle);; at = Next(at)) {
      if (slots_[at].handle == handle) return slots_[at].thing;
      if (slots_[at].handle == nullptr) return nullptr;
    }
  }

  // The handle, which is not null, is not there yet.
  void Add(const void* handle, T* thing) {
    if (2 * (count_ + 1) > slots_.size()) Grow();
    Place({handle, thing});
    ++count_;
  }

  // The handle is there.
  void Remove(const void* handle) {
    size_t gap = Home(handle);
    while (slots_[gap].handle != handle) gap = Next(gap);
    for (size_t at = Next(gap); slots_[at].handle != nullptr; at = Next(at)) {
      // What may lie at the gap as well moves there: its home is not between the two.
      if (Distance(Home(slots_[at].handle), at) < Distance(gap, at)) continue;
      slots_[gap] = slots_[at];
      gap = at;
    }
    slots_[gap] = {};
    --count_;
  }

  template <class Visit>
  void ForEach(Visit visit) const {
    for (const Slot& slot : slots_) {
      if (slot.handle != nullptr) visit(*slot.thing);
    }
  }

  size_t count() const { return count_; }

 private:
  struct Slot {
    const void* handle = nullptr;
    T* thing = nullptr;
  };

  // The upper bits of the product depend on all of the address.
  size_t Home(const void* handle) const {
    return static_cast<size_t>((std::bit_cast<uint64_t>(handle) * 0x9E3779B97F4A7C15u) >> shift_);
  }
  size_t Next(size_t at) const { return (at + 1) & (slots_.size() - 1); }
  size_t Distance(size_t from, size_t to) const { return (to - from) & (slots_.size() - 1); }

  void Place(const Slot& slot) {
    size_t at = Home(slot.handle);
    while (slots_[at].handle != nullptr) at = Next(at);
    slots_[at] = slot;
  }

  void Grow() {
    std::vector<Slot> before(slots_.empty() ? 1024 : 2 * slots_.size());
    std::swap(before, slots_);
    shift_ = 64 - std::countr_zero(slots_.size());
    for (const Slot& slot : before) {
      if (slot.handle != nullptr) Place(slot);
    }
  }

  std::vector<Slot> slots_;  // a power of two
  size_t count_ = 0;
  int shift_ = 0;
};

}  // namespace host

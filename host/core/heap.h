#pragma once

// The heap of counted things: everything that a handle stands for. Two counts are kept for each thing, the
// host's own references (scripts, variables of the host) and those that the plugin was given, so that the
// plugin can never give up a reference that is not its own. Handles of dead things are remembered and not
// used again for a long time.
//
// A thing and the bytes that its handle points at lie in one slot, one behind the other (host/core/slots.h): what
// the plugin hands in is checked by where it points. Scripts make millions of them, so that little is kept of each.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "host/core/activity.h"
#include "host/core/slots.h"

namespace host {

class Heap;

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<std::byte[], FreeMemory>;

// One thing behind a handle. Made by Heap::Make, destroyed when its last reference goes. A derived class may have a
// function `HandleSize` of its constructor's arguments: the bytes at its handle, zero-filled; else there are 16.
class Counted {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  virtual ~Counted() = default;

  virtual const char* kind() const = 0;              // "object", "string", ...
  virtual const std::string& type_name() const = 0;  // the class, or the kind again
  virtual std::string Describe() const;              // "GifBlockZKV#12"
  std::string DescribeWithKind() const;              // "object GifBlockZKV#12"
  virtual void BeforeDeath() {}                      // the last reference went; handles still work

  // The address that the plugin sees, behind the thing; not yet while the thing is constructed.
  void* handle() const { return const_cast<std::byte*>(reinterpret_cast<const std::byte*>(this)) + handle_at_; }
  uint64_t serial() const { return serial_; }  // 1 for the first thing made
  bool is_object() const { return is_object_; }

 protected:
  explicit Counted(bool is_object = false) : is_object_(is_object) {}

 private:
  friend class Heap;
  template <class T>
  friend class Ref;

  uint64_t serial_ = 0;
  uint32_t host_references_ = 0;  // each has a Ref somewhere: memory ends before they do
  uint32_t plugin_references_ = 0;
  uint32_t made_by_ = 0;  // activities
  uint32_t last_operation_ = 0;
  uint32_t handle_size_ = 0;
  uint16_t handle_at_ = 0;  // behind the thing's own beginning
  bool dying_ = false;
  const bool is_object_;  // has a class; asked so often that it is not left to dynamic_cast
};

// The T that a thing is; null when it is something else, or null itself.
template <class T>
T* As(Counted* thing) {
  if (thing == nullptr) return nullptr;
  if constexpr (requires { T::Includes(*thing); }) {
    return T::Includes(*thing) ? static_cast<T*>(thing) : nullptr;
  } else {
    return typeid(*thing) == typeid(T) ? static_cast<T*>(thing) : dynamic_cast<T*>(thing);
  }
}

// One reference of the host's own.
template <class T>
class Ref {
 public:
  Ref() = default;
  explicit Ref(T* thing);
  Ref(const Ref& other) : Ref(other.thing_) {}
  Ref(Ref&& other) noexcept : thing_(std::exchange(other.thing_, nullptr)) {}
  template <class U>
  Ref(const Ref<U>& other) : Ref(other.get()) {}  // NOLINT: a reference to a derived thing is one to its base
  Ref& operator=(Ref other) noexcept {
    std::swap(thing_, other.thing_);
    return *this;
  }
  ~Ref();

  T* get() const { return thing_; }
  T* operator->() const { return thing_; }
  T& operator*() const { return *thing_; }
  explicit operator bool() const { return thing_ != nullptr; }
  friend bool operator==(const Ref& a, const Ref& b) { return a.thing_ == b.thing_; }

 private:
  T* thing_ = nullptr;
};

class Heap {
 public:
  Heap() = default;
  // From now on nothing dies before the heap does, and references are not checked: for a host that hides one of the
  // functions that count them from the plugin.
  void KeepEverything() { keeps_everything_ = true; }
  bool keeps_everything() const { return keeps_everything_; }

  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;
  ~Heap();

  // Every thing begins with its Counted, as with single inheritance all do.
  template <class T, class... Arguments>
  Ref<T> Make(Arguments&&... arguments) {
    constexpr size_t kHandleAt = (std::max(sizeof(T), sizeof(Dead)) + 15) / 16 * 16;
    static_assert(alignof(T) <= 16 && kHandleAt <= UINT16_MAX);
    const size_t handle_size = HandleSizeOf<T>(arguments...);
    void* slot = slots_.Take(kHandleAt + handle_size);
    T* made = nullptr;
    try {
      made = new (slot) T(std::forward<Arguments>(arguments)...);
    } catch (...) {
      slots_.Return(slot);
      throw;
    }
    Admit(*made, kHandleAt, handle_size);
    return Ref<T>(made);
  }

  // The live thing behind a handle that the plugin hands in; null for null. A handle that is dead, unknown or
  // of another kind is a fault.
  template <class T>
  T* Find(const void* handle) {
    Counted* thing = FindLive(handle);
    auto* wanted = As<T>(thing);
    if (thing != nullptr && wanted == nullptr) WrongKind(*thing, T::kKind);
    return wanted;
  }

  // The same for a handle that may not be valid: null instead of a fault.
  const Counted* Peek(const void* handle) const;

  // Gives the plugin one reference, and takes one back. Taking one that the plugin does not have is a fault.
  void* HandOut(Counted* thing);
  void GiveUp(Counted* thing);
  template <class T>
  Ref<T> TakeIn(const void* handle) {
    Ref<T> taken(Find<T>(handle));
    GiveUp(taken.get());
    return taken;
  }

  bool empty() const { return live_ == 0; }  // nothing lives

  struct LiveCount {
    std::string kind;
    std::string type_name;
    int64_t count = 0;
    int64_t plugin_references = 0;
    std::string example;  // one of them: who made it, the last operation on it
  };
  std::vector<LiveCount> Live() const;  // sorted by kind and type name

 private:
  template <class T>
  friend class Ref;

  // What is remembered of a thing that died, in its place. The bytes at its handle are kept, so that its handle is
  // not used again.
  struct Dead {
    Dead* next;  // the one that died after it
    const char* kind;
    const std::string* type_name;  // lives as long as the host
    uint64_t serial;
    uint32_t last_operation;
    uint32_t handle_size;
    uint32_t handle_at;

    std::byte* handle() { return reinterpret_cast<std::byte*>(this) + handle_at; }
    size_t size() const { return size_t{handle_at} + handle_size; }
    std::string Describe() const;
  };

  template <class T, class... Arguments>
  static size_t HandleSizeOf(const Arguments&... arguments) {
    if constexpr (requires { T::HandleSize(arguments...); }) {
      return T::HandleSize(arguments...);
    } else {
      return 16;
    }
  }

  static Heap& Of(const Counted& thing) { return *static_cast<Heap*>(SlotMemory::OwnerOf(&thing)); }

  void Admit(Counted& thing, size_t handle_at, size_t handle_size);
  Counted* FindLive(const void* handle);
  [[noreturn]] static void Unusable(const void* handle, SlotMemory::Place place);
  static void Touch(Counted& thing) { thing.last_operation_ = NumberOf(CurrentActivity()); }
  void Destroy(Counted& thing);  // unless there are references
  void Bury(Dead& dead);
  void Exhume();  // lets the longest dead go for good
  [[noreturn]] static void WrongKind(const Counted& thing, const char* wanted);

  SlotMemory slots_{this};
  Dead* first_grave_ = nullptr;  // in the order of their death
  Dead* last_grave_ = nullptr;
  size_t live_ = 0;  // things that were made and not destroyed
  size_t graves_ = 0;
  size_t buried_bytes_ = 0;
  uint64_t next_serial_ = 1;
  bool keeps_everything_ = false;
};

template <class T>
Ref<T>::Ref(T* thing) : thing_(thing) {
  if (thing_ != nullptr) ++static_cast<Counted*>(thing_)->host_references_;
}

template <class T>
Ref<T>::~Ref() {
  if (thing_ == nullptr) return;
  Counted& counted = *thing_;
  if ((--counted.host_references_ | counted.plugin_references_) == 0) Heap::Of(counted).Destroy(counted);
}

}  // namespace host

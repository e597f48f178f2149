#pragma once

// The heap of counted things: everything that a handle stands for. Two counts are kept for each thing, the
// host's own references (scripts, variables of the host) and those that the plugin was given, so that the
// plugin can never give up a reference that is not its own. Handles of dead things are remembered and not
// used again for a long time.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/core/activity.h"
#include "host/core/handle_table.h"

namespace host {

class Heap;

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<std::byte[], FreeMemory>;

// One thing behind a handle. Made by Heap::Make, destroyed when its last reference goes.
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

  // The address that the plugin sees. Its first `handle_size` bytes are the thing's own.
  void* handle() const { return memory_.get(); }
  uint64_t serial() const { return serial_; }  // 1 for the first thing made

 protected:
  explicit Counted(size_t handle_size = 16);  // zero-filled; throws std::bad_alloc

 private:
  friend class Heap;
  template <class T>
  friend class Ref;

  Heap* heap_ = nullptr;
  Memory memory_;
  size_t handle_size_;
  uint64_t serial_ = 0;
  int64_t host_references_ = 0;
  int64_t plugin_references_ = 0;
  bool dying_ = false;
  Activity made_by_;
  Activity last_operation_;
};

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

  template <class T, class... Arguments>
  Ref<T> Make(Arguments&&... arguments) {
    auto thing = std::make_unique<T>(std::forward<Arguments>(arguments)...);
    T* made = thing.get();
    return Admit(std::move(thing)), Ref<T>(made);
  }

  // The live thing behind a handle that the plugin hands in; null for null. A handle that is dead, unknown or
  // of another kind is a fault.
  template <class T>
  T* Find(const void* handle) {
    Counted* thing = FindLive(handle);
    auto* wanted = dynamic_cast<T*>(thing);
    if (thing != nullptr && wanted == nullptr) WrongKind(*thing, T::kKind);
    return wanted;
  }

  // The same for a handle that may not be valid: null instead of a fault.
  const Counted* Peek(const void* handle) const;

  // Gives the plugin one reference, and takes one back. Taking one that the plugin does not have is a fault.
  void* HandOut(Counted* thing);
  void GiveUp(const void* handle);
  template <class T>
  Ref<T> TakeIn(const void* handle) {
    Ref<T> taken(Find<T>(handle));
    if (taken) GiveUp(handle);
    return taken;
  }

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

  // What is remembered of a thing that died. Its own bytes are kept, so that its handle is not used again.
  struct Dead {
    const char* kind;
    const std::string* type_name;  // lives as long as the host
    uint64_t serial;
    Activity last_operation;
    Memory memory;
    size_t size;

    std::string Describe() const;
  };

  void Admit(std::unique_ptr<Counted> thing);
  Counted* FindLive(const void* handle);
  void Touch(Counted& thing) { thing.last_operation_ = CurrentActivity(); }
  void DestroyUnreferenced(Counted& thing);
  void Bury(std::unique_ptr<Counted> thing);
  void Exhume();  // lets the longest dead go for good
  [[noreturn]] static void WrongKind(const Counted& thing, const char* wanted);

  HandleTable<Counted> live_;  // owns them
  std::deque<Dead> graves_;    // in the order of their death
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
  --counted.host_references_;
  counted.heap_->DestroyUnreferenced(counted);
}

}  // namespace host

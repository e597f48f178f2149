#pragma once

// Scoped holders of host references: a holder that goes out of scope gives up the reference that it holds, so every
// path gives back what it took.
//
//   auto made  = ObjectRef::Adopt(REALnewInstance("GifBlockZKV"));  // takes over the caller's reference
//   auto kept  = ObjectRef::Share(argument);                        // adds a reference of its own
//   return made.Detach();                                           // hands the reference to the host
//
// Any holder may be empty (null handle); an empty one takes and gives up nothing. Copying a holder adds a reference.

#include <utility>

#include "bridge/host_functions.h"

// Every kind of host object but strings is counted by the same pair of functions.
inline REALobjectStruct* AsObject(REALobjectStruct* handle) { return handle; }
inline REALobjectStruct* AsObject(REALmemoryBlockStruct* h) { return reinterpret_cast<REALobjectStruct*>(h); }
inline REALobjectStruct* AsObject(REALpictureStruct* h) { return reinterpret_cast<REALobjectStruct*>(h); }
inline REALobjectStruct* AsObject(REALfolderItemStruct* h) { return reinterpret_cast<REALobjectStruct*>(h); }

template <typename Handle>
inline void AddHostReference(Handle* handle) {
  REALLockObject(AsObject(handle));
}
inline void AddHostReference(REALstringStruct* handle) { REALLockString(handle); }

template <typename Handle>
inline void GiveUpHostReference(Handle* handle) {
  REALUnlockObject(AsObject(handle));
}
inline void GiveUpHostReference(REALstringStruct* handle) { REALUnlockString(handle); }

template <typename Handle>
class HostReference {
 public:
  HostReference() = default;
  HostReference(const HostReference& other) : HostReference(Share(other.handle_)) {}
  HostReference(HostReference&& other) noexcept : handle_(other.Detach()) {}
  HostReference& operator=(HostReference other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~HostReference() {
    if (handle_) GiveUpHostReference(handle_);
  }

  // Takes over a reference that the caller owns.
  [[nodiscard]] static HostReference Adopt(Handle* handle) {
    HostReference holder;
    holder.handle_ = handle;
    return holder;
  }
  // Adds a reference to a handle that is only borrowed.
  [[nodiscard]] static HostReference Share(Handle* handle) {
    if (handle) AddHostReference(handle);
    return Adopt(handle);
  }

  Handle* get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }
  // Hands the reference to the caller; the holder is empty afterwards.
  [[nodiscard]] Handle* Detach() { return std::exchange(handle_, nullptr); }

 private:
  Handle* handle_ = nullptr;
};

using ObjectRef = HostReference<REALobjectStruct>;
using StringRef = HostReference<REALstringStruct>;
using MemoryBlockRef = HostReference<REALmemoryBlockStruct>;
using PictureRef = HostReference<REALpictureStruct>;
using FolderItemRef = HostReference<REALfolderItemStruct>;

// Fields of instance data, which the host allocates and which hold one reference each while not null.

// Gives up the field's reference, if any, and clears it.
template <typename Handle>
void ClearField(Handle*& field) {
  if (Handle* old = std::exchange(field, nullptr)) GiveUpHostReference(old);
}

// Replaces the field's handle by a borrowed one (null clears it).
template <typename Handle>
void StoreField(Handle*& field, Handle* value) {
  ClearField(field);
  if (value) AddHostReference(value);
  field = value;
}

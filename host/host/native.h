#pragma once

// For the host's own classes: their members are written in the same records and handler forms as a plugin's,
// so that scripts, loading by declaration and property access treat them alike.

#include <span>

#include "bridge/gif_plugin_host.h"
#include "host/host/host.h"

namespace host {

template <class Result, class... Arguments>
REALproc Proc(Result (*function)(Arguments...)) {
  return reinterpret_cast<REALproc>(function);
}

// The flags of a member for every kind of host.
constexpr uint32_t kMemberFlags = 4;

inline REALproperty NativeProperty(const char* name, const char* type, REALproc getter, REALproc setter = nullptr) {
  return {nullptr, name, type, kMemberFlags, getter, setter, 0, nullptr};
}

inline REALmethodDefinition NativeMethod(const char* declaration, REALproc handler, REALproc setter = nullptr) {
  return {handler, setter, declaration, kMemberFlags, 0, 0};
}

void AddMembers(Class& to, std::span<const REALproperty> properties, std::span<const REALmethodDefinition> methods);

// The T behind a handle in a native handler.
template <class T>
T* Self(const void* handle) {
  return Host::Current().heap().Find<T>(handle);
}

// A result's handle with its reference.
template <class T>
auto* Result(const Ref<T>& reference) {
  return static_cast<REALobjectStruct*>(Host::Current().heap().HandOut(reference.get()));
}

REALstringStruct* StringResult(std::string_view bytes);

// Each adds the host's own classes of its kind.
void AddExceptionClasses(Host& host);
void AddMemoryBlockClass(Host& host);
void AddFolderItemClass(Host& host);
void AddPictureClasses(Host& host);
void AddOutputFileClass(Host& host);
void AddCanvasClass(Host& host);
void AddColorTableClass(Host& host);
void AddApplicationClasses(Host& host);
void AddGlobalMethods(Host& host);

}  // namespace host
